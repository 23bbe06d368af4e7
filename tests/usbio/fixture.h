// Shared fixture of the USB I/O simulator tests: an empty rig per test.
// The suites are named usbio... so that "ctest -R usbio" selects them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "ICPDAS_USBIO.h"
#include "usbio_sim.h"

class UsbioTest : public ::testing::Test {
protected:
    void SetUp() override { usbsim::reset(); }

    // Attaches a module of the model at board 1 and opens it on a new instance.
    static USBIO_HANDLE attach_and_open(const std::string& model) {
        EXPECT_TRUE(usbsim::add_module(model, 1)) << model;
        USBIO_HANDLE h = CreateInstance();
        EXPECT_EQ(OpenDevice(h, usbsim::find_model(model)->type_code, 1), USBIO_OK) << model;
        return h;
    }

    static usbsim::ModuleState state(const std::string& model) {
        return usbsim::module_state(usbsim::find_model(model)->type_code, 1).value();
    }
};
