// USB pulse input.
//
// The bodies are compositions of the shapes of usb/body.h, gated by the PI
// group, so a module without pulse inputs never sees the function's own SDK
// call.
#include "usb/pulse.h"

#include <cstdint>

#include "plugin/catalogue.h"
#include "usb/body.h"

using icp::nvValue;
using icp::usb::Group;
namespace arg = icp::arg;
namespace make = icp::make;
namespace usb = icp::usb;

// --- One channel: type code, trigger mode, flags, filter width ---

ICP_EXPORT nvValue icpusb_pi_settypecode(const nvValue& handle, const nvValue& channel, const nvValue& code) {
    return usb::channel_setter(handle, Group::PI, channel, code, arg::uint8, PI_SetTypeCode);
}

ICP_EXPORT nvValue icpusb_pi_settypecodes(const nvValue& handle, const nvValue& codes) {
    return usb::vector_setter(handle, Group::PI, codes, arg::element::uint8, PI_SetTypeCodes);
}

ICP_EXPORT nvValue icpusb_pi_settriggermode(const nvValue& handle, const nvValue& channel, const nvValue& mode) {
    return usb::channel_setter(handle, Group::PI, channel, mode, arg::uint8, PI_SetTriggerMode);
}

ICP_EXPORT nvValue icpusb_pi_settriggermodes(const nvValue& handle, const nvValue& modes) {
    return usb::vector_setter(handle, Group::PI, modes, arg::element::uint8, PI_SetTriggerModes);
}

ICP_EXPORT nvValue icpusb_pi_setchisolatedflag(const nvValue& handle, const nvValue& channel, const nvValue& flag) {
    return usb::channel_setter(handle, Group::PI, channel, flag, arg::flag, PI_SetChIsolatedFlag);
}

ICP_EXPORT nvValue icpusb_pi_setchisolatedflags(const nvValue& handle, const nvValue& mask) {
    return usb::mask_setter(handle, Group::PI, mask, PI_SetChIsolatedFlags);
}

ICP_EXPORT nvValue icpusb_pi_setlpfilterenable(const nvValue& handle, const nvValue& channel,
                                               const nvValue& enable) {
    return usb::channel_setter(handle, Group::PI, channel, enable, arg::flag, PI_SetLPFilterEnable);
}

ICP_EXPORT nvValue icpusb_pi_setlpfilterenables(const nvValue& handle, const nvValue& mask) {
    return usb::mask_setter(handle, Group::PI, mask, PI_SetLPFilterEnables);
}

// The width is not compared with the module's 32767 us: any Integer goes
// to the SDK as its low 16 bits.
ICP_EXPORT nvValue icpusb_pi_setlpfilterwidth(const nvValue& handle, const nvValue& channel, const nvValue& width) {
    return usb::channel_setter(handle, Group::PI, channel, width, arg::uint16, PI_SetLPFilterWidth);
}

ICP_EXPORT nvValue icpusb_pi_setlpfilterwidths(const nvValue& handle, const nvValue& widths) {
    return usb::vector_setter(handle, Group::PI, widths, arg::element::uint16, PI_SetLPFilterWidths);
}

// --- Clearing counts and statuses ---

ICP_EXPORT nvValue icpusb_pi_clearsinglechcount(const nvValue& handle, const nvValue& channel) {
    return usb::setter(handle, Group::PI, channel, arg::uint8, PI_ClearSingleChCount);
}

ICP_EXPORT nvValue icpusb_pi_clearchcount(const nvValue& handle, const nvValue& mask) {
    return usb::mask_setter(handle, Group::PI, mask, PI_ClearChCount);
}

ICP_EXPORT nvValue icpusb_pi_clearsinglechstatus(const nvValue& handle, const nvValue& channel) {
    return usb::setter(handle, Group::PI, channel, arg::uint8, PI_ClearSingleChStatus);
}

ICP_EXPORT nvValue icpusb_pi_clearchstatus(const nvValue& handle, const nvValue& mask) {
    return usb::mask_setter(handle, Group::PI, mask, PI_ClearChStatus);
}

// --- Settings read back ---

ICP_EXPORT nvValue icpusb_pi_gettotalsupporttype(const nvValue& handle) {
    return usb::integer_getter(handle, Group::PI, PI_GetTotalSupportType);
}

// As many entries as the module has channels, whatever the number of
// supported types.
ICP_EXPORT nvValue icpusb_pi_getsupporttypecode(const nvValue& handle) {
    return usb::vector_getter<usb::support_capacity>(handle, Group::PI, PI_GetSupportTypeCode, make::integer);
}

ICP_EXPORT nvValue icpusb_pi_gettypecode(const nvValue& handle) {
    return usb::vector_getter(handle, Group::PI, PI_GetTypeCode, make::integer);
}

ICP_EXPORT nvValue icpusb_pi_gettriggermode(const nvValue& handle) {
    return usb::vector_getter(handle, Group::PI, PI_GetTriggerMode, make::integer);
}

ICP_EXPORT nvValue icpusb_pi_getlpfilterwidth(const nvValue& handle) {
    return usb::vector_getter(handle, Group::PI, PI_GetLPFilterWidth, make::integer);
}

ICP_EXPORT nvValue icpusb_pi_getchisolatedflag(const nvValue& handle) {
    return usb::mask_getter(handle, Group::PI, PI_GetChIsolatedFlag);
}

ICP_EXPORT nvValue icpusb_pi_getlpfilterenable(const nvValue& handle) {
    return usb::mask_getter(handle, Group::PI, PI_GetLPFilterEnable);
}

// --- Values with their statuses ---

ICP_EXPORT nvValue icpusb_pi_readvalue(const nvValue& handle) {
    return usb::status_matrix(handle, Group::PI, PI_ReadValue, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_pi_readchvalue(const nvValue& handle, const nvValue& channel) {
    return usb::channel_status(handle, Group::PI, channel, PI_ReadValue, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_pi_readcntvalue(const nvValue& handle) {
    return usb::status_matrix(handle, Group::PI, PI_ReadCntValue, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_pi_readchcntvalue(const nvValue& handle, const nvValue& channel) {
    return usb::channel_status(handle, Group::PI, channel, PI_ReadCntValue, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_pi_readfreqvalue(const nvValue& handle) {
    return usb::status_matrix(handle, Group::PI, PI_ReadFreqValue, make::real);
}

ICP_EXPORT nvValue icpusb_pi_readchfreqvalue(const nvValue& handle, const nvValue& channel) {
    return usb::channel_status(handle, Group::PI, channel, PI_ReadFreqValue, make::real);
}

// --- Catalogue ---

// "ICPUSB_PI_SetTypeCodes" carries the analog input group's help record for
// its twin, word for word. Where a help text names a vector, an "Integer" or
// a "Matrix [2x1]", the body's argument kinds and result shapes stand.

#define ICP_USB_PULSE_FUNCTIONS(F) \
    F(icpusb_pi_settypecode, "ICPUSB_PI_SetTypeCode", \
      "Pulse input function - Set type code for specific channel", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific channel to set", \
      "Integer. The type code for the specific channel") \
    F(icpusb_pi_settypecodes, "ICPUSB_PI_SetTypeCodes", \
      "Analog input function - Set type code for all channels", \
      "Boolean", \
      "Device handle", \
      "Vector. The integer array of type code to set") \
    F(icpusb_pi_settriggermode, "ICPUSB_PI_SetTriggerMode", \
      "Pulse input function - Set trigger mode to specific channel", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific channel to set", \
      "Integer. The type code for the specific channel") \
    F(icpusb_pi_settriggermodes, "ICPUSB_PI_SetTriggerModes", \
      "Pulse input function - Set trigger mode to all channel", \
      "Boolean", \
      "Device handle", \
      "Vector. The integer array of trigger mode to set") \
    F(icpusb_pi_setchisolatedflag, "ICPUSB_PI_SetChIsolatedFlag", \
      "Pulse input function - Set channel isolated flag", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific channel to set", \
      "Boolean. The isolated flag for the specific channel") \
    F(icpusb_pi_setchisolatedflags, "ICPUSB_PI_SetChIsolatedFlags", \
      "Pulse input function - Set channel isolated flag to all channels", \
      "Boolean", \
      "Device handle", \
      "Integer. The byte arrays of channel isolated flag") \
    F(icpusb_pi_setlpfilterenable, "ICPUSB_PI_SetLPFilterEnable", \
      "Pulse input function - Set low-pass filter enable to specific channel", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific channel to set", \
      "Boolean. The enable flag for the specific channel") \
    F(icpusb_pi_setlpfilterenables, "ICPUSB_PI_SetLPFilterEnables", \
      "Pulse input function - Set low-pass filter enable to all channel", \
      "Boolean", \
      "Device handle", \
      "Integer. The byte array of low-pass filter enable mask") \
    F(icpusb_pi_setlpfilterwidth, "ICPUSB_PI_SetLPFilterWidth", \
      "Pulse input function - Set low-pass filter width", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific channel to set", \
      "Integer. The low-pass filter width. (uS)") \
    F(icpusb_pi_setlpfilterwidths, "ICPUSB_PI_SetLPFilterWidths", \
      "Pulse input function - Set low-pass filter enable to all channels", \
      "Boolean", \
      "Device handle", \
      "Vector. The integer array of low-pass filter enable mask") \
    F(icpusb_pi_clearsinglechcount, "ICPUSB_PI_ClearSingleChCount", \
      "Pulse input function - Clear specific channel count", \
      "Boolean", \
      "Device handle", \
      "Integer. The channel index for clearing") \
    F(icpusb_pi_clearchcount, "ICPUSB_PI_ClearChCount", \
      "Pulse input function - Clear channel count with clear mask. \nEach byte indicates 8 channels clear mask, set for channel clear", \
      "Boolean", \
      "Device handle", \
      "Integer. The byte array of channel count clear") \
    F(icpusb_pi_clearsinglechstatus, "ICPUSB_PI_ClearSingleChStatus", \
      "Pulse input function - Clear specific channel status", \
      "Boolean", \
      "Device handle", \
      "Integer. The channel index for clearing") \
    F(icpusb_pi_clearchstatus, "ICPUSB_PI_ClearChStatus", \
      "Pulse input function - Clear channel status with clear mask. \nEach byte indicates 8 channels clear mask, set for channel clear.", \
      "Boolean", \
      "Device handle", \
      "Vector. The integer array of channel status clear mask") \
    F(icpusb_pi_gettotalsupporttype, "ICPUSB_PI_GetTotalSupportType", \
      "Pulse input function - Get total supported amount", \
      "Integer.The number of total support type", \
      "Device handle") \
    F(icpusb_pi_getsupporttypecode, "ICPUSB_PI_GetSupportTypeCode", \
      "Pulse input function - Get supported type code", \
      "Vector. Integer array - the number of total support type", \
      "Device handle") \
    F(icpusb_pi_gettypecode, "ICPUSB_PI_GetTypeCode", \
      "Pulse input function - Get type code. \nPlease refer to user's manual to map PI channels input type.", \
      "Vector. The integer array of type code", \
      "Device handle") \
    F(icpusb_pi_gettriggermode, "ICPUSB_PI_GetTriggerMode", \
      "Pulse input function - Get trigger mode", \
      "Vector. The integer array of trigger mode", \
      "Device handle") \
    F(icpusb_pi_getlpfilterwidth, "ICPUSB_PI_GetLPFilterWidth", \
      "Pulse input function - Get low-pass filter width. \nThe unit of the width is uS. The maximum value of width is 32767uS", \
      "Vector. The integer array of the low-pass filter width in uS", \
      "Device handle") \
    F(icpusb_pi_getchisolatedflag, "ICPUSB_PI_GetChIsolatedFlag", \
      "Pulse input function - Get channel isolated flag. \nEach byte indicates 8 channels flag", \
      "Real. The byte arrays of channel isolated flag", \
      "Device handle") \
    F(icpusb_pi_getlpfilterenable, "ICPUSB_PI_GetLPFilterEnable", \
      "Pulse input function - Get low-pass filter enable. \nEach byte indicates 8 channels enable/disable mask.", \
      "Real. The byte array of the low-pass filter enable mask", \
      "Device handle") \
    F(icpusb_pi_readvalue, "ICPUSB_PI_ReadValue", \
      "Pulse input function - Get PI value in digital format", \
      "Matrix. The real array of the PI channel counter value, and the integer array of the channel status", \
      "Device handle") \
    F(icpusb_pi_readchvalue, "ICPUSB_PI_ReadChValue", \
      "Pulse input function - Get PI value in real format of the specific channel.", \
      "Matrix [2x1]. Real the PI channel counter value, and integer channel status", \
      "Device handle", \
      "Integer. Channel Number") \
    F(icpusb_pi_readcntvalue, "ICPUSB_PI_ReadCntValue", \
      "Pulse input function - Read PI value in double-word format. \nThis method reads the all counter value of channels", \
      "Matrix. The real array of the PI channel counter value, and the integer array of the channel status", \
      "Device handle") \
    F(icpusb_pi_readchcntvalue, "ICPUSB_PI_ReadChCntValue", \
      "Pulse input function - Read PI value in real format. \nThis method reads the counter value of the specific channel.", \
      "Matrix [2x1]. Real the PI channel counter value, and integer channel status", \
      "Device handle", \
      "Integer. Channel Number") \
    F(icpusb_pi_readfreqvalue, "ICPUSB_PI_ReadFreqValue", \
      "Pulse input function - Read the frequency value. \nThis method reads the all frequency value of channels", \
      "Matrix. The real array of the PI channel frequency value, and the integer array of the channel status", \
      "Device handle") \
    F(icpusb_pi_readchfreqvalue, "ICPUSB_PI_ReadChFreqValue", \
      "Pulse input function - Read the frequency value. This method reads the frequency value of the specific channel.", \
      "Matrix [2x1]. Real the PI channel frequency value, and integer channel status", \
      "Device handle", \
      "Integer. Channel Number")

ICP_CATALOGUE_GROUP(usb_pulse, ICP_USB_PULSE_FUNCTIONS)
