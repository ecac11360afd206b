#include <meridex/sync/FileInfo.h>

#include <meridex/platform/FileSystem.h>

namespace meridex {

FileInfo FileInfo::FromPath(const std::string& path) {
    FileInfo info;
    FileSystem::Status status;
    if (!FileSystem::GetStatus(path, status) || !status.regular) return info;
    info.path_ = path;
    const std::size_t slash = FileSystem::LastSeparator(path);
    if (slash == std::string::npos) {
        info.name_ = path;
    } else {
        info.name_ = path.substr(slash + 1);
        info.parent_ = slash == 0 ? path.substr(0, 1) : path.substr(0, slash);
    }
    info.size_ = status.size;
    info.accessed_ = status.accessed;
    info.modified_ = status.modified;
    info.created_ = status.created;
    return info;
}

}  // namespace meridex
