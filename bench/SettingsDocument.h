#pragma once
// The settings document the settings and dialog benchmarks share: 200 profiles with every catalogue
// feature, except that every fourth was written before the scheme-editor features existed (so
// loading completes it). The current profile is "Crew 150".
#include <filesystem>
#include <fstream>
#include <string>

#include <meridex/settings/V4StandardProfiles.h>

namespace meridex::bench {

inline constexpr int kProfiles = 200;

inline std::string TempPath(const std::string& name) {
    return (std::filesystem::temp_directory_path() / name).string();
}

// Written once per run; the path of the file.
inline const std::string& SettingsPath() {
    static const std::string path = [] {
        std::string text = "<V4SETTINGS><SETUP_RUN>-1</SETUP_RUN><LANG>en</LANG>"
                           "<V4SCHEMES_PATH>C:\\Meridex\\V4\\Schemes</V4SCHEMES_PATH>"
                           "<CURRENT_PROFILE>Crew 150</CURRENT_PROFILE><PROFILES>";
        for (int i = 0; i < kProfiles; ++i) {
            const std::string key = i == 0 ? "ADMINISTRATOR" : i == 1 ? "LOCKDOWN" : "Crew " + std::to_string(i);
            text += "<PROFILE><KEY>" + key + "</KEY>";
            int n = 0;
            for (const auto& entry : V4StandardProfiles::Catalogue()) {
                const bool editorFeature = entry.key.substr(0, 3) == "ED_";
                if (i % 4 == 3 && editorFeature) continue;
                text += "<FEATURE>";
                if ((n++ + i) % 3 != 0) text += "<AVAILABLE>-1</AVAILABLE>";
                text += "<DESCRIPTION>" + std::string(entry.description) + "</DESCRIPTION><KEY>" +
                        std::string(entry.key) + "</KEY></FEATURE>";
            }
            text += "</PROFILE>";
        }
        text += "</PROFILES></V4SETTINGS>\r\n";
        const std::string file = TempPath("meridex-settings-bench.xml");
        std::ofstream(file, std::ios::binary) << text;
        return file;
    }();
    return path;
}

}  // namespace meridex::bench
