// The byte-level port under the DCON client. The client frames commands and
// judges replies; a Port only moves one line out and one line back. The
// emulated RS-485 line is one implementation; a real serial device is
// another PortProvider with its own Port, and neither the client nor the
// emulator changes for it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace pacsdk {

// What a connection string asks for.
struct LineSettings {
    std::string name;  // "COM1"
    uint32_t baud = 115200;
    char parity = 'N';  // N, O, E, M, S
    int data_bits = 8;
    int stop_bits = 1;
};

// Milliseconds; 0 turns a limit off.
struct Timeouts {
    uint32_t read_total = 300;
    uint32_t read_gap = 0;
    uint32_t write_total = 0;
};

class Port {
public:
    virtual ~Port() = default;
    // Discards input that arrived before, writes frame (terminator
    // included) and reads up to the first CR. The characters before the CR,
    // or nullopt when no CR came within the timeouts.
    virtual std::optional<std::string> transact(std::string_view frame, const Timeouts& timeouts) = 0;
    // Writes frame and waits for nothing (broadcasts).
    virtual void send(std::string_view frame, const Timeouts& timeouts) = 0;
};

class PortProvider {
public:
    virtual ~PortProvider() = default;
    // The port configured as asked, or nullptr when this provider has no
    // port of that name or cannot configure it.
    virtual std::unique_ptr<Port> open(const LineSettings& settings) = 0;
};

}  // namespace pacsdk
