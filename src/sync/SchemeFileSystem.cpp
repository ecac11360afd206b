#include <meridex/sync/SchemeFileSystem.h>

#include <cstdio>

// The parts of the sync file operations that are the same on every system;
// the rest is in each platform's SchemeFileSystem.cpp.
namespace meridex {

SchemeFileSystem::CopyResult SchemeFileSystem::CopyFile(const std::string& source, const std::string& destination,
                                                        bool backup, std::string& error, std::string* backupPath,
                                                        std::vector<PendingCopy>* pending) {
    return CopyInto(source, destination, Commit::Replace, backup, error, backupPath, nullptr, pending);
}

std::string SchemeFileSystem::BackupName(const std::string& path, unsigned number) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%04u", number);
    return path + "~" + digits + ".BAK";
}

}  // namespace meridex
