#include <meridex/platform/linux/FdLink.h>

#include <libserialport.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

namespace meridex {
namespace {

// A send that cannot make progress for this long means the other end is stuck.
constexpr int kSendStallMs = 10000;

}  // namespace

FdLink::FdLink(int fd, Kind kind, std::string description, sp_port* port)
    : fd_(fd), kind_(kind), description_(std::move(description)), port_(port) {}

FdLink::~FdLink() {
    if (port_) {
        sp_close(port_);
        sp_free_port(port_);
    } else if (fd_ >= 0) {
        ::close(fd_);
    }
}

bool FdLink::Send(std::string_view bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        ssize_t n = kind_ == Kind::Serial ? ::write(fd_, bytes.data() + sent, bytes.size() - sent)
                                          : ::send(fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (n > 0) {
            // A datagram goes whole or not at all.
            sent = kind_ == Kind::Datagram ? bytes.size() : sent + static_cast<std::size_t>(n);
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            pollfd p{fd_, POLLOUT, 0};
            if (::poll(&p, 1, kSendStallMs) <= 0 || (p.revents & (POLLERR | POLLHUP | POLLNVAL))) return false;
            continue;
        }
        return false;
    }
    return true;
}

ByteLink::ReadResult FdLink::Receive(std::string& into, std::chrono::milliseconds timeout) {
    pollfd p{fd_, POLLIN, 0};
    int ready;
    do {
        ready = ::poll(&p, 1, static_cast<int>(std::max<long long>(0, timeout.count())));
    } while (ready < 0 && errno == EINTR);
    if (ready == 0) return ReadResult::Timeout;
    if (ready < 0 || (p.revents & POLLNVAL)) return ReadResult::Lost;
    char buffer[65536];
    ssize_t n;
    do {
        n = ::read(fd_, buffer, sizeof buffer);
    } while (n < 0 && errno == EINTR);
    if (n > 0) {
        into.append(buffer, static_cast<std::size_t>(n));
        return ReadResult::Data;
    }
    if (n == 0 && kind_ == Kind::Datagram) return ReadResult::Data;  // an empty datagram
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return ReadResult::Timeout;
    return ReadResult::Lost;  // end of stream, a hung-up terminal, a refused datagram
}

void FdLink::Discard() {
    if (kind_ == Kind::Serial) ::tcflush(fd_, TCIFLUSH);
    char buffer[4096];
    pollfd p{fd_, POLLIN, 0};
    while (::poll(&p, 1, 0) > 0 && (p.revents & POLLIN)) {
        ssize_t n = kind_ == Kind::Serial ? ::read(fd_, buffer, sizeof buffer)
                                          : ::recv(fd_, buffer, sizeof buffer, MSG_DONTWAIT);
        if (n <= 0) break;
    }
}

}  // namespace meridex
