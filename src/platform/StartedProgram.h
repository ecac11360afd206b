#pragma once
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace meridex {

// A program started without waiting for it: detached from this program's
// terminal, no window, input and output on the null device. Whatever
// happens, it is reaped when this object ends, so no zombie is left behind.
class StartedProgram {
public:
    StartedProgram() noexcept = default;
    StartedProgram(StartedProgram&& other) noexcept;
    StartedProgram& operator=(StartedProgram&& other) noexcept;
    StartedProgram(const StartedProgram&) = delete;
    StartedProgram& operator=(const StartedProgram&) = delete;
    ~StartedProgram();

    // Starts path with the arguments; Started() is false when it could not.
    static StartedProgram Start(const std::string& path, const std::vector<std::string>& arguments);

    bool Started() const noexcept { return id_ != 0; }
    // True once the program has ended (it is then reaped).
    bool HasEnded();
    // Gives the program up to grace to end by itself, then ends it (with
    // anything it started); reaps it in every case.
    void End(std::chrono::milliseconds grace = std::chrono::milliseconds(500));

private:
    std::intptr_t id_ = 0;  // the process: its id on Linux, its handle on Windows
};

}  // namespace meridex
