// The simulated rig behind icphost: loading it, and the directives with
// which a script rehearses what hardware does (the shared directive table of
// platform/control), their lines printed on icphost's output.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "icp_control/directives.h"

namespace icphost {

using icp_control::load_rig;
using icp_control::read_file;

class Simulation {
public:
    // Trace lines and the directives' own trace lines go to `out`.
    Simulation(std::ostream& out, bool trace);
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    void set_trace(bool on) { control_.set_trace(on); }
    // The loaded plug-in does not use icphost's stand-ins: the directives
    // that change them are refused, saying so with `why`.
    void set_unreachable(std::string why) { control_.set_unreachable(std::move(why)); }
    bool tracing() const { return control_.tracing(); }

    // Runs a directive, the text after its ':'. Prints nothing unless
    // tracing; throws std::runtime_error with a message for the user.
    void run(std::string_view directive) { control_.run(directive); }

    // The directives' names ("time", "plug", ...) and one usage line each.
    static const std::vector<std::string>& names();
    static std::string usage() { return icp_control::usage(); }

private:
    icp_control::Control control_;
};

}  // namespace icphost
