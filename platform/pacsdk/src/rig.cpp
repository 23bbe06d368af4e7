#include "rig.h"

#include <algorithm>

#include "dcon_text.h"

namespace pacsdk {

namespace {

// Rates a serial driver takes: the DCON ladder and the common higher ones.
constexpr uint32_t baud_rates[] = {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};

class EmulatedPort final : public Port {
public:
    explicit EmulatedPort(std::shared_ptr<EmulatedLine> line) : line_(std::move(line)) {}

    bool simulated() const override { return true; }
    void discard_input() override { input_.clear(); }
    Io write(std::string_view bytes, uint32_t) override {
        input_ += line_->hear(bytes);
        return Io::done;
    }
    // Every reply is in as soon as the command is out: nothing more will
    // come, so an empty line is a timeout at once.
    Io read(std::string* out, uint32_t) override {
        if (input_.empty()) return Io::timeout;
        *out += input_;
        input_.clear();
        return Io::done;
    }

private:
    std::shared_ptr<EmulatedLine> line_;
    std::string input_;
};

}  // namespace

bool valid_port_name(std::string_view name) {
    if (name.size() < 4 || name.size() > 6 || name.substr(0, 3) != "COM" || name[3] == '0') return false;
    auto n = parse_decimal(name.substr(3));
    return n && *n >= 1 && *n <= 255;
}

bool EmulatedLine::add(std::unique_ptr<Module> module) {
    int address = module->address();
    if (modules_.count(address)) return false;
    module->advance(now_);
    modules_[address] = std::move(module);
    return true;
}

Module* EmulatedLine::find(int address) {
    auto it = modules_.find(address);
    return it == modules_.end() ? nullptr : it->second.get();
}

std::string EmulatedLine::hear(std::string_view bytes, const Seen& seen) {
    pending_ += bytes;
    std::string replies;
    for (std::size_t cr; (cr = pending_.find('\r')) != std::string::npos;) {
        std::string line = pending_.substr(0, cr);
        pending_.erase(0, cr + 1);
        auto reply = deliver(line);
        if (seen) seen(line, reply);
        if (reply) replies += *reply;
    }
    return replies;
}

std::optional<std::string> EmulatedLine::deliver(std::string_view line) {
    std::optional<std::string> answer;
    for (auto& [address, module] : modules_) {
        auto reply = module->receive(line);
        if (reply && !answer) answer = std::move(reply);
    }
    return answer;
}

void EmulatedLine::advance(uint64_t now_us) {
    now_ = now_us;
    for (auto& [address, module] : modules_) module->advance(now_us);
}

bool Rig::add_port(const std::string& name) {
    if (!valid_port_name(name) || lines_.count(name) || devices_.count(name)) return false;
    auto line = std::make_shared<EmulatedLine>();
    line->advance(now_);
    lines_[name] = std::move(line);
    return true;
}

bool Rig::add_device(const std::string& name, const std::string& path) {
    if (!valid_port_name(name) || lines_.count(name) || devices_.count(name)) return false;
    devices_[name] = path;
    return true;
}

const std::string* Rig::device(const std::string& name) const {
    auto it = devices_.find(name);
    return it == devices_.end() ? nullptr : &it->second;
}

std::vector<std::string> Rig::line_names() const {
    std::vector<std::string> names;
    for (const auto& [name, line] : lines_) names.push_back(name);
    return names;
}

EmulatedLine* Rig::line(const std::string& name) {
    auto it = lines_.find(name);
    return it == lines_.end() ? nullptr : it->second.get();
}

Module* Rig::module(const std::string& port, int address) {
    EmulatedLine* l = line(port);
    return l ? l->find(address) : nullptr;
}

void Rig::advance(uint64_t now_us) {
    now_ = now_us;
    for (auto& [name, line] : lines_) line->advance(now_us);
}

std::unique_ptr<Port> Rig::open(const LineSettings& settings) {
    auto it = lines_.find(settings.name);
    if (it == lines_.end()) return nullptr;
    if (std::find(std::begin(baud_rates), std::end(baud_rates), settings.baud) == std::end(baud_rates))
        return nullptr;
    return std::make_unique<EmulatedPort>(it->second);
}

std::unique_ptr<Rig> default_rig() {
    auto rig = std::make_unique<Rig>();
    rig->add_port("COM1");
    EmulatedLine* line = rig->line("COM1");
    ModuleSetup ai;
    ai.inputs = {0.5, 1.0, 1.5, 2.0, 2.5, 3.0, 3.5, 4.0};
    line->add(make_module(Kind::ai, 1, ai));
    line->add(make_module(Kind::ao, 2, {}));
    line->add(make_module(Kind::dio, 3, {}));
    line->add(make_module(Kind::pwm, 4, {}));
    return rig;
}

}  // namespace pacsdk
