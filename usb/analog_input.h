// USB analog input: the "ICPUSB_AI_" script functions of an open module.
// Each takes the device handle first and reads the AI total first: a module
// without analog inputs gives the null result with usb_last_error left at 0.
// Vector results and vector arguments have one element per input; the
// per-channel readers take 0 <= channel < total.
#pragma once

#include "plugin/export.h"

ICP_EXPORT icp::nvValue icpusb_ai_settypecode(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& code);
ICP_EXPORT icp::nvValue icpusb_ai_setchcjcoffset(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& offset);
ICP_EXPORT icp::nvValue icpusb_ai_setchenable(const icp::nvValue& handle, const icp::nvValue& mask);
ICP_EXPORT icp::nvValue icpusb_ai_setfilterrejection(const icp::nvValue& handle, const icp::nvValue& rejection);
ICP_EXPORT icp::nvValue icpusb_ai_setcjcoffset(const icp::nvValue& handle, const icp::nvValue& offset);
ICP_EXPORT icp::nvValue icpusb_ai_setcjcenable(const icp::nvValue& handle, const icp::nvValue& enable);
ICP_EXPORT icp::nvValue icpusb_ai_setwiredetectenable(const icp::nvValue& handle, const icp::nvValue& enable);
ICP_EXPORT icp::nvValue icpusb_ai_settypecodes(const icp::nvValue& handle, const icp::nvValue& codes);
ICP_EXPORT icp::nvValue icpusb_ai_setchcjcoffsets(const icp::nvValue& handle, const icp::nvValue& offsets);
ICP_EXPORT icp::nvValue icpusb_ai_setchsamplerate(const icp::nvValue& handle, const icp::nvValue& rates);
ICP_EXPORT icp::nvValue icpusb_ai_getfilterrejection(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_getcjcenable(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_getwiredetectenable(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_gettotalsupporttype(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_getchenable(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_getcjcoffset(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_readcjcvalue(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_getsupporttypecode(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_gettypecode(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_getresolution(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_getchcjcoffset(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_getchsamplerate(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_readvaluedigital(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_readchvaluedigital(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_ai_readvalueanalog(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_readchvalueanalog(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_ai_readvaluedigitalwithchsta(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_readchvaluedigitalwithchsta(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_ai_readvalueanalogwithchsta(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_ai_readchvalueanalogwithchsta(const icp::nvValue& handle, const icp::nvValue& channel);
