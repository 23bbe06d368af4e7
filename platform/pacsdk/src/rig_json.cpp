// Reading the "serial" part of a rig file.
#include <icp_platform/rig_json.h>
#include <nlohmann/json.hpp>

#include "rig.h"

namespace pacsdk {

namespace {

using nlohmann::json;

class RigReader {
public:
    RigReader(const std::string& text, std::string* error) : text_(text), error_(error) {}

    std::unique_ptr<Rig> read(const json& doc) {
        if (!doc.is_object()) {
            fail("", "a rig is a JSON object");
            return nullptr;
        }
        auto rig = std::make_unique<Rig>();
        auto serial = doc.find("serial");
        if (serial == doc.end() || serial->is_null()) return rig;
        if (!serial->is_array()) {
            fail("/serial", "\"serial\" must be a list of ports");
            return nullptr;
        }
        for (std::size_t i = 0; i < serial->size(); ++i)
            if (!read_port((*serial)[i], "/serial/" + std::to_string(i), *rig)) return nullptr;
        return rig;
    }

private:
    // Always false, for "return fail(...)".
    bool fail(const std::string& path, const std::string& what) {
        if (error_) *error_ = "line " + std::to_string(icp_platform::rig_line_of(text_, path)) + ": " + what;
        return false;
    }

    bool read_port(const json& entry, const std::string& path, Rig& rig) {
        if (!entry.is_object()) return fail(path, "a serial port entry must be an object");
        auto name = entry.find("port");
        if (name == entry.end()) return fail(path, "a serial port entry needs \"port\"");
        if (!name->is_string() || !valid_port_name(name->get<std::string>()))
            return fail(path + "/port", "\"port\" must be a name COM1 to COM255");
        std::string port = name->get<std::string>();
        if (entry.contains("device")) return read_device(entry, path, port, rig);
        if (!rig.add_port(port)) return fail(path + "/port", "port " + port + " is listed twice");
        auto modules = entry.find("modules");
        if (modules == entry.end() || modules->is_null()) return true;
        if (!modules->is_array()) return fail(path + "/modules", "\"modules\" must be a list");
        for (std::size_t j = 0; j < modules->size(); ++j)
            if (!read_module((*modules)[j], path + "/modules/" + std::to_string(j), port, *rig.line(port)))
                return false;
        return true;
    }

    // {"port": "COM3", "device": "/dev/ttyUSB0"}: the name stands for a real
    // serial device.
    bool read_device(const json& entry, const std::string& path, const std::string& port, Rig& rig) {
        const json& device = entry["device"];
        if (!device.is_string() || device.get<std::string>().empty())
            return fail(path + "/device", "\"device\" must be a device path");
        if (entry.contains("modules")) return fail(path + "/modules", "a port with \"device\" has no \"modules\"");
        if (!rig.add_device(port, device.get<std::string>()))
            return fail(path + "/port", "port " + port + " is listed twice");
        return true;
    }

    bool read_module(const json& m, const std::string& path, const std::string& port, EmulatedLine& line) {
        if (!m.is_object()) return fail(path, "a module entry must be an object");
        auto address = m.find("address");
        if (address == m.end()) return fail(path, "a module needs \"address\"");
        if (!address->is_number_integer() || address->get<int64_t>() < 0 || address->get<int64_t>() > 255)
            return fail(path + "/address", "\"address\" must be an integer 0 to 255");
        auto kind_entry = m.find("kind");
        if (kind_entry == m.end()) return fail(path, "a module needs \"kind\"");
        auto kind = kind_entry->is_string() ? kind_from_name(kind_entry->get<std::string>()) : std::nullopt;
        if (!kind) return fail(path + "/kind", "\"kind\" must be one of ai, ao, dio, pwm");

        ModuleSetup setup;
        if (!read_options(m, path, *kind, setup)) return false;
        int a = static_cast<int>(address->get<int64_t>());
        if (!line.add(make_module(*kind, a, setup)))
            return fail(path + "/address", "address " + std::to_string(a) + " is taken on " + port);
        return true;
    }

    bool read_options(const json& m, const std::string& path, Kind kind, ModuleSetup& setup) {
        if (auto it = m.find("checksum"); it != m.end()) {
            if (!it->is_boolean()) return fail(path + "/checksum", "\"checksum\" must be true or false");
            setup.checksum = it->get<bool>();
        }
        if (auto it = m.find("inputs"); it != m.end()) {
            if (kind == Kind::ai) {
                if (!volts(*it, 8, 1e6, setup.inputs))
                    return fail(path + "/inputs", "\"inputs\" of an ai module: a list of up to 8 numbers");
            } else if (kind == Kind::dio || kind == Kind::pwm) {
                if (!word(*it, 0xFF, setup.input_word))
                    return fail(path + "/inputs", "\"inputs\" of this module: an integer 0 to 255");
            } else {
                return fail(path + "/inputs", "an ao module has no inputs");
            }
        }
        for (const char* key : {"power_on", "safe"}) {
            auto it = m.find(key);
            if (it == m.end()) continue;
            bool power_on = key[0] == 'p';
            std::string where = path + "/" + key;
            if (kind == Kind::ao) {
                if (!volts(*it, 4, 10.0, power_on ? setup.power_on : setup.safe))
                    return fail(where, "\"" + std::string(key) + "\" of an ao module: up to 4 numbers -10 to 10");
            } else if (kind == Kind::dio) {
                if (!word(*it, 0x7F, power_on ? setup.power_on_word : setup.safe_word))
                    return fail(where, "\"" + std::string(key) + "\" of a dio module: an integer 0 to 127");
            } else {
                return fail(where, "only ao and dio modules have \"" + std::string(key) + "\"");
            }
        }
        if (auto it = m.find("combined_values"); it != m.end()) {
            if (kind != Kind::dio || !it->is_boolean())
                return fail(path + "/combined_values", "\"combined_values\" is true or false, on a dio module");
            setup.combined_values = it->get<bool>();
        }
        return true;
    }

    static bool volts(const json& v, std::size_t most, double limit, std::vector<double>& out) {
        if (!v.is_array() || v.size() > most) return false;
        out.clear();
        for (const auto& x : v) {
            if (!x.is_number() || x.get<double>() < -limit || x.get<double>() > limit) return false;
            out.push_back(x.get<double>());
        }
        return true;
    }

    static bool word(const json& v, int64_t most, uint32_t& out) {
        if (!v.is_number_integer() || v.get<int64_t>() < 0 || v.get<int64_t>() > most) return false;
        out = static_cast<uint32_t>(v.get<int64_t>());
        return true;
    }

    const std::string& text_;
    std::string* error_;
};

}  // namespace

std::unique_ptr<Rig> rig_from_json(const std::string& text, std::string* error) {
    auto doc = icp_platform::parse_rig_json(text, error);
    if (!doc) return nullptr;
    return RigReader(text, error).read(*doc);
}

}  // namespace pacsdk
