#include <gtest/gtest.h>

#include <pthread.h>

#include <filesystem>
#include <functional>

#include "SyncTestSupport.h"
#include <meridex/frame/FileOps.h>
#include <meridex/sync/SyncSchemes.h>

using namespace meridex;
using namespace meridex::test;
namespace fs = std::filesystem;

namespace {

constexpr std::time_t T = 1700000000;

std::vector<std::string> Keys(const SchemeFileCollection& list) {
    std::vector<std::string> keys;
    for (const auto& item : list.Items()) keys.push_back(item.Key());
    return keys;
}


// Names in a folder, hidden temporary files included.
std::vector<std::string> Names(const std::string& folder) { return TempDir::Entries(folder); }

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
    EXPECT_EQ(Keys(sync.NewerLocalFiles()), (std::vector<std::string>{"/SUB/SITE.SXS", "/SUB/ONLYLOCAL.SXS"}));
    EXPECT_EQ(Keys(sync.NewerRemoteFiles()), (std::vector<std::string>{"/NEWER.SXS", "/ONLYREMOTE.SXS"}));
    // Files of a folder come before its sub-folders.
    EXPECT_EQ(Keys(sync.SyncedFiles()), (std::vector<std::string>{"/SAME.SXS", "/CASE/SITE2.SXS1"}));
    EXPECT_EQ(sync.Errors().Count(), 0);

    SchemeFileItem site = sync.NewerLocalFiles().Item("/sub/site.sxs");
    EXPECT_EQ(site.RelativePath(), "/Sub/Site.SXS");
    EXPECT_EQ(site.File().Path(), t.local + "/Sub/Site.SXS");
    EXPECT_EQ(site.OtherFile().Path(), t.remote + "/Sub/Site.SXS");
    EXPECT_EQ(site.SyncOptions(), syncIgnore);
    EXPECT_TRUE(sync.NewerRemoteFiles().Item("/ONLYREMOTE.SXS").OtherFile().IsNull());
    EXPECT_EQ(events.found.size(), 10u);
    EXPECT_EQ(events.found.front(), t.remote + "/Newer.SXS\r\n");

    // A second call adds to the lists; what is listed already keeps its item.
    site.setSyncOptions(syncUpdate);
    sync.GetSchemeList(t.remote, t.local);
    EXPECT_EQ(sync.NewerLocalFiles().Count(), 2);
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
    EXPECT_EQ(Keys(sync.NewerLocalFiles()), (std::vector<std::string>{"/A.SXS", "/B.SXS"}));
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
    EXPECT_EQ(fresh.NewerRemoteFiles().Count() + fresh.NewerLocalFiles().Count(), 0);
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
    sync.GetSchemeList(t.remote, t.local);
    sync.NewerLocalFiles().Item("/SUB DIR/SITE.SXS").setSyncOptions(syncUpdate);
    sync.NewerLocalFiles().Item("/ÜNÏCÖDÉ/MËTER.SXS").setSyncOptions(syncUpdate);
    sync.NewerLocalFiles().Item("/SUB DIR/SITE.SXS1").setSyncOptions(syncUpdate);  // the same family again
    if (!kBackSlashSeparates) sync.NewerLocalFiles().Item("/ODD/A\\B.SXS").setSyncOptions(syncUpdate);
    sync.Sync();
    EXPECT_EQ(sync.Errors().Count(), 0);
    ASSERT_EQ(events.copies.size(), kBackSlashSeparates ? 3u : 4u);
    EXPECT_NE(std::find(events.copies.begin(), events.copies.end(), t.local + "/Sub Dir/Site -> " + t.remote + "/SUB DIR/"),
              events.copies.end())
        << ::testing::PrintToString(events.copies);
    // Whole percent, rounded down.
    const std::vector<int> progress = kBackSlashSeparates ? std::vector<int>{0, 33, 66} : std::vector<int>{0, 25, 50, 75};
    EXPECT_EQ(events.progress, progress);

    // New names take the extension in upper case; existing ones keep theirs.
    EXPECT_EQ(Names(t.remote + "/SUB DIR"),
              (std::vector<std::string>{"Site.BAK", "Site.XML", "site.sxs", "site.sxs~0000.BAK"}));
    if (!kBackSlashSeparates) {
        EXPECT_EQ(Names(t.remote + "/Odd"), std::vector<std::string>{"a\\b.SXS"});
    }
    EXPECT_EQ(TempDir::Read(t.remote + "/SUB DIR/site.sxs"), "new sxs");
    EXPECT_EQ(TempDir::Read(t.remote + "/SUB DIR/site.sxs~0000.BAK"), "old sxs");
    FileInfo st = StatOf(t.remote + "/SUB DIR/Site.XML");
    EXPECT_EQ(st.Modified().tv_sec, T + 5);
    EXPECT_EQ(st.Modified().tv_nsec, 300);
    EXPECT_EQ(TempDir::Read(t.remote + "/Ünïcödé/Mëter.SXS"), "unicode");

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
        EXPECT_EQ(TempDir::Read(t.local + "/Site.SXS"), "remote v1");
        EXPECT_EQ(StatOf(t.local + "/Site.SXS").Modified().tv_sec, T);
    }
    EXPECT_EQ(TempDir::Read(t.local + "/Site.SXS~0000.BAK"), "local v2");
    EXPECT_EQ(TempDir::Read(t.local + "/Site.SXS~0001.BAK"), "local v3");
    EXPECT_EQ(Names(t.remote), std::vector<std::string>{"Site.SXS"});
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
    sync.GetSchemeList(t.remote, t.local);
    for (auto item : sync.NewerLocalFiles().Items()) item.setSyncOptions(syncUpdate);
    sync.Sync();
    // The flag is tested before each file: B, announced, copies nothing; C is
    // not started; A is in place and no temporary file is left.
    EXPECT_EQ(Names(t.remote), std::vector<std::string>{"A.SXS"});
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
    EXPECT_EQ(TempDir::Read(t.remote + "/A/One.SXS"), "the only good copy");
    EXPECT_EQ(Names(t.remote + "/A"), std::vector<std::string>{"One.SXS"});
    ASSERT_EQ(sync.Errors().Count(), 2);  // both families failed this time
    EXPECT_NE(sync.Errors().Item("/A/ONE.SXS").ErrDescription().find("Unable to copy"), std::string::npos);
    EXPECT_TRUE(sync.Errors().Exists("/B/TWO.SXS"));

    // A file that vanished after the folder was read is skipped quietly.
    faulty->transferBytesBeforeFailure = -1;
    faulty->ghostFiles = {"One.LDR", "Two.LDR"};
    sync.Sync();
    EXPECT_EQ(sync.Errors().Count(), 2);
    EXPECT_EQ(TempDir::Read(t.remote + "/A/One.SXS"), "one");
    EXPECT_EQ(TempDir::Read(t.remote + "/A/One.SXS~0000.BAK"), "the only good copy");

    // The disk fills up: new copies are not put in place and leave nothing behind.
    faulty->ghostFiles.clear();
    faulty->failFlush = true;
    t.L("C/Three.SXS", "three", T);
    t.L("C/Three.XML", "three xml", T);
    SyncSchemes full(faulty);
    full.GetSchemeList(t.remote, t.local);
    full.NewerLocalFiles().Item("/C/THREE.SXS").setSyncOptions(syncUpdate);
    full.Sync();
    EXPECT_EQ(Keys(full.Errors()), std::vector<std::string>{"/C/THREE.SXS"});
    EXPECT_TRUE(Names(t.remote + "/C").empty());

    // A file stands where the destination folder should be.
    t.R("D", "a file, not a folder", T);
    t.L("D/Four.SXS", "four", T);
    SyncSchemes blocked;
    blocked.GetSchemeList(t.remote, t.local);
    blocked.NewerLocalFiles().Item("/D/FOUR.SXS").setSyncOptions(syncUpdate);
    blocked.Sync();
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
    EXPECT_EQ(Keys(sync.NewerLocalFiles()), (std::vector<std::string>{"/OPEN/FINE.SXS", "/OPEN/SITE.SXS"}));
    EXPECT_EQ(sync.NewerRemoteFiles().Count(), 0);
    if (caseClash) {
        EXPECT_EQ(Keys(sync.Errors()), (std::vector<std::string>{"/LOCKED/", "/OPEN/SITE.SXS", "/LOCKED/OTHER.SXS",
                                                                 "/LOCKED/SITE.SXS"}));
        EXPECT_EQ(sync.Errors().Item("/OPEN/SITE.SXS").File().Name(), "Site.SXS");
    } else {
        EXPECT_EQ(Keys(sync.Errors()), (std::vector<std::string>{"/LOCKED/", "/LOCKED/OTHER.SXS", "/LOCKED/SITE.SXS"}));
    }
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
        sync.GetSchemeList(t.remote, t.local);
        sync.NewerLocalFiles().Item("/SITE.SXS").setSyncOptions(syncUpdate);
        sync.Sync();
        EXPECT_TRUE(events.errors.empty());
        if (!allowed) {
            // Nothing of the family is replaced, and it is listed with the reason.
            ASSERT_TRUE(sync.Errors().Exists("/SITE.SXS"));
            EXPECT_NE(sync.Errors().Item("/SITE.SXS").ErrDescription().find("read-only"), std::string::npos);
            EXPECT_EQ(TempDir::Read(remote), "protected");
            EXPECT_EQ(Names(t.remote), (std::vector<std::string>{"Site.SXS", "Site.XML"}));
        } else {
            EXPECT_EQ(sync.Errors().Count(), 0);
            EXPECT_EQ(TempDir::Read(remote), "new scheme");
            EXPECT_EQ(TempDir::Read(remote + "~0000.BAK"), "protected");
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
    sync.GetSchemeList(t.remote, t.local);
    sync.NewerLocalFiles().Item("/SITE.SXS").setSyncOptions(syncUpdate);
    sync.Sync();
    EXPECT_TRUE(sync.Errors().Exists("/SITE.SXS"));
    EXPECT_EQ(TempDir::Read(t.remote + "/Site.SXS"), "old");
    EXPECT_EQ(Names(t.remote), std::vector<std::string>{"Site.SXS"});
}
