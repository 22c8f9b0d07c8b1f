// What a reader leaves out of a file, counted by kind, for one warning for each kind.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace velm::host {

// How a kind is told of.
template <class Kind>
struct LossWording {
    Kind kind;
    const char *brief;
    const char *one, *many; // `many` with the count for {}
};

// The wording for that many: "a curve is left out", "3 curves are left out". [any thread]
std::string lossText(const char *one, const char *many, std::size_t count);

// `Kind` is an enumeration of `kinds` kinds; `Place` says where in the file something is.
template <class Kind, std::size_t kinds, class Place>
class LossCounts {
  public:
    void add(Kind kind, const Place &place, std::size_t count = 1) {
        if (count == 0) return;
        Entry &entry = at(kind);
        if (entry.count == 0) entry.first = place;
        entry.count += count;
    }
    // The same for things that are many: `place` is only called for the first one of its kind.
    template <class MakePlace>
    void addAt(Kind kind, const MakePlace &place) {
        if (Entry &entry = at(kind); entry.count++ == 0) entry.first = place();
    }
    std::size_t count(Kind kind) const { return entries_[static_cast<std::size_t>(kind)].count; }

  protected:
    struct Found {
        const LossWording<Kind> &wording;
        std::size_t count;
        Place first;
        std::string text;
    };
    // One for each kind of which there is anything, in the order of the wordings.
    std::vector<Found> found(std::span<const LossWording<Kind>> wordings) const {
        std::vector<Found> all;
        for (const LossWording<Kind> &wording : wordings)
            if (const Entry &entry = entries_[static_cast<std::size_t>(wording.kind)]; entry.count > 0)
                all.push_back({.wording = wording,
                               .count = entry.count,
                               .first = entry.first,
                               .text = lossText(wording.one, wording.many, entry.count)});
        return all;
    }

  private:
    struct Entry {
        std::size_t count = 0;
        Place first{};
    };
    Entry &at(Kind kind) { return entries_[static_cast<std::size_t>(kind)]; }

    std::array<Entry, kinds> entries_{};
};

} // namespace velm::host
