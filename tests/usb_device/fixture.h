// A fresh simulator and usb_last_error for every test, and shorthands for
// host values and the SDK's call log.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/state.h"
#include "plugin/values/values.h"
#include "usb/device.h"
#include "usbio_sim.h"

namespace usbtest {

using icp::nvValue;
using icp::make::integer;
using icp::make::text;

class UsbTest : public ::testing::Test {
protected:
    void SetUp() override {
        usbsim::reset();
        icp::usb_last_error = 0;
    }

    // Attaches a module, opens it through the plug-in and forgets the calls.
    static nvValue attach_and_open(const char* model, std::uint8_t board) {
        EXPECT_TRUE(usbsim::add_module(model, board));
        nvValue handle = icpusb_opendevice(text(model), integer(board));
        EXPECT_NE(handle.pointer(), nullptr);
        usbsim::clear_calls();
        return handle;
    }

    static std::vector<std::string> log() { return usbsim::calls(); }
};

}  // namespace usbtest
