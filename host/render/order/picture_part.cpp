#include "host/render/order/picture_part.h"

#include "host/base/error.h"
#include "host/render/order/unit_of_work.h"

#include <algorithm>
#include <fmt/format.h>

namespace velm::host {
namespace {

// A rectangle of tiles, divided into `count` rectangles by halving it again and again across its longer side. It has at
// least `count` tiles.
Region rectangleOf(Region tiles, int number, int count) {
    while (count > 1) {
        const bool across = tiles.width() >= tiles.height();
        const int side = across ? tiles.width() : tiles.height(), other = across ? tiles.height() : tiles.width();
        const int wanted = count / 2;
        const int cut = std::clamp((side * wanted + count / 2) / count, 1, side - 1);
        const int first =
            std::clamp(wanted, std::max(1, count - (side - cut) * other), std::min(count - 1, cut * other));
        int &low = across ? tiles.left : tiles.top, &high = across ? tiles.right : tiles.bottom;
        if (number <= first) {
            high = low + cut;
            count = first;
        } else {
            low += cut;
            number -= first;
            count -= first;
        }
    }
    return tiles;
}

} // namespace

Region pixelsOfPart(const Region &region, const PicturePart &part) {
    const auto after = [](int end) { return (end + kTileSize - 1) / kTileSize; };
    const Region tiles = {.left = region.left / kTileSize,
                          .top = region.top / kTileSize,
                          .right = after(region.right),
                          .bottom = after(region.bottom)};
    if (tiles.width() * tiles.height() < part.count)
        throw InputError(fmt::format("the picture has {} tiles of {} by {} pixels, too few for {} parts",
                                     tiles.width() * tiles.height(), kTileSize, kTileSize, part.count));
    const Region own = rectangleOf(tiles, part.number, part.count);
    return intersection(region, {.left = own.left * kTileSize,
                                 .top = own.top * kTileSize,
                                 .right = own.right * kTileSize,
                                 .bottom = own.bottom * kTileSize});
}

SampleRange samplesOfPart(int samples, const PicturePart &part) {
    if (samples < part.count)
        throw InputError(fmt::format("a pixel has {} samples, too few for {} parts", samples, part.count));
    const auto before = [samples, &part](int number) {
        return static_cast<int>(static_cast<long long>(samples) * number / part.count);
    };
    return {.first = before(part.number - 1), .end = before(part.number)};
}

} // namespace velm::host
