// Emulated DCON modules. A module sees every line sent on its RS-485 line,
// acts on the ones addressed to it (and on the broadcasts) and produces at
// most one reply. Common to every kind: framing and checksum, identity
// ($AAM, $AAF, $AA2, $AA5, ~AAO), configuration (%AANNTTCCFF, refused
// outside INIT mode) and the host watchdog (~AA0..~AA3, ~**). Each kind adds
// its own I/O commands.
//
// Replies: a malformed or unknown command gets none (as a real module, which
// cannot tell it from line noise); a well-formed command with a bad
// parameter gets "?AA"; an output write while the watchdog timeout flag is
// set gets a bare "!" (the pwm kind refuses restarts with "?AA").
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "pacsdk_sim.h"

namespace pacsdk {

enum class Kind { ai, ao, dio, pwm };

std::optional<Kind> kind_from_name(std::string_view name);
const char* kind_name(Kind kind);

// What a rig file may set on a module beyond its address and kind.
struct ModuleSetup {
    bool checksum = false;
    std::vector<double> inputs;     // ai volts
    uint32_t input_word = 0;        // dio, pwm
    std::vector<double> power_on;   // ao volts
    std::vector<double> safe;       // ao volts
    uint32_t power_on_word = 0;     // dio
    uint32_t safe_word = 0;         // dio
    // dio: takes ~AA4 / ~AA5PPSS (both values at once); when off it refuses
    // them, as older firmware does, and has only ~AA4V / ~AA5V.
    bool combined_values = true;
};

class Module {
public:
    Module(Kind kind, int address, const ModuleSetup& setup);
    virtual ~Module() = default;
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    Kind kind() const { return kind_; }
    int address() const { return address_; }

    // One line from the wire, CR removed. The reply with its CR, or nothing.
    std::optional<std::string> receive(std::string_view line);
    // The clock moved on to now_us (microseconds).
    void advance(uint64_t now_us);

    void set_silent(bool silent) { silent_ = silent; }
    void corrupt_next_reply() { corrupt_next_ = true; }
    void cut_next_reply(std::size_t keep) { cut_next_ = keep; }
    void power_cycle();

    // Control inputs; false when the kind has no such input.
    virtual bool set_ai(int /*channel*/, double /*volts*/) { return false; }
    virtual bool set_di(uint32_t /*word*/) { return false; }

    virtual void fill_state(pacsim::ModuleState& state) const;

protected:
    // A command addressed to this module (lead character, address and
    // checksum already checked and removed from rest). nullopt: no reply.
    virtual std::optional<std::string> command(char lead, std::string_view rest) = 0;
    virtual void broadcast(std::string_view /*line*/) {}
    // The watchdog timed out: drive the safe state.
    virtual void on_watchdog_timeout() = 0;
    virtual void on_power_up() = 0;
    virtual void on_advance() {}

    bool timed_out() const { return wdt_timed_out_; }
    // Milliseconds, with their fraction.
    double now() const { return static_cast<double>(now_us_) / 1000.0; }
    // "!AA" + data, "?AA".
    std::string ok(std::string_view data = {}) const;
    std::string refused() const;

private:
    std::optional<std::string> common_command(char lead, std::string_view rest);
    std::string finish(std::string reply);

    Kind kind_;
    int address_;
    std::string aa_;
    std::string name_;
    bool checksum_;
    bool silent_ = false;
    bool corrupt_next_ = false;
    std::optional<std::size_t> cut_next_;
    bool reset_status_ = true;  // first $AA5 after power-on reads 1
    bool wdt_enabled_ = false;
    uint32_t wdt_timeout_ = 0;  // 0.1 s units
    bool wdt_timed_out_ = false;
    uint64_t wdt_last_refresh_ = 0;  // microseconds
    uint64_t now_us_ = 0;
};

std::unique_ptr<Module> make_module(Kind kind, int address, const ModuleSetup& setup);

}  // namespace pacsdk
