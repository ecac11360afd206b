#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Commands.h"
#include "TempDir.h"

namespace meridex {
namespace {

using test::TempDir;

struct Outcome {
    int exitCode = -1;
    std::string out;
};

Outcome RunSettings(std::vector<std::string> args) {
    CLI::App app;
    int exitCode = 0;
    cli::AddSettingsCommand(app, exitCode);
    args.insert(args.begin(), {"meridex", "settings"});
    std::vector<char*> argv;
    for (std::string& arg : args) argv.push_back(arg.data());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    app.parse(static_cast<int>(argv.size()), argv.data());
    Outcome outcome{exitCode, testing::internal::GetCapturedStdout()};
    testing::internal::GetCapturedStderr();
    return outcome;
}

const std::string kDocument =
    "<V4SETTINGS><CURRENT_PROFILE>Field Crew</CURRENT_PROFILE><PROFILES>"
    "<PROFILE><KEY>Field Crew</KEY><FEATURE><KEY>V4_SCHEME_EDITOR</KEY></FEATURE></PROFILE>"
    "<PROFILE><KEY>ADMINISTRATOR</KEY></PROFILE></PROFILES></V4SETTINGS>";

TEST(SettingsCommand, CanAnswersTheHostsQuestionByExitCode) {
    TempDir dir;
    const std::string file = dir.Write("V4Settings.xml", kDocument);
    EXPECT_EQ(RunSettings({"can", file, "v4_unload_data"}).exitCode, 0);
    EXPECT_EQ(RunSettings({"can", file, "V4_SCHEME_EDITOR"}).exitCode, 1);
    EXPECT_EQ(RunSettings({"can", file, "NO_SUCH_FEATURE"}).exitCode, 1);
    EXPECT_EQ(RunSettings({"can", file}).exitCode, 2);
    EXPECT_EQ(RunSettings({"can", file, "A", "--bogus"}).exitCode, 2);
    EXPECT_EQ(RunSettings({"can", dir.File("missing.xml"), "V4_UNLOAD_DATA"}).exitCode, 2);
    EXPECT_EQ(TempDir::Read(file), kDocument);  // asking never writes
}

TEST(SettingsCommand, UseAndSetSaveTheFile) {
    TempDir dir;
    const std::string file = dir.Write("V4Settings.xml", kDocument);
    EXPECT_EQ(RunSettings({"use", file, "nobody"}).exitCode, 1);
    EXPECT_EQ(TempDir::Read(file), kDocument);

    EXPECT_EQ(RunSettings({"use", file, "administrator"}).exitCode, 0);
    EXPECT_EQ(RunSettings({"can", file, "V4_SCHEME_EDITOR"}).exitCode, 0);

    EXPECT_EQ(RunSettings({"set", file, "LANG", "0", "--save-null"}).exitCode, 0);
    EXPECT_EQ(RunSettings({"get", file, "LANG", "--default", "en"}).out, "0\n");
    EXPECT_EQ(RunSettings({"set", file, "LANG", "0"}).exitCode, 0);
    EXPECT_EQ(RunSettings({"get", file, "LANG", "--default", "en"}).out, "en\n");
    EXPECT_EQ(RunSettings({"set", file, "BAD KEY", "x"}).exitCode, 2);
}

TEST(SettingsCommand, ListingsNameProfilesAndFeatures) {
    TempDir dir;
    const std::string file = dir.Write("V4Settings.xml", kDocument);
    const Outcome features = RunSettings({"features", file, "--json"});
    EXPECT_EQ(features.exitCode, 0);
    EXPECT_NE(features.out.find("\"profile\": \"Field Crew\""), std::string::npos);
    EXPECT_NE(features.out.find("{\"key\": \"V4_SCHEME_EDITOR\", \"available\": false"), std::string::npos);
    EXPECT_EQ(RunSettings({"features", file, "nobody"}).exitCode, 1);

    const Outcome profiles = RunSettings({"profiles", file, "--json"});
    EXPECT_NE(profiles.out.find("{\"key\": \"Field Crew\", \"features\": 44, \"available\": 35, \"current\": true}"),
              std::string::npos);

    const Outcome show = RunSettings({"show", file});
    EXPECT_NE(show.out.find("CURRENT_PROFILE = Field Crew"), std::string::npos);
    EXPECT_NE(show.out.find("Current profile: Field Crew"), std::string::npos);
}

}  // namespace
}  // namespace meridex
