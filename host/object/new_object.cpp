// The form LWO2.
#include "host/object/layer_builder.h"

#include "host/state/blocks.h"

#include <fmt/format.h>
#include <utility>

namespace velm::host {
namespace {

std::string placeOf(std::size_t byte) { return fmt::format("byte {}", byte); }

class NewObject {
  public:
    NewObject(const IffFile &file, ObjectGeometry &geometry) : file_(file), geometry_(geometry), builder_(geometry) {}

    void read() {
        for (const Chunk &chunk : file_.chunks()) readChunk(chunk);
    }

  private:
    void readChunk(const Chunk &chunk) {
        switch (chunk.id) {
        case fourCC("TAGS"): return readTags(ChunkCursor(file_, chunk));
        case fourCC("LAYR"): return readLayer(ChunkCursor(file_, chunk));
        case fourCC("PNTS"): return builder_.readPoints(ChunkCursor(file_, chunk));
        case fourCC("BBOX"): return readBounds(ChunkCursor(file_, chunk));
        case fourCC("POLS"): return readPolygons(chunk);
        case fourCC("PTAG"): return readPolygonTags(ChunkCursor(file_, chunk));
        case fourCC("VMPA"): return readMapProperties(ChunkCursor(file_, chunk));
        case fourCC("VMAP"): return readMap(ChunkCursor(file_, chunk), false);
        case fourCC("VMAD"): return readMap(ChunkCursor(file_, chunk), true);
        case fourCC("SURF"): // read by ObjectFile, as are clips
        case fourCC("CLIP"):
        case fourCC("ENVL"):
        case fourCC("DESC"): // texts and a picture for people
        case fourCC("TEXT"):
        case fourCC("ICON"): return;
        default:
            builder_.losses().addAt(Loss::unknownChunk, [&] {
                return fmt::format("{} at byte {}", blockName(chunk.id), chunk.contents.at);
            });
        }
    }

    // Further chunks of tags continue the numbers of the first. Polygons cannot refer to more than 65536 of them.
    void readTags(ChunkCursor cursor) {
        while (!cursor.isAtEnd() && geometry_.tags.size() <= 0xffff) geometry_.tags.push_back(cursor.text("a tag"));
    }

    void readLayer(ChunkCursor cursor) {
        constexpr std::uint32_t kNoParent = 0xffff;
        ObjectLayer layer;
        layer.number = cursor.u2();
        layer.flags = cursor.u2();
        layer.pivot = readVector(cursor);
        layer.name = cursor.text("the name of the layer");
        if (!cursor.isAtEnd())
            if (const std::uint32_t parent = cursor.u2(); parent != kNoParent) layer.parent = parent;
        builder_.startLayer(std::move(layer));
    }

    void readBounds(ChunkCursor cursor) {
        const std::array<float, 3> low = readVector(cursor), high = readVector(cursor);
        builder_.layer().bounds = {low, high};
    }

    // ---- Polygons ----

    struct PolygonCounts {
        std::size_t polygons = 0, corners = 0;
        bool areWhole = true; // whether the chunk ends at the end of a polygon, and no point is missing
    };

    // The upper six bits of the number of corners are flags.
    static std::uint32_t cornerCount(ChunkCursor &cursor) { return cursor.u2() & 0x3ff; }

    // Counts the polygons of a chunk of an unusual type, up to what cannot be read.
    PolygonCounts countUpToDamage(ChunkCursor cursor) const {
        PolygonCounts counts;
        while (!cursor.isAtEnd()) {
            counts.areWhole = false;
            if (cursor.left() < 2) break;
            const std::uint32_t corners = cornerCount(cursor);
            for (std::uint32_t i = 0; i < corners; ++i)
                if (!cursor.hasIndex() || !builder_.point(cursor.index())) return counts;
            ++counts.polygons;
            counts.corners += corners;
            counts.areWhole = true;
        }
        return counts;
    }

    PolygonCounts countAll(ChunkCursor cursor) const {
        PolygonCounts counts;
        for (; !cursor.isAtEnd(); ++counts.polygons) {
            const std::uint32_t corners = cornerCount(cursor);
            counts.corners += corners;
            for (std::uint32_t i = 0; i < corners; ++i) {
                const std::size_t at = cursor.at();
                if (const std::uint32_t index = cursor.index(); !builder_.point(index))
                    cursor.fail(at, fmt::format("polygon {} has the point {}, and there are {} points", counts.polygons,
                                                index, builder_.pointCount()));
            }
        }
        return counts;
    }

    void readPolygons(const Chunk &chunk) {
        ChunkCursor cursor(file_, chunk);
        const std::uint32_t type = cursor.u4();
        const bool isDrawn = ObjectPolygons{.type = type}.areDrawn();
        const PolygonCounts counts = isDrawn ? countAll(cursor) : countUpToDamage(cursor);
        if (!counts.areWhole) builder_.losses().addAt(Loss::unreadPolygons, [&] { return placeOf(chunk.contents.at); });
        builder_.startPolygons(type, counts.polygons, counts.corners);
        ObjectLayer &layer = builder_.layer();
        for (std::size_t polygon = 0; polygon < counts.polygons; ++polygon) {
            const std::uint32_t corners = cornerCount(cursor);
            for (std::uint32_t i = 0; i < corners; ++i) layer.corners.push_back(*builder_.point(cursor.index()));
            builder_.endPolygon();
        }
    }

    // The tags of that type of the current layer; null for one that nobody needs.
    std::vector<std::uint32_t> *tagsOf(std::uint32_t type) {
        ObjectLayer &layer = builder_.layer();
        switch (type) {
        case fourCC("SURF"): return &layer.surfaces;
        case fourCC("PART"): return &layer.parts;
        case fourCC("SMGP"): return &layer.smoothingGroups;
        default: return nullptr; // such as COLR, the colour of wireframes
        }
    }

    void readPolygonTags(ChunkCursor cursor) {
        std::vector<std::uint32_t> *tags = tagsOf(cursor.u4());
        if (!tags) return;
        while (!cursor.isAtEnd()) {
            const std::size_t at = cursor.at();
            const auto polygon = builder_.polygon(cursor.index());
            const std::uint32_t tag = cursor.u2();
            if (!polygon || tag >= builder_.tagCount()) {
                builder_.losses().addAt(Loss::danglingTag, [&] { return placeOf(at); });
                continue;
            }
            if (*polygon >= tags->size()) {
                makeRoom(*tags, builder_.layer().ends.size() - tags->size());
                tags->resize(builder_.layer().ends.size(), kNoTag);
            }
            (*tags)[*polygon] = tag;
        }
    }

    // ---- Vertex maps ----

    // How the next map is subdivided. The last code, for discontinuous edges, is approximated by linear edges.
    void readMapProperties(ChunkCursor cursor) {
        constexpr MapSubdivision kCodes[] = {MapSubdivision::linear, MapSubdivision::smooth,
                                             MapSubdivision::linearCorners, MapSubdivision::linearEdges,
                                             MapSubdivision::linearEdges};
        if (cursor.left() < 4) return;
        if (const std::uint32_t code = cursor.u4(); code < std::size(kCodes)) nextSubdivision_ = kCodes[code];
    }

    void readMap(ChunkCursor cursor, bool isOfCorners) {
        ObjectVertexMap map{.type = cursor.u4(),
                            .size = cursor.u2(),
                            .name = cursor.text("the name of the map"),
                            .isOfCorners = isOfCorners,
                            .subdivision = std::exchange(nextSubdivision_, MapSubdivision::linear),
                            .points = {},
                            .polygons = {},
                            .numbers = {}};
        const std::size_t most = cursor.left() / ((isOfCorners ? 4 : 2) + 4 * std::size_t{map.size});
        map.points.reserve(most);
        if (isOfCorners) map.polygons.reserve(most);
        map.numbers.reserve(most * map.size);
        while (!cursor.isAtEnd()) {
            const std::size_t at = cursor.at();
            const auto point = builder_.point(cursor.index());
            const auto polygon = isOfCorners ? builder_.polygon(cursor.index()) : std::optional<std::size_t>(0);
            for (std::uint32_t i = 0; i < map.size; ++i) map.numbers.push_back(cursor.real());
            if (!point || !polygon) {
                map.numbers.resize(map.numbers.size() - map.size);
                builder_.losses().addAt(Loss::danglingMapValue, [&] { return placeOf(at); });
                continue;
            }
            map.points.push_back(*point);
            if (isOfCorners) map.polygons.push_back(static_cast<std::uint32_t>(*polygon));
        }
        builder_.layer().maps.push_back(std::move(map));
    }

    const IffFile &file_;
    ObjectGeometry &geometry_;
    LayerBuilder builder_;
    MapSubdivision nextSubdivision_ = MapSubdivision::linear; // of the next map
};

} // namespace

void readNewObject(const IffFile &file, ObjectGeometry &geometry) { NewObject(file, geometry).read(); }

} // namespace velm::host
