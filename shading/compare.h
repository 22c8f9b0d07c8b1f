// Comparisons of numbers that may be NaN. If either of the two is a NaN, "equal", "less than" and "less than or equal"
// hold, and their opposites do not. Networks that divide by zero rely on this. It needs a build that preserves NaN
// semantics.
#pragma once

namespace velm::plugin {

enum class Relation { equal, notEqual, greater, less, greaterOrEqual, lessOrEqual };

inline bool related(double a, Relation relation, double b) {
    switch (relation) {
    case Relation::equal: return !(a < b || a > b);
    case Relation::notEqual: return a < b || a > b;
    case Relation::greater: return a > b;
    case Relation::less: return !(a >= b);
    case Relation::greaterOrEqual: return a >= b;
    case Relation::lessOrEqual: break;
    }
    return !(a > b);
}

} // namespace velm::plugin
