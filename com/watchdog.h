// The host watchdog of serial modules: status, configuration, reset and
// refresh.
#pragma once

#include "plugin/export.h"

ICP_EXPORT icp::nvValue icpcom_getwdtstatus(const icp::nvValue& handle, const icp::nvValue& slot);
ICP_EXPORT icp::nvValue icpcom_getwdtconfig(const icp::nvValue& handle, const icp::nvValue& slot);
ICP_EXPORT icp::nvValue icpcom_setwdtconfig(const icp::nvValue& handle, const icp::nvValue& slot,
                                            const icp::nvValue& enabled, const icp::nvValue& timeout,
                                            const icp::nvValue& overwrite);
ICP_EXPORT icp::nvValue icpcom_resetwdt(const icp::nvValue& handle, const icp::nvValue& slot);
ICP_EXPORT icp::nvValue icpcom_refreshwdt(const icp::nvValue& handle, const icp::nvValue& slot);
