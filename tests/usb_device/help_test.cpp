#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/catalogue.h"

namespace {

// Help records as users see them, letter for letter: help text, result,
// one text per parameter.
const struct {
    const char* export_name;
    const char* script_name;
    std::vector<std::string> items;
} records[] = {
    {"icpusb_listdevice", "ICPUSB_ListDevice", {"List all ICP USB devices connected to local PC", "Table"}},
    {"icpusb_opendevice", "ICPUSB_OpenDevice", {"Open ICP USB device with device ID and board ID.\nDevice IDs  'USB2019' 'USB2026' 'USB2045' 'USB2051' 'USB2055' 'USB2060' 'USB2064' 'USB2084' 'USB2055_32' 'USB2068_18' 'USB2045_32' 'USB2051_32' 'USB2060_24' 'USB2064_16' 'USB2069_18' ", "Device handle", "String device ID", "Integer board ID"}},
    {"icpusb_closedevice", "ICPUSB_CloseDevice", {"Close ICP USB device and release resource", "Boolean", "Device handle"}},
    {"icpusb_last_error", "ICPUSB_LastError", {"Get ICP USB device last error", "String or integer", "Sting function return type. 's' for string or 'i' for integer"}},
    {"icpusb_syncdevice", "ICPUSB_SYNCDevice", {"Send synchronization packet to I/O module", "Boolean", "Devica handle"}},
    {"icpusb_setcommtimeout", "ICPUSB_SetCommTimeout", {"Set the communication timeout between packet send and receive.\nThe timeout value will affect communication. If the timeout is small, it means the communication is timeout after the value passed.\n  The default value when first initial an ICP DAS USB I/O is 100ms.", "Boolean", "Device handle", "Integer timeout"}},
    {"icpusb_getcommtimeout", "ICPUSB_GetCommTimeout", {"Get the communication timeout between packet send and receive", "Integer timeout", "Device handle"}},
    {"icpusb_setautoresetwdt", "ICPUSB_SetAutoResetWDT", {"Enable / disable the handle of watchdog by library.\nThe library will return to automatic when open device. This means users have to disable when open device.", "Boolean", "Device handle", "Boolean enable"}},
    {"icpusb_refreshdeviceinfo", "ICPUSB_RefreshDeviceInfo", {"Refresh all information of this device.\n This function will take time to refresh information.", "Boolean", "Device handle"}},
    {"icpusb_setsoftwdttimeout", "ICPUSB_SetSoftWDTTimeout", {"Set the software WDT timeout. The minimum value of timeout is 100ms, and maximum is 30 minutes.", "Boolean", "Device handle", "Integer timeout"}},
    {"icpusb_getsoftwdttimeout", "ICPUSB_GetSoftWDTTimeout", {"Get the software WDT timeout of I/O module", "Integer", "Device handle"}},
    {"icpusb_getdeviceid", "ICPUSB_GetDeviceID", {"Get ID of the device", "Integer", "Device handle"}},
    {"icpusb_getfwver", "ICPUSB_GetFwVer", {"Get firmware version of the device", "Integer", "Device handle"}},
    {"icpusb_getdevicenickname", "ICPUSB_GetDeviceNickName", {"Get nick name of the device", "String", "Device handle"}},
    {"icpusb_setdevicenickname", "ICPUSB_SetDeviceNickName", {"Set nick name of this device. The maximum number of the character of this device is 32.", "Boolean", "Device handle", "String device nick name"}},
    {"icpusb_getdevicesn", "ICPUSB_GetDeviceSN", {"Get serial number of the device", "String", "Device handle"}},
    {"icpusb_getsupportiomask", "ICPUSB_GetSupportIOMask", {"Get the mask of this device IO distribution. Each bit of the mask indicates each supported IO type.", "Integer", "Device handle"}},
    {"icpusb_getditotal", "ICPUSB_GetDITotal", {"Get DI total number of channels of the device", "Integer", "Device hanle"}},
    {"icpusb_getdototal", "ICPUSB_GetDOTotal", {"Get DO total number of channels of the device", "Integer", "Device handle"}},
    {"icpusb_getaitotal", "ICPUSB_GetAITotal", {"Get AI total number of channels of the device", "Integer", "Device handle"}},
    {"icpusb_getaototal", "ICPUSB_GetAOTotal", {"Get AO total number of channels of the device", "Integer", "Device handle"}},
    {"icpusb_getpitotal", "ICPUSB_GetPITotal", {"Get PI total number of channels of the device", "Integer", "Device handle"}},
    {"icpusb_getpototal", "ICPUSB_GetPOTotal", {"Get PO total number of channels of the device", "Integer", "Device handle"}},
    {"icpusb_setuserdefinedboardid", "ICPUSB_SetUserDefinedBoardID", {"Set board ID of this device. The valid value of the ID is from 16 to 127.", "Boolean", "Device handle", "Integer ID"}},
    {"icpusb_loaddefault", "ICPUSB_LoadDefault", {"Load default setting", "Boolean", "Device handle"}},
};

const icp::Function* find(const std::string& export_name) {
    for (const auto* f : icp::catalogue())
        if (export_name == f->export_name) return f;
    return nullptr;
}

TEST(UsbDeviceHelp, NamesAndRecordsLetterForLetter) {
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
