#include "host/object/vertex_map_writer.h"

#include "host/base/error.h"
#include "host/object/iff.h"
#include "host/object/iff_writer.h"
#include "host/state/blocks.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <span>
#include <utility>

namespace velm::host {
namespace {

constexpr std::size_t kFormStart = 8, kFormHeader = 12, kChunkHeader = 8; // bytes; a form's size counts from its start

// Which points of a layer get a value, and which corners get their own.
struct LayerValues {
    std::vector<double> means;         // `size` for each point
    std::vector<double> weights;       // by point: the sum over its corners; 0: no value
    std::vector<bool> isDiscontinuous; // by point
};

LayerValues valuesOfPoints(const ObjectLayer &layer, const LayerCornerValues &values, const CornerMap &map) {
    const std::size_t size = map.size;
    LayerValues points{.means = std::vector<double>(layer.points.size() * size),
                       .weights = std::vector<double>(layer.points.size()),
                       .isDiscontinuous = std::vector<bool>(layer.points.size())};
    const auto forEachValue = [&](const auto &use) {
        for (std::size_t corner = 0; corner < layer.corners.size(); ++corner)
            if (values.hasValue(corner, size)) use(corner, layer.corners[corner]);
    };
    forEachValue([&](std::size_t corner, std::uint32_t point) {
        points.weights[point] += values.weights[corner];
        for (std::size_t i = 0; i < size; ++i)
            points.means[point * size + i] += values.weights[corner] * double{values.numbers[corner * size + i]};
    });
    for (std::size_t i = 0; i < points.means.size(); ++i)
        if (points.weights[i / size] > 0) points.means[i] /= points.weights[i / size];
    forEachValue([&](std::size_t corner, std::uint32_t point) {
        for (std::size_t i = 0; i < size; ++i)
            if (std::abs(points.means[point * size + i] - double{values.numbers[corner * size + i]}) > map.tolerance)
                points.isDiscontinuous[point] = true;
    });
    return points;
}

// A change to the bytes: removes some, and inserts others in their place.
struct Edit {
    FileRange removed;
    std::string inserted;
};

// Goes over the chunks of an object, counts layers, points and polygons as readObject does, and collects the edits.
class MapEdits {
  public:
    MapEdits(const IffFile &file, const ObjectGeometry &geometry, const CornerMap &map)
        : file_(file), end_(file.endOfForm()), geometry_(geometry), map_(map) {}

    std::vector<Edit> collect() {
        chunks_ = file_.chunks();
        for (std::size_t i = 0; i < chunks_.size(); ++i) {
            visit(i);
            // Nothing is inserted between the properties of a map and the map.
            if (chunks_[i].id != fourCC("VMPA")) lastEnd_ = endOf(chunks_[i]);
        }
        endPolygons();
        return std::move(edits_);
    }

  private:
    void visit(std::size_t index) {
        const Chunk &chunk = chunks_[index];
        switch (chunk.id) {
        case fourCC("VMPA"): break;
        case fourCC("PTAG"): requireLayer(); break;
        case fourCC("VMAP"):
        case fourCC("VMAD"): removeIfSame(index); break;
        case fourCC("LAYR"):
            endPolygons();
            startLayer();
            break;
        case fourCC("PNTS"):
            endPolygons();
            startPoints(chunk.contents.size / 12);
            break;
        case fourCC("POLS"):
            endPolygons();
            insertPointMap();
            startPolygons();
            break;
        case fourCC("BBOX"):
            endPolygons();
            requireLayer();
            break;
        default: endPolygons();
        }
    }

    static std::size_t startOf(const Chunk &chunk) { return chunk.contents.at - kChunkHeader; }
    // With its padding, which the last chunk may lack.
    std::size_t endOf(const Chunk &chunk) const {
        return std::min(chunk.contents.end() + chunk.contents.size % 2, end_);
    }

    // What comes before the first LAYR is in a layer of its own.
    void requireLayer() {
        if (layerCount_ == 0) startLayer();
    }

    void startLayer() {
        layer_ = &geometry_.layers[layerCount_++];
        firstPoint_ = pointCount_ = group_ = 0;
        const auto found = std::ranges::find(map_.layers, layerCount_ - 1, &LayerCornerValues::layer);
        corners_ = found == map_.layers.end() ? nullptr : &*found;
        points_ = corners_ ? valuesOfPoints(*layer_, *corners_, map_) : LayerValues();
    }

    void startPoints(std::size_t count) {
        requireLayer();
        firstPoint_ += pointCount_;
        pointCount_ = count;
        hasPointMap_ = false;
    }

    void startPolygons() {
        requireLayer();
        polygons_ = corners_ ? &layer_->polygons[group_] : nullptr;
        ++group_;
    }

    std::string head() const { return bigEndian(map_.type, 4) + bigEndian(map_.size, 2) + paddedString(map_.name); }

    std::string indexIn(std::size_t index, const char *what) const {
        if (index > kLargestIndex)
            file_.fail(
                0, fmt::format("a vertex map cannot refer to {} {}; the last one is {}", what, index, kLargestIndex));
        return indexBytes(static_cast<std::uint32_t>(index));
    }

    // The values of the current points, before the first polygons that have them.
    void insertPointMap() {
        requireLayer();
        if (!corners_ || hasPointMap_) return;
        hasPointMap_ = true;
        std::string contents;
        for (std::size_t point = firstPoint_; point < firstPoint_ + pointCount_; ++point) {
            if (!(points_.weights[point] > 0)) continue;
            contents += indexIn(point - firstPoint_, "point");
            for (std::size_t i = 0; i < map_.size; ++i)
                contents += bigEndian(static_cast<float>(points_.means[point * map_.size + i]));
        }
        if (!contents.empty()) insert(chunkBytes(fourCC("VMAP"), head() + contents));
    }

    // The values of corners of the current polygons, after all other chunks that refer to these.
    void endPolygons() {
        const ObjectPolygons *polygons = std::exchange(polygons_, nullptr);
        if (!polygons) return;
        std::string contents;
        for (std::size_t polygon = polygons->first; polygon < polygons->first + polygons->count; ++polygon)
            for (std::size_t corner = layer_->begin(polygon); corner < layer_->ends[polygon]; ++corner) {
                const std::uint32_t point = layer_->corners[corner];
                if (!points_.isDiscontinuous[point] || !corners_->hasValue(corner, map_.size)) continue;
                contents += indexIn(point - firstPoint_, "point") + indexIn(polygon - polygons->first, "polygon");
                for (const float number : std::span(corners_->numbers).subspan(corner * map_.size, map_.size))
                    contents += bigEndian(number);
            }
        if (!contents.empty()) insert(chunkBytes(fourCC("VMAD"), head() + contents));
    }

    // Removes a map that the new one replaces, with the properties that precede it.
    void removeIfSame(std::size_t index) {
        requireLayer();
        if (!corners_) return;
        ChunkCursor cursor(file_, chunks_[index]);
        const std::uint32_t type = cursor.u4();
        cursor.u2();
        if (type != map_.type || cursor.text("the name of the map") != map_.name) return;
        std::size_t first = index;
        while (first > 0 && chunks_[first - 1].id == fourCC("VMPA")) --first;
        const std::size_t start = startOf(chunks_[first]);
        edits_.push_back({.removed = {.at = start, .size = endOf(chunks_[index]) - start}, .inserted = {}});
    }

    void insert(std::string bytes) {
        edits_.push_back({.removed = {.at = lastEnd_, .size = 0}, .inserted = std::move(bytes)});
    }

    const IffFile &file_;
    const std::size_t end_; // of the form
    const ObjectGeometry &geometry_;
    const CornerMap &map_;
    std::vector<Chunk> chunks_;
    std::vector<Edit> edits_; // in the order of the file

    // Where visit is:
    std::size_t lastEnd_ = kFormHeader; // of the last chunk but for properties of maps
    std::size_t layerCount_ = 0;        // that have been started
    const ObjectLayer *layer_ = nullptr;
    const LayerCornerValues *corners_ = nullptr; // of the layer; null: it has no values
    LayerValues points_;
    std::size_t firstPoint_ = 0, pointCount_ = 0; // of the last PNTS
    bool hasPointMap_ = false;                    // whether its map has been written
    std::size_t group_ = 0;                       // the number of POLS in the layer
    const ObjectPolygons *polygons_ = nullptr;    // of the last POLS, until its map is written; null: none
};

} // namespace

std::string withVertexMap(std::string_view bytes, const std::string &file, const ObjectGeometry &geometry,
                          const CornerMap &map) {
    const IffFile iff(bytes, file);
    if (const std::uint32_t type = iff.formType(); type != fourCC("LWO2"))
        iff.fail(8, fmt::format("the object file has the form {}, which has no vertex maps. Save it in the form LWO2, "
                                "that of LightWave 6 and later",
                                blockName(type)));
    const std::size_t end = iff.endOfForm();
    std::string form;
    std::size_t copied = kFormStart;
    for (const Edit &edit : MapEdits(iff, geometry, map).collect()) {
        form += bytes.substr(copied, edit.removed.at - copied);
        if (!edit.inserted.empty() && form.size() % 2 != 0) form += '\0'; // missing padding of the last chunk
        form += edit.inserted;
        copied = edit.removed.end();
    }
    form += bytes.substr(copied, end - copied);
    if (form.size() > std::numeric_limits<std::uint32_t>::max())
        throw InputError({.file = file},
                         fmt::format("the object has {} bytes; a file holds at most 4 GB", form.size()));
    return std::string(bytes.substr(0, 4)) + bigEndian(form.size(), 4) + form + std::string(bytes.substr(end));
}

} // namespace velm::host
