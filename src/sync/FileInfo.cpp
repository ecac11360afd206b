#include <meridex/sync/FileInfo.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace meridex {

namespace {

std::timespec ToTimespec(const struct statx_timestamp& t) {
    std::timespec ts{};
    ts.tv_sec = static_cast<std::time_t>(t.tv_sec);
    ts.tv_nsec = static_cast<long>(t.tv_nsec);
    return ts;
}

}  // namespace

FileInfo FileInfo::FromPath(const std::string& path) {
    FileInfo info;
    struct statx sx {};
    if (path.empty() || statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &sx) != 0)
        return info;
    if (!S_ISREG(sx.stx_mode)) return info;
    info.path_ = path;
    auto slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        info.name_ = path;
    } else {
        info.name_ = path.substr(slash + 1);
        info.parent_ = slash == 0 ? std::string("/") : path.substr(0, slash);
    }
    info.size_ = sx.stx_size;
    info.accessed_ = ToTimespec(sx.stx_atime);
    info.modified_ = ToTimespec(sx.stx_mtime);
    info.created_ = (sx.stx_mask & STATX_BTIME) ? ToTimespec(sx.stx_btime) : ToTimespec(sx.stx_ctime);
    return info;
}

}  // namespace meridex
