#include "tests/reliability/bench.h"

#include <stdexcept>
#include <string_view>

#include "com/port.h"
#include "PACSDK.h"
#include "pacsdk_sim.h"
#include "plugin/state.h"
#include "plugin/values/values.h"
#include "usb/device.h"
#include "usbio_sim.h"

namespace reliability {

namespace {

// Modules of the default rig, in the order they are tried for a group.
struct Module {
    const char* model;
    int board;
};
constexpr Module modules[] = {{"USB2055", 3}, {"USB2019", 1}, {"USB2026", 1}, {"USB2084", 1}};

unsigned total_of(const usbsim::Model& m, Group g) {
    const unsigned totals[] = {1, m.do_, m.di, m.ai, m.ao, m.pi};  // in the order of Group
    return totals[static_cast<int>(g)];
}

nvValue open_usb(const Module& m) {
    return icpusb_opendevice(icp::make::text(m.model), icp::make::integer(m.board));
}

const char* const port = "COM1,115200,N,8,1";

}  // namespace

Bench set_up(const Signature& s) {
    usbsim::use_default_rig();
    pacsim::use_default_rig();
    icp::recording_enabled = false;
    icp::recorded_commands.clear();
    Bench b;
    for (const auto& m : modules) {
        const unsigned total = total_of(*usbsim::find_model(m.model), s.group);
        if (total == 0 && b.usb_without.isNull()) b.usb_without = open_usb(m);
        if (total == 0 || !b.model.empty()) continue;
        b.model = m.model;
        b.board = m.board;
        b.total = total;
        b.usb_closed = open_usb(m);
        icpusb_closedevice(b.usb_closed);
        b.usb = open_usb(m);
    }
    if (b.model.empty()) throw std::logic_error("no module of the default rig has the group");
    b.com_closed = icpcom_opendevice(icp::make::text(port));
    icpcom_closedevice(b.com_closed);
    b.com = icpcom_opendevice(icp::make::text(port));
    icp::usb_last_error = 0;
    clear_calls();
    return b;
}

nvValue valid(const icp::Function& f, const Signature& s, std::size_t position, const Bench& b) {
    const std::string_view exp = f.export_name;
    switch (s.params.at(position)) {
        case Param::UsbHandle: return b.usb;
        case Param::ComHandle: return b.com;
        case Param::Integer:
        case Param::Unsigned: return icp::make::integer(1);
        case Param::Real: return icp::make::real(1.5);
        case Param::Boolean: return icp::make::boolean(true);
        case Param::String:
            if (exp.find("last_error") != std::string_view::npos) return icp::make::text("s");
            if (exp == "icpcom_opendevice") return icp::make::text(port);
            return icp::make::text("$01M");
        case Param::IdOrCode: return icp::make::text(b.model);
        case Param::Channels:
            return icp::make::vector(b.total, [](unsigned) { return icp::make::integer(1); });
        case Param::Commands: return icp::make::vector(1, [](unsigned) { return icp::make::text("$01M"); });
    }
    return {};
}

std::vector<nvValue> valid_args(const icp::Function& f, const Signature& s, const Bench& b) {
    std::vector<nvValue> args;
    for (std::size_t i = 0; i < s.params.size(); ++i) args.push_back(valid(f, s, i, b));
    return args;
}

std::vector<std::string> sdk_calls() {
    std::vector<std::string> out = usbsim::calls();
    for (auto& line : pacsim::calls())
        if (line.rfind("dcon", 0) != 0) out.push_back(line);
    return out;
}

void clear_calls() {
    usbsim::clear_calls();
    pacsim::clear_calls();
}

std::string call_name(const std::string& line) { return line.substr(0, line.find('(')); }

bool before_arguments(const std::string& line, const Signature& s) {
    constexpr const char* totals[] = {"", "GetDOTotal", "GetDITotal", "GetAITotal", "GetAOTotal", "GetPITotal"};
    if (s.group != Group::None && call_name(line) == totals[static_cast<int>(s.group)]) return true;
    return line == "pac_SetLastError(0)";
}

std::string describe(const nvValue& v) {
    std::string r = v.repr();
    return r.size() > 60 ? r.substr(0, 57) + "..." : r;
}

std::int32_t error_state(const Signature& s) {
    return s.usb ? icp::usb_last_error : static_cast<std::int32_t>(pac_GetLastError());
}

nvValue wide(long long i) { return nvValue(NuvarelMath::ValueTypes::nvInteger(i)); }

}  // namespace reliability
