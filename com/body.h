// The common body of the serial script functions.
//
//   1. pac_SetLastError(0), before any argument is looked at: the PAC SDK
//      keeps the last error, the plug-in has no variable of its own.
//   2. A handle whose pointer() is null: null result. The handle's kind is
//      never tested and open ports are not tracked; any non-null address is
//      passed to the SDK as the port.
//   3. The argument checks (icp::arg, com::slot), in parameter order; a
//      refusal gives the null result and the SDK's last error stays 0.
//   4. One SDK call. Its status decides: zero gives the null result (the
//      SDK has set its own last error), non-zero the function's result.
//
// A body reads as
//
//     return com::body(handle, [&](PAC_HANDLE port) {
//         auto address = com::slot(slot);
//         auto count = arg::int32(total);
//         if (!address || !count) return com::refused();
//         std::uint32_t word = 0;
//         return com::status(pac_ReadDI_MF(port, *address, *count, &word),
//                            [&] { return make::real_unsigned(word); });
//     });
//
// "ICPCOM_LastError" and the command recorder do not follow step 1.
#pragma once

#include <cstdint>
#include <optional>

#include "PACSDK.h"
#include "plugin/values/values.h"

namespace icp::com {

// What uart_Open answers when it cannot open the port: all bits set. A zero
// handle is not a failure here; later bodies refuse it as a missing handle.
inline bool invalid_port(PAC_HANDLE port) {
    return reinterpret_cast<std::uintptr_t>(port) == ~std::uintptr_t{0};
}

// The address of the module behind the port, as every slot-taking SDK call
// receives it: the script's slot with bit 12 set (remote I/O), all other
// bits kept.
inline std::int32_t module_address(std::int32_t slot) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(slot) | 0x1000u);
}

// A slot argument: Integer kind, converted to the module address.
inline std::optional<std::int32_t> slot(const nvValue& v) {
    auto s = arg::int32(v);
    if (!s) return std::nullopt;
    return module_address(*s);
}

// An Integer's 32 bits as the SDK's unsigned word, sign and all (-1 is
// 0xFFFFFFFF): frequencies, modes, counts, timeouts, power-on and safe words.
inline std::optional<std::uint32_t> word(const nvValue& v) {
    auto i = arg::int32(v);
    if (!i) return std::nullopt;
    return static_cast<std::uint32_t>(*i);
}

// An argument refused: null result, the SDK's last error stays 0.
inline nvValue refused() { return make::null(); }

// A setter's or action's status: Boolean true, or null on failure.
inline nvValue status(PAC_BOOL ok) { return ok ? make::boolean(true) : make::null(); }

// A getter's status: the result that build() makes, or null on failure.
template <class Build>
nvValue status(PAC_BOOL ok, Build build) {
    return ok ? build() : make::null();
}

// Steps 1 and 2, then op(port).
template <class Op>
nvValue body(const nvValue& handle, Op op) {
    pac_SetLastError(0);
    const auto port = static_cast<PAC_HANDLE>(address_of(handle));
    if (port == nullptr) return make::null();
    return op(port);
}

// (handle, slot): an action on the module, Boolean true or null.
inline nvValue slot_action(const nvValue& handle, const nvValue& slot, PAC_BOOL (*call)(PAC_HANDLE, int)) {
    return body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        if (!address) return refused();
        return status(call(port, *address));
    });
}

}  // namespace icp::com
