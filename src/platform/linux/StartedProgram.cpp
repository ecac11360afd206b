#include <meridex/platform/StartedProgram.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace meridex {

StartedProgram StartedProgram::Start(const std::string& path, const std::vector<std::string>& arguments) {
    StartedProgram program;
    std::vector<std::string> words{path};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    if (posix_spawn_file_actions_init(&actions) != 0) return program;
    if (posix_spawnattr_init(&attributes) != 0) {
        posix_spawn_file_actions_destroy(&actions);
        return program;
    }
    for (int fd = 0; fd <= 2; ++fd)
        posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", fd == 0 ? O_RDONLY : O_WRONLY, 0);
    // Its own session: no terminal, and its own process group, so ending it
    // ends whatever it started too.
    sigset_t none;
    sigemptyset(&none);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t pid = 0;
    if (posix_spawn(&pid, path.c_str(), &actions, &attributes, argv.data(), environ) == 0) program.id_ = pid;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return program;
}

bool StartedProgram::HasEnded() {
    if (id_ <= 0) return true;
    int status = 0;
    pid_t result = ::waitpid(static_cast<pid_t>(id_), &status, WNOHANG);
    // -1: already reaped elsewhere (for instance SIGCHLD ignored by the host).
    if (result == 0) return false;
    id_ = 0;
    return true;
}

void StartedProgram::End(std::chrono::milliseconds grace) {
    if (id_ <= 0) return;
    auto until = std::chrono::steady_clock::now() + grace;
    while (!HasEnded()) {
        if (std::chrono::steady_clock::now() >= until) {
            ::kill(-static_cast<pid_t>(id_), SIGKILL);
            ::kill(static_cast<pid_t>(id_), SIGKILL);
            int status = 0;
            while (::waitpid(static_cast<pid_t>(id_), &status, 0) < 0 && errno == EINTR) {
            }
            id_ = 0;
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

}  // namespace meridex
