#include "icp_control/standalone.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

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

#include <icp_platform/module_file.h>

#include "icp_control/directives.h"
#include "standins.h"

namespace icp_control {

namespace {

// The trace file, appended to line by line and flushed after each, so that
// `tail -f` follows the host's session.
struct Output {
    std::mutex mutex;
    std::FILE* trace = nullptr;
};

void to_output(const char* line, void* context) {
    auto* out = static_cast<Output*>(context);
    std::lock_guard held(out->mutex);
    if (out->trace == nullptr) return;
    std::fputs(line, out->trace);
    std::fputc('\n', out->trace);
    std::fflush(out->trace);
}

// A message for the user: on standard error and in the trace.
void tell(Output& out, const std::string& line) {
    std::fprintf(stderr, "%s\n", line.c_str());
    std::fflush(stderr);
    to_output(line.c_str(), &out);
}

// The rig's time follows the steady clock: every few milliseconds the clocks
// run on by what has passed, and the events due fire.
void run_clock(Control* control, Output* out, std::string who) {
    using namespace std::chrono;
    const auto start = steady_clock::now();
    std::uint64_t done = 0;
    for (;;) {
        std::this_thread::sleep_for(milliseconds(5));
        const auto now = static_cast<std::uint64_t>(duration_cast<milliseconds>(steady_clock::now() - start).count());
        if (now <= done) continue;
        try {
            control->advance(now - done);
        } catch (const Refused& r) {
            tell(*out, who + ": " + r.what());
        }
        done = now;
    }
}

}  // namespace

StandaloneSettings standalone_settings(const std::filesystem::path& library_folder) {
    StandaloneSettings s;
    if (const char* rig = std::getenv("ICPDAS_RIG"); rig != nullptr && *rig != '\0') {
        s.rig = rig;
    } else {
        std::error_code ec;
        const auto beside = library_folder / "icpdas_rig.json";
        if (std::filesystem::exists(beside, ec)) s.rig = beside.string();
    }
    if (const char* trace = std::getenv("ICPDAS_TRACE"); trace != nullptr && *trace != '\0') s.trace = trace;
    return s;
}

void start_standalone(const StandaloneSettings& settings, const std::string& who) {
    static std::once_flag once;
    std::call_once(once, [&] {
        // Never destroyed, as the clock thread that uses them is never
        // stopped: it ends with the process.
        auto* out = new Output;
        if (!settings.trace.empty()) {
            out->trace = std::fopen(settings.trace.c_str(), "a");
            if (out->trace == nullptr)
                tell(*out, who + ": cannot open the trace file " + settings.trace + " (ICPDAS_TRACE), so there is no trace");
        }
        auto* control = new Control(&to_output, out);
        if (out->trace != nullptr) control->set_trace(true);
        std::string error;
        if (!load_rig(settings.rig, &error)) {
            usbsim::reset();
            pacsim::reset();
            tell(*out, who + ": " + error + ", so the rig is empty");
        }
        pacsim::set_real_time(true);
        std::thread(run_clock, control, out, who).detach();
    });
}

std::filesystem::path this_library_folder() {
#if defined(_WIN32)
    HMODULE self = nullptr;
    // Pinned: the clock thread runs in it until the process ends.
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                            reinterpret_cast<LPCWSTR>(&this_library_folder), &self))
        return {};
    return icp_platform::module_file(self).parent_path();
#else
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&this_library_folder), &info) == 0 || info.dli_fname == nullptr) return {};
    return std::filesystem::absolute(info.dli_fname).parent_path();
#endif
}

}  // namespace icp_control
