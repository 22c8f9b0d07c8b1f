// Counts what a reader leaves out of a file, so that there is one warning for each kind of thing.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace velm::host {

// The texts of the warning about a kind.
template <class Kind>
struct LossWording {
    Kind kind;
    const char *brief;      // a few words: "hidden layers"
    const char *one, *many; // a line, for a count of 1 and for others; "{}" in `many` is replaced by the count
};

// `one` for a count of 1, else `many` with the count instead of "{}", which it must contain: "a curve is left out",
// "3 curves are left out". [any thread]
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
    // Adds one. `place` makes the place and is only called for the first one of its kind.
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
    // An entry for each kind whose count is not 0, in the order of the wordings.
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
