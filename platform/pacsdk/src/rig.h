// The simulated rig: named RS-485 lines, each with DCON modules on it, on a
// simulated clock (microseconds).
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "dcon_module.h"
#include "port.h"

namespace pacsdk {

// "COM1" .. "COM255", no leading zero.
bool valid_port_name(std::string_view name);

class EmulatedLine {
public:
    // false when the address is taken.
    bool add(std::unique_ptr<Module> module);
    Module* find(int address);
    const std::map<int, std::unique_ptr<Module>>& modules() const { return modules_; }

    // One frame on the wire. Every module hears it; the reply (with its CR)
    // of the one that answers, if any. A frame without CR is never complete.
    std::optional<std::string> deliver(std::string_view frame);
    void advance(uint64_t now_us);

private:
    std::map<int, std::unique_ptr<Module>> modules_;
    uint64_t now_ = 0;
};

class Rig final : public PortProvider {
public:
    // false when the name is not a COM port name or is taken.
    bool add_port(const std::string& name);
    EmulatedLine* line(const std::string& name);
    Module* module(const std::string& port, int address);
    void advance(uint64_t now_us);

    // The emulated line carries every valid setting; only the baud rate can
    // be refused, as a serial driver would.
    std::unique_ptr<Port> open(const LineSettings& settings) override;

private:
    std::map<std::string, std::shared_ptr<EmulatedLine>> lines_;
    uint64_t now_ = 0;
};

// COM1: ai at 1, ao at 2, dio at 3, pwm at 4.
std::unique_ptr<Rig> default_rig();
// The "serial" part of a rig file; nullptr with *error = "line N: ..." on a
// fault.
std::unique_ptr<Rig> rig_from_json(const std::string& text, std::string* error);

}  // namespace pacsdk
