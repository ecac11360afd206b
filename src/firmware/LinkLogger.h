#pragma once
#include <meridex/Export.h>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include <meridex/firmware/ByteLink.h>
#include <meridex/firmware/Logger.h>

namespace meridex {

/// A logger reached over a byte link with the open link protocol
/// (docs/firmware-link-protocol.md).
class MERIDEX_EXPORT LinkLogger : public Logger {
public:
    /// Time limits and limits of the exchange.
    struct Options {
        std::chrono::milliseconds replyTimeout{2000};    ///< wait for a reply (plus the line time of the bytes)
        std::chrono::milliseconds eraseTimeout{30000};   ///< wait for the erase to finish
        std::chrono::milliseconds restartTimeout{5000};  ///< wait for the logger to come back after a restart
        int maxAttempts = 5;                             ///< sends of one command or block before giving up
        std::uint32_t lineBaud = 0;                      ///< the line's speed in bit/s; 0 when it adds no time
        std::size_t blockSize = 1024;                    ///< largest block written (the logger may ask for less)
    };

    /// Talks over link, which it owns.
    explicit LinkLogger(std::unique_ptr<ByteLink> link, Options options);
    /// Talks over link, which it owns, with the default options.
    explicit LinkLogger(std::unique_ptr<ByteLink> link);
    ~LinkLogger() override;

    std::string Description() const override;
    UpgradeResult Identify() override;
    UpgradeResult LoadFirmware(const FirmwareImage& image, UpgradeEvents* events) override;

    /// The options in force.
    const Options& LinkOptions() const noexcept { return options_; }

private:
    struct Session;
    std::unique_ptr<ByteLink> link_;
    Options options_;
};

}  // namespace meridex
