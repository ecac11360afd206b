#pragma once
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace meridex::test {

// The simulated logger program, started with arguments and ended with the
// object. Ready() once it has printed where it listens.
class SimulatorProcess {
public:
    explicit SimulatorProcess(std::vector<std::string> arguments) {
        int out[2];
        if (::pipe2(out, O_CLOEXEC) != 0) return;
        pid_ = ::fork();
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // ended with a test that dies
            ::dup2(out[1], 1);
            std::vector<char*> argv;
            static std::string program = MERIDEX_LOGGER_SIMULATOR;
            argv.push_back(program.data());
            for (std::string& a : arguments) argv.push_back(a.data());
            argv.push_back(nullptr);
            ::execv(program.c_str(), argv.data());
            ::_exit(127);
        }
        ::close(out[1]);
        // Its first line: "PTY", "TCP" or "UDP", a space, and the device or "127.0.0.1:PORT".
        FILE* in = ::fdopen(out[0], "r");
        char line[512] = "";
        const char* space = in && std::fgets(line, sizeof line, in) ? std::strchr(line, ' ') : nullptr;
        if (in) std::fclose(in);
        if (space && std::strchr(space, '\n')) where_.assign(space + 1, std::strcspn(space + 1, "\n"));
    }
    ~SimulatorProcess() { Stop(); }
    SimulatorProcess(const SimulatorProcess&) = delete;
    SimulatorProcess& operator=(const SimulatorProcess&) = delete;

    bool Ready() const { return !where_.empty(); }
    std::uint16_t Port() const {
        std::size_t colon = where_.rfind(':');
        return colon == std::string::npos ? 0 : static_cast<std::uint16_t>(std::stoi(where_.substr(colon + 1)));
    }
    // The exit status once it has ended by itself (waits up to 10 s), else -1.
    int WaitForExit() {
        for (int i = 0; i < 1000 && pid_ > 0; ++i) {
            int status = 0;
            if (::waitpid(pid_, &status, WNOHANG) == pid_) {
                pid_ = -1;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return -1;
    }
    void Stop() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

private:
    pid_t pid_ = -1;
    std::string where_;
};

}  // namespace meridex::test
