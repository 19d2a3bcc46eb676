// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/CString.h"

#include "platform/case_fold.h"
#include "platform/number_text.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstddef>
#include <new>
#include <stdexcept>
#include <utility>

namespace {

using nqp2::platform::kWhiteSpace;

/// Stands directly before the characters that a CString points to.
struct Block {
    std::atomic<std::size_t> owners;
    int length;
    int capacity; ///< elements without the terminating zero
};

/// Every empty text: no allocation, never counted, never written to.
struct EmptyBlock {
    Block head;
    wchar_t terminator;
};
static_assert(offsetof(EmptyBlock, terminator) == sizeof(Block));

constinit EmptyBlock emptyBlock{{1, 0, 0}, L'\0'};

Block* BlockOf(wchar_t* text) noexcept {
    return reinterpret_cast<Block*>(text) - 1;
}

const Block* BlockOf(const wchar_t* text) noexcept {
    return reinterpret_cast<const Block*>(text) - 1;
}

wchar_t* TextOf(Block* block) noexcept {
    return reinterpret_cast<wchar_t*>(block + 1);
}

wchar_t* EmptyText() noexcept {
    return TextOf(&emptyBlock.head);
}

int CheckedLength(std::size_t length) {
    if (length > static_cast<std::size_t>(INT_MAX)) {
        throw std::length_error("CString: text too long");
    }
    return static_cast<int>(length);
}

void SetLength(wchar_t* text, std::size_t length) noexcept {
    BlockOf(text)->length = static_cast<int>(length);
    text[length] = L'\0';
}

/// A block of its own with room for `capacity` elements, holding no text yet.
wchar_t* NewText(std::size_t capacity) {
    const int checked = CheckedLength(capacity);
    void* const memory = ::operator new(sizeof(Block) + (capacity + 1) * sizeof(wchar_t));
    wchar_t* const text = TextOf(new (memory) Block{{1}, 0, checked});
    text[0] = L'\0';
    return text;
}

wchar_t* Share(wchar_t* text) noexcept {
    if (text != EmptyText()) {
        BlockOf(text)->owners.fetch_add(1, std::memory_order_relaxed);
    }
    return text;
}

void Release(wchar_t* text) noexcept {
    if (text == EmptyText()) {
        return;
    }
    Block* const block = BlockOf(text);
    if (block->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        block->~Block();
        ::operator delete(block);
    }
}

/// Whether the block belongs to one string alone and has room for `length` elements.
bool IsWritable(wchar_t* text, std::size_t length) noexcept {
    const Block* const block = BlockOf(text);
    return text != EmptyText() && block->owners.load(std::memory_order_acquire) == 1 &&
           static_cast<std::size_t>(block->capacity) >= length;
}

/// Half as much again as there is, so that building a text piece by piece stays linear.
std::size_t GrownCapacity(std::size_t present, std::size_t needed) {
    CheckedLength(needed);
    return std::max(needed, std::min(present + present / 2, static_cast<std::size_t>(INT_MAX)));
}

std::wstring_view ViewOf(const wchar_t* text) noexcept {
    return text != nullptr ? std::wstring_view(text) : std::wstring_view();
}

int IndexOrNone(std::size_t position) noexcept {
    return position == std::wstring_view::npos ? -1 : static_cast<int>(position);
}

wchar_t* CopyTo(wchar_t* target, std::wstring_view text) noexcept {
    return std::copy(text.begin(), text.end(), target);
}

CString Joined(std::wstring_view left, std::wstring_view right) {
    CString result;
    const int length = CheckedLength(left.size() + right.size());
    CopyTo(CopyTo(result.GetBuffer(length), left), right);
    result.ReleaseBuffer(length);
    return result;
}

std::size_t CountOf(std::wstring_view text, std::wstring_view part) noexcept {
    std::size_t count = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

} // namespace

constinit wchar_t* const CString::kEmpty = &emptyBlock.terminator;

CString::CString(const CString& other) noexcept : m_text(Share(other.m_text)) {}

CString::CString(const wchar_t* text) : CString(ViewOf(text)) {}

CString::CString(const wchar_t* text, int length)
    : CString(text != nullptr && length > 0
                  ? std::wstring_view(text, static_cast<std::size_t>(length))
                  : std::wstring_view()) {}

CString::CString(std::wstring_view text) : CString() {
    if (!text.empty()) {
        m_text = NewText(text.size());
        CopyTo(m_text, text);
        SetLength(m_text, text.size());
    }
}

CString::CString(wchar_t ch, int repeat) : CString() {
    const int length = std::max(repeat, 0);
    std::fill_n(GetBuffer(length), length, ch);
    ReleaseBuffer(length);
}

CString& CString::operator=(const CString& other) noexcept {
    Release(std::exchange(m_text, Share(other.m_text)));
    return *this;
}

CString& CString::operator=(CString&& other) noexcept {
    Release(std::exchange(m_text, std::exchange(other.m_text, EmptyText())));
    return *this;
}

CString& CString::operator=(const wchar_t* text) {
    return *this = CString(text); // a copy first: the text may be part of this one
}

void CString::LetGo() noexcept {
    Release(m_text);
}

std::wstring_view CString::View() const noexcept {
    return {m_text, static_cast<std::size_t>(GetLength())};
}

int CString::GetLength() const noexcept {
    return BlockOf(static_cast<const wchar_t*>(m_text))->length;
}

wchar_t CString::GetAt(int index) const noexcept {
    return index >= 0 && index < GetLength() ? m_text[index] : L'\0';
}

void CString::SetAt(int index, wchar_t ch) {
    if (index >= 0 && index < GetLength()) {
        GetBuffer(GetLength())[index] = ch;
    }
}

wchar_t* CString::GetBuffer(int length) {
    const std::wstring_view present = View();
    const std::size_t capacity =
        std::max(present.size(), static_cast<std::size_t>(std::max(length, 0)));
    if (capacity > 0 && !IsWritable(m_text, capacity)) {
        wchar_t* const own = NewText(capacity);
        CopyTo(own, present);
        SetLength(own, present.size());
        Release(std::exchange(m_text, own));
    }
    return m_text;
}

void CString::ReleaseBuffer(int length) {
    if (IsWritable(m_text, 0)) {
        const int kept = std::clamp(length, 0, BlockOf(m_text)->capacity);
        SetLength(m_text, static_cast<std::size_t>(kept));
    }
}

CString& CString::operator+=(const CString& text) {
    return Append(text.View());
}

CString& CString::operator+=(const wchar_t* text) {
    return Append(ViewOf(text));
}

CString& CString::operator+=(wchar_t ch) {
    return Append({&ch, 1});
}

CString& CString::Append(std::wstring_view text) {
    if (text.empty()) {
        return *this;
    }
    const std::wstring_view present = View();
    const std::size_t length = present.size() + text.size();
    if (IsWritable(m_text, length)) {
        CopyTo(m_text + present.size(), text);
    } else {
        // The old block goes last: the appended text may be part of it.
        wchar_t* const grown = NewText(GrownCapacity(present.size(), length));
        CopyTo(CopyTo(grown, present), text);
        Release(std::exchange(m_text, grown));
    }
    SetLength(m_text, length);
    return *this;
}

CString CString::Left(int count) const {
    return Mid(0, count);
}

CString CString::Right(int count) const {
    const int taken = std::clamp(count, 0, GetLength());
    return Mid(GetLength() - taken, taken);
}

CString CString::Mid(int first) const {
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
    const int start = std::clamp(first, 0, GetLength());
    const int taken = std::clamp(count, 0, GetLength() - start);
    return taken == GetLength() ? *this : CString(m_text + start, taken);
}

int CString::Find(const wchar_t* part, int start) const noexcept {
    return IndexOrNone(View().find(ViewOf(part), static_cast<std::size_t>(std::max(start, 0))));
}

int CString::Find(wchar_t ch, int start) const noexcept {
    return IndexOrNone(View().find(ch, static_cast<std::size_t>(std::max(start, 0))));
}

int CString::ReverseFind(wchar_t ch) const noexcept {
    return IndexOrNone(View().rfind(ch));
}

int CString::Compare(const wchar_t* other) const noexcept {
    return View().compare(ViewOf(other));
}

int CString::CompareNoCase(const wchar_t* other) const noexcept {
    const std::wstring_view left = View();
    const std::wstring_view right = ViewOf(other);
    const std::size_t shared = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < shared; ++i) {
        const wchar_t leftCh = nqp2::platform::ToUpper(left[i]);
        const wchar_t rightCh = nqp2::platform::ToUpper(right[i]);
        if (leftCh != rightCh) {
            return leftCh < rightCh ? -1 : 1;
        }
    }
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

CString& CString::MakeUpper() {
    const int length = GetLength();
    wchar_t* const text = GetBuffer(length);
    std::transform(text, text + length, text, nqp2::platform::ToUpper);
    return *this;
}

CString& CString::MakeLower() {
    const int length = GetLength();
    wchar_t* const text = GetBuffer(length);
    std::transform(text, text + length, text, nqp2::platform::ToLower);
    return *this;
}

CString& CString::Trim() {
    return TrimRight().TrimLeft();
}

CString& CString::TrimLeft() {
    const std::size_t kept = View().find_first_not_of(kWhiteSpace);
    return *this = kept == std::wstring_view::npos ? CString() : Mid(static_cast<int>(kept));
}

CString& CString::TrimRight() {
    return *this = Left(IndexOrNone(View().find_last_not_of(kWhiteSpace)) + 1);
}

CString& CString::TrimRight(const wchar_t* set) {
    return *this = Left(IndexOrNone(View().find_last_not_of(ViewOf(set))) + 1);
}

int CString::Replace(const wchar_t* from, const wchar_t* to) {
    const std::wstring_view oldPart = ViewOf(from);
    const std::wstring_view newPart = ViewOf(to);
    std::wstring_view rest = View();
    const std::size_t count = oldPart.empty() ? 0 : CountOf(rest, oldPart);
    if (count == 0) {
        return 0;
    }
    const int length = CheckedLength(rest.size() - count * oldPart.size() + count * newPart.size());
    CString result;
    wchar_t* target = result.GetBuffer(length);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = rest.find(oldPart);
        target = CopyTo(CopyTo(target, rest.substr(0, at)), newPart);
        rest.remove_prefix(at + oldPart.size());
    }
    CopyTo(target, rest);
    result.ReleaseBuffer(length);
    *this = std::move(result);
    return static_cast<int>(count);
}

int CString::Remove(wchar_t ch) {
    const int length = GetLength();
    if (Find(ch) < 0) {
        return 0;
    }
    wchar_t* const text = GetBuffer(length);
    const auto kept = static_cast<int>(std::remove(text, text + length, ch) - text);
    ReleaseBuffer(kept);
    return length - kept;
}

CString operator+(const CString& left, const CString& right) {
    return Joined(left.View(), right.View());
}

CString operator+(const CString& left, const wchar_t* right) {
    return Joined(left.View(), ViewOf(right));
}

CString operator+(const wchar_t* left, const CString& right) {
    return Joined(ViewOf(left), right.View());
}

CString operator+(const CString& left, wchar_t right) {
    return Joined(left.View(), {&right, 1});
}
