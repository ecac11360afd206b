// K processes edit one shared address book, map and settings file at once:
// each does M load-change-save cycles with random pauses, half of them through
// the `meridex` tool, half through the library. Every change a process saw
// saved is looked for afterwards in the final files and their conflict
// copies: none may be lost. With --kill, processes are killed (SIGKILL) at
// random moments and started again; a killed process's own unsaved change may
// be lost, no one else's.
//
//   shared_soak MERIDEX_TOOL [K] [M] [--kill]     (defaults 8 and 500)
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "../comms/CommsTestSupport.h"
#include "TempDir.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/frame/SharedFile.h>
#include <meridex/frame/StderrUserInterface.h>
#include <meridex/frame/UserInterface.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/settings/Settings.h>

using namespace meridex;

namespace {

// A user interface that says nothing: conflicts are counted from the files.
class Quiet : public StderrUserInterface {
public:
    MessageResult MessageBox(const std::string&, MessageButtons, MessageIcon, const std::string&,
                             MessageDefaultButton) override {
        return MessageResult::OK;
    }
};

struct Files {
    std::string folder, book, map, settings;
};

// What change number n of a worker leaves in a file, and which file.
struct Change {
    int document;  // 0 book, 1 map, 2 settings
    std::string tag;
};

Change ChangeOf(int worker, int n) {
    const int document = n % 3;
    const int unique = worker * 100000 + n;
    if (document == 1) return {1, "<COMMPORT>" + std::to_string(1 + unique % 32000) + "</COMMPORT>"};
    return {document, (document == 0 ? "G" : "K") + std::to_string(worker) + "_" + std::to_string(n)};
}

// Runs the tool on arguments (paths quoted), its output dropped and its errors added to a file.
bool Run(const std::string& tool, const std::string& arguments, const std::string& errors) {
    const int status = std::system((tool + " " + arguments + " >/dev/null 2>>'" + errors + "'").c_str());
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool MakeChange(const Files& files, const std::string& tool, bool useTool, const Change& change, std::mt19937& random,
                const std::string& errors) {
    const auto pause = [&] { std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000)); };
    pause();
    if (useTool) {
        if (change.document == 0) return Run(tool, "book add-group '" + files.book + "' '\\' " + change.tag, errors);
        if (change.document == 2)
            return Run(tool, "settings set '" + files.settings + "' " + change.tag + " 1", errors);
        const std::string port = change.tag.substr(10, change.tag.size() - 21);
        return Run(tool, "comms add '" + files.map + "' direct --port " + port, errors);
    }
    if (change.document == 0) {
        AddressBook book;
        book.LoadAddressBook(files.book);
        SiteGroup group;
        group.setName(change.tag);
        book.Sites().AddGroup(group);
        pause();
        book.SaveAddressBook();
        return true;
    }
    if (change.document == 2) {
        Settings settings;
        settings.LoadSettings(files.settings);
        settings.SetString(change.tag, "1");
        pause();
        return settings.SaveSettings();
    }
    CommsProfileManager map(std::make_shared<test::FakePorts>(), std::make_shared<IniUserStore>(files.folder + "/config"));
    map.LoadXMLMapFile(files.map);
    map.AddRS232Direct(change.tag.substr(10, change.tag.size() - 21));
    pause();
    const bool saved = map.SaveXMLMapFile();
    map.setMapFile("");
    return saved;
}

// One worker: M changes, each recorded (one line, flushed) once its save has returned.
[[noreturn]] void Work(const Files& files, const std::string& tool, int worker, int first, int cycles) {
    UserInterface::Install(std::make_shared<Quiet>());
    SharedFile::setErrorLogFile(files.folder + "/ErrorLog.txt");
    std::mt19937 random(static_cast<unsigned>(worker * 7919 + first));
    FILE* made = std::fopen((files.folder + "/made-" + std::to_string(worker)).c_str(), "a");
    for (int n = first; n < cycles; ++n) {
        const Change change = ChangeOf(worker, n);
        const std::string errors = files.folder + "/errors-" + std::to_string(worker);
        bool ok = false;
        try {
            ok = MakeChange(files, tool, worker % 2 == 0, change, random, errors);
        } catch (const std::exception& e) {
            if (FILE* log = std::fopen(errors.c_str(), "a")) {
                std::fprintf(log, "%s\n", e.what());
                std::fclose(log);
            }
        }
        // A save that said it failed changed nothing: not counted as made.
        std::fprintf(made, "%d\n", ok ? n : -n - 1);
        std::fflush(made);
    }
    std::fclose(made);
    std::_Exit(0);
}

std::vector<int> Made(const Files& files, int worker) {
    std::vector<int> made;
    std::ifstream in(files.folder + "/made-" + std::to_string(worker));
    for (int n; in >> n;) made.push_back(n);  // -n-1: change n was not saved
    return made;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: shared_soak MERIDEX_TOOL [K] [M] [--kill]\n");
        return 2;
    }
    const std::string tool = std::filesystem::absolute(argv[1]).string();
    const int workers = argc > 2 ? std::atoi(argv[2]) : 8;
    const int cycles = argc > 3 ? std::atoi(argv[3]) : 500;
    const bool kill = argc > 4 && std::string(argv[4]) == "--kill";
    test::TempDir dir;
    Files files{dir.Path(), dir.File("AddressBook.xml"), dir.File("CommsProfiles.xml"), dir.File("Settings.xml")};
    setenv("XDG_CONFIG_HOME", (dir.Path() + "/config").c_str(), 1);
    {
        AddressBook book;
        book.LoadAddressBook(files.book);
        book.SaveAddressBook();
        Settings settings;
        settings.LoadSettings(files.settings);
        settings.SaveSettings();
        CommsProfileManager map(std::make_shared<test::FakePorts>(), std::make_shared<IniUserStore>(dir.File("config")));
        map.LoadXMLMapFile(files.map);
        map.SaveXMLMapFile();
        map.setMapFile("");
    }

    std::vector<pid_t> pids(workers);
    const auto start = [&](int worker) {
        const std::vector<int> made = Made(files, worker);
        const int first = made.empty() ? 0 : (made.back() < 0 ? -made.back() - 1 : made.back()) + 1;
        const pid_t pid = fork();
        if (pid == 0) {
            setpgid(0, 0);  // a kill takes the worker's tool with it
            Work(files, tool, worker, first, cycles);
        }
        setpgid(pid, pid);
        pids[worker] = pid;
    };
    for (int w = 0; w < workers; ++w) start(w);
    std::mt19937 random(std::random_device{}());
    int kills = 0;
    for (int running = workers; running > 0;) {
        if (kill) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50 + random() % 400));
            const int victim = static_cast<int>(random() % workers);
            if (pids[victim] > 0) {
                ::kill(-pids[victim], SIGKILL);
                waitpid(pids[victim], nullptr, 0);
                ++kills;
                start(victim);  // carries on after the last change it recorded
            }
        }
        int status = 0;
        const pid_t done = waitpid(-1, &status, kill ? WNOHANG : 0);
        if (done <= 0) continue;
        for (int w = 0; w < workers; ++w)
            if (pids[w] == done) {
                pids[w] = 0;
                --running;
            }
    }

    // Every file each change could be in: the final one and its conflict copies.
    std::string texts[3];
    int copies = 0;
    const std::string names[3] = {"AddressBook.xml", "CommsProfiles.xml", "Settings.xml"};
    for (const std::string& name : test::TempDir::Entries(dir.Path())) {
        for (int d = 0; d < 3; ++d) {
            if (name != names[d] && name.rfind(names[d] + ".conflict-", 0) != 0) continue;
            texts[d] += test::TempDir::Read(dir.File(name));
            copies += name != names[d];
        }
    }
    long made = 0, found = 0, failed = 0;
    for (int w = 0; w < workers; ++w) {
        for (int n : Made(files, w)) {
            if (n < 0) {
                ++failed;
                continue;
            }
            const Change change = ChangeOf(w, n);
            ++made;
            const std::string& text = texts[change.document];
            const std::string needle = change.document == 1 ? change.tag
                                       : change.document == 0 ? "<KEY>" + change.tag + "</KEY>"
                                                              : "<" + change.tag + ">";
            if (text.find(needle) != std::string::npos) ++found;
            else std::fprintf(stderr, "lost: worker %d change %d (%s)\n", w, n, change.tag.c_str());
        }
    }
    for (int w = 0; w < workers; ++w) {
        std::ifstream errors(files.folder + "/errors-" + std::to_string(w));
        for (std::string line; std::getline(errors, line);) std::fprintf(stderr, "worker %d: %s\n", w, line.c_str());
    }
    std::printf("processes %d (%d tool, %d library), cycles %d, kills %d: saves that failed %ld; changes made %ld, found %ld, "
                "conflict copies %d, lost %ld\n",
                workers, (workers + 1) / 2, workers / 2, cycles, kills, failed, made, found, copies, made - found);
    return made == found && made > 0 ? 0 : 1;
}
