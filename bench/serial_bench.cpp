// One DCON exchange ($01M and its reply "!017017") on the in-process
// emulated line, and over a pseudo-terminal that `icphost serve` answers
// with the same emulated modules. The pseudo-terminal has no baud rate: its
// round trip is the cost the client and the server add to a real line,
// where the same exchange takes 13 characters of 10 bits, about 1.13 ms at
// 115200 bps. "wire_%" is the round trip as a share of that.
#include <benchmark/benchmark.h>

#include <chrono>

#include "PACSDK.h"
#include "pacsdk_sim.h"
#include "tests/serial_pty/pty_peers.h"

namespace {

constexpr double wire_us_at_115200 = 13 * 10 * 1e6 / 115200;

void exchanges(benchmark::State& state, PAC_HANDLE h) {
    char result[20];
    auto start = std::chrono::steady_clock::now();
    for (auto _ : state) {
        if (!uart_SendCmd(h, "$01M", result)) state.SkipWithError("no reply");
        benchmark::DoNotOptimize(result);
    }
    std::chrono::duration<double, std::micro> spent = std::chrono::steady_clock::now() - start;
    if (state.iterations() > 0)
        state.counters["wire_%"] = 100.0 * spent.count() / static_cast<double>(state.iterations()) / wire_us_at_115200;
    uart_Close(h);
}

void BM_ExchangeInProcess(benchmark::State& state) {
    pacsim::use_default_rig();
    exchanges(state, uart_Open("COM1,115200,N,8,1"));
}
BENCHMARK(BM_ExchangeInProcess);

void BM_ExchangeOverPseudoTerminal(benchmark::State& state) {
    pty_test::ServedPort served;
    std::string error;
    if (!pacsim::load_rig(R"({"serial": [{"port": "COM1", "device": ")" + served.device() + "\"}]}", &error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    exchanges(state, uart_Open("COM1,115200,N,8,1"));
}
BENCHMARK(BM_ExchangeOverPseudoTerminal)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
