#include "plugin/values/values.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace icp {

using namespace NuvarelMath::ValueTypes;

// Halfway between the largest float and 2^128: from there on the nearest
// float is infinity; below it a conversion rounds to the nearest float, the
// largest float included.
float to_float(double x) {
    constexpr double overflow = 0x1.ffffffp127;
    if (x >= overflow) return std::numeric_limits<float>::infinity();
    if (x <= -overflow) return -std::numeric_limits<float>::infinity();
    return static_cast<float>(x);
}

namespace arg {

std::optional<std::int32_t> int32(const nvValue& v) {
    if (!v.isInteger()) return std::nullopt;
    return v.toInt();
}

std::optional<std::uint8_t> uint8(const nvValue& v) {
    if (!v.isInteger()) return std::nullopt;
    return static_cast<std::uint8_t>(v.toInt());
}

std::optional<std::uint16_t> uint16(const nvValue& v) {
    if (!v.isInteger()) return std::nullopt;
    return static_cast<std::uint16_t>(v.toInt());
}

std::optional<std::int16_t> int16(const nvValue& v) {
    if (!v.isInteger()) return std::nullopt;
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(v.toInt()));
}

std::optional<std::uint32_t> uint32(const nvValue& v) {
    if (!v.isUnsignedInteger()) return std::nullopt;
    return v.toUnsignedInt();
}

std::optional<std::uint16_t> mask16(const nvValue& v) {
    if (!v.isUnsignedInteger()) return std::nullopt;
    return static_cast<std::uint16_t>(v.toUnsignedInt());
}

std::optional<float> real32(const nvValue& v) {
    if (!v.isDouble()) return std::nullopt;
    return to_float(v.toDouble());
}

std::optional<std::uint8_t> flag(const nvValue& v) {
    if (!v.isBoolean()) return std::nullopt;
    return static_cast<std::uint8_t>(v.toBool() ? 1 : 0);
}

std::optional<std::int32_t> flag_as_int32(const nvValue& v) {
    if (!v.isBoolean()) return std::nullopt;
    return v.toInt();
}

std::optional<std::string> text(const nvValue& v) {
    if (!v.isString()) return std::nullopt;
    return v.toString();
}

std::optional<unsigned> channel(const nvValue& v, unsigned total) {
    if (!v.isInteger()) return std::nullopt;
    const std::int32_t c = v.toInt();
    if (c < 0 || static_cast<unsigned>(c) >= total) return std::nullopt;
    return static_cast<unsigned>(c);
}

}  // namespace arg

namespace make {

nvValue null() { return nvValue(); }

nvValue boolean(bool b) {
    nvBoolean value(b);
    nvValue result(std::move(value));
    return result;
}

nvValue integer(std::int32_t i) {
    nvInteger value(static_cast<int>(i));
    nvValue result(std::move(value));
    return result;
}

nvValue real(double x) {
    nvDouble value(x);
    nvValue result(std::move(value));
    return result;
}

nvValue text(std::string_view s) {
    std::vector<CharFormat> formats;
    nvSymbolicValue value(std::string(s), true, formats);
    nvValue result(std::move(value));
    return result;
}

nvValue text_of(const char* buffer, std::size_t capacity) {
    // Replies are a few characters: a plain scan beats the library's.
    const char* end = std::find(buffer, buffer + capacity, '\0');
    return text(std::string_view(buffer, static_cast<std::size_t>(end - buffer)));
}

nvValue handle(void* address) {
    nvInteger value(static_cast<nvValue*>(address));
    nvValue result(std::move(value));
    return result;
}

}  // namespace make
}  // namespace icp
