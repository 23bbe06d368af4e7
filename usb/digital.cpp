// USB digital output and input.
//
// The bodies are compositions of the shapes of usb/body.h, gated by the DO
// or DI group, so a module without the group never sees the function's own
// SDK call.
#include "usb/digital.h"

#include <array>
#include <cstdint>

#include "plugin/catalogue.h"
#include "usb/body.h"
#include "usb/info.h"

using icp::nvValue;
using icp::usb::Group;
namespace arg = icp::arg;
namespace make = icp::make;
namespace usb = icp::usb;

namespace {

// The DO power-on enable table holds 32 entries on every DO module,
// whatever its output count.
constexpr unsigned power_on_channels = 32;

}  // namespace

// --- Digital output setters ---

ICP_EXPORT nvValue icpusb_do_setpoweronenable(const nvValue& handle, const nvValue& channel,
                                              const nvValue& enable) {
    return usb::channel_setter(handle, Group::DO, channel, enable, arg::flag, DO_SetPowerOnEnable);
}

// Always 32 calls; the first failing channel stops the loop and leaves the
// channels before it set.
ICP_EXPORT nvValue icpusb_do_setpoweronenables(const nvValue& handle, const nvValue& mask) {
    return usb::group_body(handle, Group::DO, [&](USBIO_HANDLE device, unsigned) {
        const auto bits = arg::uint32(mask);
        if (!bits) return usb::refused();
        for (unsigned ch = 0; ch < power_on_channels; ++ch) {
            const auto enable = static_cast<std::uint8_t>((*bits >> ch) & 1u);
            icp::usb_last_error = DO_SetPowerOnEnable(device, static_cast<std::uint8_t>(ch), enable);
            if (icp::usb_last_error != 0) return make::null();
        }
        return make::boolean(true);
    });
}

ICP_EXPORT nvValue icpusb_do_setsafetyenable(const nvValue& handle, const nvValue& mask) {
    return usb::setter(handle, Group::DO, mask, arg::uint32, usb::by_address(DO_SetSafetyEnable));
}

ICP_EXPORT nvValue icpusb_do_setsafetyvalue(const nvValue& handle, const nvValue& value) {
    return usb::setter(handle, Group::DO, value, arg::uint32, usb::by_address(DO_SetSafetyValue));
}

ICP_EXPORT nvValue icpusb_do_setdigitaloutputinverse(const nvValue& handle, const nvValue& inverse) {
    return usb::setter(handle, Group::DO, inverse, arg::uint32, DO_SetDigitalOutputInverse);
}

ICP_EXPORT nvValue icpusb_do_writevalue(const nvValue& handle, const nvValue& value) {
    return usb::setter(handle, Group::DO, value, arg::uint32, usb::by_address(DO_WriteValue));
}

// The on/off value is an integer (not a Boolean), passed as its low 8 bits.
ICP_EXPORT nvValue icpusb_do_writechannelvalue(const nvValue& handle, const nvValue& channel,
                                               const nvValue& value) {
    return usb::channel_setter(handle, Group::DO, channel, value, arg::uint8, DO_WriteChannelValue);
}

// --- Digital input setters ---

// Width in 0.1 ms, passed as its low 16 bits.
ICP_EXPORT nvValue icpusb_di_setdigitalfilterwidth(const nvValue& handle, const nvValue& width) {
    return usb::setter(handle, Group::DI, width, arg::uint16, DI_SetDigitalFilterWidth);
}

ICP_EXPORT nvValue icpusb_di_setdigitalvalueinverse(const nvValue& handle, const nvValue& inverse) {
    return usb::setter(handle, Group::DI, inverse, arg::uint32, DI_SetDigitalValueInverse);
}

ICP_EXPORT nvValue icpusb_di_setcntedgetrigger(const nvValue& handle, const nvValue& setting) {
    return usb::setter(handle, Group::DI, setting, arg::uint32, DI_SetCntEdgeTrigger);
}

ICP_EXPORT nvValue icpusb_di_writeclearcounter(const nvValue& handle, const nvValue& channel) {
    return usb::setter(handle, Group::DI, channel, arg::uint8, DI_WriteClearCounter);
}

ICP_EXPORT nvValue icpusb_di_writeclearcounters(const nvValue& handle, const nvValue& mask) {
    return usb::setter(handle, Group::DI, mask, arg::uint32, DI_WriteClearCounters);
}

// --- Integer getters ---

ICP_EXPORT nvValue icpusb_do_getdigitaloutputinverse(const nvValue& handle) {
    return usb::integer_getter(handle, Group::DO, DO_GetDigitalOutputInverse);
}

ICP_EXPORT nvValue icpusb_di_getdigitalfilterwidth(const nvValue& handle) {
    return usb::integer_getter(handle, Group::DI, DI_GetDigitalFilterWidth);
}

ICP_EXPORT nvValue icpusb_di_getdigitalvalueinverse(const nvValue& handle) {
    return usb::integer_getter(handle, Group::DI, DI_GetDigitalValueInverse);
}

ICP_EXPORT nvValue icpusb_di_getcntedgetrigger(const nvValue& handle) {
    return usb::integer_getter(handle, Group::DI, DI_GetCntEdgeTrigger);
}

// --- Power-on enables ---

// The SDK fills a fixed 32-byte table; the result shows its first `total`
// entries as Booleans. A total beyond the table is refused rather than read
// past its end.
ICP_EXPORT nvValue icpusb_do_getpoweronenable(const nvValue& handle) {
    return usb::group_body(handle, Group::DO, [&](USBIO_HANDLE device, unsigned total) {
        if (total > power_on_channels) return usb::refused();
        std::array<std::uint8_t, power_on_channels> enables{};
        const std::int32_t code = DO_GetPowerOnEnable(device, enables.data());
        return usb::sdk(code, [&] {
            return make::vector(total, [&](unsigned i) { return make::boolean(enables[i] != 0); });
        });
    });
}

// --- Words read as reals ---

ICP_EXPORT nvValue icpusb_do_getsafetyenable(const nvValue& handle) {
    return usb::real_getter(handle, Group::DO, DO_GetSafetyEnable);
}

ICP_EXPORT nvValue icpusb_do_getsafetyvalue(const nvValue& handle) {
    return usb::real_getter(handle, Group::DO, DO_GetSafetyValue);
}

ICP_EXPORT nvValue icpusb_do_readvalue(const nvValue& handle) {
    return usb::real_getter(handle, Group::DO, DO_ReadValue);
}

ICP_EXPORT nvValue icpusb_di_readvalue(const nvValue& handle) {
    return usb::real_getter(handle, Group::DI, DI_ReadValue);
}

ICP_EXPORT nvValue icpusb_di_readcountervalue(const nvValue& handle) {
    return usb::real_getter(handle, Group::DI, DI_ReadCounterValue);
}

// --- One input channel ---

// Makes no SDK call of its own and does not clear usb_last_error itself:
// the total body leaves 0, -1 for a missing handle, or the SDK's code, and
// the read body its own code. Channels above 31 lie outside the one DI word
// and are refused after the read.
ICP_EXPORT nvValue icpusb_di_readchannelvalue(const nvValue& handle, const nvValue& channel) {
    const std::int32_t total = icpusb_getditotal(handle).toInt();
    if (!icp::address_of(handle)) return make::null();
    const auto ch = arg::channel(channel, total > 0 ? static_cast<unsigned>(total) : 0u);
    if (!ch) return make::null();
    const nvValue reading = icpusb_di_readvalue(handle);
    if (reading.isNull()) return make::null();
    const auto word = static_cast<std::uint32_t>(reading.toInt());
    if (*ch > 31) return make::null();
    return make::integer(static_cast<std::int32_t>((word >> *ch) & 1u));
}

// --- Catalogue ---

// "ICPUSB_DO_ReadValue" describes its handle parameter with the empty text;
// its record still has three items.

#define ICP_USB_DIGITAL_FUNCTIONS(F) \
    F(icpusb_do_setpoweronenable, "ICPUSB_DO_SetPowerOnEnable", \
      "Digital Output function - Set Power-On enable for specific channel.", \
      "Boolean", \
      "Device handle", \
      "Integer. Channel No. to set", \
      "Boolean. Power on enable for the channel") \
    F(icpusb_do_setpoweronenables, "ICPUSB_DO_SetPowerOnEnables", \
      "Digital Output function - Set Power-On enable for all channel", \
      "Boolean", \
      "Device handle", \
      "Vector. The byte array of the power-on enable") \
    F(icpusb_do_setsafetyenable, "ICPUSB_DO_SetSafetyEnable", \
      "Digital Output function - Set Safety Enable", \
      "Boolean", \
      "Device handle", \
      "Integer. The safety enable mask") \
    F(icpusb_do_setsafetyvalue, "ICPUSB_DO_SetSafetyValue", \
      "Digital Output function - Set Safety Value", \
      "Boolean", \
      "Device handle", \
      "Integer. The safety value. \n Each bit represents the safety value of each channel") \
    F(icpusb_do_setdigitaloutputinverse, "ICPUSB_DO_SetDigitalOutputInverse", \
      "Digital output function - Set DO Output Inverse", \
      "Boolean", \
      "Device handle", \
      "Integer. The inverse setting") \
    F(icpusb_do_writevalue, "ICPUSB_DO_WriteValue", \
      "Digital Output function - Write DO Value", \
      "Boolean", \
      "Device handle", \
      "Integer. The DO value. Each bit represents the digital output value of each channel.") \
    F(icpusb_do_writechannelvalue, "ICPUSB_DO_WriteChannelValue", \
      "Digital Output function - Write DO Value to specific channel", \
      "Boolean", \
      "Device handle", \
      "Integer. Channel No. to set", \
      "Integer. The DO on / off bit") \
    F(icpusb_di_setdigitalfilterwidth, "ICPUSB_DI_SetDigitalFilterWidth", \
      "Digital input function - Set DI Digital Filter Width", \
      "Boolean", \
      "Device handle", \
      "Integer. The digital filter width \n(The unit is 0.1 ms)") \
    F(icpusb_di_setdigitalvalueinverse, "ICPUSB_DI_SetDigitalValueInverse", \
      "Digital input function - Set DI Value Inverse", \
      "Boolean", \
      "Device handle", \
      "Integer. The inverse setting") \
    F(icpusb_di_setcntedgetrigger, "ICPUSB_DI_SetCntEdgeTrigger", \
      "Digital input function - Set DI Counter Edge Trigger", \
      "Boolean", \
      "Device handle", \
      "Integer. The counter edge trigger setting") \
    F(icpusb_di_writeclearcounter, "ICPUSB_DI_WriteClearCounter", \
      "Digital input function - Clear specified channel of DI Counter Value.", \
      "Boolean", \
      "Device handle", \
      "Integer. The counter channel for clearing ") \
    F(icpusb_di_writeclearcounters, "ICPUSB_DI_WriteClearCounters", \
      "Digital input function - Clear DI Counter Value with Clear Mask.", \
      "Boolean", \
      "Device handle", \
      "Integer. The counter clear mask") \
    F(icpusb_do_getdigitaloutputinverse, "ICPUSB_DO_GetDigitalOutputInverse", \
      "Digital output function - Get DO Output Inverse.", \
      "Integer - The inverse setting", \
      "Device handle") \
    F(icpusb_di_getdigitalfilterwidth, "ICPUSB_DI_GetDigitalFilterWidth", \
      "Digital input function - Get DI Digital Filter Width.\n The digital filter width is used for filtering the noise or the glitch.", \
      "Integer. The digital filter width \n(The unit is 0.1 ms)", \
      "Device handle") \
    F(icpusb_di_getdigitalvalueinverse, "ICPUSB_DI_GetDigitalValueInverse", \
      "Digital input function - Get DI Value Inverse", \
      "Integer. The inverse setting", \
      "Device handle") \
    F(icpusb_di_getcntedgetrigger, "ICPUSB_DI_GetCntEdgeTrigger", \
      "Digital input function - Get DI Counter Edge Trigger.", \
      "Integer.The counter edge trigger setting ", \
      "Device handle") \
    F(icpusb_do_getpoweronenable, "ICPUSB_DO_GetPowerOnEnable", \
      "Digital Output function - Get Power-On Enable", \
      "Vector. The power-on enable mask. \n Each byte represents the power-on enable / disable configuration of each channel.", \
      "Device handle") \
    F(icpusb_do_getsafetyenable, "ICPUSB_DO_GetSafetyEnable", \
      "Digital Output function - Get Safety Enable", \
      "Real. The safety enable mask. \n Each bit of the mask represents the safety enable / disable configuration of each channel", \
      "Device handle") \
    F(icpusb_do_getsafetyvalue, "ICPUSB_DO_GetSafetyValue", \
      "Digital Output function - Get Safety Value.", \
      "Real. The safety value. \n Each bit represents the safety value of each channel", \
      "Device handle") \
    F(icpusb_do_readvalue, "ICPUSB_DO_ReadValue", \
      "Digital Output function - Read DO Value", \
      "Real. The DO value. \n Each bit represents the DO value of each channel.", \
      "") \
    F(icpusb_di_readvalue, "ICPUSB_DI_ReadValue", \
      "Digital Input function - Read DI Value", \
      "Real. The byte arrays of the DI value", \
      "Device handle") \
    F(icpusb_di_readcountervalue, "ICPUSB_DI_ReadCounterValue", \
      "Digital Input function - Read DI Counter Value", \
      "Real. The double-word arrays of the DI counter value", \
      "Device handle") \
    F(icpusb_di_readchannelvalue, "ICPUSB_DI_ReadChannelValue", \
      "Digital Input function - Read DI Channel Value", \
      "Integer. The byte of the DI channel value", \
      "Device handle", \
      "Channel number")

ICP_CATALOGUE_GROUP(usb_digital, ICP_USB_DIGITAL_FUNCTIONS)
