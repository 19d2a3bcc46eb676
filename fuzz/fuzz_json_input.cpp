// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as a JSON document that a user hands to nqp2: an edit list.

#include "console/console.h"
#include "fuzz/fuzz_target.h"
#include "nqp2/json_input.h"

namespace nqp2::fuzz {
namespace {

using tool::Failure;
using tool::InputValue;

/// Whether it can be read so; a refusal is one line that says where.
template <class Read>
bool IsTaken(const Read& read) {
    try {
        read();
        return true;
    } catch (const Failure& refusal) {
        const std::string line = refusal.what();
        Require(refusal.GetStatus() == tool::kUsage && line.find('\n') == std::string::npos,
                "a refusal is one line on wrong usage");
        return false;
    }
}

/// Every value has one kind, and what has members or elements hands them out.
void Walk(const InputValue& value) {
    CString text;
    std::int32_t number = 0;
    double fraction = 0;
    GUID guid;
    const bool isText = IsTaken([&] { value.Read(text); });
    const bool isNumber = IsTaken([&] { value.Read(number); });
    const bool isFraction = IsTaken([&] { value.Read(fraction); });
    IsTaken([&] { value.Read(guid); });
    const bool isObject = IsTaken([&] {
        value.ForEachMember([](const std::string&, const InputValue& member) { Walk(member); });
    });
    const bool isList = IsTaken([&] {
        value.ForEachElement([](std::size_t, const InputValue& element) { Walk(element); });
    });
    Require(!isNumber || (isFraction && fraction == number), "a whole number is a number");
    Require(int(isText) + int(isFraction) + int(isObject) + int(isList) <= 1, "one kind at most");
}

} // namespace

void TestInput(Input input) {
    const InputAsFile file(input);
    IsTaken([&] {
        const tool::InputDocument document(file.Path());
        Walk(document.Root());
    });
}

} // namespace nqp2::fuzz
