#include "host/render/geometry/obj_file.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/render/geometry/obj_lines.h"
#include "host/render/geometry/parallel.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <system_error>

namespace velm::host {
namespace {

constexpr std::size_t kPartSize = 262'144; // bytes: enough to be worth the time of starting a task

enum class ObjKeyword { position, uv, normal, polygon, undrawn, material, library, other };

// Takes the keyword off a line.
ObjKeyword takeKeyword(std::string_view &line) {
    const std::string_view word = takeWord(line);
    if (word == "v") return ObjKeyword::position;
    if (word == "f") return ObjKeyword::polygon;
    if (word == "vn") return ObjKeyword::normal;
    if (word == "vt") return ObjKeyword::uv;
    if (word == "l" || word == "p" || word == "curv" || word == "curv2" || word == "surf") return ObjKeyword::undrawn;
    if (word == "usemtl") return ObjKeyword::material;
    if (word == "mtllib") return ObjKeyword::library;
    return ObjKeyword::other;
}

[[noreturn]] void refuseLine(const std::string &file, std::size_t line, const std::string &why) {
    throw InputError({.file = file}, fmt::format("cannot read the mesh: line {}: {}", line, why));
}

// ---- Counting ----

// Counts a polygon by the text of its corners. Their indices are checked when they are read.
void countPolygon(std::string_view corners, ObjCounts &counts) {
    const std::string_view first = takeObjWord(corners);
    std::size_t count = first.empty() ? 0 : 1;
    while (count > 0 && !takeObjWord(corners).empty()) ++count;
    if (count < 3) return;
    ++counts.polygons;
    counts.triangles += count - 2;
    const std::size_t slash = first.find('/');
    if (slash == std::string_view::npos || slash + 1 == first.size()) return;
    if (first[slash + 1] != '/') ++counts.polygonsWithUvs;
    const std::size_t second = first.find('/', slash + 1);
    if (second != std::string_view::npos && second + 1 < first.size()) ++counts.polygonsWithNormals;
}

void countPart(ObjPart &part) {
    ObjCounts &counts = part.own;
    ObjLines lines(part.text);
    while (lines.next()) {
        std::string_view rest = lines.line();
        switch (takeKeyword(rest)) {
        case ObjKeyword::position: ++counts.positions; break;
        case ObjKeyword::uv: ++counts.uvs; break;
        case ObjKeyword::normal: ++counts.normals; break;
        case ObjKeyword::polygon: countPolygon(rest, counts); [[fallthrough]];
        case ObjKeyword::undrawn:
        case ObjKeyword::material:
        case ObjKeyword::library: part.hasStatements = true; break;
        case ObjKeyword::other: break;
        }
    }
    counts.lines = lines.linesRead();
}

// The position after the first end of a line from `start` on at which the file can be divided: the line does not
// continue on the next one.
std::size_t nextDivision(std::string_view bytes, std::size_t start) {
    for (std::size_t at = bytes.find('\n', start); at != std::string_view::npos; at = bytes.find('\n', at + 1)) {
        std::string_view before = bytes.substr(0, at);
        if (before.ends_with('\r')) before.remove_suffix(1);
        if (!before.ends_with('\\')) return at + 1;
    }
    return bytes.size();
}

std::vector<ObjPart> divided(std::string_view bytes) {
    std::vector<ObjPart> parts;
    for (std::size_t begin = 0; begin < bytes.size();) {
        const std::size_t end = nextDivision(bytes, std::min(bytes.size(), begin + kPartSize));
        parts.push_back({.text = bytes.substr(begin, end - begin), .before = {}, .own = {}});
        begin = end;
    }
    return parts;
}

// ---- Values ----

// Reads the values of one part.
class ValueReader {
  public:
    ValueReader(const ObjPart &part, const std::string &file, const Transform &transform, ObjValues &values)
        : file_(file), transform_(transform), values_(values), next_(part.before),
          lines_(part.text, part.before.lines) {}

    // Returns whether points have colours.
    bool read() {
        while (lines_.next()) {
            std::string_view rest = lines_.line();
            switch (takeKeyword(rest)) {
            case ObjKeyword::position: readPosition(rest); break;
            case ObjKeyword::uv: readUv(rest); break;
            case ObjKeyword::normal: readNormal(rest); break;
            default: break;
            }
        }
        return hasColours_;
    }

  private:
    // Takes the numbers of a line and returns how many there are, which may be more than `numbers` holds.
    template <std::size_t size>
    std::size_t takeNumbers(std::string_view rest, std::size_t least, std::array<double, size> &numbers) const {
        std::size_t count = 0;
        for (std::string_view word = takeObjWord(rest); !word.empty(); word = takeObjWord(rest), ++count) {
            if (count >= size) continue;
            const auto number = realOf(word);
            if (!number) refuseLine(file_, lines_.number(), inQuotes(word) + " is not a number");
            numbers[count] = *number;
        }
        if (count < least) refuseLine(file_, lines_.number(), "a number is missing");
        return count;
    }

    // A fourth number is a weight. Files have right-handed axes.
    void readPosition(std::string_view rest) {
        std::array<double, 4> numbers{};
        const std::size_t count = takeNumbers(rest, 3, numbers);
        if (count == 6) hasColours_ = true;
        const double weight = count == 4 ? numbers[3] : 1;
        const Vec3 point{numbers[0] / weight, numbers[1] / weight, -numbers[2] / weight};
        values_.positions[next_.positions++] = narrowed(transform_.pointToWorld(point));
    }

    void readUv(std::string_view rest) {
        std::array<double, 2> numbers{};
        takeNumbers(rest, 1, numbers);
        std::array<float, 2> &uv = values_.uvs[next_.uvs++];
        for (std::size_t i = 0; i < 2; ++i) uv[i] = std::isfinite(numbers[i]) ? static_cast<float>(numbers[i]) : 0;
    }

    // A normal that has no direction becomes 0: shading then uses the polygon's own normal.
    void readNormal(std::string_view rest) {
        std::array<double, 3> numbers{};
        takeNumbers(rest, 3, numbers);
        const Vec3 normal = transform_.normalToWorld({numbers[0], numbers[1], -numbers[2]});
        values_.normals[next_.normals++] = narrowed(normalised(normal, {0, 0, 0}));
    }

    const std::string &file_;
    const Transform &transform_;
    ObjValues &values_;
    ObjCounts next_; // the indices of the next values
    ObjLines lines_;
    bool hasColours_ = false;
};

// ---- Statements ----

class StatementReader {
  public:
    StatementReader(const ObjPart &part, const ObjCounts &all, const std::string &file)
        : part_(part), all_(all), file_(file), seen_(part.before), lines_(part.text, part.before.lines) {}

    ObjStatements read() {
        statements_.corners.reserve(part_.own.triangles + 2 * part_.own.polygons);
        statements_.ends.reserve(part_.own.polygons);
        while (lines_.next()) {
            std::string_view rest = lines_.line();
            switch (takeKeyword(rest)) {
            case ObjKeyword::position: ++seen_.positions; break;
            case ObjKeyword::uv: ++seen_.uvs; break;
            case ObjKeyword::normal: ++seen_.normals; break;
            case ObjKeyword::polygon: readPolygon(rest); break;
            case ObjKeyword::undrawn: countUndrawn(); break;
            case ObjKeyword::material: addName(ObjName::Kind::material, rest); break;
            case ObjKeyword::library: addName(ObjName::Kind::library, rest); break;
            case ObjKeyword::other: break;
            }
        }
        return std::move(statements_);
    }

  private:
    void countUndrawn() {
        if (statements_.undrawn++ == 0) statements_.firstUndrawn = lines_.number();
    }

    void addName(ObjName::Kind kind, std::string_view rest) {
        statements_.names.push_back(
            {.kind = kind, .polygon = statements_.ends.size(), .name = std::string(withoutBlanks(rest))});
    }

    void readPolygon(std::string_view rest) {
        const std::size_t begin = statements_.ends.empty() ? 0 : statements_.ends.back();
        for (std::string_view word = takeObjWord(rest); !word.empty(); word = takeObjWord(rest)) readCorner(word);
        if (statements_.corners.size() - begin >= 3) {
            statements_.ends.push_back(statements_.corners.size());
        } else {
            statements_.corners.resize(begin);
            countUndrawn();
        }
    }

    // One of the forms 1, 1/2, 1//3 and 1/2/3: position, UV coordinates, normal.
    void readCorner(std::string_view word) {
        ObjCorner &corner = statements_.corners.emplace_back();
        std::string_view rest = word;
        corner.position = takeIndex(word, rest, "points", seen_.positions, all_.positions);
        if (takeSlash(rest) && !rest.starts_with('/'))
            corner.uv = takeIndex(word, rest, "texture coordinates", seen_.uvs, all_.uvs);
        if (takeSlash(rest)) corner.normal = takeIndex(word, rest, "normals", seen_.normals, all_.normals);
        if (!rest.empty()) refuseCorner(word);
    }

    // Takes a slash, if there is one. Returns whether there is one and something follows it.
    static bool takeSlash(std::string_view &rest) {
        if (!rest.starts_with('/')) return false;
        rest.remove_prefix(1);
        return !rest.empty();
    }

    [[noreturn]] void refuseCorner(std::string_view word) const {
        refuseLine(file_, lines_.number(), inQuotes(word) + " is not a corner, such as \"1\", \"1/2\" or \"1/2/3\"");
    }

    // Takes the index of a value: counted from 1, or, if it is negative, backwards from this line. The file has `all`
    // values of that kind, of which `seen` precede this line.
    std::uint32_t takeIndex(std::string_view word, std::string_view &rest, const char *kind, std::size_t seen,
                            std::size_t all) const {
        std::int64_t number = 0;
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
        if (error == std::errc::invalid_argument) refuseCorner(word);
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        const std::int64_t index = number > 0 ? number - 1 : static_cast<std::int64_t>(seen) + number;
        if (error != std::errc() || number == 0 || index < 0 || index >= static_cast<std::int64_t>(all))
            refuseLine(file_, lines_.number(),
                       fmt::format("the corner {} names a value that is not there: the file has {} {}", inQuotes(word),
                                   all, kind));
        return static_cast<std::uint32_t>(index);
    }

    const ObjPart &part_;
    const ObjCounts &all_;
    const std::string &file_;
    ObjCounts seen_;
    ObjLines lines_;
    ObjStatements statements_;
};

} // namespace

ObjCounts &ObjCounts::operator+=(const ObjCounts &other) {
    lines += other.lines;
    positions += other.positions;
    uvs += other.uvs;
    normals += other.normals;
    polygons += other.polygons;
    triangles += other.triangles;
    polygonsWithUvs += other.polygonsWithUvs;
    polygonsWithNormals += other.polygonsWithNormals;
    return *this;
}

ObjParts scanObj(std::string_view bytes) {
    ObjParts scanned{.parts = divided(bytes), .all = {}};
    forTasks(scanned.parts.size(), [&](std::size_t i) { countPart(scanned.parts[i]); });
    for (ObjPart &part : scanned.parts) {
        part.before = scanned.all;
        scanned.all += part.own;
    }
    if (std::max({scanned.all.positions, scanned.all.uvs, scanned.all.normals}) >= kNoObjIndex)
        throw InputError("a mesh of more than four billion vertices");
    return scanned;
}

std::optional<ObjValues> readObjValues(const ObjParts &parts, const std::string &file, const Transform &transform) {
    ObjValues values;
    values.positions.resize(parts.all.positions);
    values.uvs.resize(parts.all.uvs);
    values.normals.resize(parts.all.normals);
    std::atomic<bool> haveColours = false;
    forTasks(parts.parts.size(), [&](std::size_t i) {
        const ObjPart &part = parts.parts[i];
        if (part.own.positions + part.own.uvs + part.own.normals == 0) return;
        if (ValueReader(part, file, transform, values).read()) haveColours = true;
    });
    if (haveColours) return std::nullopt;
    return values;
}

ObjStatements readObjStatements(const ObjPart &part, const ObjCounts &all, const std::string &file) {
    return StatementReader(part, all, file).read();
}

} // namespace velm::host
