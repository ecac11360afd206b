#include "OsSupport.h"
#include "windows/Wine.h"

#include <io.h>

#include <windows.h>

#include <cstdint>
#include <filesystem>

#include <meridex/platform/windows/RegistryUserStore.h>

namespace meridex::test {
namespace {

std::wstring Wide(const std::string& path) { return std::filesystem::path(std::u8string(path.begin(), path.end())).wstring(); }

FILETIME ToFileTime(const timespec& ts) {
    const std::uint64_t value = static_cast<std::uint64_t>(static_cast<std::int64_t>(ts.tv_sec) * 10000000LL +
                                                           ts.tv_nsec / 100 + 116444736000000000LL);
    FILETIME time;
    time.dwLowDateTime = static_cast<DWORD>(value & 0xFFFFFFFFu);
    time.dwHighDateTime = static_cast<DWORD>(value >> 32);
    return time;
}

class ScratchRegistryStore : public RegistryUserStore {
public:
    explicit ScratchRegistryStore(std::wstring root) : RegistryUserStore(root), root_(std::move(root)) {}
    ~ScratchRegistryStore() override { RegDeleteTreeW(HKEY_CURRENT_USER, root_.c_str()); }

private:
    std::wstring root_;
};

}  // namespace

std::shared_ptr<UserStore> MakeScratchUserStore(const std::string&) {
    static unsigned counter = 0;
    return std::make_shared<ScratchRegistryStore>(L"Software\\Meridex tests\\" + std::to_wstring(GetCurrentProcessId()) +
                                                  L"-" + std::to_wstring(counter++));
}

const bool kBackSlashSeparates = true;

const char* WineVersion() {
    // Only Wine's ntdll has this export.
    using Version = const char*(__cdecl*)();
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    const FARPROC found = ntdll ? GetProcAddress(ntdll, "wine_get_version") : nullptr;
    const auto version = reinterpret_cast<Version>(reinterpret_cast<void*>(found));
    return version ? version() : nullptr;
}

const char* WhyFolderPermissionsCannotBeTested() {
    return "a Windows folder has no write permission bit: its read-only attribute does not stop new files";
}

bool SetFileTimes(const std::string& path, const timespec& accessed, const timespec& modified) {
    HANDLE file = CreateFileW(Wide(path).c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    const FILETIME a = ToFileTime(accessed);
    const FILETIME m = ToFileTime(modified);
    const bool set = SetFileTime(file, nullptr, &a, &m) != FALSE;
    return CloseHandle(file) && set;
}

bool SetReadOnly(const std::string& path, bool readOnly) {
    return SetFileAttributesW(Wide(path).c_str(), readOnly ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL) != FALSE;
}

bool WriteToDescriptor(int fd, const std::string& bytes) {
    return ::_write(fd, bytes.data(), static_cast<unsigned>(bytes.size())) == static_cast<int>(bytes.size());
}

}  // namespace meridex::test
