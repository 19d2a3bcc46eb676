// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// A value of a JSON document that a user handed in. Reading throws Failure (wrong usage) that
/// names the file and the value's place in it.
class InputValue {
public:
    InputValue(const nlohmann::json& json, std::string file, std::string place)
        : m_json(json), m_file(std::move(file)), m_place(std::move(place)) {}

    /// Text that XML can hold.
    void Read(CString& text) const;
    /// A whole number without fraction or exponent, in range.
    void Read(std::int32_t& number) const;
    void Read(double& number) const;
    /// 8-4-4-4-12 or 32 hexadecimal digits.
    void Read(GUID& guid) const;
    /// A list of exactly that many elements.
    template <class Element, std::size_t Count>
    void Read(Element (&elements)[Count]) const {
        RequireCount(Count);
        ForEachElement(
            [&](std::size_t index, const InputValue& value) { value.Read(elements[index]); });
    }

    /// Whether it is an object with a member of that name.
    [[nodiscard]] bool Has(const char* name) const;
    /// Hands out the members of an object in no particular order.
    void ForEachMember(
        const std::function<void(const std::string& name, const InputValue& value)>& take) const;
    /// Hands out the elements of a list in their order.
    void ForEachElement(
        const std::function<void(std::size_t index, const InputValue& value)>& take) const;
    void RequireCount(std::size_t count) const;

    [[noreturn]] void Refuse(std::string_view problem, std::string_view reason = "") const;

private:
    const nlohmann::json& m_json;
    std::string m_file;
    std::string m_place;
};

/// A JSON file, read whole.
class InputDocument {
public:
    /// `file` "-" is standard input. Throws Failure: for a file that cannot be read, or one
    /// that is no JSON, too large or nested too deeply (wrong usage).
    explicit InputDocument(const std::string& file);
    ~InputDocument();
    InputDocument(const InputDocument&) = delete;
    InputDocument& operator=(const InputDocument&) = delete;

    [[nodiscard]] InputValue Root() const;

private:
    std::string m_file;
    std::unique_ptr<nlohmann::json> m_json;
};

} // namespace nqp2::tool
