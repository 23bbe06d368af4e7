// SDK functions: scan and list, instances, open and close, device
// information and settings.
#include <cstring>

#include "sim.h"

using namespace usbsim;
using namespace usbsim::detail;

namespace {

constexpr std::uint32_t kSoftWdtMin = 100;
constexpr std::uint32_t kSoftWdtMax = 30u * 60u * 1000u;

template <class T, class Get>
std::int32_t get_scalar(const char* name, USBIO_HANDLE h, T* out, Get get) {
    return read_scalar(name, h, Group::None, out, get);
}

// Copies at most 31 characters and the terminating zero.
void copy_text(const std::string& text, char* out) {
    std::size_t n = text.size() < USBIO_TEXT_SIZE - 1 ? text.size() : USBIO_TEXT_SIZE - 1;
    std::memcpy(out, text.data(), n);
    out[n] = '\0';
}

std::uint32_t device_id(const Module& m) {
    return std::uint32_t{m.model->type_code} | (std::uint32_t{m.board()} << 16);
}

}  // namespace

extern "C" {

USBIO_API int32_t ScanDevice(void) {
    auto held = lock();
    Sim& s = sim();
    std::int32_t result = 0;
    if (!s.take_fault("ScanDevice", result)) {
        for (const auto& m : s.modules)
            if (m->plugged) ++result;
    }
    record("ScanDevice", "", fmt::num(result), held);
    return result;
}

USBIO_API int32_t ListDevice(uint16_t typeCodes[128], uint8_t boardIds[128]) {
    auto held = lock();
    Sim& s = sim();
    std::int32_t result = 0;
    if (!s.take_fault("ListDevice", result) && typeCodes && boardIds) {
        for (const auto& m : s.modules) {
            if (!m->plugged) continue;
            if (result == USBIO_MAX_DEVICES) break;
            typeCodes[result] = m->model->type_code;
            boardIds[result] = m->board();
            ++result;
        }
    }
    record("ListDevice", "", fmt::num(result), held);
    return result;
}

USBIO_API USBIO_HANDLE CreateInstance(void) {
    auto held = lock();
    Sim& s = sim();
    std::int32_t code = 0;
    Instance* in = nullptr;
    if (!s.take_fault("CreateInstance", code)) {
        auto made = std::make_unique<Instance>();
        made->id = static_cast<unsigned>(s.instances.size() + 1);
        in = made.get();
        s.instances.push_back(std::move(made));
    }
    record("CreateInstance", "", in ? fmt::instance(in, in) : "null", held);
    return in;
}

namespace {
void release(Instance& in) {
    if (!in.module) return;
    in.module->open = false;
    in.module->holder = 0;
    in.module = nullptr;
}
}  // namespace

USBIO_API void DisposeInstance(USBIO_HANDLE h) {
    auto held = lock();
    Sim& s = sim();
    Instance* in = s.find(h);
    const std::string args = fmt::instance(h, s.find(h, true));
    std::int32_t code = 0;
    if (!s.take_fault("DisposeInstance", code) && in) {
        release(*in);
        in->disposed = true;
    }
    record("DisposeInstance", args, "", held);
}

USBIO_API int32_t OpenDevice(USBIO_HANDLE h, uint16_t typeCode, uint8_t boardId) {
    auto held = lock();
    Sim& s = sim();
    Instance* in = s.find(h);
    const std::string args =
        fmt::instance(h, s.find(h, true)) + ", " + fmt::num(typeCode) + ", " + fmt::num(boardId);
    std::int32_t code = USBIO_OK;
    if (s.take_fault("OpenDevice", code)) {
    } else if (!in) {
        code = USBIO_ERR_HANDLE_INVALID;
    } else if (in->module) {
        code = USBIO_ERR_ALREADY_OPEN;
    } else {
        Module* m = s.find_module(typeCode, boardId);
        if (!m || !m->plugged) {
            code = USBIO_ERR_DEVICE_NOT_FOUND;
        } else if (m->open) {
            code = USBIO_ERR_DEVICE_BUSY;
        } else {
            in->module = m;
            m->open = true;
            m->holder = in->id;
            // Opening sets the library's side of the link to its defaults.
            m->comm_timeout_ms = 100;
            m->auto_reset_wdt = true;
            m->last_contact = s.now;
            m->wdt_expired = false;
        }
    }
    record("OpenDevice", args, fmt::num(code), held);
    return code;
}

USBIO_API int32_t CloseDevice(USBIO_HANDLE h) {
    auto held = lock();
    Sim& s = sim();
    Instance* in = s.find(h);
    const std::string args = fmt::instance(h, s.find(h, true));
    std::int32_t code = USBIO_OK;
    if (s.take_fault("CloseDevice", code)) {
    } else if (!in) {
        code = USBIO_ERR_HANDLE_INVALID;
    } else if (!in->module) {
        code = USBIO_ERR_NOT_OPEN;
    } else {
        release(*in);  // also while unplugged: the library lets go
    }
    record("CloseDevice", args, fmt::num(code), held);
    return code;
}

USBIO_API int32_t SYNCDevice(USBIO_HANDLE h) {
    return device_call("SYNCDevice", h, Group::None, no_args(), [](Module&) { return USBIO_OK; });
}

USBIO_API int32_t SetCommTimeout(USBIO_HANDLE h, uint32_t timeoutMs) {
    return device_call(
        "SetCommTimeout", h, Group::None, [&](const Module*) { return ", " + fmt::num(timeoutMs); },
        [&](Module& m) {
            m.comm_timeout_ms = timeoutMs;
            return USBIO_OK;
        });
}

USBIO_API int32_t GetCommTimeout(USBIO_HANDLE h, uint32_t* timeoutMs) {
    return get_scalar("GetCommTimeout", h, timeoutMs, [](const Module& m) { return m.comm_timeout_ms; });
}

USBIO_API int32_t SetAutoResetWDT(USBIO_HANDLE h, int32_t enable) {
    return device_call(
        "SetAutoResetWDT", h, Group::None, [&](const Module*) { return ", " + fmt::num(enable); },
        [&](Module& m) {
            m.auto_reset_wdt = enable != 0;
            return USBIO_OK;
        });
}

USBIO_API int32_t RefreshDeviceInfo(USBIO_HANDLE h) {
    return device_call("RefreshDeviceInfo", h, Group::None, no_args(), [](Module&) { return USBIO_OK; });
}

USBIO_API int32_t SetSoftWDTTimeout(USBIO_HANDLE h, uint32_t timeoutMs) {
    return device_call(
        "SetSoftWDTTimeout", h, Group::None, [&](const Module*) { return ", " + fmt::num(timeoutMs); },
        [&](Module& m) {
            if (timeoutMs < kSoftWdtMin || timeoutMs > kSoftWdtMax) return USBIO_ERR_PARAMETER;
            m.soft_wdt_timeout_ms = timeoutMs;
            return USBIO_OK;
        });
}

USBIO_API int32_t GetSoftWDTTimeout(USBIO_HANDLE h, uint32_t* timeoutMs) {
    return get_scalar("GetSoftWDTTimeout", h, timeoutMs, [](const Module& m) { return m.soft_wdt_timeout_ms; });
}

USBIO_API int32_t GetDeviceID(USBIO_HANDLE h, uint32_t* deviceId) {
    return get_scalar("GetDeviceID", h, deviceId, device_id);
}

USBIO_API int32_t GetFwVer(USBIO_HANDLE h, uint16_t* version) {
    return get_scalar("GetFwVer", h, version, [](const Module& m) { return m.firmware; });
}

USBIO_API int32_t GetDeviceNickName(USBIO_HANDLE h, char nickname[32]) {
    return device_call("GetDeviceNickName", h, Group::None, no_args(), [&](Module& m) {
        if (!nickname) return USBIO_ERR_PARAMETER;
        copy_text(m.nickname, nickname);
        return USBIO_OK;
    });
}

USBIO_API int32_t SetDeviceNickName(USBIO_HANDLE h, const char nickname[32]) {
    return device_call(
        "SetDeviceNickName", h, Group::None, [&](const Module*) { return ", " + fmt::text(nickname); },
        [&](Module& m) {
            if (!nickname) return USBIO_ERR_PARAMETER;
            const void* end = std::memchr(nickname, '\0', USBIO_TEXT_SIZE);
            if (!end) return USBIO_ERR_PARAMETER;  // 32 characters or more do not fit
            m.nickname.assign(nickname, static_cast<const char*>(end));
            return USBIO_OK;
        });
}

USBIO_API int32_t GetDeviceSN(USBIO_HANDLE h, char serial[32]) {
    return device_call("GetDeviceSN", h, Group::None, no_args(), [&](Module& m) {
        if (!serial) return USBIO_ERR_PARAMETER;
        copy_text(m.serial, serial);
        return USBIO_OK;
    });
}

USBIO_API int32_t GetSupportIOMask(USBIO_HANDLE h, uint8_t* mask) {
    return get_scalar("GetSupportIOMask", h, mask, [](const Module& m) { return m.model->support_mask; });
}

USBIO_API int32_t GetDITotal(USBIO_HANDLE h, uint8_t* total) {
    return get_scalar("GetDITotal", h, total, [](const Module& m) { return m.model->di; });
}

USBIO_API int32_t GetDOTotal(USBIO_HANDLE h, uint8_t* total) {
    return get_scalar("GetDOTotal", h, total, [](const Module& m) { return m.model->do_; });
}

USBIO_API int32_t GetAITotal(USBIO_HANDLE h, uint8_t* total) {
    return get_scalar("GetAITotal", h, total, [](const Module& m) { return m.model->ai; });
}

USBIO_API int32_t GetAOTotal(USBIO_HANDLE h, uint8_t* total) {
    return get_scalar("GetAOTotal", h, total, [](const Module& m) { return m.model->ao; });
}

USBIO_API int32_t GetPITotal(USBIO_HANDLE h, uint8_t* total) {
    return get_scalar("GetPITotal", h, total, [](const Module& m) { return m.model->pi; });
}

USBIO_API int32_t GetPOTotal(USBIO_HANDLE h, uint8_t* total) {
    return get_scalar("GetPOTotal", h, total, [](const Module& m) { return m.model->po; });
}

USBIO_API int32_t SetUserDefinedBoardID(USBIO_HANDLE h, uint8_t boardId) {
    return device_call(
        "SetUserDefinedBoardID", h, Group::None, [&](const Module*) { return ", " + fmt::num(boardId); },
        [&](Module& m) {
            if (boardId < 16 || boardId > 127) return USBIO_ERR_PARAMETER;
            // Two modules of one model may not answer to the same board ID.
            if (m.rotary_board == 0) {
                Module* other = sim().find_module(m.model->type_code, boardId);
                if (other && other != &m) return USBIO_ERR_PARAMETER;
            }
            m.user_board = boardId;
            return USBIO_OK;
        });
}

USBIO_API int32_t LoadDefault(USBIO_HANDLE h) {
    return device_call("LoadDefault", h, Group::None, no_args(), [](Module& m) {
        load_defaults(m);
        return USBIO_OK;
    });
}

}  // extern "C"
