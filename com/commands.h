// Raw commands to serial modules, and the recorder that captures the
// commands sent and replays them.
#pragma once

#include "plugin/export.h"

ICP_EXPORT icp::nvValue icpcom_sendcmd(const icp::nvValue& handle, const icp::nvValue& command);
ICP_EXPORT icp::nvValue icpcom_rec_cmd_start();
ICP_EXPORT icp::nvValue icpcom_rec_cmd_stop();
ICP_EXPORT icp::nvValue icpcom_rec_cmd_exec(const icp::nvValue& handle, const icp::nvValue& commands);
