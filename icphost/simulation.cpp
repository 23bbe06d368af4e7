#include "icphost/simulation.h"

namespace icphost {

namespace {

// A line arrives while a script line runs: it goes out at once, on the same
// stream as the script's values, so that both keep their order.
void print_line(const char* line, void* context) {
    *static_cast<std::ostream*>(context) << line << '\n' << std::flush;
}

}  // namespace

Simulation::Simulation(std::ostream& out, bool trace) : control_(&print_line, &out) { set_trace(trace); }

const std::vector<std::string>& Simulation::names() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> out;
        for (const auto& d : icp_control::directives()) out.emplace_back(d.name);
        return out;
    }();
    return all;
}

}  // namespace icphost
