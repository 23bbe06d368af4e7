// What a script pays per call, measured against the SDK calls it makes.
//
// Each pair times the bare SDK calls a body makes (on the simulators) and the
// exported body itself, called through the plug-in's export table as the
// host calls it, in the same run; the body's overhead is the difference.
// Beside the pairs: every help record of the catalogue, icphost from its
// start to its first printed value, and the memory of a million calls in the
// plug-in and in icphost.
//
//   plugin_bench [benchmark flags] [--calls=N]
//       N calls for the memory checks (a million unless given)
//   valgrind --tool=callgrind --collect-atstart=no plugin_bench --instructions
//       instruction counts of every pair: one dump per side, named
//       "PAIR/bare" and "PAIR/body", each of `instruction_calls` calls
//
// scripts/bench.sh runs both and checks every figure against its goal.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#if __has_include(<valgrind/callgrind.h>)
#  include <valgrind/callgrind.h>
#else
#  define CALLGRIND_TOGGLE_COLLECT
#  define CALLGRIND_DUMP_STATS_AT(name) ((void)(name))
#endif

#include "ICPDAS_USBIO.h"
#include "PACSDK.h"
#include "icphost/plugin.h"
#include "icphost/script.h"
#include "pacsdk_sim.h"
#include "plugin/values/values.h"
#include "usbio_sim.h"

extern char** environ;

// --- Allocations, counted across every library of the process ---

namespace {
std::atomic<std::uint64_t> allocations{0};
}

__attribute__((visibility("default"))) void* operator new(std::size_t n) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(n ? n : 1)) return p;
    throw std::bad_alloc();
}
__attribute__((visibility("default"))) void operator delete(void* p) noexcept { std::free(p); }
__attribute__((visibility("default"))) void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using NuvarelMath::ValueTypes::nvValue;
namespace vt = NuvarelMath::ValueTypes;

using Body0 = nvValue (*)();
using Body1 = nvValue (*)(const nvValue&);
using Body2 = nvValue (*)(const nvValue&, const nvValue&);

// --- The rig: the built-in one with a 16-output USB2045 and a USB2064_16,
// so that the device list has 8 rows ---

struct Rig {
    icphost::Plugin plugin{ICP_PLUGIN_FILE};
    USBIO_HANDLE usb2019 = nullptr;  // 8 analog inputs
    USBIO_HANDLE usb2045 = nullptr;  // 16 digital outputs
    USBIO_HANDLE usb2051 = nullptr;  // 16 digital inputs
    PAC_HANDLE com1 = nullptr;
    nvValue h2019, h2045, h2051, port;

    Rig() {
        usbsim::use_default_rig();
        usbsim::add_module("USB2045", 1);
        usbsim::add_module("USB2064_16", 1);
        pacsim::use_default_rig();
        usb2019 = open(0x413, 1);
        usb2045 = open(0x42D, 1);
        usb2051 = open(0x433, 2);
        com1 = uart_Open("COM1,115200,N,8,1");
        h2019 = handle(usb2019);
        h2045 = handle(usb2045);
        h2051 = handle(usb2051);
        port = handle(com1);
    }

    static USBIO_HANDLE open(std::uint16_t type_code, std::uint8_t board) {
        USBIO_HANDLE d = CreateInstance();
        if (OpenDevice(d, type_code, board) != 0) {
            std::fprintf(stderr, "plugin_bench: cannot open module 0x%X board %u\n", type_code, board);
            std::exit(2);
        }
        return d;
    }

    static nvValue handle(void* address) { return vt::nvInteger(static_cast<nvValue*>(address)); }

    template <class F>
    F body(const char* name) const {
        auto entry = plugin.symbol(name);
        if (!entry) {
            std::fprintf(stderr, "plugin_bench: %s is not exported\n", name);
            std::exit(2);
        }
        return reinterpret_cast<F>(entry);
    }
};

Rig& rig() {
    static Rig r;
    return r;
}

// --- The pairs ---

enum class Goal { Scalar, Vector, Info };

struct Pair {
    const char* name;   // the script name
    const char* shape;  // what kind of result or argument it is
    Goal goal;
    std::function<void()> bare;  // the SDK calls the body makes
    std::function<void()> body;  // the exported body
};

template <class T>
void keep(T&& value) {
    benchmark::DoNotOptimize(value);
}

std::vector<Pair> make_pairs() {
    Rig& r = rig();
    std::vector<Pair> pairs;

    {
        auto f = r.body<Body1>("icpusb_do_readvalue");
        pairs.push_back({"ICPUSB_DO_ReadValue", "scalar getter", Goal::Scalar,
                         [&r] {
                             std::uint8_t total = 0;
                             std::uint32_t word = 0;
                             keep(GetDOTotal(r.usb2045, &total));
                             keep(DO_ReadValue(r.usb2045, &word));
                             keep(word);
                         },
                         [&r, f] { keep(f(r.h2045)); }});
    }
    {
        auto f = r.body<Body2>("icpusb_do_writevalue");
        static const nvValue word = vt::nvInteger(0x5A5A);
        pairs.push_back({"ICPUSB_DO_WriteValue", "scalar setter", Goal::Scalar,
                         [&r] {
                             std::uint8_t total = 0;
                             const std::uint32_t w = 0x5A5A;
                             keep(GetDOTotal(r.usb2045, &total));
                             keep(DO_WriteValue(r.usb2045, &w));
                         },
                         [&r, f] { keep(f(r.h2045, word)); }});
    }
    {
        // Composed of two bodies: the DI total, then the DI word.
        auto f = r.body<Body2>("icpusb_di_readchannelvalue");
        static const nvValue channel = vt::nvInteger(3);
        pairs.push_back({"ICPUSB_DI_ReadChannelValue", "composed body", Goal::Scalar,
                         [&r] {
                             std::uint8_t total = 0;
                             std::uint32_t word = 0;
                             keep(GetDITotal(r.usb2051, &total));
                             keep(GetDITotal(r.usb2051, &total));
                             keep(DI_ReadValue(r.usb2051, &word));
                             keep(word);
                         },
                         [&r, f] { keep(f(r.h2051, channel)); }});
    }
    {
        auto f = r.body<Body2>("icpcom_sendcmd");
        static const nvValue command = vt::nvSymbolicValue("$01M", true, {});
        pairs.push_back({"ICPCOM_SendCmd", "serial call", Goal::Scalar,
                         [&r] {
                             char sent[20] = "$01M";
                             char reply[20] = {};
                             pac_SetLastError(0);
                             keep(uart_SendCmd(r.com1, sent, reply));
                             keep(reply);
                         },
                         [&r, f] { keep(f(r.port, command)); }});
    }
    {
        auto f = r.body<Body1>("icpusb_do_getpoweronenable");
        pairs.push_back({"ICPUSB_DO_GetPowerOnEnable", "16 Booleans", Goal::Vector,
                         [&r] {
                             std::uint8_t total = 0;
                             std::array<std::uint8_t, 32> enables{};
                             keep(GetDOTotal(r.usb2045, &total));
                             keep(DO_GetPowerOnEnable(r.usb2045, enables.data()));
                             keep(enables);
                         },
                         [&r, f] { keep(f(r.h2045)); }});
    }
    {
        auto f = r.body<Body1>("icpusb_ai_readvalueanalog");
        pairs.push_back({"ICPUSB_AI_ReadValueAnalog", "8 reals", Goal::Vector,
                         [&r] {
                             std::uint8_t total = 0;
                             std::array<float, 16> values{};
                             keep(GetAITotal(r.usb2019, &total));
                             keep(AI_ReadValueAnalog(r.usb2019, values.data()));
                             keep(values);
                         },
                         [&r, f] { keep(f(r.h2019)); }});
    }
    {
        auto f = r.body<Body2>("icpusb_ai_setchcjcoffsets");
        static const nvValue offsets = icp::make::vector(8, [](unsigned i) { return icp::make::real(0.125 * i); });
        pairs.push_back({"ICPUSB_AI_SetChCJCOffsets", "8 reals in", Goal::Vector,
                         [&r] {
                             std::uint8_t total = 0;
                             std::array<float, 16> values{};
                             for (unsigned i = 0; i < 8; ++i) values[i] = 0.125f * static_cast<float>(i);
                             keep(GetAITotal(r.usb2019, &total));
                             keep(AI_SetChCJCOffsets(r.usb2019, values.data()));
                         },
                         [&r, f] { keep(f(r.h2019, offsets)); }});
    }
    {
        auto f = r.body<Body1>("icpusb_ai_readvalueanalogwithchsta");
        pairs.push_back({"ICPUSB_AI_ReadValueAnalogWithChSta", "8 x 2 matrix", Goal::Vector,
                         [&r] {
                             std::uint8_t total = 0;
                             std::array<float, 16> values{};
                             std::array<std::uint8_t, 16> status{};
                             keep(GetAITotal(r.usb2019, &total));
                             keep(AI_ReadValueAnalogWithChSta(r.usb2019, values.data(), status.data()));
                             keep(values);
                             keep(status);
                         },
                         [&r, f] { keep(f(r.h2019)); }});
    }
    {
        auto f = r.body<Body0>("icpusb_listdevice");
        pairs.push_back({"ICPUSB_ListDevice", "8 x 2 table", Goal::Vector,
                         [] {
                             std::array<std::uint16_t, 128> codes{};
                             std::array<std::uint8_t, 128> boards{};
                             keep(ScanDevice());
                             keep(ListDevice(codes.data(), boards.data()));
                             keep(codes);
                             keep(boards);
                         },
                         [f] { keep(f()); }});
    }
    {
        // No module has 16 analog inputs; the check and conversion of a
        // 16-number vector argument is all the plug-in's own work.
        static const nvValue sixteen = icp::make::vector(16, [](unsigned i) { return icp::make::real(0.5 * i); });
        pairs.push_back({"16-number vector argument", "arg::per_channel", Goal::Vector, [] {},
                         [] {
                             keep(icp::arg::per_channel<float, 16>(sixteen, 16, icp::arg::element::real32));
                         }});
    }
    return pairs;
}

std::vector<Pair>& pairs() {
    static std::vector<Pair> all = make_pairs();
    return all;
}

// Times one side of a pair; the allocations per call go out as a counter.
void run_side(benchmark::State& state, const std::function<void()>& side) {
    side();  // a first call outside the timing
    const std::uint64_t before = allocations.load(std::memory_order_relaxed);
    for (auto _ : state) side();
    const auto n = static_cast<double>(state.iterations());
    state.counters["allocs"] = static_cast<double>(allocations.load(std::memory_order_relaxed) - before) / n;
}

// --- Every help record, through the export table ---

std::vector<Body0> description_entries() {
    std::vector<Body0> out;
    for (const auto& f : rig().plugin.functions())
        out.push_back(reinterpret_cast<Body0>(rig().plugin.symbol(f.export_name + "Description")));
    return out;
}

void every_help_record() {
    static const std::vector<Body0> entries = description_entries();
    for (Body0 description : entries) keep(description());
}

void EveryHelpRecord(benchmark::State& state) {
    every_help_record();
    for (auto _ : state) every_help_record();
    state.counters["functions"] = static_cast<double>(rig().plugin.functions().size());
}

// --- icphost from its start to its first printed value ---

// From the spawn of a program to the first byte it prints; beside it the
// CPU time the process used from start to exit (its own work, whatever the
// load of the machine), in microseconds.
void start_to_first_byte(benchmark::State& state, const char* const* argv, char expected) {
    double user = 0, system = 0;
    for (auto _ : state) {
        int out[2];
        if (pipe(out) != 0) {
            state.SkipWithError("pipe failed");
            return;
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, out[0]);
        const auto start = std::chrono::steady_clock::now();
        pid_t pid = 0;
        const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, const_cast<char**>(argv), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(out[1]);
        char first = 0;
        const bool read_one = spawned == 0 && read(out[0], &first, 1) == 1;
        const auto end = std::chrono::steady_clock::now();
        close(out[0]);
        int status = 0;
        rusage usage{};
        if (spawned == 0) wait4(pid, &status, 0, &usage);
        user += static_cast<double>(usage.ru_utime.tv_sec) * 1e6 + static_cast<double>(usage.ru_utime.tv_usec);
        system += static_cast<double>(usage.ru_stime.tv_sec) * 1e6 + static_cast<double>(usage.ru_stime.tv_usec);
        if (!read_one || first != expected || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            state.SkipWithError("the program did not print what was expected");
            return;
        }
        state.SetIterationTime(std::chrono::duration<double>(end - start).count());
    }
    state.counters["process_cpu_us"] = benchmark::Counter(user + system, benchmark::Counter::kAvgIterations);
    state.counters["user_us"] = benchmark::Counter(user, benchmark::Counter::kAvgIterations);
    state.counters["system_us"] = benchmark::Counter(system, benchmark::Counter::kAvgIterations);
}

void IcphostStartToFirstValue(benchmark::State& state) {
    const char* argv[] = {ICP_HOST_FILE, "-e", "ICP_Loaded()", nullptr};
    start_to_first_byte(state, argv, 't');
}

// The floor under it: the same for a program that only prints.
void EchoStartToFirstByte(benchmark::State& state) {
    const char* argv[] = {"/bin/echo", "t", nullptr};
    start_to_first_byte(state, argv, 't');
}

// --- A million calls: memory before and after ---

unsigned long memory_calls = 1000000;

struct Memory {
    std::size_t heap = 0;  // bytes in use by malloc
    std::size_t rss = 0;   // resident bytes
};

Memory memory_now() {
    Memory m;
    m.heap = mallinfo2().uordblks;
    if (FILE* f = std::fopen("/proc/self/statm", "r")) {
        unsigned long size = 0, resident = 0;
        if (std::fscanf(f, "%lu %lu", &size, &resident) == 2)
            m.rss = resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        std::fclose(f);
    }
    return m;
}

// Runs `calls` calls in 16 slices after a warm-up, sampling memory after each
// slice: the growth is the highest sample of the second half over the
// highest of the first, so that a bounded log that fills and drops in blocks
// shows no growth and a leak of one byte per call would.
template <class Call>
void memory_of(benchmark::State& state, Call call, unsigned long calls) {
    for (auto _ : state) {
        for (unsigned long i = 0; i < 20000; ++i) call(i);
        constexpr int slices = 16;
        std::vector<Memory> samples;
        for (int s = 0; s < slices; ++s) {
            for (unsigned long i = 0; i < calls / slices; ++i) call(i);
            samples.push_back(memory_now());
        }
        Memory first, second;
        for (int s = 0; s < slices; ++s) {
            Memory& half = s < slices / 2 ? first : second;
            half.heap = std::max(half.heap, samples[s].heap);
            half.rss = std::max(half.rss, samples[s].rss);
        }
        state.counters["calls"] = static_cast<double>(calls);
        state.counters["heap_growth"] = static_cast<double>(second.heap) - static_cast<double>(first.heap);
        state.counters["rss_growth"] = static_cast<double>(second.rss) - static_cast<double>(first.rss);
        state.counters["heap"] = static_cast<double>(second.heap);
    }
}

void MillionCallsInThePlugin(benchmark::State& state) {
    auto& p = pairs();
    std::vector<const std::function<void()>*> bodies;
    for (const auto& pair : p)
        if (pair.goal != Goal::Info) bodies.push_back(&pair.body);
    memory_of(state, [&](unsigned long i) { (*bodies[i % bodies.size()])(); }, memory_calls);
}

// A null output: the values are printed, nowhere.
class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return c; }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

void MillionCallsInIcphost(benchmark::State& state) {
    static NullBuffer nothing;
    static std::ostream out(&nothing);
    const auto& functions = rig().plugin.functions();
    icphost::Interpreter interpreter(functions, out, out);
    interpreter.run("setup",
                    "h = ICPUSB_OpenDevice(\"USB2055\", 3)\n"
                    "p = ICPCOM_OpenDevice(\"COM1,115200,N,8,1\")\n");
    // 8 calls a run: the printed value and the variable both kept.
    const std::string script =
        "ICPUSB_DO_ReadValue(h)\n"
        "x = ICPUSB_DI_ReadChannelValue(h, 2)\n"
        "ICPUSB_DO_WriteValue(h, 165)\n"
        "ICPUSB_DO_GetPowerOnEnable(h)\n"
        "y = ICPUSB_ListDevice()\n"
        "ICPCOM_SendCmd(p, \"$01M\")\n"
        "ICPUSB_LastError(\"s\")\n"
        "ICPCOM_LastError(\"i\")\n";
    memory_of(state, [&](unsigned long i) { if (i % 8 == 0) interpreter.run("loop", script); }, memory_calls);
    if (interpreter.failed()) state.SkipWithError("a statement failed");
}

// --- Instruction counts under callgrind ---

constexpr int instruction_calls = 1000;

template <class F>
__attribute__((noinline)) void count(const std::string& name, F f) {
    for (int i = 0; i < 50; ++i) f();  // warm: first calls fill caches and tables
    // Both sides start from empty call logs, so that neither pays for the
    // logs dropping their oldest block.
    usbsim::clear_calls();
    pacsim::clear_calls();
    CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < instruction_calls; ++i) f();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

int count_instructions() {
    for (const auto& pair : pairs()) {
        count(std::string(pair.name) + "/bare", pair.bare);
        count(std::string(pair.name) + "/body", pair.body);
    }
    count("EveryHelpRecord/body", every_help_record);
    std::printf("instruction counts: %d calls per dump\n", instruction_calls);
    return 0;
}

void register_benchmarks() {
    for (const auto& pair : pairs()) {
        benchmark::RegisterBenchmark((std::string(pair.name) + "/bare").c_str(),
                                     [&pair](benchmark::State& s) { run_side(s, pair.bare); });
        benchmark::RegisterBenchmark((std::string(pair.name) + "/body").c_str(),
                                     [&pair](benchmark::State& s) { run_side(s, pair.body); });
    }
    benchmark::RegisterBenchmark("EveryHelpRecord", EveryHelpRecord)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("IcphostStartToFirstValue", IcphostStartToFirstValue)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("EchoStartToFirstByte", EchoStartToFirstByte)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("MillionCallsInThePlugin", MillionCallsInThePlugin)
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("MillionCallsInIcphost", MillionCallsInIcphost)
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<char*> args;
    bool instructions = false;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--instructions") == 0) {
            instructions = true;
        } else if (std::strncmp(argv[i], "--calls=", 8) == 0) {
            memory_calls = std::strtoul(argv[i] + 8, nullptr, 10);
        } else {
            args.push_back(argv[i]);
        }
    }
    if (instructions) return count_instructions();
    int n = static_cast<int>(args.size());
    register_benchmarks();
    benchmark::Initialize(&n, args.data());
    if (benchmark::ReportUnrecognizedArguments(n, args.data())) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
