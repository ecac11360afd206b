#pragma once
// What the fuzz targets share: the input as a file for the loaders that take a
// path, and a check that stops the run when an invariant breaks.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace meridex::fuzz {

// A private folder for this process, made once, removed at exit.
inline const std::string& Folder() {
    static const std::string folder = [] {
        std::string path = "/tmp/meridex-fuzz-XXXXXX";
        if (!::mkdtemp(path.data())) std::abort();
        static const std::string removal = "rm -rf '" + path + "'";
        std::atexit([] { (void)!std::system(removal.c_str()); });
        return path;
    }();
    return folder;
}

// Writes the input to name in the folder and answers its path.
inline std::string InputFile(const std::uint8_t* data, std::size_t size, const std::string& name = "input.xml") {
    const std::string path = Folder() + "/" + name;
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) std::abort();
    for (std::size_t done = 0; done < size;) {
        const ssize_t n = ::write(fd, data + done, size - done);
        if (n <= 0) std::abort();
        done += static_cast<std::size_t>(n);
    }
    ::close(fd);
    return path;
}

inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// An invariant that failed: reported and crashed on, so the fuzzer keeps the input.
#define MERIDEX_FUZZ_CHECK(condition)                                                   \
    do {                                                                                \
        if (!(condition)) {                                                             \
            std::fprintf(stderr, "invariant failed: %s (%s:%d)\n", #condition, __FILE__, __LINE__); \
            std::abort();                                                               \
        }                                                                               \
    } while (0)

}  // namespace meridex::fuzz
