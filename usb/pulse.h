// USB pulse input: the "ICPUSB_PI_" script functions of an open module.
// Each takes the device handle first.
//
// Every body reads the PI channel total first (GetPITotal) and returns the
// null result, with usb_last_error left at 0, on a module without pulse
// inputs. Channel masks are 16 bits, bit n being channel n, exchanged with
// the SDK as two bytes, low byte first.
#pragma once

#include "plugin/export.h"

// Per-channel setters: the channel's low 8 bits, not compared with the total.
ICP_EXPORT icp::nvValue icpusb_pi_settypecode(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& code);
ICP_EXPORT icp::nvValue icpusb_pi_settriggermode(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& mode);
ICP_EXPORT icp::nvValue icpusb_pi_setchisolatedflag(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& flag);
ICP_EXPORT icp::nvValue icpusb_pi_setlpfilterenable(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& enable);
// The width's low 16 bits, in microseconds.
ICP_EXPORT icp::nvValue icpusb_pi_setlpfilterwidth(const icp::nvValue& handle, const icp::nvValue& channel, const icp::nvValue& width);
ICP_EXPORT icp::nvValue icpusb_pi_clearsinglechcount(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_pi_clearsinglechstatus(const icp::nvValue& handle, const icp::nvValue& channel);

// Vectors of exactly one number per channel.
ICP_EXPORT icp::nvValue icpusb_pi_settypecodes(const icp::nvValue& handle, const icp::nvValue& codes);
ICP_EXPORT icp::nvValue icpusb_pi_settriggermodes(const icp::nvValue& handle, const icp::nvValue& modes);
ICP_EXPORT icp::nvValue icpusb_pi_setlpfilterwidths(const icp::nvValue& handle, const icp::nvValue& widths);

// Unsigned-integer masks (not vectors), low 16 bits.
ICP_EXPORT icp::nvValue icpusb_pi_setchisolatedflags(const icp::nvValue& handle, const icp::nvValue& mask);
ICP_EXPORT icp::nvValue icpusb_pi_setlpfilterenables(const icp::nvValue& handle, const icp::nvValue& mask);
ICP_EXPORT icp::nvValue icpusb_pi_clearchcount(const icp::nvValue& handle, const icp::nvValue& mask);
ICP_EXPORT icp::nvValue icpusb_pi_clearchstatus(const icp::nvValue& handle, const icp::nvValue& mask);

// The number of supported type codes, one Integer.
ICP_EXPORT icp::nvValue icpusb_pi_gettotalsupporttype(const icp::nvValue& handle);
// One Integer per channel (the supported type codes too: as many as there
// are channels).
ICP_EXPORT icp::nvValue icpusb_pi_getsupporttypecode(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_pi_gettypecode(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_pi_gettriggermode(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_pi_getlpfilterwidth(const icp::nvValue& handle);

// A 16-bit mask as a real (0 to 65535).
ICP_EXPORT icp::nvValue icpusb_pi_getchisolatedflag(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_pi_getlpfilterenable(const icp::nvValue& handle);

// Values with their statuses: a total x 2 matrix, row n channel n, its value
// as a real (counts without sign) and its status as an Integer; the ...Ch...
// forms give one channel's row (0 <= channel < total) as a 1 x 2 matrix.
ICP_EXPORT icp::nvValue icpusb_pi_readvalue(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_pi_readchvalue(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_pi_readcntvalue(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_pi_readchcntvalue(const icp::nvValue& handle, const icp::nvValue& channel);
ICP_EXPORT icp::nvValue icpusb_pi_readfreqvalue(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_pi_readchfreqvalue(const icp::nvValue& handle, const icp::nvValue& channel);
