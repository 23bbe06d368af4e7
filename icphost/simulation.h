// The simulated rig behind icphost: loading it, tracing the SDK calls, and
// the directives with which a script rehearses what hardware does.
//
//   :time +1500ms                 the clocks of both SDKs run on (ms or s)
//   :unplug USB2019 1             a USB module unplugged, and plugged again
//   :plug USB2019 1
//   :silence COM1 3               a serial module stops answering, and again
//   :answer COM1 3
//   :fault NAME CODE [COUNT]      the next COUNT (1) calls of an SDK function fail
//   :signal USB2019 1 ai 0 2.5    an input's signal (see signal_usage)
//   :trace on|off                 every SDK call and DCON line as it happens
//   :rig FILE                     another rig (JSON)
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace icphost {

// The whole of a file, byte for byte; false when it cannot be read.
bool read_file(const std::string& path, std::string* text);

// Loads both simulators from a JSON rig file, or the built-in rig for an
// empty path. Both check the whole text before either loads anything, so a
// faulty rig leaves the rig as it was. On a fault: false and *error.
bool load_rig(const std::string& path, std::string* error);

class Simulation {
public:
    // Trace lines and the directives' own trace lines go to `out`.
    Simulation(std::ostream& out, bool trace);
    ~Simulation();
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    void set_trace(bool on);
    bool tracing() const { return trace_; }

    // Runs a directive, the text after its ':'. Prints nothing unless
    // tracing; throws std::runtime_error with a message for the user.
    void run(std::string_view directive);

    // The directives' names ("time", "plug", ...) and one usage line each.
    static const std::vector<std::string>& names();
    static std::string usage();

private:
    std::ostream& out_;
    bool trace_ = false;
};

}  // namespace icphost
