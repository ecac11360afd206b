// The file helpers' behaviour that rests on POSIX: permission bits, symbolic
// links, process ids and locks of other processes.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "OsSupport.h"
#include "TempDir.h"
#include <meridex/frame/FileOps.h>
#include <meridex/frame/LockNote.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/frame/SharedFile.h>

using namespace meridex;
using namespace meridex::FileOps;
using test::TempDir;

TEST(FileOps, DatesAndFileTimes) {
    const DateTime date{2026, 11, 14, 9, 5, 31};
    const SystemTime st = DateToSystemTime(date);
    EXPECT_EQ(st.wYear, 2026);
    EXPECT_EQ(st.wDayOfWeek, 0);
    EXPECT_EQ(st.wMilliseconds, 0);
    EXPECT_EQ(DateToFileTime({1601, 1, 1, 0, 0, 0}), 0);
    EXPECT_EQ(DateToFileTime({1970, 1, 1, 0, 0, 0}), 116444736000000000LL);
    EXPECT_EQ(DateToFileTime({1970, 1, 1, 0, 0, 1}), 116444736010000000LL);

    TempDir dir;
    const std::string file = dir.Write("f.txt", "x");
    EXPECT_FALSE(SetFileDateTimes(file, date, {2020, 1, 2, 3, 4, 5}, {2021, 6, 7, 8, 9, 10}, false));
    struct stat s {};
    ASSERT_EQ(stat(file.c_str(), &s), 0);
    EXPECT_EQ(DateTime::FromUtc(s.st_mtime), (DateTime{2021, 6, 7, 8, 9, 10}));
    EXPECT_EQ(DateTime::FromUtc(s.st_atime), (DateTime{2020, 1, 2, 3, 4, 5}));
    EXPECT_FALSE(SetFileDateTimes(file, date, date, date, true));
    ASSERT_EQ(stat(file.c_str(), &s), 0);
    EXPECT_EQ(DateTime::FromLocal(s.st_mtime), date);

    EXPECT_TRUE(SetFileDateTimes(dir.File("missing"), date, date, date, true));
    test::SetReadOnly(file, true);
    EXPECT_TRUE(SetFileDateTimes(file, date, date, date, true));
}

TEST(FileOps, SavesKeepPermissionsAndGoThroughSymbolicLinksToTheSharedFile) {
    TempDir dir;
    const std::string shared = dir.Write("shared/settings.xml", "old");
    chmod(shared.c_str(), 0640);
    std::filesystem::create_directories(dir.File("user"));
    std::filesystem::create_symlink("../shared/settings.xml", dir.File("user/link1.xml"));
    std::filesystem::create_symlink(dir.File("user/link1.xml"), dir.File("user/settings.xml"));  // a chain

    // The unreadable file is kept as the bytes the link leads to.
    const std::string kept = KeepUnreadableFile(dir.File("user/settings.xml"));
    ASSERT_TRUE(WriteFileAtomic(dir.File("user/settings.xml"), "new"));
    EXPECT_EQ(TempDir::Read(kept), "old");
    EXPECT_TRUE(std::filesystem::is_symlink(dir.File("user/settings.xml")));
    EXPECT_EQ(TempDir::Read(shared), "new");
    EXPECT_EQ(TempDir::Entries(dir.File("shared")), std::vector<std::string>{"settings.xml"});
    struct stat s {};
    stat(shared.c_str(), &s);
    EXPECT_EQ(s.st_mode & 0777, 0640u);

    // A link to a file not made yet makes it; a loop is refused.
    std::filesystem::create_symlink(dir.File("shared/later.xml"), dir.File("user/later.xml"));
    ASSERT_TRUE(WriteFileAtomic(dir.File("user/later.xml"), "first"));
    EXPECT_EQ(TempDir::Read(dir.File("shared/later.xml")), "first");
    std::filesystem::create_symlink("loop", dir.File("user/loop"));
    EXPECT_FALSE(WriteFileAtomic(dir.File("user/loop"), "x"));
}

TEST(FileOps, ASaveRemovesTheTemporariesOfKilledSavesOfThatFileOnly) {
    TempDir dir;
    const std::string target = dir.Write("s.xml", "old");
    const pid_t dead = fork();
    if (dead == 0) _exit(0);
    waitpid(dead, nullptr, 0);
    const std::string deadTemp = ".s.xml.tmp-" + std::to_string(dead) + "-AbC123";
    const std::string liveTemp = ".s.xml.tmp-1-XyZ789";  // process 1 is alive
    const std::string otherFile = ".t.xml.tmp-" + std::to_string(dead) + "-AbC123";
    // Saves before process numbers were in the name: an hour old is dead, a
    // minute old may still be writing.
    const std::string recentTemp = ".s.xml.tmp-New123";
    for (const auto& name : {deadTemp, liveTemp, otherFile, recentTemp}) dir.Write(name, "partial");
    const timespec hourAgo{time(nullptr) - 3700, 0};
    test::SetFileTimes(dir.Write(".s.xml.tmp-Old123", "partial"), hourAgo, hourAgo);
    // A dead writer's temporary that someone still holds locked stays too.
    const std::string heldTemp = ".s.xml.tmp-" + std::to_string(dead) + "-Held00";
    const int held = open(dir.Write(heldTemp, "partial").c_str(), O_RDONLY);
    ASSERT_EQ(flock(held, LOCK_EX), 0);
    const pid_t holder = fork();  // a lock held by another process
    if (holder == 0) {
        pause();
        _exit(0);
    }
    close(held);

    ASSERT_TRUE(WriteFileAtomic(target, "new"));
    EXPECT_EQ(TempDir::Entries(dir.Path()),
              (std::vector<std::string>{liveTemp, heldTemp, recentTemp, otherFile, "s.xml"}));
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);
    ASSERT_TRUE(WriteFileAtomic(target, "newer"));
    EXPECT_EQ(TempDir::Entries(dir.Path()), (std::vector<std::string>{liveTemp, recentTemp, otherFile, "s.xml"}));
}

// Run as an unprivileged user by the "unprivileged" test entry, where
// permissions hold for real (root passes every permission check).
TEST(FileOpsAsUser, AFolderWithoutWritePermissionStillOpensAndSavesItsWritableFileWithoutAWord) {
    if (const char* why = test::WhyFolderPermissionsCannotBeTested()) GTEST_SKIP() << why;
    TempDir dir;
    const std::string target = dir.Write("locked/AddressBook.xml", "<V4ADDRESSBOOK/>");
    ASSERT_EQ(chmod(dir.File("locked").c_str(), 0555), 0);
    // An editor opens it without a lock note, and says nothing.
    auto ui = std::make_shared<RecordingUserInterface>();
    LockNote note;
    EXPECT_TRUE(note.Acquire(target, ui));
    EXPECT_FALSE(note.Held());
    EXPECT_TRUE(ui->Messages().empty());
    ASSERT_TRUE(WriteFileAtomic(target, "new"));
    EXPECT_EQ(TempDir::Read(target), "new");
    EXPECT_EQ(TempDir::Entries(dir.File("locked")), std::vector<std::string>{"AddressBook.xml"});
    EXPECT_FALSE(WriteFileAtomic(dir.File("locked/other.xml"), "x"));
    test::SetReadOnly(target, true);
    EXPECT_FALSE(WriteFileAtomic(target, "lost"));
    EXPECT_EQ(TempDir::Read(target), "new");
}

// A shared file reached through a link to another file system (a share mounted
// elsewhere) cannot be given a second name beside the link: their version is
// written there as the conflict copy, whole, and ours is saved through the link.
TEST(SharedFile, TheirVersionBehindALinkToAnotherFileSystemIsWrittenAsTheCopy) {
    TempDir dir;
    char pattern[] = "/dev/shm/meridex-test-XXXXXX";
    if (!std::filesystem::is_directory("/dev/shm") || !::mkdtemp(pattern)) GTEST_SKIP() << "no /dev/shm";
    const std::string elsewhere = std::string(pattern) + "/book.xml";
    std::ofstream(elsewhere) << "<V4ADDRESSBOOK>base</V4ADDRESSBOOK>";
    const std::string link = dir.File("book.xml");
    std::filesystem::create_symlink(elsewhere, link);
    auto ui = std::make_shared<RecordingUserInterface>();
    UserInterface::Install(ui);
    SharedFile::setErrorLogFile(dir.File("ErrorLog.txt"));
    SharedFile file;
    ASSERT_TRUE(file.Read(link));
    std::ofstream(elsewhere) << "<V4ADDRESSBOOK>theirs</V4ADDRESSBOOK>";
    std::string error;
    EXPECT_TRUE(file.Save(link, [] { return std::string("<V4ADDRESSBOOK>ours</V4ADDRESSBOOK>"); }, {}, "Test", &error))
        << error;
    ASSERT_FALSE(file.ConflictCopy().empty());
    EXPECT_EQ(file.ConflictCopy().rfind(link + ".conflict-", 0), 0u) << file.ConflictCopy();
    EXPECT_EQ(TempDir::Read(file.ConflictCopy()), "<V4ADDRESSBOOK>theirs</V4ADDRESSBOOK>");
    EXPECT_EQ(TempDir::Read(elsewhere), "<V4ADDRESSBOOK>ours</V4ADDRESSBOOK>");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(ui->Messages().size(), 1u);  // and told
    UserInterface::Install(nullptr);
    SharedFile::setErrorLogFile("");
    std::filesystem::remove_all(pattern);
}
