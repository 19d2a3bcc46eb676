// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/file_hashes.h"

#include <map>
#include <mutex>
#include <string_view>
#include <utility>

namespace nqp2::offload {

using mhl::FormatSet;
using mhl::Hashes;
using mhl::HashFormat;

/// Hashes in one format. The fan may be some files ahead of what it has told.
class FileHashes::Taker final : public copy::BlockTaker {
public:
    Taker(HashFormat format, const FormatsOfFile& formatsOf)
        : m_format(format), m_formatsOf(formatsOf), m_hasher(format) {}

    void Begin(const copy::FanItem& file) override {
        m_isWanted = m_formatsOf(file.number).Has(m_format);
    }
    void Take(std::string_view bytes) override {
        if (m_isWanted) {
            m_hasher.Add(bytes);
        }
    }
    void End(const copy::FanItem& file, bool isWhole) override {
        if (!m_isWanted) {
            return;
        }
        const Hashes value = m_hasher.Value();
        if (isWhole) {
            const std::lock_guard lock(m_mutex);
            m_values.insert_or_assign(file.number, value);
        }
    }

    void MoveTo(std::size_t number, Hashes& hashes) {
        const std::lock_guard lock(m_mutex);
        if (const auto found = m_values.find(number); found != m_values.end()) {
            hashes.Add(found->second);
            m_values.erase(found);
        }
    }

private:
    HashFormat m_format;
    const FormatsOfFile& m_formatsOf;
    mhl::Hasher m_hasher;
    bool m_isWanted = false;
    std::mutex m_mutex;
    std::map<std::size_t, Hashes> m_values;
};

FileHashes::FileHashes(FormatSet all, FormatsOfFile formatsOf) : m_formatsOf(std::move(formatsOf)) {
    for (const mhl::HashFormatFacts& each : mhl::kHashFormats) {
        if (each.format != HashFormat::Xxh128 && all.Has(each.format)) {
            m_takers.push_back(std::make_unique<Taker>(each.format, m_formatsOf));
        }
    }
}

FileHashes::~FileHashes() = default;

std::vector<copy::BlockTaker*> FileHashes::Takers() const {
    std::vector<copy::BlockTaker*> takers;
    for (const auto& taker : m_takers) {
        takers.push_back(taker.get());
    }
    return takers;
}

Hashes FileHashes::Take(const copy::FanItem& file, const copy::Digest::Bytes& digest) {
    Hashes hashes;
    if (m_formatsOf(file.number).Has(HashFormat::Xxh128)) {
        hashes.Set(HashFormat::Xxh128,
                   {reinterpret_cast<const char*>(digest.data()), digest.size()});
    }
    for (const auto& taker : m_takers) {
        taker->MoveTo(file.number, hashes);
    }
    return hashes;
}

} // namespace nqp2::offload
