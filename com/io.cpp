// Serial module I/O: analog points in engineering units, digital words,
// power-on and safe values, one SDK call each; and the single-channel DI
// read and DO write, built on the group bodies.
//
// Digital words come back as Reals of the unsigned 32-bit word (0 ..
// 4294967295), as do the AO power-on and safe values, whatever the help
// texts say.
#include "com/io.h"

#include <cstdint>
#include <optional>

#include "com/body.h"
#include "plugin/catalogue.h"

using icp::nvValue;
namespace arg = icp::arg;
namespace com = icp::com;
namespace make = icp::make;

namespace {

using AnalogRead = PAC_BOOL (*)(PAC_HANDLE, int, int, int, float*);
using AnalogWrite = PAC_BOOL (*)(PAC_HANDLE, int, int, int, float);
using WordRead = PAC_BOOL (*)(PAC_HANDLE, int, int, std::uint32_t*);
using WordWrite = PAC_BOOL (*)(PAC_HANDLE, int, int, std::uint32_t);

// The AO power-on and safe values arrive as Integers and reach the SDK as the
// float nearest their 32 bits read without sign (-1 as 4294967295, which a
// float holds as 4294967296).
std::optional<float> integer_as_unsigned_real(const nvValue& v) {
    const auto i = arg::int32(v);
    if (!i) return std::nullopt;
    return static_cast<float>(static_cast<std::uint32_t>(*i));
}

// (handle, slot, channel, total) -> Real.
nvValue analog_reader(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                      const nvValue& total, AnalogRead read) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        const auto ch = arg::int32(channel);
        const auto count = arg::int32(total);
        if (!address || !ch || !count) return com::refused();
        float value = 0;
        return com::status(read(port, *address, *ch, *count, &value), [&] { return make::real(value); });
    });
}

// (handle, slot, channel, total, value) -> Boolean.
template <class Convert>
nvValue analog_writer(const nvValue& handle, const nvValue& slot, const nvValue& channel, const nvValue& total,
                      const nvValue& value, Convert convert, AnalogWrite write) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        const auto ch = arg::int32(channel);
        const auto count = arg::int32(total);
        const auto real = convert(value);
        if (!address || !ch || !count || !real) return com::refused();
        return com::status(write(port, *address, *ch, *count, *real));
    });
}

// (handle, slot, total) -> Real of the unsigned word.
nvValue word_reader(const nvValue& handle, const nvValue& slot, const nvValue& total, WordRead read) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        const auto count = arg::int32(total);
        if (!address || !count) return com::refused();
        std::uint32_t word = 0;
        return com::status(read(port, *address, *count, &word), [&] { return make::real_unsigned(word); });
    });
}

// (handle, slot, total, value) -> Boolean.
template <class Convert>
nvValue word_writer(const nvValue& handle, const nvValue& slot, const nvValue& total, const nvValue& value,
                    Convert convert, WordWrite write) {
    return com::body(handle, [&](PAC_HANDLE port) {
        const auto address = com::slot(slot);
        const auto count = arg::int32(total);
        const auto word = convert(value);
        if (!address || !count || !word) return com::refused();
        return com::status(write(port, *address, *count, *word));
    });
}

// The checks the channel functions make before their group read: a channel
// up to the total, the total itself included.
bool channel_arguments(const nvValue& slot, const nvValue& channel, const nvValue& total) {
    const auto ch = arg::int32(channel);
    const auto count = arg::int32(total);
    return slot.isInteger() && ch && count && *ch <= *count;
}

// The bit of a channel 0..31 (a negative channel, as unsigned, is beyond).
std::optional<std::uint32_t> channel_bit(const nvValue& channel) {
    const auto ch = static_cast<std::uint32_t>(channel.toInt());
    if (ch > 31) return std::nullopt;
    return std::uint32_t{1} << ch;
}

}  // namespace

ICP_EXPORT nvValue icpcom_ai_read(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                  const nvValue& total) {
    return analog_reader(handle, slot, channel, total, pac_ReadAI);
}

ICP_EXPORT nvValue icpcom_ao_read(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                  const nvValue& total) {
    return analog_reader(handle, slot, channel, total, pac_ReadAO);
}

// The value must be a Real: the Integer 2 is refused, 2.0 is written.
ICP_EXPORT nvValue icpcom_ao_write(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                   const nvValue& total, const nvValue& value) {
    return analog_writer(handle, slot, channel, total, value, arg::real32, pac_WriteAO);
}

ICP_EXPORT nvValue icpcom_di_read(const nvValue& handle, const nvValue& slot, const nvValue& total) {
    return word_reader(handle, slot, total, pac_ReadDI_MF);
}

ICP_EXPORT nvValue icpcom_do_read(const nvValue& handle, const nvValue& slot, const nvValue& total) {
    return word_reader(handle, slot, total, pac_ReadDO_MF);
}

ICP_EXPORT nvValue icpcom_do_write(const nvValue& handle, const nvValue& slot, const nvValue& total,
                                   const nvValue& value) {
    return word_writer(handle, slot, total, value, arg::uint32, pac_WriteDO_MF);
}

ICP_EXPORT nvValue icpcom_do_readpoweronvalue(const nvValue& handle, const nvValue& slot, const nvValue& total) {
    return word_reader(handle, slot, total, pac_ReadModulePowerOnValueDO_MF);
}

ICP_EXPORT nvValue icpcom_do_writepoweronvalue(const nvValue& handle, const nvValue& slot, const nvValue& total,
                                               const nvValue& value) {
    return word_writer(handle, slot, total, value, com::word, pac_WriteModulePowerOnValueDO_MF);
}

ICP_EXPORT nvValue icpcom_ao_readpoweronvalue(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                              const nvValue& total) {
    return analog_reader(handle, slot, channel, total, pac_ReadModulePowerOnValueAO_MF);
}

ICP_EXPORT nvValue icpcom_ao_writepoweronvalue(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                               const nvValue& total, const nvValue& value) {
    return analog_writer(handle, slot, channel, total, value, integer_as_unsigned_real,
                         pac_WriteModulePowerOnValueAO_MF);
}

ICP_EXPORT nvValue icpcom_do_readsafevalue(const nvValue& handle, const nvValue& slot, const nvValue& total) {
    return word_reader(handle, slot, total, pac_ReadModuleSafeValueDO_MF);
}

ICP_EXPORT nvValue icpcom_do_writesafevalue(const nvValue& handle, const nvValue& slot, const nvValue& total,
                                            const nvValue& value) {
    return word_writer(handle, slot, total, value, com::word, pac_WriteModuleSafeValueDO_MF);
}

ICP_EXPORT nvValue icpcom_ao_readsafevalue(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                           const nvValue& total) {
    return analog_reader(handle, slot, channel, total, pac_ReadModuleSafeValueAO_MF);
}

ICP_EXPORT nvValue icpcom_ao_writesafevalue(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                            const nvValue& total, const nvValue& value) {
    return analog_writer(handle, slot, channel, total, value, integer_as_unsigned_real,
                         pac_WriteModuleSafeValueAO_MF);
}

// A channel equal to the total passes the first check (one beyond the last
// channel); only the bit test afterwards stops channels beyond 31.
ICP_EXPORT nvValue icpcom_di_readchannel(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                         const nvValue& total) {
    return com::body(handle, [&](PAC_HANDLE) {
        if (!channel_arguments(slot, channel, total)) return com::refused();
        const nvValue word = NuvarelMath::ValueTypes::nvDouble(icpcom_di_read(handle, slot, total));
        if (word.isNull()) return make::null();
        const auto bit = channel_bit(channel);
        if (!bit) return make::null();
        return make::integer((static_cast<std::uint32_t>(word.toInt()) & *bit) != 0 ? 1 : 0);
    });
}

// Read-modify-write whose base is the module's DI word, not its DO word:
// deliberate. The on/off value is an Integer, on when above 0. The new word
// goes through "ICPCOM_DO_Write" as a Real, which that body's own checks
// accept only as an unsigned whole number.
ICP_EXPORT nvValue icpcom_do_writechannelvalue(const nvValue& handle, const nvValue& slot, const nvValue& channel,
                                               const nvValue& total, const nvValue& on) {
    return com::body(handle, [&](PAC_HANDLE) {
        if (!channel_arguments(slot, channel, total) || !on.isInteger()) return com::refused();
        const nvValue current = NuvarelMath::ValueTypes::nvDouble(icpcom_di_read(handle, slot, total));
        if (current.isNull()) return make::null();
        const bool set = on.toInt() > 0;
        const auto bits = static_cast<std::uint32_t>(current.toInt());
        const auto bit = channel_bit(channel);
        if (!bit) return make::null();
        const auto next = static_cast<std::int32_t>(set ? bits | *bit : bits & ~*bit);
        const nvValue word = NuvarelMath::ValueTypes::nvDouble(NuvarelMath::ValueTypes::nvInteger(next));
        return icpcom_do_write(handle, slot, total, word);
    });
}

// --- Catalogue ---

#define ICP_COM_IO_FUNCTIONS(F) \
    F(icpcom_ai_read, "ICPCOM_AI_Read", \
      "Reads the AI value of the AI device", \
      "Real", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "The total number of the AI channels") \
    F(icpcom_ao_read, "ICPCOM_AO_Read", \
      "Reads the AO value of the AO device", \
      "Real", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "The total number of the AO channels") \
    F(icpcom_ao_write, "ICPCOM_AO_Write", \
      "Writes the AO value to the AO device", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "The total number of the AO channels", \
      "Real the AO value to write to the AO device") \
    F(icpcom_di_read, "ICPCOM_DI_Read", \
      "Reads the DI value of the DI device", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "The total number of the DI channels") \
    F(icpcom_do_read, "ICPCOM_DO_Read", \
      "Reads the DO value of the DO device", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "The total number of the DO channels") \
    F(icpcom_do_write, "ICPCOM_DO_Write", \
      "Writes the DO value to the DO device", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "The total number of the DO channels", \
      "DO value to write to the DO device") \
    F(icpcom_do_readpoweronvalue, "ICPCOM_DO_ReadPowerOnValue", \
      "Reads DO device power on value", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer total number of the DO channels") \
    F(icpcom_do_writepoweronvalue, "ICPCOM_DO_WritePowerOnValue", \
      "Writes DO device power on value", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer total number of the DO channels", \
      "Integer power on value to write") \
    F(icpcom_ao_readpoweronvalue, "ICPCOM_AO_ReadPowerOnValue", \
      "Reads AO device power on value", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Integer total number of the AO channels") \
    F(icpcom_ao_writepoweronvalue, "ICPCOM_AO_WritePowerOnValue", \
      "Writes AO device power on value", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Integer total number of the AO channels", \
      "Integer power on value to write") \
    F(icpcom_do_readsafevalue, "ICPCOM_DO_ReadSafeValue", \
      "Reads DO device safe value", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer total number of the DO channels") \
    F(icpcom_do_writesafevalue, "ICPCOM_DO_WriteSafeValue", \
      "Writes DO device safe value", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer total number of the DO channels", \
      "Integer power on value to write") \
    F(icpcom_ao_readsafevalue, "ICPCOM_AO_ReadSafeValue", \
      "Reads AO device safe value", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Integer total number of the AO channels") \
    F(icpcom_ao_writesafevalue, "ICPCOM_AO_WriteSafeValue", \
      "Writes AO device safe value", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Integer device channel", \
      "Integer total number of the AO channels", \
      "Integer power on value to write") \
    F(icpcom_di_readchannel, "ICPCOM_DI_ReadChannel", \
      "Reads the DI value of the DI device single channel", \
      "Integer", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Channel number", \
      "The total number of the DI channels") \
    F(icpcom_do_writechannelvalue, "ICPCOM_DO_WriteChannel", \
      "Writes the DO value to the DO device channel", \
      "Boolean", \
      "Device handle opened by icpcom_opendevice()", \
      "Integer the slot in which module is to receive the command", \
      "Channel number", \
      "The total number of the DO channels", \
      "Boolean, on or off")

ICP_CATALOGUE_GROUP(com_io, ICP_COM_IO_FUNCTIONS)
