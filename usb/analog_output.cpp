// USB analog output.
//
// The bodies are compositions of the shapes of usb/body.h, gated by the AO
// group total, so a module without outputs never sees the function's own SDK
// call.
#include "usb/analog_output.h"

#include "plugin/catalogue.h"
#include "usb/body.h"

using icp::nvValue;
using icp::usb::Group;
namespace arg = icp::arg;
namespace element = icp::arg::element;
namespace make = icp::make;
namespace usb = icp::usb;

// --- One channel ---

ICP_EXPORT nvValue icpusb_ao_settypecode(const nvValue& handle, const nvValue& channel, const nvValue& type_code) {
    return usb::channel_setter(handle, Group::AO, channel, type_code, arg::uint8, AO_SetTypeCode);
}

ICP_EXPORT nvValue icpusb_ao_writechannelvaluedigital(const nvValue& handle, const nvValue& channel,
                                                      const nvValue& value) {
    return usb::channel_setter(handle, Group::AO, channel, value, arg::uint32, AO_WriteChannelValueDigital);
}

ICP_EXPORT nvValue icpusb_ao_writechannelvalueanalog(const nvValue& handle, const nvValue& channel,
                                                     const nvValue& value) {
    return usb::channel_setter(handle, Group::AO, channel, value, arg::real32, AO_WriteChannelValueAnalog);
}

ICP_EXPORT nvValue icpusb_ao_setpoweronchannelvaluedigital(const nvValue& handle, const nvValue& channel,
                                                           const nvValue& value) {
    return usb::channel_setter(handle, Group::AO, channel, value, arg::uint32, AO_SetPowerOnChannelValueDigital);
}

ICP_EXPORT nvValue icpusb_ao_setpoweronchannelvalueanalog(const nvValue& handle, const nvValue& channel,
                                                          const nvValue& value) {
    return usb::channel_setter(handle, Group::AO, channel, value, arg::real32, AO_SetPowerOnChannelValueAnalog);
}

ICP_EXPORT nvValue icpusb_ao_setsafetychannelvaluedigital(const nvValue& handle, const nvValue& channel,
                                                          const nvValue& value) {
    return usb::channel_setter(handle, Group::AO, channel, value, arg::uint32, AO_SetSafetyChannelValueDigital);
}

ICP_EXPORT nvValue icpusb_ao_setsafetychannelvalueanalog(const nvValue& handle, const nvValue& channel,
                                                         const nvValue& value) {
    return usb::channel_setter(handle, Group::AO, channel, value, arg::real32, AO_SetSafetyChannelValueAnalog);
}

// --- All channels: a vector of one number per output ---

ICP_EXPORT nvValue icpusb_ao_settypecodes(const nvValue& handle, const nvValue& type_codes) {
    return usb::vector_setter(handle, Group::AO, type_codes, element::uint8, AO_SetTypeCodes);
}

// The vector is checked like the others, but every output gets the unsigned
// conversion of the whole vector, not of its own element. Distinct raw
// values per output go through "ICPUSB_AO_WriteChannelValueDigital".
ICP_EXPORT nvValue icpusb_ao_writevaluedigital(const nvValue& handle, const nvValue& values) {
    return usb::vector_setter(
        handle, Group::AO, values, [&](const nvValue&) { return values.toUnsignedInt(); }, AO_WriteValueDigital);
}

ICP_EXPORT nvValue icpusb_ao_writevalueanalog(const nvValue& handle, const nvValue& values) {
    return usb::vector_setter(handle, Group::AO, values, element::real32, AO_WriteValueAnalog);
}

ICP_EXPORT nvValue icpusb_ao_setpoweronenable(const nvValue& handle, const nvValue& enables) {
    return usb::vector_setter(handle, Group::AO, enables, element::uint8, AO_SetPowerOnEnable);
}

ICP_EXPORT nvValue icpusb_ao_setpoweronvaluedigital(const nvValue& handle, const nvValue& values) {
    return usb::vector_setter(handle, Group::AO, values, element::uint32, AO_SetPowerOnValueDigital);
}

ICP_EXPORT nvValue icpusb_ao_setpoweronvalueanalog(const nvValue& handle, const nvValue& values) {
    return usb::vector_setter(handle, Group::AO, values, element::real32, AO_SetPowerOnValueAnalog);
}

ICP_EXPORT nvValue icpusb_ao_setsafetyvaluedigital(const nvValue& handle, const nvValue& values) {
    return usb::vector_setter(handle, Group::AO, values, element::uint32, AO_SetSafetyValueDigital);
}

ICP_EXPORT nvValue icpusb_ao_setsafetyvalueanalog(const nvValue& handle, const nvValue& values) {
    return usb::vector_setter(handle, Group::AO, values, element::real32, AO_SetSafetyValueAnalog);
}

// --- Masks ---

ICP_EXPORT nvValue icpusb_ao_setchenable(const nvValue& handle, const nvValue& mask) {
    return usb::mask_setter(handle, Group::AO, mask, AO_SetChEnable);
}

ICP_EXPORT nvValue icpusb_ao_setsafetyenable(const nvValue& handle, const nvValue& mask) {
    return usb::mask_setter(handle, Group::AO, mask, AO_SetSafetyEnable);
}

ICP_EXPORT nvValue icpusb_ao_getchenable(const nvValue& handle) {
    return usb::mask_getter(handle, Group::AO, AO_GetChEnable);
}

ICP_EXPORT nvValue icpusb_ao_getsafetyenable(const nvValue& handle) {
    return usb::mask_getter(handle, Group::AO, AO_GetSafetyEnable);
}

// --- Bytes per output ---

// Like the supported codes, a vector of `total` entries of a 64-byte answer.
ICP_EXPORT nvValue icpusb_ao_gettotalsupporttype(const nvValue& handle) {
    return usb::vector_getter<usb::support_capacity>(handle, Group::AO, AO_GetTotalSupportType, make::integer);
}

ICP_EXPORT nvValue icpusb_ao_getsupporttypecode(const nvValue& handle) {
    return usb::vector_getter<usb::support_capacity>(handle, Group::AO, AO_GetSupportTypeCode, make::integer);
}

ICP_EXPORT nvValue icpusb_ao_gettypecode(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_GetTypeCode, make::integer);
}

ICP_EXPORT nvValue icpusb_ao_getresolution(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_GetResolution, make::integer);
}

ICP_EXPORT nvValue icpusb_ao_getpoweronenable(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_GetPowerOnEnable, make::integer);
}

// --- Values ---

ICP_EXPORT nvValue icpusb_ao_readexpvaluedigital(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_ReadExpValueDigital, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ao_readchexpvaluedigital(const nvValue& handle, const nvValue& channel) {
    return usb::channel_reader(handle, Group::AO, channel, AO_ReadExpValueDigital, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ao_readexpvalueanalog(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_ReadExpValueAnalog, make::real);
}

ICP_EXPORT nvValue icpusb_ao_readchexpvalueanalog(const nvValue& handle, const nvValue& channel) {
    return usb::channel_reader(handle, Group::AO, channel, AO_ReadExpValueAnalog, make::real);
}

ICP_EXPORT nvValue icpusb_ao_readcurvaluedigital(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_ReadCurValueDigital, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ao_readchcurvaluedigital(const nvValue& handle, const nvValue& channel) {
    return usb::channel_reader(handle, Group::AO, channel, AO_ReadCurValueDigital, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ao_readcurvalueanalog(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_ReadCurValueAnalog, make::real);
}

ICP_EXPORT nvValue icpusb_ao_readchcurvalueanalog(const nvValue& handle, const nvValue& channel) {
    return usb::channel_reader(handle, Group::AO, channel, AO_ReadCurValueAnalog, make::real);
}

ICP_EXPORT nvValue icpusb_ao_getpoweronvaluedigital(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_GetPowerOnValueDigital, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ao_getpoweronvalueanalog(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_GetPowerOnValueAnalog, make::real);
}

ICP_EXPORT nvValue icpusb_ao_getsafetyvaluedigital(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_GetSafetyValueDigital, make::real_unsigned);
}

ICP_EXPORT nvValue icpusb_ao_getsafetyvalueanalog(const nvValue& handle) {
    return usb::vector_getter(handle, Group::AO, AO_GetSafetyValueAnalog, make::real);
}

// --- Catalogue ---

// Several help texts say "Vector" or "Integer" where the body takes a scalar
// or an unsigned integer, and "Real" or "Double" for masks; they are kept as
// users know them.

#define ICP_USB_ANALOG_OUTPUT_FUNCTIONS(F) \
    F(icpusb_ao_settypecode, "ICPUSB_AO_SetTypeCode", \
      "Analog output function - Set type code for specific channel.", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific channel to set", \
      "Integer. The type code for the specific channel") \
    F(icpusb_ao_settypecodes, "ICPUSB_AO_SetTypeCodes", \
      "Analog output function - Set type code for all channels", \
      "Boolean", \
      "Device handle", \
      "Vector. The integer array of type code to set") \
    F(icpusb_ao_setchenable, "ICPUSB_AO_SetChEnable", \
      "Analog output function - Set channel enable/disable. \nEach byte indicates 8 channels enable/disable mask", \
      "Boolean", \
      "Device handle", \
      "Integer.The byte array of channel enable/disable mask") \
    F(icpusb_ao_writechannelvaluedigital, "ICPUSB_AO_WriteChannelValueDigital", \
      "Analog output function - Write AO expect value to specifying channel in digital format", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific AO channel to be set", \
      "Integer. The AO value") \
    F(icpusb_ao_writevaluedigital, "ICPUSB_AO_WriteValueDigital", \
      "Analog output function - Write AO expect value to all channels in digital format.", \
      "Boolean", \
      "Device handle", \
      "Vector. Integer array - the AO value") \
    F(icpusb_ao_writechannelvalueanalog, "ICPUSB_AO_WriteChannelValueAnalog", \
      "Analog output function - Write AO expect value to specifying channel in real (analog) format.", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific AO channel to be set", \
      "Real. The AO value") \
    F(icpusb_ao_writevalueanalog, "ICPUSB_AO_WriteValueAnalog", \
      "Analog output function - Write AO expect value to all channels in real (analog) format", \
      "Boolean", \
      "Device handle", \
      "Vector. Real array - the AO value") \
    F(icpusb_ao_setpoweronenable, "ICPUSB_AO_SetPowerOnEnable", \
      "Analog output function - Set Power-On Enable. \nEach channel takes one byte", \
      "Boolean", \
      "Device handle", \
      "Vector. The integer array of channel enable/disable mask") \
    F(icpusb_ao_setpoweronvaluedigital, "ICPUSB_AO_SetPowerOnValueDigital", \
      "Analog output function - Set AO Power-On Value to all channels in digital format.", \
      "Boolean", \
      "Device handle", \
      "Vector. The AO Power-On Value") \
    F(icpusb_ao_setpoweronchannelvaluedigital, "ICPUSB_AO_SetPowerOnChannelValueDigital", \
      "Analog output function - Set AO Power-On Value to specifying channel in digital format.", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific AO channel to be set", \
      "Vector. The AO PowerOnValue") \
    F(icpusb_ao_setpoweronvalueanalog, "ICPUSB_AO_SetPowerOnValueAnalog", \
      "Analog output function - Set AO Power-On Value to all channels in real (analog) format.", \
      "Boolean", \
      "Device handle", \
      "Vector. The AO Power-On Value") \
    F(icpusb_ao_setpoweronchannelvalueanalog, "ICPUSB_AO_SetPowerOnChannelValueAnalog", \
      "Analog output function - Set AO Power-On Value to specifying channel in real (analog) format.", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific AO channel to be set", \
      "The AO Power-On Value") \
    F(icpusb_ao_setsafetyenable, "ICPUSB_AO_SetSafetyEnable", \
      "Analog output function - Set Safety Enable. \nEach byte indicates 8 channels enable/disable mask", \
      "Boolean", \
      "Device handle", \
      "Vector. The integer array of channel enable/disable mask") \
    F(icpusb_ao_setsafetyvaluedigital, "ICPUSB_AO_SetSafetyValueDigital", \
      "Analog output function - Set AO Safety Value to all channels in digital format.", \
      "Boolean", \
      "Device handle", \
      "Vector. The AO Safety Value") \
    F(icpusb_ao_setsafetychannelvaluedigital, "ICPUSB_AO_SetSafetyChannelValueDigital", \
      "Analog output function - Set AO Safety Value to specifying channel in digital format", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific AO channel to be set", \
      "Vector. The AO Safety Value") \
    F(icpusb_ao_setsafetyvalueanalog, "ICPUSB_AO_SetSafetyValueAnalog", \
      "Analog output function - Set AO Safety Value to all channels in real (analog) format.", \
      "Boolean", \
      "Device handle", \
      "Vector. The AO Safety Value") \
    F(icpusb_ao_setsafetychannelvalueanalog, "ICPUSB_AO_SetSafetyChannelValueAnalog", \
      "Analog output function - Set AO Safety Value to specifying channel in real (analog) format", \
      "Boolean", \
      "Device handle", \
      "Integer. The specific AO channel to be set", \
      "Vector. The AO Safety Value") \
    F(icpusb_ao_gettotalsupporttype, "ICPUSB_AO_GetTotalSupportType", \
      "Analog output function - Get total supported amount", \
      "Vector. Integer array, the number of total support type", \
      "Device handle") \
    F(icpusb_ao_getsupporttypecode, "ICPUSB_AO_GetSupportTypeCode", \
      "Analog output function - Get supported type code", \
      "Vector. Integer array, the number of total support type", \
      "Device handle") \
    F(icpusb_ao_gettypecode, "ICPUSB_AO_GetTypeCode", \
      "Analog output function - Get type code", \
      "Vector. The integer array of type code", \
      "Device handle") \
    F(icpusb_ao_getresolution, "ICPUSB_AO_GetResolution", \
      "Analog output function - Get resolution. \nEach byte indicates each channel real resolution.", \
      "Vector. The integer array of resolution for each channel", \
      "Device handle") \
    F(icpusb_ao_getpoweronenable, "ICPUSB_AO_GetPowerOnEnable", \
      "Analog output function - Get Power-On Enable. \nEach channel takes one byte", \
      "Vector. The integer array of channel enable/disable mask", \
      "Device handle") \
    F(icpusb_ao_getchenable, "ICPUSB_AO_GetChEnable", \
      "Analog output function - Get channel enable/disable. \nEach byte indicates 8 channels enable/disable mask.", \
      "Real. The byte array of channel enable/disable mask", \
      "Device handle") \
    F(icpusb_ao_getsafetyenable, "ICPUSB_AO_GetSafetyEnable", \
      "Analog output function - Get Safety Enable. \nEach byte indicates 8 channels enable/disable mask.", \
      "Double. The byte array of Safety enable/disable mask", \
      "Device handle") \
    F(icpusb_ao_readexpvaluedigital, "ICPUSB_AO_ReadExpValueDigital", \
      "Analog output function - Read AO expect value in digital format.", \
      "Vector. The raw value of AO expect value", \
      "Device handle") \
    F(icpusb_ao_readchexpvaluedigital, "ICPUSB_AO_ReadChExpValueDigital", \
      "Analog output function - Read AO expect value in digital format of the specific channel", \
      "Real. The raw value of AO expect value", \
      "Device handle", \
      "Integer. Channel Number") \
    F(icpusb_ao_readexpvalueanalog, "ICPUSB_AO_ReadExpValueAnalog", \
      "Analog output function - Read the real AO expect value.", \
      "Vector. The true value of AO expect value", \
      "Device handle") \
    F(icpusb_ao_readchexpvalueanalog, "ICPUSB_AO_ReadChExpValueAnalog", \
      "Analog output function - Read AO expect value of the specific channel", \
      "Real. The raw value of AO expect value", \
      "Device handle", \
      "Integer. Channel Number") \
    F(icpusb_ao_readcurvaluedigital, "ICPUSB_AO_ReadCurValueDigital", \
      "Analog output function - Read AO current value in digital format", \
      "Vector. The raw value of AO current value", \
      "Device handle") \
    F(icpusb_ao_readchcurvaluedigital, "ICPUSB_AO_ReadChCurValueDigital", \
      "Analog output function - Read AO current value in digital format of the specific channel", \
      "Real. The raw value of AO current value", \
      "Device handle", \
      "Integer. Channel Number") \
    F(icpusb_ao_readcurvalueanalog, "ICPUSB_AO_ReadCurValueAnalog", \
      "Analog output function - Read the real AO current value", \
      "Vector. The true value of AO current value", \
      "Device handle") \
    F(icpusb_ao_readchcurvalueanalog, "ICPUSB_AO_ReadChCurValueAnalog", \
      "Analog output function - Read the real AO current value of the specific channel", \
      "Real. The true value of AO current value", \
      "Device handle", \
      "Integer. Channel Number") \
    F(icpusb_ao_getpoweronvaluedigital, "ICPUSB_AO_GetPowerOnValueDigital", \
      "Analog output function - Get Power-On Value.\nEach channel takes one unit of real array.", \
      "Vector. The real array of Power-On Va", \
      "Device handle") \
    F(icpusb_ao_getpoweronvalueanalog, "ICPUSB_AO_GetPowerOnValueAnalog", \
      "Analog output function - Get Power-On Value. \nEach channel takes one unit of real array", \
      "Vector. The real array of Power-On Value", \
      "Device handle") \
    F(icpusb_ao_getsafetyvaluedigital, "ICPUSB_AO_GetSafetyValueDigital", \
      "Analog output function - Get Safety value.\nEach channel takes one unit of real array", \
      "Vector. The real array of Safety Value", \
      "Device handle") \
    F(icpusb_ao_getsafetyvalueanalog, "ICPUSB_AO_GetSafetyValueAnalog", \
      "Analog output function - Get Safety value.\nEach channel takes one unit of real array.", \
      "Vector. The real array of Safety Value", \
      "Device handle")

ICP_CATALOGUE_GROUP(usb_analog_output, ICP_USB_ANALOG_OUTPUT_FUNCTIONS)
