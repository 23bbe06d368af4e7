// How the plug-in offers its entry points to the host: plain, undecorated
// C-linkage names, exported from the shared library and nothing else.
#pragma once

#include "NvMathLib.h"

#if defined(_WIN32)
#  define ICP_API __declspec(dllexport)
#else
#  define ICP_API __attribute__((visibility("default")))
#endif

#define ICP_EXPORT extern "C" ICP_API

// The bodies take and return the host's value type by C++ reference and
// value under C linkage; that is the host's calling convention.
#if defined(_MSC_VER) && !defined(__clang__)
#  pragma warning(disable : 4190)
#elif defined(__clang__)
#  pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

namespace icp {
using NuvarelMath::ValueTypes::nvValue;
}  // namespace icp
