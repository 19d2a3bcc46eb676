// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/second_reading.h"

#include "copy/failure.h"
#include "NQP2ParserU/Interrupt.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace nqp2::offload {
namespace {

/// So small that targets which have room again do not wait long for the first reading.
constexpr std::size_t kPiece = std::size_t{1} << 20U;

} // namespace

SecondReading::SecondReading(const FolderIndex& index, platform::Folder& card,
                             OddEntries& otherwise, tool::RunProgress& progress,
                             std::uint64_t distance)
    : m_index(index), m_otherwise(otherwise), m_progress(progress), m_way(card),
      m_distance(distance), m_block(kPiece, '\0') {}

void SecondReading::Add(mhl::NodeId node, const copy::Digest::Bytes& digest) {
    m_waiting.push_back({node, digest});
    m_firstRead += m_index.InfoOf(node).size;
}

bool SecondReading::ReadSome() {
    const bool isFarBehind =
        !m_waiting.empty() &&
        m_firstRead - m_readAgain >= m_distance + m_index.InfoOf(m_waiting.front().node).size;
    if (isFarBehind) {
        ReadPiece();
    }
    return isFarBehind;
}

void SecondReading::ReadRest() {
    while (!IsDone() && !WasInterrupted()) {
        ReadPiece();
        m_progress.Show(State());
    }
}

tool::RunState SecondReading::State() const {
    return {m_bytes, m_files, m_path, {}};
}

void SecondReading::ReadPiece() {
    const Waiting& file = m_waiting.front();
    const copy::FanItem item{m_index.tree.PathOf(file.node), m_index.InfoOf(file.node), file.node};
    m_path = item.path;
    try {
        if (!m_source) {
            m_source.emplace(m_way, item);
            m_digest.emplace();
        }
        if (!ReadOn(item.info.size)) {
            return;
        }
        if (m_digest->Value() == file.digest) {
            ++m_agreed;
        } else {
            Disagree("was read with other bytes the second time");
        }
    } catch (const copy::Failure& failure) {
        Disagree(failure.what());
    }
    m_source.reset();
    m_waiting.pop_front();
    m_readAgain += item.info.size;
    ++m_files;
}

bool SecondReading::ReadOn(std::uint64_t size) {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, size - m_digest->Size()));
    const std::size_t count = m_source->Read(m_block.data(), wanted);
    m_digest->Add(std::string_view(m_block.data(), count));
    m_bytes += count;
    if (count == wanted && m_digest->Size() < size) {
        return false;
    }
    m_source->CheckUnchanged();
    return true;
}

void SecondReading::Disagree(const std::string& sentence) {
    m_otherwise.Add(m_path, sentence);
    m_progress.Fail(m_path, "", sentence);
}

} // namespace nqp2::offload
