// The PWM functions end to end: body, PAC SDK stand-in, DCON lines and the
// emulated PWM module at address 4 on COM1.
#include "com/pwm.h"

#include <functional>

#include "com/port.h"
#include "tests/com/serial_fixture.h"

namespace com_test {
namespace {

using Lines = std::vector<std::string>;
using Args = std::vector<nvValue>;

nvValue real(double x) { return icp::make::real(x); }
const nvValue yes = icp::make::boolean(true);

// Every PWM function with arguments it accepts on the default rig (the
// handle comes first at the call).
struct Function {
    const char* name;
    std::function<nvValue(const nvValue&, const Args&)> call;
    Args good;
};

const std::vector<Function>& functions() {
    static const std::vector<Function> all = {
        {"SetPWMDuty", [](auto& h, auto& a) { return icpcom_setpwmduty(h, a[0], a[1], a[2]); },
         {integer(4), integer(0), real(50.0)}},
        {"GetPWMDuty", [](auto& h, auto& a) { return icpcom_getpwmduty(h, a[0], a[1]); }, {integer(4), integer(0)}},
        {"SetPWMFrequency", [](auto& h, auto& a) { return icpcom_setpwmfrequency(h, a[0], a[1], a[2]); },
         {integer(4), integer(0), integer(1000)}},
        {"GetPWMFrequency", [](auto& h, auto& a) { return icpcom_getpwmfrequency(h, a[0], a[1]); },
         {integer(4), integer(0)}},
        {"SetPWMMode", [](auto& h, auto& a) { return icpcom_setpwmmode(h, a[0], a[1], a[2]); },
         {integer(4), integer(0), integer(1)}},
        {"GetPWMMode", [](auto& h, auto& a) { return icpcom_getpwmmode(h, a[0], a[1]); }, {integer(4), integer(0)}},
        {"SetPWMTrigger", [](auto& h, auto& a) { return icpcom_setpwmtrigger(h, a[0], a[1], a[2]); },
         {integer(4), integer(0), integer(1)}},
        {"GetPWMTrigger", [](auto& h, auto& a) { return icpcom_getpwmtrigger(h, a[0], a[1]); },
         {integer(4), integer(0)}},
        {"SetPWMStart", [](auto& h, auto& a) { return icpcom_setpwmstart(h, a[0], a[1]); }, {integer(4), integer(1)}},
        {"SetPWMSynChannel", [](auto& h, auto& a) { return icpcom_setpwmsynchannel(h, a[0], a[1], a[2]); },
         {integer(4), integer(0), integer(1)}},
        {"GetPWMSynChannel", [](auto& h, auto& a) { return icpcom_getpwmsynchannel(h, a[0], a[1]); },
         {integer(4), integer(0)}},
        {"SyncPWMStart", [](auto& h, auto& a) { return icpcom_syncpwmstart(h, a[0], a[1]); }, {integer(4), integer(1)}},
        {"SavePWMConfig", [](auto& h, auto& a) { return icpcom_savepwmconfig(h, a[0]); }, {integer(4)}},
        {"GetPWMDIOStatus", [](auto& h, auto& a) { return icpcom_getpwmdiostatus(h, a[0]); }, {integer(4)}},
        {"SetPWMPulseCount", [](auto& h, auto& a) { return icpcom_setpwmpulsecount(h, a[0], a[1], a[2]); },
         {integer(4), integer(0), integer(3)}},
        {"GetPWMPulseCount", [](auto& h, auto& a) { return icpcom_getpwmpulsecount(h, a[0], a[1]); },
         {integer(4), integer(0)}},
    };
    return all;
}

// PWM calls that reached the SDK (the last-error calls aside).
int pwm_calls() {
    int n = 0;
    for (const auto& line : pacsim::calls()) n += line.rfind("pac_", 0) == 0 && line.find("PWM") != std::string::npos;
    return n;
}

// Each argument of the wrong kind in turn, and a handle without an address:
// null, last error 0, nothing reaches the SDK. The duty is the one Real
// (50 is refused where 50.0 is taken); every other argument is an Integer,
// and a Real of the same value will not do in its place.
TEST_F(Serial, WrongKindsNeverReachTheSdk) {
    const nvValue port = open_com1();
    for (const auto& f : functions()) {
        SCOPED_TRACE(f.name);
        for (std::size_t i = 0; i < f.good.size(); ++i) {
            const nvValue& good = f.good[i];
            const nvValue swapped = good.isDouble() ? integer(static_cast<int>(good.toDouble())) : real(good.toInt());
            for (const nvValue& wrong : {swapped, str("4"), nvValue(), icp::make::boolean(true), vec({good})}) {
                SCOPED_TRACE("argument " + std::to_string(i + 2) + " = " + wrong.repr());
                Args args = f.good;
                args[i] = wrong;
                pacsim::clear_calls();
                pac_SetLastError(99);
                EXPECT_TRUE(f.call(port, args).isNull());
                EXPECT_EQ(pac_GetLastError(), 0u);
                EXPECT_EQ(pwm_calls(), 0);
            }
        }
        for (const nvValue& handle : {integer(1), nvValue(), icp::make::handle(nullptr)}) {
            pacsim::clear_calls();
            pac_SetLastError(99);
            EXPECT_TRUE(f.call(handle, f.good).isNull());
            EXPECT_EQ(pac_GetLastError(), 0u);
            EXPECT_EQ(pwm_calls(), 0);
        }
        // And the good arguments do go through.
        pacsim::clear_calls();
        EXPECT_FALSE(f.call(port, f.good).isNull());
        EXPECT_EQ(pwm_calls(), 1);
    }
}

// The widths at which arguments reach the SDK, seen in its call log and on
// the wire: channels, triggers, sync flags and masks as their low 16 bits,
// signed; frequencies and counts as 32 bits; the duty as a float; the slot
// with bit 12 set.
TEST_F(Serial, ArgumentsReachTheSdkAtTheirWidths) {
    struct Case {
        std::function<nvValue(const nvValue&)> call;
        std::string logged;  // the SDK's call-log line
        Lines on_the_wire;
    };
    const Case cases[] = {
        {[](auto& p) { return icpcom_setpwmduty(p, integer(4), integer(65536), real(50.0)); },
         "pac_SetPWMDuty(port#1, 4100, 0, 50.0) -> 1", {"$04C0D50.0"}},
        {[](auto& p) { return icpcom_setpwmduty(p, integer(0x1004), integer(1), real(0.1)); },
         "pac_SetPWMDuty(port#1, 4100, 1, 0.10000000149011612) -> 1", {"$04C1D00.1"}},
        // Channel -1 is the SDK's to refuse, before it sends anything.
        {[](auto& p) { return icpcom_getpwmduty(p, integer(4), integer(65535)); },
         "pac_GetPWMDuty(port#1, 4100, -1) -> 0", {}},
        {[](auto& p) { return icpcom_setpwmfrequency(p, integer(4), integer(2), integer(-1)); },
         "pac_SetPWMFrequency(port#1, 4100, 2, 4294967295) -> 0", {}},
        {[](auto& p) { return icpcom_setpwmpulsecount(p, integer(4), integer(3), integer(0x10000)); },
         "pac_SetPWMPulseCount(port#1, 4100, 3, 65536) -> 0", {}},
        {[](auto& p) { return icpcom_setpwmmode(p, integer(4), integer(0x10005), integer(0)); },
         "pac_SetPWMMode(port#1, 4100, 5, 0) -> 1", {"$04C5M0"}},
        {[](auto& p) { return icpcom_setpwmtrigger(p, integer(4), integer(6), integer(0x20002)); },
         "pac_SetPWMDITriggerConfig(port#1, 4100, 6, 2) -> 1", {"$04C6T2"}},
        {[](auto& p) { return icpcom_setpwmsynchannel(p, integer(4), integer(7), integer(0x10001)); },
         "pac_SetPWMSynChannel(port#1, 4100, 7, 1) -> 1", {"$04C7N1"}},
        {[](auto& p) { return icpcom_setpwmstart(p, integer(4), integer(0x10001)); },
         "pac_SetPWMStart(port#1, 4100, 1) -> 1", {"@04DO01"}},
        {[](auto& p) { return icpcom_setpwmstart(p, integer(4), integer(0xFFFF)); },
         "pac_SetPWMStart(port#1, 4100, -1) -> 1", {"@04DOFF"}},
        {[](auto& p) { return icpcom_syncpwmstart(p, integer(4), integer(0x10000)); },
         "pac_SyncPWMStart(port#1, 4100, 0) -> 1", {"$04Y0"}},
        {[](auto& p) { return icpcom_savepwmconfig(p, integer(0x1004)); }, "pac_SavePWMConfig(port#1, 4100) -> 1",
         {"$04W"}},
        {[](auto& p) { return icpcom_getpwmdiostatus(p, integer(4)); }, "pac_GetPWMDIOStatus(port#1, 4100) -> 1",
         {"@04DI"}},
    };
    const nvValue port = open_com1();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.logged);
        pacsim::clear_calls();
        const nvValue result = c.call(port);
        EXPECT_EQ(logged(c.logged), 1);
        EXPECT_EQ(sent(), c.on_the_wire);
        EXPECT_EQ(result.isNull(), c.logged.ends_with("-> 0"));
    }
}

// Each setting written and read back through the module, which applies what
// its timer can make: 3000 Hz becomes 2994 Hz, and 25 % of that period
// 25.1 %.
TEST_F(Serial, SettingsReadBackAsTheModuleAppliedThem) {
    struct Case {
        const char* what;
        std::function<nvValue(const nvValue&)> set;
        std::function<nvValue(const nvValue&)> get;
        nvValue read;
    };
    const nvValue four = integer(4), two = integer(2);
    const Case cases[] = {
        {"frequency", [&](auto& p) { return icpcom_setpwmfrequency(p, four, two, integer(3000)); },
         [&](auto& p) { return icpcom_getpwmfrequency(p, four, two); }, integer(2994)},
        {"duty", [&](auto& p) { return icpcom_setpwmduty(p, four, two, real(25.0)); },
         [&](auto& p) { return icpcom_getpwmduty(p, four, two); }, real(25.100000381469727)},
        // More than one pulse ends continuous mode; continuous mode sets one.
        {"pulses", [&](auto& p) { return icpcom_setpwmpulsecount(p, four, two, integer(500)); },
         [&](auto& p) { return icpcom_getpwmpulsecount(p, four, two); }, integer(500)},
        {"mode after pulses", [](auto&) { return yes; }, [&](auto& p) { return icpcom_getpwmmode(p, four, two); },
         integer(0)},
        {"mode", [&](auto& p) { return icpcom_setpwmmode(p, four, two, integer(1)); },
         [&](auto& p) { return icpcom_getpwmmode(p, four, two); }, integer(1)},
        {"pulses after mode", [](auto&) { return yes; },
         [&](auto& p) { return icpcom_getpwmpulsecount(p, four, two); }, integer(1)},
        {"trigger", [&](auto& p) { return icpcom_setpwmtrigger(p, four, two, integer(2)); },
         [&](auto& p) { return icpcom_getpwmtrigger(p, four, two); }, integer(2)},
        // The sync getter reads the trigger, whatever the sync flag is.
        {"sync", [&](auto& p) { return icpcom_setpwmsynchannel(p, four, two, integer(1)); },
         [&](auto& p) { return icpcom_getpwmsynchannel(p, four, two); }, integer(2)},
    };
    const nvValue port = open_com1();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        expect_same(c.set(port), yes);
        expect_same(c.get(port), c.read);
    }
    pacsim::ModuleState state;
    ASSERT_TRUE(pacsim::module_state("COM1", 4, &state));
    EXPECT_TRUE(state.pwm[2].sync);
}

TEST_F(Serial, SyncAndTriggerGettersAgreeOnEveryChannel) {
    const nvValue port = open_com1();
    for (int ch = 0; ch < 8; ++ch) {
        SCOPED_TRACE(ch);
        icpcom_setpwmtrigger(port, integer(4), integer(ch), integer(ch % 3));
        icpcom_setpwmsynchannel(port, integer(4), integer(ch), integer(1 - ch % 2));
        pacsim::clear_calls();
        const nvValue sync = icpcom_getpwmsynchannel(port, integer(4), integer(ch));
        expect_same(sync, integer(ch % 3));
        expect_same(icpcom_getpwmtrigger(port, integer(4), integer(ch)), sync);
        EXPECT_EQ(logged("pac_GetPWMDITriggerConfig("), 2);
    }
}

// Values the module cannot take come back as null with the SDK's code;
// the plug-in passes them on unchecked.
TEST_F(Serial, ValuesOutOfRangeFailInTheSdkOrTheModule) {
    struct Case {
        const char* what;
        std::function<nvValue(const nvValue&)> call;
        PAC_DWORD error;
        bool sent;  // refused by the module rather than by the SDK
    };
    const nvValue four = integer(4), zero = integer(0);
    const Case cases[] = {
        {"duty 100", [&](auto& p) { return icpcom_setpwmduty(p, four, zero, real(100.0)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"duty -1", [&](auto& p) { return icpcom_setpwmduty(p, four, zero, real(-1.0)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"duty 0", [&](auto& p) { return icpcom_setpwmduty(p, four, zero, real(0.0)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"frequency 1000000", [&](auto& p) { return icpcom_setpwmfrequency(p, four, zero, integer(1000000)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"frequency 0", [&](auto& p) { return icpcom_setpwmfrequency(p, four, zero, zero); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"pulses 0", [&](auto& p) { return icpcom_setpwmpulsecount(p, four, zero, zero); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"mode 2", [&](auto& p) { return icpcom_setpwmmode(p, four, zero, integer(2)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"mode 10", [&](auto& p) { return icpcom_setpwmmode(p, four, zero, integer(10)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"trigger 3", [&](auto& p) { return icpcom_setpwmtrigger(p, four, zero, integer(3)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"trigger -1", [&](auto& p) { return icpcom_setpwmtrigger(p, four, zero, integer(-1)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"sync 2", [&](auto& p) { return icpcom_setpwmsynchannel(p, four, zero, integer(2)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"sync start 3", [&](auto& p) { return icpcom_syncpwmstart(p, four, integer(3)); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"channel 8", [&](auto& p) { return icpcom_getpwmmode(p, four, integer(8)); },
         PAC_ERR_IO_CHANNEL_OUT_OF_RANGE, false},
        {"slot 0x2004", [&](auto& p) { return icpcom_savepwmconfig(p, integer(0x2004)); },
         PAC_ERR_INVALID_SLOT_NUMBER, false},
    };
    const nvValue port = open_com1();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        pacsim::clear_calls();
        EXPECT_TRUE(c.call(port).isNull());
        EXPECT_EQ(pac_GetLastError(), c.error);
        EXPECT_EQ(!sent().empty(), c.sent);
    }
    pacsim::ModuleState state;
    ASSERT_TRUE(pacsim::module_state("COM1", 4, &state));
    EXPECT_DOUBLE_EQ(state.pwm[0].duty, 50.0);
    EXPECT_EQ(state.pwm[0].frequency, 1000u);
    EXPECT_TRUE(state.pwm[0].continuous);
    EXPECT_EQ(state.pwm[0].trigger, 0);
}

// No module, a silent one, a damaged reply, a module of another kind, a
// closed port: null with the SDK's code, at once.
TEST_F(Serial, UnreachableModulesGiveTheSdkError) {
    struct Case {
        const char* what;
        std::function<void()> fault;
        int slot;
        PAC_DWORD error;
    };
    const Case cases[] = {
        {"nobody at 9", [] {}, 9, PAC_ERR_UART_READ_TIMEOUT},
        {"silent", [] { pacsim::silence("COM1", 4, true); }, 4, PAC_ERR_UART_READ_TIMEOUT},
        {"corrupt", [] { pacsim::corrupt_next_reply("COM1", 4); }, 4, PAC_ERR_UART_RESPONSE},
        {"cut", [] { pacsim::cut_next_reply("COM1", 4, 2); }, 4, PAC_ERR_UART_RESPONSE},
        {"analog input module", [] {}, 1, PAC_ERR_UART_READ_TIMEOUT},
    };
    for (const auto& f : functions()) {
        for (const auto& c : cases) {
            SCOPED_TRACE(std::string(f.name) + ", " + c.what);
            pacsim::use_default_rig();
            const nvValue port = open_com1();
            c.fault();
            Args args = f.good;
            args[0] = integer(c.slot);
            EXPECT_TRUE(f.call(port, args).isNull());
            EXPECT_EQ(pac_GetLastError(), c.error);
        }
        SCOPED_TRACE(std::string(f.name) + ", closed port");
        pacsim::use_default_rig();
        const nvValue port = open_com1();
        icpcom_closedevice(port);
        EXPECT_TRUE(f.call(port, f.good).isNull());
        EXPECT_EQ(pac_GetLastError(), PAC_OS_ERR_INVALID_HANDLE);
    }
}

// One bit per status byte that is not 0, bit 31 included: the masks are
// unsigned, and Reals.
TEST(PwmStatus, EveryByteSetsItsBit) {
    struct Case {
        unsigned char pwm_byte, di_byte;
        std::size_t first, count;  // the bytes set, in both arrays
        nvValue expected;
    };
    const Case cases[] = {
        {1, 0, 0, 32, vec({real(4294967295.0), real(0.0)})},
        {0, 1, 0, 32, vec({real(0.0), real(4294967295.0)})},
        {0xEE, 0x80, 31, 1, vec({real(2147483648.0), real(2147483648.0)})},
        {1, 1, 0, 0, vec({real(0.0), real(0.0)})},
        {1, 0, 8, 1, vec({real(256.0), real(0.0)})},
    };
    for (const auto& c : cases) {
        icp::com::StatusBytes pwm = {}, di = {};
        for (std::size_t i = c.first; i < c.first + c.count; ++i) {
            pwm[i] = c.pwm_byte;
            di[i] = c.di_byte;
        }
        expect_same(icp::com::pwm_status_masks(pwm, di), c.expected);
    }
}

nvValue status(const nvValue& port) { return icpcom_getpwmdiostatus(port, integer(4)); }

// Outputs start by mask (channels 0 to 7 of the module's 8), in sync, by
// a DI trigger; bursts end when their pulses are out; the status shows which
// run and which inputs are active.
TEST_F(Serial, OutputsStartAndStopAsTheStatusShows) {
    const nvValue port = open_com1();
    const nvValue four = integer(4);
    expect_same(icpcom_setpwmstart(port, four, integer(0x0105)), yes);
    pacsim::set_di("COM1", 4, 0x80);
    expect_same(status(port), vec({real(5.0), real(128.0)}));
    expect_same(icpcom_setpwmstart(port, four, integer(0x10001)), yes);
    expect_same(status(port), vec({real(1.0), real(128.0)}));

    for (int ch : {3, 6}) icpcom_setpwmsynchannel(port, four, integer(ch), integer(1));
    expect_same(icpcom_syncpwmstart(port, four, integer(1)), yes);
    expect_same(status(port), vec({real(0x49), real(128.0)}));
    expect_same(icpcom_syncpwmstart(port, four, integer(0)), yes);
    expect_same(status(port), vec({real(1.0), real(128.0)}));

    // Ten pulses at 1 kHz last 10 ms.
    expect_same(icpcom_setpwmpulsecount(port, four, integer(1), integer(10)), yes);
    expect_same(icpcom_setpwmstart(port, four, integer(0x02)), yes);
    pacsim::advance_ms(9);
    expect_same(status(port), vec({real(2.0), real(128.0)}));
    pacsim::advance_ms(1);
    expect_same(status(port), vec({real(0.0), real(128.0)}));

    // A rising input 5 starts channel 5 (trigger start), then stops it
    // (trigger stop); the input's counter counts both rises.
    icpcom_setpwmtrigger(port, four, integer(5), integer(1));
    pacsim::set_di("COM1", 4, 0x20);
    expect_same(status(port), vec({real(32.0), real(32.0)}));
    icpcom_setpwmtrigger(port, four, integer(5), integer(2));
    pacsim::set_di("COM1", 4, 0x00);
    pacsim::set_di("COM1", 4, 0x20);
    expect_same(status(port), vec({real(0.0), real(32.0)}));
    pacsim::ModuleState state;
    ASSERT_TRUE(pacsim::module_state("COM1", 4, &state));
    EXPECT_EQ(state.counters[5], 2u);
}

// The module keeps its configuration over a power cycle only once saved;
// its outputs come up stopped.
TEST_F(Serial, SavedConfigurationSurvivesAPowerCycle) {
    const nvValue port = open_com1();
    const nvValue four = integer(4), zero = integer(0);
    icpcom_setpwmfrequency(port, four, zero, integer(200));
    icpcom_setpwmduty(port, four, zero, real(20.0));
    expect_same(icpcom_savepwmconfig(port, four), yes);
    icpcom_setpwmfrequency(port, four, zero, integer(500));
    icpcom_setpwmduty(port, four, zero, real(70.0));
    icpcom_setpwmduty(port, four, integer(1), real(30.0));
    icpcom_setpwmstart(port, four, integer(0x03));
    pacsim::power_cycle("COM1", 4);
    expect_same(icpcom_getpwmfrequency(port, four, zero), integer(200));
    expect_same(icpcom_getpwmduty(port, four, zero), real(20.0));
    expect_same(icpcom_getpwmduty(port, four, integer(1)), real(50.0));
    expect_same(status(port), vec({real(0.0), real(0.0)}));
}

}  // namespace
}  // namespace com_test
