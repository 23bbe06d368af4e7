#include "usb/device.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "ICPDAS_USBIO.h"
#include "plugin/catalogue.h"
#include "usb/body.h"
#include "usb/models.h"

using namespace icp;

namespace {

// The device list the SDK fills: 128 entries per array.
constexpr std::size_t list_capacity = 128;

// A device ID is a model ID string or, for a script that knows it, the type
// code itself as an Integer.
std::optional<std::uint16_t> type_code_of(const nvValue& device_id) {
    if (device_id.isInteger()) return arg::uint16(device_id);
    if (auto id = arg::text(device_id)) return usb::device_type_code_from_id(*id);
    return std::nullopt;
}

}  // namespace

// usb_last_error is cleared and left at 0 whatever the SDK answers; the
// scan's result is not looked at, and the list's count is taken as a byte.
ICP_EXPORT nvValue icpusb_listdevice() {
    usb_last_error = 0;
    ScanDevice();
    std::array<std::uint16_t, list_capacity> type_codes{};
    std::array<std::uint8_t, list_capacity> board_ids{};
    const auto listed = static_cast<std::uint8_t>(ListDevice(type_codes.data(), board_ids.data()));
    // A count beyond the arrays would read past them; only what fits is shown.
    const auto rows = static_cast<unsigned>(std::min<std::size_t>(listed, list_capacity));
    if (rows == 0) return make::null();
    return make::table2(
        rows,
        [&](unsigned r, unsigned c) {
            return c == 0 ? make::text(usb::device_id_from_type_code(type_codes[r]))
                          : make::integer(board_ids[r]);
        },
        "Device ID", "Board ID");
}

// The kinds are checked before an instance exists; only a failed open
// disposes of its instance. An unknown ID string reaches the SDK as type
// code 0 and the SDK's refusal is kept.
ICP_EXPORT nvValue icpusb_opendevice(const nvValue& device_id, const nvValue& board_id) {
    usb_last_error = 0;
    const auto type_code = type_code_of(device_id);
    const auto board = arg::uint8(board_id);
    if (!type_code || !board) return usb::refused();
    USBIO_HANDLE instance = CreateInstance();
    if (!instance) return make::null();
    usb_last_error = OpenDevice(instance, *type_code, *board);
    if (usb_last_error != 0) {
        DisposeInstance(instance);
        return make::null();
    }
    return make::handle(instance);
}

// The instance stays with the handle: closing never disposes of it.
ICP_EXPORT nvValue icpusb_closedevice(const nvValue& handle) {
    return usb::body(handle, [](USBIO_HANDLE device) { return usb::sdk(CloseDevice(device)); });
}

// Reads usb_last_error without touching it: "i" for the code, "s" for its
// text, exactly and case-sensitively.
ICP_EXPORT nvValue icpusb_last_error(const nvValue& form) {
    const auto f = arg::text(form);
    if (!f) return make::null();
    if (*f == "i") return make::integer(usb_last_error);
    if (*f == "s") return make::text(usb::usb_error_message(usb_last_error));
    return make::null();
}

// clang-format off
#define ICP_USB_DEVICE_FUNCTIONS(F)                                                              \
    F(icpusb_listdevice, "ICPUSB_ListDevice",                                                    \
      "List all ICP USB devices connected to local PC", "Table")                                 \
    F(icpusb_opendevice, "ICPUSB_OpenDevice",                                                    \
      "Open ICP USB device with device ID and board ID.\n"                                       \
      "Device IDs  'USB2019' 'USB2026' 'USB2045' 'USB2051' 'USB2055' 'USB2060' 'USB2064' "       \
      "'USB2084' 'USB2055_32' 'USB2068_18' 'USB2045_32' 'USB2051_32' 'USB2060_24' "              \
      "'USB2064_16' 'USB2069_18' ",                                                              \
      "Device handle", "String device ID", "Integer board ID")                                   \
    F(icpusb_closedevice, "ICPUSB_CloseDevice",                                                  \
      "Close ICP USB device and release resource", "Boolean", "Device handle")                   \
    F(icpusb_last_error, "ICPUSB_LastError",                                                     \
      "Get ICP USB device last error", "String or integer",                                      \
      "Sting function return type. 's' for string or 'i' for integer")
// clang-format on

ICP_CATALOGUE_GROUP(usb_device, ICP_USB_DEVICE_FUNCTIONS)
