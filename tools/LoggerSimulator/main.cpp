// A simulated data logger for firmware upgrades: speaks the logger side of the
// link protocol on a pseudo-terminal it creates, or on a loopback TCP or UDP
// port. Its memory is a file, so it keeps its state across restarts. Prints
// one line when ready ("PTY /dev/pts/4", "TCP 127.0.0.1:40123",
// "UDP 127.0.0.1:40123") and serves until it is ended.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include <CLI/CLI.hpp>

#include "LinePacer.h"
#include "SimulatedLogger.h"

namespace {

using meridex::LinePacer;
using meridex::SimulatedLogger;

constexpr int kDropped = 3;

struct Faults {
    int replyDelayMs = 0;
    std::uint32_t baud = 0;
};

bool WriteAll(int fd, const std::string& bytes, bool socket) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        ssize_t n = socket ? ::send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL)
                           : ::write(fd, bytes.data() + sent, bytes.size() - sent);
        if (n > 0) {
            sent += static_cast<std::size_t>(n);
        } else if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
            pollfd p{fd, POLLOUT, 0};
            ::poll(&p, 1, 1000);
        } else {
            return false;
        }
    }
    return true;
}

// What a stretch of received bytes leads to: paced as the line would carry
// them, answered after the reply delay, the answer paced too.
std::string Serve(SimulatedLogger& logger, LinePacer& pacer, const Faults& faults, std::string_view bytes) {
    pacer.Pass(bytes.size());
    std::string reply = logger.Feed(bytes);
    if (logger.Dropped()) {
        std::fprintf(stderr, "LoggerSimulator: link dropped\n");
        std::exit(kDropped);
    }
    if (!reply.empty() && faults.replyDelayMs > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(faults.replyDelayMs));
    pacer.Pass(reply.size());
    return reply;
}

int ServePty(SimulatedLogger& logger, const Faults& faults, const std::string& linkPath) {
    int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) {
        std::perror("LoggerSimulator: pseudo-terminal");
        return 1;
    }
    std::string device = ::ptsname(master);
    // Holding the terminal's own side open keeps the master readable while
    // no host has it open, so hosts may come and go.
    int slave = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios t{};
    if (slave < 0 || ::tcgetattr(slave, &t) != 0) {
        std::perror("LoggerSimulator: pseudo-terminal");
        return 1;
    }
    ::cfmakeraw(&t);
    ::tcsetattr(slave, TCSANOW, &t);
    if (!linkPath.empty()) {
        ::unlink(linkPath.c_str());
        if (::symlink(device.c_str(), linkPath.c_str()) != 0) {
            std::perror("LoggerSimulator: link");
            return 1;
        }
    }
    std::printf("PTY %s\n", device.c_str());
    std::fflush(stdout);
    LinePacer pacer(faults.baud);
    char buffer[65536];
    for (;;) {
        ssize_t n = ::read(master, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            continue;
        }
        std::string reply = Serve(logger, pacer, faults, std::string_view(buffer, static_cast<std::size_t>(n)));
        if (!reply.empty()) WriteAll(master, reply, false);
    }
}

int Listen(int type, int port, sockaddr_in& bound) {
    int fd = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
    int on = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<std::uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);  // loopback only
    socklen_t len = sizeof bound;
    if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 ||
        (type == SOCK_STREAM && ::listen(fd, 4) != 0) ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&bound), &len) != 0) {
        std::perror("LoggerSimulator: listen");
        std::exit(1);
    }
    return fd;
}

int ServeTcp(SimulatedLogger& logger, const Faults& faults, int port) {
    sockaddr_in bound{};
    int listener = Listen(SOCK_STREAM, port, bound);
    std::printf("TCP 127.0.0.1:%d\n", ntohs(bound.sin_port));
    std::fflush(stdout);
    char buffer[65536];
    for (;;) {
        int fd = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0) continue;
        int on = 1;
        ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        LinePacer pacer(faults.baud);
        for (;;) {
            ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) break;
            std::string reply = Serve(logger, pacer, faults, std::string_view(buffer, static_cast<std::size_t>(n)));
            if (!reply.empty() && !WriteAll(fd, reply, true)) break;
        }
        ::close(fd);
    }
}

int ServeUdp(SimulatedLogger& logger, const Faults& faults, int port) {
    sockaddr_in bound{};
    int fd = Listen(SOCK_DGRAM, port, bound);
    std::printf("UDP 127.0.0.1:%d\n", ntohs(bound.sin_port));
    std::fflush(stdout);
    LinePacer pacer(faults.baud);
    char buffer[65536];
    for (;;) {
        sockaddr_in peer{};
        socklen_t len = sizeof peer;
        ssize_t n = ::recvfrom(fd, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&peer), &len);
        if (n <= 0) continue;
        std::string reply = Serve(logger, pacer, faults, std::string_view(buffer, static_cast<std::size_t>(n)));
        if (!reply.empty())
            ::sendto(fd, reply.data(), reply.size(), 0, reinterpret_cast<sockaddr*>(&peer), len);
    }
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"LoggerSimulator: a simulated data logger that takes firmware upgrades over the open link protocol"};
    SimulatedLogger::Options options;
    Faults faults;
    bool pty = false;
    std::string linkPath;
    int tcpPort = -1, udpPort = -1;
    app.add_option("--flash", options.flashFile, "the logger's memory (created when missing)")->required();
    app.add_option("--model", options.model, "model name")->capture_default_str();
    app.add_option("--serial", options.serial, "serial number")->capture_default_str();
    app.add_option("--version", options.version, "firmware version of a new memory file")->capture_default_str();
    app.add_option("--block-size", options.blockSize, "largest block it accepts")->check(CLI::Range(16, 8188))->capture_default_str();
    auto* where = app.add_option_group("link");
    where->add_flag("--pty", pty, "serve on a new pseudo-terminal");
    where->add_option("--tcp", tcpPort, "serve on this loopback TCP port (0: any free port)")->check(CLI::Range(0, 65535));
    where->add_option("--udp", udpPort, "serve on this loopback UDP port (0: any free port)")->check(CLI::Range(0, 65535));
    where->require_option(1);
    app.add_option("--link", linkPath, "with --pty: a symbolic link to the terminal's device");
    app.add_option("--drop-after-block", options.dropAfterBlock, "end the link once block N (1-based) is stored")->check(CLI::PositiveNumber);
    app.add_option("--corrupt-block", options.corruptBlock, "receive block N (1-based) garbled, once")->check(CLI::PositiveNumber);
    app.add_flag("--refuse-erase", options.refuseErase, "refuse to erase its memory");
    app.add_option("--reply-delay", faults.replyDelayMs, "milliseconds before each reply")->check(CLI::NonNegativeNumber);
    app.add_option("--baud", faults.baud, "carry bytes at this line speed (bit/s, ten bits a byte)")->check(CLI::NonNegativeNumber);
    CLI11_PARSE(app, argc, argv);

    ::signal(SIGPIPE, SIG_IGN);
    SimulatedLogger logger(options);
    if (!logger.Ready()) {
        std::fprintf(stderr, "LoggerSimulator: %s\n", logger.Error().c_str());
        return 1;
    }
    if (pty) return ServePty(logger, faults, linkPath);
    if (tcpPort >= 0) return ServeTcp(logger, faults, tcpPort);
    return ServeUdp(logger, faults, udpPort);
}
