#include <meridex/platform/Platform.h>

#include <dlfcn.h>

#include <filesystem>

#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/platform/linux/LinuxSerialPortSource.h>

namespace meridex::Platform {

std::shared_ptr<UserStore> DefaultUserStore() {
    return std::make_shared<IniUserStore>(IniUserStore::DefaultFolder());
}

std::shared_ptr<SerialPortSource> DefaultSerialPortSource(std::shared_ptr<UserStore> store) {
    return std::make_shared<LinuxSerialPortSource>(std::move(store));
}

std::string CompanionProgramName() { return "SerialPortInfoDump"; }

std::vector<std::string> Utf8Arguments(int argc, char** argv) { return {argv, argv + argc}; }

std::string GetWindowsFolder() { return "/etc/"; }

std::string ProgramFolder() {
    std::error_code ec;
    std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::string() : self.parent_path().string();
}

}  // namespace meridex::Platform

namespace meridex::Platform {

std::string LibraryFolder() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&LibraryFolder), &info) == 0 || !info.dli_fname) return ProgramFolder();
    std::error_code ec;
    std::filesystem::path file = std::filesystem::canonical(info.dli_fname, ec);
    return ec ? ProgramFolder() : file.parent_path().string();
}

}  // namespace meridex::Platform
