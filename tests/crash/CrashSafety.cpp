// Kills a process that keeps saving settings, an address book and a map, at
// random moments, and checks after every kill that each file is one of the two
// documents it alternates between, complete, and that the next successful save
// leaves no temporary file behind.
//
//   crash_safety [KILLS]   (default 100)
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "TempDir.h"
#include <meridex/frame/DiskSteps.h>
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/settings/Settings.h>

using namespace meridex;

namespace {

// A slow disk for the saving process: a save then spends most of its time
// writing, where a kill does the most harm, rather than serialising.
struct SlowDisk : FileOps::DiskSteps {
    ssize_t Write(int fd, const char* data, std::size_t size, off_t offset) override {
        usleep(2000);
        return FileOps::DiskSteps::Write(fd, data, std::min<std::size_t>(size, 16384), offset);
    }
};

class NoPorts : public SerialPortSource {
public:
    std::vector<SerialPort> ListPorts() override { return {}; }
    bool Probe(const SerialPort&) override { return false; }
};

// The two versions of the three documents, loaded once, so that a process
// forked from here does nothing but save.
struct Documents {
    Settings settings[2];
    AddressBook books[2];
    std::unique_ptr<CommsProfileManager> maps[2];

    // Saves version v of each document into folder; false on a failed save.
    bool Save(int v, const std::string& folder) {
        if (!settings[v].SaveSettings(folder + "/settings.xml")) return false;
        books[v].SaveAddressBook(folder + "/book.xml");
        return maps[v]->SaveXMLMapFile(folder + "/map.xml");
    }
};

const char* const kNames[] = {"settings.xml", "book.xml", "map.xml"};

std::string Settings1(const test::TempDir& dir, int version) {
    // About 300 KB, text above 127 included, so a save takes many writes.
    std::string text = "<V4SETTINGS><VERSION>" + std::to_string(version) + "</VERSION>";
    for (int i = 0; i < 6000; ++i) text += "<K" + std::to_string(i) + ">B\xC3\xBCro \xE2\x82\xAC " + std::to_string(version) + "</K" + std::to_string(i) + ">";
    return dir.Write("source/settings" + std::to_string(version) + ".xml", text + "<PROFILES/></V4SETTINGS>");
}

std::string Book(const test::TempDir& dir, int version) {
    std::string text = "<V4ADDRESSBOOK>";
    for (int g = 0; g < 40; ++g) {
        text += "<GROUP><KEY>G" + std::to_string(g) + "</KEY><NAME>Group " + std::to_string(g) + "</NAME>";
        for (int s = 0; s < 20; ++s)
            text += "<SITE><KEY>S" + std::to_string(s) + "</KEY><NAME>Site v" + std::to_string(version) + "</NAME></SITE>";
        text += "</GROUP>";
    }
    return dir.Write("source/book" + std::to_string(version) + ".xml", text + "</V4ADDRESSBOOK>");
}

std::string Map(const test::TempDir& dir, int version) {
    std::string text = "<?xml version=\"1.0\" encoding=\"windows-1252\"?><COMMSPROFILES>";
    for (int p = 1; p <= 200; ++p)
        text += "<PROFILE><KEY>PROFILE" + std::to_string(p) + "</KEY><NAME>Direct to COM" + std::to_string(p) +
                " v" + std::to_string(version) + "</NAME><TYPE>RS232</TYPE><METHOD>DIRECT</METHOD><COMMPORT>" +
                std::to_string(p) + "</COMMPORT></PROFILE>";
    return dir.Write("source/map" + std::to_string(version) + ".xml", text + "</COMMSPROFILES>");
}

std::vector<std::string> Hidden(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename();
        if (name[0] == '.') names.push_back(name);
    }
    return names;
}

}  // namespace

int main(int argc, char** argv) {
    const int kills = argc > 1 ? std::atoi(argv[1]) : 100;
    test::TempDir dir;
    auto ports = std::make_shared<NoPorts>();
    auto store = std::make_shared<IniUserStore>(dir.File("config"));
    Documents documents;
    std::string saved[2][3];  // the exact bytes of each complete document
    for (int v = 0; v < 2; ++v) {
        documents.settings[v].LoadSettings(Settings1(dir, v));
        documents.books[v].LoadAddressBook(Book(dir, v));
        documents.maps[v] = std::make_unique<CommsProfileManager>(ports, store);
        documents.maps[v]->LoadXMLMapFile(Map(dir, v));
        const std::string reference = dir.File("reference" + std::to_string(v));
        std::filesystem::create_directories(reference);
        if (!documents.Save(v, reference)) return 2;
        for (int k = 0; k < 3; ++k) saved[v][k] = test::TempDir::Read(reference + "/" + kNames[k]);
    }
    const std::string live = dir.File("live");
    std::filesystem::create_directories(live);
    if (!documents.Save(0, live)) return 2;

    std::mt19937 random(std::random_device{}());
    int killedMidSave = 0;
    for (int round = 0; round < kills; ++round) {
        const pid_t child = fork();
        if (child == 0) {
            static SlowDisk slow;
            FileOps::InstallDiskSteps(&slow);
            for (int version = 1;; version ^= 1)
                if (!documents.Save(version, live)) std::_Exit(3);
        }
        usleep(500 + random() % 100000);
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        if (!WIFSIGNALED(status)) {
            std::fprintf(stderr, "round %d: the saving process ended by itself (status %d)\n", round, status);
            return 1;
        }
        if (!Hidden(live).empty()) ++killedMidSave;
        for (int k = 0; k < 3; ++k) {
            const std::string path = live + "/" + kNames[k];
            const std::string bytes = test::TempDir::Read(path);
            if ((bytes != saved[0][k] && bytes != saved[1][k]) || !XmlDocument::Load(path)) {
                std::fprintf(stderr, "round %d: %s is neither complete version (%zu bytes)\n", round, kNames[k],
                             bytes.size());
                return 1;
            }
        }
        // The next save removes what the killed one left.
        if (!documents.Save(round % 2, live)) return 2;
        if (const auto left = Hidden(live); !left.empty()) {
            std::fprintf(stderr, "round %d: %s left after a successful save\n", round, left.front().c_str());
            return 1;
        }
    }
    for (auto& map : documents.maps) map->setMapFile({});
    std::printf("%d kills, %d of them in the middle of a save (a temporary file left); every file was complete "
                "each time and no temporary outlived the next save\n", kills, killedMidSave);
    return 0;
}
