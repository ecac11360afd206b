#include "ProgressBar.h"

#include <unistd.h>

#include <algorithm>

namespace meridex::cli {

ProgressBar::ProgressBar(std::FILE* out) : out_(out), terminal_(isatty(fileno(out)) != 0) {}

ProgressBar::~ProgressBar() { Finish(); }

void ProgressBar::Update(int percent, const std::string& label) {
    percent = std::clamp(percent, 0, 100);
    if (!terminal_) {
        if (percent == lastPercent_) return;
        std::fprintf(out_, "%3d%% %s\n", percent, label.c_str());
        lastPercent_ = percent;
        return;
    }
    constexpr int kWidth = 30;
    const int filled = percent * kWidth / 100;
    std::string shown = label.size() > 40 ? "..." + label.substr(label.size() - 37) : label;
    std::fprintf(out_, "\r[%s%s] %3d%% %-40s", std::string(filled, '#').c_str(),
                 std::string(kWidth - filled, '.').c_str(), percent, shown.c_str());
    std::fflush(out_);
    drawn_ = true;
    lastPercent_ = percent;
}

void ProgressBar::Message(const std::string& text) {
    if (terminal_ && drawn_) std::fprintf(out_, "\r\033[K");
    std::fprintf(out_, "%s\n", text.c_str());
    drawn_ = false;
}

void ProgressBar::Finish() {
    if (terminal_ && drawn_) std::fprintf(out_, "\n");
    drawn_ = false;
}

}  // namespace meridex::cli
