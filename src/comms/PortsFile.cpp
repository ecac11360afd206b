#include <meridex/comms/PortsFile.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

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

fs::path PerUserFolder() {
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime) return fs::path(runtime) / "meridex";
    if (const char* cache = std::getenv("XDG_CACHE_HOME"); cache && *cache) return fs::path(cache) / "meridex";
    if (const char* home = std::getenv("HOME"); home && *home) return fs::path(home) / ".cache" / "meridex";
    std::error_code ec;
    return fs::temp_directory_path(ec) / "meridex";
}

}  // namespace

std::string Folder(const std::string& companionFolder) {
    if (companionFolder.empty() || Writable(companionFolder)) return companionFolder;
    const fs::path folder = PerUserFolder();
    std::error_code ec;
    fs::create_directories(folder, ec);
    return folder.string();
}

}  // namespace meridex::PortsFile
