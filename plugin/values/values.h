// The vocabulary every script function body is written in: argument checks
// with their conversions to the SDKs' C types (icp::arg), and result
// builders (icp::make).
//
// An argument check answers std::nullopt when the value is of the wrong kind
// (or, for channels and vectors, out of the allowed range); the body then
// returns the null result without touching the SDK. Integers reach the SDKs
// at the parameter's width by truncation, with no range check; every real
// reaches an SDK as single precision.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "NvMathLib.h"

namespace icp {

using NuvarelMath::ValueTypes::nvValue;

// A double narrowed to the nearest single-precision value; beyond the float
// range an infinity, never undefined behaviour.
float to_float(double x);

namespace arg {

// Integer kind, as a signed 32-bit value.
std::optional<std::int32_t> int32(const nvValue& v);
// Integer kind, low 8 bits (board IDs, channel numbers, per-channel bytes).
std::optional<std::uint8_t> uint8(const nvValue& v);
// Integer kind, low 16 bits.
std::optional<std::uint16_t> uint16(const nvValue& v);
// Integer kind, low 16 bits read as signed.
std::optional<std::int16_t> int16(const nvValue& v);
// Unsigned-integer kind (bit masks and words), 32 bits.
std::optional<std::uint32_t> uint32(const nvValue& v);
// Unsigned-integer kind, low 16 bits (16-channel masks).
std::optional<std::uint16_t> mask16(const nvValue& v);
// Double kind, narrowed to single precision.
std::optional<float> real32(const nvValue& v);
// Boolean kind, as 0 or 1.
std::optional<std::uint8_t> flag(const nvValue& v);
// Boolean kind, converted as an integer (toInt), 32 bits.
std::optional<std::int32_t> flag_as_int32(const nvValue& v);
// String kind, its text.
std::optional<std::string> text(const nvValue& v);
// Integer kind with 0 <= channel < total: a channel that can be read.
std::optional<unsigned> channel(const nvValue& v, unsigned total);

// Element conversions for per_channel().
namespace element {
inline std::uint8_t uint8(const nvValue& v) { return static_cast<std::uint8_t>(v.toInt()); }
inline std::uint16_t uint16(const nvValue& v) { return static_cast<std::uint16_t>(v.toInt()); }
inline std::uint32_t uint32(const nvValue& v) { return v.toUnsignedInt(); }
inline float real32(const nvValue& v) { return to_float(v.toDouble()); }
}  // namespace element

// A vector of exactly `total` numbers, each converted into a fixed array of
// N entries (entries from total on stay zero). A total beyond the array's
// capacity is refused like a wrong argument.
template <class T, std::size_t N, class Convert>
std::optional<std::array<T, N>> per_channel(const nvValue& v, unsigned total, Convert convert) {
    if (!v.isVector() || v.size() != total || !v.isNumericVectorOrMatrix() || total > N)
        return std::nullopt;
    std::array<T, N> out{};
    for (unsigned i = 0; i < total; ++i) out[i] = convert(v.value(i));
    return out;
}

}  // namespace arg

namespace make {

nvValue null();
nvValue boolean(bool b);
nvValue integer(std::int32_t i);
nvValue real(double x);
// A 32-bit word read without sign: 0 .. 4294967295.
inline nvValue real_unsigned(std::uint32_t w) { return real(static_cast<double>(w)); }
nvValue text(std::string_view s);
// The text of a fixed buffer up to its first zero byte (or its end).
nvValue text_of(const char* buffer, std::size_t capacity);
// A value carrying an opaque address (device instance, port handle).
nvValue handle(void* address);

// nvVector(n, false, true, false) with element(i) set for i = 0 .. n-1.
template <class Element>
nvValue vector(unsigned n, Element element) {
    NuvarelMath::ValueTypes::nvVector v(n, false, true, false);
    for (unsigned i = 0; i < n; ++i) v.setValue(element(i), i);
    nvValue result(std::move(v));
    return result;
}

// nvMatrix(rows, 2, true, false, false) filled row by row, column 0 before
// column 1.
template <class Cell>
nvValue matrix2(unsigned rows, Cell cell) {
    NuvarelMath::ValueTypes::nvMatrix m(rows, 2, true, false, false);
    for (unsigned r = 0; r < rows; ++r)
        for (unsigned c = 0; c < 2; ++c) m.setValue(cell(r, c), r, c);
    nvValue result(std::move(m));
    return result;
}

// matrix2() with column names, which makes it a table.
template <class Cell>
nvValue table2(unsigned rows, Cell cell, const char* name0, const char* name1) {
    NuvarelMath::ValueTypes::nvMatrix m(rows, 2, true, false, false);
    for (unsigned r = 0; r < rows; ++r)
        for (unsigned c = 0; c < 2; ++c) m.setValue(cell(r, c), r, c);
    m.setColumnNames({text(name0), text(name1)});
    nvValue result(std::move(m));
    return result;
}

}  // namespace make

// A pointer-carrying argument's address, or null when it carries none.
inline void* address_of(const nvValue& v) { return static_cast<void*>(v.pointer()); }

}  // namespace icp
