#include "usb/info.h"

#include <array>
#include <cstdint>

#include "ICPDAS_USBIO.h"
#include "plugin/catalogue.h"
#include "usb/body.h"

using namespace icp;
using usb::action;
using usb::device_wide;  // every setting here: no group gate
using usb::integer_getter;
using usb::setter;

namespace {

// Nickname and serial number buffers: up to 31 bytes of text and a zero.
constexpr std::size_t text_capacity = 32;

// A text output into a 32-byte buffer whose first byte is preset to 0; the
// result is the text up to the first zero byte (possibly empty).
template <class Call>
nvValue text_getter(const nvValue& handle, Call call) {
    return usb::body(handle, [&](USBIO_HANDLE device) {
        std::array<char, text_capacity> buffer;
        buffer[0] = '\0';
        return usb::sdk(call(device, buffer.data()), [&] { return make::text_of(buffer.data(), buffer.size()); });
    });
}

}  // namespace

ICP_EXPORT nvValue icpusb_syncdevice(const nvValue& handle) { return action(handle, device_wide, SYNCDevice); }

// Any Integer passes; the SDK enforces its limits.
ICP_EXPORT nvValue icpusb_setcommtimeout(const nvValue& handle, const nvValue& timeout) {
    return setter(handle, device_wide, timeout, arg::int32, SetCommTimeout);
}

ICP_EXPORT nvValue icpusb_getcommtimeout(const nvValue& handle) { return integer_getter(handle, device_wide, GetCommTimeout); }

// Only a Boolean is accepted, and it is converted as an integer.
ICP_EXPORT nvValue icpusb_setautoresetwdt(const nvValue& handle, const nvValue& enable) {
    return setter(handle, device_wide, enable, arg::flag_as_int32, SetAutoResetWDT);
}

ICP_EXPORT nvValue icpusb_refreshdeviceinfo(const nvValue& handle) { return action(handle, device_wide, RefreshDeviceInfo); }

ICP_EXPORT nvValue icpusb_setsoftwdttimeout(const nvValue& handle, const nvValue& timeout) {
    return setter(handle, device_wide, timeout, arg::int32, SetSoftWDTTimeout);
}

ICP_EXPORT nvValue icpusb_getsoftwdttimeout(const nvValue& handle) { return integer_getter(handle, device_wide, GetSoftWDTTimeout); }
ICP_EXPORT nvValue icpusb_getdeviceid(const nvValue& handle) { return integer_getter(handle, device_wide, GetDeviceID); }
ICP_EXPORT nvValue icpusb_getfwver(const nvValue& handle) { return integer_getter(handle, device_wide, GetFwVer); }

ICP_EXPORT nvValue icpusb_getdevicenickname(const nvValue& handle) {
    return text_getter(handle, GetDeviceNickName);
}

// A text of 32 bytes or more would not leave room for its zero in the
// buffer: it is refused before the SDK is called.
ICP_EXPORT nvValue icpusb_setdevicenickname(const nvValue& handle, const nvValue& nickname) {
    return usb::body(handle, [&](USBIO_HANDLE device) {
        const auto text = arg::text(nickname);
        if (!text || text->size() >= text_capacity) return usb::refused();
        std::array<char, text_capacity> buffer{};
        text->copy(buffer.data(), text->size());
        return usb::sdk(SetDeviceNickName(device, buffer.data()));
    });
}

ICP_EXPORT nvValue icpusb_getdevicesn(const nvValue& handle) { return text_getter(handle, GetDeviceSN); }
ICP_EXPORT nvValue icpusb_getsupportiomask(const nvValue& handle) { return integer_getter(handle, device_wide, GetSupportIOMask); }

// Unlike the group check of the I/O functions, a total of 0 is a result
// and a failing call keeps its code.
ICP_EXPORT nvValue icpusb_getditotal(const nvValue& handle) { return integer_getter(handle, device_wide, GetDITotal); }
ICP_EXPORT nvValue icpusb_getdototal(const nvValue& handle) { return integer_getter(handle, device_wide, GetDOTotal); }
ICP_EXPORT nvValue icpusb_getaitotal(const nvValue& handle) { return integer_getter(handle, device_wide, GetAITotal); }
ICP_EXPORT nvValue icpusb_getaototal(const nvValue& handle) { return integer_getter(handle, device_wide, GetAOTotal); }
ICP_EXPORT nvValue icpusb_getpitotal(const nvValue& handle) { return integer_getter(handle, device_wide, GetPITotal); }
ICP_EXPORT nvValue icpusb_getpototal(const nvValue& handle) { return integer_getter(handle, device_wide, GetPOTotal); }

// The low 8 bits of any Integer; the range 16 to 127 is the SDK's to check.
ICP_EXPORT nvValue icpusb_setuserdefinedboardid(const nvValue& handle, const nvValue& id) {
    return setter(handle, device_wide, id, arg::uint8, SetUserDefinedBoardID);
}

ICP_EXPORT nvValue icpusb_loaddefault(const nvValue& handle) { return action(handle, device_wide, LoadDefault); }

// clang-format off
#define ICP_USB_INFO_FUNCTIONS(F)                                                                \
    F(icpusb_syncdevice, "ICPUSB_SYNCDevice",                                                    \
      "Send synchronization packet to I/O module", "Boolean", "Devica handle")                   \
    F(icpusb_setcommtimeout, "ICPUSB_SetCommTimeout",                                            \
      "Set the communication timeout between packet send and receive.\n"                         \
      "The timeout value will affect communication. If the timeout is small, it means the "      \
      "communication is timeout after the value passed.\n"                                       \
      "  The default value when first initial an ICP DAS USB I/O is 100ms.",                     \
      "Boolean", "Device handle", "Integer timeout")                                             \
    F(icpusb_getcommtimeout, "ICPUSB_GetCommTimeout",                                            \
      "Get the communication timeout between packet send and receive", "Integer timeout",        \
      "Device handle")                                                                           \
    F(icpusb_setautoresetwdt, "ICPUSB_SetAutoResetWDT",                                          \
      "Enable / disable the handle of watchdog by library.\n"                                    \
      "The library will return to automatic when open device. This means users have to "        \
      "disable when open device.",                                                               \
      "Boolean", "Device handle", "Boolean enable")                                              \
    F(icpusb_refreshdeviceinfo, "ICPUSB_RefreshDeviceInfo",                                      \
      "Refresh all information of this device.\n"                                                \
      " This function will take time to refresh information.",                                  \
      "Boolean", "Device handle")                                                                \
    F(icpusb_setsoftwdttimeout, "ICPUSB_SetSoftWDTTimeout",                                      \
      "Set the software WDT timeout. The minimum value of timeout is 100ms, and maximum is 30 "  \
      "minutes.",                                                                                \
      "Boolean", "Device handle", "Integer timeout")                                             \
    F(icpusb_getsoftwdttimeout, "ICPUSB_GetSoftWDTTimeout",                                      \
      "Get the software WDT timeout of I/O module", "Integer", "Device handle")                  \
    F(icpusb_getdeviceid, "ICPUSB_GetDeviceID",                                                  \
      "Get ID of the device", "Integer", "Device handle")                                        \
    F(icpusb_getfwver, "ICPUSB_GetFwVer",                                                        \
      "Get firmware version of the device", "Integer", "Device handle")                          \
    F(icpusb_getdevicenickname, "ICPUSB_GetDeviceNickName",                                      \
      "Get nick name of the device", "String", "Device handle")                                  \
    F(icpusb_setdevicenickname, "ICPUSB_SetDeviceNickName",                                      \
      "Set nick name of this device. The maximum number of the character of this device is 32.", \
      "Boolean", "Device handle", "String device nick name")                                     \
    F(icpusb_getdevicesn, "ICPUSB_GetDeviceSN",                                                  \
      "Get serial number of the device", "String", "Device handle")                              \
    F(icpusb_getsupportiomask, "ICPUSB_GetSupportIOMask",                                        \
      "Get the mask of this device IO distribution. Each bit of the mask indicates each "        \
      "supported IO type.",                                                                      \
      "Integer", "Device handle")                                                                \
    F(icpusb_getditotal, "ICPUSB_GetDITotal",                                                    \
      "Get DI total number of channels of the device", "Integer", "Device hanle")                \
    F(icpusb_getdototal, "ICPUSB_GetDOTotal",                                                    \
      "Get DO total number of channels of the device", "Integer", "Device handle")               \
    F(icpusb_getaitotal, "ICPUSB_GetAITotal",                                                    \
      "Get AI total number of channels of the device", "Integer", "Device handle")               \
    F(icpusb_getaototal, "ICPUSB_GetAOTotal",                                                    \
      "Get AO total number of channels of the device", "Integer", "Device handle")               \
    F(icpusb_getpitotal, "ICPUSB_GetPITotal",                                                    \
      "Get PI total number of channels of the device", "Integer", "Device handle")               \
    F(icpusb_getpototal, "ICPUSB_GetPOTotal",                                                    \
      "Get PO total number of channels of the device", "Integer", "Device handle")               \
    F(icpusb_setuserdefinedboardid, "ICPUSB_SetUserDefinedBoardID",                              \
      "Set board ID of this device. The valid value of the ID is from 16 to 127.",               \
      "Boolean", "Device handle", "Integer ID")                                                  \
    F(icpusb_loaddefault, "ICPUSB_LoadDefault",                                                  \
      "Load default setting", "Boolean", "Device handle")
// clang-format on

ICP_CATALOGUE_GROUP(usb_info, ICP_USB_INFO_FUNCTIONS)
