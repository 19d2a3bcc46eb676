// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/writers.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

namespace nqp2::timeline {

std::string Document::PathOf(const MediaFile& file) const {
    if (m_base.empty() || file.path.empty()) {
        return file.path;
    }
    const std::filesystem::path relative =
        std::filesystem::path(file.path).lexically_relative(m_base);
    return relative.empty() ? file.path : relative.native();
}

std::string Document::EncodedPathOf(const MediaFile& file) const {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                        "0123456789-._~/";
    std::string encoded;
    for (const char ch : PathOf(file)) {
        if (kPlain.find(ch) != std::string_view::npos) {
            encoded += ch;
        } else {
            encoded += fmt::format("%{:02X}", static_cast<unsigned char>(ch));
        }
    }
    return encoded;
}

std::string_view FileName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

std::vector<Timeline> PartsFor(const Form& form, Timeline timeline, Remarks& remarks) {
    std::vector<Timeline> parts;
    if (form.oneRate) {
        parts = SplitByRate(timeline);
    } else {
        parts.push_back(std::move(timeline));
    }
    if (parts.size() > 1) {
        remarks.Add(fmt::format("has clips of {} rates: one file for each", parts.size()));
    }
    if (form.mostEvents == 0) {
        return parts;
    }
    std::vector<Timeline> pieces;
    for (Timeline& part : parts) {
        if (part.events.size() > form.mostEvents) {
            remarks.Add(
                fmt::format("has {} events: {} in a file", part.events.size(), form.mostEvents));
        }
        std::vector<Timeline> split = SplitByCount(std::move(part), form.mostEvents);
        std::move(split.begin(), split.end(), std::back_inserter(pieces));
    }
    return pieces;
}

} // namespace nqp2::timeline
