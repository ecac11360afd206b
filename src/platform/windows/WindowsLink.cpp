#include <meridex/platform/windows/WindowsLink.h>

#include <algorithm>

namespace meridex {
namespace {

// A send that cannot make progress for this long means the other end is stuck.
constexpr DWORD kSendStallMs = 10000;

// Waits until the socket can be read (or written); false on timeout or error.
bool WaitFor(SOCKET s, bool write, long long ms) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(s, &set);
    timeval tv{static_cast<long>(ms / 1000), static_cast<long>((ms % 1000) * 1000)};
    int ready = write ? ::select(0, nullptr, &set, nullptr, &tv) : ::select(0, &set, nullptr, nullptr, &tv);
    return ready > 0;
}

}  // namespace

WindowsLink::WindowsLink(HANDLE serial, std::string description)
    : serial_(serial), kind_(Kind::Serial), description_(std::move(description)) {}

WindowsLink::WindowsLink(SOCKET socket, Kind kind, std::string description)
    : socket_(socket), kind_(kind), description_(std::move(description)) {}

WindowsLink::~WindowsLink() {
    if (serial_ != INVALID_HANDLE_VALUE) ::CloseHandle(serial_);
    if (socket_ != INVALID_SOCKET) ::closesocket(socket_);
}

bool WindowsLink::SendSerial(std::string_view bytes) {
    COMMTIMEOUTS t{};
    ::GetCommTimeouts(serial_, &t);
    t.WriteTotalTimeoutMultiplier = 0;
    t.WriteTotalTimeoutConstant = kSendStallMs;
    ::SetCommTimeouts(serial_, &t);
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        DWORD n = 0;
        DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(bytes.size() - sent, 65536));
        if (!::WriteFile(serial_, bytes.data() + sent, chunk, &n, nullptr) || n == 0) return false;
        sent += n;
    }
    return true;
}

ByteLink::ReadResult WindowsLink::ReceiveSerial(std::string& into, std::chrono::milliseconds timeout) {
    // Waits up to the timeout for one byte, then takes whatever else has
    // arrived without waiting. Each read asks only for what is sure to
    // complete it: the "return at once with what has arrived" timeouts are
    // not kept alike by every serial driver (Wine's waits for a full buffer).
    const long long ms = std::max<long long>(0, timeout.count());
    COMMTIMEOUTS t{};
    ::GetCommTimeouts(serial_, &t);
    t.ReadIntervalTimeout = ms > 0 ? 0 : MAXDWORD;
    t.ReadTotalTimeoutMultiplier = 0;
    t.ReadTotalTimeoutConstant = static_cast<DWORD>(std::min<long long>(ms, MAXDWORD - 1));
    if (!::SetCommTimeouts(serial_, &t)) return ReadResult::Lost;
    char first = 0;
    DWORD n = 0;
    if (!::ReadFile(serial_, &first, 1, &n, nullptr)) return ReadResult::Lost;
    if (n == 0) return ReadResult::Timeout;
    into.push_back(first);

    DWORD errors = 0;
    COMSTAT status{};
    if (!::ClearCommError(serial_, &errors, &status) || status.cbInQue == 0) return ReadResult::Data;
    t.ReadIntervalTimeout = MAXDWORD;
    t.ReadTotalTimeoutConstant = 0;
    if (!::SetCommTimeouts(serial_, &t)) return ReadResult::Data;
    char buffer[65536];
    const DWORD wanted = std::min<DWORD>(status.cbInQue, sizeof buffer);
    if (::ReadFile(serial_, buffer, wanted, &n, nullptr)) into.append(buffer, n);
    return ReadResult::Data;
}

bool WindowsLink::Send(std::string_view bytes) {
    if (kind_ == Kind::Serial) return SendSerial(bytes);
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        int n = ::send(socket_, bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
        if (n > 0) {
            // A datagram goes whole or not at all.
            sent = kind_ == Kind::Datagram ? bytes.size() : sent + static_cast<std::size_t>(n);
            continue;
        }
        if (n == SOCKET_ERROR && ::WSAGetLastError() == WSAEWOULDBLOCK) {
            if (!WaitFor(socket_, true, kSendStallMs)) return false;
            continue;
        }
        return false;
    }
    return true;
}

ByteLink::ReadResult WindowsLink::Receive(std::string& into, std::chrono::milliseconds timeout) {
    if (kind_ == Kind::Serial) return ReceiveSerial(into, timeout);
    if (!WaitFor(socket_, false, std::max<long long>(0, timeout.count()))) return ReadResult::Timeout;
    char buffer[65536];
    int n = ::recv(socket_, buffer, sizeof buffer, 0);
    if (n > 0) {
        into.append(buffer, static_cast<std::size_t>(n));
        return ReadResult::Data;
    }
    if (n == 0 && kind_ == Kind::Datagram) return ReadResult::Data;  // an empty datagram
    if (n == SOCKET_ERROR && ::WSAGetLastError() == WSAEWOULDBLOCK) return ReadResult::Timeout;
    return ReadResult::Lost;  // end of stream, a reset, a refused datagram
}

void WindowsLink::Discard() {
    if (kind_ == Kind::Serial) {
        ::PurgeComm(serial_, PURGE_RXCLEAR);
        return;
    }
    char buffer[4096];
    while (WaitFor(socket_, false, 0)) {
        if (::recv(socket_, buffer, sizeof buffer, 0) <= 0) break;
    }
}

}  // namespace meridex
