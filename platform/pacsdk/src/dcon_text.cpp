#include "dcon_text.h"

#include <charconv>
#include <cmath>

namespace pacsdk {

namespace {

int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool all_digits(std::string_view s) {
    if (s.empty()) return false;
    for (char c : s)
        if (c < '0' || c > '9') return false;
    return true;
}

}  // namespace

std::string hex(uint32_t value, int width) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out(static_cast<std::size_t>(width), '0');
    for (int i = width - 1; i >= 0; --i) {
        out[static_cast<std::size_t>(i)] = digits[value & 0xF];
        value >>= 4;
    }
    return out;
}

std::optional<uint32_t> parse_hex(std::string_view field) {
    if (field.empty() || field.size() > 8) return std::nullopt;
    uint32_t value = 0;
    for (char c : field) {
        int d = hex_digit(c);
        if (d < 0) return std::nullopt;
        value = (value << 4) | static_cast<uint32_t>(d);
    }
    return value;
}

std::optional<uint32_t> parse_decimal(std::string_view field) {
    if (field.size() > 9 || !all_digits(field)) return std::nullopt;
    uint32_t value = 0;
    for (char c : field) value = value * 10 + static_cast<uint32_t>(c - '0');
    return value;
}

std::optional<double> parse_real(std::string_view field) {
    bool negative = false;
    if (!field.empty() && (field[0] == '+' || field[0] == '-')) {
        negative = field[0] == '-';
        field.remove_prefix(1);
    }
    std::size_t point = field.find('.');
    if (point == std::string_view::npos) return std::nullopt;
    if (!all_digits(field.substr(0, point)) || !all_digits(field.substr(point + 1))) return std::nullopt;
    // from_chars, unlike strtod, ignores the process locale.
    double value = 0;
    auto res = std::from_chars(field.data(), field.data() + field.size(), value, std::chars_format::fixed);
    if (res.ec != std::errc{} || res.ptr != field.data() + field.size()) return std::nullopt;
    return negative ? -value : value;
}

std::string checksum(std::string_view line) {
    uint32_t sum = 0;
    for (char c : line) sum += static_cast<unsigned char>(c);
    return hex(sum & 0xFF, 2);
}

bool checksum_matches(std::string_view line) {
    if (line.size() < 2) return false;
    return line.substr(line.size() - 2) == checksum(line.substr(0, line.size() - 2));
}

std::string fixed(double value, int decimals, int width, bool plus_sign) {
    char buf[400];
    auto res = std::to_chars(buf, buf + sizeof buf, std::fabs(value), std::chars_format::fixed, decimals);
    std::string digits(buf, res.ptr);
    if (digits.size() < static_cast<std::size_t>(width)) digits.insert(0, static_cast<std::size_t>(width) - digits.size(), '0');
    if (std::signbit(value)) return "-" + digits;
    return plus_sign ? "+" + digits : digits;
}

std::string engineering(double volts) { return fixed(volts, 3, 6, true); }

}  // namespace pacsdk
