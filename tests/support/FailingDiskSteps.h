#pragma once
#include <algorithm>
#include <cerrno>
#include <string>

#include <meridex/frame/DiskSteps.h>

namespace meridex::test {

// Disk steps that fail as told: the n-th call of a step (counted from 1) sets
// errno and fails; 0 never.
struct FailingDiskSteps : FileOps::DiskSteps {
    int failCreate = 0, failOpen = 0, failWrite = 0, failSync = 0, failRename = 0;
    int error = EIO;
    int creates = 0, opens = 0, writes = 0, syncs = 0, renames = 0;
    FailingDiskSteps() { FileOps::InstallDiskSteps(this); }
    ~FailingDiskSteps() override { FileOps::InstallDiskSteps(nullptr); }
    bool Fails(int& count, int failAt) {
        if (++count != failAt) return false;
        errno = error;
        return true;
    }
    int CreateTemp(std::string& t) override { return Fails(creates, failCreate) ? -1 : FileOps::DiskSteps::CreateTemp(t); }
    int OpenExisting(const std::string& p) override { return Fails(opens, failOpen) ? -1 : FileOps::DiskSteps::OpenExisting(p); }
    ssize_t Write(int fd, const char* data, std::size_t size, off_t offset) override {
        if (Fails(writes, failWrite)) return -1;
        // Short writes, so a document takes several steps.
        return FileOps::DiskSteps::Write(fd, data, std::min<std::size_t>(size, 4096), offset);
    }
    int Sync(int fd) override { return Fails(syncs, failSync) ? -1 : FileOps::DiskSteps::Sync(fd); }
    int Rename(const std::string& a, const std::string& b) override {
        return Fails(renames, failRename) ? -1 : FileOps::DiskSteps::Rename(a, b);
    }
};

}  // namespace meridex::test
