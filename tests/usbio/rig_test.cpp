// Rigs: the default rig, JSON rigs and their errors.
#include "fixture.h"

namespace {

using usbioRig = UsbioTest;

TEST_F(usbioRig, LoadsModulesWithTheirOptions) {
    const char* rig = R"({
  "usb": [
    {"model": "USB2051", "board": 0, "user_board": 42, "nickname": "line A", "serial": "X-1", "di": 65535},
    {"model": "USB2019", "board": 7, "ai": [1.5, -3], "ai_open_wire": [5], "plugged": false}
  ],
  "serial": [{"port": "COM1", "modules": []}]
})";
    std::string error;
    ASSERT_TRUE(usbsim::load_rig(rig, &error)) << error;
    auto a = usbsim::module_state(0x433, 42).value();
    EXPECT_EQ(a.rotary_board, 0);
    EXPECT_EQ(a.nickname, "line A");
    EXPECT_EQ(a.serial, "X-1");
    EXPECT_EQ(a.di_value(), 0xFFFFu);
    auto b = usbsim::module_state(0x413, 7).value();
    EXPECT_FALSE(b.plugged);
    EXPECT_EQ(b.ai[1].signal, -3.0);
    EXPECT_TRUE(b.ai[5].open_wire);
    EXPECT_EQ(ScanDevice(), 1);
}

// The reader is the PAC SDK rig's too (tests/pacsdk/rig_test.cpp has the
// hostile texts): the deepest nesting allowed still reads and counts lines.
const std::string deepest = std::string(255, '[') + std::string(255, ']');

TEST_F(usbioRig, ErrorsNameTheLineAndChangeNothing) {
    struct {
        std::string text;
        const char* starts;
    } const cases[] = {
        {"{\"usb\": [\n  {\"model\": \"USB2019\", \"board\": 1},\n  {\"board\": 2,\n   \"model\": \"USB2099\"}\n]}",
         "line 4: unknown model \"USB2099\""},
        {"{\"usb\": [\n\n  {\"model\": \"USB2019\",\n   \"board\": 256}]}", "line 4: "},
        {"{\"usb\": [{\"model\": \"USB2019\", \"board\": 1},\n {\"model\": \"USB2019\", \"board\": 1}]}", "line 2: "},
        {"{\"usb\": [{\"model\": \"USB2055\", \"board\": 0},\n {\"model\": \"USB2055\", \"board\": 16}]}", "line 2: "},
        {"{\"usb\": [{\"model\": \"USB2019\", \"board\": 1,\n \"nickname\": \"abcdefghijklmnopqrstuvwxyz0123456\"}]}",
         "line 2: "},
        {"{\"usb\": [{\"model\": \"USB2019\", \"board\": 1,\n\"ai\": [1, 2, 3, 4, 5, 6, 7, 8, 9]}]}", "line 2: "},
        {"{\"usb\": [{\"model\": \"USB2084\", \"board\": 1, \"pi_frequency\": [1,\n -5]}]}", "line 2: "},
        {"{\"usb\":\n {\"model\": \"USB2019\"}}", "line 2: "},
        {"[1, 2]", "line 1: "},
        {"{\"usb\": [{\"model\": \"USB2019\", \"board\": 3, \"user_board\": 20}]}", "line 1: "},
        {"{\"x\": " + deepest + ",\n \"usb\": [{\"model\": \"USB2019\"}]}", "line 2: a module needs a \"board\""},
    };
    for (const auto& c : cases) {
        usbsim::reset();
        ASSERT_TRUE(usbsim::add_module("USB2045", 9));
        std::string error;
        EXPECT_FALSE(usbsim::check_rig(c.text, &error)) << c.text;
        EXPECT_EQ(error.rfind(c.starts, 0), 0u) << error;
        EXPECT_FALSE(usbsim::load_rig(c.text, &error));
        EXPECT_TRUE(usbsim::module_state(0x42D, 9).has_value()) << "rig changed by: " << c.text;
    }
}

TEST_F(usbioRig, EmptyOrMissingUsbListIsAnEmptyRig) {
    const std::string texts[] = {"{}", "{\"usb\": null, \"serial\": []}", "{\"x\": " + deepest + ", \"usb\": []}"};
    for (const std::string& text : texts) {
        ASSERT_TRUE(usbsim::add_module("USB2045", 9));
        std::string error;
        EXPECT_TRUE(usbsim::load_rig(text, &error)) << error;
        EXPECT_EQ(ScanDevice(), 0) << text;
    }
}

}  // namespace
