// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline_output.h"

#include "console/console.h"
#include "nqp2/output_folder.h"
#include "NQP2ParserU/WholeFile.h"

#include <fmt/format.h>

#include <filesystem>
#include <string_view>
#include <system_error>

namespace nqp2::tool {
namespace {

namespace fs = std::filesystem;

bool NamesFolder(const std::string& output) {
    std::error_code error;
    return output.ends_with('/') || fs::is_directory(output, error);
}

} // namespace

std::string WithoutLinks(const std::string& path) {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(path, error);
    return error ? path : real.native();
}

TimelineOutput::TimelineOutput(Console& console, const std::string& output, bool areSeveral)
    : m_console(console), m_output(output), m_isFolder(NamesFolder(output)) {
    if (areSeveral && !m_isFolder) {
        throw Failure(IsStandardOutput() ? "standard output" : output,
                      "is one file for several lists",
                      "name one list, or end the folder's name with /", kUsage);
    }
    if (m_isFolder) {
        MakeFolder(output);
    }
}

std::vector<std::string> TimelineOutput::PathsFor(const std::string& name,
                                                  const timeline::Form& form,
                                                  std::size_t documents) {
    if (IsStandardOutput()) {
        if (documents > 1) {
            throw Failure(name, fmt::format("takes {} files", documents),
                          "standard output is one: give a file");
        }
        return {m_output};
    }
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < documents; ++i) {
        paths.push_back(FreePath(name, form));
        RequireNew(paths.back());
    }
    return paths;
}

void TimelineOutput::Write(const std::string& path, const timeline::Form& form,
                           const timeline::Timeline& timeline, bool isRelative,
                           timeline::Remarks& remarks) {
    if (IsStandardOutput()) {
        timeline::Document document([this](std::string_view piece) { m_console.Write(piece); }, "");
        form.write(timeline, document, remarks);
        m_console.Finish();
        return;
    }
    const std::string folder = fs::path(path).parent_path().native();
    if (!folder.empty()) {
        MakeFolder(folder);
    }
    WholeFileWriter file(path);
    timeline::Document document([&](std::string_view piece) { file.Write(piece); },
                                isRelative ? WithoutLinks(folder.empty() ? "." : folder) : "");
    form.write(timeline, document, remarks);
    if (const std::string reason = file.Finish(); !reason.empty()) {
        throw Failure(path, "cannot be written", reason);
    }
}

std::string TimelineOutput::FreePath(const std::string& name, const timeline::Form& form) {
    const fs::path first = m_isFolder ? fs::path(m_output) / fmt::format("{}.{}", name, form.name)
                                      : fs::path(m_output);
    fs::path path = first;
    for (int number = 2; !m_written.insert(path.native()).second; ++number) {
        path = first;
        path.replace_filename(
            fmt::format("{}-{}{}", first.stem().native(), number, first.extension().native()));
    }
    return path.native();
}

} // namespace nqp2::tool
