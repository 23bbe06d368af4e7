// USB device information and settings: identity, capacities and the
// device-wide settings of an open module. Each takes the device handle first.
#pragma once

#include "plugin/export.h"

ICP_EXPORT icp::nvValue icpusb_syncdevice(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_setcommtimeout(const icp::nvValue& handle, const icp::nvValue& timeout);
ICP_EXPORT icp::nvValue icpusb_getcommtimeout(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_setautoresetwdt(const icp::nvValue& handle, const icp::nvValue& enable);
ICP_EXPORT icp::nvValue icpusb_refreshdeviceinfo(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_setsoftwdttimeout(const icp::nvValue& handle, const icp::nvValue& timeout);
ICP_EXPORT icp::nvValue icpusb_getsoftwdttimeout(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getdeviceid(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getfwver(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getdevicenickname(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_setdevicenickname(const icp::nvValue& handle, const icp::nvValue& nickname);
ICP_EXPORT icp::nvValue icpusb_getdevicesn(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getsupportiomask(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getditotal(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getdototal(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getaitotal(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getaototal(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getpitotal(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_getpototal(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_setuserdefinedboardid(const icp::nvValue& handle, const icp::nvValue& id);
ICP_EXPORT icp::nvValue icpusb_loaddefault(const icp::nvValue& handle);
