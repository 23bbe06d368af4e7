// Serial port access: opening a COM port from its configuration string,
// closing it, and the PAC SDK's last error as a code or a message.
#pragma once

#include "plugin/export.h"

ICP_EXPORT icp::nvValue icpcom_opendevice(const icp::nvValue& configuration);
ICP_EXPORT icp::nvValue icpcom_closedevice(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpcom_last_error(const icp::nvValue& form);
