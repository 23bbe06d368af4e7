// Bytes as the replies of a serial line: the PAC SDK stand-in's DCON client
// sends its commands to a port that answers with whatever the input holds,
// and must judge every reply without reading or writing out of bounds.
//
// Layout: byte 0 holds the checksum mode (bit 7) and the number of calls
// (low bits); then one byte per call: the SDK function (low 6 bits) and a
// channel and total choice (high 2 bits); the rest of the input is the line,
// one reply per CR. A last reply without its CR arrives cut, then nothing.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "PACSDK.h"
#include "library.h"
#include "pacsdk_sim.h"
#include "port.h"

namespace {

// Each read hands over the next reply with its CR; a rest without a CR
// arrives once, and after it the line stays silent (a timeout).
class ScriptedPort final : public pacsdk::Port {
public:
    explicit ScriptedPort(std::string_view line) : line_(line) {}
    bool simulated() const override { return true; }
    void discard_input() override {}
    pacsdk::Io write(std::string_view, std::uint32_t) override { return pacsdk::Io::done; }
    pacsdk::Io read(std::string* out, std::uint32_t) override {
        if (line_.empty()) return pacsdk::Io::timeout;
        const std::size_t cr = line_.find('\r');
        const std::size_t n = cr == std::string_view::npos ? line_.size() : cr + 1;
        out->append(line_.substr(0, n));
        line_.remove_prefix(n);
        return pacsdk::Io::done;
    }

private:
    std::string_view line_;
};

using Call = std::function<void(PAC_HANDLE, int slot, int channel, int total)>;

const Call calls[] = {
    [](PAC_HANDLE h, int, int, int) {
        char reply[20];
        uart_SendCmd(h, "$01M", reply);
    },
    [](PAC_HANDLE h, int s, int c, int t) { float v; pac_ReadAI(h, s, c, t, &v); },
    [](PAC_HANDLE h, int s, int c, int t) { float v; pac_ReadAO(h, s, c, t, &v); },
    [](PAC_HANDLE h, int s, int c, int t) { pac_WriteAO(h, s, c, t, 1.5f); },
    [](PAC_HANDLE h, int s, int, int t) { PAC_DWORD v; pac_ReadDI_MF(h, s, t, &v); },
    [](PAC_HANDLE h, int s, int, int t) { PAC_DWORD v; pac_ReadDO_MF(h, s, t, &v); },
    [](PAC_HANDLE h, int s, int, int t) { pac_WriteDO_MF(h, s, t, 0x5A); },
    [](PAC_HANDLE h, int s, int, int t) { uint32_t v; pac_ReadModulePowerOnValueDO_MF(h, s, t, &v); },
    [](PAC_HANDLE h, int s, int, int t) { pac_WriteModulePowerOnValueDO_MF(h, s, t, 3); },
    [](PAC_HANDLE h, int s, int, int t) { uint32_t v; pac_ReadModuleSafeValueDO_MF(h, s, t, &v); },
    [](PAC_HANDLE h, int s, int, int t) { pac_WriteModuleSafeValueDO_MF(h, s, t, 3); },
    [](PAC_HANDLE h, int s, int c, int t) { float v; pac_ReadModulePowerOnValueAO_MF(h, s, c, t, &v); },
    [](PAC_HANDLE h, int s, int c, int t) { pac_WriteModulePowerOnValueAO_MF(h, s, c, t, 2.0f); },
    [](PAC_HANDLE h, int s, int c, int t) { float v; pac_ReadModuleSafeValueAO_MF(h, s, c, t, &v); },
    [](PAC_HANDLE h, int s, int c, int t) { pac_WriteModuleSafeValueAO_MF(h, s, c, t, -2.0f); },
    [](PAC_HANDLE h, int s, int, int) { pac_GetModuleWDTStatus(h, s); },
    [](PAC_HANDLE h, int s, int, int) {
        short enabled;
        uint32_t timeout;
        int overwrite;
        pac_GetModuleWDTConfig(h, s, &enabled, &timeout, &overwrite);
    },
    [](PAC_HANDLE h, int s, int, int) { pac_SetModuleWDTConfig(h, s, 1, 10, 0); },
    [](PAC_HANDLE h, int s, int, int) { pac_ResetModuleWDT(h, s); },
    [](PAC_HANDLE h, int s, int, int) { pac_RefreshModuleWDT(h, s); },
    [](PAC_HANDLE h, int s, int c, int) { pac_SetPWMDuty(h, s, static_cast<short>(c), 50.0f); },
    [](PAC_HANDLE h, int s, int c, int) { float v; pac_GetPWMDuty(h, s, static_cast<short>(c), &v); },
    [](PAC_HANDLE h, int s, int c, int) { pac_SetPWMFrequency(h, s, static_cast<short>(c), 1000); },
    [](PAC_HANDLE h, int s, int c, int) { PAC_DWORD v; pac_GetPWMFrequency(h, s, static_cast<short>(c), &v); },
    [](PAC_HANDLE h, int s, int c, int) { pac_SetPWMMode(h, s, static_cast<short>(c), 1); },
    [](PAC_HANDLE h, int s, int c, int) { PAC_DWORD v; pac_GetPWMMode(h, s, static_cast<short>(c), &v); },
    [](PAC_HANDLE h, int s, int c, int) { pac_SetPWMDITriggerConfig(h, s, static_cast<short>(c), 1); },
    [](PAC_HANDLE h, int s, int c, int) { short v; pac_GetPWMDITriggerConfig(h, s, static_cast<short>(c), &v); },
    [](PAC_HANDLE h, int s, int, int) { pac_SetPWMStart(h, s, 0x3); },
    [](PAC_HANDLE h, int s, int c, int) { pac_SetPWMSynChannel(h, s, static_cast<short>(c), 1); },
    [](PAC_HANDLE h, int s, int, int) { pac_SyncPWMStart(h, s, 1); },
    [](PAC_HANDLE h, int s, int, int) { pac_SavePWMConfig(h, s); },
    [](PAC_HANDLE h, int s, int, int) {
        unsigned char pwm[32];
        unsigned char di[32];
        pac_GetPWMDIOStatus(h, s, pwm, di);
    },
    [](PAC_HANDLE h, int s, int c, int) { pac_SetPWMPulseCount(h, s, static_cast<short>(c), 5); },
    [](PAC_HANDLE h, int s, int c, int) { PAC_DWORD v; pac_GetPWMPulseCount(h, s, static_cast<short>(c), &v); },
    [](PAC_HANDLE, int, int, int) {
        char message[32];
        pac_GetErrorMessage(pac_GetLastError(), message);
    },
};

constexpr int channels[] = {0, 1, 7, 15};
constexpr int totals[] = {8, 4, 16, 32};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    pacsim::reset();
    const std::uint8_t head = data[0];
    const std::size_t n = std::min<std::size_t>(head & 0x0F, size - 1);
    const std::string_view line(reinterpret_cast<const char*>(data) + 1 + n, size - 1 - n);

    PAC_HANDLE port = nullptr;
    {
        auto& library = pacsdk::library();
        std::lock_guard lock(library.mutex);
        pacsdk::LineSettings settings;
        settings.name = "COM1";
        port = library.add_session(settings, std::make_unique<ScriptedPort>(line));
    }
    uart_EnableCheckSum(port, (head & 0x80) != 0);
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint8_t pick = data[1 + i];
        const std::size_t which = (pick & 0x3F) % std::size(calls);
        calls[which](port, 0x1001, channels[pick >> 6], totals[pick >> 6]);
    }
    return 0;
}
