// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/words.h"

#include "console/utf8_text.h"
#include "NQP2ParserU/TextBytes.h"
#include "offload/mhl/hash_format.h"
#include "platform/case_fold.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace nqp2::catalogue {
namespace {

constexpr std::size_t kLongestWord = 100;   ///< characters; the rest is not searched
constexpr std::size_t kMostWords = 200'000; ///< bytes of a clip
constexpr std::size_t kLongestKey = 500;
constexpr std::size_t kLongestText = 64 * 1024; ///< bytes that are kept

enum class Sort { Part, Word, Single };

/// Beyond ASCII everything is a letter but for these.
constexpr struct {
    char32_t first, last;
    Sort sort;
} kRanges[] = {
    {0x80, 0xA9, Sort::Part},         {0xAB, 0xB1, Sort::Part},       {0xB4, 0xB4, Sort::Part},
    {0xB6, 0xB8, Sort::Part},         {0xBB, 0xBB, Sort::Part},       {0xBF, 0xBF, Sort::Part},
    {0xD7, 0xD7, Sort::Part},         {0xF7, 0xF7, Sort::Part},       {0x2000, 0x206F, Sort::Part},
    {0x2190, 0x2BFF, Sort::Part},     {0x3000, 0x3004, Sort::Part},   {0x3008, 0x3020, Sort::Part},
    {0x3030, 0x3030, Sort::Part},     {0x3040, 0x30FA, Sort::Single}, {0x30FB, 0x30FB, Sort::Part},
    {0x30FC, 0x30FF, Sort::Single},   {0x3400, 0x9FFF, Sort::Single}, {0xD800, 0xDFFF, Sort::Part},
    {0xE000, 0xF8FF, Sort::Part},     {0xF900, 0xFAFF, Sort::Single}, {0xFE00, 0xFE6F, Sort::Part},
    {0xFEFF, 0xFF0F, Sort::Part},     {0xFF1A, 0xFF20, Sort::Part},   {0xFFF0, 0xFFFF, Sort::Part},
    {0x20000, 0x3FFFF, Sort::Single},
};

bool IsAsciiWord(char32_t code) {
    return (code >= U'0' && code <= U'9') || (code >= U'a' && code <= U'z') ||
           (code >= U'A' && code <= U'Z');
}

Sort SortOf(char32_t code) {
    if (code < 0x80) {
        return IsAsciiWord(code) ? Sort::Word : Sort::Part;
    }
    const auto* const row = std::find_if(std::begin(kRanges), std::end(kRanges),
                                         [code](const auto& each) { return code <= each.last; });
    return row == std::end(kRanges) || code < row->first ? Sort::Word : row->sort;
}

class Splitter {
public:
    void Take(char32_t code) {
        const Sort sort = SortOf(code);
        if (sort != Sort::Word) {
            End();
        }
        if (sort != Sort::Part && m_word.size() < kLongestWord) {
            m_word += static_cast<wchar_t>(code);
        }
        if (sort == Sort::Single) {
            End();
        }
    }
    void End() {
        if (!m_word.empty()) {
            m_words.push_back(platform::Utf8FromText(m_word));
            m_word.clear();
        }
    }
    std::vector<std::string> Words() { return std::move(m_words); }

private:
    std::wstring m_word;
    std::vector<std::string> m_words;
};

void AddWords(std::string& all, std::string_view text) {
    for (const std::string& word : WordsOf(text)) {
        if (all.size() + word.size() < kMostWords) {
            all.append(all.empty() ? "" : " ").append(word);
        }
    }
}

void AddMarked(std::string& all, std::string_view mark, std::string_view text) {
    const std::string word = MarkedWord(mark, text);
    if (word.size() > mark.size()) {
        all.append(all.empty() ? "" : " ").append(word);
    }
}

constexpr std::string ClipRecord::*kSearched[] = {
    &ClipRecord::name,  &ClipRecord::title,  &ClipRecord::programme, &ClipRecord::scene,
    &ClipRecord::place, &ClipRecord::people, &ClipRecord::memos,
};

} // namespace

std::vector<std::string> WordsOf(std::string_view text) {
    Splitter splitter;
    for (const wchar_t code : platform::FoldCase(platform::TextFromUtf8(text).View())) {
        splitter.Take(static_cast<char32_t>(code));
    }
    splitter.End();
    return splitter.Words();
}

std::string MarkedWord(std::string_view mark, std::string_view text) {
    std::string marked(mark);
    for (const std::string& word : WordsOf(text)) {
        if (marked.size() + word.size() < kLongestWord) {
            marked += word;
        }
    }
    return marked;
}

std::string WordsOfClip(const ClipRecord& clip) {
    std::string all;
    // Before what may be long: these must not be cut.
    AddMarked(all, kCameraMark, clip.camera);
    AddMarked(all, kCameraMark, clip.manufacturer + clip.camera);
    AddMarked(all, kCodecMark, clip.codec);
    AddMarked(all, kRateMark, clip.rate);
    for (const auto member : kSearched) {
        AddWords(all, clip.*member);
    }
    return all;
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

std::string KeyText(std::string_view text) {
    std::string key = KeptText(text);
    if (text.size() > kLongestKey) {
        mhl::Hasher hasher(mhl::HashFormat::Xxh128);
        hasher.Add(text);
        key = "digest:" + hasher.Value().Text(mhl::HashFormat::Xxh128);
    }
    return key;
}

std::string KeptText(const CString& text) {
    return KeptText(std::string_view(BytesFromText(text)));
}

std::string KeptText(std::string_view text) {
    std::string kept;
    while (!text.empty() && kept.size() < kLongestText) {
        const tool::Utf8Character character = tool::FirstUtf8(text);
        if (!character.isWhole) {
            kept += "\uFFFD";
        } else if (text.front() != '\0') {
            kept.append(text.substr(0, character.length));
        }
        text.remove_prefix(character.length);
    }
    return kept;
}

} // namespace nqp2::catalogue
