#pragma once
#include <string>

#include <meridex/firmware/ByteLink.h>

struct sp_port;

namespace meridex {

// A byte link over a file descriptor: a connected socket or an open serial
// port. Waits with poll, so every wait has its bound.
class FdLink : public ByteLink {
public:
    enum class Kind { Stream, Datagram, Serial };

    // Takes the descriptor (and the libserialport port, for a serial link).
    FdLink(int fd, Kind kind, std::string description, sp_port* port = nullptr);
    ~FdLink() override;
    FdLink(const FdLink&) = delete;
    FdLink& operator=(const FdLink&) = delete;

    std::string Description() const override { return description_; }
    bool Send(std::string_view bytes) override;
    ReadResult Receive(std::string& into, std::chrono::milliseconds timeout) override;
    void Discard() override;

private:
    int fd_;
    Kind kind_;
    std::string description_;
    sp_port* port_;
};

}  // namespace meridex
