// Comparisons of values that may be NaN, as the state nodes make them: where one of the two is a NaN, "equal", "less
// than" and "less than or equal" hold, and their opposites do not. Artists' networks that divide by zero have come to
// rely on it; it needs a build that keeps NaN semantics.
#pragma once

namespace velm {

inline bool comparesGreater(double a, double b) { return a > b; }
inline bool comparesGreaterOrEqual(double a, double b) { return a >= b; }
inline bool comparesNotEqual(double a, double b) { return a < b || a > b; }
inline bool comparesEqual(double a, double b) { return !comparesNotEqual(a, b); }
inline bool comparesLess(double a, double b) { return !comparesGreaterOrEqual(a, b); }
inline bool comparesLessOrEqual(double a, double b) { return !comparesGreater(a, b); }

} // namespace velm
