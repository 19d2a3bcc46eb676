// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/piece_check.h"

#include "copy/copier.h"
#include "copy/failure.h"

#include <chrono>
#include <iterator>
#include <new>
#include <system_error>
#include <utility>

namespace nqp2::copy {
namespace {

/// Larger than anything that the system keeps or forgets as one; less is flushed too often.
constexpr std::uint64_t kPiece = std::uint64_t{8} << 20U;

} // namespace

PieceCheck::PieceCheck(platform::FileWriter& writer, std::string path)
    : m_writer(writer), m_path(std::move(path)) {
    BeginPiece();
}

PieceCheck::~PieceCheck() {
    m_isOver = true;
}

std::uint64_t PieceCheck::Size() const {
    return m_pieces.back().offset + m_pieces.back().written->Size();
}

void PieceCheck::BeginPiece() {
    m_pieces.push_back({m_pieces.empty() ? 0 : Size(), std::make_unique<Digest>()});
}

void PieceCheck::Add(std::string_view bytes) {
    m_pieces.back().written->Add(bytes);
    if (m_pieces.back().written->Size() < kPiece) {
        return;
    }
    try {
        BeginPiece();
        Continue();
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): the piece grows on, or waits
    }
}

void PieceCheck::Check(const Pieces& pieces, std::string& block) const {
    for (const Piece& piece : pieces) {
        if (m_isOver) {
            return;
        }
        CheckReadBack(m_writer, m_path, m_start + piece.offset, *piece.written, block,
                      [](std::size_t) {});
    }
}

/// The first piece shares a block with what lies before the stretch, and the last whole one with
/// the bytes that come next: of these the system may hold a newer copy than the medium. They wait.
void PieceCheck::Continue() {
    constexpr std::ptrdiff_t kFirst = 1;
    constexpr std::ptrdiff_t kLast = 2; // the last whole one, and the one that grows
    constexpr std::chrono::seconds kNow(0);
    if (m_reading.valid() && m_reading.wait_for(kNow) != std::future_status::ready) {
        return;
    }
    Collect();
    if (m_trouble || m_pieces.size() <= kFirst + kLast) {
        return;
    }
    const auto begin = m_pieces.begin() + kFirst;
    const auto end = m_pieces.end() - kLast;
    m_handed.assign(std::move_iterator(begin), std::move_iterator(end));
    m_pieces.erase(begin, end);
    try {
        std::string block(kDefaultBlock, '\0');
        m_reading = std::async(std::launch::async, [this, block = std::move(block)]() mutable {
            Require(m_writer.Flush(), "write", m_path);
            Check(m_handed, block);
        });
    } catch (const std::system_error&) { // no thread for it
        Collect();
    }
}

void PieceCheck::Collect() {
    bool isRead = m_reading.valid();
    try {
        if (isRead) {
            m_reading.get();
        }
    } catch (const std::bad_alloc&) {
        isRead = false;
    } catch (const std::exception&) {
        m_trouble = std::current_exception();
    }
    if (!isRead && !m_handed.empty()) {
        m_pieces.insert(m_pieces.begin() + 1, std::move_iterator(m_handed.begin()),
                        std::move_iterator(m_handed.end()));
    }
    m_handed.clear();
}

void PieceCheck::Finish() {
    Collect();
    if (m_trouble) {
        std::rethrow_exception(m_trouble);
    }
    std::string block(kDefaultBlock, '\0');
    Check(m_pieces, block);
}

} // namespace nqp2::copy
