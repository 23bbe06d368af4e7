#include <cstring>
#include <span>
#include <vector>

#include "plugin/catalogue.h"
#include "tests/com/serial_fixture.h"

namespace icp::groups {
extern const std::span<const Function> com_port;
extern const std::span<const Function> com_commands;
}  // namespace icp::groups

namespace com_test {
namespace {

struct Help {
    const char* export_name;
    const char* script_name;
    std::vector<const char*> items;
};

const Help help[] = {
    {"icpcom_opendevice", "ICPCOM_OpenDevice",
     {"Opens the COM device and specifies the baud rate, parity bits, data bits, and stop bits", "Device handle",
      "String, COM port, baud rate, parity bits, data bits, and stop bits. The default setting is "
      "'COM1,115200,N,8,1'"}},
    {"icpcom_closedevice", "ICPCOM_CloseDevice", {"Closes the COM device", "Boolean", "Device handle"}},
    {"icpcom_last_error", "ICPCOM_LastError",
     {"Get ICP COM device last error", "String or integer",
      "Sting function return type. 's' for string or 'i' for integer"}},
    {"icpcom_sendcmd", "ICPCOM_SendCmd",
     {"Sends commands through the COM port", "String response", "Device handle opened by icpcom_opendevice()",
      "String command"}},
    {"icpcom_rec_cmd_start", "ICPCOM Rec Cmd Start",
     {"Starts recording commands send by icpcom_sendcmd() function", "Boolean"}},
    {"icpcom_rec_cmd_stop", "ICPCOM Rec Cmd Stop",
     {"Stops recording commands send by icpcom_sendcmd() function and return commands as string vector",
      "Vector"}},
    {"icpcom_rec_cmd_exec", "ICPCOM Rec Cmd Exec",
     {"Executes commands recorded by icpcom_rec_cmd_stop() function", "Boolean",
      "Device handle opened by icpcom_opendevice()", "Vector commands"}},
};

TEST(SerialHelp, NamesAndHelpRecordsLetterForLetter) {
    EXPECT_EQ(icp::groups::com_port.size() + icp::groups::com_commands.size(), std::size(help));
    const auto all = icp::catalogue();
    for (const auto& h : help) {
        SCOPED_TRACE(h.export_name);
        std::vector<const icp::Function*> found;
        for (const auto* f : all)
            if (std::strcmp(f->export_name, h.export_name) == 0) found.push_back(f);
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(found[0]->name().toString(), h.script_name);
        const nvValue record = found[0]->description();
        ASSERT_EQ(record.size(), h.items.size());
        for (unsigned i = 0; i < record.size(); ++i) EXPECT_EQ(record.value(i).toString(), h.items[i]);
    }
}

}  // namespace
}  // namespace com_test
