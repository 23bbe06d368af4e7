#include "tests/reliability/bench.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace reliability {

namespace {

struct ParamException {
    const char* export_name;
    std::size_t position;
    Param kind;
};

// Parameters whose description names another kind than the body tests
// (or names none): masks and raw words described as "Integer" or "Vector"
// are unsigned integers, scalars described as vectors are scalars.
constexpr ParamException param_exceptions[] = {
    {"icpusb_opendevice", 0, Param::IdOrCode}, {"icpusb_do_readvalue", 0, Param::UsbHandle},
    {"icpusb_do_setpoweronenables", 1, Param::Unsigned}, {"icpusb_do_setsafetyenable", 1, Param::Unsigned},
    {"icpusb_do_setsafetyvalue", 1, Param::Unsigned}, {"icpusb_do_setdigitaloutputinverse", 1, Param::Unsigned},
    {"icpusb_do_writevalue", 1, Param::Unsigned}, {"icpusb_di_setdigitalvalueinverse", 1, Param::Unsigned},
    {"icpusb_di_setcntedgetrigger", 1, Param::Unsigned}, {"icpusb_di_writeclearcounters", 1, Param::Unsigned},
    {"icpusb_ai_setchenable", 1, Param::Unsigned}, {"icpusb_ao_setchenable", 1, Param::Unsigned},
    {"icpusb_ao_setsafetyenable", 1, Param::Unsigned}, {"icpusb_ao_writechannelvaluedigital", 2, Param::Unsigned},
    {"icpusb_ao_setpoweronchannelvaluedigital", 2, Param::Unsigned},
    {"icpusb_ao_setsafetychannelvaluedigital", 2, Param::Unsigned},
    {"icpusb_ao_setpoweronchannelvalueanalog", 2, Param::Real},
    {"icpusb_ao_setsafetychannelvalueanalog", 2, Param::Real},
    {"icpusb_pi_clearchcount", 1, Param::Unsigned}, {"icpusb_pi_clearchstatus", 1, Param::Unsigned},
    {"icpusb_pi_setchisolatedflags", 1, Param::Unsigned}, {"icpusb_pi_setlpfilterenables", 1, Param::Unsigned},
    {"icpcom_do_write", 3, Param::Unsigned}, {"icpcom_do_writechannelvalue", 4, Param::Integer},
};

struct ResultException {
    const char* export_name;
    Result kind;
};

// Serial digital words and stored values come back as reals; the watchdog
// configuration as a Boolean made from its vector.
constexpr ResultException result_exceptions[] = {
    {"icpcom_di_read", Result::Real}, {"icpcom_do_read", Result::Real}, {"icpcom_do_readpoweronvalue", Result::Real},
    {"icpcom_ao_readpoweronvalue", Result::Real}, {"icpcom_do_readsafevalue", Result::Real},
    {"icpcom_ao_readsafevalue", Result::Real}, {"icpcom_getwdtconfig", Result::Boolean},
};

bool starts(std::string_view text, std::string_view word) { return text.substr(0, word.size()) == word; }

Param param_from_text(std::string_view d, std::size_t position, bool usb) {
    if (position == 0 && starts(d, "Devic")) return usb ? Param::UsbHandle : Param::ComHandle;
    if (starts(d, "Integer") || starts(d, "Channel") || starts(d, "The total number")) return Param::Integer;
    if (starts(d, "Real")) return Param::Real;
    if (starts(d, "Boolean")) return Param::Boolean;
    if (starts(d, "String") || starts(d, "Sting")) return Param::String;
    if (starts(d, "Vector")) return usb ? Param::Channels : Param::Commands;
    throw std::logic_error("no parameter kind in \"" + std::string(d) + "\"");
}

Result result_from_text(std::string_view d) {
    const std::pair<const char*, Result> words[] = {
        {"Boolean", Result::Boolean}, {"Integer", Result::Integer}, {"Real", Result::Real},
        {"Double", Result::Real},     {"Vector", Result::Vector},   {"Matrix", Result::Matrix},
        {"Table", Result::Table},     {"String or integer", Result::StringOrInteger},
        {"String", Result::String},   {"Device handle", Result::Handle}};
    for (const auto& [word, kind] : words)
        if (starts(d, word)) return kind;
    throw std::logic_error("no result kind in \"" + std::string(d) + "\"");
}

Group group_of(std::string_view export_name) {
    const std::pair<const char*, Group> groups[] = {
        {"_do_", Group::DO}, {"_di_", Group::DI}, {"_ai_", Group::AI}, {"_ao_", Group::AO}, {"_pi_", Group::PI}};
    if (!starts(export_name, "icpusb_")) return Group::None;
    for (const auto& [infix, group] : groups)
        if (export_name.find(infix) != std::string_view::npos) return group;
    return Group::None;
}

}  // namespace

Signature signature(const icp::Function& f) {
    const std::string_view exp = f.export_name;
    Signature s{};
    s.usb = !starts(exp, "icpcom_");
    s.group = group_of(exp);
    s.result = result_from_text(f.help[1]);
    for (const auto& e : result_exceptions)
        if (exp == e.export_name) s.result = e.kind;
    for (std::size_t i = 0; i < f.arity(); ++i) {
        const auto e = std::find_if(std::begin(param_exceptions), std::end(param_exceptions),
                                    [&](const ParamException& p) { return exp == p.export_name && i == p.position; });
        s.params.push_back(e != std::end(param_exceptions) ? e->kind : param_from_text(f.help[2 + i], i, s.usb));
    }
    return s;
}

bool accepts(Param p, const nvValue& v, unsigned total) {
    switch (p) {
        case Param::UsbHandle:
        case Param::ComHandle: return v.pointer() != nullptr;
        case Param::Integer: return v.isInteger();
        case Param::Unsigned: return v.isUnsignedInteger();
        case Param::Real: return v.isDouble();
        case Param::Boolean: return v.isBoolean();
        case Param::String: return v.isString();
        case Param::IdOrCode: return v.isString() || v.isInteger();
        case Param::Channels: return v.isVector() && v.size() == total && v.isNumericVectorOrMatrix();
        case Param::Commands: return v.isVector();
    }
    return false;
}

bool is(Result r, const nvValue& v) {
    switch (r) {
        case Result::Boolean: return v.isBoolean();
        case Result::Integer: return v.isInteger() && v.pointer() == nullptr;
        case Result::Real: return v.isDouble();
        case Result::Vector: return v.isVector();
        case Result::Matrix: return v.isMatrix() && v.columnNames().empty();
        case Result::Table: return v.isMatrix() && !v.columnNames().empty();
        case Result::String: return v.isString();
        case Result::StringOrInteger: return v.isString() || v.isInteger();
        case Result::Handle: return v.pointer() != nullptr;
    }
    return false;
}

}  // namespace reliability
