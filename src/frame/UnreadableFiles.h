#pragma once
#include <meridex/Export.h>
#include <string>
#include <vector>

namespace meridex {

/// The files a document's owner found and could not use. Each is kept beside
/// itself (FileOps::KeepUnreadableFile) before a save replaces it, however
/// many other files were loaded in between, so no unreadable file is lost.
class MERIDEX_EXPORT UnreadableFiles {
public:
    /// A file that was there and could not be used.
    void Remember(const std::string& path);
    /// The file has since loaded well: nothing to keep.
    void Forget(const std::string& path);
    /// Keeps target first when it is one of the remembered files. False when
    /// it had to be kept and could not be (the save must not go ahead); a
    /// remembered file that has gone since needs no keeping.
    bool KeepBeforeReplacing(const std::string& target);

private:
    std::vector<std::string> paths_;
};

}  // namespace meridex
