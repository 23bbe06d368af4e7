// What both SDK stand-ins keep about the calls made to them: the failures a
// test or a directive armed, the call log, the trace, and a hook that sees
// every SDK call as it passes.
//
// Every SDK function of a stand-in reports its call here once it is done:
// its name, its arguments and its result as the log shows them. The log
// keeps "NAME(ARGS) -> RESULT" ("NAME(ARGS)" for a function without result),
// the trace gets the line with "sdk: " before it, and the hook the three
// parts. Lines of the wire ("dcon> ...") go to the log and the trace as
// they are. With no trace and no hook, a call costs its log line only.
//
// Thread-safe; the trace and the hook are called without any lock held, so
// they may call into the stand-in.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "icp_platform/sdk_call.h"

namespace icp_platform {

class SdkCore {
public:
    // The log keeps the latest `window` lines at least, at most twice that.
    static constexpr std::size_t window = 4096;

    // `functions`: the SDK's function names, the only ones faults are
    // armed for.
    explicit SdkCore(std::span<const std::string_view> functions) : functions_(functions) {}
    SdkCore(const SdkCore&) = delete;
    SdkCore& operator=(const SdkCore&) = delete;

    bool has_function(std::string_view name) const;
    std::span<const std::string_view> functions() const { return functions_; }

    // ---- Faults -----------------------------------------------------------
    // The next `count` calls of `function` fail with `code`, after `skip`
    // calls that go through. A count of 0 or a code of 0 disarms the
    // function (a failure reports a non-zero code). False, arming nothing,
    // for a name that is not one of the SDK's functions.
    bool arm(std::string_view function, std::uint32_t code, unsigned count, unsigned skip = 0);
    // Whether this call of `function` is to fail; its code in *code.
    bool take_fault(std::string_view function, std::uint32_t* code);

    // ---- Log, trace, hook ------------------------------------------------
    void set_trace(TraceFn fn, void* context);
    void set_hook(CallHook fn, void* context);
    void call(std::string_view function, std::string_view arguments, std::string_view result);
    void line(std::string text);
    std::vector<std::string> lines() const;
    void clear_log();
    // The log and every armed fault; the trace and the hook stay.
    void clear();

private:
    struct Fault {
        std::uint32_t code = 0;
        unsigned remaining = 0;
        unsigned skip = 0;
    };
    void keep(std::string text, std::unique_lock<std::mutex>& held);

    std::span<const std::string_view> functions_;
    mutable std::mutex mutex_;
    std::map<std::string, Fault, std::less<>> faults_;
    std::atomic<bool> armed_{false};  // faults_ not empty: the common case skips the look-up
    std::vector<std::string> lines_;
    TraceFn trace_ = nullptr;
    void* trace_context_ = nullptr;
    CallHook hook_ = nullptr;
    void* hook_context_ = nullptr;
};

}  // namespace icp_platform
