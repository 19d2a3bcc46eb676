// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/prover.h"

#include "copy/target_end.h"

#include <utility>

namespace nqp2::copy {

template <class Action>
void Prover::ForEach(std::vector<Arriving>& files, const Action& action) {
    for (Arriving& file : files) {
        if (file.folder == nullptr) {
            continue;
        }
        try {
            action(file);
        } catch (const TargetEnd&) {
            throw;
        } catch (const Cancelled&) {
            throw;
        } catch (const Failure& failure) {
            file.writer.reset();
            file.folder.reset();
            m_tellers.hasFailed(file.reading->item, failure.what());
        }
    }
}

void Prover::Add(Arriving file) {
    const std::uint64_t size = file.reading->item.info.size;
    if (file.writer == nullptr) {
        m_tellers.hasArrived(file);
        return;
    }
    if (size > m_settings.smallFile) {
        ProveAlone(file);
        return;
    }
    m_batch.push_back(std::move(file));
    m_bytes += size;
    if (m_batch.size() >= m_settings.batchFiles || m_bytes >= m_settings.batchBytes) {
        Settle();
    }
}

void Prover::Compare(Arriving& file) {
    CheckReadBack(*file.writer, file.path, 0, file.reading->item.info.size, file.reading->digest,
                  m_block, [this](std::size_t) {
                      if (m_isOver) {
                          throw Cancelled();
                      }
                  });
}

void Prover::ProveAlone(Arriving& file) {
    RequireOn(file.writer->Flush(), "write", file.path);
    Compare(file);
    m_way.FlushNames(); // of folders above it
    RequireOn(file.writer->Commit(), "name the file", file.path);
    m_tellers.hasArrived(file);
}

void Prover::FlushTogether(std::vector<Arriving>& files) {
    if (m_way.Root().FlushAll()) {
        m_way.ForgetTouched();
        ForEach(files, [](Arriving& file) { file.writer->LetGo(); });
        return;
    }
    // The fault may be one of another program's files.
    ForEach(files, [](Arriving& file) { RequireOn(file.writer->Flush(), "write", file.path); });
}

void Prover::Settle() {
    std::vector<Arriving> batch = std::exchange(m_batch, {});
    m_bytes = 0;
    if (batch.empty()) {
        return;
    }
    FlushTogether(batch);
    ForEach(batch, [this](Arriving& file) {
        Compare(file);
        RequireOn(file.writer->CommitUnflushed(), "name the file", file.path);
        file.writer.reset();
        m_way.Touch(file.folder);
    });
    m_way.FlushNames();
    ForEach(batch, [this](Arriving& file) { m_tellers.hasArrived(file); });
}

} // namespace nqp2::copy
