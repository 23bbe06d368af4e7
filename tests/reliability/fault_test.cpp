// SDK faults over the whole catalogue: for each function, a good call's SDK
// calls are recorded, then each of them is made to fail in turn (a USB code,
// a PAC SDK status 0 with a code) and, for serial functions that talk to a
// module, the module falls silent or its reply arrives corrupt or cut. The
// function returns what it returns for a failure, the error code is the one
// injected, and the modules' state is as before (or, for a loop that stops
// part-way, as far as the loop went).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ICPDAS_USBIO.h"
#include "PACSDK.h"
#include "com/port.h"
#include "pacsdk_sim.h"
#include "plugin/state.h"
#include "plugin/values/values.h"
#include "tests/reliability/bench.h"
#include "usb/device.h"
#include "usbio_sim.h"

namespace reliability {
namespace {

constexpr std::int32_t usb_code = 0x10103;
constexpr std::uint32_t pac_code = 0x50003;

// Each value then '/', bytes as numbers.
void put(std::ostringstream& o, const auto&... v) { ((o << +v << '/'), ...); }

std::string usb_state() {
    std::ostringstream o;
    for (const auto& m : usbsim::models()) {
        for (int board = 0; board < 16; ++board) {
            const auto s = usbsim::module_state(m.type_code, static_cast<std::uint8_t>(board));
            if (!s) continue;
            o << m.id << '/' << board << ": " << s->nickname << ' ';
            put(o, s->user_board, s->open, s->comm_timeout_ms, s->soft_wdt_timeout_ms, s->auto_reset_wdt, s->do_word,
                s->do_inverse, s->do_safety_enable, s->do_safety_value, s->di_inverse, s->di_edges,
                s->di_filter_width, s->ai_enable, s->ai_filter_rejection, s->ai_cjc_offset, s->ai_cjc_enable,
                s->ai_wire_detect, s->ao_enable, s->ao_safety_enable);
            for (auto b : s->do_power_on) put(o, b);
            for (auto c : s->di_counters) put(o, c);
            for (const auto& c : s->ai) put(o, c.type_code, c.cjc_offset, c.sample_rate);
            for (const auto& c : s->ao)
                put(o, c.type_code, c.raw, c.expected, c.power_on_enable, c.power_on_raw, c.safety_raw);
            for (const auto& c : s->pi)
                put(o, c.type_code, c.trigger_mode, c.isolated, c.lp_filter_enable, c.lp_filter_width_us, c.count,
                    c.status);
            o << '\n';
        }
    }
    return o.str();
}

std::string serial_state() {
    std::ostringstream o;
    for (int address = 1; address <= 4; ++address) {
        pacsim::ModuleState s;
        if (!pacsim::module_state("COM1", address, &s)) continue;
        o << address << ": ";
        put(o, s.wdt_enabled, s.wdt_timeout, s.wdt_timed_out, s.do_word, s.do_power_on, s.do_safe);
        for (const auto* v : {&s.ao_command, &s.ao_output, &s.ao_power_on, &s.ao_safe})
            for (double x : *v) put(o, x);
        for (const auto& p : s.pwm) put(o, p.duty, p.frequency, p.continuous, p.pulse_count, p.trigger, p.sync, p.running);
        o << '\n';
    }
    o << "recording=" << icp::recording_enabled << ' ' << icp::recorded_commands.size() << '\n';
    return o.str();
}

std::string state() { return usb_state() + serial_state(); }

std::vector<nvValue> candidates(const icp::Function& f, const Signature& s, std::size_t position, const Bench& b) {
    using icp::make::integer;
    std::vector<nvValue> v;
    switch (s.params[position]) {
        case Param::Integer:
        case Param::Unsigned:
            for (int i : {1, 0, 2, 3, 4, 8, 16, 100, 0x32, 0x50}) v.push_back(integer(i));
            return v;
        case Param::Channels:
            for (int i : {1, 0, 8, 16, 100, 0x32, 0x50})
                v.push_back(icp::make::vector(b.total, [&](unsigned) { return integer(i); }));
            return v;
        case Param::Real: return {icp::make::real(1.5), icp::make::real(0.5)};
        case Param::Boolean: return {icp::make::boolean(true), icp::make::boolean(false)};
        default: return {valid(f, s, position, b)};
    }
}

bool succeeded(const nvValue& v) { return !v.isNull() && !(v.isBoolean() && !v.toBool()); }

// The bench for a fault run: the handles a function does not take are
// closed again, so that opening functions find their device free.
Bench bench_for(const Signature& s) {
    Bench b = set_up(s);
    if (std::ranges::count(s.params, Param::UsbHandle) == 0) icpusb_closedevice(b.usb);
    if (std::ranges::count(s.params, Param::ComHandle) == 0) icpcom_closedevice(b.com);
    if (!b.usb_without.isNull()) icpusb_closedevice(b.usb_without);
    clear_calls();
    return b;
}

std::vector<nvValue> arguments(const icp::Function& f, const Signature& s, const Bench& b,
                               const std::vector<std::size_t>& choice) {
    std::vector<nvValue> args;
    for (std::size_t i = 0; i < choice.size(); ++i) args.push_back(candidates(f, s, i, b)[choice[i]]);
    return args;
}

// The first combination of candidates that succeeds (the first position
// turning fastest); the first combination when none does.
std::vector<std::size_t> good_choice(const icp::Function& f, const Signature& s) {
    std::vector<std::size_t> choice(s.params.size(), 0);
    for (int tries = 0; tries < 3000; ++tries) {
        const Bench b = bench_for(s);
        if (succeeded(f.invoke(arguments(f, s, b, choice)))) return choice;
        std::size_t i = 0;
        while (i < choice.size() && ++choice[i] == candidates(f, s, i, b).size()) choice[i++] = 0;
        if (i == choice.size()) break;
    }
    return std::vector<std::size_t>(s.params.size(), 0);
}

struct Expectation {
    std::string result = "null";  // printed; empty: null or any success
    bool injected_code = true;    // else the error stays 0
};

// The failure of one SDK call as the function reports it, after a good call
// that gave `good`.
Expectation expected(const icp::Function& f, const Signature& s, const std::string& call, const nvValue& good,
                     unsigned before = 0) {
    const std::string exp = f.export_name;
    // The group gate keeps no code; the DI channel reader reads its total
    // first through a body that does, then through the gate of the read.
    if (before_arguments(call, s)) return {"null", exp == "icpusb_di_readchannelvalue" && before == 0};
    if (exp == "icpusb_listdevice") return {call == "ScanDevice" ? good.repr() : "", false};
    if (call == "CreateInstance") return {"null", false};
    if (exp == "icpcom_getwdtstatus") return {"false", true};
    if (exp == "icpcom_rec_cmd_exec") return {"true", true};
    return {};
}

struct Sdk {
    bool usb;
    std::string name;
    unsigned before;  // calls of the same name before it
};

// The calls of a good call that can be made to fail.
std::vector<Sdk> failable(const std::vector<std::string>& usb_log, const std::vector<std::string>& pac_log) {
    std::vector<Sdk> out;
    std::map<std::string, unsigned> seen;  // the two SDKs share no function name
    for (const auto& line : usb_log) out.push_back({true, call_name(line), seen[call_name(line)]++});
    for (const auto& line : pac_log)
        if (line.rfind("dcon", 0) != 0 && line.find(" -> ") != std::string::npos &&
            call_name(line) != "pac_GetLastError")
            out.push_back({false, call_name(line), seen[call_name(line)]++});
    return out;
}

// A code below 0: any code but 0.
void check(const std::string& what, const icp::Function& f, const Signature& s, const Expectation& e,
           const nvValue& result, std::int32_t error, std::int32_t code) {
    const std::string where = std::string(f.script_name) + ", " + what;
    if (e.result.empty())
        EXPECT_TRUE(result.isNull() || is(s.result, result)) << where << ": " << describe(result);
    else
        EXPECT_EQ(result.repr(), e.result) << where;
    if (code < 0)
        EXPECT_NE(error, 0) << where << ": error code";
    else
        EXPECT_EQ(error, e.injected_code ? code : 0) << where << ": error code";
}

// DO power-on enables set one call per channel: a failure at channel k
// leaves channels 0 .. k-1 set from the mask.
std::string partial_loop_state(const icp::Function& f, const Bench& b, const std::string& before, const Sdk& sdk,
                               const std::vector<nvValue>& args) {
    if (std::string(f.export_name) != "icpusb_do_setpoweronenables") return before;
    usbsim::use_default_rig();
    // Replays the channels that went through on a fresh rig, then reads
    // the state as the loop left it.
    const nvValue handle = icpusb_opendevice(icp::make::text(b.model), icp::make::integer(b.board));
    for (unsigned ch = 0; ch < sdk.before; ++ch)
        DO_SetPowerOnEnable(static_cast<USBIO_HANDLE>(icp::address_of(handle)), static_cast<std::uint8_t>(ch),
                            static_cast<std::uint8_t>((args[1].toUnsignedInt() >> ch) & 1u));
    return state();
}

TEST(Reliability, EverySdkCallOfEveryFunctionFails) {
    std::size_t functions = 0, with_calls = 0, faults = 0;
    std::vector<std::string> never_succeeded;
    for (const icp::Function* fp : icp::catalogue()) {
        const icp::Function& f = *fp;
        const Signature s = signature(f);
        ++functions;
        const std::vector<std::size_t> choice = good_choice(f, s);

        // The good call, and what it asked of the SDKs.
        Bench b = bench_for(s);
        const nvValue good = f.invoke(arguments(f, s, b, choice));
        const std::vector<std::string> usb_log = usbsim::calls();
        const std::vector<std::string> pac_log = pacsim::calls();
        const std::vector<Sdk> calls = failable(usb_log, pac_log);
        if (calls.empty()) continue;
        ++with_calls;
        if (good.isNull()) never_succeeded.push_back(f.script_name);

        for (const Sdk& sdk : calls) {
            b = bench_for(s);
            const std::vector<nvValue> args = arguments(f, s, b, choice);
            const std::string before = state();
            if (sdk.usb)
                usbsim::fail_next(sdk.name, usb_code, 1, sdk.before);
            else
                pacsim::fail_next(sdk.name, pac_code, 1, sdk.before);
            const nvValue result = f.invoke(args);
            const std::int32_t error = error_state(s);
            const std::string after = state();
            ++faults;
            const std::string what = sdk.name + " #" + std::to_string(sdk.before + 1) + " failing";
            check(what, f, s, expected(f, s, sdk.name, good, sdk.before), result, error,
                  sdk.usb ? usb_code : static_cast<std::int32_t>(pac_code));
            EXPECT_EQ(after, partial_loop_state(f, b, before, sdk, args)) << f.script_name << ", " << what;
        }

        // A module that falls silent, a reply corrupt or cut short: only for
        // calls that wait for a module's reply and judge it (a raw command's
        // reply is the script's to judge).
        const bool replies = std::any_of(pac_log.begin(), pac_log.end(),
                                         [](const std::string& l) { return l.rfind("dcon<", 0) == 0; });
        const bool raw = std::any_of(pac_log.begin(), pac_log.end(),
                                     [](const std::string& l) { return l.rfind("uart_SendCmd", 0) == 0; });
        if (!replies) continue;
        struct LineFault {
            const char* what;
            void (*arm)(int address);
            bool judged;
        };
        const LineFault line_faults[] = {
            {"module silent", [](int a) { pacsim::silence("COM1", a, true); }, false},
            {"reply corrupt", [](int a) { pacsim::corrupt_next_reply("COM1", a); }, true},
            {"reply cut short", [](int a) { pacsim::cut_next_reply("COM1", a, 0); }, true},
        };
        for (const auto& lf : line_faults) {
            if (lf.judged && raw) continue;
            b = bench_for(s);
            const std::vector<nvValue> args = arguments(f, s, b, choice);
            const std::string before = state();
            for (int a = 1; a <= 4; ++a) lf.arm(a);
            const nvValue result = f.invoke(args);
            const std::int32_t error = error_state(s);
            for (int a = 1; a <= 4; ++a) pacsim::silence("COM1", a, false);
            ++faults;
            check(lf.what, f, s, expected(f, s, "", good), result, error, -1);
            // A module that took a command before its reply went wrong has
            // acted on it; only silence leaves every module as it was.
            if (!lf.judged) {
                EXPECT_EQ(state(), before) << f.script_name << ", " << lf.what;
            }
        }
    }
    std::cout << "SDK faults: " << functions << " functions, " << with_calls << " with SDK calls, " << faults
              << " faults\n";
    for (const auto& name : never_succeeded) ADD_FAILURE() << "no successful call found for " << name;
}

}  // namespace
}  // namespace reliability
