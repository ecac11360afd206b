#pragma once
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
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
        std::string line;
        auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (line.find('\n') == std::string::npos && std::chrono::steady_clock::now() < deadline) {
            pollfd p{out[0], POLLIN, 0};
            if (::poll(&p, 1, 100) <= 0) continue;
            char c[256];
            ssize_t n = ::read(out[0], c, sizeof c);
            if (n <= 0) break;
            line.append(c, static_cast<std::size_t>(n));
        }
        ::close(out[0]);
        std::size_t space = line.find(' '), end = line.find('\n');
        if (space == std::string::npos || end == std::string::npos) return;
        kind_ = line.substr(0, space);
        where_ = line.substr(space + 1, end - space - 1);
    }
    ~SimulatorProcess() { Stop(); }
    SimulatorProcess(const SimulatorProcess&) = delete;
    SimulatorProcess& operator=(const SimulatorProcess&) = delete;

    bool Ready() const { return !where_.empty(); }
    // "PTY", "TCP" or "UDP", and the device or "127.0.0.1:PORT".
    const std::string& Kind() const { return kind_; }
    const std::string& Where() const { return where_; }
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
    std::string kind_;
    std::string where_;
};

}  // namespace meridex::test
