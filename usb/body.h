// The common body of the USB script functions.
//
//   1. usb_last_error := 0.
//   2. A handle whose pointer() is null: usb_last_error := -1, null result.
//   3. Group functions read the group's channel total first; a failing
//      total call or a total of 0 gives the null result with usb_last_error
//      left at 0 (the total call's code is deliberately not kept).
//   4. The argument checks (icp::arg); a refusal gives the null result with
//      usb_last_error 0 and nothing reaches the SDK.
//   5. One SDK call; its code goes into usb_last_error; non-zero gives the
//      null result, zero the function's result.
//
// A body reads as
//
//     return usb::group_body(handle, usb::Group::DO, [&](USBIO_HANDLE d, unsigned total) {
//         auto value = arg::uint32(v);
//         if (!value) return usb::refused();
//         return usb::sdk(DO_WriteValue(d, &*value));
//     });
#pragma once

#include <cstdint>
#include <type_traits>

#include "ICPDAS_USBIO.h"
#include "plugin/state.h"
#include "plugin/values/values.h"

namespace icp::usb {

enum class Group { DO, DI, AI, AO, PI };

// The channel total of a group as the SDK reports it; false when the call
// fails.
bool read_total(USBIO_HANDLE device, Group group, std::uint8_t& total);

inline USBIO_HANDLE device_of(const nvValue& handle) {
    return static_cast<USBIO_HANDLE>(address_of(handle));
}

// An argument refused: null result, usb_last_error untouched (0).
inline nvValue refused() { return make::null(); }

// Keeps the SDK's code; Boolean true on success.
inline nvValue sdk(std::int32_t code) {
    usb_last_error = code;
    return code == 0 ? make::boolean(true) : make::null();
}

// Keeps the SDK's code; on success the result that build() makes.
template <class Build>
nvValue sdk(std::int32_t code, Build build) {
    usb_last_error = code;
    return code == 0 ? build() : make::null();
}

// Steps 1 and 2, then op(device).
template <class Op>
nvValue body(const nvValue& handle, Op op) {
    usb_last_error = 0;
    USBIO_HANDLE device = device_of(handle);
    if (!device) {
        usb_last_error = -1;
        return make::null();
    }
    return op(device);
}

// Steps 1 to 3, then op(device, total).
template <class Op>
nvValue group_body(const nvValue& handle, Group group, Op op) {
    return body(handle, [&](USBIO_HANDLE device) {
        std::uint8_t total = 0;
        if (!read_total(device, group, total) || total == 0) return make::null();
        if (!device_of(handle)) return make::null();
        return op(device, static_cast<unsigned>(total));
    });
}

// The gate a shape runs behind: the whole device (steps 1 and 2) or a
// group's channel total (steps 1 to 3).
struct Device {};
inline constexpr Device device_wide{};

template <class Op>
nvValue gated(const nvValue& handle, Device, Op op) {
    return body(handle, op);
}

template <class Op>
nvValue gated(const nvValue& handle, Group group, Op op) {
    return group_body(handle, group, [&](USBIO_HANDLE device, unsigned) { return op(device); });
}

// The shapes most bodies are made of.

// No argument: Boolean true when the SDK accepts the call.
template <class Gate, class Call>
nvValue action(const nvValue& handle, Gate gate, Call call) {
    return gated(handle, gate, [&](USBIO_HANDLE device) { return sdk(call(device)); });
}

// One argument, checked and converted by check() before the SDK sees it.
template <class Gate, class Check, class Call>
nvValue setter(const nvValue& handle, Gate gate, const nvValue& value, Check check, Call call) {
    return gated(handle, gate, [&](USBIO_HANDLE device) {
        const auto converted = check(value);
        if (!converted) return refused();
        return sdk(call(device, *converted));
    });
}

// An unsigned 8-, 16- or 32-bit output, preset to 0, as an Integer: the
// narrow widths zero-extended, 32 bits passed unchanged (so they may read
// back negative).
template <class Gate, class Output>
nvValue integer_getter(const nvValue& handle, Gate gate, std::int32_t (*call)(USBIO_HANDLE, Output*)) {
    static_assert(std::is_unsigned_v<Output> && sizeof(Output) <= 4);
    return gated(handle, gate, [&](USBIO_HANDLE device) {
        Output out = 0;
        const std::int32_t code = call(device, &out);
        return sdk(code, [&] { return make::integer(static_cast<std::int32_t>(out)); });
    });
}

// A 32-bit word as a real without sign (0 to 4294967295). The word starts
// at 0, so an SDK that reports success without writing it leaks nothing.
template <class Gate>
nvValue real_getter(const nvValue& handle, Gate gate, std::int32_t (*call)(USBIO_HANDLE, std::uint32_t*)) {
    return gated(handle, gate, [&](USBIO_HANDLE device) {
        std::uint32_t word = 0;
        const std::int32_t code = call(device, &word);
        return sdk(code, [&] { return make::real_unsigned(word); });
    });
}

}  // namespace icp::usb
