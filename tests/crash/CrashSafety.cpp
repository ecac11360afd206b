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

#include "../comms/CommsTestSupport.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/frame/DiskSteps.h>
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

const char* const kNames[] = {"settings.xml", "book.xml", "map.xml"};

// Version v of document d (settings, book, map): some hundreds of KB, text
// above 127 included, so that a save takes many writes.
std::string Source(int d, int v) {
    const std::string version = std::to_string(v);
    std::string sites;
    for (int s = 0; s < 20; ++s)
        sites += "<SITE><KEY>S" + std::to_string(s) + "</KEY><NAME>Site v" + version + "</NAME></SITE>";
    std::string text = d == 0   ? "<V4SETTINGS><VERSION>" + version + "</VERSION>"
                       : d == 1 ? "<V4ADDRESSBOOK>"
                                : "<?xml version=\"1.0\" encoding=\"windows-1252\"?><COMMSPROFILES>";
    for (int i = 0; i < 6000; ++i) {
        const std::string n = std::to_string(i);
        if (d == 0) text += "<K" + n + ">B\xC3\xBCro \xE2\x82\xAC " + version + "</K" + n + ">";
        if (d == 1 && i < 40) text += "<GROUP><KEY>G" + n + "</KEY><NAME>Group " + n + "</NAME>" + sites + "</GROUP>";
        const std::string port = std::to_string(i + 1);
        if (d == 2 && i < 200)
            text += "<PROFILE><KEY>PROFILE" + port + "</KEY><NAME>Direct to COM" + port + " v" + version +
                    "</NAME><TYPE>RS232</TYPE><METHOD>DIRECT</METHOD><COMMPORT>" + port + "</COMMPORT></PROFILE>";
    }
    return text + (d == 0 ? "<PROFILES/></V4SETTINGS>" : d == 1 ? "</V4ADDRESSBOOK>" : "</COMMSPROFILES>");
}

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

std::vector<std::string> Hidden(const std::string& folder) {
    std::vector<std::string> names = test::TempDir::Entries(folder);
    std::erase_if(names, [](const std::string& name) { return name[0] != '.'; });
    return names;
}

}  // namespace

int main(int argc, char** argv) {
    const int kills = argc > 1 ? std::atoi(argv[1]) : 100;
    test::TempDir dir;
    test::CommsFixture comms;
    Documents documents;
    std::string saved[2][3];  // the exact bytes of each complete document
    for (int v = 0; v < 2; ++v) {
        const auto source = [&](int d) { return dir.Write(std::to_string(v) + kNames[d], Source(d, v)); };
        documents.settings[v].LoadSettings(source(0));
        documents.books[v].LoadAddressBook(source(1));
        documents.maps[v] = comms.Manager();
        documents.maps[v]->LoadXMLMapFile(source(2));
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
