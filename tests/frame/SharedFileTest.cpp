#include <gtest/gtest.h>

#include <filesystem>
#include <ctime>
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
        if (!book.Sites().Group("Shared")) Add("Shared");
        book.Sites().Group("Shared").setName(text);
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
        return map->ApplicationProfiles().FindChildByChildText("PROFILE", "NAME", name, false);
    }
    void Load(const std::string& path) override { map->LoadXMLMapFile(path); }
    void Add(const std::string& tag) override {
        map->AddTCPConnection();
        map->ApplicationProfile(map->ApplicationProfileCount()).SelectSingle("NAME").setText(tag);
    }
    void Remove(const std::string& tag) override { map->RemoveApplicationProfile(Find(tag)); }
    void Change(const std::string& text) override { map->ApplicationProfile(1).SelectSingle("NAME").setText(text); }
    void Save() override { EXPECT_TRUE(map->SaveXMLMapFile()); }
    std::string ConflictCopy() const override { return map->ConflictCopy(); }
    bool Holds(const std::string& tag) const override { return !Find(tag).IsNull(); }
};

struct Kind {
    const char* name;
    std::unique_ptr<Doc> (*make)();
    // The map renumbers its keys at every load, so a profile is known by its
    // content: one both sides changed is kept in both versions.
    bool changesBothKept = false;
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

class SharedDocuments : public ::testing::TestWithParam<Kind> {
protected:
    void SetUp() override {
        UserInterface::Install(ui);
        SharedFile::setErrorLogFile(dir.File("ErrorLog.txt"));
        path = dir.File("Shared.xml");
        // The file both sides open, written by a third.
        auto first = Open();
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
    bool Saved(const std::string& tag) const { return TempDir::Read(path).find(tag) != std::string::npos; }
    // Which of the tags the file holds, how many conflict copies lie beside it and how many messages were shown.
    std::string Outcome(std::initializer_list<const char*> tags) const {
        std::string held;
        for (const char* tag : tags)
            if (Saved(tag)) held += (held.empty() ? "" : " ") + std::string(tag);
        const std::string counts =
            std::to_string(Copies().size()) + " copies, " + std::to_string(ui->Messages().size()) + " told";
        return held.empty() ? counts : held + ", " + counts;
    }
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
    EXPECT_EQ(Outcome({"North", "South", "Doomed"}), "North South, 0 copies, 0 told");
    EXPECT_TRUE(b->Holds("North"));  // the document holds what was saved
    EXPECT_FALSE(a->Holds("Doomed"));
    EXPECT_EQ(a->ConflictCopy() + b->ConflictCopy(), "");
}

TEST_P(SharedDocuments, BothChangingOneElementKeepOursAndTheirsInACopy) {
    auto a = Open();
    auto b = Open();
    a->Change("Theirs");
    a->Save();
    b->Change("Ours");
    b->Add("East");
    b->Save();
    if (GetParam().changesBothKept) {
        EXPECT_EQ(Outcome({"Ours", "Theirs", "East"}) + b->ConflictCopy(), "Ours Theirs East, 0 copies, 0 told");
        return;
    }
    ASSERT_EQ(Outcome({"Ours", "Theirs", "East"}), "Ours East, 1 copies, 1 told");
    ASSERT_EQ(Copies(), std::vector<std::string>{b->ConflictCopy()});
    EXPECT_NE(TempDir::Read(b->ConflictCopy()).find("Theirs"), std::string::npos);
    const std::string name = std::filesystem::path(b->ConflictCopy()).filename().string();
    EXPECT_TRUE(std::regex_match(name, std::regex(R"(Shared\.xml\.conflict-\d{8}-\d{6})"))) << name;
    const std::string told = "Shared.xml was changed by someone else since it was opened; their version is kept as " + name;
    EXPECT_EQ(ui->Messages()[0].text, told);
    EXPECT_NE(TempDir::Read(dir.File("ErrorLog.txt")).find(told), std::string::npos);
    b->Save();  // nobody saved since: no further copy
    EXPECT_EQ(Outcome({}) + b->ConflictCopy(), "1 copies, 1 told");
}

TEST_P(SharedDocuments, AFileMadeSinceTheLoadAndAForeignOneCountAsChanged) {
    std::filesystem::remove(path);
    auto a = Open();
    auto b = Open();
    a->Add("North");
    a->Save();
    b->Add("South");
    b->Save();
    EXPECT_EQ(Outcome({"North", "South"}), "North South, 0 copies, 0 told");

    auto c = Open();
    c->Add("West");
    dir.Write("Shared.xml", "not a document of ours");
    c->Save();
    EXPECT_EQ(TempDir::Read(c->ConflictCopy()), "not a document of ours");
    EXPECT_EQ(Outcome({"North", "South", "West"}), "North South West, 1 copies, 1 told");
}

template <typename T> std::unique_ptr<Doc> Make() { return std::make_unique<T>(); }

INSTANTIATE_TEST_SUITE_P(Kinds, SharedDocuments,
                         ::testing::Values(Kind{"AddressBook", Make<BookDoc>}, Kind{"Settings", Make<SettingsDoc>},
                                           Kind{"Map", Make<MapDoc>, true}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SharedAddressBook, ViewsOnElementsTheOtherSideDeletedStayValid) {
    TempDir dir;
    const std::string path = dir.File("AddressBook.xml");
    BookDoc a, b;
    a.Load(path);
    a.Add("Old");
    a.Save();
    b.Load(path);
    const SiteGroup held = b.book.Sites().Group("Old");
    a.Remove("Old");
    a.Save();
    b.Save();
    EXPECT_FALSE(b.Holds("Old"));
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
