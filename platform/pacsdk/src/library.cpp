#include "library.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

#include "dcon_text.h"

namespace pacsdk {

namespace {

// Handle values are tokens, not addresses: unique for the life of the
// process, so that a handle closed (or from before a reset) never becomes
// valid again.
constexpr uintptr_t first_token = 0x5AC00000;
std::atomic<uintptr_t> next_token{first_token};

}  // namespace

Library::Library() : rig_(default_rig()) {}

void Library::advance_us(uint64_t us) {
    now_us_ += us;
    rig_->advance(now_us_);
}

void Library::unanswered_ms(uint32_t ms) {
    if (real_time) std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    else advance_us(uint64_t{ms} * 1000);
}

void Library::reset(std::unique_ptr<Rig> rig) {
    sessions_.clear();
    next_number_ = 1;
    now_us_ = 0;
    rig_ = std::move(rig);
    rig_->advance(now_us_);
    log.clear();
}

PAC_HANDLE Library::add_session(const LineSettings& line, std::unique_ptr<Port> port) {
    uintptr_t token = next_token.fetch_add(16);
    Session& s = sessions_[token];
    s.number = next_number_++;
    s.name = line.name;
    s.line = line;
    s.port = std::move(port);
    return reinterpret_cast<PAC_HANDLE>(token);
}

Session* Library::open_session(PAC_HANDLE handle) {
    auto it = sessions_.find(reinterpret_cast<uintptr_t>(handle));
    if (it == sessions_.end() || !it->second.port) return nullptr;
    return &it->second;
}

bool Library::is_open(const std::string& name) const {
    for (const auto& [token, s] : sessions_)
        if (s.port && s.name == name) return true;
    return false;
}

std::string Library::handle_text(PAC_HANDLE handle) const {
    auto value = reinterpret_cast<uintptr_t>(handle);
    auto it = sessions_.find(value);
    if (it != sessions_.end()) return "port#" + std::to_string(it->second.number);
    if (handle == PAC_INVALID_HANDLE) return "-1";
    std::string digits = hex(static_cast<uint32_t>(uint64_t{value} >> 32), 8) + hex(static_cast<uint32_t>(value), 8);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
    return "0x" + digits;
}

// Never destroyed: a clock thread may still call in while the process
// exits.
Library& library() {
    static Library& instance = *new Library;
    return instance;
}

std::string escaped(std::string_view text, bool quote) {
    std::string out;
    for (char ch : text) {
        auto c = static_cast<unsigned char>(ch);
        if (c == '\\' || (quote && c == '"')) {
            out += '\\';
            out += ch;
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\n') {
            out += "\\n";
        } else if (c < 0x20 || c == 0x7F) {
            out += "\\x" + hex(c, 2);
        } else {
            out += ch;
        }
    }
    return out;
}

std::string quoted(const char* text) { return text ? "\"" + escaped(text, true) + "\"" : "NULL"; }

}  // namespace pacsdk
