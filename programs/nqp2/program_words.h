// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/command.h"

#include <string>
#include <vector>

namespace nqp2::tool {

/// A folder or file that the user named, as another program takes it: whole.
std::string PathForProgram(const std::string& argument);

/// What is said to another program of this installation, which does what the command asks for.
class ProgramWords {
public:
    explicit ProgramWords(const std::string& command) : m_words{command} {}

    void Put(const std::string& key, const std::string& value) {
        m_words.push_back(key + '=' + value);
    }
    void PutEach(const std::string& key, const std::vector<std::string>& values);
    void PutGiven(const std::string& key, const std::string& value) {
        if (!value.empty()) {
            Put(key, value);
        }
    }
    void PutFlag(const std::string& key, bool isSet) { PutGiven(key, isSet ? "yes" : ""); }
    void PutProgress(const ProgressOptions& progress) {
        PutGiven("progress", progress.quiet ? "none" : progress.form);
    }

    /// Comes back only by Failure; `advice` ends what is said when there is no such program.
    Status Become(const std::string& name, const std::string& advice = "") const;

private:
    std::vector<std::string> m_words;
};

} // namespace nqp2::tool
