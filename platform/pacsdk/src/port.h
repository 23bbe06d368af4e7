// The byte-level port under the DCON client. The client frames commands,
// reads the reply line and judges it; a Port only moves bytes. The emulated
// RS-485 line is one implementation, a real serial device another.
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

// How a port operation ended.
enum class Io { done, timeout, failed };

class Port {
public:
    virtual ~Port() = default;
    // An emulated line keeps simulated time: it never waits, and the client
    // moves the simulated clock on by each exchange's time on the wire.
    virtual bool simulated() const = 0;
    // Drops every byte received and not read yet.
    virtual void discard_input() = 0;
    // Sends every byte within timeout_ms (0: no limit).
    virtual Io write(std::string_view bytes, uint32_t timeout_ms) = 0;
    // Appends to *out the bytes that arrived, waiting up to timeout_ms
    // (0: no limit) for the first one.
    virtual Io read(std::string* out, uint32_t timeout_ms) = 0;
};

class PortProvider {
public:
    virtual ~PortProvider() = default;
    // The port configured as asked, or nullptr when this provider has no
    // port of that name or cannot configure it.
    virtual std::unique_ptr<Port> open(const LineSettings& settings) = 0;
};

// A real serial device (a path such as /dev/ttyUSB0) set as settings ask
// (their name is not looked at). nullptr when it cannot be opened or set,
// with *why telling the problem in at most 31 characters.
std::unique_ptr<Port> open_device(const std::string& path, const LineSettings& settings, std::string* why);

}  // namespace pacsdk
