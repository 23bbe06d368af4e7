// Number formatting shared by the stand-ins and the command-line host.
#pragma once

#include <charconv>
#include <cmath>
#include <string>

namespace icp_platform {

// The shortest text that reads back as the same double, always with a '.'
// or an exponent so that it reads as a real: 4294967295.0,
// 0.10000000149011612, 1e+300, nan, inf, -inf.
inline std::string shortest_real(double x) {
    if (std::isnan(x)) return "nan";
    if (std::isinf(x)) return x < 0 ? "-inf" : "inf";
    char buf[64];
    auto res = std::to_chars(buf, buf + sizeof buf, x);
    std::string s(buf, res.ptr);
    if (s.find_first_of(".e") == std::string::npos) s += ".0";
    return s;
}

}  // namespace icp_platform
