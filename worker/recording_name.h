// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/CString.h"
#include "worker/outcome.h"

#include <string>

namespace nqp2::worker {

/// A clip name on a card that no other recording of this process takes while the object lives.
/// Safe from any thread.
class RecordingName {
public:
    RecordingName() = default;
    RecordingName(const RecordingName&) = delete;
    RecordingName& operator=(const RecordingName&) = delete;
    ~RecordingName() { Release(); }

    /// Takes `wanted`, or with "" the next free name. Fails when the name is taken.
    Outcome Take(const std::string& contents, const CString& wanted);
    void Release();
    [[nodiscard]] const CString& Name() const { return m_name; }

private:
    std::string m_contents;
    CString m_name;
};

} // namespace nqp2::worker
