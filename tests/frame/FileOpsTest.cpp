#include <gtest/gtest.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "OsSupport.h"
#include "TempDir.h"
#include "Thrown.h"
#include <meridex/frame/Error.h>
#include "FailingDiskSteps.h"
#include <meridex/frame/FileOps.h>

using namespace meridex;
using namespace meridex::FileOps;
using test::TempDir;

TEST(FileOps, BaseNamesAndFolders) {
    const struct { const char *path, *base, *folder; } paths[] = {
        {"C:\\Data\\Site.XML", "Site", "C:\\Data\\"},
        {"/srv/schemes/Hill.sxs", "Hill", "/srv/schemes/"},
        {"Site.tar.gz", "Site.tar", ""},
        {"C:\\data.old\\README", "", "C:\\data.old\\"},
        {"/data.old/README", "", "/data.old/"},
        {"README", "README", ""},
        {"", "", ""}};
    for (const auto& p : paths) {
        EXPECT_EQ(GetFileBaseName(p.path), p.base) << p.path;
        EXPECT_EQ(GetFolderPath(p.path), p.folder) << p.path;
    }
    EXPECT_EQ(GetFolderPath("\t/a/b\t"), "/a/");
}

TEST(FileOps, ExistenceMeansANormalFile) {
    TempDir dir;
    const std::string file = dir.Write("Site One.SXS", "x");
    EXPECT_TRUE(FileExists("\"" + file + "\""));
    const std::pair<std::string, bool> paths[] = {
        {file, true}, {dir.Path(), false}, {dir.File("none"), false}, {"", false}, {"\"\"", false},
        {dir.File("*.SXS"), true}, {dir.File("Site?One.*"), true}, {dir.File("*.XML"), false}};
    for (const auto& [path, exists] : paths) EXPECT_EQ(FileExists(path), exists) << path;
}

TEST(FileOps, CreateFolderPathMakesParentsAndRefusesOtherForms) {
    TempDir dir;
    CreateFolderPath(dir.Path() + "/A/B/C/");
    EXPECT_TRUE(std::filesystem::is_directory(dir.File("A/B/C")));
    CreateFolderPath(dir.Path() + "\\A\\B\\D");  // either separator
    EXPECT_TRUE(std::filesystem::is_directory(dir.File("A/B/D")));
    CreateFolderPath(dir.Path() + "/A");  // already there: nothing to do
    // Only a full path from a root (a drive letter on Windows), never a share.
    for (const char* bad : {"", "relative/path", "relative\\path", "//server/share/x", "\\\\server\\share", "/", "C:",
                            "C:\\"}) {
        EXPECT_EQ(test::ThrownError([&] { CreateFolderPath(bad); }).Number(), ErrorNumber::PathNotFound) << bad;
    }
    if (test::kBackSlashSeparates) {  // rooted, but with no drive letter
        EXPECT_THROW(CreateFolderPath("\\rooted\\no\\drive"), Error);
    }
    const std::string file = dir.Write("plain", "x");
    EXPECT_THROW(CreateFolderPath(file + "/sub"), Error);
    EXPECT_THROW(CreateFolderPath(file + "\\sub"), Error);
}

// Permission bits on Linux, the read-only attribute on Windows.
TEST(FileOps, SavesReplaceTheFileKeepUnreadableOnesAndRefuseReadOnlyOnes) {
    TempDir dir;
    const std::string target = dir.Write("book.xml", "old");
    ASSERT_TRUE(WriteFileAtomic(target, "new"));
    EXPECT_EQ(TempDir::Read(target), "new");
    EXPECT_EQ(TempDir::Entries(dir.Path()), std::vector<std::string>{"book.xml"});  // no temporary left

    ASSERT_TRUE(test::SetReadOnly(target, true));
    std::string error;
    EXPECT_FALSE(WriteFileAtomic(target, "lost", &error));
    EXPECT_NE(error.find("read-only"), std::string::npos);
    EXPECT_EQ(TempDir::Read(target), "new");
    test::SetReadOnly(target, false);

    ASSERT_TRUE(WriteFileAtomic(dir.File("fresh.xml"), "first"));
    EXPECT_EQ(TempDir::Read(dir.File("fresh.xml")), "first");
    const std::string kept = KeepUnreadableFile(target);
    EXPECT_EQ(kept, target + ".unreadable");
    ASSERT_TRUE(WriteFileAtomic(target, "replaced"));
    EXPECT_EQ(TempDir::Read(kept), "new");
    EXPECT_EQ(KeepUnreadableFile(target), target + ".unreadable-1");
    EXPECT_EQ(KeepUnreadableFile(dir.File("missing")), "");
}

TEST(FileOps, AFolderThatRefusesNewFilesGetsItsFileRewrittenInPlace) {
    TempDir dir;
    const std::string target = dir.Write("locked/book.xml", "the old book, longer than the new one");
    test::FailingDiskSteps steps;
    steps.error = EACCES;
    steps.failCreate = 1;
    std::string error;
    ASSERT_TRUE(WriteFileAtomic(target, "new book", &error)) << error;
    EXPECT_EQ(TempDir::Read(target), "new book");
    EXPECT_EQ(TempDir::Entries(dir.File("locked")), std::vector<std::string>{"book.xml"});

    // A file that is not there yet cannot be written in place.
    steps.creates = 0;
    EXPECT_FALSE(WriteFileAtomic(dir.File("locked/new.xml"), "x", &error));
    EXPECT_NE(error.find("Permission denied"), std::string::npos);

    // Failing part-way in place: the old bytes are written back.
    const std::string big(10000, 'b');
    for (int failAt : {1, 2, 3}) {
        steps.creates = steps.writes = 0;
        steps.error = EACCES;
        steps.failWrite = failAt;
        EXPECT_FALSE(WriteFileAtomic(target, big));
        EXPECT_EQ(TempDir::Read(target), "new book") << failAt;
    }
}

TEST(FileOps, InjectedDiskFaultsLeaveTheTargetAndNoTemporary) {
    TempDir dir;
    const std::string old(20000, 'o');
    const std::string target = dir.Write("book.xml", old);
    const std::string bigger(50000, 'n');
    for (int error : {ENOSPC, EIO}) {
        for (int step = 0; step < 3; ++step) {
            for (int failAt = 1; failAt <= (step == 0 ? 13 : 1); ++failAt) {
                test::FailingDiskSteps steps;
                steps.error = error;
                (step == 0 ? steps.failWrite : step == 1 ? steps.failSync : steps.failRename) = failAt;
                std::string why;
                EXPECT_FALSE(WriteFileAtomic(target, bigger, &why)) << step << " " << failAt;
                EXPECT_NE(why.find(std::strerror(error)), std::string::npos) << why;
                EXPECT_EQ(TempDir::Read(target), old);
                EXPECT_EQ(TempDir::Entries(dir.Path()), std::vector<std::string>{"book.xml"});
            }
        }
    }
}

