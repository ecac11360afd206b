#pragma once
#include <cstdlib>
#include <filesystem>
#include <string>

// A temporary folder for a benchmark program's files, never the user's own:
// made on first use, removed with all it holds when the program ends.
inline const std::string& BenchFolder() {
    struct Folder {
        std::string path;
        Folder() {
            std::string pattern = (std::filesystem::temp_directory_path() / "meridex-bench-XXXXXX").string();
            if (!mkdtemp(pattern.data())) std::abort();
            path = pattern;
        }
        ~Folder() {
            std::error_code error;
            std::filesystem::remove_all(path, error);
        }
    };
    static const Folder folder;
    return folder.path;
}
