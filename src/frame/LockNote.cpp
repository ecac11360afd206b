#include <meridex/frame/LockNote.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <vector>

#include <meridex/frame/DateTime.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/Utf8.h>
#include <meridex/platform/FileSystem.h>

namespace meridex {
namespace {

constexpr std::time_t kStaleAfter = 24 * 60 * 60;

struct Holder {
    std::string user, host;
    unsigned long long pid = 0;
    std::time_t since = 0;
};

bool ParseNote(const std::string& text, Holder& holder) {
    std::vector<std::string> fields(1);
    for (char c : text) {
        if (c == ';' || c == '\n') break;
        if (c == ',') fields.emplace_back();
        else fields.back() += c;
    }
    if (fields.size() < 4) return false;
    try {
        holder = {fields[0], fields[1], std::stoull(fields[2]), static_cast<std::time_t>(std::stoll(fields[3]))};
    } catch (...) {
        return false;
    }
    return true;
}

bool Stale(const Holder& holder, std::time_t now) {
    if (now - holder.since > kStaleAfter) return true;
    return holder.host == FileSystem::HostName() && !FileSystem::ProcessRunning(holder.pid);
}

void Remove(const std::string& path) {
    std::error_code ec;
    std::filesystem::remove(utf8::ToPath(path), ec);
}

}  // namespace

LockNote::~LockNote() { Release(); }

std::string LockNote::NotePath(const std::string& path) {
    return FileOps::GetFolderPath(path) + ".~lock." + path.substr(FileOps::GetFolderPath(path).size()) + "#";
}

bool LockNote::Acquire(const std::string& path, std::shared_ptr<UserInterface> ui) {
    Release();
    const std::string note = NotePath(path);
    const std::time_t now = std::time(nullptr);
    std::string text;
    Holder holder;
    if (FileOps::ReadWholeFile(note, text)) {
        if (!ParseNote(text, holder) || Stale(holder, now)) {
            Remove(note);
        } else if (holder.host == FileSystem::HostName() && holder.pid == FileSystem::ProcessId()) {
            return true;  // this program has it open already: its note stands
        } else {
            const DateTime since = DateTime::FromLocal(holder.since);
            char when[32];
            std::snprintf(when, sizeof when, "%04d-%02d-%02d %02d:%02d", since.year, since.month, since.day, since.hour,
                          since.minute);
            const std::string question = path.substr(FileOps::GetFolderPath(path).size()) + " is open by " +
                                         holder.user + " on " + holder.host + " since " + when + ". Open anyway?";
            if (!ui) ui = UserInterface::Current();
            if (ui->MessageBox(question, MessageButtons::YesNo, MessageIcon::Question, "") != MessageResult::Yes)
                return false;
            return true;  // their note stays theirs
        }
    }
    text = FileSystem::UserName() + "," + FileSystem::HostName() + "," + std::to_string(FileSystem::ProcessId()) + "," +
           std::to_string(static_cast<long long>(now)) + ";";
    if (FileSystem::CreateNewFile(note, text)) {
        note_ = note;
        text_ = text;
    }
    return true;
}

void LockNote::Release() {
    if (note_.empty()) return;
    std::string text;
    if (FileOps::ReadWholeFile(note_, text) && text == text_) Remove(note_);
    note_.clear();
    text_.clear();
}

}  // namespace meridex
