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
    void TearDown() override { usbsim::set_trace(nullptr, nullptr); }

    // Attaches a module of the model and opens it on a new instance.
    USBIO_HANDLE attach_and_open(const std::string& model, std::uint8_t board = 1) {
        EXPECT_TRUE(usbsim::add_module(model, board)) << model;
        return open(usbsim::find_model(model)->type_code, board);
    }

    static USBIO_HANDLE open(std::uint16_t type_code, std::uint8_t board) {
        USBIO_HANDLE h = CreateInstance();
        EXPECT_NE(h, nullptr);
        EXPECT_EQ(OpenDevice(h, type_code, board), USBIO_OK);
        return h;
    }

    static const usbsim::Model& model(const std::string& id) { return *usbsim::find_model(id); }

    static usbsim::ModuleState state(const std::string& id, std::uint8_t board = 1) {
        return usbsim::module_state(model(id).type_code, board).value();
    }
};
