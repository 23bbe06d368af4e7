// Shared by the serial tests: the default rig (COM1, modules ai, ao, dio and
// pwm at addresses 1 to 4) with COM1 open, value makers and call-log queries.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "PACSDK.h"
#include "com/commands.h"
#include "com/io.h"
#include "com/port.h"
#include "com/pwm.h"
#include "com/watchdog.h"
#include "pacsdk_sim.h"
#include "plugin/state.h"
#include "plugin/values/values.h"

namespace com_test {

using icp::nvValue;
using Lines = std::vector<std::string>;
using Call = std::function<nvValue(const nvValue& port)>;
using P = const nvValue&;

inline nvValue str(const std::string& s) { return icp::make::text(s); }
inline nvValue integer(int i) { return icp::make::integer(i); }
inline nvValue real(double x) { return icp::make::real(x); }
inline nvValue boolean(bool b) { return icp::make::boolean(b); }
inline nvValue vec(std::initializer_list<nvValue> items) {
    std::vector<nvValue> v(items);
    return icp::make::vector(static_cast<unsigned>(v.size()), [&](unsigned i) { return v[i]; });
}

// The call-log lines that start with prefix, without it: "dcon> " gives the
// DCON lines that went out on the wire.
inline Lines logged(const std::string& prefix) {
    Lines out;
    for (const auto& line : pacsim::calls())
        if (line.starts_with(prefix)) out.push_back(line.substr(prefix.size()));
    return out;
}

// Same kind and same printed form.
inline void expect_same(const nvValue& actual, const nvValue& expected) {
    EXPECT_EQ(actual.kind(), expected.kind());
    EXPECT_EQ(actual.repr(), expected.repr());
}

class Serial : public ::testing::Test {
protected:
    // A fresh default rig, COM1 opened, the call log cleared.
    void SetUp() override {
        pacsim::use_default_rig();
        icp::recording_enabled = false;
        icp::recorded_commands.clear();
        port = icpcom_opendevice(str("COM1,115200,N,8,1"));
        ASSERT_NE(port.pointer(), nullptr);
        pacsim::clear_calls();
    }
    nvValue port;
};

}  // namespace com_test
