// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/Terminal.h"

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int kUsualWidth = 80;
constexpr int kWidestBelieved = 10000;

int WidthFromEnvironment() {
    const char* columns = std::getenv("COLUMNS");
    const std::string_view text = columns != nullptr ? columns : "";
    int width = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), width);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber && width > 0 && width <= kWidestBelieved ? width : 0;
}

int WidthFromTerminal(std::FILE* stream) {
    winsize size = {};
    return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

} // namespace

namespace nqp2 {

bool IsTerminal(std::FILE* stream) noexcept {
    return isatty(fileno(stream)) == 1;
}

int TerminalWidth(std::FILE* stream) noexcept {
    if (const int width = WidthFromEnvironment(); width > 0) {
        return width;
    }
    const int width = WidthFromTerminal(stream);
    return width > 0 ? width : kUsualWidth;
}

void LetWritesFail() noexcept {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool OpenStandardStreams() noexcept {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The other direction than it is used in: whoever uses it is told.
        const int direction = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        // The lowest free number is taken, which is this one.
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", direction) != descriptor) {
            return false;
        }
    }
    return true;
}

} // namespace nqp2
