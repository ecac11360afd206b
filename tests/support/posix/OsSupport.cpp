#include "OsSupport.h"

#include <unistd.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <meridex/platform/linux/IniUserStore.h>

namespace meridex::test {

bool SetFileTimes(const std::string& path, const timespec& accessed, const timespec& modified) {
    const timespec times[2] = {accessed, modified};
    return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

bool SetReadOnly(const std::string& path, bool readOnly) { return chmod(path.c_str(), readOnly ? 0444 : 0644) == 0; }

std::shared_ptr<UserStore> MakeScratchUserStore(const std::string& folder) {
    return std::make_shared<IniUserStore>(folder);
}

const bool kBackSlashSeparates = false;

const char* WhyFolderPermissionsCannotBeTested() {
    return geteuid() == 0 ? "needs an unprivileged user; the unprivileged test entry runs it" : nullptr;
}

bool WriteToDescriptor(int fd, const std::string& bytes) {
    return ::write(fd, bytes.data(), static_cast<unsigned>(bytes.size())) == static_cast<int>(bytes.size());
}

}  // namespace meridex::test
