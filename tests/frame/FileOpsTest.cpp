#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "TempDir.h"
#include <meridex/frame/Error.h>
#include <meridex/frame/FileOps.h>

using namespace meridex;
using namespace meridex::FileOps;

TEST(FileOps, BaseNamesAndFolders) {
    EXPECT_EQ(GetFileBaseName("C:\\Data\\Site.XML"), "Site");
    EXPECT_EQ(GetFileBaseName("Site.tar.gz"), "Site.tar");
    EXPECT_EQ(GetFileBaseName("C:\\data.old\\README"), "");
    EXPECT_EQ(GetFileBaseName("/data.old/README"), "");
    EXPECT_EQ(GetFileBaseName("README"), "README");
    EXPECT_EQ(GetFileBaseName("/srv/schemes/Hill.sxs"), "Hill");
    EXPECT_EQ(GetFileBaseName(""), "");
    EXPECT_EQ(GetFolderPath("C:\\Data\\Site.XML"), "C:\\Data\\");
    EXPECT_EQ(GetFolderPath("/srv/a/Site.XML"), "/srv/a/");
    EXPECT_EQ(GetFolderPath("Site.XML"), "");
    EXPECT_EQ(GetFolderPath("\t/a/b\t"), "/a/");
}

TEST(FileOps, ExistenceMeansANormalFile) {
    test::TempDir dir;
    const std::string file = dir.Write("Site One.SXS", "x");
    EXPECT_TRUE(FileExists(file));
    EXPECT_TRUE(FileExists("\"" + file + "\""));
    EXPECT_FALSE(FileExists(dir.Path()));
    EXPECT_FALSE(FileExists(dir.File("none")));
    EXPECT_FALSE(FileExists(""));
    EXPECT_FALSE(FileExists("\"\""));
    EXPECT_TRUE(FileExists(dir.File("*.SXS")));
    EXPECT_TRUE(FileExists(dir.File("Site?One.*")));
    EXPECT_FALSE(FileExists(dir.File("*.XML")));
}

TEST(FileOps, CreateFolderPathMakesParentsAndRefusesOtherForms) {
    test::TempDir dir;
    CreateFolderPath(dir.Path() + "/A/B/C/");
    EXPECT_TRUE(std::filesystem::is_directory(dir.File("A/B/C")));
    CreateFolderPath(dir.Path() + "\\A\\B\\D");  // either separator
    EXPECT_TRUE(std::filesystem::is_directory(dir.File("A/B/D")));
    CreateFolderPath(dir.Path() + "/A");  // already there: nothing to do
    for (const char* bad : {"", "relative/path", "//server/share/x", "\\\\server\\share", "/"}) {
        try {
            CreateFolderPath(bad);
            FAIL() << bad;
        } catch (const Error& e) {
            EXPECT_EQ(e.Number(), ErrorNumber::PathNotFound) << bad;
        }
    }
    const std::string file = dir.Write("plain", "x");
    EXPECT_THROW(CreateFolderPath(file + "/sub"), Error);
}

TEST(FileOps, DatesAndFileTimes) {
    const DateTime date{2026, 11, 14, 9, 5, 31};
    const SystemTime st = DateToSystemTime(date);
    EXPECT_EQ(st.wYear, 2026);
    EXPECT_EQ(st.wDayOfWeek, 0);
    EXPECT_EQ(st.wMilliseconds, 0);
    EXPECT_EQ(DateToFileTime({1601, 1, 1, 0, 0, 0}), 0);
    EXPECT_EQ(DateToFileTime({1970, 1, 1, 0, 0, 0}), 116444736000000000LL);
    EXPECT_EQ(DateToFileTime({1970, 1, 1, 0, 0, 1}), 116444736010000000LL);

    test::TempDir dir;
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
    chmod(file.c_str(), 0444);
    EXPECT_TRUE(SetFileDateTimes(file, date, date, date, true));
}

TEST(FileOps, AtomicWritesAndKeptFiles) {
    test::TempDir dir;
    const std::string target = dir.Write("book.xml", "old");
    chmod(target.c_str(), 0640);
    ASSERT_TRUE(WriteFileAtomic(target, "new"));
    EXPECT_EQ(test::TempDir::Read(target), "new");
    struct stat s {};
    stat(target.c_str(), &s);
    EXPECT_EQ(s.st_mode & 0777, 0640u);  // permissions kept
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 1);  // no temporary left

    chmod(target.c_str(), 0444);
    std::string error;
    EXPECT_FALSE(WriteFileAtomic(target, "lost", &error));
    EXPECT_NE(error.find("read-only"), std::string::npos);
    EXPECT_EQ(test::TempDir::Read(target), "new");
    chmod(target.c_str(), 0644);

    const std::string kept = KeepUnreadableFile(target);
    EXPECT_EQ(kept, target + ".unreadable");
    ASSERT_TRUE(WriteFileAtomic(target, "replaced"));
    EXPECT_EQ(test::TempDir::Read(kept), "new");
    EXPECT_EQ(KeepUnreadableFile(target), target + ".unreadable-1");
    EXPECT_EQ(KeepUnreadableFile(dir.File("missing")), "");
}
