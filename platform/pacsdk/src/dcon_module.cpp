#include "dcon_module.h"

#include "dcon_text.h"

namespace pacsdk {

namespace {

// Identity of each kind: name ($AAM), firmware ($AAF), type code ($AA2).
// The type codes of the 7024 and the 7088 are this emulator's choice.
struct Identity {
    Kind kind;
    const char* kind_name;
    const char* module_name;
    const char* firmware;
    const char* type_code;
};
constexpr Identity identities[] = {
    {Kind::ai, "ai", "7017", "A2.0", "08"},
    {Kind::ao, "ao", "7024", "A2.0", "33"},
    {Kind::dio, "dio", "7050", "A2.0", "40"},
    {Kind::pwm, "pwm", "7088", "A1.2", "40"},
};

const Identity& identity(Kind kind) {
    for (const auto& id : identities)
        if (id.kind == kind) return id;
    return identities[0];
}

// The emulated line carries any setting; $AA2 reports 115200 bps.
constexpr const char* baud_code = "0A";
constexpr uint8_t format_checksum_bit = 0x40;
constexpr uint8_t status_timed_out = 0x04;
constexpr uint8_t status_enabled = 0x80;

}  // namespace

std::optional<Kind> kind_from_name(std::string_view name) {
    for (const auto& id : identities)
        if (name == id.kind_name) return id.kind;
    return std::nullopt;
}

const char* kind_name(Kind kind) { return identity(kind).kind_name; }

Module::Module(Kind kind, int address, const ModuleSetup& setup)
    : kind_(kind), address_(address), aa_(address_field(address)), name_(identity(kind).module_name),
      checksum_(setup.checksum) {}

std::string Module::ok(std::string_view data) const { return "!" + aa_ + std::string(data); }
std::string Module::refused() const { return "?" + aa_; }

std::optional<std::string> Module::receive(std::string_view line) {
    if (silent_) return std::nullopt;
    if (checksum_) {
        // A line without a valid checksum is line noise to this module.
        if (line.size() < 3 || !checksum_matches(line)) return std::nullopt;
        line.remove_suffix(2);
    }
    if (line == "~**") {
        wdt_last_refresh_ = now_us_;
        return std::nullopt;
    }
    if (line.size() >= 3 && line.substr(1, 2) == "**") {
        broadcast(line);
        return std::nullopt;
    }
    if (line.size() < 3 || line.substr(1, 2) != aa_) return std::nullopt;
    char lead = line[0];
    if (lead != '$' && lead != '#' && lead != '%' && lead != '@' && lead != '~') return std::nullopt;
    std::string_view rest = line.substr(3);
    auto reply = common_command(lead, rest);
    if (!reply) reply = command(lead, rest);
    if (!reply) return std::nullopt;
    return finish(std::move(*reply));
}

std::string Module::finish(std::string reply) {
    if (checksum_) reply += checksum(reply);
    if (corrupt_next_ && !reply.empty()) reply[0] = '*';
    corrupt_next_ = false;
    if (cut_next_ && reply.size() > *cut_next_) reply.resize(*cut_next_);
    cut_next_.reset();
    return reply + "\r";
}

std::optional<std::string> Module::common_command(char lead, std::string_view rest) {
    if (lead == '$') {
        if (rest == "M") return ok(name_);
        if (rest == "F") return ok(identity(kind_).firmware);
        if (rest == "2") {
            uint32_t format = checksum_ ? format_checksum_bit : 0;
            return ok(std::string(identity(kind_).type_code) + baud_code + hex(format, 2));
        }
        if (rest == "5") {
            bool first = reset_status_;
            reset_status_ = false;
            return ok(first ? "1" : "0");
        }
        return std::nullopt;
    }
    if (lead == '%') {
        // New address, type, baud and format: only taken in INIT mode, which
        // an emulated module never is in.
        if (rest.size() == 8 && parse_hex(rest)) return refused();
        return std::nullopt;
    }
    if (lead != '~' || rest.empty()) return std::nullopt;
    if (rest == "0") {
        uint32_t status = (wdt_timed_out_ ? status_timed_out : 0u) | (wdt_enabled_ ? status_enabled : 0u);
        return ok(hex(status, 2));
    }
    if (rest == "1") {
        wdt_timed_out_ = false;
        wdt_last_refresh_ = now_us_;
        return ok();
    }
    if (rest == "2") return ok((wdt_enabled_ ? "1" : "0") + hex(wdt_timeout_, 2));
    if (rest[0] == '3' && rest.size() == 4) {
        auto timeout = parse_hex(rest.substr(2));
        if (!timeout || (rest[1] != '0' && rest[1] != '1')) return std::nullopt;
        bool enable = rest[1] == '1';
        if (enable && *timeout == 0) return refused();
        wdt_enabled_ = enable;
        wdt_timeout_ = *timeout;
        wdt_last_refresh_ = now_us_;
        return ok();
    }
    if (rest[0] == 'O') {
        std::string_view name = rest.substr(1);
        if (name.empty() || name.size() > 6) return std::nullopt;
        name_ = std::string(name);
        return ok();
    }
    return std::nullopt;
}

void Module::advance(uint64_t now_us) {
    now_us_ = now_us;
    if (wdt_enabled_ && !wdt_timed_out_ && now_us_ - wdt_last_refresh_ >= uint64_t{wdt_timeout_} * 100'000) {
        wdt_timed_out_ = true;
        on_watchdog_timeout();
    }
    on_advance();
}

void Module::power_cycle() {
    reset_status_ = true;
    wdt_last_refresh_ = now_us_;
    on_power_up();
}

void Module::fill_state(pacsim::ModuleState& state) const {
    state.kind = kind_name(kind_);
    state.checksum = checksum_;
    state.silent = silent_;
    state.wdt_enabled = wdt_enabled_;
    state.wdt_timeout = wdt_timeout_;
    state.wdt_timed_out = wdt_timed_out_;
}

}  // namespace pacsdk
