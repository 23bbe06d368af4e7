// The four kinds of emulated module: analog input (7017), analog output
// (7024), digital I/O (7050) and PWM (7088).
#include <algorithm>
#include <cmath>

#include "dcon_module.h"
#include "dcon_text.h"

namespace pacsdk {

namespace {

// A one-character channel field: its value, or nullopt when it is no digit.
std::optional<uint32_t> channel_field(char c) { return parse_decimal(std::string_view(&c, 1)); }

// ---- ai: 8 inputs, +-10 V ---------------------------------------------------

class AiModule final : public Module {
public:
    static constexpr uint32_t channels = 8;

    AiModule(int address, const ModuleSetup& setup) : Module(Kind::ai, address, setup) {
        for (std::size_t i = 0; i < channels && i < setup.inputs.size(); ++i) volts_[i] = setup.inputs[i];
    }

    bool set_ai(int channel, double volts) override {
        if (channel < 0 || channel >= static_cast<int>(channels)) return false;
        volts_[static_cast<std::size_t>(channel)] = volts;
        return true;
    }

    void fill_state(pacsim::ModuleState& state) const override {
        Module::fill_state(state);
        state.ai.assign(volts_.begin(), volts_.end());
    }

protected:
    std::optional<std::string> command(char lead, std::string_view rest) override {
        if (lead == '#') {
            if (rest.empty()) return ">" + all(volts_);
            if (rest.size() != 1) return std::nullopt;
            auto ch = parse_hex(rest);
            if (!ch) return std::nullopt;
            if (*ch >= channels) return refused();
            return ">" + reading(volts_[*ch]);
        }
        if (lead != '$') return std::nullopt;
        if (rest.size() == 3 && rest[0] == '5') {
            auto mask = parse_hex(rest.substr(1));
            if (!mask) return std::nullopt;
            enabled_ = *mask;
            return ok();
        }
        if (rest == "6") return ok(hex(enabled_, 2));
        if (rest == "A") {
            std::string out = ">";
            for (double v : volts_) out += hex(twos_complement(v), 4);
            return out;
        }
        if (rest == "4") {
            std::string out = ">" + address_field(address()) + (sample_fresh_ ? "1" : "0") + all(sampled_);
            sample_fresh_ = false;
            return out;
        }
        return std::nullopt;
    }

    void broadcast(std::string_view line) override {
        if (line != "#**") return;
        sampled_ = volts_;
        sample_fresh_ = true;
    }

    void on_watchdog_timeout() override {}
    void on_power_up() override {}

private:
    // Engineering units; beyond the range the saturated reading.
    static std::string reading(double v) {
        if (v > 10.0) return "+9999.9";
        if (v < -10.0) return "-9999.9";
        return engineering(v);
    }
    static std::string all(const std::array<double, channels>& values) {
        std::string out;
        for (double v : values) out += reading(v);
        return out;
    }
    // 7FFF = +10 V, 8000 = -10 V.
    static uint32_t twos_complement(double v) {
        double clamped = std::clamp(v, -10.0, 10.0);
        auto code = static_cast<int32_t>(std::lround(clamped / 10.0 * (clamped < 0 ? 32768.0 : 32767.0)));
        return static_cast<uint32_t>(code) & 0xFFFF;
    }

    std::array<double, channels> volts_{};
    std::array<double, channels> sampled_{};
    bool sample_fresh_ = false;
    uint32_t enabled_ = 0xFF;
};

// ---- ao: 4 outputs, +-10 V --------------------------------------------------

class AoModule final : public Module {
public:
    static constexpr uint32_t channels = 4;

    AoModule(int address, const ModuleSetup& setup) : Module(Kind::ao, address, setup) {
        for (std::size_t i = 0; i < channels && i < setup.power_on.size(); ++i) power_on_[i] = setup.power_on[i];
        for (std::size_t i = 0; i < channels && i < setup.safe.size(); ++i) safe_[i] = setup.safe[i];
        on_power_up();
    }

    void fill_state(pacsim::ModuleState& state) const override {
        Module::fill_state(state);
        state.ao_command.assign(command_.begin(), command_.end());
        state.ao_output.assign(output_.begin(), output_.end());
        state.ao_power_on.assign(power_on_.begin(), power_on_.end());
        state.ao_safe.assign(safe_.begin(), safe_.end());
    }

protected:
    std::optional<std::string> command(char lead, std::string_view rest) override {
        if (lead == '#') return write(rest);
        if (rest.size() != 2) return std::nullopt;
        char op = rest[0];
        auto ch = channel_field(rest[1]);
        bool known = (lead == '$' && (op == '4' || op == '6' || op == '7' || op == '8')) ||
                     (lead == '~' && (op == '4' || op == '5'));
        if (!ch || !known) return std::nullopt;
        if (*ch >= channels) return refused();
        std::size_t n = *ch;
        if (lead == '~') {
            if (op == '4') return ok(engineering(safe_[n]));
            safe_[n] = output_[n];
            return ok();
        }
        switch (op) {
            case '6': return ok(engineering(command_[n]));
            case '8': return ok(engineering(output_[n]));
            case '7': return ok(engineering(power_on_[n]));
            default: power_on_[n] = output_[n]; return ok();
        }
    }

    void on_watchdog_timeout() override { output_ = safe_; }
    void on_power_up() override {
        output_ = timed_out() ? safe_ : power_on_;
        command_ = output_;
    }

private:
    // #AAN(data): out of range is clamped and answered "?AA".
    std::optional<std::string> write(std::string_view rest) {
        if (rest.size() < 2) return std::nullopt;
        auto ch = channel_field(rest[0]);
        auto value = parse_real(rest.substr(1));
        if (!ch || !value) return std::nullopt;
        if (*ch >= channels) return refused();
        if (timed_out()) return "!";
        double clamped = std::clamp(*value, -10.0, 10.0);
        command_[*ch] = output_[*ch] = clamped;
        return clamped == *value ? std::string(">") : refused();
    }

    std::array<double, channels> command_{};
    std::array<double, channels> output_{};
    std::array<double, channels> power_on_{};
    std::array<double, channels> safe_{};
};

// ---- dio: 7 outputs, 8 inputs -----------------------------------------------

class DioModule final : public Module {
public:
    static constexpr uint32_t outputs = 0x7F;
    static constexpr uint32_t inputs = 0xFF;

    DioModule(int address, const ModuleSetup& setup)
        : Module(Kind::dio, address, setup), di_(setup.input_word & inputs),
          power_on_(setup.power_on_word & outputs), safe_(setup.safe_word & outputs),
          combined_values_(setup.combined_values) {
        on_power_up();
    }

    bool set_di(uint32_t word) override {
        di_ = word & inputs;
        return true;
    }

    void fill_state(pacsim::ModuleState& state) const override {
        Module::fill_state(state);
        state.do_word = do_;
        state.di_word = di_;
        state.do_power_on = power_on_;
        state.do_safe = safe_;
    }

protected:
    std::optional<std::string> command(char lead, std::string_view rest) override {
        if (lead == '@') {
            if (rest.empty()) return ">" + hex(do_, 2) + hex(di_, 2);
            auto value = rest.size() == 2 ? parse_hex(rest) : std::nullopt;
            if (!value) return std::nullopt;
            if (timed_out()) return "!";
            do_ = *value & outputs;
            return ">";
        }
        if (lead == '$') {
            if (rest == "6") return "!" + hex(do_, 2) + hex(di_, 2) + "00";
            return std::nullopt;
        }
        if (lead == '#') return write_byte_or_bit(rest);
        if (lead != '~') return std::nullopt;
        if (rest == "4P") return ok(hex(power_on_, 2) + "00");
        if (rest == "4S") return ok(hex(safe_, 2) + "00");
        if (rest == "5P") {
            power_on_ = do_;
            return ok();
        }
        if (rest == "5S") {
            safe_ = do_;
            return ok();
        }
        if (rest == "4") {
            if (!combined_values_) return refused();
            return ok(hex(power_on_, 2) + hex(safe_, 2));
        }
        if (rest.size() == 5 && rest[0] == '5') {
            auto both = parse_hex(rest.substr(1));
            if (!both) return std::nullopt;
            if (!combined_values_) return refused();
            power_on_ = (*both >> 8) & outputs;
            safe_ = *both & outputs;
            return ok();
        }
        return std::nullopt;
    }

    void on_watchdog_timeout() override { do_ = safe_; }
    void on_power_up() override { do_ = timed_out() ? safe_ : power_on_; }

private:
    // #AABBDD: BB 00/0A the low byte, 0B the high byte (none here); 1c/Ac
    // bit c of the low byte, Bc bit c of the high byte, DD 00 or 01.
    std::optional<std::string> write_byte_or_bit(std::string_view rest) {
        if (rest.size() != 4 || !parse_hex(rest)) return std::nullopt;
        std::string_view selector = rest.substr(0, 2);
        uint32_t data = *parse_hex(rest.substr(2));
        uint32_t next;
        if (selector == "00" || selector == "0A") {
            next = data & outputs;
        } else if (selector[0] == '1' || selector[0] == 'A') {
            uint32_t bit = *parse_hex(selector.substr(1));
            if (data > 1 || ((1u << bit) & outputs) == 0) return refused();
            next = data ? do_ | (1u << bit) : do_ & ~(1u << bit);
        } else {
            return refused();
        }
        if (timed_out()) return "!";
        do_ = next;
        return ">";
    }

    uint32_t do_ = 0;
    uint32_t di_;
    uint32_t power_on_;
    uint32_t safe_;
    bool combined_values_;
};

// ---- pwm: 8 PWM outputs, 8 inputs with counters ------------------------------
//
// Timer model: the period is counted in 2 us steps and the high time in 1 us
// steps, so the module applies the nearest duty and frequency it can make
// and reports those.

class PwmModule final : public Module {
public:
    static constexpr std::size_t channels = 8;

    PwmModule(int address, const ModuleSetup& setup) : Module(Kind::pwm, address, setup) {
        di_ = setup.input_word & 0xFF;
    }

    bool set_di(uint32_t word) override {
        word &= 0xFF;
        uint32_t rising = word & ~di_;
        di_ = word;
        for (std::size_t c = 0; c < channels; ++c) {
            if ((rising & bit(c)) == 0) continue;
            if (counter_enabled_ & bit(c)) ++counters_[c];
            if (config_[c].trigger == 1 && !timed_out()) start(c);
            if (config_[c].trigger == 2) stop(c);
        }
        return true;
    }

    void fill_state(pacsim::ModuleState& state) const override {
        Module::fill_state(state);
        state.di_word = di_;
        state.counters.assign(counters_.begin(), counters_.end());
        state.pwm.clear();
        for (std::size_t c = 0; c < channels; ++c) {
            const Channel& ch = config_[c];
            pacsim::PwmChannelState s;
            s.duty = applied_duty_tenths(ch) / 10.0;
            s.frequency = ch.frequency;
            s.continuous = ch.continuous;
            s.pulse_count = ch.pulses;
            s.trigger = ch.trigger;
            s.sync = ch.sync;
            s.running = (running_ & bit(c)) != 0;
            state.pwm.push_back(s);
        }
    }

protected:
    std::optional<std::string> command(char lead, std::string_view rest) override {
        switch (lead) {
            case '$': return dollar(rest);
            case '#': return hash(rest);
            case '@': return at(rest);
            case '~':
                if (rest == "D") return ok(hex(misc_, 2));
                if (rest.size() == 3 && rest[0] == 'D') {
                    auto v = parse_hex(rest.substr(1));
                    if (!v) return std::nullopt;
                    misc_ = *v;
                    return ok();
                }
                return std::nullopt;
            default: return std::nullopt;
        }
    }

    void on_watchdog_timeout() override { running_ = 0; }
    void on_power_up() override {
        running_ = 0;
        config_ = saved_;
    }
    void on_advance() override {
        for (std::size_t c = 0; c < channels; ++c)
            if ((running_ & bit(c)) && !config_[c].continuous && static_cast<double>(now()) >= burst_end_[c])
                running_ &= ~bit(c);
    }

private:
    struct Channel {
        uint32_t duty_tenths = 500;  // as asked; the applied duty follows the period
        uint32_t frequency = 1000;   // as applied
        bool continuous = true;
        uint32_t pulses = 1;
        int trigger = 0;
        bool sync = false;
    };

    static uint32_t bit(std::size_t c) { return 1u << c; }

    static uint32_t period_us(uint32_t hertz) {
        auto steps = static_cast<uint32_t>(std::lround(500000.0 / hertz));
        return std::max<uint32_t>(2, 2 * steps);
    }
    static uint32_t applied_frequency(uint32_t hertz) {
        return static_cast<uint32_t>(std::lround(1e6 / period_us(hertz)));
    }
    static uint32_t applied_duty_tenths(const Channel& ch) {
        double period = period_us(ch.frequency);
        double high = std::clamp(std::round(ch.duty_tenths / 1000.0 * period), 1.0, period - 1);
        return static_cast<uint32_t>(std::lround(1000.0 * high / period));
    }
    static bool duty_allowed(uint32_t tenths, uint32_t hertz) {
        return hertz <= 1000 ? tenths >= 1 && tenths <= 999 : tenths >= 10 && tenths <= 990;
    }

    void start(std::size_t c) {
        running_ |= bit(c);
        burst_end_[c] = static_cast<double>(now()) + config_[c].pulses * 1000.0 / config_[c].frequency;
    }
    void stop(std::size_t c) { running_ &= ~bit(c); }

    // $AACn<op>[value], $AAW, $AAYS, $AA5VV, $AA6.
    std::optional<std::string> dollar(std::string_view rest) {
        if (rest == "W") {
            saved_ = config_;
            return ok();
        }
        if (rest.size() == 2 && rest[0] == 'Y') {
            auto s = channel_field(rest[1]);
            if (!s) return std::nullopt;
            if (*s > 1 || (*s == 1 && timed_out())) return refused();
            for (std::size_t c = 0; c < channels; ++c)
                if (config_[c].sync) *s ? start(c) : stop(c);
            return ok();
        }
        if (rest.size() == 3 && rest[0] == '5') {
            auto mask = parse_hex(rest.substr(1));
            if (!mask) return std::nullopt;
            counter_enabled_ = *mask;
            return ok();
        }
        if (rest == "6") return ok(hex(counter_enabled_, 2));
        if (rest.size() < 3 || rest[0] != 'C') return std::nullopt;
        auto c = channel_field(rest[1]);
        char op = rest[2];
        std::string_view value = rest.substr(3);
        if (!c || !well_formed(op, value)) return std::nullopt;
        if (*c >= channels) return refused();
        return channel_command(config_[*c], *c, op, value);
    }

    static bool well_formed(char op, std::string_view value) {
        if (value.empty()) return op == 'D' || op == 'F' || op == 'M' || op == 'P' || op == 'T' || op == 'N';
        switch (op) {
            case 'D':
                return value.size() == 4 && value[2] == '.' && parse_decimal(value.substr(0, 2)) &&
                       parse_decimal(value.substr(3));
            case 'F': return value.size() == 6 && parse_decimal(value).has_value();
            case 'P': return value.size() == 4 && parse_hex(value).has_value();
            case 'M':
            case 'T':
            case 'N': return value.size() == 1 && parse_decimal(value).has_value();
            default: return false;
        }
    }

    std::optional<std::string> channel_command(Channel& ch, std::size_t c, char op, std::string_view value) {
        if (value.empty()) {
            switch (op) {
                case 'D': return ok(fixed(applied_duty_tenths(ch) / 10.0, 1, 4, false));
                case 'F': return ok(fixed(ch.frequency, 0, 6, false));
                case 'M': return ok(ch.continuous ? "1" : "0");
                case 'P': return ok(hex(ch.pulses, 4));
                case 'T': return ok(std::to_string(ch.trigger));
                default: return ok(ch.sync ? "1" : "0");
            }
        }
        uint32_t v;
        switch (op) {
            case 'D':
                v = *parse_decimal(value.substr(0, 2)) * 10 + *parse_decimal(value.substr(3));
                if (!duty_allowed(v, ch.frequency)) return refused();
                ch.duty_tenths = v;
                return ok(fixed(applied_duty_tenths(ch) / 10.0, 1, 4, false));
            case 'F':
                v = *parse_decimal(value);
                if (v < 1 || v > 500000) return refused();
                ch.frequency = applied_frequency(v);
                return ok(fixed(ch.frequency, 0, 6, false));
            case 'M':
                v = *parse_decimal(value);
                if (v > 1) return refused();
                ch.continuous = v == 1;
                if (ch.continuous) ch.pulses = 1;
                break;
            case 'P':
                v = *parse_hex(value);
                if (v == 0) return refused();
                ch.pulses = v;
                if (v > 1) ch.continuous = false;
                break;
            case 'T':
                v = *parse_decimal(value);
                if (v > 2) return refused();
                ch.trigger = static_cast<int>(v);
                return ok();
            default:
                v = *parse_decimal(value);
                if (v > 1) return refused();
                ch.sync = v == 1;
                return ok();
        }
        // Mode or pulse count changed: a running channel goes on under the
        // new setting from now.
        if (running_ & bit(c)) start(c);
        return ok();
    }

    // #AA all counters, #AAN one counter, #AA1cDD one output on or off.
    std::optional<std::string> hash(std::string_view rest) {
        if (rest.empty()) {
            std::string out = ">";
            for (uint32_t count : counters_) out += hex(count, 8);
            return out;
        }
        if (rest.size() == 1) {
            auto c = channel_field(rest[0]);
            if (!c) return std::nullopt;
            if (*c >= channels) return refused();
            return ">" + hex(counters_[*c], 8);
        }
        if (rest.size() != 4 || rest[0] != '1') return std::nullopt;
        auto c = channel_field(rest[1]);
        auto on = parse_hex(rest.substr(2));
        if (!c || !on) return std::nullopt;
        if (*c >= channels || *on > 1 || (*on == 1 && timed_out())) return refused();
        *on ? start(*c) : stop(*c);
        return std::string(">");
    }

    // @AADODD output mask, @AADI status, @AAGN / @AAPN counter presets.
    std::optional<std::string> at(std::string_view rest) {
        if (rest == "DI") return ok(hex(running_, 2) + hex(di_, 2));
        if (rest.size() == 4 && rest.substr(0, 2) == "DO") {
            auto mask = parse_hex(rest.substr(2));
            if (!mask) return std::nullopt;
            if (timed_out()) return refused();
            for (std::size_t c = 0; c < channels; ++c) {
                bool on = (*mask & bit(c)) != 0;
                if (on && !(running_ & bit(c))) start(c);
                if (!on) stop(c);
            }
            return ok();
        }
        if (rest.size() == 2 && rest[0] == 'G') {
            auto c = channel_field(rest[1]);
            if (!c) return std::nullopt;
            if (*c >= channels) return refused();
            return ok(hex(presets_[*c], 8));
        }
        if (rest.size() == 10 && rest[0] == 'P') {
            auto c = channel_field(rest[1]);
            auto preset = parse_hex(rest.substr(2));
            if (!c || !preset) return std::nullopt;
            if (*c >= channels) return refused();
            presets_[*c] = *preset;
            return ok();
        }
        return std::nullopt;
    }

    std::array<Channel, channels> config_{};
    std::array<Channel, channels> saved_{};
    std::array<double, channels> burst_end_{};
    uint32_t running_ = 0;
    uint32_t di_ = 0;
    std::array<uint32_t, channels> counters_{};
    std::array<uint32_t, channels> presets_{};
    uint32_t counter_enabled_ = 0xFF;
    uint32_t misc_ = 0;
};

}  // namespace

std::unique_ptr<Module> make_module(Kind kind, int address, const ModuleSetup& setup) {
    switch (kind) {
        case Kind::ai: return std::make_unique<AiModule>(address, setup);
        case Kind::ao: return std::make_unique<AoModule>(address, setup);
        case Kind::dio: return std::make_unique<DioModule>(address, setup);
        case Kind::pwm: return std::make_unique<PwmModule>(address, setup);
    }
    return nullptr;
}

}  // namespace pacsdk
