// What the host pays for the frame: one body call through the plug-in's
// export table, and every help record of the catalogue.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include "plugin/catalogue.h"

namespace {

using NuvarelMath::ValueTypes::nvValue;

// The built plug-in, opened once as the host opens it.
void* plugin_library() {
    static void* library = dlopen(ICP_PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL);
    return library;
}

// "ICP_Loaded": the smallest body, so the cost is the call and the result.
void LoadedThroughTheExport(benchmark::State& state) {
    void* library = plugin_library();
    if (!library) {
        state.SkipWithError(dlerror());
        return;
    }
    auto* loaded = reinterpret_cast<nvValue (*)()>(dlsym(library, "plugin_icp_loaded"));
    if (!loaded) {
        state.SkipWithError("plugin_icp_loaded is not exported");
        return;
    }
    for (auto _ : state) {
        nvValue result = loaded();
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(LoadedThroughTheExport);

// What a host does once at start-up: a help record for every function.
void EveryHelpRecord(benchmark::State& state) {
    const auto all = icp::catalogue();
    for (auto _ : state) {
        for (const icp::Function* f : all) {
            nvValue record = f->description();
            benchmark::DoNotOptimize(record);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.size()));
    state.counters["functions"] = static_cast<double>(all.size());
}
BENCHMARK(EveryHelpRecord);

}  // namespace

BENCHMARK_MAIN();
