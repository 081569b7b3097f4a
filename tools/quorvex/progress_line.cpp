#include "quorvex/progress_line.h"

#include <string>

namespace quorvex::cli {
namespace {

constexpr std::chrono::milliseconds kBetween{200};
constexpr std::size_t kBarWidth = 30;
constexpr std::size_t kLineWidth = 78; // fits the narrowest terminal with the cursor

} // namespace

ProgressLine::~ProgressLine() {
    if (shown_) console_.Error("\r" + std::string(kLineWidth, ' ') + "\r");
}

bool ProgressLine::Due() {
    const auto now = std::chrono::steady_clock::now();
    if (!console_.ErrorIsTerminal() || (shown_ && now - shownAt_ < kBetween)) return false;
    shownAt_ = now;
    shown_ = true;
    return true;
}

void ProgressLine::Show(const std::string& text) {
    if (!Due()) return;
    std::string line = text.substr(0, kLineWidth);
    line.resize(kLineWidth, ' ');
    console_.Error("\r" + line);
}

void ProgressLine::Show(std::uint64_t rows, std::uint64_t done, std::uint64_t total) {
    if (!console_.ErrorIsTerminal()) return;
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - began_;
    std::string text;
    if (total != 0) {
        const auto filled = done >= total ? kBarWidth : static_cast<std::size_t>(done * kBarWidth / total);
        text = "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] " +
               std::to_string(done >= total ? 100 : done * 100 / total) + " %  ";
    }
    text += std::to_string(rows) + " rows";
    if (seconds.count() > 1) {
        text += ", " + std::to_string(static_cast<std::uint64_t>(static_cast<double>(rows) / seconds.count())) + "/s";
    }
    Show(text);
}

} // namespace quorvex::cli
