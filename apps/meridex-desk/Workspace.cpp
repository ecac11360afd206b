#include "Workspace.h"

#include <cstdlib>
#include <system_error>
#include <utility>

#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/frame/Error.h>
#include <meridex/platform/Platform.h>
#include <meridex/settings/Settings.h>

namespace fs = std::filesystem;

namespace meridex::desk {

namespace {

// What a new workspace takes from the demo, itself a workspace; the demo's test files (entity bombs) stay behind.
constexpr const char* kCopied[] = {"settings", "schemes", "firmware", "CommsProfiles.xml", "AddressBook.xml"};

bool IsEmptyFolder(const fs::path& folder) {
    std::error_code ec;
    return fs::is_directory(folder, ec) && fs::directory_iterator(folder, ec) == fs::directory_iterator();
}

}  // namespace

Workspace::Workspace(fs::path folder) : folder_(std::move(folder)) {}

fs::path Workspace::DefaultFolder() {
    const char* data = std::getenv("XDG_DATA_HOME");
    fs::path base;
    if (data && *data && fs::path(data).is_absolute()) {
        base = data;
    } else {
        const char* home = std::getenv("HOME");
        base = fs::path(home && *home ? home : ".") / ".local" / "share";
    }
    return base / "meridex" / "workspace";
}

fs::path Workspace::DemoFolder() {
    if (const char* dir = std::getenv("MERIDEX_DEMO_DIR"); dir && *dir) return dir;
    // Where the install puts it, relative to the program's folder (bin/../share/meridex/demo).
    return (fs::path(Platform::ProgramFolder()) / MERIDEX_DESK_DEMO_FROM_PROGRAM).lexically_normal();
}

bool Workspace::Prepare(const fs::path& demo, std::string* error) const {
    std::error_code ec;
    const bool fresh = !fs::exists(folder_, ec) || IsEmptyFolder(folder_);
    fs::create_directories(folder_, ec);
    if (ec) {
        if (error) *error = "Cannot create the workspace " + folder_.string() + ": " + ec.message();
        return false;
    }
    if (fresh && fs::is_directory(demo, ec)) {
        for (const char* name : kCopied) {
            const fs::path from = demo / name;
            if (!fs::exists(from, ec)) continue;
            fs::copy(from, folder_ / name, fs::copy_options::recursive | fs::copy_options::skip_existing, ec);
            if (ec) {
                if (error) *error = "Cannot copy " + from.string() + " into the workspace: " + ec.message();
                return false;
            }
        }
        // A demo without an address book gets one as a host's user makes one: imported from the schemes it keeps.
        if (fs::is_directory(demo / "import", ec) && !fs::exists(AddressBookFile(), ec)) {
            AddressBook book;
            book.LoadAddressBook(AddressBookFile().string());
            ImportCommsProfiles(nullptr).ImportSchemes((demo / "import").string(), book.Sites());
            try {
                book.SaveAddressBook();
            } catch (const Error& e) {
                if (error) *error = "Cannot write the address book " + AddressBookFile().string() + ": " + e.Description();
                return false;
            }
        }
    }
    for (const fs::path& sub : {SettingsFile().parent_path(), DefaultLocalSchemes(), DefaultRemoteSchemes(), FirmwareFolder()}) {
        fs::create_directories(sub, ec);
        if (ec) {
            if (error) *error = "Cannot create " + sub.string() + ": " + ec.message();
            return false;
        }
    }
    return true;
}

fs::path Workspace::LocalSchemes(const Settings& settings) const {
    // "" as the default: a read must not add the key to the document.
    const std::string named = settings.GetString("V4SCHEMES_PATH", "");
    std::error_code ec;
    if (!named.empty() && fs::is_directory(named, ec)) return named;
    return DefaultLocalSchemes();
}

}  // namespace meridex::desk
