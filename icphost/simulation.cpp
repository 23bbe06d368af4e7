#include "icphost/simulation.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>

#if defined(_WIN32)
#  ifndef NOMINMAX
#    define NOMINMAX
#  endif
#  ifndef WIN32_LEAN_AND_MEAN
#    define WIN32_LEAN_AND_MEAN
#  endif
#  include <windows.h>
#else
#  include <dlfcn.h>
#endif

#include <icp_platform/format.h>

#include "icphost/listing.h"
#include "pacsdk_sim.h"
#include "usbio_sim.h"

namespace icphost {

namespace {

struct Refused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string quoted(std::string_view text) { return "'" + icp_platform::clip(text) + "'"; }

std::string upper(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = char(c - 'a' + 'A');
    return out;
}

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    return out;
}

std::vector<std::string> words(std::string_view text) {
    std::vector<std::string> out;
    std::size_t i = 0;
    for (;;) {
        while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
        if (i >= text.size() || text[i] == '#') return out;
        const std::size_t start = i;
        while (i < text.size() && text[i] != ' ' && text[i] != '\t') ++i;
        out.emplace_back(text.substr(start, i - start));
    }
}

// A decimal or 0x hexadecimal integer, optionally negative, in [low, high].
std::int64_t integer(const std::string& word, const char* what, std::int64_t low, std::int64_t high) {
    std::string_view digits = word;
    const bool negative = digits.starts_with('-');
    if (negative) digits.remove_prefix(1);
    int base = 10;
    if (digits.starts_with("0x") || digits.starts_with("0X")) digits.remove_prefix(2), base = 16;
    std::uint64_t magnitude = 0;
    const auto r = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, base);
    const bool whole = !digits.empty() && r.ec == std::errc() && r.ptr == digits.data() + digits.size();
    if (whole && magnitude <= std::uint64_t(INT64_MAX)) {
        const auto value = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
        if (value >= low && value <= high) return value;
    }
    throw Refused(std::string(what) + " from " + std::to_string(low) + " to " + std::to_string(high) +
                  " is wanted, not " + quoted(word));
}

double real(const std::string& word, const char* what) {
    double value = 0;
    const auto r = std::from_chars(word.data(), word.data() + word.size(), value);
    if (r.ec != std::errc() || r.ptr != word.data() + word.size() || !std::isfinite(value))
        throw Refused(std::string(what) + " is wanted as a number, not " + quoted(word));
    return value;
}

bool on_off(const std::string& word) {
    const std::string w = lower(word);
    if (w == "on") return true;
    if (w == "off") return false;
    throw Refused("'on' or 'off' is wanted, not " + quoted(word));
}

// A USB module named by model ID and board ID.
struct UsbModule {
    std::uint16_t type_code;
    std::uint8_t board;
    std::string name;
};

UsbModule usb_module(const std::string& model, const std::string& board) {
    const usbsim::Model* m = usbsim::find_model(upper(model));
    if (m == nullptr) {
        std::vector<std::string> ids;
        for (const auto& each : usbsim::models()) ids.emplace_back(each.id);
        throw Refused("unknown USB model " + quoted(model) + did_you_mean(nearest_names(ids, model)));
    }
    const auto id = static_cast<std::uint8_t>(integer(board, "a board ID", 0, 255));
    return {m->type_code, id, std::string(m->id) + " board " + std::to_string(id)};
}

void found_usb(bool found, const UsbModule& m) {
    if (!found) throw Refused("the rig has no " + m.name);
}

struct SerialModule {
    std::string port;
    int address;
    std::string name;
};

bool is_port(const std::string& word) { return upper(word).starts_with("COM"); }

SerialModule serial_module(const std::string& port, const std::string& address) {
    const int a = static_cast<int>(integer(address, "a DCON address", 0, 255));
    return {upper(port), a, "module " + std::to_string(a) + " on " + upper(port)};
}

void found_serial(bool found, const SerialModule& m) {
    if (!found) throw Refused("the rig has no " + m.name);
}

// Whether the SDK stand-in `base` (loaded with icphost) exports `name`.
bool exported(const char* base, const std::string& name) {
#if defined(_WIN32)
    HMODULE module = GetModuleHandleA((std::string(base) + ".dll").c_str());
    return module != nullptr && GetProcAddress(module, name.c_str()) != nullptr;
#else
    void* handle = dlopen(("lib" + std::string(base) + ".so").c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr) return false;
    const bool found = dlsym(handle, name.c_str()) != nullptr;
    dlclose(handle);
    return found;
#endif
}

// ---- The directives ---------------------------------------------------------
// Each takes its words after the name and returns what it did, for the trace.

using Words = std::vector<std::string>;

std::string time_directive(const Words& w) {
    std::string_view text = w[0];
    if (text.starts_with('+')) text.remove_prefix(1);
    double scale = 1;
    if (text.ends_with("ms")) text.remove_suffix(2);
    else if (text.ends_with('s')) text.remove_suffix(1), scale = 1000;
    double amount = -1;
    const auto r = std::from_chars(text.data(), text.data() + text.size(), amount);
    // A year at most: the clocks count milliseconds.
    const double ms = amount * scale;
    if (text.empty() || r.ec != std::errc() || r.ptr != text.data() + text.size() || !(ms >= 0) ||
        ms > 31536e6 || ms != std::floor(ms))
        throw Refused("a time such as +1500ms or +2s is wanted, not " + quoted(w[0]));
    for (auto left = static_cast<std::uint64_t>(ms); left > 0;) {
        const auto step = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, 1u << 30));
        usbsim::advance_ms(step);
        pacsim::advance_ms(step);
        left -= step;
    }
    return "time +" + std::to_string(static_cast<std::uint64_t>(ms)) + " ms: the USB clock at " +
           std::to_string(usbsim::now_ms()) + " ms, the serial clock at " + std::to_string(pacsim::now_ms()) +
           " ms";
}

std::string plug_directive(const Words& w, bool plug) {
    const UsbModule m = usb_module(w[0], w[1]);
    found_usb(plug ? usbsim::replug(m.type_code, m.board) : usbsim::unplug(m.type_code, m.board), m);
    return (plug ? "plugged " : "unplugged ") + m.name;
}

std::string silence_directive(const Words& w, bool silent) {
    const SerialModule m = serial_module(w[0], w[1]);
    found_serial(pacsim::silence(m.port, m.address, silent), m);
    return m.name + (silent ? " silent" : " answers");
}

std::string fault_directive(const Words& w) {
    const std::string& name = w[0];
    const auto count = static_cast<unsigned>(w.size() > 2 ? integer(w[2], "a count", 0, 1000000) : 1);
    const std::string times = count == 0 ? "disarmed" : "fail " + std::to_string(count) + " time(s)";
    if (exported("ICPDAS_USBIO", name)) {
        const auto code = integer(w[1], "an error code", INT32_MIN, UINT32_MAX);
        usbsim::fail_next(name, static_cast<std::int32_t>(static_cast<std::uint32_t>(code)), count);
        return "USB SDK " + name + ": " + times + " with " + w[1];
    }
    if (exported("PACSDK", name)) {
        const auto code = integer(w[1], "an error code", 0, UINT32_MAX);
        pacsim::fail_next(name, static_cast<std::uint32_t>(code), count);
        return "serial SDK " + name + ": " + times + " with " + w[1];
    }
    throw Refused("neither SDK has a function " + quoted(name) + " (the SDK's own names: OpenDevice, pac_ReadAI, ...)");
}

std::string signal_directive(const Words& w) {
    const std::string kind = lower(w[2]);
    const auto wants = [&](std::size_t n, const char* usage) {
        if (w.size() != n) throw Refused("usage: :signal " + w[0] + " " + w[1] + " " + kind + " " + usage);
    };
    if (is_port(w[0])) {
        const SerialModule m = serial_module(w[0], w[1]);
        if (kind == "ai") {
            wants(5, "CHANNEL VOLTS");
            const auto channel = static_cast<int>(integer(w[3], "a channel", 0, 255));
            found_serial(pacsim::set_ai(m.port, m.address, channel, real(w[4], "volts")), m);
        } else if (kind == "di") {
            wants(4, "WORD");
            const auto word = static_cast<std::uint32_t>(integer(w[3], "an input word", 0, 0xFF));
            found_serial(pacsim::set_di(m.port, m.address, word), m);
        } else {
            throw Refused("a serial module's signal is ai or di, not " + quoted(w[2]));
        }
        return m.name + ": " + kind + " " + w[3] + (w.size() > 4 ? " " + w[4] : "");
    }
    const UsbModule m = usb_module(w[0], w[1]);
    const auto channel = [&] { return static_cast<unsigned>(integer(w[3], "a channel", 0, 31)); };
    bool ok = false;
    if (kind == "ai") {
        wants(5, "CHANNEL VALUE");
        ok = usbsim::set_ai(m.type_code, m.board, channel(), real(w[4], "the value"));
    } else if (kind == "open_wire") {
        wants(5, "CHANNEL on|off");
        ok = usbsim::set_ai_open_wire(m.type_code, m.board, channel(), on_off(w[4]));
    } else if (kind == "cjc") {
        wants(4, "CELSIUS");
        ok = usbsim::set_cjc_temperature(m.type_code, m.board, real(w[3], "the temperature"));
    } else if (kind == "di") {
        wants(4, "WORD");
        ok = usbsim::set_di(m.type_code, m.board, static_cast<std::uint32_t>(integer(w[3], "an input word", 0, UINT32_MAX)));
    } else if (kind == "pulses") {
        wants(5, "CHANNEL COUNT");
        ok = usbsim::pulse(m.type_code, m.board, channel(), integer(w[4], "a pulse count", -1000000000, 1000000000));
    } else if (kind == "frequency") {
        wants(5, "CHANNEL HZ");
        const double hz = real(w[4], "the frequency");
        if (hz < 0) throw Refused("a frequency of 0 Hz or more is wanted, not " + quoted(w[4]));
        ok = usbsim::set_frequency(m.type_code, m.board, channel(), hz);
    } else {
        throw Refused("a USB module's signal is ai, open_wire, cjc, di, pulses or frequency, not " + quoted(w[2]));
    }
    if (!ok) throw Refused("the rig has no " + m.name + " with that input");
    return m.name + ": " + kind + " " + w[3] + (w.size() > 4 ? " " + w[4] : "");
}

struct Directive {
    const char* name;
    const char* arguments;
    std::size_t least, most;  // words after the name
};
constexpr Directive directives[] = {
    {"time", "+1500ms | +2s", 1, 1},
    {"unplug", "MODEL BOARD", 2, 2},
    {"plug", "MODEL BOARD", 2, 2},
    {"silence", "COMn ADDRESS", 2, 2},
    {"answer", "COMn ADDRESS", 2, 2},
    {"fault", "SDK_FUNCTION CODE [COUNT]", 2, 3},
    {"signal", "MODEL BOARD ai|open_wire|cjc|di|pulses|frequency ... | COMn ADDRESS ai|di ...", 3, 5},
    {"trace", "on|off", 1, 1},
    {"rig", "FILE", 1, 1},
};

// A trace line arrives while a script line runs: it goes out at once, on the
// same stream as the script's values, so that both keep their order.
void print_trace(const char* line, void* context) {
    *static_cast<std::ostream*>(context) << line << '\n' << std::flush;
}

}  // namespace

bool read_file(const std::string& path, std::string* text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream buffer;
    buffer << in.rdbuf();
    *text = buffer.str();
    return !in.bad();
}

bool load_rig(const std::string& path, std::string* error) {
    if (path.empty()) {
        usbsim::use_default_rig();
        pacsim::use_default_rig();
        return true;
    }
    std::string text;
    if (!read_file(path, &text)) {
        *error = "cannot read the rig " + path;
        return false;
    }
    std::string fault;
    if (!usbsim::check_rig(text, &fault) || !pacsim::check_rig(text, &fault) || !usbsim::load_rig(text, &fault) ||
        !pacsim::load_rig(text, &fault)) {
        *error = path + ": " + fault;
        return false;
    }
    return true;
}

Simulation::Simulation(std::ostream& out, bool trace) : out_(out) { set_trace(trace); }

Simulation::~Simulation() { set_trace(false); }

void Simulation::set_trace(bool on) {
    trace_ = on;
    usbsim::set_trace(on ? &print_trace : nullptr, on ? &out_ : nullptr);
    pacsim::set_trace(on ? &print_trace : nullptr, on ? &out_ : nullptr);
}

void Simulation::run(std::string_view text) {
    const Words all = words(text);
    if (all.empty()) {
        std::string known;
        for (const auto& d : directives) known += std::string(known.empty() ? "" : ", ") + ":" + d.name;
        throw Refused("a directive is wanted after ':' (" + known + ")");
    }
    const std::string name = lower(all[0]);
    const Words w(all.begin() + 1, all.end());
    const auto* d = std::find_if(std::begin(directives), std::end(directives),
                                 [&](const Directive& each) { return name == each.name; });
    if (d == std::end(directives))
    {
        std::vector<std::string> known;
        for (const auto& each : names()) known.push_back(":" + each);
        throw Refused("unknown directive " + quoted(":" + all[0]) + did_you_mean(nearest_names(known, ":" + name)));
    }
    if (w.size() < d->least || w.size() > d->most)
        throw Refused(std::string("usage: :") + d->name + " " + d->arguments);
    std::string done;
    if (name == "time") done = time_directive(w);
    else if (name == "unplug" || name == "plug") done = plug_directive(w, name == "plug");
    else if (name == "silence" || name == "answer") done = silence_directive(w, name == "silence");
    else if (name == "fault") done = fault_directive(w);
    else if (name == "signal") done = signal_directive(w);
    else if (name == "trace") set_trace(on_off(w[0])), done = std::string("trace ") + (trace_ ? "on" : "off");
    else if (name == "rig") {
        std::string error;
        if (!load_rig(w[0], &error)) throw Refused(error);
        done = "rig " + w[0];
    }
    if (trace_) out_ << "sim: " << done << '\n' << std::flush;
}

const std::vector<std::string>& Simulation::names() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> out;
        for (const auto& d : directives) out.emplace_back(d.name);
        return out;
    }();
    return all;
}

std::string Simulation::usage() {
    std::string out;
    for (const auto& d : directives) out += std::string("  :") + d.name + " " + d.arguments + "\n";
    return out;
}

}  // namespace icphost
