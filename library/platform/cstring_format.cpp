// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/CString.h"

#include "platform/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <locale.h>
#include <string>

namespace {

using nqp2::FormatArgument;
using Kind = FormatArgument::Kind;

/// The longest padding that a pattern can ask for: it must not be able to exhaust memory.
constexpr int kMostPadding = 4096;
constexpr std::wstring_view kFlags = L"-+ #0";
constexpr std::wstring_view kModifiers = L"hlzt";

enum class Family { Integer, Unsigned, Character, Text, Real, Percent, None };

struct Conversion {
    wchar_t letter;
    Family family;
    const char* printed; ///< what replaces it in a pattern of snprintf
};

constexpr Conversion kConversions[] = {
    {L'd', Family::Integer, "lld"},  {L'i', Family::Integer, "lld"},
    {L'u', Family::Unsigned, "llu"}, {L'x', Family::Unsigned, "llx"},
    {L'X', Family::Unsigned, "llX"}, {L'c', Family::Character, ""},
    {L's', Family::Text, ""},        {L'S', Family::Text, ""},
    {L'f', Family::Real, "f"},       {L'F', Family::Real, "F"},
    {L'e', Family::Real, "e"},       {L'E', Family::Real, "E"},
    {L'g', Family::Real, "g"},       {L'G', Family::Real, "G"},
    {L'%', Family::Percent, ""},
};
constexpr Conversion kNoConversion{L'\0', Family::None, ""};

Conversion ConversionOf(wchar_t letter) {
    const auto* const found = std::find_if(std::begin(kConversions), std::end(kConversions),
                                           [&](const Conversion& c) { return c.letter == letter; });
    return found != std::end(kConversions) ? *found : kNoConversion;
}

/// One "%..." of a pattern.
struct Directive {
    std::wstring_view source;
    std::string flags;
    int width = 0;
    int precision = -1; ///< negative: none given
    Conversion conversion = kNoConversion;
};

/// The decimal point of the C locale for this thread, whatever the host has set.
class PlainNumbers {
public:
    PlainNumbers() : m_previous(uselocale(Plain())) {}
    ~PlainNumbers() { uselocale(m_previous); }
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;

private:
    static locale_t Plain() {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }

    locale_t m_previous;
};

template <class Value>
std::wstring Printed(const Directive& directive, const char* conversion, Value value) {
    const std::string pattern = "%" + directive.flags + "*.*" + conversion;
    const auto print = [&](char* target, std::size_t room) {
        return std::snprintf(target, room, pattern.c_str(), directive.width, directive.precision,
                             value);
    };
    std::array<char, 64> buffer{};
    const auto length = static_cast<std::size_t>(std::max(print(buffer.data(), buffer.size()), 0));
    if (length < buffer.size()) {
        return {buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(length)};
    }
    std::string longer(length, '\0');
    print(longer.data(), length + 1);
    return {longer.begin(), longer.end()};
}

std::wstring PrintedReal(const Directive& directive, const char* conversion, double value) {
    const PlainNumbers plain;
    return Printed(directive, conversion, value);
}

std::wstring Padded(const Directive& directive, std::wstring_view text) {
    std::wstring result(text);
    const auto width = static_cast<std::size_t>(directive.width);
    if (result.size() < width) {
        const bool left = directive.flags.find('-') != std::string::npos;
        result.insert(left ? result.size() : 0, width - result.size(), L' ');
    }
    return result;
}

bool IsWholeNumber(const FormatArgument& argument) {
    return argument.GetKind() != Kind::Real && argument.GetKind() != Kind::Text;
}

/// The bits of a whole number in its own width.
std::uint64_t Bits(const FormatArgument& argument) {
    if (argument.GetKind() == Kind::Unsigned) {
        return argument.Unsigned();
    }
    const auto unused = 64 - 8 * static_cast<unsigned>(argument.GetBytes());
    return static_cast<std::uint64_t>(argument.Signed()) << unused >> unused;
}

std::wstring OneCharacter(std::uint64_t code) {
    return std::wstring(1, static_cast<wchar_t>(code <= 0x10FFFF ? code : 0xFFFD));
}

std::wstring Digits(const FormatArgument& argument) {
    std::array<char, 24> buffer;
    char* const end = buffer.data() + buffer.size();
    const auto written = argument.GetKind() == Kind::Unsigned
                             ? std::to_chars(buffer.data(), end, argument.Unsigned())
                             : std::to_chars(buffer.data(), end, argument.Signed());
    return {buffer.data(), written.ptr};
}

/// Most numbers are written plain or filled up with zeros: dates, timecodes and names, of every
/// record.
std::wstring Decimal(const Directive& directive, const FormatArgument& argument) {
    const auto width = static_cast<std::size_t>(directive.width);
    if (directive.precision < 0 && (directive.flags.empty() || directive.flags == "0")) {
        std::wstring digits = Digits(argument);
        if (digits.size() < width) {
            const bool zeros = !directive.flags.empty();
            const std::size_t front = zeros && digits.front() == L'-' ? 1 : 0;
            digits.insert(front, width - digits.size(), zeros ? L'0' : L' ');
        }
        return digits;
    }
    if (argument.GetKind() == Kind::Unsigned) {
        return Printed(directive, "llu", static_cast<unsigned long long>(argument.Unsigned()));
    }
    return Printed(directive, "lld", static_cast<long long>(argument.Signed()));
}

/// How an argument is written that its conversion does not fit.
std::wstring Natural(const FormatArgument& argument) {
    Directive plain;
    switch (argument.GetKind()) {
    case Kind::Signed:
    case Kind::Unsigned:
        return Decimal(plain, argument);
    case Kind::Character:
        return OneCharacter(Bits(argument));
    case Kind::Real:
        plain.precision = 15;
        return PrintedReal(plain, "g", argument.Real());
    case Kind::Text:
        break;
    }
    return std::wstring(argument.Text());
}

std::wstring_view Clipped(const Directive& directive, std::wstring_view text) {
    return directive.precision < 0 ? text
                                   : text.substr(0, static_cast<std::size_t>(directive.precision));
}

std::wstring Written(const Directive& directive, const FormatArgument& argument) {
    const char* const printed = directive.conversion.printed;
    const Family family = directive.conversion.family;
    if (family == Family::Integer && IsWholeNumber(argument)) {
        return Decimal(directive, argument);
    }
    if (family == Family::Unsigned && IsWholeNumber(argument)) {
        return Printed(directive, printed, static_cast<unsigned long long>(Bits(argument)));
    }
    if (family == Family::Character && IsWholeNumber(argument)) {
        return Padded(directive, OneCharacter(Bits(argument)));
    }
    if (family == Family::Real && argument.GetKind() == Kind::Real) {
        return PrintedReal(directive, printed, argument.Real());
    }
    if (family == Family::Text && argument.GetKind() == Kind::Text) {
        return Padded(directive, Clipped(directive, argument.Text()));
    }
    return Padded(directive, Natural(argument));
}

/// Walks over a pattern and hands out its arguments in turn.
class Formatter {
public:
    Formatter(std::wstring_view pattern, std::initializer_list<FormatArgument> arguments)
        : m_rest(pattern), m_next(arguments.begin()), m_end(arguments.end()) {}

    std::wstring Run() {
        std::wstring result;
        while (!m_rest.empty()) {
            const std::size_t plain = std::min(m_rest.find(L'%'), m_rest.size());
            result += m_rest.substr(0, plain);
            m_rest.remove_prefix(plain);
            if (!m_rest.empty()) {
                result += Expanded(ReadDirective());
            }
        }
        return result;
    }

private:
    std::wstring Expanded(const Directive& directive) {
        if (directive.conversion.family == Family::None) {
            return std::wstring(directive.source);
        }
        if (directive.conversion.family == Family::Percent) {
            return L"%";
        }
        const FormatArgument* const argument = NextArgument();
        return argument != nullptr ? Written(directive, *argument) : std::wstring();
    }

    Directive ReadDirective() {
        Directive directive;
        const std::wstring_view start = m_rest;
        m_rest.remove_prefix(1);
        ReadFlags(directive);
        ReadWidth(directive);
        if (Skip(L'.')) {
            directive.precision = ReadCount();
        }
        SkipModifiers();
        if (!m_rest.empty()) {
            directive.conversion = ConversionOf(m_rest.front());
            m_rest.remove_prefix(1);
        }
        directive.source = start.substr(0, start.size() - m_rest.size());
        return directive;
    }

    void ReadFlags(Directive& directive) {
        while (!m_rest.empty() && kFlags.find(m_rest.front()) != kFlags.npos) {
            const auto flag = static_cast<char>(m_rest.front());
            if (directive.flags.find(flag) == std::string::npos) {
                directive.flags += flag;
            }
            m_rest.remove_prefix(1);
        }
    }

    void ReadWidth(Directive& directive) {
        directive.width = ReadCount();
        if (directive.width < 0) { // from an argument: to the left
            directive.width = -directive.width;
            directive.flags += '-';
        }
    }

    /// A number of the pattern, or of the next argument for "*".
    int ReadCount() {
        if (Skip(L'*')) {
            const FormatArgument* const argument = NextArgument();
            return argument != nullptr && IsWholeNumber(*argument) ? CountOf(*argument) : 0;
        }
        int count = 0;
        while (!m_rest.empty() && nqp2::platform::IsDigit(m_rest.front())) {
            count = std::min(count * 10 + static_cast<int>(m_rest.front() - L'0'), kMostPadding);
            m_rest.remove_prefix(1);
        }
        return count;
    }

    static int CountOf(const FormatArgument& argument) {
        constexpr std::int64_t kMost = kMostPadding;
        if (argument.GetKind() == Kind::Unsigned) {
            return static_cast<int>(std::min<std::uint64_t>(argument.Unsigned(), kMostPadding));
        }
        return static_cast<int>(std::clamp(argument.Signed(), -kMost, kMost));
    }

    void SkipModifiers() {
        if (Skip(L'I')) {
            if (m_rest.starts_with(L"64") || m_rest.starts_with(L"32")) {
                m_rest.remove_prefix(2);
            }
            return;
        }
        const std::size_t letters = m_rest.find_first_not_of(kModifiers);
        m_rest.remove_prefix(std::min(letters, m_rest.size()));
    }

    bool Skip(wchar_t ch) {
        const bool found = m_rest.starts_with(ch);
        m_rest.remove_prefix(found ? 1 : 0);
        return found;
    }

    const FormatArgument* NextArgument() { return m_next != m_end ? m_next++ : nullptr; }

    std::wstring_view m_rest;
    const FormatArgument* m_next;
    const FormatArgument* m_end;
};

} // namespace

void CString::FormatList(const wchar_t* pattern, std::initializer_list<FormatArgument> arguments) {
    if (pattern == nullptr) {
        Empty();
        return;
    }
    // Built apart: the pattern or an argument may be this very text.
    const std::wstring result = Formatter(pattern, arguments).Run();
    *this = CString(result);
}
