// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/copier.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <xxhash.h>

namespace nqp2::copy {

using platform::IoStatus;

/// XXH3 in 128 bits: told apart from chance faults with certainty, and faster than any medium.
class Copier::Digest {
public:
    Digest() : m_state(XXH3_createState()) {
        if (m_state == nullptr || XXH3_128bits_reset(m_state.get()) != XXH_OK) {
            throw std::bad_alloc();
        }
    }
    void Add(std::string_view bytes) {
        XXH3_128bits_update(m_state.get(), bytes.data(), bytes.size());
    }
    [[nodiscard]] bool Equals(const Digest& other) const {
        return XXH128_isEqual(XXH3_128bits_digest(m_state.get()),
                              XXH3_128bits_digest(other.m_state.get())) != 0;
    }

private:
    struct Free {
        void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
    };
    std::unique_ptr<XXH3_state_t, Free> m_state;
};

namespace {

/// Runs of zeros become holes where the file system has such.
bool IsZero(std::string_view bytes) {
    return bytes.empty() || (bytes.front() == '\0' &&
                             std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

Outcome Changed(const std::string& path) {
    return Failure(path + " changed while it was being read.");
}

/// Length, time and contents of a new file, onto the medium.
IoStatus Settle(const Source& source, platform::FileWriter& writer) {
    IoStatus status = writer.Resize(source.size);
    if (status && source.time) {
        status = writer.KeepTime(*source.time);
        if (status.error == platform::IoError::Denied) {
            status = {}; // cards without owners let nobody set times: nothing is lost
        }
    }
    return status ? writer.Flush() : status;
}

} // namespace

Outcome Copier::Step(std::uint64_t bytes) {
    m_halves += bytes;
    return m_watch.GoesOn(std::min(m_halves / 2, m_total), m_total) ? Outcome()
                                                                    : Failure("Cancelled.");
}

Outcome Copier::Begin() {
    return Step(0);
}

/// What turned out to be shorter or to need no copy counts as done as well.
Outcome Copier::Finish() {
    Outcome outcome = Step(2 * m_total - std::min(m_halves, 2 * m_total));
    return !outcome || m_watch.MayFinish(m_total) ? outcome : Failure("Cancelled.");
}

Outcome Copier::ReadAll(platform::FileReader& reader, const std::string& path, std::uint64_t size,
                        const Take& take) {
    for (std::uint64_t position = 0;;) {
        std::size_t count = 0;
        if (const IoStatus status = reader.Read(m_block.data(), m_block.size(), count); !status) {
            return Failure("read", path, status);
        }
        if (count == 0) {
            return position == size ? Outcome() : Changed(path);
        }
        if (position + count > size) {
            return Changed(path);
        }
        const std::string_view bytes(m_block.data(), count);
        if (const IoStatus status = take(position, bytes); !status) {
            return Failure("write", path, status);
        }
        position += count;
        if (Outcome outcome = Step(count); !outcome) {
            return outcome;
        }
    }
}

Outcome Copier::ReadSource(const Source& source, const std::string& target, const Take& take) {
    IoStatus taken;
    const auto taking = [&](std::uint64_t position, std::string_view bytes) {
        taken = take(position, bytes);
        return taken;
    };
    Outcome outcome;
    if (source.content) {
        outcome = taking(0, *source.content) ? Step(source.size) : Outcome();
    } else {
        std::unique_ptr<platform::FileReader> reader;
        if (const IoStatus status = platform::Files().Open(source.path, reader); !status) {
            return Failure("read", source.path, status);
        }
        outcome = ReadAll(*reader, source.path, source.size, taking);
    }
    return taken ? outcome : Failure("write", target, taken);
}

Outcome Copier::ReadBack(platform::FileWriter& writer, const std::string& target,
                         std::uint64_t size, const Digest& expected) {
    Digest digest;
    for (std::uint64_t position = 0; position < size;) {
        std::size_t count = 0;
        if (const IoStatus status = writer.ReadAt(position, m_block.data(), m_block.size(), count);
            !status) {
            return Failure("read back", target, status);
        }
        if (count == 0) {
            break; // the digests differ
        }
        digest.Add(std::string_view(m_block.data(), count));
        position += count;
        if (Outcome outcome = Step(count); !outcome) {
            return outcome;
        }
    }
    return digest.Equals(expected)
               ? Outcome()
               : Failure("What the medium gives back of " + target + " is not what was written.");
}

Outcome Copier::Copy(const Source& source, const std::string& target,
                     platform::FileWriter& writer) {
    Digest digest;
    Outcome outcome =
        ReadSource(source, target, [&](std::uint64_t position, std::string_view bytes) {
            digest.Add(bytes);
            return IsZero(bytes) ? IoStatus() : writer.WriteAt(position, bytes);
        });
    if (!outcome) {
        return outcome;
    }
    if (const IoStatus status = Settle(source, writer); !status) {
        return Failure("write", target, status);
    }
    if (outcome = ReadBack(writer, target, source.size, digest); !outcome) {
        return outcome;
    }
    const IoStatus status = writer.Close();
    return status ? Outcome() : Failure("write", target, status);
}

Outcome Copier::Compare(const Source& source, const std::string& there,
                        platform::FileReader& reader, bool& same) {
    const auto addTo = [](Digest& digest) {
        return [&digest](std::uint64_t, std::string_view bytes) {
            digest.Add(bytes);
            return IoStatus();
        };
    };
    Digest wanted;
    Digest found;
    Outcome outcome = ReadSource(source, there, addTo(wanted));
    if (outcome) {
        outcome = ReadAll(reader, there, source.size, addTo(found));
    }
    same = outcome && wanted.Equals(found);
    return outcome;
}

} // namespace nqp2::copy
