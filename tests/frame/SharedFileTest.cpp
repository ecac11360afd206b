#include <gtest/gtest.h>

#include <filesystem>
#include <ctime>
#include <functional>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "../comms/CommsTestSupport.h"
#include "TempDir.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/frame/LockNote.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/frame/SharedFile.h>
#include <meridex/platform/FileSystem.h>
#include <meridex/settings/Settings.h>

// Two objects that load one file and save it in turn, for each kind of
// shared document: what each adds is kept, what both change goes to a
// conflict copy, and nothing is said when nobody else saved.
namespace meridex {
namespace {

using test::TempDir;

// One document object behind the steps the tests take.
struct Doc {
    virtual ~Doc() = default;
    virtual void Load(const std::string& path) = 0;
    virtual void Add(const std::string& tag) = 0;       // a new element only this side has
    virtual void Remove(const std::string& tag) = 0;    // deletes what Add made
    virtual void Change(const std::string& text) = 0;   // the element both sides share
    virtual void Save() = 0;
    virtual std::string ConflictCopy() const = 0;
    virtual bool Holds(const std::string& tag) const = 0;  // in memory
};

struct BookDoc : Doc {
    AddressBook book;
    void Load(const std::string& path) override { book.LoadAddressBook(path); }
    void Add(const std::string& tag) override {
        SiteGroup group;
        group.setName(tag);
        book.Sites().AddGroup(group);
    }
    void Remove(const std::string& tag) override { book.Sites().RemoveGroup(tag); }
    void Change(const std::string& text) override {
        SiteGroup shared = book.Sites().Group("Shared");
        if (!shared) {
            shared = SiteGroup();
            shared.setName("Shared");
            book.Sites().AddGroup(shared);
        }
        shared.setName(text);
    }
    void Save() override { book.SaveAddressBook(); }
    std::string ConflictCopy() const override { return book.ConflictCopy(); }
    bool Holds(const std::string& tag) const override { return !book.Sites().Group(tag).IsNull(); }
};

struct SettingsDoc : Doc {
    Settings settings;
    void Load(const std::string& path) override { settings.LoadSettings(path); }
    void Add(const std::string& tag) override { settings.SetString(tag, "1"); }
    void Remove(const std::string& tag) override { settings.SetString(tag, ""); }
    void Change(const std::string& text) override { settings.SetString("SHARED", text); }
    void Save() override { EXPECT_TRUE(settings.SaveSettings()); }
    std::string ConflictCopy() const override { return settings.ConflictCopy(); }
    bool Holds(const std::string& tag) const override { return settings.GetString(tag, "") == "1"; }
};

struct MapDoc : Doc {
    test::CommsFixture fixture;
    std::unique_ptr<CommsProfileManager> map = fixture.Manager();
    XmlNode Find(const std::string& name) const {
        for (std::int16_t i = 1; i <= map->ApplicationProfileCount(); ++i) {
            const XmlNode profile = map->ApplicationProfile(i);
            if (profile.SelectSingle("NAME").Text() == name) return profile;
        }
        return {};
    }
    void Load(const std::string& path) override { map->LoadXMLMapFile(path); }
    void Add(const std::string& tag) override {
        map->AddTCPConnection();
        map->ApplicationProfile(map->ApplicationProfileCount()).SelectSingle("NAME").setText(tag);
    }
    void Remove(const std::string& tag) override { map->RemoveApplicationProfile(Find(tag)); }
    void Change(const std::string& text) override {
        map->ApplicationProfile(1).SelectSingle("NAME").setText(text);
    }
    void Save() override { EXPECT_TRUE(map->SaveXMLMapFile()); }
    std::string ConflictCopy() const override { return map->ConflictCopy(); }
    bool Holds(const std::string& tag) const override { return !Find(tag).IsNull(); }
};

struct Kind {
    const char* name;
    std::function<std::unique_ptr<Doc>()> make;
    // The map renumbers its keys at every load, so a profile is known by its
    // content: one both sides changed is kept in both versions.
    bool changesBothKept = false;
};

class SharedDocuments : public ::testing::TestWithParam<Kind> {
protected:
    void SetUp() override {
        UserInterface::Install(ui);
        SharedFile::setErrorLogFile(dir.File("ErrorLog.txt"));
        path = dir.File("Shared.xml");
        // The file both sides open, written by a third.
        auto first = GetParam().make();
        first->Load(path);
        first->Change("Original");
        first->Save();
    }
    void TearDown() override {
        UserInterface::Install(nullptr);
        SharedFile::setErrorLogFile("");
    }
    std::unique_ptr<Doc> Open() const {
        auto doc = GetParam().make();
        doc->Load(path);
        return doc;
    }
    std::string File() const { return TempDir::Read(path); }
    std::vector<std::string> Copies() const {
        std::vector<std::string> copies;
        for (const std::string& name : TempDir::Entries(dir.Path()))
            if (name.find(".conflict-") != std::string::npos) copies.push_back(dir.File(name));
        return copies;
    }

    std::shared_ptr<RecordingUserInterface> ui = std::make_shared<RecordingUserInterface>();
    TempDir dir;
    std::string path;
};

TEST_P(SharedDocuments, WhatEachSideAddsOrDeletesIsKeptWithoutAWord) {
    auto prepared = Open();
    prepared->Add("Doomed");
    prepared->Save();
    auto a = Open();
    auto b = Open();
    a->Add("North");
    a->Save();
    b->Add("South");
    b->Remove("Doomed");
    b->Save();
    a->Save();  // a second save of the first side is no conflict either
    const std::string file = File();
    EXPECT_NE(file.find("North"), std::string::npos);
    EXPECT_NE(file.find("South"), std::string::npos);
    EXPECT_EQ(file.find("Doomed"), std::string::npos);
    EXPECT_TRUE(b->Holds("North"));  // the document holds what was saved
    EXPECT_FALSE(a->Holds("Doomed"));
    EXPECT_EQ(a->ConflictCopy(), "");
    EXPECT_EQ(b->ConflictCopy(), "");
    EXPECT_TRUE(Copies().empty());
    EXPECT_TRUE(ui->Messages().empty());
}

TEST_P(SharedDocuments, BothChangingOneElementKeepOursAndTheirsInACopy) {
    auto a = Open();
    auto b = Open();
    a->Change("Theirs");
    a->Save();
    b->Change("Ours");
    b->Add("East");
    b->Save();
    const std::string file = File();
    EXPECT_NE(file.find("Ours"), std::string::npos);
    if (GetParam().changesBothKept) {
        EXPECT_NE(file.find("Theirs"), std::string::npos);
        EXPECT_EQ(b->ConflictCopy(), "");
        EXPECT_TRUE(Copies().empty());
        return;
    }
    EXPECT_EQ(file.find("Theirs"), std::string::npos);
    ASSERT_EQ(Copies().size(), 1u);
    EXPECT_EQ(b->ConflictCopy(), Copies()[0]);
    EXPECT_NE(TempDir::Read(b->ConflictCopy()).find("Theirs"), std::string::npos);
    const std::string name = std::filesystem::path(b->ConflictCopy()).filename().string();
    EXPECT_TRUE(std::regex_match(name, std::regex(R"(Shared\.xml\.conflict-\d{8}-\d{6})"))) << name;
    const std::string told = "Shared.xml was changed by someone else since it was opened; their version is kept as " + name;
    ASSERT_EQ(ui->Messages().size(), 1u);
    EXPECT_EQ(ui->Messages()[0].text, told);
    EXPECT_NE(TempDir::Read(dir.File("ErrorLog.txt")).find(told), std::string::npos);
    b->Save();  // nobody saved since: no further copy
    EXPECT_EQ(b->ConflictCopy(), "");
    EXPECT_EQ(Copies().size(), 1u);
}

TEST_P(SharedDocuments, AFileMadeSinceTheLoadAndAForeignOneCountAsChanged) {
    std::filesystem::remove(path);
    auto a = Open();
    auto b = Open();
    a->Add("North");
    a->Save();
    b->Add("South");
    b->Save();
    EXPECT_NE(File().find("North"), std::string::npos);
    EXPECT_NE(File().find("South"), std::string::npos);

    auto c = Open();
    c->Add("West");
    dir.Write("Shared.xml", "not a document of ours");
    c->Save();
    ASSERT_FALSE(c->ConflictCopy().empty());
    EXPECT_EQ(TempDir::Read(c->ConflictCopy()), "not a document of ours");
    EXPECT_NE(File().find("West"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Kinds, SharedDocuments,
                         ::testing::Values(Kind{"AddressBook", [] { return std::unique_ptr<Doc>(new BookDoc); }},
                                           Kind{"Settings", [] { return std::unique_ptr<Doc>(new SettingsDoc); }},
                                           Kind{"Map", [] { return std::unique_ptr<Doc>(new MapDoc); }, true}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SharedAddressBook, ViewsOnElementsTheOtherSideDeletedStayValid) {
    TempDir dir;
    const std::string path = dir.File("AddressBook.xml");
    AddressBook first;
    first.LoadAddressBook(path);
    SiteGroup group;
    group.setName("Old");
    first.Sites().AddGroup(group);
    first.SaveAddressBook();
    AddressBook a, b;
    a.LoadAddressBook(path);
    b.LoadAddressBook(path);
    const SiteGroup held = b.Sites().Group("Old");
    a.Sites().RemoveGroup("Old");
    a.SaveAddressBook();
    b.SaveAddressBook();
    EXPECT_TRUE(b.Sites().Group("Old").IsNull());
    EXPECT_EQ(held.Name(), "Old");
    EXPECT_EQ(TempDir::Read(path).find("Old"), std::string::npos);
}

TEST(LockNote, ASecondEditorIsToldUnattendedOpensAndStaleNotesAreCleared) {
    TempDir dir;
    const std::string path = dir.File("AddressBook.xml");
    const std::string notePath = dir.File(".~lock.AddressBook.xml#");
    EXPECT_EQ(LockNote::NotePath(path), notePath);
    const long long now = std::time(nullptr);
    const std::string theirs = "anna,OTHERPC,4242," + std::to_string(now) + ";";
    dir.Write(".~lock.AddressBook.xml#", theirs);
    auto ui = std::make_shared<RecordingUserInterface>();
    ui->QueueMessageResult(MessageResult::No);
    LockNote declined;
    EXPECT_FALSE(declined.Acquire(path, ui));
    ASSERT_EQ(ui->Messages().size(), 1u);
    EXPECT_TRUE(std::regex_match(ui->Messages()[0].text,
                                 std::regex(R"(AddressBook\.xml is open by anna on OTHERPC since \d{4}-\d\d-\d\d \d\d:\d\d\. Open anyway\?)")))
        << ui->Messages()[0].text;
    EXPECT_EQ(ui->Messages()[0].buttons, MessageButtons::YesNo);
    LockNote unattended;  // the installed default answers its first button: Yes
    EXPECT_TRUE(unattended.Acquire(path));
    EXPECT_FALSE(unattended.Held());
    EXPECT_EQ(TempDir::Read(notePath), theirs);  // their note stays theirs

    const std::string staleOnes[] = {"anna,OTHERPC,4242," + std::to_string(now - 2 * 86400) + ";",
                                     "me," + FileSystem::HostName() + ",2147483646," + std::to_string(now) + ";",
                                     "garbage"};
    for (const std::string& stale : staleOnes) {
        dir.Write(".~lock.AddressBook.xml#", stale);
        LockNote note;
        EXPECT_TRUE(note.Acquire(path, ui));
        EXPECT_TRUE(note.Held()) << stale;
        EXPECT_NE(TempDir::Read(notePath), stale);
        note.Release();
        EXPECT_FALSE(std::filesystem::exists(notePath));
    }
    EXPECT_EQ(ui->Messages().size(), 1u);
}

}  // namespace
}  // namespace meridex
