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

#include <array>
#include <cstddef>
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

// An unsigned word (read without sign: 0 to 4294967295 for 32 bits) or a
// single-precision float, as a real. The output starts at 0, so an SDK that
// reports success without writing it leaks nothing.
template <class Gate, class Output>
nvValue real_getter(const nvValue& handle, Gate gate, std::int32_t (*call)(USBIO_HANDLE, Output*)) {
    static_assert((std::is_unsigned_v<Output> && sizeof(Output) <= 4) || std::is_same_v<Output, float>);
    return gated(handle, gate, [&](USBIO_HANDLE device) {
        Output out = 0;
        const std::int32_t code = call(device, &out);
        return sdk(code, [&] { return make::real(static_cast<double>(out)); });
    });
}

// For setters whose SDK call takes its word by address: the converted word
// is kept in a local and its address passed.
template <class Sdk>
auto by_address(Sdk call) {
    return [call](USBIO_HANDLE device, auto word) { return call(device, &word); };
}

// A byte flag, preset to 0, as a Boolean (true when non-zero).
template <class Gate>
nvValue flag_getter(const nvValue& handle, Gate gate, std::int32_t (*call)(USBIO_HANDLE, std::uint8_t*)) {
    return gated(handle, gate, [&](USBIO_HANDLE device) {
        std::uint8_t flag = 0;
        const std::int32_t code = call(device, &flag);
        return sdk(code, [&] { return make::boolean(flag != 0); });
    });
}

// A channel (low 8 bits, not compared with the total: the SDK's code
// decides) and its value, checked in that order.
template <class Check, class Call>
nvValue channel_setter(const nvValue& handle, Group group, const nvValue& channel, const nvValue& v, Check check,
                       Call call) {
    return group_body(handle, group, [&](USBIO_HANDLE device, unsigned) {
        const auto ch = arg::uint8(channel);
        if (!ch) return refused();
        const auto value = check(v);
        if (!value) return refused();
        return sdk(call(device, *ch, *value));
    });
}

// --- The per-channel arrays of the analog and pulse groups ---
//
// The SDK fills or reads fixed arrays of 16 entries (64 bytes for the
// supported type codes), whatever the group's total; a total beyond an
// array's capacity is refused like a wrong argument (null result,
// usb_last_error 0) rather than read or written past its end. The arrays
// start zeroed.

inline constexpr unsigned channel_capacity = 16;
inline constexpr unsigned support_capacity = 64;

// Steps 1 to 3 with a total that fits N entries, then op(device, total).
template <std::size_t N, class Op>
nvValue array_body(const nvValue& handle, Group group, Op op) {
    return group_body(handle, group, [&](USBIO_HANDLE device, unsigned total) {
        if (total > N) return refused();
        return op(device, total);
    });
}

// One array read; the result is a vector of its first `total` entries, each
// made by element().
template <std::size_t N = channel_capacity, class Entry, class Element>
nvValue vector_getter(const nvValue& handle, Group group, std::int32_t (*call)(USBIO_HANDLE, Entry*),
                      Element element) {
    return array_body<N>(handle, group, [&](USBIO_HANDLE device, unsigned total) {
        std::array<Entry, N> entries{};
        const std::int32_t code = call(device, entries.data());
        return sdk(code, [&] { return make::vector(total, [&](unsigned i) { return element(entries[i]); }); });
    });
}

// The same read for one channel (0 <= channel < total, else refused): the
// whole group is read and the channel's entry picked.
template <class Entry, class Element>
nvValue channel_reader(const nvValue& handle, Group group, const nvValue& channel,
                       std::int32_t (*call)(USBIO_HANDLE, Entry*), Element element) {
    return array_body<channel_capacity>(handle, group, [&](USBIO_HANDLE device, unsigned total) {
        const auto ch = arg::channel(channel, total);
        if (!ch) return refused();
        std::array<Entry, channel_capacity> entries{};
        const std::int32_t code = call(device, entries.data());
        return sdk(code, [&] { return element(entries[*ch]); });
    });
}

// Values with their status bytes: a `total` x 2 matrix, row i channel i,
// column 0 its value made by element(), column 1 its status as an Integer.
template <class Entry, class Element>
nvValue status_matrix(const nvValue& handle, Group group,
                      std::int32_t (*call)(USBIO_HANDLE, Entry*, std::uint8_t*), Element element) {
    return array_body<channel_capacity>(handle, group, [&](USBIO_HANDLE device, unsigned total) {
        std::array<Entry, channel_capacity> values{};
        std::array<std::uint8_t, channel_capacity> status{};
        const std::int32_t code = call(device, values.data(), status.data());
        return sdk(code, [&] {
            return make::matrix2(total, [&](unsigned r, unsigned c) {
                return c == 0 ? element(values[r]) : make::integer(status[r]);
            });
        });
    });
}

// One channel's row of the status matrix (0 <= channel < total): 1 x 2.
template <class Entry, class Element>
nvValue channel_status(const nvValue& handle, Group group, const nvValue& channel,
                       std::int32_t (*call)(USBIO_HANDLE, Entry*, std::uint8_t*), Element element) {
    return array_body<channel_capacity>(handle, group, [&](USBIO_HANDLE device, unsigned total) {
        const auto ch = arg::channel(channel, total);
        if (!ch) return refused();
        std::array<Entry, channel_capacity> values{};
        std::array<std::uint8_t, channel_capacity> status{};
        const std::int32_t code = call(device, values.data(), status.data());
        return sdk(code, [&] {
            return make::matrix2(1, [&](unsigned, unsigned c) {
                return c == 0 ? element(values[*ch]) : make::integer(status[*ch]);
            });
        });
    });
}

// A vector of exactly `total` numbers, each converted by convert() into the
// array the SDK reads (arg::per_channel).
template <class Entry, class Convert>
nvValue vector_setter(const nvValue& handle, Group group, const nvValue& v, Convert convert,
                      std::int32_t (*call)(USBIO_HANDLE, const Entry*)) {
    return array_body<channel_capacity>(handle, group, [&](USBIO_HANDLE device, unsigned total) {
        const auto entries = arg::per_channel<Entry, channel_capacity>(v, total, convert);
        if (!entries) return refused();
        return sdk(call(device, entries->data()));
    });
}

// --- 16-channel masks exchanged as two bytes, little-endian ---

// An unsigned-integer mask, its low 16 bits as the SDK's 2-byte array.
template <class Gate>
nvValue mask_setter(const nvValue& handle, Gate gate, const nvValue& mask,
                    std::int32_t (*call)(USBIO_HANDLE, const std::uint8_t*)) {
    return setter(handle, gate, mask, arg::mask16, [&](USBIO_HANDLE device, std::uint16_t bits) {
        const std::array<std::uint8_t, 2> bytes{static_cast<std::uint8_t>(bits & 0xFFu),
                                                 static_cast<std::uint8_t>(bits >> 8)};
        return call(device, bytes.data());
    });
}

// The SDK's 2-byte mask as one 16-bit word, a real (0 to 65535).
template <class Gate>
nvValue mask_getter(const nvValue& handle, Gate gate, std::int32_t (*call)(USBIO_HANDLE, std::uint8_t*)) {
    return gated(handle, gate, [&](USBIO_HANDLE device) {
        std::array<std::uint8_t, 2> bytes{};
        const std::int32_t code = call(device, bytes.data());
        return sdk(code, [&] { return make::real(static_cast<double>(bytes[0] | (bytes[1] << 8))); });
    });
}

}  // namespace icp::usb
