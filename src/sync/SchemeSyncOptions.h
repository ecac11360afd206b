#pragma once

namespace meridex {

/// What SyncSchemes::Sync does with one scheme.
enum SchemeSyncOptions {
    syncIgnore = 0,  ///< leave the scheme alone (the value of a new item)
    syncUpdate = 1,  ///< copy the newer side over the older side
    syncRevert = 2,  ///< copy the older side back over the newer side
};

}  // namespace meridex
