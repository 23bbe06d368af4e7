// Rig files and building a rig in code.
#include <cmath>

#include "sim_fixture.h"

namespace {

using pacsdkRig = SimTest;

// A fault is told by its line, and the default rig stays. Text the JSON
// parser alone would abort on, stop early at, or spend memory and stack on
// level by level is refused the same way.
TEST_F(pacsdkRig, FaultsAreToldByLineAndChangeNothing) {
    // JSON written with ' for ", and a list of modules on COM1.
    const auto json = [](std::string text) {
        for (char& c : text) c = c == '\'' ? '"' : c;
        return text;
    };
    const auto modules = [&](const std::string& list) {
        return json("{'serial': [{'port': 'COM1', 'modules': [\n" + list + "]}]}");
    };
    const std::string deep = std::string(100000, '{') + std::string(100000, '}');
    struct {
        std::string text;
        std::string error;
    } const cases[] = {
        {json("{\n  'serial': [\n    {'port': 'COM1',}\n  ]\n}"),
         "line 3: syntax error while parsing object key - unexpected '}'; expected string literal"},
        {"[]", "line 1: a rig is a JSON object"},
        {json("{'usb': [],\n 'serial': {}}"), "line 2: \"serial\" must be a list of ports"},
        {json("{'serial': [\n  {'modules': []}]}"), "line 2: a serial port entry needs \"port\""},
        {json("{'serial': [\n  {'port':\n     'COM0'}]}"), "line 3: \"port\" must be a name COM1 to COM255"},
        {json("{'serial': [{'port': 'COM1'},\n  {'port': 'COM1'}]}"), "line 2: port COM1 is listed twice"},
        {json("{'serial': [{'port': 'COM1',\n  'modules': 4}]}"), "line 2: \"modules\" must be a list"},
        {modules("{'address': 1, 'kind': 'ai'},\n{'address': 256,\n'kind': 'ai'}"),
         "line 3: \"address\" must be an integer 0 to 255"},
        {modules("{'address': 1,\n\n'kind': 'thermo'}"), "line 4: \"kind\" must be one of ai, ao, dio, pwm"},
        {modules("{'address': 7, 'kind': 'ai'},\n{'address': 7, 'kind': 'dio'}"), "line 3: address 7 is taken on COM1"},
        {modules("{'address': 7, 'kind': 'ao', 'inputs': 3}"), "line 2: an ao module has no inputs"},
        {modules("{'address': 7, 'kind': 'dio',\n'checksum': 'yes'}"), "line 3: \"checksum\" must be true or false"},
        {json("{'usb': [], 'x': 1e400}"), "line 1: number out of range: 1e400"},
        {json("{'serial': [],\n 'x': ") + deep + "}", "line 2: arrays and objects nested deeper than 256"},
        {json("{'serial': [{'port':\n 'COM1") + std::string(1, '\0') + json("'}]}"), "line 2: a NUL byte in the text"},
        {json("{'serial': [{'port': '" + std::string(100000, 'C') + "\x01'}]}"),
         "line 1: syntax error while parsing value - invalid string: control character U+0001 (SOH) must be "
         "escaped to \\u0001; last read: '\"" + std::string(63, 'C') + "...'"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        std::string error;
        EXPECT_FALSE(pacsim::check_rig(c.text, &error));
        EXPECT_EQ(error, c.error);
        EXPECT_FALSE(pacsim::load_rig(c.text, &error));
        PAC_HANDLE h = open();
        float v = 0;
        EXPECT_EQ(pac_ReadAI(h, ai_slot, 1, 8, &v), 1);
        EXPECT_FLOAT_EQ(v, 1.0f);
        uart_Close(h);
    }
}

// Loading replaces the rig: ports open before are closed, their handles
// unknown, also for a port of the same name.
TEST_F(pacsdkRig, LoadsPortsModulesAndInitialValues) {
    PAC_HANDLE before = open();
    const char* text = R"({
      "usb": [{"model": "USB2019", "board": 1}],
      "serial": [
        {"port": "COM3", "modules": [
          {"address": 17, "kind": "dio", "inputs": 129, "power_on": 5, "safe": 2},
          {"address": 18, "kind": "ao", "power_on": [0, 7.5], "safe": [0, -2]}]},
        {"port": "COM1"}]})";
    std::string error;
    ASSERT_TRUE(pacsim::check_rig(text, &error)) << error;
    ASSERT_TRUE(pacsim::load_rig(text, &error)) << error;

    EXPECT_FALSE(pacsim::port_open("COM1"));
    char result[20];
    EXPECT_EQ(uart_SendCmd(before, "$01M", result), 0);
    EXPECT_EQ(pac_GetLastError(), PAC_OS_ERR_INVALID_HANDLE);
    PAC_HANDLE h = open("COM3,9600,N,8,1");
    open("COM1");
    uint32_t word = 0;
    ASSERT_EQ(pac_ReadDI_MF(h, PAC_REMOTE_IO(17), 8, &word), 1);
    EXPECT_EQ(word, 129u);
    EXPECT_EQ(pacsim::do_word("COM3", 17), 5u);
    EXPECT_EQ(pacsim::do_safe("COM3", 17), 2u);
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM3", 18, 1), 7.5);
    EXPECT_DOUBLE_EQ(pacsim::ao_safe("COM3", 18, 1), -2.0);

    for (const char* none : {"{}", "{\"serial\": []}", "{\"usb\": [{\"model\": \"USB2019\", \"board\": 1}]}"}) {
        ASSERT_TRUE(pacsim::load_rig(none, &error)) << none << ": " << error;
        EXPECT_EQ(uart_Open("COM1"), PAC_INVALID_HANDLE) << none;
    }
}

TEST_F(pacsdkRig, BuildsInCode) {
    pacsim::reset();
    EXPECT_FALSE(pacsim::add_port("COM0"));
    EXPECT_TRUE(pacsim::add_port("COM7"));
    EXPECT_FALSE(pacsim::add_module("COM8", 1, "ai"));
    EXPECT_FALSE(pacsim::add_module("COM7", 256, "ai"));
    EXPECT_FALSE(pacsim::add_module("COM7", 1, "counter"));
    EXPECT_TRUE(pacsim::add_module("COM7", 0, "ao"));

    PAC_HANDLE h = open("COM7");
    char result[20];
    ASSERT_EQ(uart_SendCmd(h, "$00M", result), 1);
    EXPECT_STREQ(result, "!007024");
    EXPECT_FALSE(pacsim::set_ai("COM7", 0, 0, 1.0));  // an ao module has no inputs
    EXPECT_TRUE(std::isnan(pacsim::ao_output("COM7", 0, 4)));
}

}  // namespace
