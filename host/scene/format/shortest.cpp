#include "host/scene/format/shortest.h"

#include "module/host.h"

#include <charconv>
#include <cmath>

namespace velm::host {

double shortest(double shown, double factor) {
    const auto held = [factor](double number) { return static_cast<float>(number / factor); };
    if (!std::isfinite(shown) || shown == 0) return shown == 0 ? 0 : shown;
    constexpr int kMostDigits = 17;
    char text[64];
    for (int digits = 1; digits < kMostDigits; ++digits) {
        const auto written = std::to_chars(text, text + sizeof text, shown, std::chars_format::scientific, digits - 1);
        double read = 0;
        std::from_chars(text, written.ptr, read);
        if (held(read) == held(shown)) return read;
    }
    return shown;
}

namespace {

Double3 shortest(Double3 numbers, double factor) {
    for (double &number : numbers) number = velm::host::shortest(number, factor);
    return numbers;
}

KeyDescription shortest(KeyDescription key, double factor) {
    key.time = velm::host::shortest(key.time, 1);
    key.value = shortest(key.value, factor);
    for (double *number : {&key.tension, &key.continuity, &key.bias}) *number = velm::host::shortest(*number, 1);
    // The handles of this shape are two-dimensional: every other number is a time.
    for (std::size_t i = 0; i < key.parameters.size(); ++i)
        key.parameters[i] =
            velm::host::shortest(key.parameters[i], key.shape == kShapeBezier2 && i % 2 == 0 ? 1 : factor);
    return key;
}

} // namespace

SettingValue shortest(SettingValue value, double factor) {
    if (auto *number = std::get_if<double>(&value)) *number = shortest(*number, factor);
    if (auto *vector = std::get_if<Double3>(&value)) *vector = shortest(*vector, factor);
    if (auto *keys = std::get_if<KeysDescription>(&value))
        for (KeyDescription &key : keys->keys) key = shortest(key, factor);
    return value;
}

} // namespace velm::host
