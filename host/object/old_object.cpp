// The forms LWOB and LWLO.
#include "host/object/layer_builder.h"

#include "host/state/blocks.h"

#include <cstdlib>
#include <fmt/format.h>
#include <utility>

namespace velm::host {
namespace {

class OldObject {
  public:
    OldObject(const IffFile &file, ObjectGeometry &geometry) : file_(file), geometry_(geometry), builder_(geometry) {}

    void read() {
        const std::vector<Chunk> chunks = file_.chunks();
        for (const Chunk &chunk : chunks) // polygons refer to the names, wherever these are in the file
            if (chunk.id == fourCC("SRFS")) readSurfaceNames(ChunkCursor(file_, chunk));
        for (const Chunk &chunk : chunks) readChunk(chunk);
    }

  private:
    void readChunk(const Chunk &chunk) {
        switch (chunk.id) {
        case fourCC("LAYR"): return readLayer(ChunkCursor(file_, chunk));
        case fourCC("PNTS"): return builder_.readPoints(ChunkCursor(file_, chunk));
        case fourCC("POLS"): return readPolygons(chunk);
        case fourCC("CRVS"): return countCurves(ChunkCursor(file_, chunk));
        case fourCC("SRFS"):         // see above
        case fourCC("SURF"): return; // see old_surfaces.h
        default:
            builder_.losses().addAt(Loss::unknownChunk, [&] {
                return fmt::format("{} at byte {}", blockName(chunk.id), chunk.contents.at);
            });
        }
    }

    void readSurfaceNames(ChunkCursor cursor) {
        while (!cursor.isAtEnd() && geometry_.tags.size() <= 0x7fff) // to which polygons can refer
            geometry_.tags.push_back(cursor.text("the name of a surface"));
    }

    // The one flag of these layers says which are being edited, and not which are visible.
    void readLayer(ChunkCursor cursor) {
        ObjectLayer layer;
        layer.number = cursor.u2();
        cursor.u2();
        layer.name = cursor.text("the name of the layer");
        builder_.startLayer(std::move(layer));
    }

    // Each polygon is followed by the number of its surface, from 1. A negative number announces details, polygons that
    // lie on it; their number comes next, and then they follow like any others.
    template <class EndPolygon, class AddCorner>
    void forEachPolygon(ChunkCursor cursor, const AddCorner &addCorner, const EndPolygon &endPolygon) const {
        for (std::size_t polygon = 0; !cursor.isAtEnd(); ++polygon) {
            const std::uint32_t corners = cursor.u2();
            for (std::uint32_t i = 0; i < corners; ++i) {
                const std::size_t at = cursor.at();
                const std::uint32_t index = cursor.u2();
                const auto point = builder_.point(index);
                if (!point)
                    cursor.fail(at, fmt::format("polygon {} has the point {}, and there are {} points", polygon, index,
                                                builder_.pointCount()));
                addCorner(*point);
            }
            const std::size_t at = cursor.at();
            const auto surface = static_cast<std::int16_t>(cursor.u2());
            if (surface < 0) cursor.u2();
            endPolygon(static_cast<std::size_t>(std::abs(int{surface})), at);
        }
    }

    void readPolygons(const Chunk &chunk) {
        const ChunkCursor cursor(file_, chunk);
        std::size_t polygons = 0, corners = 0;
        forEachPolygon(
            cursor, [&](std::uint32_t) { ++corners; }, [&](std::size_t, std::size_t) { ++polygons; });
        builder_.startPolygons(kFacePolygons, polygons, corners);
        ObjectLayer &layer = builder_.layer();
        layer.surfaces.resize(layer.ends.size(), kNoTag);
        makeRoom(layer.surfaces, polygons);
        forEachPolygon(
            cursor, [&](std::uint32_t point) { layer.corners.push_back(point); },
            [&](std::size_t surface, std::size_t at) {
                const bool isThere = surface > 0 && surface <= builder_.tagCount();
                if (!isThere) builder_.losses().addAt(Loss::danglingTag, [&] { return fmt::format("byte {}", at); });
                layer.surfaces.push_back(isThere ? static_cast<std::uint32_t>(surface - 1) : kNoTag);
                builder_.endPolygon();
            });
    }

    // Each curve has its points and then flags.
    void countCurves(ChunkCursor cursor) {
        const std::size_t start = cursor.at();
        while (!cursor.isAtEnd()) {
            for (std::uint32_t left = cursor.u2() + 1; left > 0; --left) cursor.u2();
            builder_.losses().addAt(Loss::curve, [&] { return fmt::format("byte {}", start); });
        }
    }

    const IffFile &file_;
    ObjectGeometry &geometry_;
    LayerBuilder builder_;
};

} // namespace

void readOldObject(const IffFile &file, ObjectGeometry &geometry) { OldObject(file, geometry).read(); }

} // namespace velm::host
