// The simulated rig: named RS-485 lines, each with DCON modules on it, on a
// simulated clock (microseconds).
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

    // Bytes on the wire. Every module hears each line a CR completes; the
    // replies (with their CR) of those that answer, in order. Bytes after the
    // last CR wait for the rest of their line. seen, when given, is told each
    // line and its reply.
    using Seen = std::function<void(std::string_view line, const std::optional<std::string>& reply)>;
    std::string hear(std::string_view bytes, const Seen& seen = {});
    void advance(uint64_t now_us);

private:
    std::optional<std::string> deliver(std::string_view line);

    std::map<int, std::unique_ptr<Module>> modules_;
    std::string pending_;
    uint64_t now_ = 0;
};

class Rig final : public PortProvider {
public:
    // false when the name is not a COM port name or is taken.
    bool add_port(const std::string& name);
    // A port name that stands for a real serial device; the same checks.
    bool add_device(const std::string& name, const std::string& path);
    EmulatedLine* line(const std::string& name);
    // The device behind a port name; nullptr when there is none.
    const std::string* device(const std::string& name) const;
    // The names of the emulated lines, in order.
    std::vector<std::string> line_names() const;
    Module* module(const std::string& port, int address);
    void advance(uint64_t now_us);

    // The emulated line carries every valid setting; only the baud rate can
    // be refused, as a serial driver would.
    std::unique_ptr<Port> open(const LineSettings& settings) override;

private:
    std::map<std::string, std::shared_ptr<EmulatedLine>> lines_;
    std::map<std::string, std::string> devices_;
    uint64_t now_ = 0;
};

// COM1: ai at 1, ao at 2, dio at 3, pwm at 4.
std::unique_ptr<Rig> default_rig();
// The "serial" part of a rig file; nullptr with *error = "line N: ..." on a
// fault.
std::unique_ptr<Rig> rig_from_json(const std::string& text, std::string* error);

}  // namespace pacsdk
