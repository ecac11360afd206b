#include <meridex/firmware/LinkLogger.h>

#include <algorithm>
#include <charconv>
#include <thread>

#include <meridex/firmware/FirmwareImage.h>
#include <meridex/firmware/LinkFrame.h>
#include <meridex/frame/Text.h>

namespace meridex {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

const std::string kInLoader =
    " The logger is waiting in its loader; upgrade it again to complete the upgrade.";

UpgradeResult Result(UpgradeStatus status, std::string message, LoggerIdentity identity = {}) {
    return {status, std::move(message), std::move(identity)};
}

std::string Join(const std::vector<std::string>& items) {
    std::string text;
    for (const std::string& item : items) text += (text.empty() ? "" : ", ") + item;
    return text;
}

bool ParseIdentity(std::string_view text, LoggerIdentity& identity, std::size_t& blockSize) {
    bool haveMode = false;
    while (!text.empty()) {
        std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        std::size_t eq = line.find('=');
        if (eq == std::string_view::npos) continue;
        std::string key = Text::ToUpper(Text::Trim(line.substr(0, eq)));
        std::string value(Text::Trim(line.substr(eq + 1)));
        if (key == "MODEL") identity.model = value;
        else if (key == "SERIAL") identity.serialNumber = value;
        else if (key == "VERSION") identity.firmwareVersion = value;
        else if (key == "LOADER") identity.loaderVersion = value;
        else if (key == "MODE") {
            haveMode = true;
            identity.inLoader = Text::EqualsIgnoreCase(value, "LOADER");
        } else if (key == "BLOCKSIZE") {
            std::size_t size = 0;
            auto [p, ec] = std::from_chars(value.data(), value.data() + value.size(), size);
            if (ec == std::errc() && size > 0) blockSize = size;
        }
    }
    return haveMode && !identity.model.empty();
}

}  // namespace

// One conversation with the logger: the frame reader and the time limits.
struct LinkLogger::Session {
    enum class Exchange { Reply, BadFrame, Timeout, Lost };

    Session(ByteLink& link, const Options& options) : link(link), options(options) {}

    // Time the line needs for n bytes, ten bits each.
    milliseconds LineTime(std::size_t n) const {
        if (options.lineBaud == 0) return milliseconds(0);
        return milliseconds(static_cast<long long>(n) * 10 * 1000 / options.lineBaud + 1);
    }

    // Sends a command and waits for its reply; a reply to something else is skipped.
    Exchange Transact(std::uint8_t command, std::string_view payload, LinkFrame::Frame& reply, milliseconds timeout) {
        link.Discard();
        reader.Clear();
        if (!link.Send(LinkFrame::Encode(command, payload))) return Exchange::Lost;
        auto deadline = Clock::now() + timeout + LineTime(payload.size() + LinkFrame::kOverhead + 64);
        std::string chunk;
        for (;;) {
            LinkFrame::Frame frame;
            switch (reader.Next(frame)) {
            case LinkFrame::Reader::Result::FrameReady:
                if (frame.type == kBadFrameType) return Exchange::BadFrame;
                if (frame.type == (command | LinkFrame::kReplyBit) && !frame.payload.empty()) {
                    reply = std::move(frame);
                    return Exchange::Reply;
                }
                continue;
            case LinkFrame::Reader::Result::BadFrame:
                return Exchange::BadFrame;
            case LinkFrame::Reader::Result::None:
                break;
            }
            auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now());
            if (left.count() <= 0) return Exchange::Timeout;
            chunk.clear();
            ByteLink::ReadResult r = link.Receive(chunk, left);
            if (r == ByteLink::ReadResult::Lost) return Exchange::Lost;
            reader.Append(chunk);
        }
    }

    // A command sent up to maxAttempts times until it has a reply; fills failure otherwise.
    bool Command(std::uint8_t command, std::string_view payload, LinkFrame::Frame& reply, milliseconds timeout,
                 const std::string& what, UpgradeResult& failure) {
        bool answered = false;
        for (int attempt = 0; attempt < std::max(1, options.maxAttempts); ++attempt) {
            Exchange e = Transact(command, payload, reply, timeout);
            if (e == Exchange::Reply) return true;
            if (e == Exchange::Lost) {
                failure = Result(UpgradeStatus::LinkLost, "The link to the logger was lost while " + what + ".");
                return false;
            }
            answered = answered || e == Exchange::BadFrame;
        }
        failure = answered ? Result(UpgradeStatus::TransferFailed,
                                    "The logger's replies were garbled while " + what + ".")
                           : Result(UpgradeStatus::NoAnswer, "The logger did not answer while " + what + " (" +
                                                                 link.Description() + ").");
        return false;
    }

    UpgradeResult Identify(int attempts) {
        LinkFrame::Frame reply;
        UpgradeResult failure;
        Options once = options;
        once.maxAttempts = attempts;
        Session s(link, once);
        if (!s.Command(LinkFrame::Identify, {}, reply, options.replyTimeout, "identifying it", failure)) return failure;
        LoggerIdentity identity;
        if (reply.payload[0] != LinkFrame::Ok ||
            !ParseIdentity(std::string_view(reply.payload).substr(1), identity, loggerBlockSize))
            return Result(UpgradeStatus::TransferFailed, "The logger's identification could not be read.");
        return Result(UpgradeStatus::Ok, {}, identity);
    }

    // Identifies until the logger answers or the restart time is over.
    UpgradeResult AwaitRestart() {
        auto deadline = Clock::now() + options.restartTimeout;
        UpgradeResult r;
        do {
            r = Identify(1);
            if (r.Ok() || r.status == UpgradeStatus::TransferFailed) return r;
            if (r.status == UpgradeStatus::LinkLost) std::this_thread::sleep_for(milliseconds(50));
        } while (Clock::now() < deadline);
        return r;
    }

    static constexpr std::uint8_t kBadFrameType = LinkFrame::kBadFrame;
    ByteLink& link;
    const Options& options;
    LinkFrame::Reader reader;
    std::size_t loggerBlockSize = 0;
};

LinkLogger::LinkLogger(std::unique_ptr<ByteLink> link, Options options)
    : link_(std::move(link)), options_(options) {}
LinkLogger::LinkLogger(std::unique_ptr<ByteLink> link) : LinkLogger(std::move(link), Options{}) {}
LinkLogger::~LinkLogger() = default;

std::string LinkLogger::Description() const { return link_ ? link_->Description() : std::string(); }

UpgradeResult LinkLogger::Identify() {
    if (!link_) return Result(UpgradeStatus::NoLink, "There is no link to the logger.");
    Session session(*link_, options_);
    return session.Identify(options_.maxAttempts);
}

UpgradeResult LinkLogger::LoadFirmware(const FirmwareImage& image, UpgradeEvents* events) {
    auto progress = [&](UpgradeStep step, std::uint64_t done, std::uint64_t total) {
        if (events) events->Progress(step, done, total);
    };
    auto cancelled = [&] { return events && events->CancelRequested(); };

    if (image.IsNull() || !image.PayloadIntact())
        return Result(UpgradeStatus::ImageRefused, "The firmware file is damaged; nothing was sent to the logger.");
    if (image.Size() == 0 || image.Size() > 0xFFFFFFFFu)
        return Result(UpgradeStatus::ImageRefused, "The firmware file holds no usable image; nothing was sent to the logger.");
    if (!link_) return Result(UpgradeStatus::NoLink, "There is no link to the logger.");

    Session s(*link_, options_);
    progress(UpgradeStep::Identify, 0, 1);
    UpgradeResult who = s.Identify(options_.maxAttempts);
    if (!who.Ok()) return who;
    LoggerIdentity identity = who.identity;
    if (!image.FitsModel(identity.model))
        return Result(UpgradeStatus::ImageRefused,
                      "The firmware file is for " + Join(image.Models()) + "; the logger is a " + identity.model +
                          ". Nothing was sent to the logger.",
                      identity);
    const std::size_t blockSize = std::clamp<std::size_t>(
        s.loggerBlockSize ? std::min(s.loggerBlockSize, options_.blockSize) : options_.blockSize, 16,
        LinkFrame::kMaxPayload - 4);
    if (cancelled()) return Result(UpgradeStatus::Cancelled, "Upgrade cancelled; nothing was changed.", identity);

    LinkFrame::Frame reply;
    UpgradeResult failure;
    auto fail = [&](UpgradeResult r) {
        r.message += kInLoader;
        r.identity = identity;
        return r;
    };
    if (!identity.inLoader) {
        progress(UpgradeStep::EnterLoader, 0, 1);
        if (!s.Command(LinkFrame::EnterLoader, {}, reply, options_.replyTimeout, "asking it to enter its loader", failure))
            return failure;
        if (reply.payload[0] != LinkFrame::Ok)
            return Result(UpgradeStatus::LoggerRefused, "The logger would not enter its loader; nothing was changed.",
                          identity);
        UpgradeResult again = s.AwaitRestart();
        if (!again.Ok()) return fail(again);
        identity = again.identity;
        if (!identity.inLoader)
            return Result(UpgradeStatus::LoggerRefused, "The logger did not enter its loader; nothing was changed.",
                          identity);
    }
    if (cancelled()) return fail(Result(UpgradeStatus::Cancelled, "Upgrade cancelled."));

    progress(UpgradeStep::Erase, 0, 1);
    std::string erase;
    LinkFrame::PutU32(erase, static_cast<std::uint32_t>(image.Size()));
    LinkFrame::PutU32(erase, image.PayloadCrc());
    erase += image.Version();
    if (!s.Command(LinkFrame::Erase, erase, reply, options_.eraseTimeout, "erasing its memory", failure))
        return fail(failure);
    if (reply.payload[0] == LinkFrame::TooLarge)
        return fail(Result(UpgradeStatus::LoggerRefused, "The image is too large for the logger's memory."));
    if (reply.payload[0] != LinkFrame::Ok)
        return fail(Result(UpgradeStatus::LoggerRefused, "The logger refused to erase its memory."));
    progress(UpgradeStep::Erase, 1, 1);

    const std::string& payload = image.Payload();
    const std::uint32_t count = static_cast<std::uint32_t>((payload.size() + blockSize - 1) / blockSize);
    std::uint32_t block = 0;
    int attempts = 0;
    bool answered = false;
    progress(UpgradeStep::Write, 0, payload.size());
    std::string frame;
    while (block < count) {
        if (cancelled()) return fail(Result(UpgradeStatus::Cancelled, "Upgrade cancelled at block " +
                                                                          std::to_string(block + 1) + " of " +
                                                                          std::to_string(count) + "."));
        if (attempts >= std::max(1, options_.maxAttempts)) {
            std::string where = "block " + std::to_string(block + 1) + " of " + std::to_string(count);
            return fail(answered ? Result(UpgradeStatus::TransferFailed,
                                          "Block " + std::to_string(block + 1) + " of " + std::to_string(count) +
                                              " was not accepted after " + std::to_string(attempts) + " attempts.")
                                 : Result(UpgradeStatus::NoAnswer, "The logger stopped answering at " + where + " (" +
                                                                       link_->Description() + ")."));
        }
        frame.clear();
        LinkFrame::PutU32(frame, block);
        frame.append(payload, static_cast<std::size_t>(block) * blockSize, blockSize);
        ++attempts;
        Session::Exchange e = s.Transact(LinkFrame::WriteBlock, frame, reply, options_.replyTimeout);
        if (e == Session::Exchange::Lost)
            return fail(Result(UpgradeStatus::LinkLost, "The link to the logger was lost at block " +
                                                            std::to_string(block + 1) + " of " + std::to_string(count) + "."));
        if (e == Session::Exchange::Timeout) continue;
        answered = true;
        if (e != Session::Exchange::Reply || reply.payload.size() < 5) continue;
        std::uint32_t next = LinkFrame::GetU32(reply.payload, 1);
        if (reply.payload[0] == LinkFrame::Ok && next == block + 1) {
            ++block;
            attempts = 0;
            answered = false;
            progress(UpgradeStep::Write, std::min<std::uint64_t>(std::uint64_t(block) * blockSize, payload.size()),
                     payload.size());
        } else if (next != block && next <= count) {
            block = next;  // the logger expects another block: carry on from there
        }
    }

    if (cancelled()) return fail(Result(UpgradeStatus::Cancelled, "Upgrade cancelled before the image was checked."));
    progress(UpgradeStep::Verify, 0, 1);
    if (!s.Command(LinkFrame::Verify, {}, reply, options_.eraseTimeout, "checking the image", failure))
        return fail(failure);
    if (reply.payload.size() < 9)
        return fail(Result(UpgradeStatus::TransferFailed, "The logger's check of the image could not be read."));
    std::uint32_t size = LinkFrame::GetU32(reply.payload, 1), crc = LinkFrame::GetU32(reply.payload, 5);
    if (reply.payload[0] != LinkFrame::Ok || size != image.Size() || crc != image.PayloadCrc())
        return fail(Result(UpgradeStatus::VerifyFailed,
                           "The image in the logger does not match the file (its CRC-32 differs)."));
    progress(UpgradeStep::Verify, 1, 1);

    progress(UpgradeStep::Start, 0, 1);
    if (!s.Command(LinkFrame::Start, {}, reply, options_.replyTimeout, "starting the new firmware", failure))
        return fail(failure);
    if (reply.payload[0] != LinkFrame::Ok)
        return fail(Result(UpgradeStatus::StartFailed, "The logger would not start the new firmware."));

    progress(UpgradeStep::Confirm, 0, 1);
    UpgradeResult after = s.AwaitRestart();
    if (!after.Ok()) return fail(after);
    identity = after.identity;
    if (identity.inLoader || identity.firmwareVersion != image.Version())
        return fail(Result(UpgradeStatus::StartFailed, "The logger reports firmware " +
                                                           (identity.firmwareVersion.empty() ? std::string("(none)")
                                                                                             : identity.firmwareVersion) +
                                                           " after the upgrade, not " + image.Version() + "."));
    progress(UpgradeStep::Confirm, 1, 1);
    return Result(UpgradeStatus::Ok,
                  "The logger " + identity.model + " " + identity.serialNumber + " now runs firmware " +
                      identity.firmwareVersion + ".",
                  identity);
}

}  // namespace meridex
