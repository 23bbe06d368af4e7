// The names of things the USB SDK knows only by number: the fifteen models
// (script ID string <-> 16-bit device type code) and the texts of the USB
// result codes that "ICPUSB_LastError" reports.
#pragma once

#include <cstdint>
#include <string_view>

namespace icp::usb {

// The model's ID string for a type code; "Unknown device" for any code
// outside the table.
const char* device_id_from_type_code(std::int32_t type_code);

// The type code of a model ID string, or 0 when no model has that ID. The
// text is upper-cased byte by byte and compared whole: "usb2019" is 1043,
// " USB2019" is 0.
std::uint16_t device_type_code_from_id(std::string_view id);

// The text of a usb_last_error code: -1 (no handle), 0 and the SDK's codes;
// "Unknown error" for anything else.
const char* usb_error_message(std::int32_t code);

}  // namespace icp::usb
