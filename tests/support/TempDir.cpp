#include "TempDir.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace meridex::test {
namespace {

// Paths are UTF-8 text, whatever the platform's narrow encoding is.
std::filesystem::path Native(const std::string& path) { return std::filesystem::path(std::u8string(path.begin(), path.end())); }

std::string Utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

}  // namespace

TempDir::TempDir() {
    // A new folder only this object makes: creation fails when the name is taken.
    static std::mt19937_64 random{std::random_device{}()};
    const std::filesystem::path base = std::filesystem::temp_directory_path();
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::filesystem::path candidate = base / ("meridex-test-" + std::to_string(random() % 1000000000));
        std::error_code ec;
        if (std::filesystem::create_directory(candidate, ec)) {
            std::filesystem::permissions(candidate, std::filesystem::perms::owner_all, ec);
            path_ = Utf8(candidate);
            return;
        }
    }
    throw std::runtime_error("cannot make a temporary folder");
}

std::vector<std::string> TempDir::Entries(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Native(folder))) names.push_back(Utf8(entry.path().filename()));
    std::sort(names.begin(), names.end());
    return names;
}

TempDir::~TempDir() {
    std::error_code ec;
    // Tests make read-only files and folders; give write access back first.
    for (auto it = std::filesystem::recursive_directory_iterator(Native(path_), ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ec);
    }
    std::filesystem::remove_all(Native(path_), ec);
}

std::string TempDir::Write(const std::string& name, const std::string& contents) const {
    const std::filesystem::path path = Native(path_) / Native(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << contents;
    return Utf8(path);
}

std::string TempDir::Read(const std::string& path) {
    std::ifstream in(Native(path), std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

}  // namespace meridex::test
