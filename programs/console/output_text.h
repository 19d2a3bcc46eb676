// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <fmt/format.h>

#include <concepts>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace nqp2::tool {

class Console;

/// Whether a text is the same in table, CSV and JSON: printable ASCII that none of them quotes.
/// Most are: codecs, names, digits and paths.
bool IsPlain(std::string_view text);

/// How many characters of printable ASCII the text begins with.
std::size_t PrintableLength(std::string_view text);

/// Whether a form quotes texts for their commas.
enum class Commas { Quoted, Plain };

/// Text on its way to standard output, written block by block: however much comes, no more than a
/// block is held.
class OutputText {
public:
    /// Without a console all that is put stays in Text().
    explicit OutputText(Console* console = nullptr) : m_console(console) {}

    /// A comma where there is something to separate.
    struct Comma {
        bool isThere = false;
    };
    /// Puts texts, characters and commas. Throws Failure when standard output cannot be written, as
    /// all that puts.
    template <class... Parts>
    void Put(const Parts&... parts) {
        char* place = Room((Size(parts) + ... + 0));
        ((place = Copy(place, parts)), ...);
        m_size = static_cast<std::size_t>(place - m_block.data());
    }
    template <std::integral Number>
    void PutNumber(Number number) {
        const fmt::format_int digits(number);
        Put(std::string_view(digits.data(), digits.size()));
    }
    /// Puts the text if it is plain, commas aside where they are none; tells whether it did.
    bool PutIfPlain(std::wstring_view text, Commas commas);
    /// Writes what is still held.
    void Flush();
    [[nodiscard]] std::string_view Text() const { return {m_block.data(), m_size}; }
    void Clear() { m_size = 0; }

private:
    // Literals and single characters are copied without a call.
    static constexpr std::size_t Size(std::string_view part) { return part.size(); }
    static constexpr std::size_t Size(char /*part*/) { return 1; }
    static constexpr std::size_t Size(Comma /*part*/) { return 1; }
    static char* Copy(char* place, std::string_view part) {
        std::memcpy(place, part.data(), part.size());
        return place + part.size();
    }
    static char* Copy(char* place, char part) {
        *place = part;
        return place + 1;
    }
    static char* Copy(char* place, Comma part) {
        *place = ',';
        return place + (part.isThere ? 1 : 0);
    }
    /// Where that many characters can be put.
    char* Room(std::size_t size) {
        if (m_block.size() - m_size < size) {
            MakeRoom(size);
        }
        return m_block.data() + m_size;
    }
    void MakeRoom(std::size_t size);

    Console* m_console;
    std::string m_block;
    std::size_t m_size = 0; ///< of it is text
};

} // namespace nqp2::tool
