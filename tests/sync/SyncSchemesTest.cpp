#include <gtest/gtest.h>

#include <pthread.h>

#include <cstring>
#include <filesystem>
#include <functional>

#include "SyncTestSupport.h"
#include <meridex/frame/FileOps.h>
#include <meridex/sync/SchemeFileCollection.h>
#include <meridex/sync/SyncSchemes.h>

using namespace meridex;
using namespace meridex::test;
namespace fs = std::filesystem;

namespace {

constexpr std::time_t T = 1700000000;

struct Trees {
    TempDir dir;
    std::string remote = dir.File("remote");
    std::string local = dir.File("local");
    std::string R(const std::string& name, const std::string& text, std::time_t t, long ns = 0) const {
        return WriteDated(dir, "remote/" + name, text, t, ns);
    }
    std::string L(const std::string& name, const std::string& text, std::time_t t, long ns = 0) const {
        return WriteDated(dir, "local/" + name, text, t, ns);
    }
    // Compares the trees, marks the named newer local schemes (all of them when none is named) for
    // update, and copies.
    void Push(SyncSchemes& sync, const std::vector<std::string>& keys = {}) const {
        sync.GetSchemeList(remote, local);
        auto& newer = sync.NewerLocalFiles();
        for (const std::string& key : keys.empty() ? Keys(newer) : keys) newer.Item(key).setSyncOptions(syncUpdate);
        sync.Sync();
    }
};

// Runs work on a thread of its own whose stack is the given size.
void OnSmallStack(std::size_t bytes, const std::function<void()>& work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, bytes), 0);
    const auto run = [](void* w) -> void* {
        (*static_cast<const std::function<void()>*>(w))();
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

}  // namespace

TEST(SyncSchemes, SortsEverySchemeByItsModifiedTimeToTheSecond) {
    Trees t;
    t.R("OnlyRemote.SXS", "r", T);
    t.L("Sub/OnlyLocal.sxs", "l", T);
    t.R("Sub/Site.SXS", "old", T);
    t.L("Sub/Site.SXS", "new", T + 1);  // one second is newer
    t.R("Newer.SXS", "new", T + 3600);
    t.L("Newer.SXS", "old", T);
    t.R("Same.SXS", "size differs", T, 100);
    t.L("Same.SXS", "s", T, 900000000);  // same second
    t.R("CASE/site2.sxs1", "r", T);      // pairs up with the local file ignoring case
    t.L("Case/SITE2.SXS1", "l", T);
    t.L("Case/Site2.XML", "not a scheme file", T);
    t.L("Case/Site2.TMP", "not a scheme file", T);

    SyncSchemes sync;
    RecordedEvents events;
    sync.setEvents(&events);
    sync.GetSchemeList(t.remote + "/", t.local);
    // Files of a folder come before its sub-folders.
    const std::string sorted = "local /SUB/SITE.SXS /SUB/ONLYLOCAL.SXS | remote /NEWER.SXS /ONLYREMOTE.SXS"
                               " | synced /SAME.SXS /CASE/SITE2.SXS1 | errors";
    EXPECT_EQ(Lists(sync), sorted);

    SchemeFileItem site = sync.NewerLocalFiles().Item("/sub/site.sxs");
    EXPECT_EQ(site.RelativePath() + " " + site.File().Path() + " " + site.OtherFile().Path(),
              "/Sub/Site.SXS " + t.local + "/Sub/Site.SXS " + t.remote + "/Sub/Site.SXS");
    EXPECT_EQ(site.SyncOptions(), syncIgnore);
    EXPECT_TRUE(sync.NewerRemoteFiles().Item("/ONLYREMOTE.SXS").OtherFile().IsNull());
    EXPECT_EQ(events.found.size(), 10u);
    EXPECT_EQ(events.found.front(), t.remote + "/Newer.SXS\r\n");

    // A second call adds to the lists; what is listed already keeps its item.
    site.setSyncOptions(syncUpdate);
    sync.GetSchemeList(t.remote, t.local);
    EXPECT_EQ(Lists(sync), sorted);
    EXPECT_EQ(sync.NewerLocalFiles().Item(1).SyncOptions(), syncUpdate);
    EXPECT_EQ(sync.RemotePath(), t.remote);
}

TEST(SyncSchemes, AMissingRootIsAnEmptySideAndACancelledScanSortsNothing) {
    Trees t;
    t.L("A.SXS", "a", T);
    t.L("B.SXS", "b", T);
    SyncSchemes sync;
    // Relative roots: the files found still carry their full paths.
    const fs::path cwd = fs::current_path();
    fs::current_path(t.dir.Path());
    sync.GetSchemeList("no such folder", "local/");
    fs::current_path(cwd);
    EXPECT_EQ(Lists(sync), "local /A.SXS /B.SXS | remote | synced | errors");
    // Windows spells the made-absolute root with its own separator.
    EXPECT_EQ(fs::path(sync.NewerLocalFiles().Item(1).File().Path()).lexically_normal(),
              fs::path(t.local + "/A.SXS").lexically_normal());

    SyncSchemes fresh;
    RecordedEvents cancel;
    cancel.sync = &fresh;
    cancel.cancelAtFound = 1;
    fresh.setEvents(&cancel);
    fresh.GetSchemeList(t.local, t.dir.File("empty"));
    EXPECT_TRUE(fresh.CancelFlag());
    EXPECT_EQ(Lists(fresh), "local | remote | synced | errors");
    SyncEvents quiet;  // the default events do nothing
    fresh.setEvents(&quiet);
    fresh.GetSchemeList(t.local, t.dir.File("empty"));
    EXPECT_FALSE(fresh.CancelFlag());
    EXPECT_EQ(fresh.NewerRemoteFiles().Count(), 2);
}

TEST(SyncSchemes, UpdateCopiesTheListedExtensionsWithExactTimesAndBacksUpWhatItReplaces) {
    Trees t;
    t.L("Sub Dir/Site.SXS", "new sxs", T + 10, 111);
    t.L("Sub Dir/Site.XML", "new xml", T + 5, 300);  // a time Windows can hold (100 ns steps)
    t.L("Sub Dir/Site.bak", "bak", T);
    t.L("Sub Dir/Site.TMP", "tmp", T);
    t.L("Sub Dir/Site.SXS1", "also a scheme file", T);
    t.L("Sub Dir/Site.SXS~0000.BAK", "a local backup", T);
    t.L("Sub Dir/Site2.SXS", "another family", T);
    t.R("SUB DIR/site.sxs", "old sxs", T);  // the remote spelling is kept
    t.L("Ünïcödé/Mëter.SXS", "unicode", T);
    if (!kBackSlashSeparates) t.L("Odd/a\\b.SXS", "a back slash is part of a name here", T);

    SyncSchemes sync;
    RecordedEvents events;
    sync.setEvents(&events);
    // Site.SXS1 is the same family again.
    std::vector<std::string> keys = {"/SUB DIR/SITE.SXS", "/ÜNÏCÖDÉ/MËTER.SXS", "/SUB DIR/SITE.SXS1"};
    if (!kBackSlashSeparates) keys.push_back("/ODD/A\\B.SXS");
    t.Push(sync, keys);
    EXPECT_EQ(sync.Errors().Count(), 0);
    ASSERT_EQ(events.copies.size(), kBackSlashSeparates ? 3u : 4u);
    EXPECT_NE(std::find(events.copies.begin(), events.copies.end(), t.local + "/Sub Dir/Site -> " + t.remote + "/SUB DIR/"),
              events.copies.end())
        << ::testing::PrintToString(events.copies);
    // Whole percent, rounded down.
    const std::vector<int> progress = kBackSlashSeparates ? std::vector<int>{0, 33, 66} : std::vector<int>{0, 25, 50, 75};
    EXPECT_EQ(events.progress, progress);

    // New names take the extension in upper case; existing ones keep theirs.
    std::vector<std::string> copied = {"SUB DIR/Site.BAK=bak", "SUB DIR/Site.XML=new xml", "SUB DIR/site.sxs=new sxs",
                                       "SUB DIR/site.sxs~0000.BAK=old sxs", "Ünïcödé/Mëter.SXS=unicode"};
    if (!kBackSlashSeparates) copied.insert(copied.begin(), "Odd/a\\b.SXS=a back slash is part of a name here");
    EXPECT_EQ(Tree(t.remote), copied);
    FileInfo st = StatOf(t.remote + "/SUB DIR/Site.XML");
    EXPECT_EQ(st.Modified().tv_sec, T + 5);
    EXPECT_EQ(st.Modified().tv_nsec, 300);

    // Afterwards the two sides are in step.
    SyncSchemes again;
    again.GetSchemeList(t.remote, t.local);
    EXPECT_TRUE(again.SyncedFiles().Exists("/SUB DIR/SITE.SXS"));
    EXPECT_TRUE(again.SyncedFiles().Exists("/ÜNÏCÖDÉ/MËTER.SXS"));
}

TEST(SyncSchemes, RevertingTwiceKeepsBothBackups) {
    Trees t;
    t.R("Site.SXS", "remote v1", T);
    t.L("Site.SXS", "local v2", T + 60);
    for (int round = 0; round < 2; ++round) {
        if (round == 1) t.L("Site.SXS", "local v3", T + 120);
        SyncSchemes sync;
        sync.GetSchemeList(t.remote, t.local);
        ASSERT_EQ(sync.NewerLocalFiles().Count(), 1);
        sync.NewerLocalFiles().Item(1).setSyncOptions(syncRevert);
        sync.Sync();
        EXPECT_EQ(StatOf(t.local + "/Site.SXS").Modified().tv_sec, T);
    }
    EXPECT_EQ(Tree(t.local), (std::vector<std::string>{"Site.SXS=remote v1", "Site.SXS~0000.BAK=local v2",
                                                      "Site.SXS~0001.BAK=local v3"}));
    EXPECT_EQ(Tree(t.remote), std::vector<std::string>{"Site.SXS=remote v1"});
}

TEST(SyncSchemes, CancellingStopsAtTheNextFileAndPutsFinishedCopiesInPlace) {
    Trees t;
    t.L("A.SXS", "a", T);
    t.L("B.SXS", "b", T);
    t.L("C.SXS", "c", T);
    SyncSchemes sync;
    RecordedEvents cancel;
    cancel.sync = &sync;
    cancel.cancelAtCopy = 2;
    sync.setEvents(&cancel);
    t.Push(sync);
    // The flag is tested before each file: B, announced, copies nothing; C is
    // not started; A is in place and no temporary file is left.
    EXPECT_EQ(Tree(t.remote), std::vector<std::string>{"A.SXS=a"});
    EXPECT_EQ(cancel.copies.size(), 2u);
}

TEST(SyncSchemes, FailuresAreReportedAndTheCopyingGoesOn) {
    Trees t;
    t.L("A/One.SXS", "one", T + 9);
    t.L("A/One.XML", "one xml", T + 9);
    t.R("A/One.SXS", "the only good copy", T);
    t.L("B/Two.SXS", "two", T + 9);
    t.L("B/Two.XML", "two xml", T + 9);
    auto faulty = std::make_shared<FaultyFileSystem>();
    SyncSchemes sync(faulty);
    RecordedEvents events;
    sync.setEvents(&events);
    sync.GetSchemeList(t.remote, t.local);
    for (auto item : sync.NewerLocalFiles().Items()) item.setSyncOptions(syncUpdate);

    // Times that cannot be set: reported per file, and every file is copied.
    faulty->failTimes = true;
    sync.NewerLocalFiles().Item("/A/ONE.SXS").setSyncOptions(syncIgnore);
    sync.Sync();
    EXPECT_EQ(events.errors, (std::vector<std::string>{t.remote + "/B/Two.XML: Unable to revert file date/times",
                                                       t.remote + "/B/Two.SXS: Unable to revert file date/times"}));
    EXPECT_EQ(TempDir::Read(t.remote + "/B/Two.SXS"), "two");

    // The network drops mid-copy: the old file stays, the next scheme is still copied.
    faulty->failTimes = false;
    faulty->transferBytesBeforeFailure = 2;
    sync.NewerLocalFiles().Item("/A/ONE.SXS").setSyncOptions(syncUpdate);
    sync.Sync();
    EXPECT_EQ(Tree(t.remote + "/A"), std::vector<std::string>{"One.SXS=the only good copy"});
    // Both families failed this time.
    EXPECT_EQ(Keys(sync.Errors()), (std::vector<std::string>{"/A/ONE.SXS", "/B/TWO.SXS"}));
    EXPECT_NE(sync.Errors().Item("/A/ONE.SXS").ErrDescription().find("Unable to copy"), std::string::npos);

    // A file that vanished after the folder was read is skipped quietly.
    faulty->transferBytesBeforeFailure = -1;
    faulty->ghostFiles = {"One.LDR", "Two.LDR"};
    sync.Sync();
    EXPECT_EQ(sync.Errors().Count(), 2);
    EXPECT_EQ(Tree(t.remote + "/A"), (std::vector<std::string>{"One.SXS=one", "One.SXS~0000.BAK=the only good copy",
                                                              "One.XML=one xml"}));

    // The disk fills up: new copies are not put in place and leave nothing behind.
    faulty->ghostFiles.clear();
    faulty->failFlush = true;
    t.L("C/Three.SXS", "three", T);
    t.L("C/Three.XML", "three xml", T);
    SyncSchemes full(faulty);
    t.Push(full, {"/C/THREE.SXS"});
    EXPECT_EQ(Keys(full.Errors()), std::vector<std::string>{"/C/THREE.SXS"});
    EXPECT_TRUE(Tree(t.remote + "/C").empty());

    // A file stands where the destination folder should be.
    t.R("D", "a file, not a folder", T);
    t.L("D/Four.SXS", "four", T);
    SyncSchemes blocked;
    t.Push(blocked, {"/D/FOUR.SXS"});
    EXPECT_TRUE(blocked.Errors().Exists("/D/FOUR.SXS"));
    EXPECT_EQ(TempDir::Read(t.remote + "/D"), "a file, not a folder");
}

TEST(SyncSchemes, AnUnreadableFolderIsSkippedAndNothingUnderItIsCalledOneSided) {
    Trees t;
    t.L("Locked/Site.SXS", "l", T);
    t.R("Locked/Site.SXS", "r", T);
    t.R("Locked/Other.SXS", "r", T);
    t.L("Open/Fine.SXS", "l", T);
    t.L("Open/Site.SXS", "l", T);
    t.L("Open/SITE.sxs", "same name but for case", T);
    // Where names ignore case (Windows) that was the same file again: no clash to report.
    const bool caseClash = TempDir::Entries(t.local + "/Open").size() == 3;
    auto faulty = std::make_shared<FaultyFileSystem>();
    faulty->unreadableFolder = t.local + "/Locked";
    SyncSchemes sync(faulty);
    sync.GetSchemeList(t.remote, t.local);
    EXPECT_EQ(Lists(sync), std::string("local /OPEN/FINE.SXS /OPEN/SITE.SXS | remote | synced | errors /LOCKED/") +
                               (caseClash ? " /OPEN/SITE.SXS" : "") + " /LOCKED/OTHER.SXS /LOCKED/SITE.SXS");
    if (caseClash) EXPECT_EQ(sync.Errors().Item("/OPEN/SITE.SXS").File().Name(), "Site.SXS");
}

// A scan that called itself once a level would have to make do with under 200 bytes of stack a
// level to get through the small stack it is given here (a recursive sketch needed over 320,
// optimised); a loop over a list of folders needs no more at the bottom than at the top, even
// under AddressSanitizer. (Wine's own calls are given more room.)
TEST(SyncSchemes, AVeryDeepTreeIsScannedWithoutRecursion) {
    Trees t;
    std::string deep = "local";
    for (int level = 0; level < 500; ++level) {
        deep += "/d";
        // Longer than the classic path limit: the library's own call makes it on Windows too.
        ASSERT_NO_THROW(FileOps::CreateFolderPath(t.dir.File(deep)));
    }
    WriteDated(t.dir, deep + "/Deep.SXS", "deep", T);
    SyncSchemes sync;
    OnSmallStack(kBackSlashSeparates ? 1024 * 1024 : 96 * 1024, [&] { sync.GetSchemeList(t.remote, t.local); });
    ASSERT_EQ(sync.NewerLocalFiles().Count(), 1);
    sync.NewerLocalFiles().Item(1).setSyncOptions(syncUpdate);
    sync.Sync();
    EXPECT_EQ(sync.Errors().Count(), 0) << sync.Errors().Item(1).ErrDescription();
    EXPECT_EQ(TempDir::Read(t.remote + deep.substr(5) + "/Deep.SXS"), "deep");
}

TEST(SyncSchemes, AWriteProtectedFileFailsItsFamilyUnlessReplacingIsAllowed) {
    Trees t;
    t.L("Site.SXS", "new scheme", T + 9);
    t.L("Site.XML", "new xml", T + 9);
    const std::string remote = t.R("Site.SXS", "protected", T);
    t.R("Site.XML", "old xml", T);
    chmod(remote.c_str(), 0444);
    auto fileSystem = std::make_shared<SchemeFileSystem>();
    for (bool allowed : {false, true}) {
        fileSystem->setReplaceReadOnly(allowed);
        SyncSchemes sync(fileSystem);
        RecordedEvents events;
        sync.setEvents(&events);
        t.Push(sync);
        EXPECT_TRUE(events.errors.empty());
        if (!allowed) {
            // Nothing of the family is replaced, and it is listed with the reason.
            ASSERT_TRUE(sync.Errors().Exists("/SITE.SXS"));
            EXPECT_NE(sync.Errors().Item("/SITE.SXS").ErrDescription().find("read-only"), std::string::npos);
            EXPECT_EQ(Tree(t.remote), (std::vector<std::string>{"Site.SXS=protected", "Site.XML=old xml"}));
        } else {
            EXPECT_EQ(sync.Errors().Count(), 0);
            EXPECT_EQ(Tree(t.remote), (std::vector<std::string>{"Site.SXS=new scheme", "Site.SXS~0000.BAK=protected",
                                                                "Site.XML=new xml", "Site.XML~0000.BAK=old xml"}));
        }
    }
    // A copy on its own refuses the same way.
    std::string error;
    SchemeFileSystem strict;
    chmod(remote.c_str(), 0444);
    EXPECT_EQ(strict.CopyFile(t.local + "/Site.XML", remote, true, error), SchemeFileSystem::CopyResult::Failed);
    EXPECT_EQ(TempDir::Read(remote), "new scheme");
}

TEST(SyncSchemesAsUser, AFolderClosedToWritingFailsItsFamiliesAndChangesNothing) {
    if (const char* why = WhyFolderPermissionsCannotBeTested()) GTEST_SKIP() << why;
    Trees t;
    t.L("Site.SXS", "new", T + 9);
    t.R("Site.SXS", "old", T);
    ASSERT_EQ(chmod(t.remote.c_str(), 0555), 0);
    SyncSchemes sync;
    t.Push(sync);
    EXPECT_TRUE(sync.Errors().Exists("/SITE.SXS"));
    EXPECT_EQ(Tree(t.remote), std::vector<std::string>{"Site.SXS=old"});
}

TEST(SchemeFileSystem, CopyGivesTheSourcesExactTimesAndTheTargetsMode) {
    TempDir dir;
    std::string source = WriteDated(dir, "a/Site.SXS", "new scheme", 1700000000, 123456700);  // Windows keeps times to 100 ns
    std::string target = WriteDated(dir, "b/Site.SXS", "old", 1600000000);
    chmod(target.c_str(), 0640);
    SchemeFileSystem fs;
    std::string error;
    ASSERT_EQ(fs.CopyFile(source, target, false, error), SchemeFileSystem::CopyResult::Copied) << error;
    FileInfo st = StatOf(target);  // before reading it moves the access time
    EXPECT_EQ(st.Modified().tv_sec, 1700000000);
    EXPECT_EQ(st.Modified().tv_nsec, 123456700);
    EXPECT_EQ(st.Accessed().tv_sec, 1700000000 - 86400);
#ifndef _WIN32  // no permission bits there
    EXPECT_EQ(std::filesystem::status(target).permissions() & std::filesystem::perms::mask,
              std::filesystem::perms(0640));
#endif
    EXPECT_EQ(Tree(dir.File("b")), std::vector<std::string>{"Site.SXS=new scheme"});
}

TEST(SchemeFileSystem, BackupTakesTheFirstFreeNumberAndKeepsTheOldBytesAndTimes) {
    TempDir dir;
    std::string file = WriteDated(dir, "Site.SXS", "v1", 1600000000);
    WriteDated(dir, "Site.SXS~0000.BAK", "older backup", 1500000000);
    SchemeFileSystem fs;
    std::string error;
    EXPECT_EQ(SchemeFileSystem::BackupName(file, 12345), file + "~12345.BAK");
    EXPECT_EQ(fs.BackupFile(file, error), file + "~0001.BAK");
    EXPECT_EQ(StatOf(file + "~0001.BAK").Modified().tv_sec, 1600000000);

    // Replacing the file afterwards leaves the backup as it was.
    std::string source = WriteDated(dir, "new/Site.SXS", "v2", 1700000000);
    std::string backup;
    ASSERT_EQ(fs.CopyFile(source, file, true, error, &backup), SchemeFileSystem::CopyResult::Copied);
    EXPECT_EQ(backup, file + "~0002.BAK");
    EXPECT_EQ(Tree(dir.Path()), (std::vector<std::string>{"Site.SXS=v2", "Site.SXS~0000.BAK=older backup",
                                                         "Site.SXS~0001.BAK=v1", "Site.SXS~0002.BAK=v1",
                                                         "new/Site.SXS=v2"}));
    EXPECT_TRUE(fs.BackupFile(dir.File("Missing.SXS"), error).empty());
}

TEST(SchemeFileSystem, AFailedCopyLeavesTheTargetUntouchedAndNoTemporaryFile) {
    TempDir dir;
    std::string source = WriteDated(dir, "a/Site.SXS", std::string(100000, 'n'), 1700000000);
    std::string target = WriteDated(dir, "b/Site.SXS", "the only good copy", 1600000000, 500);
    FaultyFileSystem fs;
    std::string error;

    fs.transferBytesBeforeFailure = 4096;  // the share drops mid-copy
    EXPECT_EQ(fs.CopyFile(source, target, true, error), SchemeFileSystem::CopyResult::Failed);
    EXPECT_NE(error.find("Input/output error"), std::string::npos);
    fs.transferBytesBeforeFailure = -1;
    fs.failFlush = true;  // the disk fills up
    EXPECT_EQ(fs.CopyFile(source, target, true, error), SchemeFileSystem::CopyResult::Failed);
    fs.failFlush = false;
    // A folder where the file should go.
    std::filesystem::create_directories(dir.File("b/Other.SXS"));
    EXPECT_EQ(fs.CopyFile(source, dir.File("b/Other.SXS"), true, error), SchemeFileSystem::CopyResult::Failed);
    // Renames that fail, one copy at a time and as a batch.
    for (int code : {ENOSPC, EIO}) {
        fs.failRename = code;
        EXPECT_EQ(fs.CopyFile(source, target, false, error), SchemeFileSystem::CopyResult::Failed);
        EXPECT_NE(error.find(std::strerror(code)), std::string::npos) << error;
        std::vector<SchemeFileSystem::PendingCopy> pending;
        EXPECT_EQ(fs.CopyFile(source, target, false, error, nullptr, &pending), SchemeFileSystem::CopyResult::Copied);
        EXPECT_EQ(fs.CopyFile(source, dir.File("b/New.SXS"), false, error, nullptr, &pending),
                  SchemeFileSystem::CopyResult::Copied);
        const auto errors = fs.CommitPending(pending);
        ASSERT_EQ(errors.size(), 2u);
        EXPECT_NE(errors[0].find(std::strerror(code)), std::string::npos) << errors[0];
        EXPECT_NE(errors[1].find(std::strerror(code)), std::string::npos) << errors[1];
    }
    fs.failRename = 0;
    // The destination folder went away after the scan.
    EXPECT_EQ(fs.CopyFile(source, dir.File("gone/Site.SXS"), true, error), SchemeFileSystem::CopyResult::Failed);
    EXPECT_NE(error.find(dir.File("gone")), std::string::npos) << error;

    EXPECT_EQ(StatOf(target).Modified().tv_nsec, 500);
    EXPECT_EQ(Tree(dir.File("b")), std::vector<std::string>{"Site.SXS=the only good copy"});
}

namespace {

SchemeFileItem Named(const std::string& key) {
    SchemeFileItem item;
    item.setKey(key);
    return item;
}

}  // namespace

TEST(SchemeFileCollection, KeepsOrderFindsByNumberOrKeyIgnoringCaseAndRefusesAKeyTwice) {
    SchemeFileCollection list;
    ASSERT_TRUE(list.Add(Named("/A.SXS"), "/A.SXS"));
    ASSERT_TRUE(list.Add(Named("/B.SXS"), "/B.SXS"));
    ASSERT_TRUE(list.Add(Named("/C.SXS"), "/C.SXS"));
    EXPECT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Item(2).Key(), "/B.SXS");
    EXPECT_EQ(list.Item("/c.sxs").Key(), "/C.SXS");
    EXPECT_TRUE(list.Item(0).IsNull());
    EXPECT_TRUE(list.Item(4).IsNull());
    EXPECT_TRUE(list.Item("/D.SXS").IsNull());

    // An item taken out of the collection is the item in it.
    list.Item(1).setSyncOptions(syncRevert);
    EXPECT_EQ(list.Item("/A.SXS").SyncOptions(), syncRevert);

    // Removal closes the gap in the numbering.
    EXPECT_TRUE(list.Remove(1));
    EXPECT_TRUE(list.Remove("/c.SXS"));
    EXPECT_FALSE(list.Remove("/C.SXS"));
    EXPECT_EQ(list.Item(1).Key(), "/B.SXS");
    ASSERT_TRUE(list.Add(Named("/A.SXS"), "/A.SXS"));

    // A key already present is refused and the first item kept.
    SchemeFileItem first = list.Item("/B.SXS");
    EXPECT_FALSE(list.Add(Named("second"), "/b.sxs"));
    EXPECT_FALSE(list.Add(SchemeFileItem::None(), "/OTHER.SXS"));
    EXPECT_EQ(Keys(list), (std::vector<std::string>{"/B.SXS", "/A.SXS"}));
    EXPECT_TRUE(list.Item(1) == first);
    list.Clear();
    EXPECT_TRUE(list.Item("/B.SXS").IsNull());
}
