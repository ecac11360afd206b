#include <meridex/platform/Links.h>

#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>

#include <mutex>

#include <meridex/platform/windows/WideText.h>
#include <meridex/platform/windows/WindowsFiles.h>
#include <meridex/platform/windows/WindowsLink.h>

namespace meridex::Platform {
namespace {

// Winsock is started once per process and left running until it ends.
bool StartWinsock(std::string& error) {
    static std::once_flag once;
    static int rc = 0;
    std::call_once(once, [] {
        WSADATA data;
        rc = ::WSAStartup(MAKEWORD(2, 2), &data);
    });
    if (rc != 0) error = "Winsock could not be started: " + Windows::Message(static_cast<DWORD>(rc));
    return rc == 0;
}

// Connects without blocking beyond the deadline; the socket stays non-blocking.
SOCKET ConnectWithin(const addrinfo& a, std::chrono::milliseconds timeout, std::string& error) {
    SOCKET s = ::socket(a.ai_family, a.ai_socktype, a.ai_protocol);
    if (s == INVALID_SOCKET) {
        error = Windows::Message(static_cast<DWORD>(::WSAGetLastError()));
        return s;
    }
    u_long nonBlocking = 1;
    ::ioctlsocket(s, FIONBIO, &nonBlocking);
    if (::connect(s, a.ai_addr, static_cast<int>(a.ai_addrlen)) == 0) return s;
    int code = ::WSAGetLastError();
    if (code == WSAEWOULDBLOCK) {
        fd_set writable, failed;
        FD_ZERO(&writable);
        FD_SET(s, &writable);
        FD_ZERO(&failed);
        FD_SET(s, &failed);
        long long ms = timeout.count();
        timeval tv{static_cast<long>(ms / 1000), static_cast<long>((ms % 1000) * 1000)};
        int ready = ::select(0, nullptr, &writable, &failed, &tv);
        int soError = 0;
        int len = sizeof soError;
        if (ready > 0 && FD_ISSET(s, &writable) &&
            ::getsockopt(s, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&soError), &len) == 0 && soError == 0)
            return s;
        if (ready > 0) ::getsockopt(s, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&soError), &len);
        error = ready == 0 ? "no connection within " + std::to_string(ms) + " ms"
                           : Windows::Message(static_cast<DWORD>(soError ? soError : ::WSAGetLastError()));
    } else {
        error = Windows::Message(static_cast<DWORD>(code));
    }
    ::closesocket(s);
    return INVALID_SOCKET;
}

std::unique_ptr<ByteLink> OpenSocket(const std::string& host, std::uint16_t port, int type,
                                     std::chrono::milliseconds timeout, std::string& error) {
    const char* kind = type == SOCK_STREAM ? "TCP " : "UDP ";
    std::string description = kind + host + ":" + std::to_string(port);
    if (!StartWinsock(error)) return nullptr;
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;  // IPv4 or IPv6
    hints.ai_socktype = type;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    int rc = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (rc != 0) {
        error = host + ": " + Windows::Message(static_cast<DWORD>(rc));
        return nullptr;
    }
    SOCKET s = INVALID_SOCKET;
    for (addrinfo* a = found; a && s == INVALID_SOCKET; a = a->ai_next) s = ConnectWithin(*a, timeout, error);
    ::freeaddrinfo(found);
    if (s == INVALID_SOCKET) {
        error = description + ": " + error;
        return nullptr;
    }
    if (type == SOCK_STREAM) {
        BOOL on = TRUE;
        ::setsockopt(s, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
    }
    return std::make_unique<WindowsLink>(
        s, type == SOCK_STREAM ? WindowsLink::Kind::Stream : WindowsLink::Kind::Datagram, description);
}

}  // namespace

std::unique_ptr<ByteLink> OpenSerialLink(const std::string& device, std::uint32_t baud,
                                         const std::string& description, std::string& error) {
    // COM10 and above open only through the device namespace; it serves every port.
    std::string path = device.rfind("\\\\.\\", 0) == 0 ? device : "\\\\.\\" + device;
    HANDLE h = ::CreateFileW(Wide::FromUtf8(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                             0, nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        error = device + ": could not be opened: " + Windows::Message(::GetLastError());
        return nullptr;
    }
    DCB dcb{};
    dcb.DCBlength = sizeof dcb;
    bool ok = ::GetCommState(h, &dcb);
    if (ok) {
        dcb.BaudRate = baud;
        dcb.ByteSize = 8;
        dcb.Parity = NOPARITY;
        dcb.StopBits = ONESTOPBIT;
        dcb.fBinary = TRUE;
        dcb.fParity = FALSE;
        dcb.fOutxCtsFlow = FALSE;
        dcb.fOutxDsrFlow = FALSE;
        dcb.fDtrControl = DTR_CONTROL_ENABLE;
        dcb.fRtsControl = RTS_CONTROL_ENABLE;
        dcb.fOutX = FALSE;
        dcb.fInX = FALSE;
        dcb.fDsrSensitivity = FALSE;
        dcb.fAbortOnError = FALSE;
        ok = ::SetCommState(h, &dcb);
    }
    if (!ok) {
        error = device + ": could not be set up: " + Windows::Message(::GetLastError());
        ::CloseHandle(h);
        return nullptr;
    }
    return std::make_unique<WindowsLink>(h, description.empty() ? device : description);
}

std::unique_ptr<ByteLink> OpenTcpLink(const std::string& host, std::uint16_t port, std::chrono::milliseconds timeout,
                                      std::string& error) {
    return OpenSocket(host, port, SOCK_STREAM, timeout, error);
}

std::unique_ptr<ByteLink> OpenUdpLink(const std::string& host, std::uint16_t port, std::string& error) {
    return OpenSocket(host, port, SOCK_DGRAM, std::chrono::milliseconds(0), error);
}

}  // namespace meridex::Platform
