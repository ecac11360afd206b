#pragma once
#include <winsock2.h>
#include <windows.h>

#include <string>

#include <meridex/firmware/ByteLink.h>

namespace meridex {

// A byte link over a Windows serial handle or a connected Winsock socket
// (non-blocking). Waits with comm timeouts or select, so every wait has its bound.
class WindowsLink : public ByteLink {
public:
    enum class Kind { Stream, Datagram, Serial };

    // A serial link; takes the handle.
    WindowsLink(HANDLE serial, std::string description);
    // A socket link; takes the socket.
    WindowsLink(SOCKET socket, Kind kind, std::string description);
    ~WindowsLink() override;
    WindowsLink(const WindowsLink&) = delete;
    WindowsLink& operator=(const WindowsLink&) = delete;

    std::string Description() const override { return description_; }
    bool Send(std::string_view bytes) override;
    ReadResult Receive(std::string& into, std::chrono::milliseconds timeout) override;
    void Discard() override;

private:
    bool SendSerial(std::string_view bytes);
    ReadResult ReceiveSerial(std::string& into, std::chrono::milliseconds timeout);

    HANDLE serial_ = INVALID_HANDLE_VALUE;
    SOCKET socket_ = INVALID_SOCKET;
    Kind kind_;
    std::string description_;
};

}  // namespace meridex
