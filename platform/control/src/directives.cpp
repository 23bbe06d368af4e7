#include "icp_control/directives.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include <icp_platform/format.h>
#include <icp_platform/names.h>

#include "standins.h"

namespace icp_control {

namespace {

// Refuses a signal with other than n words.
void wants(const Words& w, std::size_t n, const char* usage) {
    if (w.size() != n) throw Refused("usage: :signal " + w[0] + " " + w[1] + " " + lower(w[2]) + " " + usage);
}

// ---- The actions ----------------------------------------------------------
// Each takes the words after the name and returns what it did, for the trace.

std::string time_action(Control& control, const Words& w) {
    const std::uint64_t ms = duration_ms(w[0], "a time such as +1500ms or +2s");
    control.advance(ms);
    return "time +" + std::to_string(ms) + " ms: " + clocks_text();
}

std::string wait_action(Control&, const Words& w) {
    const std::uint64_t ms = duration_ms(w[0], "a time such as 500ms or 2s");
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    return "waited " + std::to_string(ms) + " ms";
}

std::string plug_action(Control& control, const Words& w) {
    const UsbModule m = usb_module(w[0], w[1]);
    if (checked(control, m)) return {};
    found(usbsim::replug(m.type_code, m.board), m.name);
    return "plugged " + m.name;
}

std::string unplug_action(Control& control, const Words& w) {
    const UsbModule m = usb_module(w[0], w[1]);
    if (checked(control, m)) return {};
    found(usbsim::unplug(m.type_code, m.board), m.name);
    return "unplugged " + m.name;
}

std::string silence_action(Control& control, const Words& w) {
    const SerialModule m = serial_module(w[0], w[1]);
    if (checked(control, m)) return {};
    found(pacsim::silence(m.port, m.address, true), m.name);
    return m.name + " silent";
}

std::string answer_action(Control& control, const Words& w) {
    const SerialModule m = serial_module(w[0], w[1]);
    if (checked(control, m)) return {};
    found(pacsim::silence(m.port, m.address, false), m.name);
    return m.name + " answers";
}

std::string fault_action(Control& control, const Words& w) {
    const std::string& name = w[0];
    const auto count = static_cast<unsigned>(w.size() > 2 ? integer(w[2], "a count", 0, 1000000) : 1);
    const std::string times = count == 0 ? "disarmed" : "fail " + std::to_string(count) + " time(s)";
    if (usb_function(name)) {
        const auto code = integer(w[1], "an error code", INT32_MIN, UINT32_MAX);
        if (control.checking()) return {};
        usbsim::fail_next(name, static_cast<std::int32_t>(static_cast<std::uint32_t>(code)), count);
        return "USB SDK " + name + ": " + times + " with " + w[1];
    }
    if (serial_function(name)) {
        const auto code = integer(w[1], "an error code", 0, UINT32_MAX);
        if (control.checking()) return {};
        pacsim::fail_next(name, static_cast<std::uint32_t>(code), count);
        return "serial SDK " + name + ": " + times + " with " + w[1];
    }
    throw Refused("neither SDK has a function " + icp_platform::quoted(name) + " (the SDK's own names: OpenDevice, pac_ReadAI, ...)");
}

// A serial module's input: ai CHANNEL VOLTS, di WORD.
std::string serial_signal(Control& control, const Words& w, const std::string& kind) {
    const SerialModule m = serial_module(w[0], w[1]);
    bool ok = false;
    if (kind == "ai") {
        wants(w, 5, "CHANNEL VOLTS");
        const auto channel = static_cast<int>(integer(w[3], "a channel", 0, 255));
        const double volts = real(w[4], "volts");
        if (checked(control, m)) return {};
        ok = pacsim::set_ai(m.port, m.address, channel, volts);
    } else if (kind == "di") {
        wants(w, 4, "WORD");
        const auto word = static_cast<std::uint32_t>(integer(w[3], "an input word", 0, 0xFF));
        if (checked(control, m)) return {};
        ok = pacsim::set_di(m.port, m.address, word);
    } else {
        throw Refused("a serial module's signal is ai or di, not " + icp_platform::quoted(w[2]));
    }
    found(ok, m.name);
    return m.name;
}

// A USB module's input: ai, open_wire, cjc, di, pulses, frequency.
std::string usb_signal(Control& control, const Words& w, const std::string& kind) {
    const UsbModule m = usb_module(w[0], w[1]);
    const auto channel = [&] { return static_cast<unsigned>(integer(w[3], "a channel", 0, 31)); };
    std::function<bool()> apply;
    if (kind == "ai") {
        wants(w, 5, "CHANNEL VALUE");
        apply = [&m, ch = channel(), v = real(w[4], "the value")] { return usbsim::set_ai(m.type_code, m.board, ch, v); };
    } else if (kind == "open_wire") {
        wants(w, 5, "CHANNEL on|off");
        apply = [&m, ch = channel(), on = on_off(w[4])] { return usbsim::set_ai_open_wire(m.type_code, m.board, ch, on); };
    } else if (kind == "cjc") {
        wants(w, 4, "CELSIUS");
        apply = [&m, t = real(w[3], "the temperature")] { return usbsim::set_cjc_temperature(m.type_code, m.board, t); };
    } else if (kind == "di") {
        wants(w, 4, "WORD");
        apply = [&m, word = static_cast<std::uint32_t>(integer(w[3], "an input word", 0, UINT32_MAX))] {
            return usbsim::set_di(m.type_code, m.board, word);
        };
    } else if (kind == "pulses") {
        wants(w, 5, "CHANNEL COUNT");
        apply = [&m, ch = channel(), n = integer(w[4], "a pulse count", -1000000000, 1000000000)] {
            return usbsim::pulse(m.type_code, m.board, ch, n);
        };
    } else if (kind == "frequency") {
        wants(w, 5, "CHANNEL HZ");
        const double hz = real(w[4], "the frequency");
        if (hz < 0) throw Refused("a frequency of 0 Hz or more is wanted, not " + icp_platform::quoted(w[4]));
        apply = [&m, ch = channel(), hz] { return usbsim::set_frequency(m.type_code, m.board, ch, hz); };
    } else {
        throw Refused("a USB module's signal is ai, open_wire, cjc, di, pulses or frequency, not " + icp_platform::quoted(w[2]));
    }
    if (checked(control, m)) return {};
    if (!apply()) throw Refused("the rig has no " + m.name + " with that input");
    return m.name;
}

std::string signal_action(Control& control, const Words& w) {
    const std::string kind = lower(w[2]);
    const std::string name = is_port(w[0]) ? serial_signal(control, w, kind) : usb_signal(control, w, kind);
    if (name.empty()) return {};
    return name + ": " + kind + " " + w[3] + (w.size() > 4 ? " " + w[4] : "");
}

std::string trace_action(Control& control, const Words& w) {
    control.set_trace(on_off(w[0]));
    return std::string("trace ") + (control.tracing() ? "on" : "off");
}

std::string rig_action(Control&, const Words& w) {
    std::string error;
    if (!load_rig(w[0], &error)) throw Refused(error);
    return "rig " + w[0];
}

// ---- The table ------------------------------------------------------------

constexpr Directive table[] = {
    {"time", "+1500ms | +2s", "the simulated clocks run on; the rig's events fire", 1, 1, Reach::standins,
     time_action},
    {"wait", "500ms | 2s", "waits in real time", 1, 1, Reach::host, wait_action},
    {"unplug", "MODEL BOARD", "a USB module is unplugged: its calls time out", 2, 2, Reach::rig, unplug_action},
    {"plug", "MODEL BOARD", "a USB module is plugged in again: it powers up", 2, 2, Reach::rig, plug_action},
    {"silence", "COMn ADDRESS", "a serial module stops answering", 2, 2, Reach::rig, silence_action},
    {"answer", "COMn ADDRESS", "a serial module answers again", 2, 2, Reach::rig, answer_action},
    {"fault", "SDK_FUNCTION CODE [COUNT]", "the next COUNT (1) calls of an SDK function fail with CODE", 2, 3,
     Reach::rig, fault_action},
    {"signal", "MODEL BOARD ai|open_wire|cjc|di|pulses|frequency ... | COMn ADDRESS ai|di ...",
     "an input's signal", 3, 5, Reach::rig, signal_action},
    {"trace", "on|off", "every SDK call and DCON line as it happens", 1, 1, Reach::standins, trace_action},
    {"rig", "FILE", "another rig (JSON); handles opened before are stale", 1, 1, Reach::standins, rig_action},
};

}  // namespace

std::span<const Directive> directives() { return table; }

const Directive* find_directive(std::string_view name) {
    const std::string key = lower(name);
    for (const auto& d : table)
        if (d.name == key) return &d;
    return nullptr;
}

std::string usage() {
    std::size_t width = 0;
    for (const auto& d : table) width = std::max(width, d.name.size() + 1 + d.arguments.size());
    std::string out;
    for (const auto& d : table) {
        std::string head = ":" + std::string(d.name) + " " + std::string(d.arguments);
        // A usage too long to align takes a line of its own.
        if (head.size() > 40) head += "\n" + std::string(44, ' ');
        else head.resize(42, ' ');
        out += "  " + head + std::string(d.help) + "\n";
    }
    return out;
}

// ---- Argument readers -----------------------------------------------------

Words split_words(std::string_view text) {
    Words out;
    std::size_t i = 0;
    for (;;) {
        while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
        if (i >= text.size() || text[i] == '#') return out;
        const std::size_t start = i;
        while (i < text.size() && text[i] != ' ' && text[i] != '\t') ++i;
        out.emplace_back(text.substr(start, i - start));
    }
}

std::string upper(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = icp_platform::upper(c);
    return out;
}

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = icp_platform::lower(c);
    return out;
}

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
                  " is wanted, not " + icp_platform::quoted(word));
}

double real(const std::string& word, const char* what) {
    double value = 0;
    const auto r = std::from_chars(word.data(), word.data() + word.size(), value);
    if (r.ec != std::errc() || r.ptr != word.data() + word.size() || !std::isfinite(value))
        throw Refused(std::string(what) + " is wanted as a number, not " + icp_platform::quoted(word));
    return value;
}

bool on_off(const std::string& word) {
    const std::string w = lower(word);
    if (w == "on") return true;
    if (w == "off") return false;
    throw Refused("'on' or 'off' is wanted, not " + icp_platform::quoted(word));
}

std::uint64_t duration_ms(const std::string& word, const char* wanted) {
    std::string_view text = word;
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
        throw Refused(std::string(wanted) + " is wanted, not " + icp_platform::quoted(word));
    return static_cast<std::uint64_t>(ms);
}

// ---- Running ----------------------------------------------------------------

namespace {

// A trace line arrives while a script line runs: it goes to the sink at once.
void forward(const char* line, void* context) {
    const auto* control = static_cast<const Control*>(context);
    control->say(line);
}

}  // namespace

Control::Control(Sink sink, void* context) : sink_(sink), context_(context) {}

Control::~Control() {
    if (trace_) set_trace(false);
}

void Control::set_trace(bool on) {
    trace_ = on;
    usbsim::set_trace(on ? &forward : nullptr, on ? this : nullptr);
    pacsim::set_trace(on ? &forward : nullptr, on ? this : nullptr);
}

void Control::say(std::string_view line) const {
    if (sink_ != nullptr) sink_(std::string(line).c_str(), context_);
}

void Control::run(std::string_view text) {
    const std::string done = perform(text);
    if (trace_ && !done.empty()) say("sim: " + done);
}

std::string Control::perform(std::string_view text) {
    const Words all = split_words(text);
    if (all.empty()) {
        std::string known;
        for (const auto& d : table) known += (known.empty() ? ":" : ", :") + std::string(d.name);
        throw Refused("a directive is wanted after ':' (" + known + ")");
    }
    const Directive* d = find_directive(all[0]);
    if (d == nullptr) {
        std::vector<std::string> known;
        for (const auto& each : table) known.push_back(":" + std::string(each.name));
        throw Refused("unknown directive " + icp_platform::quoted(":" + all[0]) +
                      icp_platform::did_you_mean(icp_platform::nearest_names(known, ":" + lower(all[0]))));
    }
    if (checking_ != nullptr && d->reach != Reach::rig) {
        std::string events;
        for (const auto& each : table)
            if (each.reach == Reach::rig) events += (events.empty() ? ":" : ", :") + std::string(each.name);
        throw Refused("a rig's event is one of " + events + ", not :" + std::string(d->name));
    }
    const Words w(all.begin() + 1, all.end());
    if (w.size() < d->least || w.size() > d->most)
        throw Refused("usage: :" + std::string(d->name) + " " + std::string(d->arguments));
    if (d->reach != Reach::host && !unreachable_.empty())
        throw Refused(":" + std::string(d->name) + " " + unreachable_);
    return d->action(*this, w);
}

// ---- Rigs -------------------------------------------------------------------

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
        set_timeline({});
        return true;
    }
    // A directory or a device (which may never end) is not read.
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::file_status status = fs::status(path, ec);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        *error = "cannot read the rig " + path + (fs::is_directory(status) ? " (a directory)" : " (not a file)");
        return false;
    }
    std::string text;
    if (!read_file(path, &text)) {
        *error = "cannot read the rig " + path;
        return false;
    }
    return load_rig_text(path, text, error);
}

bool load_rig_text(const std::string& name, const std::string& text, std::string* error) {
    std::string fault;
    std::vector<Event> events;
    if (!usbsim::check_rig(text, &fault) || !pacsim::check_rig(text, &fault) || !read_events(text, &events, &fault) ||
        !usbsim::load_rig(text, &fault) || !pacsim::load_rig(text, &fault)) {
        *error = name + ": " + fault;
        return false;
    }
    set_timeline(std::move(events));
    return true;
}

}  // namespace icp_control
