#include <meridex/comms/PortsFile.h>

#include <filesystem>
#include <fstream>
#include <random>

#include <meridex/frame/Utf8.h>
#include <meridex/platform/FileSystem.h>

namespace meridex::PortsFile {
namespace {

namespace fs = std::filesystem;

// Trying is the one test that holds for every kind of refusal (permissions,
// a read-only mount, an administrator's folder on Windows).
bool Writable(const fs::path& folder) {
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) return false;
    const fs::path probe = folder / (".meridex-probe-" + std::to_string(std::random_device{}()));
    bool written = static_cast<bool>(std::ofstream(probe));
    fs::remove(probe, ec);
    return written;
}

}  // namespace

std::string Folder(const std::string& companionFolder) {
    if (companionFolder.empty() || Writable(utf8::ToPath(companionFolder))) return companionFolder;
    const fs::path folder = utf8::ToPath(FileSystem::PerUserScratchFolder()) / "meridex";
    std::error_code ec;
    fs::create_directories(folder, ec);
    return utf8::FromPath(folder);
}

}  // namespace meridex::PortsFile
