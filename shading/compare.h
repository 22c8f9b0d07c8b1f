// Comparisons of values that may be NaN, as the state nodes make them: where one of the two is a NaN, "equal", "less
// than" and "less than or equal" hold, and their opposites do not. Artists' networks that divide by zero have come to
// rely on it; it needs a build that keeps NaN semantics.
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
