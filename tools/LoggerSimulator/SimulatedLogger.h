#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include <meridex/firmware/LinkFrame.h>

namespace meridex {

// The logger side of the link protocol, with its memory ("flash") kept in a
// file so that it outlives the program: a logger stopped in the middle of an
// upgrade is still in its loader when it starts again.
class SimulatedLogger {
public:
    struct Options {
        std::string flashFile;
        std::string model = "WL400";
        std::string serial = "100001";
        std::string version = "1.0.0";      // the firmware of a new flash file
        std::size_t blockSize = 1024;
        std::uint64_t capacity = 4u << 20;  // bytes of image memory
        long dropAfterBlock = 0;            // 1-based; 0 never
        long corruptBlock = 0;              // 1-based; 0 never
        bool refuseErase = false;
    };

    explicit SimulatedLogger(Options options);
    ~SimulatedLogger();
    SimulatedLogger(const SimulatedLogger&) = delete;
    SimulatedLogger& operator=(const SimulatedLogger&) = delete;

    // False when the flash file could not be read or written; Error() says why.
    bool Ready() const noexcept { return error_.empty(); }
    const std::string& Error() const noexcept { return error_; }

    // Takes bytes from the link and gives the bytes of the replies.
    std::string Feed(std::string_view bytes);
    // True once the logger has dropped the link (the program then ends).
    bool Dropped() const noexcept { return dropped_; }

private:
    struct State {
        bool loader = false;
        bool valid = true;          // the memory holds a complete, checked image
        std::string version;        // of that image
        std::uint32_t size = 0;     // image being written: size, CRC-32, version
        std::uint32_t crc = 0;
        std::string pending;
        std::uint32_t next = 0;     // the block expected next
        bool erased = false;        // an erase has started a new image
    };

    std::string Handle(const LinkFrame::Frame& frame);
    std::string Identify() const;
    std::string WriteBlock(std::string_view payload);
    std::string Verify();
    std::string BadFrame() const;
    bool Load();
    bool Save();
    std::uint32_t ImageCrc(std::uint32_t bytes);

    Options options_;
    State state_;
    LinkFrame::Reader reader_;
    std::string error_;
    bool dropped_ = false;
    bool corrupted_ = false;
    int fd_ = -1;
};

}  // namespace meridex
