#include <meridex/firmware/UpgradeEvents.h>

namespace meridex {

std::string UpgradeStepText(UpgradeStep step, std::uint64_t done, std::uint64_t total) {
    switch (step) {
    case UpgradeStep::Identify: return "Identifying the logger";
    case UpgradeStep::EnterLoader: return "Starting the logger's loader";
    case UpgradeStep::Erase: return "Erasing the logger's memory";
    case UpgradeStep::Write:
        return total ? "Writing the image (" + std::to_string(done * 100 / total) + "%)" : "Writing the image";
    case UpgradeStep::Verify: return "Checking the image";
    case UpgradeStep::Start: return "Starting the new firmware";
    case UpgradeStep::Confirm: return "Confirming the new version";
    }
    return {};
}

int UpgradePercent(UpgradeStep step, std::uint64_t done, std::uint64_t total) {
    if (step == UpgradeStep::Write) return 5 + static_cast<int>(total ? (done > total ? total : done) * 90 / total : 0);
    if (step < UpgradeStep::Write) return static_cast<int>(step) * 2;
    return 95 + static_cast<int>(step) - static_cast<int>(UpgradeStep::Verify);
}

}  // namespace meridex
