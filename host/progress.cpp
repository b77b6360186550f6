#include "progress.hpp"

#include <algorithm>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

#include "text.hpp"

namespace qel::host {
namespace {

constexpr std::chrono::milliseconds Pause{100};
constexpr std::size_t LongestBar = 30;
constexpr std::size_t ShortestBar = 5;

std::size_t TerminalWidth() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col - 1U : 79U;
}

}  // namespace

std::string MakeProgressLine(std::uint64_t frames, std::optional<std::uint64_t> total, std::chrono::nanoseconds elapsed,
                             std::size_t width) {
    double const seconds = std::chrono::duration<double>(elapsed).count();
    double const rate = seconds > 0 ? static_cast<double>(frames) / seconds : 0;
    std::string text = std::to_string(frames);
    // A stream may hold more frames than its headers promise: then there is no end to be told.
    bool const known = total && *total >= frames && *total > 0;
    if (known) text.append(1, '/').append(std::to_string(*total));
    text += " frames  " + FormatNumber(rate, 0) + " frames/s";
    if (known && rate > 0) {
        auto const left = std::chrono::duration<double>(static_cast<double>(*total - frames) / rate);
        text += "  " + FormatTime(std::chrono::duration_cast<std::chrono::nanoseconds>(left), 0) + " left";
    }
    if (known && width >= text.size() + ShortestBar + 4) {
        std::size_t const length = std::min(LongestBar, width - text.size() - 4);
        auto const filled = static_cast<std::size_t>(static_cast<double>(length) * static_cast<double>(frames) /
                                                     static_cast<double>(*total));
        std::string bar(1, '[');
        bar.append(filled, '#').append(length - filled, '.').append("]  ");
        text = bar + text;
    }
    return text.substr(0, width);
}

Progress::Progress(std::optional<std::uint64_t> total, bool wanted)
    : total_(total), shown_(wanted && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() { Clear(); }

void Progress::Clear() {
    if (drawn_) std::fputs("\r\033[K", stderr);
    drawn_ = false;
}

void Progress::Update(std::uint64_t frames) {
    auto const now = Clock::now();
    if (!shown_ || (drawn_ && now - last_ < Pause)) return;
    last_ = now;
    drawn_ = true;
    std::string const line = MakeProgressLine(frames, total_, now - start_, TerminalWidth());
    std::fprintf(stderr, "\r%s\033[K", line.c_str());
    std::fflush(stderr);
}

}  // namespace qel::host
