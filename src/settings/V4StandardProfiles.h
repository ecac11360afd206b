#pragma once
#include <meridex/Export.h>
#include <span>
#include <string_view>

#include <meridex/settings/Profile.h>

namespace meridex {

// The three built-in profiles. The administrator profile is also the feature
// catalogue: every feature key the host and its scheme editor ask about, in
// order, with the description the user sees. Each call builds a new,
// detached profile.
class MERIDEX_EXPORT V4StandardProfiles {
public:
    struct CatalogueEntry {
        std::string_view key;
        std::string_view description;
    };

    // The catalogue rows in order.
    static std::span<const CatalogueEntry> Catalogue() noexcept;

    static Profile GetDefaultAdministratorProfile();
    static Profile GetDefaultProfile();
    static Profile GetDefaultLockdownProfile();
};

}  // namespace meridex
