#include "usb/models.h"

#include <cctype>
#include <string>

namespace icp::usb {
namespace {

struct Model {
    const char* id;
    std::uint16_t type_code;
};

// In the order in which IDs are matched.
constexpr Model models[] = {
    {"USB2019", 0x413},    {"USB2026", 0x41A},    {"USB2045", 0x42D},
    {"USB2051", 0x433},    {"USB2055", 0x437},    {"USB2060", 0x43C},
    {"USB2064", 0x440},    {"USB2084", 0x454},    {"USB2055_32", 0x464},
    {"USB2068_18", 0x465}, {"USB2045_32", 0x466}, {"USB2051_32", 0x467},
    {"USB2060_24", 0x468}, {"USB2064_16", 0x469}, {"USB2069_18", 0x46A},
};

struct Message {
    std::int32_t code;
    const char* text;
};

// 0x10001 and 0x10101 share one text.
constexpr Message messages[] = {
    {-1, "Invalid device handle"},
    {0x0, "The operation completed successfully"},
    {0x10000, "The handle of device is invalid"},
    {0x10001, "The device has been opened by class library"},
    {0x10002, "The class library cannot find the device"},
    {0x10003, "An error was made to scan device"},
    {0x10004, "The packet size is invalid"},
    {0x10005, "An error occurs while writing packet to module"},
    {0x10100, "The communication between computer and device has been timeout"},
    {0x10101, "The device has been opened by class library"},
    {0x10102, "The device has not opened for operating"},
    {0x10103, "The data returned by device is invalid"},
    {0x10104, "The method is not supported"},
    {0x10105, "The parameter of method is invalid"},
    {0x10106, "An error occurs while getting bulk value"},
    {0x10107, "An error occurs while getting device information while device opening procedure"},
};

}  // namespace

const char* device_id_from_type_code(std::int32_t type_code) {
    for (const auto& m : models)
        if (m.type_code == type_code) return m.id;
    return "Unknown device";
}

std::uint16_t device_type_code_from_id(std::string_view id) {
    std::string upper(id);
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (const auto& m : models)
        if (upper == m.id) return m.type_code;
    return 0;
}

const char* usb_error_message(std::int32_t code) {
    for (const auto& m : messages)
        if (m.code == code) return m.text;
    return "Unknown error";
}

}  // namespace icp::usb
