// The control API: rig, module inputs and faults, simulated time, state and
// the call log.
#include <cmath>

#include "library.h"
#include "sdk_common.h"

namespace pacsim {

using pacsdk::library;
using pacsdk::Module;

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

// Runs f on the module, or returns fallback when there is none.
template <class F, class R>
R with_module(const std::string& port, int address, R fallback, F f) {
    Lock lock(library().mutex);
    Module* m = library().rig().module(port, address);
    return m ? f(*m) : fallback;
}

std::optional<ModuleState> state_of(const std::string& port, int address) {
    ModuleState s;
    if (!module_state(port, address, &s)) return std::nullopt;
    return s;
}

double element(const std::vector<double>& v, int i) {
    return i >= 0 && static_cast<std::size_t>(i) < v.size() ? v[static_cast<std::size_t>(i)] : std::nan("");
}

void replace_rig(std::unique_ptr<pacsdk::Rig> rig) {
    Lock lock(library().mutex);
    library().reset(std::move(rig));
    pacsdk::set_last_error(0);
}

}  // namespace

void set_trace(TraceFn fn, void* context) {
    Lock lock(library().mutex);
    library().log.set_trace(fn, context);
}

void set_call_hook(icp_platform::CallHook fn, void* context) {
    Lock lock(library().mutex);
    library().log.set_hook(fn, context);
}

bool has_function(const std::string& name) { return library().log.has_function(name); }

void reset() { replace_rig(std::make_unique<pacsdk::Rig>()); }

void use_default_rig() { replace_rig(pacsdk::default_rig()); }

bool check_rig(const std::string& json_text, std::string* error) {
    return pacsdk::rig_from_json(json_text, error) != nullptr;
}

bool load_rig(const std::string& json_text, std::string* error) {
    auto rig = pacsdk::rig_from_json(json_text, error);
    if (!rig) return false;
    replace_rig(std::move(rig));
    return true;
}

void fail_next(const std::string& function, uint32_t code, unsigned count, unsigned skip) {
    Lock lock(library().mutex);
    library().log.arm(function, code, count, skip);
}

bool add_port(const std::string& port) {
    Lock lock(library().mutex);
    return library().rig().add_port(port);
}

bool add_module(const std::string& port, int address, const std::string& kind, bool checksum) {
    Lock lock(library().mutex);
    auto k = pacsdk::kind_from_name(kind);
    pacsdk::EmulatedLine* line = library().rig().line(port);
    if (!k || !line || address < 0 || address > 255) return false;
    pacsdk::ModuleSetup setup;
    setup.checksum = checksum;
    return line->add(pacsdk::make_module(*k, address, setup));
}

bool set_ai(const std::string& port, int address, int channel, double volts) {
    return with_module(port, address, false, [&](Module& m) { return m.set_ai(channel, volts); });
}

bool set_di(const std::string& port, int address, uint32_t word) {
    return with_module(port, address, false, [&](Module& m) { return m.set_di(word); });
}

bool silence(const std::string& port, int address, bool silent) {
    return with_module(port, address, false, [&](Module& m) {
        m.set_silent(silent);
        return true;
    });
}

bool corrupt_next_reply(const std::string& port, int address) {
    return with_module(port, address, false, [&](Module& m) {
        m.corrupt_next_reply();
        return true;
    });
}

bool cut_next_reply(const std::string& port, int address, std::size_t keep_chars) {
    return with_module(port, address, false, [&](Module& m) {
        m.cut_next_reply(keep_chars);
        return true;
    });
}

bool power_cycle(const std::string& port, int address) {
    return with_module(port, address, false, [&](Module& m) {
        m.power_cycle();
        return true;
    });
}

void advance_ms(uint32_t ms) {
    Lock lock(library().mutex);
    library().advance_us(uint64_t{ms} * 1000);
}

void set_real_time(bool on) {
    Lock lock(library().mutex);
    library().real_time = on;
}

uint64_t now_ms() {
    Lock lock(library().mutex);
    return library().now();
}

std::vector<std::string> emulated_ports() {
    Lock lock(library().mutex);
    return library().rig().line_names();
}

std::string wire_input(const std::string& port, const std::string& bytes) {
    Lock lock(library().mutex);
    pacsdk::EmulatedLine* line = library().rig().line(port);
    if (!line) return {};
    auto& log = library().log;
    return line->hear(bytes, [&](std::string_view command, const std::optional<std::string>& reply) {
        log.sent(command);
        if (reply) log.received(reply->substr(0, reply->find('\r')));
    });
}

bool module_state(const std::string& port, int address, ModuleState* out) {
    return with_module(port, address, false, [&](Module& m) {
        ModuleState s;
        m.fill_state(s);
        if (out) *out = std::move(s);
        return true;
    });
}

uint32_t do_word(const std::string& port, int address) {
    auto s = state_of(port, address);
    return s ? s->do_word : 0;
}

uint32_t do_power_on(const std::string& port, int address) {
    auto s = state_of(port, address);
    return s ? s->do_power_on : 0;
}

uint32_t do_safe(const std::string& port, int address) {
    auto s = state_of(port, address);
    return s ? s->do_safe : 0;
}

double ao_output(const std::string& port, int address, int channel) {
    auto s = state_of(port, address);
    return s ? element(s->ao_output, channel) : std::nan("");
}

double ao_power_on(const std::string& port, int address, int channel) {
    auto s = state_of(port, address);
    return s ? element(s->ao_power_on, channel) : std::nan("");
}

double ao_safe(const std::string& port, int address, int channel) {
    auto s = state_of(port, address);
    return s ? element(s->ao_safe, channel) : std::nan("");
}

bool wdt_timed_out(const std::string& port, int address) {
    auto s = state_of(port, address);
    return s && s->wdt_timed_out;
}

double pwm_duty(const std::string& port, int address, int channel) {
    auto s = state_of(port, address);
    if (!s || channel < 0 || static_cast<std::size_t>(channel) >= s->pwm.size()) return std::nan("");
    return s->pwm[static_cast<std::size_t>(channel)].duty;
}

uint32_t pwm_frequency(const std::string& port, int address, int channel) {
    auto s = state_of(port, address);
    if (!s || channel < 0 || static_cast<std::size_t>(channel) >= s->pwm.size()) return 0;
    return s->pwm[static_cast<std::size_t>(channel)].frequency;
}

uint32_t pwm_running(const std::string& port, int address) {
    auto s = state_of(port, address);
    uint32_t mask = 0;
    if (s)
        for (std::size_t c = 0; c < s->pwm.size(); ++c)
            if (s->pwm[c].running) mask |= 1u << c;
    return mask;
}

bool port_open(const std::string& port) {
    Lock lock(library().mutex);
    return library().is_open(port);
}

std::vector<std::string> calls() {
    Lock lock(library().mutex);
    return library().log.lines();
}

void clear_calls() {
    Lock lock(library().mutex);
    library().log.clear_log();
}

}  // namespace pacsim
