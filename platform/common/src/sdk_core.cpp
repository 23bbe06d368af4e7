#include "icp_platform/sdk_core.h"

#include <algorithm>
#include <utility>

namespace icp_platform {

bool SdkCore::has_function(std::string_view name) const {
    return std::find(functions_.begin(), functions_.end(), name) != functions_.end();
}

bool SdkCore::arm(std::string_view function, std::uint32_t code, unsigned count, unsigned skip) {
    if (!has_function(function)) return false;
    std::lock_guard held(mutex_);
    if (count == 0 || code == 0) {
        if (auto it = faults_.find(function); it != faults_.end()) faults_.erase(it);
    } else {
        faults_[std::string(function)] = Fault{code, count, skip};
    }
    armed_ = !faults_.empty();
    return true;
}

bool SdkCore::take_fault(std::string_view function, std::uint32_t* code) {
    if (!armed_.load(std::memory_order_relaxed)) return false;
    std::lock_guard held(mutex_);
    auto it = faults_.find(function);
    if (it == faults_.end()) return false;
    Fault& f = it->second;
    if (f.skip > 0) {
        --f.skip;
        return false;
    }
    *code = f.code;
    if (--f.remaining == 0) faults_.erase(it);
    armed_ = !faults_.empty();
    return true;
}

void SdkCore::set_trace(TraceFn fn, void* context) {
    std::lock_guard held(mutex_);
    trace_ = fn;
    trace_context_ = context;
}

void SdkCore::set_hook(CallHook fn, void* context) {
    std::lock_guard held(mutex_);
    hook_ = fn;
    hook_context_ = context;
}

void SdkCore::call(std::string_view function, std::string_view arguments, std::string_view result) {
    std::string text;
    text.reserve(function.size() + arguments.size() + result.size() + 6);
    text.append(function).append("(").append(arguments).append(")");
    if (!result.empty()) text.append(" -> ").append(result);
    std::unique_lock held(mutex_);
    const CallHook hook = hook_;
    void* const hook_context = hook_context_;
    const TraceFn trace = trace_;
    void* const trace_context = trace_context_;
    const std::string traced = trace ? "sdk: " + text : std::string();
    keep(std::move(text), held);
    if (trace) trace(traced.c_str(), trace_context);
    if (hook) hook(SdkCall{function, arguments, result}, hook_context);
}

void SdkCore::line(std::string text) {
    std::unique_lock held(mutex_);
    const TraceFn trace = trace_;
    void* const trace_context = trace_context_;
    const std::string traced = trace ? text : std::string();
    keep(std::move(text), held);
    if (trace) trace(traced.c_str(), trace_context);
}

// A bounded window: a long session keeps its memory. Leaves the lock released.
void SdkCore::keep(std::string text, std::unique_lock<std::mutex>& held) {
    if (lines_.size() >= 2 * window) lines_.erase(lines_.begin(), lines_.begin() + window);
    lines_.push_back(std::move(text));
    held.unlock();
}

std::vector<std::string> SdkCore::lines() const {
    std::lock_guard held(mutex_);
    return lines_;
}

void SdkCore::clear_log() {
    std::lock_guard held(mutex_);
    lines_.clear();
}

void SdkCore::clear() {
    std::lock_guard held(mutex_);
    lines_.clear();
    faults_.clear();
    armed_ = false;
}

}  // namespace icp_platform
