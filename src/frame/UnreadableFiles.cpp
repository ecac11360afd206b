#include <meridex/frame/UnreadableFiles.h>

#include <filesystem>

#include <meridex/frame/FileOps.h>
#include <meridex/frame/Utf8.h>

namespace meridex {
namespace {

bool SameFile(const std::string& a, const std::string& b) {
    if (a == b) return true;
    std::error_code ec;
    return std::filesystem::equivalent(utf8::ToPath(a), utf8::ToPath(b), ec) && !ec;
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
        if (FileOps::KeepUnreadableFile(*it).empty() && std::filesystem::exists(utf8::ToPath(*it), ec)) return false;
        paths_.erase(it);
        return true;
    }
    return true;
}

}  // namespace meridex
