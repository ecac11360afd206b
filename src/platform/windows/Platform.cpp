#include <meridex/platform/Platform.h>

#include <windows.h>
#include <shellapi.h>

#include <meridex/platform/windows/RegistryUserStore.h>
#include <meridex/platform/windows/WideText.h>
#include <meridex/platform/windows/WindowsSerialPortSource.h>

namespace meridex::Platform {

std::shared_ptr<UserStore> DefaultUserStore() { return std::make_shared<RegistryUserStore>(); }

// Windows numbers its ports itself: the store has no part in it.
std::shared_ptr<SerialPortSource> DefaultSerialPortSource(std::shared_ptr<UserStore>) {
    return std::make_shared<WindowsSerialPortSource>();
}

std::string CompanionProgramName() { return "SerialPortInfoDump.exe"; }

namespace {

// The folder of the module (program or DLL) file, "" when Windows cannot tell.
std::string ModuleFolder(HMODULE module) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) return {};
        if (length < path.size()) {
            path.resize(length);
            break;
        }
        path.resize(path.size() * 2);
    }
    const std::size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? std::string() : Wide::ToUtf8(path.substr(0, slash));
}

}  // namespace

std::string ProgramFolder() { return ModuleFolder(nullptr); }

std::string LibraryFolder() {
    // The module that holds this very function: the DLL when the library is one, else the program.
    HMODULE self = nullptr;
    if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                              reinterpret_cast<LPCWSTR>(&LibraryFolder), &self))
        return ProgramFolder();
    return ModuleFolder(self);
}

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
    ::SetConsoleOutputCP(CP_UTF8);
    int count = 0;
    LPWSTR* wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (!wide) return {argv, argv + argc};
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) arguments.push_back(Wide::ToUtf8(wide[i]));
    ::LocalFree(wide);
    return arguments;
}

std::string GetWindowsFolder() {
    wchar_t folder[256] = {};  // 255 characters and the NUL
    const UINT length = ::GetWindowsDirectoryW(folder, 255);
    if (length == 0 || length > 255) return "\\";
    return Wide::ToUtf8(std::wstring_view(folder, length)) + "\\";
}

}  // namespace meridex::Platform
