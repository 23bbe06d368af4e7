// The host watchdog of serial modules, one SDK call per function. Timeouts
// count in 0.1 s.
#include "com/watchdog.h"

#include <cstdint>

#include "com/body.h"
#include "plugin/catalogue.h"

using icp::nvValue;
namespace arg = icp::arg;
namespace com = icp::com;
namespace make = icp::make;

// The SDK's answer is the flag itself, so a failing call reads as false,
// never null; only the last error tells the two apart.
ICP_EXPORT nvValue icpcom_getwdtstatus(const nvValue& handle, const nvValue& slot) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        if (!address) return com::refused();
        return make::boolean(pac_GetModuleWDTStatus(port, *address) != 0);
    });
}

// The three settings are built into a vector, and the script gets the
// Boolean the host makes of that vector, not the vector: deliberate.
ICP_EXPORT nvValue icpcom_getwdtconfig(const nvValue& handle, const nvValue& slot) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        if (!address) return com::refused();
        short enabled = 0;
        std::uint32_t timeout = 0;
        int overwrite = 0;
        if (!pac_GetModuleWDTConfig(port, *address, &enabled, &timeout, &overwrite)) return make::null();
        const nvValue settings = make::vector(3, [&](unsigned i) {
            if (i == 0) return make::integer(enabled);
            if (i == 1) return make::real_unsigned(timeout);
            return make::integer(overwrite);
        });
        const nvValue result = NuvarelMath::ValueTypes::nvBoolean(settings);
        return result;
    });
}

// The enable flag goes as its low 16 bits: 65537 enables.
ICP_EXPORT nvValue icpcom_setwdtconfig(const nvValue& handle, const nvValue& slot, const nvValue& enabled,
                                       const nvValue& timeout, const nvValue& overwrite) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        const auto enable = arg::int16(enabled);
        const auto tenths = com::word(timeout);
        const auto over = arg::int32(overwrite);
        if (!address || !enable || !tenths || !over) return com::refused();
        return com::status(
            pac_SetModuleWDTConfig(port, *address, *enable, *tenths, *over));
    });
}

ICP_EXPORT nvValue icpcom_resetwdt(const nvValue& handle, const nvValue& slot) {
    return com::slot_action(handle, slot, pac_ResetModuleWDT);
}

ICP_EXPORT nvValue icpcom_refreshwdt(const nvValue& handle, const nvValue& slot) {
    return com::slot_action(handle, slot, pac_RefreshModuleWDT);
}

// --- Catalogue ---

#define ICP_COM_WATCHDOG_FUNCTIONS(F) \
    F(icpcom_getwdtstatus, "ICPCOM_GetWDTStatus", \
      "This function reads the host watchdog status", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command") \
    F(icpcom_getwdtconfig, "ICPCOM_GetWDTConfig", \
      "This function reads the host watchdog status", \
      "Vector, integer 1 or 0 watchdog enabled, integer timeout (unit of return value is 100ms), integer 1 or 0 watchdog does overwrite (i-8k only)", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command") \
    F(icpcom_setwdtconfig, "ICPCOM_SetWDTConfig", \
      "This function enables/disables the host watchdog and sets the host watchdog timeout value", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer 1 or 0, host watchdog is enabled", \
      "Integer timeout, unit is 100ms", \
      "Integer 1 or 0, overwrite (i-8k only)") \
    F(icpcom_resetwdt, "ICPCOM_ResetWDT", \
      "This function resets the host watchdog status", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command") \
    F(icpcom_refreshwdt, "ICPCOM_RefreshWDT", \
      "This function refresh the host watchdog", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command")

ICP_CATALOGUE_GROUP(com_watchdog, ICP_COM_WATCHDOG_FUNCTIONS)
