// Small pieces of DCON text shared by the client and the module emulator:
// hex fields, the checksum, and the engineering-unit number format.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pacsdk {

// Upper-case hex, zero-padded to width digits (the value's low 4*width bits).
std::string hex(uint32_t value, int width);
// The value of a field of 1 to 8 upper-case hex digits; nullopt otherwise.
std::optional<uint32_t> parse_hex(std::string_view field);
// The value of a field of decimal digits only (at most 9); nullopt otherwise.
std::optional<uint32_t> parse_decimal(std::string_view field);
// A DCON analog value: [+-]digits.digits (the point is always there);
// nullopt otherwise.
std::optional<double> parse_real(std::string_view field);

// The two checksum characters of a DCON line: the low byte of the sum of its
// character codes, in upper-case hex.
std::string checksum(std::string_view line);
// line ends with the checksum of what comes before it.
bool checksum_matches(std::string_view line);

// value with the given decimals (locale-independent), its digits
// zero-padded to width characters, with a leading '-' when negative and a
// '+' when positive and plus_sign is set.
std::string fixed(double value, int decimals, int width, bool plus_sign);
// A +-10 V value in engineering units: sign, 2 digits, point, 3 decimals
// ("+05.000", "-10.000").
std::string engineering(double volts);

// The two-digit address field of a module address.
inline std::string address_field(int address) { return hex(static_cast<uint32_t>(address), 2); }

}  // namespace pacsdk
