#pragma once
#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "OsSupport.h"
#include "TempDir.h"

#include <meridex/sync/SchemeFileSystem.h>
#include <meridex/sync/SyncEvents.h>
#include <meridex/sync/SyncSchemes.h>

namespace meridex::test {

// Writes a file and gives it a modification time (seconds since the epoch
// plus nanoseconds) and an access time one day earlier.
inline std::string WriteDated(const TempDir& dir, const std::string& name, const std::string& contents,
                              std::time_t seconds, long nanos = 0) {
    std::string path = dir.Write(name, contents);
    SetFileTimes(path, timespec{seconds - 86400, nanos}, timespec{seconds, nanos});
    return path;
}

// What is known of a file now: its times as the file system keeps them.
inline FileInfo StatOf(const std::string& path) { return FileInfo::FromPath(path); }

// Every file under a folder, hidden temporary files included, as "relative/path=contents", sorted.
inline std::vector<std::string> Tree(const std::string& folder) {
    namespace fs = std::filesystem;
    const fs::path root(std::u8string(folder.begin(), folder.end()));
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file()) continue;
        const std::u8string name = entry.path().lexically_relative(root).generic_u8string();
        const std::u8string path = entry.path().u8string();
        const std::string contents = TempDir::Read(std::string(path.begin(), path.end()));
        files.push_back(std::string(name.begin(), name.end()) + "=" + contents);
    }
    std::sort(files.begin(), files.end());
    return files;
}

// The keys of a list, in order.
inline std::vector<std::string> Keys(const SchemeFileCollection& list) {
    std::vector<std::string> keys;
    for (const auto& item : list.Items()) keys.push_back(item.Key());
    return keys;
}

// The keys of each list of a sync, in order: "local ... | remote ... | synced ... | errors ...".
inline std::string Lists(const SyncSchemes& sync) {
    std::string text;
    const auto add = [&](const char* name, const SchemeFileCollection& list) {
        text += std::string(text.empty() ? "" : " | ") + name;
        for (const std::string& key : Keys(list)) text += " " + key;
    };
    add("local", sync.NewerLocalFiles());
    add("remote", sync.NewerRemoteFiles());
    add("synced", sync.SyncedFiles());
    add("errors", sync.Errors());
    return text;
}

// Records the events; cancels sync at the given found file or copy (counted from 1) when asked to.
struct RecordedEvents : SyncEvents {
    std::vector<std::string> found;
    std::vector<std::string> copies;  // source + " -> " + destination
    std::vector<int> progress;
    std::vector<std::string> errors;  // destination + ": " + description
    SyncSchemes* sync = nullptr;
    std::size_t cancelAtFound = 0, cancelAtCopy = 0;
    void FoundFiles(const std::string& file) override {
        found.push_back(file);
        if (found.size() == cancelAtFound) sync->CancelSearch();
    }
    void CopyFiles(const std::string& source, const std::string& destination, std::int16_t p) override {
        copies.push_back(source + " -> " + destination);
        progress.push_back(p);
        if (copies.size() == cancelAtCopy) sync->CancelSearch();
    }
    void CopyFilesError(const std::string&, const std::string& destination, const std::string& text) override {
        errors.push_back(destination + ": " + text);
    }
};

// A file system whose disk steps can be made to fail, as a dropped network
// share or a full disk would.
struct FaultyFileSystem : SchemeFileSystem {
    bool failTimes = false;
    bool failFlush = false;
    long transferBytesBeforeFailure = -1;  // -1: no failure
    int failRename = 0;                     // errno for every rename; 0: none fails
    std::string unreadableFolder;           // ListFolder fails for this path
    std::vector<std::string> ghostFiles;    // listed but not on disk

    bool ListFolder(const std::string& folder, std::vector<std::string>& files, std::vector<std::string>& folders,
                    int* errnoOut) override {
        if (folder == unreadableFolder) {
            if (errnoOut) *errnoOut = EACCES;
            return false;
        }
        bool ok = SchemeFileSystem::ListFolder(folder, files, folders, errnoOut);
        files.insert(files.begin(), ghostFiles.begin(), ghostFiles.end());
        return ok;
    }

protected:
    bool Transfer(int in, int out, std::string& error) override {
        if (transferBytesBeforeFailure < 0) return SchemeFileSystem::Transfer(in, out, error);
        std::string half(static_cast<std::size_t>(transferBytesBeforeFailure), 'x');
        WriteToDescriptor(out, half);  // as a copy cut off part-way would have
        error = "Input/output error";
        return false;
    }
    bool ApplyTimes(int out, const timespec times[2]) override {
        return !failTimes && SchemeFileSystem::ApplyTimes(out, times);
    }
    bool Flush(int out) override {
        if (failFlush) {
            errno = ENOSPC;
            return false;
        }
        return SchemeFileSystem::Flush(out);
    }
    bool FlushFileSystem(const std::string& folder) override {
        return !failFlush && SchemeFileSystem::FlushFileSystem(folder);
    }
    bool RenameFile(const std::string& from, const std::string& to, bool replace) override {
        if (failRename == 0) return SchemeFileSystem::RenameFile(from, to, replace);
        errno = failRename;
        return false;
    }
};

}  // namespace meridex::test
