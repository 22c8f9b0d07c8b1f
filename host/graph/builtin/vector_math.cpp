// One of many operations on up to two vectors and a factor. Operations whose result is a number give it as "Scalar",
// and as each component of "Vector". For all others, "Scalar" is the length of the vector. A component that is not
// defined, as after a division by 0, is 0.
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/operations.h"
#include "host/graph/builtin/vectors.h"

#include <algorithm>
#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kA, kB, kFactor, kOperation };
enum { kVectorOut, kScalarOut };

struct VectorOperation {
    const char *text;
    bool hasB = false, hasFactor = false; // whether B and the factor are evaluated
    // One of the two: the operation's vector or number.
    Vector (*vector)(const Vector &a, const Vector &b, double factor) = nullptr;
    double (*scalar)(const Vector &a, const Vector &b) = nullptr;
};

template <double (*join)(double, double)>
Vector eachOfBoth(const Vector &a, const Vector &b, double) {
    return {join(a[0], b[0]), join(a[1], b[1]), join(a[2], b[2])};
}

template <double (*change)(double)>
Vector each(const Vector &a, const Vector &, double) {
    return {change(a[0]), change(a[1]), change(a[2])};
}

double added(double a, double b) { return a + b; }
double subtracted(double a, double b) { return a - b; }
double multiplied(double a, double b) { return a * b; }
double divided(double a, double b) { return a / b; }
double smaller(double a, double b) { return std::min(a, b); }
double larger(double a, double b) { return std::max(a, b); }
double magnitude(double a) { return std::fabs(a); }
double negated(double a) { return -a; }
double roundedDown(double a) { return std::floor(a); }
double fraction(double a) { return a - std::floor(a); }

// The mirror image of a direction at a surface with the normal b. Without a normal, the direction itself.
Vector reflected(const Vector &a, const Vector &b, double) {
    const Vector normal = normalised(b);
    return addScaled(a, -2 * dot(a, normal), normal);
}

// The unit direction after refraction at a surface with the normal b, on either of its sides. The factor is the index
// of refraction before the surface divided by the one behind it. {0, 0, 0} for total internal reflection.
Vector refracted(const Vector &a, const Vector &b, double factor) {
    const Vector direction = normalised(a), normal = normalised(b);
    const double cosine = dot(direction, normal), squared = 1 - factor * factor * (1 - cosine * cosine);
    if (squared < 0) return {};
    const double along = std::copysign(std::sqrt(squared), cosine) - factor * cosine;
    return addScaled(addScaled({}, factor, direction), along, normal);
}

// The part of a that is parallel to b.
Vector projected(const Vector &a, const Vector &b, double) {
    const Vector axis = normalised(b);
    return addScaled({}, dot(a, axis), axis);
}

// a, turned about the axis b by the factor in radians (O. Rodrigues, 1840): about +Z, +X turns towards +Y. Without an
// axis, a itself.
Vector rotated(const Vector &a, const Vector &b, double factor) {
    const Vector axis = normalised(b);
    if (axis == Vector{}) return a;
    const double cosine = std::cos(factor);
    const Vector turned = addScaled(addScaled({}, cosine, a), std::sin(factor), cross(axis, a));
    return addScaled(turned, dot(axis, a) * (1 - cosine), axis);
}

Vector scaled(const Vector &a, const Vector &, double factor) { return addScaled({}, factor, a); }

Vector mixedVector(const Vector &a, const Vector &b, double factor) {
    Vector result = a;
    for (std::size_t i = 0; i < 3; ++i) result[i] += (b[i] - a[i]) * factor;
    return result;
}

double distance(const Vector &a, const Vector &b) { return lengthOf(addScaled(a, -1, b)); }

// New operations are added at the end: scenes save an operation by its index.
constexpr VectorOperation kOperations[] = {
    {.text = "Add", .hasB = true, .vector = eachOfBoth<added>},
    {.text = "Subtract", .hasB = true, .vector = eachOfBoth<subtracted>},
    {.text = "Multiply", .hasB = true, .vector = eachOfBoth<multiplied>},
    {.text = "Divide", .hasB = true, .vector = eachOfBoth<divided>},
    {.text = "Scale", .hasFactor = true, .vector = scaled},
    {.text = "Mix", .hasB = true, .hasFactor = true, .vector = mixedVector},
    {.text = "Minimum", .hasB = true, .vector = eachOfBoth<smaller>},
    {.text = "Maximum", .hasB = true, .vector = eachOfBoth<larger>},
    {.text = "Absolute", .vector = each<magnitude>},
    {.text = "Negate", .vector = each<negated>},
    {.text = "Floor", .vector = each<roundedDown>},
    {.text = "Fraction", .vector = each<fraction>},
    {.text = "Normalize", .vector = [](const Vector &a, const Vector &, double) { return normalised(a); }},
    {.text = "Cross Product",
     .hasB = true,
     .vector = [](const Vector &a, const Vector &b, double) { return cross(a, b); }},
    {.text = "Dot Product", .hasB = true, .scalar = dot},
    {.text = "Length", .scalar = [](const Vector &a, const Vector &) { return lengthOf(a); }},
    {.text = "Distance", .hasB = true, .scalar = distance},
    {.text = "Reflect", .hasB = true, .vector = reflected},
    {.text = "Refract", .hasB = true, .hasFactor = true, .vector = refracted},
    {.text = "Project", .hasB = true, .vector = projected},
    {.text = "Rotate", .hasB = true, .hasFactor = true, .vector = rotated},
};

constexpr auto kOperationTexts = operationTexts(kOperations);

void give(const Evaluation &evaluation, int output) {
    const VectorOperation &operation = kOperations[evaluation.choice(kOperation)];
    const Vector a = evaluation.triple(kA), b = operation.hasB ? evaluation.triple(kB) : Vector{};
    if (operation.scalar) {
        const double result = definedOrZero(operation.scalar(a, b));
        return output == kScalarOut ? evaluation.set(result) : evaluation.set(Vector{result, result, result});
    }
    Vector result = operation.vector(a, b, operation.hasFactor ? evaluation.scalar(kFactor) : 0);
    for (double &component : result) component = definedOrZero(component);
    output == kScalarOut ? evaluation.set(definedOrZero(lengthOf(result))) : evaluation.set(result);
}

} // namespace

constinit const Definition vectorMath{
    .name = "Vector Math",
    .colour = kMathColour,
    .parameters = {{{.label = "A", .kind = Kind::vector},
                    {.label = "B", .kind = Kind::vector},
                    {.label = "Factor", .initial = {1}},
                    {.label = "Operation", .kind = Kind::choice, .texts = kOperationTexts.data()}}},
    .outputs = {{{"Vector", kConnectVector}, {"Scalar", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
