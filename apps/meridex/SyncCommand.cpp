#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "Cli.h"
#include "ProgressBar.h"
#include <meridex/sync/SyncSchemes.h>

namespace meridex::cli {

namespace {

struct Arguments {
    std::string remote;
    std::string local;
    bool createMissing = false;
    bool updateAll = false;
    bool updateRemote = false;  // newer local schemes go to the remote folder
    bool updateLocal = false;   // newer remote schemes come to the local folder
    std::vector<std::string> revert;
};

std::string Date(const FileInfo& file) {
    DateTime d = file.DateLastModified();
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", d.year, d.month, d.day, d.hour, d.minute,
                  d.second);
    return text;
}

// Sorted as the library sorts them, but worth a look: clocks an hour apart
// around a daylight-saving change, or a FAT share that keeps times in steps
// of two seconds.
std::string Warning(const SchemeFileItem& item) {
    if (item.OtherFile().IsNull()) return "";
    long long diff = static_cast<long long>(item.File().Modified().tv_sec) - item.OtherFile().Modified().tv_sec;
    if (diff < 0) diff = -diff;
    if (diff == 3600) return "times differ by exactly one hour (daylight saving?)";
    if (diff > 0 && diff <= 2)
        return "times differ by " + std::to_string(diff) + " s (FAT time resolution?)";
    return "";
}

struct Listing {
    const char* title;
    const char* jsonName;
    const SchemeFileCollection* list;
};

std::vector<Listing> Listings(const SyncSchemes& sync) {
    return {{"Newer local", "newerLocal", &sync.NewerLocalFiles()},
            {"Newer remote", "newerRemote", &sync.NewerRemoteFiles()},
            {"In step", "inStep", &sync.SyncedFiles()}};
}

void PrintLists(const SyncSchemes& sync) {
    for (const auto& listing : Listings(sync)) {
        std::cout << listing.title << " (" << listing.list->Count() << "):\n";
        bool isLocal = listing.list == &sync.NewerLocalFiles() || listing.list == &sync.SyncedFiles();
        for (const auto& item : listing.list->Items()) {
            std::cout << "  " << item.RelativePath() << "\n      " << (isLocal ? "local  " : "remote ")
                      << Date(item.File());
            if (item.OtherFile().IsNull())
                std::cout << "   (only " << (isLocal ? "local" : "remote") << ")";
            else if (listing.list != &sync.SyncedFiles())
                std::cout << "   " << (isLocal ? "remote " : "local  ") << Date(item.OtherFile());
            std::string warning = Warning(item);
            if (!warning.empty()) std::cout << "   [warning: " << warning << "]";
            std::cout << "\n";
        }
    }
    std::cout << "Errors (" << sync.Errors().Count() << ")" << (sync.Errors().Count() ? ":" : "") << "\n";
    for (const auto& item : sync.Errors().Items())
        std::cout << "  " << item.RelativePath() << ": " << item.ErrDescription() << "\n";
}

Json ItemJson(const SchemeFileItem& item) {
    Json out{{"key", item.Key()}, {"relativePath", item.RelativePath()}, {"path", item.File().Path()}};
    if (!item.File().IsNull()) out["modified"] = IsoTime(item.File().Modified().tv_sec);
    if (!item.OtherFile().IsNull()) {
        out["otherPath"] = item.OtherFile().Path();
        out["otherModified"] = IsoTime(item.OtherFile().Modified().tv_sec);
    }
    const std::string warning = Warning(item);
    if (!warning.empty()) out["warning"] = warning;
    if (!item.ErrDescription().empty()) out["description"] = item.ErrDescription();
    return out;
}

Json ArrayJson(const SchemeFileCollection& list) {
    Json out = Json::array();
    for (const auto& item : list.Items()) out.push_back(ItemJson(item));
    return out;
}

void AddListsJson(Json& out, const SyncSchemes& sync) {
    for (const auto& listing : Listings(sync)) out[listing.jsonName] = ArrayJson(*listing.list);
    out["errors"] = ArrayJson(sync.Errors());
}

// The scan's progress has no known end, so it is shown on a terminal only.
struct ScanProgress : SyncEvents {
    ProgressBar* bar;
    long found = 0;
    void FoundFiles(const std::string&) override {
        if (++found % 64 == 0 && bar->OnTerminal()) bar->Update(0, "scanning: " + std::to_string(found) + " scheme files");
    }
};

struct CopyProgress : SyncEvents {
    ProgressBar* bar;
    long families = 0;
    std::vector<std::string> timeErrors;
    void CopyFiles(const std::string& source, const std::string&, std::int16_t progress) override {
        ++families;
        if (!JsonOutput()) bar->Update(progress, source);
    }
    void CopyFilesError(const std::string&, const std::string& destination, const std::string& text) override {
        timeErrors.push_back(destination + ": " + text);
        bar->Message(destination + ": " + text);
    }
};

void Scan(SyncSchemes& sync, const Arguments& args) {
    ProgressBar bar;
    ScanProgress progress;
    progress.bar = &bar;
    sync.setEvents(&progress);
    sync.GetSchemeList(args.remote, args.local);
    sync.setEvents(nullptr);
}

// "North\Weir1.SXS", "/north/weir1.sxs" and "NORTH/WEIR1.SXS" all name one scheme.
std::string AsKey(std::string name) {
    for (auto& c : name)
        if (c == '\\') c = '/';
    if (name.empty() || name[0] != '/') name.insert(0, "/");
    return name;
}

// A root that is not there is most often a share that is not mounted: taken
// as an empty side, everything would be pushed into a new, stray folder.
void CheckRoot(const std::string& root, const char* side, bool createMissing) {
    std::error_code ec;
    const auto status = std::filesystem::status(root, ec);
    if (std::filesystem::is_directory(status)) return;
    if (std::filesystem::exists(status))
        throw Failure(kBadInput, std::string("the ") + side + " folder " + root + " is not a folder");
    if (!createMissing)
        throw Failure(kBadInput, std::string("the ") + side + " folder " + root +
                                     " does not exist (is the share mounted?); --create-missing takes it as empty");
}

int Run(Arguments args) {
    std::error_code ec;
    args.remote = std::filesystem::absolute(args.remote, ec).lexically_normal().string();
    args.local = std::filesystem::absolute(args.local, ec).lexically_normal().string();
    CheckRoot(args.remote, "remote", args.createMissing);
    CheckRoot(args.local, "local", args.createMissing);
    SyncSchemes sync;
    Scan(sync, args);

    const bool copying = args.updateAll || args.updateRemote || args.updateLocal || !args.revert.empty();
    // Every name must be a newer scheme before anything is copied.
    for (const auto& name : args.revert) {
        std::string key = AsKey(name);
        SchemeFileItem item = sync.NewerLocalFiles().Item(key);
        if (item.IsNull()) item = sync.NewerRemoteFiles().Item(key);
        if (!item.IsNull() && !item.OtherFile().IsNull()) continue;
        if (!item.IsNull()) throw Failure(kUsage, name + " has no copy on the other side to revert to");
        throw Failure(kUsage, name + (sync.SyncedFiles().Exists(key) ? " is in step on both sides; nothing to revert"
                                                                     : " is not a scheme that is newer on one side"));
    }

    if (!JsonOutput()) {
        std::cout << "Remote: " << args.remote << "\nLocal:  " << args.local << "\n";
        if (!copying) PrintLists(sync);
        std::cout.flush();  // before progress appears on stderr
    }
    Json json{{"remote", args.remote}, {"local", args.local}};
    AddListsJson(json, sync);
    int exitCode = sync.Errors().Count() ? kBadInput : kOk;
    if (copying) {
        if (args.updateAll || args.updateRemote)
            for (auto item : sync.NewerLocalFiles().Items()) item.setSyncOptions(syncUpdate);
        if (args.updateAll || args.updateLocal)
            for (auto item : sync.NewerRemoteFiles().Items()) item.setSyncOptions(syncUpdate);
        for (const auto& name : args.revert) {
            std::string key = AsKey(name);
            for (auto* list : {&sync.NewerLocalFiles(), &sync.NewerRemoteFiles()})
                if (list->Exists(key)) list->Item(key).setSyncOptions(syncRevert);
        }
        long errorsBefore = sync.Errors().Count();
        CopyProgress progress;
        {
            ProgressBar bar;
            progress.bar = &bar;
            sync.setEvents(&progress);
            sync.Sync();
            sync.setEvents(nullptr);
            if (progress.families > 0) bar.Update(100, "done");
        }
        std::vector<SchemeFileItem> failed;
        for (long i = errorsBefore + 1; i <= sync.Errors().Count(); ++i) failed.push_back(sync.Errors().Item(i));
        if (!failed.empty() || !progress.timeErrors.empty()) exitCode = kWriteFailed;

        SyncSchemes after;
        Scan(after, args);
        if (JsonOutput()) {
            Json failedJson = Json::array();
            for (const auto& item : failed) failedJson.push_back(ItemJson(item));
            json["copy"] = {{"families", progress.families}, {"timeErrors", progress.timeErrors}, {"failed", failedJson}};
            AddListsJson(json["after"], after);
        } else {
            std::cout << "\nCopied " << progress.families << " scheme famil" << (progress.families == 1 ? "y" : "ies")
                      << "; " << failed.size() << " failed.\n";
            for (const auto& item : failed) std::cout << "  " << item.RelativePath() << ": " << item.ErrDescription() << "\n";
            std::cout << "\nAfter copying:\n";
            PrintLists(after);
        }
    }
    if (JsonOutput()) PrintJson(json);
    return exitCode;
}

}  // namespace

void AddSyncCommand(CLI::App& app, int& exitCode) {
    auto args = std::make_shared<Arguments>();
    CLI::App* cmd = app.add_subcommand(
        "sync",
        "Compare a remote and a local scheme folder; lists the schemes newer on each side and those in step. "
        "Nothing is copied unless an --update or --revert option asks for it; whatever is replaced is first "
        "kept as NAME~0000.BAK.");
    cmd->add_option("REMOTE", args->remote, "The remote scheme folder")->required();
    cmd->add_option("LOCAL", args->local, "The local scheme folder")->required();
    AddJsonFlag(cmd);
    cmd->add_flag("--create-missing", args->createMissing,
                  "Take a folder that does not exist as an empty side (copies then create it)");
    cmd->add_flag("--update-all", args->updateAll, "Copy every newer scheme over its older copy, both ways");
    cmd->add_flag("--update-remote,--push", args->updateRemote,
                  "Copy the schemes that are newer locally to the remote folder");
    cmd->add_flag("--update-local,--pull", args->updateLocal,
                  "Copy the schemes that are newer remotely to the local folder");
    cmd->add_option("--revert", args->revert,
                    "Copy the older copy of these schemes back over the newer one (relative path or key, e.g. "
                    "North/Weir1.SXS)");
    cmd->callback([args, &exitCode] { exitCode = Run(*args); });
}

}  // namespace meridex::cli
