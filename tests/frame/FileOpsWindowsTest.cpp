// The file helpers on Windows: drive-letter paths, creation times, file
// attributes and the replace-file call.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>

#include "OsSupport.h"
#include "TempDir.h"
#include "windows/Wine.h"
#include <meridex/frame/FileOps.h>

using namespace meridex;
using namespace meridex::FileOps;

namespace {

std::wstring Wide(const std::string& path) { return std::filesystem::u8path(path).wstring(); }

struct Times {
    FILETIME created, accessed, written;
};

Times TimesOf(const std::string& path) {
    Times times{};
    HANDLE file = CreateFileW(Wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE) << path;
    GetFileTime(file, &times.created, &times.accessed, &times.written);
    CloseHandle(file);
    return times;
}

// The date of a file time in UTC, or as the user's clock showed it.
DateTime DateOf(FILETIME time, bool local = false) {
    if (local) FileTimeToLocalFileTime(&time, &time);
    SYSTEMTIME st;
    FileTimeToSystemTime(&time, &st);
    return DateTime{st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond};
}

void SetAttributes(const std::string& path, DWORD attributes) { SetFileAttributesW(Wide(path).c_str(), attributes); }

}  // namespace

TEST(FileOpsWindows, SetFileDateTimesSetsAccessAndWriteTimes) {
    test::TempDir dir;
    const std::string file = dir.Write("f.txt", "x");
    const DateTime created{2019, 3, 4, 5, 6, 7};
    const DateTime accessed{2020, 1, 2, 3, 4, 5};
    const DateTime modified{2021, 6, 7, 8, 9, 10};
    EXPECT_FALSE(SetFileDateTimes(file, created, accessed, modified, false));
    Times times = TimesOf(file);
    EXPECT_EQ(DateOf(times.accessed), accessed);
    EXPECT_EQ(DateOf(times.written), modified);

    // Local: the dates are what the user's clock showed.
    EXPECT_FALSE(SetFileDateTimes(file, created, accessed, modified, true));
    times = TimesOf(file);
    EXPECT_EQ(DateOf(times.written, true), modified);

    EXPECT_TRUE(SetFileDateTimes(dir.File("missing"), created, created, created, true));
}

TEST(FileOpsWindows, SetFileDateTimesFailsOnAReadOnlyFile) {
    test::TempDir dir;
    const std::string file = dir.Write("f.txt", "x");
    test::SetReadOnly(file, true);
    // Wine keeps the attribute as the Unix write permission, which root ignores.
    HANDLE probe = CreateFileW(Wide(file).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    const bool writable = probe != INVALID_HANDLE_VALUE;
    if (writable) CloseHandle(probe);
    if (const char* wine = test::WineVersion(); wine && writable) {
        test::SetReadOnly(file, false);
        GTEST_SKIP() << "Wine " << wine << " opens a read-only file for writing (run as root)";
    }
    const DateTime date{2019, 3, 4, 5, 6, 7};
    EXPECT_TRUE(SetFileDateTimes(file, date, date, date, true));
    test::SetReadOnly(file, false);
}

TEST(FileOpsWindows, SetFileDateTimesSetsTheCreationTimeAndSavesKeepIt) {
    if (const char* wine = test::WineVersion())
        GTEST_SKIP() << "Wine " << wine << " keeps files on a Linux file system, whose creation time cannot be set";
    test::TempDir dir;
    const std::string file = dir.Write("f.txt", "x");
    const DateTime created{2019, 3, 4, 5, 6, 7};
    const DateTime later{2021, 6, 7, 8, 9, 10};
    EXPECT_FALSE(SetFileDateTimes(file, created, later, later, true));
    EXPECT_EQ(DateOf(TimesOf(file).created, true), created);
    EXPECT_FALSE(SetFileDateTimes(file, created, later, later, false));
    EXPECT_EQ(DateOf(TimesOf(file).created), created);
    ASSERT_TRUE(WriteFileAtomic(file, "new"));
    EXPECT_EQ(DateOf(TimesOf(file).created), created);  // the replace-file call keeps it
}

TEST(FileOpsWindows, TheDirectorySearchCountsNormalFilesOnly) {
    test::TempDir dir;
    const std::string hidden = dir.Write("Hidden.SXS", "x");
    const std::string system = dir.Write("System.SXS", "x");
    SetAttributes(hidden, FILE_ATTRIBUTE_HIDDEN);
    SetAttributes(system, FILE_ATTRIBUTE_SYSTEM);
    EXPECT_FALSE(FileExists(hidden));
    EXPECT_FALSE(FileExists(dir.Path() + "\\*.SXS"));
    dir.Write("Site One.SXS", "x");
    EXPECT_TRUE(FileExists(dir.Path() + "\\*.sxs"));  // the search ignores letter case
    EXPECT_TRUE(FileExists("\"" + dir.Path() + "\\Site?One.*\""));
    EXPECT_FALSE(FileExists(dir.Path()));
    SetAttributes(hidden, FILE_ATTRIBUTE_NORMAL);
    SetAttributes(system, FILE_ATTRIBUTE_NORMAL);
}

TEST(FileOpsWindows, ASaveRemovesTheTemporariesOfEndedSavesThatNobodyHolds) {
    test::TempDir dir;
    const std::string target = dir.Write("s.xml", "old");
    // Process ids are multiples of four: this odd one belongs to no process.
    const std::string deadTemp = ".s.xml.tmp-4294967291-AbC123";
    const std::string liveTemp = ".s.xml.tmp-" + std::to_string(GetCurrentProcessId()) + "-XyZ789";
    const std::string otherFile = ".t.xml.tmp-4294967291-AbC123";
    const std::string heldTemp = ".s.xml.tmp-4294967291-Held00";
    for (const auto& name : {deadTemp, liveTemp, otherFile, heldTemp}) dir.Write(name, "partial");
    // Held open without sharing, as a writer holds its temporary.
    HANDLE held = CreateFileW(Wide(dir.File(heldTemp)).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    ASSERT_TRUE(WriteFileAtomic(target, "new"));
    // Entries come sorted; where this process's id sorts among them varies.
    std::vector<std::string> expected{heldTemp, liveTemp, otherFile, "s.xml"};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(test::TempDir::Entries(dir.Path()), expected);
    CloseHandle(held);
    ASSERT_TRUE(WriteFileAtomic(target, "newer"));
    expected.erase(std::find(expected.begin(), expected.end(), heldTemp));
    EXPECT_EQ(test::TempDir::Entries(dir.Path()), expected);
}
