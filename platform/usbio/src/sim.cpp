// The simulator: modules and their behaviour, instances, faults, the
// simulated clock, the call log and the control API.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include <icp_platform/format.h>

#include "sim.h"

namespace usbsim {

namespace detail {

unsigned total(const Module& m, Group g) {
    switch (g) {
        case Group::DI: return m.model->di;
        case Group::DO: return m.model->do_;
        case Group::AI: return m.model->ai;
        case Group::AO: return m.model->ao;
        case Group::PI: return m.model->pi;
        case Group::None: break;
    }
    return 0;
}

float ao_zero_value(std::uint8_t type_code) {
    auto r = ao_range(type_code);
    return r ? static_cast<float>(std::clamp(0.0, r->low, r->high)) : 0.0f;
}

void load_defaults(Module& m) {
    const Model& md = *m.model;
    m.soft_wdt_timeout_ms = 1000;
    m.do_inverse = 0;
    m.do_safety_enable = 0;
    m.do_safety_value = 0;
    m.do_power_on.fill(0);
    m.di_inverse = 0;
    m.di_edges = bits(md.di);  // rising edges
    m.di_filter_width = 0;
    for (unsigned i = 0; i < 16; ++i) {
        AiChannel& a = m.ai[i];
        a.type_code = md.ai_default_type;
        a.cjc_offset = 0.0f;
        a.sample_rate = i < md.ai ? 10 : 0;
        AoChannel& o = m.ao[i];
        o.type_code = md.ao_default_type;
        o.power_on_enable = 0;
        o.power_on_raw = i < md.ao ? ao_raw_from_value(o.type_code, 0.0) : 0;
        o.power_on = i < md.ao ? ao_zero_value(o.type_code) : 0.0f;
        o.safety_raw = o.power_on_raw;
        o.safety = o.power_on;
        PiChannel& p = m.pi[i];
        p.type_code = md.pi_default_type;
        p.trigger_mode = 0;
        p.isolated = false;
        p.lp_filter_enable = false;
        p.lp_filter_width_us = 1;
    }
    m.ai_enable = static_cast<std::uint16_t>(bits(md.ai));
    m.ai_filter_rejection = 0;
    m.ai_cjc_offset = 0.0f;
    m.ai_cjc_enable = true;
    m.ai_wire_detect = false;
    m.ao_enable = static_cast<std::uint16_t>(bits(md.ao));
    m.ao_safety_enable = 0;
}

void power_up(Module& m) {
    const Model& md = *m.model;
    m.do_word = 0;
    for (unsigned ch = 0; ch < md.do_; ++ch)
        if (m.do_power_on[ch]) m.do_word |= 1u << ch;
    m.di_counters.fill(0);
    for (unsigned ch = 0; ch < md.ao; ++ch) {
        AoChannel& o = m.ao[ch];
        o.safe = false;
        if (o.power_on_enable) {
            o.raw = o.power_on_raw;
            o.expected = o.power_on;
        } else {
            o.raw = ao_raw_from_value(o.type_code, 0.0);
            o.expected = ao_zero_value(o.type_code);
        }
    }
    for (auto& p : m.pi) {
        p.count = 0;
        p.status = 0;
        p.pending_pulses = 0.0;
    }
    m.wdt_expired = false;
}

void apply_safety(Module& m) {
    const Model& md = *m.model;
    std::uint32_t en = m.do_safety_enable & bits(md.do_);
    m.do_word = (m.do_word & ~en) | (m.do_safety_value & en);
    for (unsigned ch = 0; ch < md.ao; ++ch)
        if (m.ao_safety_enable & (1u << ch)) m.ao[ch].safe = true;
}

void drive_di(Module& m, std::uint32_t word) {
    std::uint32_t changed = (m.di_signal ^ word) & bits(m.model->di);
    // Rising edges count where the edge bit is 1, falling where it is 0.
    std::uint32_t counted = changed & ~(word ^ m.di_edges);
    for (unsigned ch = 0; ch < m.model->di; ++ch)
        if (counted & (1u << ch)) ++m.di_counters[ch];
    m.di_signal = word;
}

void count_pi(Module& m, unsigned ch, std::int64_t pulses) {
    constexpr std::int64_t kLimit = std::int64_t{1} << 40;  // keeps the sums exact
    pulses = std::clamp(pulses, -kLimit, kLimit);
    unsigned even = ch & ~1u;
    PiChannel& lead = m.pi[even];
    if (is_pair_mode(lead.type_code)) {
        // The pair counts in the even channel, signed: pulses on the odd
        // channel count down in up/down mode and are the direction or the
        // second phase otherwise.
        if (ch != even) {
            if (lead.type_code != 0x54) return;
            pulses = -pulses;
        }
        std::int64_t edges = pulses * (lead.trigger_mode == 2 ? 2 : 1);
        std::int64_t v = static_cast<std::int32_t>(lead.count) + edges;
        if (v > std::numeric_limits<std::int32_t>::max()) lead.status |= kPiOverflow;
        if (v < std::numeric_limits<std::int32_t>::min()) lead.status |= kPiUnderflow;
        lead.count = static_cast<std::uint32_t>(v);  // wraps modulo 2^32
        return;
    }
    PiChannel& p = m.pi[ch];
    if (p.type_code != 0x50 || pulses <= 0) return;  // frequency mode does not count
    std::uint64_t edges = static_cast<std::uint64_t>(pulses) * (p.trigger_mode == 2 ? 2u : 1u);
    std::uint64_t v = std::uint64_t{p.count} + edges;
    if (v > 0xFFFFFFFFull) p.status |= kPiOverflow;
    p.count = static_cast<std::uint32_t>(v);
}

// ---------------------------------------------------------------------------

void Sim::clear() {
    modules.clear();
    instances.clear();
    core.clear();
    now = 0;
}

Instance* Sim::find(const void* handle, bool disposed) {
    if (!handle) return nullptr;
    // Compared as addresses only: an unknown pointer is never dereferenced.
    for (auto& in : instances)
        if (static_cast<const void*>(in.get()) == handle) return (in->disposed && !disposed) ? nullptr : in.get();
    return nullptr;
}

Module* Sim::find_module(std::uint16_t type_code, std::uint8_t board) {
    for (auto& m : modules)
        if (m->model->type_code == type_code && m->board() == board) return m.get();
    return nullptr;
}

Module* Sim::add(const Model& model, std::uint8_t board) {
    auto m = std::make_unique<Module>();
    m->model = &model;
    if (board >= 16 && board <= 127) {
        m->rotary_board = 0;
        m->user_board = board;
    } else {
        m->rotary_board = board;
        m->user_board = 16;
    }
    if (find_module(model.type_code, m->board())) return nullptr;
    char serial[32];
    std::snprintf(serial, sizeof serial, "SIM%04X%02X%04u", model.type_code, m->board(),
                  static_cast<unsigned>(modules.size() + 1));
    m->serial = serial;
    load_defaults(*m);
    for (unsigned ch = 0; ch < 16; ++ch) m->ai[ch].signal = 0.0;
    power_up(*m);
    modules.push_back(std::move(m));
    return modules.back().get();
}

bool Sim::take_fault(std::string_view name, std::int32_t& code) {
    std::uint32_t armed = 0;
    if (!core.take_fault(name, &armed)) return false;
    code = static_cast<std::int32_t>(armed);
    return true;
}

namespace {
std::mutex g_mutex;
// Never destroyed: a clock thread may still call in while the process
// exits.
Sim* g_sim = nullptr;
}  // namespace

std::unique_lock<std::mutex> lock() { return std::unique_lock<std::mutex>(g_mutex); }

Sim& sim() {
    if (!g_sim) {
        g_sim = new Sim;
        build_default_rig(*g_sim);
    }
    return *g_sim;
}

// The built-in rig, one module of every I/O group:
//   USB2019    board 1  8 AI (+-10 V); ch0 1.25 V, ch1 -2.5 V, ch2 7.5 V,
//                       ch3 a thermocouple at 231.5 degrees C, ch4 an open wire
//   USB2026    board 1  5 AI, 2 AO, 2 DI, 3 DO; AI ch0 5 V, DI 0b01
//   USB2045_32 board 1  32 DO
//   USB2051    board 2  16 DI; signal 0x00A5
//   USB2055    board 3  8 DI, 8 DO; signal 0x0F
//   USB2084    board 1  8 PI (up counters); ch0 1000 Hz, ch1 50 Hz
void build_default_rig(Sim& s) {
    s.clear();
    if (Module* m = s.add(*find_model("USB2019"), 1)) {
        m->ai[0].signal = 1.25;
        m->ai[1].signal = -2.5;
        m->ai[2].signal = 7.5;
        m->ai[3].signal = 231.5;
        m->ai[4].open_wire = true;
    }
    if (Module* m = s.add(*find_model("USB2026"), 1)) {
        m->ai[0].signal = 5.0;
        m->di_signal = 0x1;
    }
    s.add(*find_model("USB2045_32"), 1);
    if (Module* m = s.add(*find_model("USB2051"), 2)) m->di_signal = 0x00A5;
    if (Module* m = s.add(*find_model("USB2055"), 3)) m->di_signal = 0x0F;
    if (Module* m = s.add(*find_model("USB2084"), 1)) {
        m->pi[0].frequency_hz = 1000.0;
        m->pi[1].frequency_hz = 50.0;
    }
}

void record(std::string_view name, const std::string& args, const std::string& result,
            std::unique_lock<std::mutex>& held) {
    icp_platform::SdkCore& core = sim().core;
    held.unlock();
    core.call(name, args, result);
}

namespace fmt {

std::string num(std::uint64_t v) { return std::to_string(v); }
std::string num(std::int64_t v) { return std::to_string(v); }
std::string real(float v) { return icp_platform::shortest_real(static_cast<double>(v)); }

std::string instance(const void* handle, const Instance* in) {
    if (!handle) return "null";
    if (!in) return "#?";
    return "#" + std::to_string(in->id);
}

std::string text(const char* p) {
    if (!p) return "null";
    std::string s = "\"";
    for (unsigned i = 0; i < USBIO_TEXT_SIZE && p[i] != '\0'; ++i) {
        auto c = static_cast<unsigned char>(p[i]);
        if (c == '"' || c == '\\') {
            s += '\\';
            s += static_cast<char>(c);
        } else if (c < 0x20 || c == 0x7F) {
            char esc[8];
            std::snprintf(esc, sizeof esc, "\\x%02X", c);
            s += esc;
        } else {
            s += static_cast<char>(c);
        }
    }
    return s + "\"";
}

}  // namespace fmt
}  // namespace detail

// ---------------------------------------------------------------------------
// Control API.

using detail::lock;
using detail::Module;
using detail::sim;

void set_trace(TraceFn fn, void* context) {
    auto held = lock();
    sim().core.set_trace(fn, context);
}

void set_call_hook(icp_platform::CallHook fn, void* context) {
    auto held = lock();
    sim().core.set_hook(fn, context);
}

bool has_function(const std::string& name) {
    const auto names = detail::sdk_functions();
    return std::find(names.begin(), names.end(), name) != names.end();
}

void reset() {
    auto held = lock();
    sim().clear();
}

void use_default_rig() {
    auto held = lock();
    detail::build_default_rig(sim());
}

bool add_module(const std::string& model, std::uint8_t board) {
    const Model* md = find_model(model);
    if (!md) return false;
    auto held = lock();
    return sim().add(*md, board) != nullptr;
}

namespace {

// Runs op on the module (and returns true) when it exists.
template <class Op>
bool with_module(std::uint16_t type_code, std::uint8_t board, Op op) {
    auto held = lock();
    Module* m = sim().find_module(type_code, board);
    if (!m) return false;
    return op(*m);
}

}  // namespace

std::optional<ModuleState> module_state(std::uint16_t type_code, std::uint8_t board) {
    auto held = lock();
    Module* m = sim().find_module(type_code, board);
    if (!m) return std::nullopt;
    return static_cast<const ModuleState&>(*m);
}

bool unplug(std::uint16_t type_code, std::uint8_t board) {
    return with_module(type_code, board, [](Module& m) {
        m.plugged = false;
        return true;
    });
}

bool replug(std::uint16_t type_code, std::uint8_t board) {
    return with_module(type_code, board, [](Module& m) {
        if (!m.plugged) {
            m.plugged = true;
            detail::power_up(m);
            m.last_contact = sim().now;
        }
        return true;
    });
}

bool set_di(std::uint16_t type_code, std::uint8_t board, std::uint32_t word) {
    return with_module(type_code, board, [&](Module& m) {
        if (m.plugged) detail::drive_di(m, word);
        else m.di_signal = word;  // an unpowered module counts nothing
        return true;
    });
}

bool pulse_di(std::uint16_t type_code, std::uint8_t board, unsigned channel, std::uint32_t pulses) {
    return with_module(type_code, board, [&](Module& m) {
        if (channel >= m.model->di) return false;
        // Each pulse has one rising and one falling edge, so it counts
        // once whichever edge is chosen; the level ends where it began.
        if (m.plugged) m.di_counters[channel] += pulses;
        return true;
    });
}

bool set_ai(std::uint16_t type_code, std::uint8_t board, unsigned channel, double value) {
    return with_module(type_code, board, [&](Module& m) {
        if (channel >= m.model->ai) return false;
        m.ai[channel].signal = value;
        return true;
    });
}

bool set_ai_open_wire(std::uint16_t type_code, std::uint8_t board, unsigned channel, bool open) {
    return with_module(type_code, board, [&](Module& m) {
        if (channel >= m.model->ai) return false;
        m.ai[channel].open_wire = open;
        return true;
    });
}

bool set_cjc_temperature(std::uint16_t type_code, std::uint8_t board, double celsius) {
    return with_module(type_code, board, [&](Module& m) {
        if (m.model->ai == 0) return false;
        m.cjc_celsius = celsius;
        return true;
    });
}

bool pulse(std::uint16_t type_code, std::uint8_t board, unsigned channel, std::int64_t pulses) {
    return with_module(type_code, board, [&](Module& m) {
        if (channel >= m.model->pi) return false;
        if (m.plugged) detail::count_pi(m, channel, pulses);
        return true;
    });
}

bool set_frequency(std::uint16_t type_code, std::uint8_t board, unsigned channel, double hz) {
    return with_module(type_code, board, [&](Module& m) {
        if (channel >= m.model->pi || !(hz >= 0.0) || std::isinf(hz)) return false;
        m.pi[channel].frequency_hz = hz;
        return true;
    });
}

void fail_next(const std::string& function, std::int32_t code, unsigned count, unsigned skip) {
    auto held = lock();
    sim().core.arm(function, static_cast<std::uint32_t>(code), count, skip);
}

void advance_ms(std::uint32_t ms) {
    auto held = lock();
    detail::Sim& s = sim();
    s.now += ms;
    for (auto& mp : s.modules) {
        Module& m = *mp;
        if (!m.plugged) continue;
        for (unsigned ch = 0; ch < m.model->pi; ++ch) {
            PiChannel& p = m.pi[ch];
            if (p.frequency_hz <= 0.0) continue;
            p.pending_pulses += p.frequency_hz * ms / 1000.0;
            double whole = std::floor(p.pending_pulses);
            p.pending_pulses -= whole;
            if (whole > 1e12) whole = 1e12;
            if (whole > 0) detail::count_pi(m, ch, static_cast<std::int64_t>(whole));
        }
        if (m.open && !m.auto_reset_wdt && !m.wdt_expired &&
            s.now - m.last_contact > m.soft_wdt_timeout_ms) {
            m.wdt_expired = true;
            detail::apply_safety(m);
        }
    }
}

std::uint64_t now_ms() {
    auto held = lock();
    return sim().now;
}

std::vector<std::string> calls() {
    auto held = lock();
    return sim().core.lines();
}

void clear_calls() {
    auto held = lock();
    sim().core.clear_log();
}

}  // namespace usbsim
