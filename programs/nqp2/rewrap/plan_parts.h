// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/rewrap/essence.h"
#include "nqp2/rewrap/plan.h"

#include <cstdint>
#include <string>

namespace nqp2::rewrap {

/// A stretch of a clip with the sound that it brings along.
struct Stretch {
    const Essence* essence = nullptr;
    CStringArray sounds; ///< by track
    std::uint32_t first = 0;
    std::uint32_t frames = 0;
    bool isWhole = true; ///< nothing of the clip is left out
};

/// Puts a plan together, part by part.
class PlanParts {
public:
    PlanParts(Plan& plan, const PlanOptions& options) : m_plan(plan), m_options(options) {}

    /// The first decides what the file is like. Throws the failure to report, about `subject`, for
    /// one that is of another kind.
    void Add(const Stretch& stretch, const std::string& subject);
    /// What is written beside the pictures and is not of the parts. A timecode in frames, below 0
    /// for none. Throws the failure to report for a timecode that a user gave and that is none.
    void Finish(std::int64_t start, bool dropFrame);

private:
    void Begin(const Stretch& stretch);
    void RequireAlike(const Essence& essence, std::int64_t sounds,
                      const std::string& subject) const;
    void AddChapters(const Essence& essence, std::uint32_t first, std::uint32_t frames);
    void FinishChapters();
    [[nodiscard]] CString TimecodeOf(std::int64_t start, bool dropFrame) const;
    [[nodiscard]] CString Bounded(const std::string& text, const char* what) const;
    void Remark(const std::string& text) const;

    Plan& m_plan;
    const PlanOptions& m_options;
    std::int64_t m_frames = 0; ///< so far
};

} // namespace nqp2::rewrap
