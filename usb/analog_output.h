// USB analog output: the "ICPUSB_AO_" script functions of an open module.
// Each takes the device handle first.
//
// Every body reads the AO total first (GetAOTotal) and returns the null
// result, with usb_last_error left at 0, on a module without outputs. A
// vector argument has exactly one number per output; vector results have one
// element per output. Raw codes are unsigned 32-bit words, real values reach
// the SDK as single precision, masks are 16 bits (bit n is output n).
#pragma once

#include "plugin/export.h"

// Settings and output values, per channel and for all channels. A channel
// passes as its low 8 bits, not compared with the total: the SDK decides.
ICP_EXPORT icp::nvValue icpusb_ao_settypecode(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& type_code);
ICP_EXPORT icp::nvValue icpusb_ao_settypecodes(const icp::nvValue& handle, const icp::nvValue& type_codes);
ICP_EXPORT icp::nvValue icpusb_ao_setchenable(const icp::nvValue& handle, const icp::nvValue& mask);
ICP_EXPORT icp::nvValue icpusb_ao_writechannelvaluedigital(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& value);
// Every output receives the same word: the unsigned conversion of the whole
// vector argument, not of its elements.
ICP_EXPORT icp::nvValue icpusb_ao_writevaluedigital(const icp::nvValue& handle, const icp::nvValue& values);
ICP_EXPORT icp::nvValue icpusb_ao_writechannelvalueanalog(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpusb_ao_writevalueanalog(const icp::nvValue& handle, const icp::nvValue& values);
ICP_EXPORT icp::nvValue icpusb_ao_setpoweronenable(const icp::nvValue& handle, const icp::nvValue& enables);
ICP_EXPORT icp::nvValue icpusb_ao_setpoweronvaluedigital(const icp::nvValue& handle, const icp::nvValue& values);
ICP_EXPORT icp::nvValue icpusb_ao_setpoweronchannelvaluedigital(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpusb_ao_setpoweronvalueanalog(const icp::nvValue& handle, const icp::nvValue& values);
ICP_EXPORT icp::nvValue icpusb_ao_setpoweronchannelvalueanalog(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpusb_ao_setsafetyenable(const icp::nvValue& handle, const icp::nvValue& mask);
ICP_EXPORT icp::nvValue icpusb_ao_setsafetyvaluedigital(const icp::nvValue& handle, const icp::nvValue& values);
ICP_EXPORT icp::nvValue icpusb_ao_setsafetychannelvaluedigital(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpusb_ao_setsafetyvalueanalog(const icp::nvValue& handle, const icp::nvValue& values);
ICP_EXPORT icp::nvValue icpusb_ao_setsafetychannelvalueanalog(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& value);

// Bytes per output as Integers (zero-extended; the power-on enables too).
ICP_EXPORT icp::nvValue icpusb_ao_gettotalsupporttype(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_getsupporttypecode(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_gettypecode(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_getresolution(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_getpoweronenable(const icp::nvValue& handle);

// 16-bit masks as reals (0 to 65535).
ICP_EXPORT icp::nvValue icpusb_ao_getchenable(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_getsafetyenable(const icp::nvValue& handle);

// Values as reals: raw words without sign, single-precision values widened.
// The per-channel readers take 0 <= channel < total; they read the whole
// group and pick the channel's entry.
ICP_EXPORT icp::nvValue icpusb_ao_readexpvaluedigital(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_readchexpvaluedigital(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_ao_readexpvalueanalog(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_readchexpvalueanalog(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_ao_readcurvaluedigital(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_readchcurvaluedigital(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_ao_readcurvalueanalog(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_readchcurvalueanalog(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_ao_getpoweronvaluedigital(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_getpoweronvalueanalog(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_getsafetyvaluedigital(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ao_getsafetyvalueanalog(const icp::nvValue& handle);
