// The main of every Qt test program: a QApplication on the offscreen platform, so the tests need
// no display, and configuration folders in a temporary folder, so no test touches the user's own.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include <QApplication>

#include "TempDir.h"

int main(int argc, char** argv) {
    static const meridex::test::TempDir home;
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"}) {
        const std::string folder = home.File(name);
        std::filesystem::create_directories(folder);
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, std::filesystem::perm_options::replace);
        setenv(name, folder.c_str(), 1);
    }
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
