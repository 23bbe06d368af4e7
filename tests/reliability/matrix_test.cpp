// Every function of the catalogue, every parameter position, every kind of
// value a script can pass, while the other positions hold a value of the
// right kind. Each call returns; its result is null or of the function's
// success kind; a value of a wrong kind (or a handle without an address)
// gives null, leaves the error state as the body's first step set it, and
// makes no SDK call beyond those made before any argument is looked at.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "PACSDK.h"
#include "plugin/state.h"
#include "plugin/values/values.h"
#include "tests/reliability/bench.h"

namespace reliability {
namespace {

using icp::make::integer;
using icp::make::real;
using icp::make::text;

nvValue numbers(unsigned n) {
    return icp::make::vector(n, [](unsigned i) { return integer(static_cast<std::int32_t>(i)); });
}

struct Probe {
    std::string label;
    nvValue value;
};

// The values a script can build; vectors that are not numeric have the
// group's length, so that they meet the numeric test.
std::vector<Probe> values(unsigned total) {
    const unsigned n = total > 1 ? total : 2;
    std::vector<Probe> p = {
        {"null", nvValue()},
        {"true", icp::make::boolean(true)},
        {"false", icp::make::boolean(false)},
    };
    for (long long i : {0LL, -1LL, 1LL, 255LL, 256LL, 65535LL, 65536LL, 2147483647LL, -2147483648LL, 4294967295LL,
                        4294967296LL, std::numeric_limits<long long>::max(), std::numeric_limits<long long>::min()})
        p.push_back({"Integer " + std::to_string(i), wide(i)});
    for (double x : {0.5, -0.5, 1e300, -1e300, std::nan(""), std::numeric_limits<double>::infinity(),
                     -std::numeric_limits<double>::infinity(), 5.0})
        p.push_back({"Double " + real(x).repr(), real(x)});
    for (std::size_t len : {0u, 19u, 20u, 300u}) p.push_back({"String of " + std::to_string(len), text(std::string(len, 'A'))});
    p.push_back({"String with a zero byte", text(std::string("$01\0M", 5))});
    for (unsigned len : {0u, 1u, 15u, 16u, 17u, 1000u}) p.push_back({"Vector of " + std::to_string(len), numbers(len)});
    p.push_back({"Vector of Strings", icp::make::vector(n, [](unsigned) { return text("1"); })});
    p.push_back({"nested Vector", icp::make::vector(n, [](unsigned) { return numbers(2); })});
    p.push_back({"Matrix", icp::make::matrix2(n, [](unsigned r, unsigned) { return integer(static_cast<std::int32_t>(r)); })});
    p.push_back({"table", icp::make::table2(n, [](unsigned, unsigned) { return integer(1); }, "a", "b")});
    p.push_back({"handle without address", nvValue(NuvarelMath::ValueTypes::nvInteger(static_cast<nvValue*>(nullptr)))});
    return p;
}

// The bench's handles: open and closed, of both subsystems.
std::vector<Probe> handles(const Bench& b) {
    return {{"open USB handle", b.usb},
            {"closed USB handle", b.usb_closed},
            {"open serial handle", b.com},
            {"closed serial handle", b.com_closed}};
}

constexpr std::int32_t before = 7;

struct Call {
    nvValue result;
    std::vector<std::string> log;  // its SDK calls
    std::int32_t error;
};

// Calls f with both error states at `before` and the call logs cleared.
Call call(const icp::Function& f, const Signature& s, const std::vector<nvValue>& args) {
    icp::usb_last_error = before;
    pac_SetLastError(static_cast<PAC_DWORD>(before));
    clear_calls();
    const nvValue result = f.invoke(args);
    return {result, sdk_calls(), error_state(s)};
}

bool reached_sdk(const Call& c, const Signature& s) {
    return std::any_of(c.log.begin(), c.log.end(), [&](const std::string& l) { return !before_arguments(l, s); });
}

// A call that its checks stopped: null, no SDK call beyond those made before
// the arguments are looked at, and the error state its first step left.
void expect_stopped(const Call& c, const Signature& s, std::int32_t error, const std::string& where) {
    EXPECT_TRUE(c.result.isNull()) << where << ": gave " << describe(c.result);
    for (const auto& line : c.log)
        EXPECT_TRUE(before_arguments(line, s)) << where << ": reached the SDK: " << line;
    EXPECT_EQ(c.error, error) << where << ": error state";
}

// The error state a refused argument leaves: what the body's first step
// set, or untouched (kept at `before`) for the bodies that do not reset it.
std::int32_t refused_error(const icp::Function& f, const Signature& s, Param p) {
    const std::string exp = f.export_name;
    if (exp == "icpusb_last_error" || exp == "icpcom_last_error" || exp.rfind("icpcom_rec_cmd_", 0) == 0)
        return before;
    if (s.usb && p == Param::UsbHandle) return -1;
    return 0;
}

// The SDK call a USB function is named after: "ICPUSB_AO_ReadChExpValueDigital"
// reads the group with "AO_ReadExpValueDigital".
std::string own_call(const icp::Function& f) {
    if (std::string_view(f.export_name) == "icpusb_do_setpoweronenables") return "DO_SetPowerOnEnable";
    std::string n = std::string(f.script_name).substr(std::string_view("ICPUSB_").size());
    for (std::string_view infix : {"ReadChannel", "ReadCh"})
        if (const auto at = n.find(infix); at != std::string::npos) n.replace(at, infix.size(), "Read");
    return n;
}

// The matrix means something only if the right-kind arguments it starts
// from take every function past its checks: each call reaches the SDK
// (beyond the calls made before the arguments are looked at), except the
// few functions that never call it; a USB function reaches its own call.
TEST(Reliability, EveryFunctionEveryPositionEveryKind) {
    const std::vector<std::string> sdk_free = {"plugin_icp_loaded", "icpusb_last_error", "icpcom_rec_cmd_start",
                                               "icpcom_rec_cmd_stop"};
    std::size_t functions = 0, calls = 0;
    for (const icp::Function* f : icp::catalogue()) {
        const Signature s = signature(*f);
        ++functions;
        const Call right = call(*f, s, valid_args(*f, s, set_up(s)));
        const bool free = std::find(sdk_free.begin(), sdk_free.end(), f->export_name) != sdk_free.end();
        EXPECT_EQ(reached_sdk(right, s), !free) << f->script_name << " gave " << describe(right.result);
        if (s.usb && !free) {
            EXPECT_TRUE(std::any_of(right.log.begin(), right.log.end(),
                                    [&](const std::string& l) { return call_name(l) == own_call(*f); }))
                << f->script_name << " never called " << own_call(*f);
        }

        // A call that went no further than the checks changed nothing: the
        // rig is set up afresh only after one that reached the SDK.
        Bench b = set_up(s);
        bool fresh = true;
        const std::vector<Probe> fixed = values(b.total);
        for (std::size_t pos = 0; pos < s.params.size(); ++pos) {
            for (std::size_t k = 0; k < fixed.size() + handles(b).size(); ++k) {
                if (!fresh) b = set_up(s);
                const Probe probe = k < fixed.size() ? fixed[k] : handles(b)[k - fixed.size()];
                std::vector<nvValue> args = valid_args(*f, s, b);
                args[pos] = probe.value;
                const Call c = call(*f, s, args);
                ++calls;
                fresh = !reached_sdk(c, s);

                const std::string where = std::string(f->script_name) + " argument " + std::to_string(pos + 1) +
                                          " (" + f->help[2 + pos] + ") = " + probe.label;
                EXPECT_TRUE(c.result.isNull() || is(s.result, c.result))
                    << where << ": " << describe(c.result) << " is not null nor a " << f->help[1];
                if (!accepts(s.params[pos], probe.value, b.total))
                    expect_stopped(c, s, refused_error(*f, s, s.params[pos]), where);
            }
        }
    }
    std::cout << "argument matrix: " << functions << " functions, " << calls << " calls\n";
}


// A group function on a module without the group stops at the total. A
// per-channel reader (its channel described as a "channel number") takes
// 0 <= channel < total and stops there for any other channel: 256 is no
// channel 0, whatever width the SDK takes.
TEST(Reliability, GroupGateAndReaderChannels) {
    for (const icp::Function* f : icp::catalogue()) {
        const Signature s = signature(*f);
        if (s.group == Group::None) continue;
        Bench b = set_up(s);
        std::vector<nvValue> args = valid_args(*f, s, b);
        args[0] = b.usb_without;
        expect_stopped(call(*f, s, args), s, 0, std::string(f->script_name) + ", module without the group");

        const std::string_view d = f->arity() == 2 ? f->help[3] : "";
        if (!d.ends_with("hannel number") && !d.ends_with("hannel Number")) continue;
        const long long total = b.total;
        for (long long ch : {0LL, total - 1, -1LL, total, 256LL, 256LL + total - 1}) {
            b = set_up(s);
            args = valid_args(*f, s, b);
            args[1] = wide(ch);
            const std::string where = std::string(f->script_name) + ", channel " + std::to_string(ch);
            const Call c = call(*f, s, args);
            if (ch >= total || ch < 0)
                expect_stopped(c, s, 0, where);
            else
                EXPECT_TRUE(is(s.result, c.result)) << where << ": " << describe(c.result);
        }
    }
}

}  // namespace
}  // namespace reliability
