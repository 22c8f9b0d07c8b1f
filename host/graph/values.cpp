#include "host/graph/values.h"

#include "host/base/colour.h"
#include "module/host.h"

namespace velm::host {

namespace {

struct Components {
    double red, green, blue;
};

// Any value as three components; a scalar in each.
Components readComponents(int type, const void *from) {
    switch (type) {
    case kConnectColour:
    case kConnectVector:
    case kConnectMaterial: { // a material begins with its diffuse colour
        const auto *components = static_cast<const double *>(from);
        return {components[0], components[1], components[2]};
    }
    case kConnectInteger: {
        const double value = *static_cast<const int *>(from);
        return {value, value, value};
    }
    default: {
        const double value = *static_cast<const double *>(from);
        return {value, value, value};
    }
    }
}

double readScalar(int type, const void *from) {
    switch (type) {
    case kConnectColour:
    case kConnectVector:
    case kConnectMaterial: {
        const auto *components = static_cast<const double *>(from);
        return luminance(components[0], components[1], components[2]);
    }
    case kConnectInteger: return *static_cast<const int *>(from);
    default: return *static_cast<const double *>(from);
    }
}

} // namespace

void convertValue(int fromType, const void *from, int toType, void *to) {
    switch (toType) {
    case kConnectColour:
    case kConnectVector: {
        const Components value = readComponents(fromType, from);
        auto *components = static_cast<double *>(to);
        components[0] = value.red;
        components[1] = value.green;
        components[2] = value.blue;
        break;
    }
    case kConnectMaterial: {
        HostMaterial material{};
        if (fromType == kConnectMaterial) {
            material = *static_cast<const HostMaterial *>(from);
        } else {
            const Components value = readComponents(fromType, from);
            material.diffuse[0] = value.red;
            material.diffuse[1] = value.green;
            material.diffuse[2] = value.blue;
        }
        *static_cast<HostMaterial *>(to) = material;
        break;
    }
    case kConnectInteger:
        // A double holds every int exactly, so that integer -> integer loses nothing.
        *static_cast<int *>(to) = truncateToInt(readScalar(fromType, from));
        break;
    default: *static_cast<double *>(to) = readScalar(fromType, from);
    }
}

int valueSize(int type) {
    switch (type) {
    case kConnectColour:
    case kConnectVector: return 3 * sizeof(double);
    case kConnectScalar:
    case kConnectFunction: return sizeof(double);
    case kConnectInteger: return sizeof(int);
    case kConnectMaterial: return sizeof(HostMaterial);
    default: return 0;
    }
}

const char *typeName(int type) {
    switch (type) {
    case kConnectColour: return "colour";
    case kConnectScalar: return "scalar";
    case kConnectVector: return "vector";
    case kConnectInteger: return "integer";
    case kConnectFunction: return "function";
    case kConnectMaterial: return "material";
    default: return "unknown";
    }
}

} // namespace velm::host
