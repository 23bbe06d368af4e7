#include "plugin/catalogue.h"

#include <array>
#include <string>

#include "plugin/state.h"

namespace icp {

namespace groups {
// One line per group of script functions.
extern const std::span<const Function> frame;
extern const std::span<const Function> usb_device;
extern const std::span<const Function> usb_info;
extern const std::span<const Function> usb_digital;
extern const std::span<const Function> usb_analog_input;
extern const std::span<const Function> usb_analog_output;
extern const std::span<const Function> usb_pulse;
extern const std::span<const Function> com_port;
extern const std::span<const Function> com_commands;
extern const std::span<const Function> com_io;
extern const std::span<const Function> com_watchdog;
extern const std::span<const Function> com_pwm;
}  // namespace groups

namespace {
const std::span<const Function>* const all_groups[] = {
    &groups::frame,
    &groups::usb_device,
    &groups::usb_info,
    &groups::usb_digital,
    &groups::usb_analog_input,
    &groups::usb_analog_output,
    &groups::usb_pulse,
    &groups::com_port,
    &groups::com_commands,
    &groups::com_io,
    &groups::com_watchdog,
    &groups::com_pwm,
};
}  // namespace

std::vector<const Function*> catalogue() {
    std::vector<const Function*> out;
    for (const auto* group : all_groups)
        for (const auto& f : *group) out.push_back(&f);
    return out;
}

nvValue script_name(const char* name) {
    using namespace NuvarelMath::ValueTypes;
    std::vector<CharFormat> formats;
    std::string text(name);
    nvSymbolicValue symbolic(text, true, formats);
    nvValue result(symbolic);
    return result;
}

// The items are built from the last to the first, each a heap value handed
// over to vector_f with the call; the math object's library owns them then.
nvValue describe(std::span<const char* const> items) {
    using namespace NuvarelMath::ValueTypes;
    std::array<nvValue*, max_help_items> heap{};
    const std::size_t n = items.size();
    for (std::size_t i = n; i-- > 0;) {
        std::vector<CharFormat> formats;
        std::string text(items[i]);
        nvSymbolicValue symbolic(text, true, formats);
        heap[i] = new nvValue(symbolic);
    }
    auto& m = math_object();
    const auto count = static_cast<unsigned>(n);
    switch (n) {
        case 2: return m.vector_f(count, heap[0], heap[1]);
        case 3: return m.vector_f(count, heap[0], heap[1], heap[2]);
        case 4: return m.vector_f(count, heap[0], heap[1], heap[2], heap[3]);
        case 5: return m.vector_f(count, heap[0], heap[1], heap[2], heap[3], heap[4]);
        case 6: return m.vector_f(count, heap[0], heap[1], heap[2], heap[3], heap[4], heap[5]);
        default: return m.vector_f(count, heap[0], heap[1], heap[2], heap[3], heap[4], heap[5], heap[6]);
    }
}

}  // namespace icp
