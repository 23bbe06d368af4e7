#include "icphost/plugin.h"

#include <cstdint>
#include <cstring>
#include <exception>
#include <string_view>
#include <unordered_map>
#include <utility>

#if defined(_WIN32)
#  include <icp_platform/module_file.h>
#else
#  include <dlfcn.h>
#  include <elf.h>
#  include <fcntl.h>
#  include <link.h>
#  include <sys/stat.h>
#  include <unistd.h>
#  include <bit>
#endif

namespace icphost {

namespace {

#if defined(_WIN32)

std::string last_error_text() {
    const DWORD code = GetLastError();
    char buffer[512] = {};
    DWORD n = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                             code, 0, buffer, sizeof buffer, nullptr);
    while (n > 0 && (buffer[n - 1] == '\r' || buffer[n - 1] == '\n' || buffer[n - 1] == ' ')) --n;
    std::string text(buffer, n);
    return text.empty() ? "error " + std::to_string(code) : text;
}

// The names of the module's export directory, in the order of its name
// table. Forwarded exports (an RVA inside the directory) are not this
// module's code and are left out.
// The names stay in the loaded image: the views live as long as the module.
std::vector<std::string_view> pe_exports(HMODULE module) {
    const auto* base = reinterpret_cast<const unsigned char*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    if (dos->e_magic != IMAGE_DOS_SIGNATURE) throw LoadError("no DOS header");
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    if (nt->Signature != IMAGE_NT_SIGNATURE) throw LoadError("no PE header");
    const IMAGE_DATA_DIRECTORY& entry =
        nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    if (entry.VirtualAddress == 0 || entry.Size == 0) return {};
    const auto* dir =
        reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + entry.VirtualAddress);
    const auto* names = reinterpret_cast<const DWORD*>(base + dir->AddressOfNames);
    const auto* ordinals = reinterpret_cast<const WORD*>(base + dir->AddressOfNameOrdinals);
    const auto* functions = reinterpret_cast<const DWORD*>(base + dir->AddressOfFunctions);
    std::vector<std::string_view> out;
    for (DWORD i = 0; i < dir->NumberOfNames; ++i) {
        if (ordinals[i] >= dir->NumberOfFunctions) continue;
        const DWORD rva = functions[ordinals[i]];
        if (rva >= entry.VirtualAddress && rva < entry.VirtualAddress + entry.Size) continue;
        out.emplace_back(reinterpret_cast<const char*>(base + names[i]));
    }
    return out;
}

#else

// A file read in pieces: only the parts of the export table that are needed
// are read, each with one call, and every piece is checked against the
// file's size.
class File {
public:
    explicit File(const std::filesystem::path& path) : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        struct stat info {};
        if (fd_ < 0 || ::fstat(fd_, &info) != 0 || !S_ISREG(info.st_mode)) {
            if (fd_ >= 0) ::close(fd_);
            throw LoadError("cannot read " + path.string());
        }
        size_ = static_cast<std::uint64_t>(info.st_size);
    }
    ~File() { ::close(fd_); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::uint64_t size() const { return size_; }

    // `count` bytes from `offset`.
    std::vector<char> bytes(std::uint64_t offset, std::uint64_t count, const char* what) const {
        if (offset > size_ || count > size_ - offset)
            throw LoadError(std::string("truncated ELF file: ") + what + " out of range");
        std::vector<char> out(static_cast<std::size_t>(count));
        std::size_t done = 0;
        while (done < out.size()) {
            const ssize_t n = ::pread(fd_, out.data() + done, out.size() - done, static_cast<off_t>(offset + done));
            if (n <= 0) throw LoadError(std::string("cannot read the ELF file's ") + what);
            done += static_cast<std::size_t>(n);
        }
        return out;
    }

    template <class T>
    T at(std::uint64_t offset, const char* what) const {
        const auto data = bytes(offset, sizeof(T), what);
        T out;
        std::memcpy(&out, data.data(), sizeof(T));
        return out;
    }

private:
    int fd_;
    std::uint64_t size_ = 0;
};

// An entry of a table read whole.
template <class T>
T entry(const std::vector<char>& table, std::uint64_t i) {
    T out;
    std::memcpy(&out, table.data() + i * sizeof(T), sizeof(T));
    return out;
}

// The zero-terminated string at `offset` of a string table.
std::string_view text_at(const std::vector<char>& table, std::uint64_t offset) {
    if (offset >= table.size()) throw LoadError("truncated ELF file: symbol name out of range");
    const char* first = table.data() + offset;
    const char* end = static_cast<const char*>(std::memchr(first, '\0', table.size() - offset));
    if (end == nullptr) throw LoadError("unterminated symbol name in ELF file");
    return std::string_view(first, static_cast<std::size_t>(end - first));
}

constexpr unsigned char native_class = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
constexpr unsigned char native_data =
    std::endian::native == std::endian::little ? ELFDATA2LSB : ELFDATA2MSB;

#endif

}  // namespace

#if !defined(_WIN32)

namespace {

struct ElfExport {
    std::string_view name;  // in `ElfExports::names`
    std::uint64_t value;    // the address relative to the load base
};

struct ElfExports {
    std::vector<char> names;  // the symbol names, read in one piece
    std::vector<ElfExport> exports;
};

ElfExports elf_exports(const std::filesystem::path& file) {
    const File bytes(file);

    const auto header = bytes.at<ElfW(Ehdr)>(0, "ELF header");
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0)
        throw LoadError(file.string() + " is not an ELF file");
    if (header.e_ident[EI_CLASS] != native_class || header.e_ident[EI_DATA] != native_data)
        throw LoadError(file.string() + " is an ELF file for another machine");
    if (header.e_shoff == 0 || header.e_shentsize != sizeof(ElfW(Shdr)))
        throw LoadError(file.string() + " has no section table");

    // With more sections than e_shnum can hold, section 0 carries the count.
    std::uint64_t sections = header.e_shnum;
    if (sections == 0) sections = bytes.at<ElfW(Shdr)>(header.e_shoff, "section header").sh_size;
    // A cut file is refused as a whole, whatever part of it is needed.
    if (sections == 0 || sections > bytes.size() / sizeof(ElfW(Shdr)) ||
        header.e_shoff > bytes.size() - sections * sizeof(ElfW(Shdr)))
        throw LoadError("truncated ELF file: section table out of range");
    const auto table = bytes.bytes(header.e_shoff, sections * sizeof(ElfW(Shdr)), "section table");

    for (std::uint64_t s = 0; s < sections; ++s) {
        const auto symtab = entry<ElfW(Shdr)>(table, s);
        if (symtab.sh_type != SHT_DYNSYM) continue;
        if (symtab.sh_link >= sections) throw LoadError("dynamic symbol table without names");
        const auto strtab = entry<ElfW(Shdr)>(table, symtab.sh_link);
        const std::uint64_t count = symtab.sh_size / sizeof(ElfW(Sym));
        const auto symbols = bytes.bytes(symtab.sh_offset, count * sizeof(ElfW(Sym)), "symbol table");
        ElfExports out{bytes.bytes(strtab.sh_offset, strtab.sh_size, "symbol names"), {}};
        // Entry 0 is the reserved undefined symbol.
        for (std::uint64_t i = 1; i < count; ++i) {
            const auto sym = entry<ElfW(Sym)>(symbols, i);
            const unsigned type = ELF64_ST_TYPE(sym.st_info);
            const unsigned bind = ELF64_ST_BIND(sym.st_info);
            const unsigned visibility = ELF64_ST_VISIBILITY(sym.st_other);
            if (type != STT_FUNC || sym.st_shndx == SHN_UNDEF) continue;
            if (bind != STB_GLOBAL && bind != STB_WEAK) continue;
            if (visibility != STV_DEFAULT && visibility != STV_PROTECTED) continue;
            out.exports.push_back({text_at(out.names, sym.st_name), sym.st_value});
        }
        return out;
    }
    throw LoadError(file.string() + " has no dynamic symbol table");
}

}  // namespace

std::vector<std::string> elf_exported_functions(const std::filesystem::path& file) {
    std::vector<std::string> out;
    for (const auto& e : elf_exports(file).exports) out.emplace_back(e.name);
    return out;
}

#endif

Plugin::Plugin(const std::filesystem::path& file) : file_(std::filesystem::absolute(file)) {
#if defined(_WIN32)
    // The altered search path finds the libraries the plug-in needs beside it.
    handle_ = LoadLibraryExW(file_.wstring().c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (handle_ == nullptr)
        throw LoadError("cannot load " + file_.string() + ": " + last_error_text());
    try {
        exports_ = pe_exports(static_cast<HMODULE>(handle_));
    } catch (...) {
        FreeLibrary(static_cast<HMODULE>(handle_));
        throw;
    }
#else
    // Read the table first: a file that is not a shared object never runs.
    auto table = elf_exports(file_);
    handle_ = dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) throw LoadError(std::string("cannot load ") + dlerror());
    // The table gives every export's place: no look-up by name is needed.
    link_map* map = nullptr;
    const bool placed = dlinfo(handle_, RTLD_DI_LINKMAP, &map) == 0 && map != nullptr;
    names_ = std::move(table.names);  // the views keep pointing into it
    for (const auto& e : table.exports) {
        exports_.push_back(e.name);
        if (placed)
            addresses_.push_back(reinterpret_cast<ScriptFunction::Entry>(map->l_addr + e.value));
    }
#endif
    discover();
}

Plugin::~Plugin() {
    // Values held elsewhere live in the value library, not in the plug-in.
#if defined(_WIN32)
    FreeLibrary(static_cast<HMODULE>(handle_));
#else
    dlclose(handle_);
#endif
}

ScriptFunction::Entry Plugin::symbol(const std::string& name) const {
#if defined(_WIN32)
    return reinterpret_cast<ScriptFunction::Entry>(
        GetProcAddress(static_cast<HMODULE>(handle_), name.c_str()));
#else
    return reinterpret_cast<ScriptFunction::Entry>(dlsym(handle_, name.c_str()));
#endif
}

bool Plugin::shares(const char* library, const char* function) const {
#if defined(_WIN32)
    // The import table names the DLLs the library binds to.
    (void)function;
    const auto* base = static_cast<const unsigned char*>(handle_);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& entry = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (entry.VirtualAddress == 0) return false;
    const std::string wanted = std::string(library) + ".dll";
    for (const auto* d = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + entry.VirtualAddress); d->Name != 0; ++d)
        if (_stricmp(reinterpret_cast<const char*>(base + d->Name), wanted.c_str()) == 0) return true;
    return false;
#else
    // The library's own look-up finds the function icphost binds to.
    (void)library;
    void* theirs = dlsym(handle_, function);
    return theirs != nullptr && theirs == dlsym(RTLD_DEFAULT, function);
#endif
}

void Plugin::discover() {
    using Companion = ScriptFunction::Companion;
    // Placed exports are found in the table; otherwise by name in the library.
    const bool placed = addresses_.size() == exports_.size();
    const auto address = [&](std::size_t i) { return placed ? addresses_[i] : symbol(std::string(exports_[i])); };
    const auto triples = find_triples(exports_);
    functions_.reserve(triples.size());  // the names in `taken` stay where they are
    std::unordered_map<std::string_view, std::string_view> taken;  // script name -> export
    for (const auto& t : triples) {
        ScriptFunction f;
        f.export_name = exports_[t.body];
        const std::string& x = f.export_name;
        f.entry = address(t.body);
        const auto name_fn = reinterpret_cast<Companion>(address(t.name));
        f.describe = reinterpret_cast<Companion>(address(t.description));
        if (f.entry == nullptr || name_fn == nullptr || f.describe == nullptr) {
            problems_.push_back(x + ": an export cannot be resolved");
            continue;
        }
        try {
            const nvValue name = name_fn();
            if (!name.isString() || name.toString().empty()) {
                problems_.push_back(x + "Name returned " + name.repr() + ", not a name");
                continue;
            }
            f.name = name.toString();
        } catch (const std::exception& e) {
            problems_.push_back(x + ": a companion failed: " + e.what());
            continue;
        }
        if (const auto seen = taken.find(f.name); seen != taken.end()) {
            problems_.push_back(x + ": script name '" + f.name + "' is already that of " + std::string(seen->second));
            continue;
        }
        functions_.push_back(std::move(f));
        taken.emplace(functions_.back().name, exports_[t.body]);
    }
}

void Plugin::describe_all() {
    std::erase_if(functions_, [&](const ScriptFunction& f) {
        try {
            f.help();
            return false;
        } catch (const std::exception& e) {
            problems_.push_back(e.what());
            return true;
        }
    });
}

std::filesystem::path executable_directory() {
#if defined(_WIN32)
    const auto self = icp_platform::module_file(nullptr);
    return self.empty() ? std::filesystem::current_path() : self.parent_path();
#else
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::current_path() : self.parent_path();
#endif
}

std::filesystem::path default_plugin_path() {
#if defined(_WIN32)
    return executable_directory() / "icpdas_plugin.dll";
#else
    return executable_directory() / "libicpdas_plugin.so";
#endif
}

}  // namespace icphost
