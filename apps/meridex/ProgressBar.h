#pragma once
#include <cstdio>
#include <string>

namespace meridex::cli {

// Progress for long commands: a redrawn bar on a terminal, plain lines when
// the output is not a terminal (so logs stay readable).
class ProgressBar {
public:
    explicit ProgressBar(std::FILE* out = stderr);
    ~ProgressBar();

    // percent 0..100; label is shown beside the bar (or on the plain line).
    void Update(int percent, const std::string& label);
    // A line of its own above the bar.
    void Message(const std::string& text);
    void Finish();
    bool OnTerminal() const noexcept { return terminal_; }

private:
    std::FILE* out_;
    bool terminal_;
    bool drawn_ = false;
    int lastPercent_ = -1;
};

}  // namespace meridex::cli
