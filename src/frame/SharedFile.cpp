#include <meridex/frame/SharedFile.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <random>
#include <thread>

#include <meridex/frame/DateTime.h>
#include <meridex/frame/DiskSteps.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/ErrorHandler.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/UserInterface.h>
#include <meridex/frame/Utf8.h>
#include <meridex/platform/FileSystem.h>
#include <meridex/platform/Platform.h>

namespace meridex {
namespace {

// Someone saving again and again may make a save merge more than once; a
// save gives up only when the file changes under it this many times. After
// the first few rounds it waits a random while before the next, so many
// writers at once do not keep beating one another to the rename.
constexpr int kMaxRounds = 1000;
constexpr int kRoundsWithoutPause = 3;

void PauseBeforeRound(int round) {
    if (round < kRoundsWithoutPause) return;
    static std::minstd_rand random(static_cast<unsigned>(std::random_device{}()));
    const int most = std::min(round, 50);
    std::this_thread::sleep_for(std::chrono::milliseconds(1 + random() % most));
}

std::mutex gLogMutex;
bool gLogSet = false;
std::string gLogFile;

std::string FileName(const std::string& path) {
    const std::size_t sep = path.find_last_of("\\/");
    return sep == std::string::npos ? path : path.substr(sep + 1);
}

// A free "NAME.conflict-YYYYMMDD-HHMMSS[-n]" beside target holding their
// version: a second name for the file when it is still theirs, else a copy.
std::string KeepConflictCopy(const std::string& target, const std::string& theirs, const FileIdentity& theirId) {
    const DateTime now = DateTime::Now();
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "%04d%02d%02d-%02d%02d%02d", now.year, now.month, now.day, now.hour,
                  now.minute, now.second);
    for (int n = 0; n < 10000; ++n) {
        const std::string candidate = target + ".conflict-" + stamp + (n ? "-" + std::to_string(n) : "");
        if (FileSystem::Exists(candidate)) continue;
        if (FileSystem::MakeHardLink(target, candidate)) {
            FileIdentity linked = FileSystem::IdentityOf(candidate);
            if (linked.SameMetadata(theirId)) return candidate;
            std::error_code ec;
            std::filesystem::remove(utf8::ToPath(candidate), ec);  // a newer version meanwhile: copy theirs
        }
        return FileOps::WriteFileAtomic(candidate, theirs) ? candidate : std::string();
    }
    return {};
}

void Report(const std::string& target, const std::string& copy, const std::string& context) {
    const std::string text = FileName(target) + " was changed by someone else since it was opened; their version is kept as " +
                             FileName(copy);
    const std::string log = SharedFile::ErrorLogFile();
    if (!log.empty()) {
        // A log that cannot be written (a program folder the user may not
        // write) is no reason to stop the save or to ask about it.
        std::string reason;
        FileSystem::AppendToFile(
            log, ErrorHandler::FormatLogLine(DateTime::Now(), ErrorNumber::PathFileAccess, text, context) + "\r\n",
            reason);
    }
    try {
        UserInterface::Current()->MessageBox(text, MessageButtons::OK, MessageIcon::Exclamation, "");
    } catch (...) {
    }
}

}  // namespace

void SharedFile::setErrorLogFile(std::string path) {
    std::lock_guard lock(gLogMutex);
    gLogFile = std::move(path);
    gLogSet = true;
}

std::string SharedFile::ErrorLogFile() {
    std::lock_guard lock(gLogMutex);
    if (!gLogSet) {
        gLogSet = true;
        const std::string folder = Platform::LibraryFolder();
        if (!folder.empty()) gLogFile = folder + (FileOps::IsSeparator(folder.back()) ? "" : "/") + "MeridexAppLibrary.log";
    }
    return gLogFile;
}

bool SharedFile::Read(const std::string& path, std::string& bytes) {
    path_ = path;
    base_.clear();
    identity_ = {};
    if (!FileSystem::ReadWithIdentity(path, bytes, identity_)) {
        identity_ = FileSystem::IdentityOf(path);  // there but unreadable: that version is what was seen
        return false;
    }
    base_ = bytes;
    return true;
}

void SharedFile::NotRead(const std::string& path) {
    path_ = path;
    base_.clear();
    identity_ = {};
}

bool SharedFile::Save(const std::string& target, const std::function<std::string()>& serialize, const Merge& merge,
                      const std::string& context, std::string* error) {
    conflictCopy_.clear();
    bool checked = !path_.empty() && target == path_;
    if (!checked && !path_.empty() && identity_.exists) {
        const FileIdentity there = FileSystem::IdentityOf(target);
        checked = there.exists && there.volume == identity_.volume && there.fileId == identity_.fileId;
    }
    for (int round = 0; round < kMaxRounds; ++round) {
        PauseBeforeRound(round);
        std::string bytes = serialize();
        bool changed = false;
        std::string theirs;
        FileIdentity theirId;
        FileIdentity written;
        const FileOps::RenameCheck check = [&](const std::string& temporary, const std::string& final) {
            const FileIdentity now = FileSystem::IdentityOf(final);
            if (!now.SameMetadata(identity_) && now.exists) {
                // Touched, or written again with the same bytes, is still the version loaded.
                if (!FileSystem::ReadWithIdentity(final, theirs, theirId)) theirId = now;
                changed = !identity_.exists || theirId.hash != identity_.hash || theirId.size != identity_.size;
                if (changed) return false;
            }
            if (!temporary.empty()) written = FileSystem::IdentityOf(temporary);
            return true;
        };
        std::string reason;
        if (FileOps::WriteFileAtomicChecked(target, bytes, &reason, checked ? check : FileOps::RenameCheck())) {
            if (!written.exists) written = FileSystem::IdentityOf(target);
            written.hash = FileIdentity::HashOf(bytes.data(), bytes.size());
            identity_ = written;
            base_ = std::move(bytes);
            path_ = target;
            return true;
        }
        if (!changed) {
            if (error) *error = reason;
            return false;
        }
        if (!(merge && merge(base_, theirs))) {
            const std::string copy = KeepConflictCopy(target, theirs, theirId);
            if (copy.empty()) {
                if (error) *error = "someone else saved " + target + " and their version could not be kept aside";
                return false;
            }
            conflictCopy_ = copy;
            Report(target, copy, context);
        }
        // Their version is now part of ours: the next check compares against it.
        identity_ = theirId;
        base_ = std::move(theirs);
    }
    if (error) *error = target + " kept changing while it was saved";
    return false;
}

}  // namespace meridex
