// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/FixedTypes.h"

/// The error that DOM operations raise; carries a failure status and, when known, a reason.
class NQP2_API _com_error {
public:
    /// `code` is negative; an empty `description` means that no reason is known.
    explicit _com_error(HRESULT code, CString description = CString())
        : m_code(code), m_description(static_cast<CString&&>(description)) {}
    ///@{
    /// Copies share the texts.
    _com_error(const _com_error&) = default;
    _com_error& operator=(const _com_error&) = default;
    ///@}
    virtual ~_com_error();

    /// The status: E_FAIL, E_INVALIDARG and their kind.
    [[nodiscard]] HRESULT Error() const { return m_code; }
    /// The reason for a person; "" when none is known.
    [[nodiscard]] CString Description() const { return m_description; }

private:
    HRESULT m_code;
    CString m_description;
};
