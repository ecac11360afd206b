#pragma once
#include <meridex/Export.h>
#include <string>

#include <meridex/firmware/LoggerIdentity.h>
#include <meridex/firmware/UpgradeEvents.h>
#include <meridex/firmware/UpgradeResult.h>

namespace meridex {

class FirmwareImage;

/// A logger that can say who it is and take new firmware. `LinkLogger` speaks
/// the open link protocol; a driver for another kind of logger implements the
/// same two operations.
class MERIDEX_EXPORT Logger {
public:
    virtual ~Logger() = default;
    /// Where the logger is reached, for messages.
    virtual std::string Description() const = 0;
    /// Asks the logger who it is; the result's identity holds the answer.
    virtual UpgradeResult Identify() = 0;
    /// Loads image into the logger: checks the image and the logger's model
    /// before anything is written, reports progress to events (may be null),
    /// and stops between blocks when events asks. An upgrade that stops part
    /// way leaves the logger in its loader, and loading again completes it.
    virtual UpgradeResult LoadFirmware(const FirmwareImage& image, UpgradeEvents* events) = 0;
};

}  // namespace meridex
