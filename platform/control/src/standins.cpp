#include "standins.h"

#include <algorithm>
#include <vector>

#include <icp_platform/format.h>
#include <icp_platform/names.h>

#include "icp_control/directives.h"

namespace icp_control {

UsbModule usb_module(const std::string& model, const std::string& board) {
    const usbsim::Model* m = usbsim::find_model(upper(model));
    if (m == nullptr) {
        std::vector<std::string> ids;
        for (const auto& each : usbsim::models()) ids.emplace_back(each.id);
        throw Refused("unknown USB model " + icp_platform::quoted(model) +
                      icp_platform::did_you_mean(icp_platform::nearest_names(ids, model)));
    }
    const auto id = static_cast<std::uint8_t>(integer(board, "a board ID", 0, 255));
    return {m->type_code, id, std::string(m->id) + " board " + std::to_string(id)};
}

bool is_port(const std::string& word) { return upper(word).starts_with("COM"); }

SerialModule serial_module(const std::string& port, const std::string& address) {
    const int a = static_cast<int>(integer(address, "a DCON address", 0, 255));
    return {upper(port), a, "module " + std::to_string(a) + " on " + upper(port)};
}

void found(bool found, const std::string& name) {
    if (!found) throw Refused("the rig has no " + name);
}

bool usb_function(const std::string& name) { return usbsim::has_function(name); }
bool serial_function(const std::string& name) { return pacsim::has_function(name); }

void advance_clocks(std::uint64_t ms) {
    for (std::uint64_t left = ms; left > 0;) {
        const auto step = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, 1u << 30));
        usbsim::advance_ms(step);
        pacsim::advance_ms(step);
        left -= step;
    }
}

std::string clocks_text() {
    return "the USB clock at " + std::to_string(usbsim::now_ms()) + " ms, the serial clock at " +
           std::to_string(pacsim::now_ms()) + " ms";
}

}  // namespace icp_control
