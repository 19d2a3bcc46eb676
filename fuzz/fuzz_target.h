// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace nqp2::fuzz {

using Input = std::span<const std::uint8_t>;

/// What a target does with an input; each target defines it.
void TestInput(Input input);

inline std::string_view AsText(Input input) {
    return {reinterpret_cast<const char*>(input.data()), input.size()};
}

/// Hands out the documents of an input, which has a zero byte between two of them.
template <class Take>
void ForEachDocument(Input input, const Take& take) {
    for (std::string_view rest = AsText(input); !rest.empty();) {
        const std::string_view document = rest.substr(0, rest.find('\0'));
        rest.remove_prefix(std::min(rest.size(), document.size() + 1));
        take(document);
    }
}

/// Ends the program, so that the fuzzer keeps the input, when a promise is broken.
inline void Require(bool kept, const char* promise) {
    if (!kept) {
        std::fprintf(stderr, "broken: %s\n", promise);
        std::abort();
    }
}

/// The input as a file in memory, for code that takes a path.
class InputAsFile {
public:
    explicit InputAsFile(Input input) : m_file(memfd_create("fuzz", MFD_CLOEXEC)) {
        Require(m_file >= 0 && write(m_file, input.data(), input.size()) == std::ssize(input),
                "there is memory");
    }
    ~InputAsFile() { close(m_file); }
    InputAsFile(const InputAsFile&) = delete;
    InputAsFile& operator=(const InputAsFile&) = delete;

    [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(m_file); }

private:
    int m_file;
};

} // namespace nqp2::fuzz
