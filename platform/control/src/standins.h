// The stand-ins as directives name them: modules, SDK functions, clocks.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "pacsdk_sim.h"
#include "usbio_sim.h"

namespace icp_control {

// A USB module named by model ID and board ID.
struct UsbModule {
    std::uint16_t type_code;
    std::uint8_t board;
    std::string name;  // "USB2019 board 1"
};
UsbModule usb_module(const std::string& model, const std::string& board);

// A serial module named by port and DCON address.
struct SerialModule {
    std::string port;
    int address;
    std::string name;  // "module 3 on COM1"
};
bool is_port(const std::string& word);
SerialModule serial_module(const std::string& port, const std::string& address);

// Refuses with "the rig has no NAME" unless found.
void found(bool found, const std::string& name);

}  // namespace icp_control

namespace icp_control {

class Control;
struct Event;

// The modules a rig text holds, as directives name them: what a rig's events
// are checked against before the rig loads.
struct RigIndex {
    std::set<std::pair<std::uint16_t, unsigned>> usb;  // type code, board ID
    std::set<std::pair<std::string, int>> serial;      // port, DCON address
};

// While the control checks a rig's events: true, after refusing a module
// the rig does not hold. Else false: the directive goes on.
bool checked(const Control& control, const UsbModule& m);
bool checked(const Control& control, const SerialModule& m);

// The loaded rig's timeline starts again with these events.
void set_timeline(std::vector<Event> events);

// Whether the USB or the serial stand-in has an SDK function of that name.
bool usb_function(const std::string& name);
bool serial_function(const std::string& name);

// Both stand-ins' clocks run on; "the USB clock at N ms, the serial clock at N ms".
void advance_clocks(std::uint64_t ms);
std::string clocks_text();

}  // namespace icp_control
