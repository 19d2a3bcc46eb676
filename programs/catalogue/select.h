// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"

#include <string>
#include <utility>

namespace nqp2::catalogue {

/// A statement in the making: its text is of words of ours, whatever comes from outside is a
/// parameter.
class Select {
public:
    explicit Select(std::string from) : m_text(std::move(from)) {}

    std::string Put(Parameter parameter) {
        m_parameters.push_back(std::move(parameter));
        return "$" + std::to_string(m_parameters.size());
    }
    void Where(const std::string& condition) {
        m_text += (m_hasWhere ? " AND " : " WHERE ") + condition;
        m_hasWhere = true;
    }
    /// A text that may have brought its own WHERE.
    void From(const std::string& text) {
        m_text += text;
        m_hasWhere = m_hasWhere || text.find(" WHERE ") != std::string::npos;
    }
    void End(const std::string& text) { m_text += text; }
    [[nodiscard]] const std::string& Text() const { return m_text; }
    [[nodiscard]] const Parameters& Values() const { return m_parameters; }

private:
    std::string m_text;
    Parameters m_parameters;
    bool m_hasWhere = false;
};

} // namespace nqp2::catalogue
