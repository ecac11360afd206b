#pragma once
#include <string>
#include <vector>

namespace meridex::test {

// A fresh folder under the system temporary folder, removed with everything
// in it when the object ends.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& Path() const noexcept { return path_; }
    // Path of name inside the folder.
    std::string File(const std::string& name) const { return path_ + "/" + name; }
    // Writes a file (parents created) and returns its path.
    std::string Write(const std::string& name, const std::string& contents) const;
    static std::string Read(const std::string& path);
    // The names in a folder, sorted.
    static std::vector<std::string> Entries(const std::string& folder);

private:
    std::string path_;
};

}  // namespace meridex::test
