// USB analog input.
//
// Every body is a shape of usb/body.h gated by the AI total; the bodies that
// exchange the SDK's per-channel arrays (16 entries, 64 bytes for the
// supported type codes) refuse a total beyond them.
#include "usb/analog_input.h"

#include "plugin/catalogue.h"
#include "usb/body.h"

using icp::nvValue;
using icp::usb::Group;
namespace arg = icp::arg;
namespace make = icp::make;
namespace usb = icp::usb;

// --- Setters ---

ICP_EXPORT nvValue icpusb_ai_settypecode(const nvValue& handle, const nvValue& channel, const nvValue& code) {
    return usb::channel_setter(handle, Group::AI, channel, code, arg::uint8, AI_SetTypeCode);
}

// Only a real passes: an offset held as an Integer is refused. No range
// check: the SDK judges the offset.
ICP_EXPORT nvValue icpusb_ai_setchcjcoffset(const nvValue& handle, const nvValue& channel, const nvValue& offset) {
    return usb::channel_setter(handle, Group::AI, channel, offset, arg::real32, AI_SetChCJCOffset);
}

ICP_EXPORT nvValue icpusb_ai_setchenable(const nvValue& handle, const nvValue& mask) {
    return usb::setter(handle, Group::AI, mask, arg::mask16, usb::by_address(AI_SetChEnable));
}

// A Boolean, converted as an integer (toInt) and passed as its low 8 bits.
ICP_EXPORT nvValue icpusb_ai_setfilterrejection(const nvValue& handle, const nvValue& rejection) {
    return usb::setter(handle, Group::AI, rejection, arg::flag_as_int32,
                       [](USBIO_HANDLE device, std::int32_t r) {
                           return AI_SetFilterRejection(device, static_cast<std::uint8_t>(r));
                       });
}

ICP_EXPORT nvValue icpusb_ai_setcjcoffset(const nvValue& handle, const nvValue& offset) {
    return usb::setter(handle, Group::AI, offset, arg::real32, AI_SetCJCOffset);
}

ICP_EXPORT nvValue icpusb_ai_setcjcenable(const nvValue& handle, const nvValue& enable) {
    return usb::setter(handle, Group::AI, enable, arg::flag, AI_SetCJCEnable);
}

ICP_EXPORT nvValue icpusb_ai_setwiredetectenable(const nvValue& handle, const nvValue& enable) {
    return usb::setter(handle, Group::AI, enable, arg::flag, AI_SetWireDetectEnable);
}

// --- Vector setters: exactly one number per input ---

ICP_EXPORT nvValue icpusb_ai_settypecodes(const nvValue& handle, const nvValue& codes) {
    return usb::vector_setter(handle, Group::AI, codes, arg::element::uint8, AI_SetTypeCodes);
}

ICP_EXPORT nvValue icpusb_ai_setchcjcoffsets(const nvValue& handle, const nvValue& offsets) {
    return usb::vector_setter(handle, Group::AI, offsets, arg::element::real32, AI_SetChCJCOffsets);
}

ICP_EXPORT nvValue icpusb_ai_setchsamplerate(const nvValue& handle, const nvValue& rates) {
    return usb::vector_setter(handle, Group::AI, rates, arg::element::uint32, AI_SetChSampleRate);
}

// --- Scalar getters ---

ICP_EXPORT nvValue icpusb_ai_getfilterrejection(const nvValue& handle) {
    return usb::flag_getter(handle, Group::AI, AI_GetFilterRejection);
}

ICP_EXPORT nvValue icpusb_ai_getcjcenable(const nvValue& handle) {
    return usb::flag_getter(handle, Group::AI, AI_GetCJCEnable);
}

ICP_EXPORT nvValue icpusb_ai_getwiredetectenable(const nvValue& handle) {
    return usb::flag_getter(handle, Group::AI, AI_GetWireDetectEnable);
}

ICP_EXPORT nvValue icpusb_ai_gettotalsupporttype(const nvValue& handle) {
    return usb::integer_getter(handle, Group::AI, AI_GetTotalSupportType);
}

// The 16-bit mask as a real (0 to 65535), not a byte array.
ICP_EXPORT nvValue icpusb_ai_getchenable(const nvValue& handle) {
    return usb::real_getter(handle, Group::AI, AI_GetChEnable);
}

ICP_EXPORT nvValue icpusb_ai_getcjcoffset(const nvValue& handle) {
    return usb::real_getter(handle, Group::AI, AI_GetCJCOffset);
}

ICP_EXPORT nvValue icpusb_ai_readcjcvalue(const nvValue& handle) {
    return usb::real_getter(handle, Group::AI, AI_ReadCJCValue);
}

// --- Vector getters: one element per input ---

// As many elements as the module has inputs, not as many as the supported
// type count says: the SDK's 64-byte answer is cut at the input total.
ICP_EXPORT nvValue icpusb_ai_getsupporttypecode(const nvValue& handle) {
    return usb::vector_getter<usb::support_capacity>(handle, Group::AI, AI_GetSupportTypeCode, make::integer);
}

ICP_EXPORT nvValue icpusb_ai_gettypecode(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AI, AI_GetTypeCode, make::integer);
}

ICP_EXPORT nvValue icpusb_ai_getresolution(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AI, AI_GetResolution, make::integer);
}

ICP_EXPORT nvValue icpusb_ai_getchcjcoffset(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AI, AI_GetChCJCOffset, make::real);
}

ICP_EXPORT nvValue icpusb_ai_getchsamplerate(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AI, AI_GetChSampleRate, make::real_unsigned);
}

// --- Readings ---

ICP_EXPORT nvValue icpusb_ai_readvaluedigital(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AI, AI_ReadValueDigital, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ai_readchvaluedigital(const nvValue& handle, const nvValue& channel) {
    return usb::channel_reader(handle, Group::AI, channel, AI_ReadValueDigital, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ai_readvalueanalog(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AI, AI_ReadValueAnalog, make::real);
}

ICP_EXPORT nvValue icpusb_ai_readchvalueanalog(const nvValue& handle, const nvValue& channel) {
    return usb::channel_reader(handle, Group::AI, channel, AI_ReadValueAnalog, make::real);
}

ICP_EXPORT nvValue icpusb_ai_readvaluedigitalwithchsta(const nvValue& handle) {
    return usb::status_matrix(handle, Group::AI, AI_ReadValueDigitalWithChSta, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ai_readchvaluedigitalwithchsta(const nvValue& handle, const nvValue& channel) {
    return usb::channel_status(handle, Group::AI, channel, AI_ReadValueDigitalWithChSta, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ai_readvalueanalogwithchsta(const nvValue& handle) {
    return usb::status_matrix(handle, Group::AI, AI_ReadValueAnalogWithChSta, make::real);
}

ICP_EXPORT nvValue icpusb_ai_readchvalueanalogwithchsta(const nvValue& handle, const nvValue& channel) {
    return usb::channel_status(handle, Group::AI, channel, AI_ReadValueAnalogWithChSta, make::real);
}

// --- Catalogue ---

#define ICP_USB_ANALOG_INPUT_FUNCTIONS(F) \
    F(icpusb_ai_settypecode, "ICPUSB_AI_SetTypeCode", \
      "Analog input function - Set type code for specific channel.", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific channel to set", \
      "Integer. The type code for the specific channel") \
    F(icpusb_ai_setchcjcoffset, "ICPUSB_AI_SetChCJCOffset", \
      "Analog input function - Set channel CJC offset for specific channel", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific channel to set", \
      "Real. The CJC offset for the specific channel") \
    F(icpusb_ai_setchenable, "ICPUSB_AI_SetChEnable", \
      "Analog input function - Set channel enable/disable.\n Each byte indicates 8 channels enable/disable mask", \
      "Boolean", \
      "Device handle", \
      "Integer. The byte array of channel enable/disable mask") \
    F(icpusb_ai_setfilterrejection, "ICPUSB_AI_SetFilterRejection", \
      "Analog input function - Set filter rejection", \
      "Boolean", \
      "Device handle", \
      "Boolean. The filter rejection") \
    F(icpusb_ai_setcjcoffset, "ICPUSB_AI_SetCJCOffset", \
      "Analog input function - Set CJC offset. \nThe valid range of offset is -40.96 ~ +40.95", \
      "Boolean", \
      "Device handle", \
      "Real. The CJC offset") \
    F(icpusb_ai_setcjcenable, "ICPUSB_AI_SetCJCEnable", \
      "Analog input function - Set CJC enable", \
      "Boolean", \
      "Device handle", \
      "Boolean. The CJC enable") \
    F(icpusb_ai_setwiredetectenable, "ICPUSB_AI_SetWireDetectEnable", \
      "Analog input function - Set wire detect enable", \
      "Boolean", \
      "Device handle", \
      "Boolean. The wire detect enable") \
    F(icpusb_ai_settypecodes, "ICPUSB_AI_SetTypeCodes", \
      "Analog input function - Set type code for all channels", \
      "Boolean", \
      "Device handle", \
      "Vector. The integer array of type code to set") \
    F(icpusb_ai_setchcjcoffsets, "ICPUSB_AI_SetChCJCOffsets", \
      "Analog input function - Set channel CJC offset for all channels", \
      "Boolean", \
      "Device handle", \
      "Vector. The real array of channel CJC offset to set") \
    F(icpusb_ai_setchsamplerate, "ICPUSB_AI_SetChSampleRate", \
      "Analog input function- Set channel sample rate", \
      "Boolean", \
      "Device handle", \
      "Vector. Real array of sample rate values") \
    F(icpusb_ai_getfilterrejection, "ICPUSB_AI_GetFilterRejection", \
      "Analog input function - Get filter rejection", \
      "Boolean. The filter rejection", \
      "Device handle") \
    F(icpusb_ai_getcjcenable, "ICPUSB_AI_GetCJCEnable", \
      "Analog input function - Get CJC enable", \
      "Boolean. The CJC enable", \
      "Device handle") \
    F(icpusb_ai_getwiredetectenable, "ICPUSB_AI_GetWireDetectEnable", \
      "Analog input function - Get wire detect enable", \
      "Boolean. The wire detect enable", \
      "Device handle") \
    F(icpusb_ai_gettotalsupporttype, "ICPUSB_AI_GetTotalSupportType", \
      "Analog input function - Get total supported amount.", \
      "Integer. The number of total support type", \
      "Device handle") \
    F(icpusb_ai_getsupporttypecode, "ICPUSB_AI_GetSupportTypeCode", \
      "Analog input function - Get supported type code", \
      "Vector. The number of total support type", \
      "Device handle") \
    F(icpusb_ai_gettypecode, "ICPUSB_AI_GetTypeCode", \
      "Analog input function - Get type code \n Please refer to user's manual to map AI channels input type.", \
      "Vector. The integer array of type code", \
      "Device handle") \
    F(icpusb_ai_getresolution, "ICPUSB_AI_GetResolution", \
      "Analog input function - Get resolution. \nEach byte indicates each channel real resolution.", \
      "Vector. The integer array of resolution for each channel", \
      "Device handle") \
    F(icpusb_ai_getchcjcoffset, "ICPUSB_AI_GetChCJCOffset", \
      "Analog input function - Get channel CJC offset \nThe valid range of offset is -40.96 ~ +40.95.", \
      "Vector. The real array of channel CJC offset", \
      "Device handle") \
    F(icpusb_ai_getchenable, "ICPUSB_AI_GetChEnable", \
      "Analog input function - Get channel enable/disable.\n Each byte indicates 8 channels enable/disable mask.", \
      "Real. The byte array of channel enable/disable mask", \
      "Device handle") \
    F(icpusb_ai_getcjcoffset, "ICPUSB_AI_GetCJCOffset", \
      "Analog input function - Get CJC offset \nThe valid range of offset is -40.96 ~ +40.95.", \
      "Real. The CJC offset", \
      "Device handle") \
    F(icpusb_ai_readcjcvalue, "ICPUSB_AI_ReadCJCValue", \
      "Analog input function - Read the current CJC value on the module", \
      "Real. The CJC value", \
      "Device handle") \
    F(icpusb_ai_getchsamplerate, "ICPUSB_AI_GetChSampleRate", \
      "Analog input function - Read the sample rate of the channel", \
      "Vector. Real array of channel sample rate", \
      "Device handle") \
    F(icpusb_ai_readvaluedigital, "ICPUSB_AI_ReadValueDigital", \
      "Analog input function - Read AI value in digital format.", \
      "Vector. Real array of the raw values of AIs", \
      "Device handle") \
    F(icpusb_ai_readchvaluedigital, "ICPUSB_AI_ReadChValueDigital", \
      "Analog input function - Read AI value in digital format of the specific channel", \
      "Real. The raw value of AI", \
      "Device handle", \
      "Integer. Channel Number") \
    F(icpusb_ai_readvalueanalog, "ICPUSB_AI_ReadValueAnalog", \
      "Analog input function - Read the real AI value", \
      "Vector. Real array of the true values of AIs", \
      "Device handle") \
    F(icpusb_ai_readchvalueanalog, "ICPUSB_AI_ReadChValueAnalog", \
      "Analog input function - Read the real AI value of the specific channel", \
      "Real. The raw value of AI", \
      "Device handle", \
      "Integer. Channel Number") \
    F(icpusb_ai_readvaluedigitalwithchsta, "ICPUSB_AI_ReadValueDigitalWithChSta", \
      "Analog input function - Read AI value in digital format with channel status", \
      "Matrix. Real array of he true values of AIs, and integer array of channel status", \
      "Device handle") \
    F(icpusb_ai_readchvaluedigitalwithchsta, "ICPUSB_AI_ReadChValueDigitalWithChSta", \
      "Analog input function - \nRead AI value in digital format of the specific channel with channel status", \
      "Matrix. The raw value of AI, and channel status ", \
      "Device handle", \
      "Integer. Channel Number") \
    F(icpusb_ai_readvalueanalogwithchsta, "ICPUSB_AI_ReadValueAnalogWithChSta", \
      "Analog input function - Read the real AI value with channel status", \
      "Matrix. Real array of he true values of AIs, and integer array of channel status", \
      "Device handle") \
    F(icpusb_ai_readchvalueanalogwithchsta, "ICPUSB_AI_ReadChValueAnalogWithChSta", \
      "Analog input function - \nRead the real AI value of the specific channel with channel status.", \
      "Matrix. The raw value of AI, and channel status", \
      "Device handle", \
      "Integer. Channel Number")

ICP_CATALOGUE_GROUP(usb_analog_input, ICP_USB_ANALOG_INPUT_FUNCTIONS)
