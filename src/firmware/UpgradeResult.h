#pragma once
#include <meridex/Export.h>
#include <string>

#include <meridex/firmware/LoggerIdentity.h>

namespace meridex {

/// How a logger operation ended; each kind has its own exit code in the command-line tool.
enum class UpgradeStatus {
    Ok,             ///< done
    Cancelled,      ///< the user cancelled
    ImageRefused,   ///< the file is damaged or for another model; nothing was sent
    NoAnswer,       ///< the logger did not answer in time
    LinkLost,       ///< the link went down
    LoggerRefused,  ///< the logger would not do a step (erase refused, image too large)
    TransferFailed, ///< a block still failed after its retries, or the logger's replies made no sense
    VerifyFailed,   ///< the logger's CRC-32 of the image differs from the file's
    StartFailed,    ///< the new firmware did not start with the expected version
    NoLink,         ///< the link could not be opened
};

/// The result of a logger operation: its kind, a message for a person, and
/// what the logger said it was at the end (empty when it could not be asked).
struct MERIDEX_EXPORT UpgradeResult {
    UpgradeStatus status = UpgradeStatus::Ok;  ///< how it ended
    std::string message;                       ///< what happened, for a person
    LoggerIdentity identity;                   ///< who the logger said it was at the end

    /// True when the operation succeeded.
    bool Ok() const noexcept { return status == UpgradeStatus::Ok; }
};

}  // namespace meridex
