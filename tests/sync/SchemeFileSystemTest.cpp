#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "SyncTestSupport.h"

using namespace meridex;
using namespace meridex::test;

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
    EXPECT_EQ(TempDir::Read(target), "new scheme");
    EXPECT_EQ(TempDir::Entries(dir.File("b")), std::vector<std::string>{"Site.SXS"});
}

TEST(SchemeFileSystem, BackupTakesTheFirstFreeNumberAndKeepsTheOldBytesAndTimes) {
    TempDir dir;
    std::string file = WriteDated(dir, "Site.SXS", "v1", 1600000000);
    WriteDated(dir, "Site.SXS~0000.BAK", "older backup", 1500000000);
    SchemeFileSystem fs;
    std::string error;
    EXPECT_EQ(SchemeFileSystem::BackupName(file, 12345), file + "~12345.BAK");
    EXPECT_EQ(fs.BackupFile(file, error), file + "~0001.BAK");
    EXPECT_EQ(TempDir::Read(file + "~0000.BAK"), "older backup");
    EXPECT_EQ(TempDir::Read(file + "~0001.BAK"), "v1");
    EXPECT_EQ(StatOf(file + "~0001.BAK").Modified().tv_sec, 1600000000);

    // Replacing the file afterwards leaves the backup as it was.
    std::string source = WriteDated(dir, "new/Site.SXS", "v2", 1700000000);
    std::string backup;
    ASSERT_EQ(fs.CopyFile(source, file, true, error, &backup), SchemeFileSystem::CopyResult::Copied);
    EXPECT_EQ(backup, file + "~0002.BAK");
    EXPECT_EQ(TempDir::Read(file + "~0002.BAK"), "v1");
    EXPECT_EQ(TempDir::Read(file), "v2");
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

    EXPECT_EQ(TempDir::Read(target), "the only good copy");
    EXPECT_EQ(StatOf(target).Modified().tv_nsec, 500);
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

    EXPECT_EQ(TempDir::Read(target), "the only good copy");
    EXPECT_EQ(StatOf(target).Modified().tv_nsec, 500);
    EXPECT_EQ(TempDir::Entries(dir.File("b")), (std::vector<std::string>{"Other.SXS", "Site.SXS"}));
}
