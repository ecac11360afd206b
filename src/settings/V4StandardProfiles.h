#pragma once
#include <meridex/Export.h>
#include <span>
#include <string_view>

#include <meridex/settings/Profile.h>

namespace meridex {

/// The three built-in profiles. The administrator profile is also the feature
/// catalogue: every feature key the host and its scheme editor ask about, in
/// order, with the description the user sees. Each call builds a new,
/// detached profile.
class MERIDEX_EXPORT V4StandardProfiles {
public:
    /// One feature of the catalogue.
    struct CatalogueEntry {
        std::string_view key;          ///< The feature's KEY.
        std::string_view description;  ///< What the user sees.
    };

    /// The catalogue rows in order.
    static std::span<const CatalogueEntry> Catalogue() noexcept;

    /// ADMINISTRATOR: every catalogue feature, all available.
    static Profile GetDefaultAdministratorProfile();
    /// DEFAULT: the catalogue with the scheme editor's advanced tools (its
    /// bars, instrument, system and logger editors, compiler output) unavailable.
    static Profile GetDefaultProfile();
    /// LOCKDOWN: the catalogue with editing, configuration, firmware, test-mode
    /// and scheme-file commands unavailable.
    static Profile GetDefaultLockdownProfile();
};

}  // namespace meridex
