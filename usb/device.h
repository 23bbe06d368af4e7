// USB device access: listing the attached modules, opening one by model ID
// and board ID, closing it, and the last USB result code.
#pragma once

#include "plugin/export.h"

ICP_EXPORT icp::nvValue icpusb_listdevice();
ICP_EXPORT icp::nvValue icpusb_opendevice(const icp::nvValue& device_id, const icp::nvValue& board_id);
ICP_EXPORT icp::nvValue icpusb_closedevice(const icp::nvValue& handle);
ICP_EXPORT icp::nvValue icpusb_last_error(const icp::nvValue& form);
