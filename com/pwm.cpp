// PWM output modules on a serial port: per-channel duty, frequency,
// continuous mode, hardware trigger, pulse count and synchronisation, the
// output start mask, synchronised start, saving the configuration, and the
// PWM output and digital input status.
//
// Channels, triggers, synchronisation flags, start masks and sync starts
// reach the SDK as their low 16 bits, read as signed; frequencies, modes and
// pulse counts as 32-bit values; the duty as a single-precision real. No
// range is tested here: the SDK and the module refuse what they cannot do.
#include "com/pwm.h"

#include <cstddef>
#include <cstdint>
#include <optional>

#include "com/body.h"
#include "plugin/catalogue.h"

using icp::nvValue;
namespace arg = icp::arg;
namespace make = icp::make;
namespace com = icp::com;

namespace {

nvValue signed_word(PAC_DWORD w) { return make::integer(static_cast<std::int32_t>(w)); }

// One channel's setting: slot, channel, then the value.
template <class Convert, class Call>
nvValue channel_setter(const nvValue& handle, const nvValue& slot, const nvValue& channel, const nvValue& value,
                       Convert convert, Call call) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        const auto ch = arg::int16(channel);
        const auto v = convert(value);
        if (!address || !ch || !v) return com::refused();
        return com::status(call(port, *address, *ch, *v));
    });
}

// One channel's setting read back into an output preset to zero.
template <class Out, class Call, class Build>
nvValue channel_getter(const nvValue& handle, const nvValue& slot, const nvValue& channel, Call call,
                       Build build) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        const auto ch = arg::int16(channel);
        if (!address || !ch) return com::refused();
        Out out{};
        return com::status(call(port, *address, *ch, &out), [&] { return build(out); });
    });
}

// A setting of the whole module: slot, then a 16-bit value.
template <class Call>
nvValue module_setter(const nvValue& handle, const nvValue& slot, const nvValue& value, Call call) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        const auto v = arg::int16(value);
        if (!address || !v) return com::refused();
        return com::status(call(port, *address, *v));
    });
}

}  // namespace

// An Integer duty is refused: only a Real is taken.
ICP_EXPORT nvValue icpcom_setpwmduty(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                     const nvValue& duty) {
    return channel_setter(handle, slot, channel, duty, arg::real32, pac_SetPWMDuty);
}

ICP_EXPORT nvValue icpcom_getpwmduty(const nvValue& handle, const nvValue& slot, const nvValue& channel) {
    return channel_getter<float>(handle, slot, channel, pac_GetPWMDuty, [](float d) { return make::real(d); });
}

ICP_EXPORT nvValue icpcom_setpwmfrequency(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                          const nvValue& frequency) {
    return channel_setter(handle, slot, channel, frequency, com::word, pac_SetPWMFrequency);
}

ICP_EXPORT nvValue icpcom_getpwmfrequency(const nvValue& handle, const nvValue& slot, const nvValue& channel) {
    return channel_getter<PAC_DWORD>(handle, slot, channel, pac_GetPWMFrequency, signed_word);
}

ICP_EXPORT nvValue icpcom_setpwmmode(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                     const nvValue& mode) {
    return channel_setter(handle, slot, channel, mode, com::word, pac_SetPWMMode);
}

ICP_EXPORT nvValue icpcom_getpwmmode(const nvValue& handle, const nvValue& slot, const nvValue& channel) {
    return channel_getter<PAC_DWORD>(handle, slot, channel, pac_GetPWMMode, signed_word);
}

ICP_EXPORT nvValue icpcom_setpwmtrigger(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                        const nvValue& trigger) {
    return channel_setter(handle, slot, channel, trigger, arg::int16, pac_SetPWMDITriggerConfig);
}

ICP_EXPORT nvValue icpcom_getpwmtrigger(const nvValue& handle, const nvValue& slot, const nvValue& channel) {
    return channel_getter<short>(handle, slot, channel, pac_GetPWMDITriggerConfig,
                                 [](short t) { return make::integer(t); });
}

// Only channels 0 to 15 can be switched: the mask travels as 16 bits.
ICP_EXPORT nvValue icpcom_setpwmstart(const nvValue& handle, const nvValue& slot, const nvValue& mask) {
    return module_setter(handle, slot, mask, pac_SetPWMStart);
}

ICP_EXPORT nvValue icpcom_setpwmsynchannel(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                           const nvValue& sync) {
    return channel_setter(handle, slot, channel, sync, arg::int16, pac_SetPWMSynChannel);
}

// Deliberately the trigger getter, unchanged: this returns the channel's
// hardware trigger setting, not its synchronisation flag (which nothing here
// reads), whatever the function's name and help say. Scripts rely on it; do
// not "fix" it.
ICP_EXPORT nvValue icpcom_getpwmsynchannel(const nvValue& handle, const nvValue& slot, const nvValue& channel) {
    return icpcom_getpwmtrigger(handle, slot, channel);
}

ICP_EXPORT nvValue icpcom_syncpwmstart(const nvValue& handle, const nvValue& slot, const nvValue& start) {
    return module_setter(handle, slot, start, pac_SyncPWMStart);
}

ICP_EXPORT nvValue icpcom_savepwmconfig(const nvValue& handle, const nvValue& slot) {
    return com::slot_action(handle, slot, pac_SavePWMConfig);
}

// Reals (0 .. 4294967295), not the Integers that the help names.
nvValue icp::com::pwm_status_masks(const StatusBytes& pwm, const StatusBytes& di) {
    std::uint32_t pwm_mask = 0, di_mask = 0;
    for (std::size_t i = 0; i < pwm_status_channels; ++i) {
        if (pwm[i] != 0) pwm_mask |= 1u << i;
        if (di[i] != 0) di_mask |= 1u << i;
    }
    return make::vector(2, [&](unsigned i) { return make::real_unsigned(i == 0 ? pwm_mask : di_mask); });
}

ICP_EXPORT nvValue icpcom_getpwmdiostatus(const nvValue& handle, const nvValue& slot) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        if (!address) return com::refused();
        com::StatusBytes pwm = {};
        com::StatusBytes di = {};
        return com::status(pac_GetPWMDIOStatus(port, *address, pwm, di),
                           [&] { return com::pwm_status_masks(pwm, di); });
    });
}

ICP_EXPORT nvValue icpcom_setpwmpulsecount(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                           const nvValue& count) {
    return channel_setter(handle, slot, channel, count, com::word, pac_SetPWMPulseCount);
}

ICP_EXPORT nvValue icpcom_getpwmpulsecount(const nvValue& handle, const nvValue& slot, const nvValue& channel) {
    return channel_getter<PAC_DWORD>(handle, slot, channel, pac_GetPWMPulseCount, signed_word);
}

// --- Catalogue ---

#define ICP_COM_PWM_FUNCTIONS(F) \
    F(icpcom_setpwmduty, "ICPCOM_SetPWMDuty", \
      "Sets the duty cycle value for a specified channel", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Real the duty cycle value") \
    F(icpcom_getpwmduty, "ICPCOM_GetPWMDuty", \
      "Reads the duty cycle value for a specified channel", \
      "Real", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel") \
    F(icpcom_setpwmfrequency, "ICPCOM_SetPWMFrequency", \
      "Sets the frequency value for a specified channel", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Integer the frequency value") \
    F(icpcom_getpwmfrequency, "ICPCOM_GetPWMFrequency", \
      "Reads the frequency value for a specified channel", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel") \
    F(icpcom_setpwmmode, "ICPCOM_SetPWMMode", \
      "Sets the continuous mode for a specified channel", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Integer the continuous mode (0: Disable the PWM, 1: Enable the PWM)") \
    F(icpcom_getpwmmode, "ICPCOM_GetPWMMode", \
      "Reads the continuous mode for a specified channel", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel") \
    F(icpcom_setpwmtrigger, "ICPCOM_SetPWMTrigger", \
      "Sets the hardware trigger for a specified channel", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Integer the hardware trigger (0: Disable the hardware trigger, 1: Enable the trigger start, 2: Enable the trigger stop)") \
    F(icpcom_getpwmtrigger, "ICPCOM_GetPWMTrigger", \
      "Reads the hardware trigger for a specified channel", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel") \
    F(icpcom_setpwmstart, "ICPCOM_SetPWMStart", \
      "Sets the status of the PWM output port", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer Bit 0 corresponds to PWM channel 0, and bit 1 corresponds to PWM channel 1, etc (0: PWM output port is off, 1: PWM output port is on)") \
    F(icpcom_setpwmsynchannel, "ICPCOM_SetPWMSynChannel", \
      "Sets the PWM synchronization status for a specific channel", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Integer the synchronization status (0: Disable the PWM synchronization, 1: Enable the PWM synchronization)") \
    F(icpcom_getpwmsynchannel, "ICPCOM_GetPWMSynChannel", \
      "Reads the PWM synchronization status from a specific channel", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel") \
    F(icpcom_syncpwmstart, "ICPCOM_SyncPWMStart", \
      "Starts the PWM synchronization", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer (0: Stops the PWM synchronization, 1: Starts the PWM synchronization)") \
    F(icpcom_savepwmconfig, "ICPCOM_SavePWMConfig", \
      "Saves the PWM configuration", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command") \
    F(icpcom_getpwmdiostatus, "ICPCOM_GetPWMDIOStatus", \
      "Reads the status of the PWM output port and the digital input port", \
      "Vector. First element is integer in which every bite corresponds to one PWM channel, from 0 to 31 respectively. Second element is integer in which every bite corresponds to one DI channel, from 0 to 31 respectively", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command") \
    F(icpcom_setpwmpulsecount, "ICPCOM_SetPWMPulseCount", \
      "Sets the PWM step value for a specific channel", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Integer the PWM steps (0x0001 to 0xFFFF). (When set to more than 1 step, the PWM continuous mode will be automatically set to disabled)") \
    F(icpcom_getpwmpulsecount, "ICPCOM_GetPWMPulseCount", \
      "Reads the PWM step value from a specific channel", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel")

ICP_CATALOGUE_GROUP(com_pwm, ICP_COM_PWM_FUNCTIONS)
