#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>

namespace meridex {

/// The steps of a firmware upgrade, in order.
enum class UpgradeStep { Identify, EnterLoader, Erase, Write, Verify, Start, Confirm };

/// Text for a step ("Writing the image (40%)"); done and total count bytes while writing.
MERIDEX_EXPORT std::string UpgradeStepText(UpgradeStep step, std::uint64_t done, std::uint64_t total);

/// How far an upgrade has come, 0 to 100, for a progress bar: writing, nearly all of the time, fills
/// 5 to 95.
MERIDEX_EXPORT int UpgradePercent(UpgradeStep step, std::uint64_t done, std::uint64_t total);

/// What an upgrade reports while it runs, and where it asks whether to stop.
class MERIDEX_EXPORT UpgradeEvents {
public:
    virtual ~UpgradeEvents() = default;
    /// A step began or moved on; done of total (bytes while writing, else 0 of 1 and 1 of 1).
    virtual void Progress(UpgradeStep step, std::uint64_t done, std::uint64_t total) = 0;
    /// Asked between steps and between blocks; true stops the upgrade there.
    virtual bool CancelRequested() { return false; }
};

}  // namespace meridex
