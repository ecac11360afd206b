// The per-user INI store: any file reads; a key taken from the input is saved
// and read back unchanged, and the rest of the file stays readable.
#include <sys/stat.h>

#include <algorithm>

#include <meridex/platform/linux/IniUserStore.h>

#include "FuzzSupport.h"

using namespace meridex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::AsText(data, size);
    // The first line is a key to store; the whole input is the file.
    const std::string key(text.substr(0, std::min<std::size_t>(text.find('\n'), 64)));
    static const bool made = ::mkdir((fuzz::Folder() + "/config").c_str(), 0755) == 0;
    (void)made;
    fuzz::InputFile(data, size, "config/meridexv4.ini");
    IniUserStore store(fuzz::Folder() + "/config");
    const auto before = store.GetAllSettings("MeridexV4", "CommsPref");
    (void)store.GetSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "64");
    if (!key.empty() && store.SaveSetting("MeridexV4", "CommsPref", key, "7")) {
        MERIDEX_FUZZ_CHECK(store.GetSetting("MeridexV4", "CommsPref", key, "") == "7");
        MERIDEX_FUZZ_CHECK(store.GetAllSettings("MeridexV4", "CommsPref").size() >= before.size());
    }
    return 0;
}
