// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/json_input.h"

#include "console/console.h"
#include "nqp2/input_text.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <limits>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace nqp2::tool {
namespace {

using Input = nlohmann::json;

constexpr std::size_t kMostInput = std::size_t{32} * 1024 * 1024;

struct CloseFile {
    void operator()(std::FILE* file) const {
        if (file != stdin) {
            static_cast<void>(std::fclose(file)); // nothing was written to it
        }
    }
};

std::string FileText(const std::string& name) {
    const std::unique_ptr<std::FILE, CloseFile> file(name == "-" ? stdin
                                                                 : std::fopen(name.c_str(), "rb"));
    std::string text;
    std::array<char, 65536> part{};
    std::size_t length = 1;
    while (file != nullptr && length > 0 && text.size() <= kMostInput) {
        length = std::fread(part.data(), 1, part.size(), file.get());
        text.append(part.data(), length);
    }
    if (file == nullptr || std::ferror(file.get()) != 0) {
        throw Failure(name, "cannot be read", std::generic_category().message(errno));
    }
    if (text.size() > kMostInput) {
        throw Failure(name, "is too large", fmt::format("more than {} bytes", kMostInput), kUsage);
    }
    return text;
}

/// The parser's own words without its name and error number.
std::string ReasonOf(const std::exception& error) {
    const std::string_view text = error.what();
    const std::size_t bracket = text.find("] ");
    return std::string(bracket == std::string_view::npos ? text : text.substr(bracket + 2));
}

/// Looks through a text before a tree is made of it. The tree's maker takes any depth, keeps the
/// last of several members with one name, and makes a hundred bytes of two.
class Look final : public nlohmann::json_sax<Input> {
public:
    /// What is wrong with the text; empty when nothing is.
    [[nodiscard]] const std::string& Problem() const { return m_problem; }
    [[nodiscard]] const std::string& Reason() const { return m_reason; }

    bool null() override { return true; }
    bool boolean(bool /*value*/) override { return true; }
    bool number_integer(number_integer_t /*value*/) override { return true; }
    bool number_unsigned(number_unsigned_t /*value*/) override { return true; }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
    bool string(string_t& /*value*/) override { return true; }
    bool binary(binary_t& /*value*/) override { return true; }
    bool start_object(std::size_t /*count*/) override { return Enter(); }
    bool start_array(std::size_t /*count*/) override { return Enter(); }
    bool end_object() override { return Leave(); }
    bool end_array() override { return Leave(); }
    bool key(string_t& name) override {
        return m_names.back().insert(name).second || Refuse("names a member twice", name);
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        return Refuse("is no JSON", ReasonOf(error));
    }

private:
    bool Enter() {
        constexpr std::size_t kDeepest = 16;
        constexpr int kMost = 300'000; // an edit list of that many events is too long for a card
        m_names.emplace_back();
        if (m_names.size() > kDeepest) {
            return Refuse("is nested too deeply", "");
        }
        return ++m_entered <= kMost ||
               Refuse("is too large", "it holds too many lists and objects");
    }
    bool Leave() {
        m_names.pop_back();
        return true;
    }
    bool Refuse(std::string problem, std::string reason) {
        m_problem = std::move(problem);
        m_reason = std::move(reason);
        return false;
    }

    std::vector<std::set<std::string>> m_names; ///< of the objects around the place
    int m_entered = 0;
    std::string m_problem;
    std::string m_reason;
};

Input ParseText(const std::string& file, const std::string& text) {
    Look look;
    if (!Input::sax_parse(text, &look)) {
        throw Failure(file, look.Problem(), look.Reason(), kUsage);
    }
    return Input::parse(text);
}

std::optional<std::int32_t> Int32From(const Input& value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        constexpr auto kMost = static_cast<std::uint64_t>(Limits::max());
        return number <= kMost ? std::optional(static_cast<std::int32_t>(number)) : std::nullopt;
    }
    if (!value.is_number_integer()) {
        return std::nullopt;
    }
    const auto number = value.get<std::int64_t>();
    return number >= Limits::min() ? std::optional(static_cast<std::int32_t>(number))
                                   : std::nullopt;
}

} // namespace

void InputValue::Refuse(std::string_view problem, std::string_view reason) const {
    throw Failure(m_file, m_place.empty() ? problem : fmt::format("{} {}", m_place, problem),
                  reason, kUsage);
}

void InputValue::Read(CString& text) const {
    if (!m_json.is_string()) {
        Refuse("is no text");
    }
    text = TextFromBytes(m_json.get_ref<const std::string&>());
    if (!FitsXml(text)) {
        Refuse("holds what XML cannot hold");
    }
}

void InputValue::Read(std::int32_t& number) const {
    const std::optional<std::int32_t> value = Int32From(m_json);
    if (!value) {
        Refuse("is no 32-bit whole number");
    }
    number = *value;
}

void InputValue::Read(double& number) const {
    if (!m_json.is_number()) {
        Refuse("is no number");
    }
    number = m_json.get<double>();
}

void InputValue::Read(GUID& guid) const {
    const auto value =
        m_json.is_string() ? GuidFromForm(m_json.get_ref<const std::string&>()) : std::nullopt;
    if (!value) {
        Refuse("is no GUID", "expected 8-4-4-4-12 hexadecimal digits");
    }
    guid = *value;
}

bool InputValue::Has(const char* name) const {
    return m_json.contains(name);
}

void InputValue::ForEachMember(
    const std::function<void(const std::string&, const InputValue&)>& take) const {
    if (!m_json.is_object()) {
        Refuse("is no object");
    }
    for (const auto& [name, value] : m_json.items()) {
        take(name, {value, m_file, m_place.empty() ? name : m_place + '.' + name});
    }
}

void InputValue::ForEachElement(
    const std::function<void(std::size_t, const InputValue&)>& take) const {
    if (!m_json.is_array()) {
        Refuse("is no list");
    }
    for (std::size_t i = 0; i < m_json.size(); ++i) {
        take(i, {m_json[i], m_file, fmt::format("{}[{}]", m_place, i)});
    }
}

void InputValue::RequireCount(std::size_t count) const {
    if (!m_json.is_array() || m_json.size() != count) {
        Refuse(fmt::format("is no list of {}", count));
    }
}

InputDocument::InputDocument(const std::string& file)
    : m_file(file == "-" ? "standard input" : file),
      m_json(std::make_unique<Input>(ParseText(m_file, FileText(file)))) {}

InputDocument::~InputDocument() = default;

InputValue InputDocument::Root() const {
    return {*m_json, m_file, ""};
}

} // namespace nqp2::tool
