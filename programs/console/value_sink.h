// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstdint>
#include <string_view>

namespace nqp2::tool {

/// What a list is made of, which decides how a form without lists shows it.
enum class ListOf {
    Texts,  ///< each text may be a field of its own
    Values, ///< stays together
    Records ///< the same; as a member of a document each element has a line of its own
};

/// The names of a record of two texts.
struct PairNames {
    std::string_view first;
    std::string_view second;
};

/// Takes what a command has to tell, value by value, in the order in which it is shown: nothing of
/// it needs to be held. Texts are shown as they are when they come. What cannot be written throws
/// Failure.
class ValueSink {
public:
    ValueSink() = default;
    virtual ~ValueSink() = default;
    ValueSink(const ValueSink&) = delete;
    ValueSink& operator=(const ValueSink&) = delete;

    virtual void Put(std::int64_t number) = 0;
    virtual void Put(std::uint64_t number) = 0;
    virtual void Put(double number) = 0;
    virtual void Put(bool truth) = 0;
    virtual void Put(std::string_view text) = 0;
    virtual void Put(const CString& text) = 0;
    virtual void BeginRecord() = 0;
    /// The name of the value that comes next: letters, digits and signs that no form escapes.
    virtual void Name(std::string_view name) = 0;
    virtual void EndRecord() = 0;
    virtual void BeginList(ListOf kind) = 0;
    virtual void EndList() = 0;
    /// A record of two texts, of which the first comes again and again.
    virtual void PutPair(const PairNames& names, const CString& first, const CString& second) {
        PutPairAsRecord(names, first, second);
    }

protected:
    /// Text by text.
    void PutPairAsRecord(const PairNames& names, const CString& first, const CString& second) {
        BeginRecord();
        Name(names.first);
        Put(first);
        Name(names.second);
        Put(second);
        EndRecord();
    }
};

} // namespace nqp2::tool
