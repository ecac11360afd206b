#include "SimulatedLogger.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>

#include <meridex/firmware/Crc.h>

namespace meridex {
namespace {

// The flash file: a text header padded to kFlashHeader, then the image.
constexpr off_t kFlashHeader = 512;
constexpr const char* kMagic = "MERIDEX SIMULATED FLASH 1";

std::string Reply(std::uint8_t command, LinkFrame::Status status, std::string_view data = {}) {
    std::string payload(1, static_cast<char>(status));
    payload.append(data.data(), data.size());
    return LinkFrame::Encode(command | LinkFrame::kReplyBit, payload);
}

std::string U32(std::uint32_t value) {
    std::string out;
    LinkFrame::PutU32(out, value);
    return out;
}

}  // namespace

SimulatedLogger::SimulatedLogger(Options options) : options_(std::move(options)) {
    fd_ = ::open(options_.flashFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd_ < 0) {
        error_ = options_.flashFile + ": " + std::strerror(errno);
        return;
    }
    if (!Load()) {
        state_ = State{};
        state_.version = options_.version;
        if (!Save()) error_ = options_.flashFile + ": could not be written";
    }
}

SimulatedLogger::~SimulatedLogger() {
    if (fd_ >= 0) ::close(fd_);
}

bool SimulatedLogger::Load() {
    std::string header(kFlashHeader, '\0');
    if (::pread(fd_, header.data(), header.size(), 0) != kFlashHeader) return false;
    std::istringstream in(header);
    std::string line;
    if (!std::getline(in, line) || line != kMagic) return false;
    while (std::getline(in, line)) {
        std::size_t eq = line.find('=');
        if (eq == std::string::npos) continue;
        std::string key = line.substr(0, eq), value = line.substr(eq + 1);
        unsigned long number = std::strtoul(value.c_str(), nullptr, 10);
        if (key == "mode") state_.loader = value == "LOADER";
        else if (key == "valid") state_.valid = number != 0;
        else if (key == "version") state_.version = value;
        else if (key == "size") state_.size = static_cast<std::uint32_t>(number);
        else if (key == "crc") state_.crc = static_cast<std::uint32_t>(number);
        else if (key == "pending") state_.pending = value;
        else if (key == "next") state_.next = static_cast<std::uint32_t>(number);
        else if (key == "erased") state_.erased = number != 0;
    }
    return true;
}

bool SimulatedLogger::Save() {
    std::ostringstream out;
    out << kMagic << "\nmode=" << (state_.loader ? "LOADER" : "APPLICATION") << "\nvalid=" << state_.valid
        << "\nversion=" << state_.version << "\nsize=" << state_.size << "\ncrc=" << state_.crc
        << "\npending=" << state_.pending << "\nnext=" << state_.next << "\nerased=" << state_.erased << "\n";
    std::string header = out.str();
    header.resize(kFlashHeader, ' ');
    return ::pwrite(fd_, header.data(), header.size(), 0) == kFlashHeader;
}

std::uint32_t SimulatedLogger::ImageCrc(std::uint32_t bytes) {
    std::string image(bytes, '\0');
    ssize_t n = ::pread(fd_, image.data(), image.size(), kFlashHeader);
    image.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
    return Crc::Crc32(image);
}

std::string SimulatedLogger::Feed(std::string_view bytes) {
    std::string replies;
    reader_.Append(bytes);
    for (;;) {
        LinkFrame::Frame frame;
        LinkFrame::Reader::Result r = reader_.Next(frame);
        if (r == LinkFrame::Reader::Result::None || dropped_) break;
        replies += r == LinkFrame::Reader::Result::BadFrame ? BadFrame() : Handle(frame);
    }
    return replies;
}

std::string SimulatedLogger::BadFrame() const {
    return LinkFrame::Encode(LinkFrame::kBadFrame, std::string(1, char(LinkFrame::BadFrame)) + U32(state_.next));
}

std::string SimulatedLogger::Identify() const {
    std::string text = "MODEL=" + options_.model + "\nSERIAL=" + options_.serial +
                       "\nVERSION=" + (state_.valid ? state_.version : std::string()) +
                       "\nMODE=" + (state_.loader ? "LOADER" : "APPLICATION") +
                       "\nLOADER=1.0\nBLOCKSIZE=" + std::to_string(options_.blockSize) + "\n";
    return Reply(LinkFrame::Identify, LinkFrame::Ok, text);
}

std::string SimulatedLogger::Handle(const LinkFrame::Frame& frame) {
    using namespace LinkFrame;
    const std::string& p = frame.payload;
    switch (frame.type) {
    case LinkFrame::Identify:
        return Identify();
    case EnterLoader:
        state_.loader = true;
        return Reply(EnterLoader, Save() ? Ok : Refused);
    case Erase: {
        if (!state_.loader || options_.refuseErase || p.size() < 8) return Reply(Erase, Refused);
        std::uint32_t size = GetU32(p, 0);
        if (size == 0 || size > options_.capacity) return Reply(Erase, TooLarge);
        state_.valid = false;
        state_.version.clear();
        state_.size = size;
        state_.crc = GetU32(p, 4);
        state_.pending = p.substr(8);
        for (char& c : state_.pending)
            if (c == '\n' || c == '\r') c = ' ';
        state_.next = 0;
        state_.erased = true;
        if (::ftruncate(fd_, kFlashHeader) != 0 || !Save()) return Reply(Erase, Refused);
        return Reply(Erase, Ok);
    }
    case LinkFrame::WriteBlock:
        return WriteBlock(p);
    case LinkFrame::Verify:
        return Verify();
    case Start:
        if (!state_.valid) return Reply(Start, NoValidImage);
        state_.loader = false;
        return Reply(Start, Save() ? Ok : Refused);
    default:
        return Reply(frame.type & 0x7F, Unknown);
    }
}

std::string SimulatedLogger::WriteBlock(std::string_view p) {
    using namespace LinkFrame;
    if (!state_.loader || !state_.erased || p.size() < 4) return Reply(LinkFrame::WriteBlock, Refused, U32(state_.next));
    std::uint32_t block = GetU32(p, 0);
    // Line noise on this block, the first time it comes.
    if (options_.corruptBlock > 0 && block + 1 == static_cast<std::uint64_t>(options_.corruptBlock) && !corrupted_) {
        corrupted_ = true;
        return BadFrame();
    }
    if (block < state_.next) return Reply(LinkFrame::WriteBlock, Ok, U32(state_.next));  // a repeat: its reply was lost
    const std::uint64_t offset = std::uint64_t(block) * options_.blockSize;
    const std::uint64_t expected = offset < state_.size ? std::min<std::uint64_t>(options_.blockSize, state_.size - offset) : 0;
    if (block > state_.next || p.size() - 4 != expected) return Reply(LinkFrame::WriteBlock, BadBlock, U32(state_.next));
    if (::pwrite(fd_, p.data() + 4, expected, kFlashHeader + static_cast<off_t>(offset)) != static_cast<ssize_t>(expected))
        return Reply(LinkFrame::WriteBlock, Refused, U32(state_.next));
    ++state_.next;
    Save();
    if (options_.dropAfterBlock > 0 && state_.next == static_cast<std::uint64_t>(options_.dropAfterBlock)) {
        dropped_ = true;
        return {};
    }
    return Reply(LinkFrame::WriteBlock, Ok, U32(state_.next));
}

std::string SimulatedLogger::Verify() {
    using namespace LinkFrame;
    const std::uint64_t written = std::min<std::uint64_t>(std::uint64_t(state_.next) * options_.blockSize, state_.size);
    const std::uint32_t crc = state_.erased ? ImageCrc(static_cast<std::uint32_t>(written)) : 0;
    const bool complete = state_.erased && written == state_.size && crc == state_.crc;
    if (complete && !state_.valid) {
        state_.valid = true;
        state_.version = state_.pending;
        Save();
    }
    return Reply(LinkFrame::Verify, complete ? Ok : NoValidImage, U32(static_cast<std::uint32_t>(written)) + U32(crc));
}

}  // namespace meridex
