// The file a loaded Windows module (a DLL, or the program itself) was loaded
// from. GetModuleFileNameW cuts the name to the buffer without saying so
// other than by filling it, so the buffer grows until the name fits.
#pragma once

#if defined(_WIN32)
#  ifndef NOMINMAX
#    define NOMINMAX
#  endif
#  ifndef WIN32_LEAN_AND_MEAN
#    define WIN32_LEAN_AND_MEAN
#  endif
#  include <windows.h>

#  include <filesystem>
#  include <string>

namespace icp_platform {

// The module's full path; nullptr is the program. Empty when Windows cannot tell.
inline std::filesystem::path module_file(HMODULE module) {
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n = GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
        if (n == 0) return {};
        if (n < name.size()) {
            name.resize(n);
            return std::filesystem::path(name);
        }
        name.resize(name.size() * 2);
    }
}

}  // namespace icp_platform
#endif
