#include <gtest/gtest.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "TempDir.h"
#include <meridex/frame/Error.h>
#include "FailingDiskSteps.h"
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

namespace {

std::vector<std::string> Entries(const std::string& folder) { return test::TempDir::Entries(folder); }

}  // namespace

TEST(FileOps, AFolderThatRefusesNewFilesGetsItsFileRewrittenInPlace) {
    test::TempDir dir;
    const std::string target = dir.Write("locked/book.xml", "the old book, longer than the new one");
    test::FailingDiskSteps steps;
    steps.error = EACCES;
    steps.failCreate = 1;
    std::string error;
    ASSERT_TRUE(WriteFileAtomic(target, "new book", &error)) << error;
    EXPECT_EQ(test::TempDir::Read(target), "new book");
    EXPECT_EQ(Entries(dir.File("locked")), std::vector<std::string>{"book.xml"});

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
        EXPECT_EQ(test::TempDir::Read(target), "new book") << failAt;
    }
}

TEST(FileOps, InjectedDiskFaultsLeaveTheTargetAndNoTemporary) {
    test::TempDir dir;
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
                EXPECT_EQ(test::TempDir::Read(target), old);
                EXPECT_EQ(Entries(dir.Path()), std::vector<std::string>{"book.xml"});
            }
        }
    }
}

