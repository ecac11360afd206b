#pragma once
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <thread>

namespace meridex {

// Makes bytes take the time a serial line at a given speed needs for them
// (ten bits a byte: start, eight data bits, stop). The line is one shared
// wire: bytes in either direction queue behind those before them.
class LinePacer {
public:
    using Clock = std::chrono::steady_clock;

    explicit LinePacer(std::uint32_t baud = 0) : baud_(baud) {}

    bool Enabled() const noexcept { return baud_ > 0; }
    // Waits until n more bytes would have crossed the line.
    void Pass(std::size_t n) {
        if (baud_ == 0) return;
        Clock::time_point now = Clock::now();
        if (free_ < now) free_ = now;
        free_ += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(n * 10.0 / baud_));
        std::this_thread::sleep_until(free_);
    }

private:
    std::uint32_t baud_;
    Clock::time_point free_{};
};

}  // namespace meridex
