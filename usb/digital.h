// USB digital output and input: the "ICPUSB_DO_" and "ICPUSB_DI_" script
// functions of an open module. Each takes the device handle first.
//
// Every body reads its group's channel total first (GetDOTotal for the
// outputs, GetDITotal for the inputs) and returns the null result, with
// usb_last_error left at 0, on a module without that group. Words are 32
// bits, bit n being channel n.
#pragma once

#include "plugin/export.h"

// Setters: Boolean true on success.
ICP_EXPORT icp::nvValue icpusb_do_setpoweronenable(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& enable);
// A 32-bit mask (not a vector): 32 DO_SetPowerOnEnable calls, channels 0 to
// 31, whatever the module's output count.
ICP_EXPORT icp::nvValue icpusb_do_setpoweronenables(const icp::nvValue& handle, const icp::nvValue& mask);
ICP_EXPORT icp::nvValue icpusb_do_setsafetyenable(const icp::nvValue& handle, const icp::nvValue& mask);
ICP_EXPORT icp::nvValue icpusb_do_setsafetyvalue(const icp::nvValue& handle, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpusb_do_setdigitaloutputinverse(const icp::nvValue& handle, const icp::nvValue& inverse);
ICP_EXPORT icp::nvValue icpusb_do_writevalue(const icp::nvValue& handle, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpusb_do_writechannelvalue(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& value);
ICP_EXPORT icp::nvValue icpusb_di_setdigitalfilterwidth(const icp::nvValue& handle, const icp::nvValue& width);
ICP_EXPORT icp::nvValue icpusb_di_setdigitalvalueinverse(const icp::nvValue& handle, const icp::nvValue& inverse);
ICP_EXPORT icp::nvValue icpusb_di_setcntedgetrigger(const icp::nvValue& handle, const icp::nvValue& setting);
ICP_EXPORT icp::nvValue icpusb_di_writeclearcounter(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_di_writeclearcounters(const icp::nvValue& handle, const icp::nvValue& mask);

// Settings read back as Integers.
ICP_EXPORT icp::nvValue icpusb_do_getdigitaloutputinverse(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_di_getdigitalfilterwidth(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_di_getdigitalvalueinverse(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_di_getcntedgetrigger(const icp::nvValue& handle);

// One Boolean per output channel.
ICP_EXPORT icp::nvValue icpusb_do_getpoweronenable(const icp::nvValue& handle);

// Words returned as reals without sign (0 to 4294967295).
ICP_EXPORT icp::nvValue icpusb_do_getsafetyenable(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_do_getsafetyvalue(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_do_readvalue(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_di_readvalue(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_di_readcountervalue(const icp::nvValue& handle);

// Integer 1 or 0 for one input channel (0 to 31), built on the
// "ICPUSB_GetDITotal" and "ICPUSB_DI_ReadValue" bodies.
ICP_EXPORT icp::nvValue icpusb_di_readchannelvalue(const icp::nvValue& handle, const icp::nvValue& channel);
