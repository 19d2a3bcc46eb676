// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/connection.h"

namespace nqp2::catalogue {

std::string TableAndColumns(const Insertion& into) {
    std::string text = into.table + " (";
    for (const Insertion::Column& column : into.columns) {
        text += (&column == &into.columns.front() ? "" : ", ") + column.name;
    }
    return text + ")";
}

Transaction::Transaction(Connection& connection, const char* begin) : m_connection(connection) {
    m_connection.Run(begin);
}

Transaction::~Transaction() {
    if (m_isOpen) {
        try {
            m_connection.Run("ROLLBACK");
        } catch (const DatabaseError&) {
            // The engine has undone it by itself, or does so when the connection is gone.
            m_isOpen = false;
        }
    }
}

void Transaction::Commit() {
    m_connection.Run("COMMIT");
    m_isOpen = false;
}

} // namespace nqp2::catalogue
