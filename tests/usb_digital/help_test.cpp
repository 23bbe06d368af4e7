// The script names and help records of the digital group, letter for
// letter: help text, result, one text per parameter.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/catalogue.h"

namespace {

const struct {
    const char* export_name;
    const char* script_name;
    std::vector<std::string> items;
} records[] = {
    {"icpusb_do_setpoweronenable", "ICPUSB_DO_SetPowerOnEnable", {"Digital Output function - Set Power-On enable for specific channel.", "Boolean", "Device handle", "Integer. Channel No. to set", "Boolean. Power on enable for the channel"}},
    {"icpusb_do_setpoweronenables", "ICPUSB_DO_SetPowerOnEnables", {"Digital Output function - Set Power-On enable for all channel", "Boolean", "Device handle", "Vector. The byte array of the power-on enable"}},
    {"icpusb_do_setsafetyenable", "ICPUSB_DO_SetSafetyEnable", {"Digital Output function - Set Safety Enable", "Boolean", "Device handle", "Integer. The safety enable mask"}},
    {"icpusb_do_setsafetyvalue", "ICPUSB_DO_SetSafetyValue", {"Digital Output function - Set Safety Value", "Boolean", "Device handle", "Integer. The safety value. \n Each bit represents the safety value of each channel"}},
    {"icpusb_do_setdigitaloutputinverse", "ICPUSB_DO_SetDigitalOutputInverse", {"Digital output function - Set DO Output Inverse", "Boolean", "Device handle", "Integer. The inverse setting"}},
    {"icpusb_do_writevalue", "ICPUSB_DO_WriteValue", {"Digital Output function - Write DO Value", "Boolean", "Device handle", "Integer. The DO value. Each bit represents the digital output value of each channel."}},
    {"icpusb_do_writechannelvalue", "ICPUSB_DO_WriteChannelValue", {"Digital Output function - Write DO Value to specific channel", "Boolean", "Device handle", "Integer. Channel No. to set", "Integer. The DO on / off bit"}},
    {"icpusb_di_setdigitalfilterwidth", "ICPUSB_DI_SetDigitalFilterWidth", {"Digital input function - Set DI Digital Filter Width", "Boolean", "Device handle", "Integer. The digital filter width \n(The unit is 0.1 ms)"}},
    {"icpusb_di_setdigitalvalueinverse", "ICPUSB_DI_SetDigitalValueInverse", {"Digital input function - Set DI Value Inverse", "Boolean", "Device handle", "Integer. The inverse setting"}},
    {"icpusb_di_setcntedgetrigger", "ICPUSB_DI_SetCntEdgeTrigger", {"Digital input function - Set DI Counter Edge Trigger", "Boolean", "Device handle", "Integer. The counter edge trigger setting"}},
    {"icpusb_di_writeclearcounter", "ICPUSB_DI_WriteClearCounter", {"Digital input function - Clear specified channel of DI Counter Value.", "Boolean", "Device handle", "Integer. The counter channel for clearing "}},
    {"icpusb_di_writeclearcounters", "ICPUSB_DI_WriteClearCounters", {"Digital input function - Clear DI Counter Value with Clear Mask.", "Boolean", "Device handle", "Integer. The counter clear mask"}},
    {"icpusb_do_getdigitaloutputinverse", "ICPUSB_DO_GetDigitalOutputInverse", {"Digital output function - Get DO Output Inverse.", "Integer - The inverse setting", "Device handle"}},
    {"icpusb_di_getdigitalfilterwidth", "ICPUSB_DI_GetDigitalFilterWidth", {"Digital input function - Get DI Digital Filter Width.\n The digital filter width is used for filtering the noise or the glitch.", "Integer. The digital filter width \n(The unit is 0.1 ms)", "Device handle"}},
    {"icpusb_di_getdigitalvalueinverse", "ICPUSB_DI_GetDigitalValueInverse", {"Digital input function - Get DI Value Inverse", "Integer. The inverse setting", "Device handle"}},
    {"icpusb_di_getcntedgetrigger", "ICPUSB_DI_GetCntEdgeTrigger", {"Digital input function - Get DI Counter Edge Trigger.", "Integer.The counter edge trigger setting ", "Device handle"}},
    {"icpusb_do_getpoweronenable", "ICPUSB_DO_GetPowerOnEnable", {"Digital Output function - Get Power-On Enable", "Vector. The power-on enable mask. \n Each byte represents the power-on enable / disable configuration of each channel.", "Device handle"}},
    {"icpusb_do_getsafetyenable", "ICPUSB_DO_GetSafetyEnable", {"Digital Output function - Get Safety Enable", "Real. The safety enable mask. \n Each bit of the mask represents the safety enable / disable configuration of each channel", "Device handle"}},
    {"icpusb_do_getsafetyvalue", "ICPUSB_DO_GetSafetyValue", {"Digital Output function - Get Safety Value.", "Real. The safety value. \n Each bit represents the safety value of each channel", "Device handle"}},
    {"icpusb_do_readvalue", "ICPUSB_DO_ReadValue", {"Digital Output function - Read DO Value", "Real. The DO value. \n Each bit represents the DO value of each channel.", ""}},
    {"icpusb_di_readvalue", "ICPUSB_DI_ReadValue", {"Digital Input function - Read DI Value", "Real. The byte arrays of the DI value", "Device handle"}},
    {"icpusb_di_readcountervalue", "ICPUSB_DI_ReadCounterValue", {"Digital Input function - Read DI Counter Value", "Real. The double-word arrays of the DI counter value", "Device handle"}},
    {"icpusb_di_readchannelvalue", "ICPUSB_DI_ReadChannelValue", {"Digital Input function - Read DI Channel Value", "Integer. The byte of the DI channel value", "Device handle", "Channel number"}},
};

const icp::Function* find(const std::string& export_name) {
    for (const auto* f : icp::catalogue())
        if (export_name == f->export_name) return f;
    return nullptr;
}

TEST(UsbDigitalHelp, NamesAndRecordsLetterForLetter) {
    for (const auto& r : records) {
        const icp::Function* f = find(r.export_name);
        ASSERT_NE(f, nullptr) << r.export_name;
        EXPECT_EQ(f->name().toString(), r.script_name);
        const icp::nvValue record = f->description();
        ASSERT_EQ(record.size(), r.items.size()) << r.script_name;
        for (unsigned i = 0; i < record.size(); ++i)
            EXPECT_EQ(record.value(i).toString(), r.items[i]) << r.script_name << " item " << i;
    }
}

}  // namespace
