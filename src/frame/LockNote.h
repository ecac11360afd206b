#pragma once
#include <meridex/Export.h>
#include <memory>
#include <string>

#include <meridex/frame/UserInterface.h>

namespace meridex {

/// The note an editor leaves beside the document it holds open,
/// ".~lock.NAME#" as office suites do: "USER,HOST,PROCESS,SECONDS;" (the time
/// it was opened, in seconds since 1970). A second editor opening the file is
/// told who has it open. Notes never block reading, and the note of a
/// process that is gone (on this computer) or older than a day is stale and
/// removed.
class MERIDEX_EXPORT LockNote {
public:
    LockNote() = default;
    LockNote(const LockNote&) = delete;
    LockNote& operator=(const LockNote&) = delete;
    /// Removes the note this object left.
    ~LockNote();

    /// Before an editor opens path. When someone else's live note is there,
    /// asks through ui (null: the installed one) "NAME is open by USER on HOST
    /// since TIME. Open anyway?" (Yes, No) and answers false for No. Then leaves
    /// this editor's note where the folder lets it (where not, none, silently).
    /// True: open the file.
    bool Acquire(const std::string& path, std::shared_ptr<UserInterface> ui = nullptr);
    /// Removes the note this object left, if it is still there.
    void Release();
    /// True while this object's note is beside the file.
    bool Held() const noexcept { return !note_.empty(); }
    /// Where the note of path lives (".~lock.NAME#" beside it).
    static std::string NotePath(const std::string& path);

private:
    std::string note_;
    std::string text_;
};

}  // namespace meridex
