#include <meridex/frame/UnreadableFiles.h>

#include <filesystem>

#include <meridex/frame/FileOps.h>

namespace meridex {
namespace {

bool SameFile(const std::string& a, const std::string& b) {
    if (a == b) return true;
    std::error_code ec;
    return std::filesystem::equivalent(a, b, ec) && !ec;
}

}  // namespace

void UnreadableFiles::Remember(const std::string& path) {
    Forget(path);
    paths_.push_back(path);
}

void UnreadableFiles::Forget(const std::string& path) {
    std::erase_if(paths_, [&](const std::string& p) { return SameFile(p, path); });
}

bool UnreadableFiles::KeepBeforeReplacing(const std::string& target) {
    for (auto it = paths_.begin(); it != paths_.end(); ++it) {
        if (!SameFile(*it, target)) continue;
        std::error_code ec;
        if (FileOps::KeepUnreadableFile(*it).empty() && std::filesystem::exists(*it, ec)) return false;
        paths_.erase(it);
        return true;
    }
    return true;
}

}  // namespace meridex
