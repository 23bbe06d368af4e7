// Shared by the USB function tests.
//
// Wrong kinds, missing handles, modules without the group, channel bounds
// of the readers and failing SDK calls are the catalogue-wide tests' (see
// tests/reliability); these tests hold what is particular to each function.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "plugin/state.h"
#include "plugin/values/values.h"
#include "usb/device.h"
#include "usbio_sim.h"

namespace usbtest {

using icp::nvValue;
using icp::make::boolean;
using icp::make::integer;
using icp::make::null;
using icp::make::real;
using icp::make::text;
using Args = std::vector<nvValue>;
using Strings = std::vector<std::string>;

// An Integer of any width: a full 32-bit word, or beyond.
inline nvValue word(long long w) { return nvValue(NuvarelMath::ValueTypes::nvInteger(w)); }
inline nvValue ints(const std::vector<long long>& xs) {
    return icp::make::vector(static_cast<unsigned>(xs.size()), [&](unsigned i) { return word(xs[i]); });
}
inline nvValue reals(const std::vector<double>& xs) {
    return icp::make::vector(static_cast<unsigned>(xs.size()), [&](unsigned i) { return real(xs[i]); });
}
// A matrix of (value, status) rows.
inline nvValue rows(const std::vector<std::pair<nvValue, nvValue>>& r) {
    return icp::make::matrix2(static_cast<unsigned>(r.size()),
                              [&](unsigned i, unsigned c) { return c == 0 ? r[i].first : r[i].second; });
}

// Every body called the same way: the handle, then its further arguments.
using Body = std::function<nvValue(const nvValue&, const Args&)>;
inline Body body(nvValue (*f)(const nvValue&)) { return [f](const nvValue& h, const Args&) { return f(h); }; }
inline Body body(nvValue (*f)(const nvValue&, const nvValue&)) {
    return [f](const nvValue& h, const Args& a) { return f(h, a.at(0)); };
}
inline Body body(nvValue (*f)(const nvValue&, const nvValue&, const nvValue&)) {
    return [f](const nvValue& h, const Args& a) { return f(h, a.at(0), a.at(1)); };
}

// A rig of one module, opened through the plug-in as instance #1, with an
// empty call log and usb_last_error 7.
inline nvValue fresh(const char* model, std::uint8_t board = 1) {
    usbsim::reset();
    EXPECT_TRUE(usbsim::add_module(model, board));
    nvValue handle = icpusb_opendevice(text(model), integer(board));
    EXPECT_NE(handle.pointer(), nullptr);
    usbsim::clear_calls();
    icp::usb_last_error = 7;
    return handle;
}

inline void expect_same(const nvValue& got, const nvValue& want, const std::string& what) {
    EXPECT_EQ(got.kind(), want.kind()) << what << ": " << got.repr();
    EXPECT_EQ(got.repr(), want.repr()) << what;
}

// Each call on a fresh module: the SDK's last log line. (A null result exactly
// when the SDK refuses is the fault walk's, tests/reliability/fault_test.cpp.)
struct Sent {
    Body call;
    Args args;
    const char* line;
};
inline void expect_sent(const char* model, const std::vector<Sent>& cases) {
    for (const auto& c : cases) {
        c.call(fresh(model), c.args);
        EXPECT_EQ(usbsim::calls().back(), c.line);
    }
}

// Each setting written on a fresh module and read back in the getter's kind.
struct ReadBack {
    Body set;
    nvValue value;
    Body get;
    nvValue want;
};
inline void expect_read_back(const char* model, const std::vector<ReadBack>& cases) {
    for (const auto& c : cases) {
        const nvValue h = fresh(model);
        ASSERT_FALSE(c.set(h, {c.value}).isNull()) << usbsim::calls().back();
        expect_same(c.get(h, {}), c.want, usbsim::calls().back());
    }
}

}  // namespace usbtest
