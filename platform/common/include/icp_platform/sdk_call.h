// What a stand-in SDK reports of each call to those who listen: the trace
// (lines) and the call hook (a call's parts).
#pragma once

#include <string_view>

namespace icp_platform {

// A trace line as it happens.
using TraceFn = void (*)(const char* line, void* context);

// One SDK call: arguments as the call log shows them ("#1, 3"), the result
// as "0" or "port#1" (empty for a function without result).
struct SdkCall {
    std::string_view function;
    std::string_view arguments;
    std::string_view result;
};
using CallHook = void (*)(const SdkCall& call, void* context);

}  // namespace icp_platform
