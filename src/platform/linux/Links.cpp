#include <meridex/platform/Links.h>

#include <fcntl.h>
#include <libserialport.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <meridex/platform/linux/FdLink.h>

namespace meridex::Platform {
namespace {

std::string SerialError(const std::string& device, const char* what) {
    char* message = sp_last_error_message();
    std::string text = device + ": " + what + (message ? std::string(": ") + message : std::string());
    if (message) sp_free_error_message(message);
    return text;
}

// The addresses of host:port for one socket type.
addrinfo* Resolve(const std::string& host, std::uint16_t port, int type, std::string& error) {
    addrinfo hints{};
    hints.ai_family = 0;  // IPv4 or IPv6
    hints.ai_socktype = type;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    int rc = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (rc != 0) {
        error = host + ": " + ::gai_strerror(rc);
        return nullptr;
    }
    return found;
}

// Connects without blocking beyond the deadline; the socket stays non-blocking.
int ConnectWithin(const addrinfo& a, std::chrono::milliseconds timeout, std::string& error) {
    int fd = ::socket(a.ai_family, a.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, a.ai_protocol);
    if (fd < 0) {
        error = std::strerror(errno);
        return -1;
    }
    if (::connect(fd, a.ai_addr, a.ai_addrlen) == 0) return fd;
    if (errno == EINPROGRESS) {
        pollfd p{fd, POLLOUT, 0};
        int ready;
        do {
            ready = ::poll(&p, 1, static_cast<int>(timeout.count()));
        } while (ready < 0 && errno == EINTR);
        int soError = 0;
        socklen_t len = sizeof soError;
        if (ready > 0 && ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &soError, &len) == 0 && soError == 0) return fd;
        error = ready == 0 ? "no connection within " + std::to_string(timeout.count()) + " ms" : std::strerror(soError ? soError : errno);
    } else {
        error = std::strerror(errno);
    }
    ::close(fd);
    return -1;
}

std::unique_ptr<ByteLink> OpenSocket(const std::string& host, std::uint16_t port, int type,
                                     std::chrono::milliseconds timeout, std::string& error) {
    const char* kind = type == SOCK_STREAM ? "TCP " : "UDP ";
    std::string description = kind + host + ":" + std::to_string(port);
    addrinfo* found = Resolve(host, port, type, error);
    if (!found) return nullptr;
    int fd = -1;
    for (addrinfo* a = found; a && fd < 0; a = a->ai_next) fd = ConnectWithin(*a, timeout, error);
    ::freeaddrinfo(found);
    if (fd < 0) {
        error = description + ": " + error;
        return nullptr;
    }
    if (type == SOCK_STREAM) {
        int on = 1;
        ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }
    return std::make_unique<FdLink>(fd, type == SOCK_STREAM ? FdLink::Kind::Stream : FdLink::Kind::Datagram,
                                    description);
}

speed_t Speed(std::uint32_t baud) {
    switch (baud) {
    case 1200: return B1200;
    case 2400: return B2400;
    case 4800: return B4800;
    case 9600: return B9600;
    case 19200: return B19200;
    case 38400: return B38400;
    case 57600: return B57600;
    case 115200: return B115200;
    case 230400: return B230400;
    default: return B9600;
    }
}

// A terminal libserialport does not take (a pseudo-terminal, which has no
// serial device behind it), set up the same way with termios.
std::unique_ptr<ByteLink> OpenTerminal(const std::string& device, std::uint32_t baud, const std::string& description,
                                       std::string& error) {
    int fd = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    termios t{};
    if (fd < 0 || !::isatty(fd) || ::tcgetattr(fd, &t) != 0) {
        error = device + ": not a serial port" + (fd < 0 ? std::string(": ") + std::strerror(errno) : std::string());
        if (fd >= 0) ::close(fd);
        return nullptr;
    }
    ::cfmakeraw(&t);
    t.c_cflag |= CLOCAL | CREAD;
    t.c_cflag &= ~(CRTSCTS | CSTOPB);
    ::cfsetspeed(&t, Speed(baud));
    if (::tcsetattr(fd, TCSANOW, &t) != 0) {
        error = device + ": could not be set up: " + std::strerror(errno);
        ::close(fd);
        return nullptr;
    }
    return std::make_unique<FdLink>(fd, FdLink::Kind::Serial, description.empty() ? device : description);
}

}  // namespace

std::unique_ptr<ByteLink> OpenSerialLink(const std::string& device, std::uint32_t baud,
                                         const std::string& description, std::string& error) {
    sp_port* port = nullptr;
    if (sp_get_port_by_name(device.c_str(), &port) != SP_OK) return OpenTerminal(device, baud, description, error);
    if (sp_open(port, SP_MODE_READ_WRITE) != SP_OK) {
        error = SerialError(device, "could not be opened");
        sp_free_port(port);
        return nullptr;
    }
    int fd = -1;
    if (sp_set_baudrate(port, static_cast<int>(baud)) != SP_OK || sp_set_bits(port, 8) != SP_OK ||
        sp_set_parity(port, SP_PARITY_NONE) != SP_OK || sp_set_stopbits(port, 1) != SP_OK ||
        sp_set_flowcontrol(port, SP_FLOWCONTROL_NONE) != SP_OK || sp_get_port_handle(port, &fd) != SP_OK || fd < 0) {
        error = SerialError(device, "could not be set up");
        sp_close(port);
        sp_free_port(port);
        return nullptr;
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    return std::make_unique<FdLink>(fd, FdLink::Kind::Serial, description.empty() ? device : description, port);
}

std::unique_ptr<ByteLink> OpenTcpLink(const std::string& host, std::uint16_t port, std::chrono::milliseconds timeout,
                                      std::string& error) {
    return OpenSocket(host, port, SOCK_STREAM, timeout, error);
}

std::unique_ptr<ByteLink> OpenUdpLink(const std::string& host, std::uint16_t port, std::string& error) {
    return OpenSocket(host, port, SOCK_DGRAM, std::chrono::milliseconds(0), error);
}

}  // namespace meridex::Platform
