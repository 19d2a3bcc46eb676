// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/verified_copy.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <xxhash.h>

namespace nqp2::worker {

/// XXH3 in 128 bits: told apart from chance faults with certainty, and faster than any medium.
class VerifiedCopier::Digest {
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
    return bytes.front() == '\0' &&
           std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
}

platform::IoStatus Put(platform::FileWriter* writer, std::uint64_t position,
                       std::string_view bytes) {
    return writer == nullptr || IsZero(bytes) ? platform::IoStatus()
                                              : writer->WriteAt(position, bytes);
}

Outcome Changed(const std::string& path) {
    return Failure(path + " changed while it was being read.");
}

} // namespace

Outcome VerifiedCopier::Step(std::uint64_t bytes) {
    m_halves += bytes;
    return m_watch.GoesOn(std::min(m_halves / 2, m_total), m_total) ? Outcome()
                                                                    : Failure("Cancelled.");
}

Outcome VerifiedCopier::ReadAll(const std::string& path, std::uint64_t size,
                                platform::FileWriter* target, Digest& digest) {
    std::unique_ptr<platform::FileReader> reader;
    if (const platform::IoStatus status = platform::Files().Open(path, reader); !status) {
        return Failure("read", path, status);
    }
    for (std::uint64_t position = 0;;) {
        std::size_t count = 0;
        const platform::IoStatus status = reader->Read(m_block.data(), m_block.size(), count);
        if (!status) {
            return Failure("read", path, status);
        }
        if (count == 0) {
            return position == size ? Outcome() : Changed(path);
        }
        const std::string_view bytes(m_block.data(), count);
        digest.Add(bytes);
        if (const auto written = Put(target, position, bytes); !written) {
            return Failure("copy", path, written);
        }
        position += count;
        if (Outcome outcome = position > size ? Changed(path) : Step(count); !outcome) {
            return outcome;
        }
    }
}

Outcome VerifiedCopier::Verify(platform::FileWriter& writer, const std::string& path,
                               std::uint64_t size, const Digest& expected) {
    platform::IoStatus status = writer.Resize(size);
    if (status) {
        status = writer.Flush();
    }
    Digest digest;
    for (std::uint64_t position = 0; status && position < size;) {
        std::size_t count = 0;
        status = writer.ReadAt(position, m_block.data(), m_block.size(), count);
        if (status && count == 0) {
            break; // the digests differ
        }
        digest.Add(std::string_view(m_block.data(), count));
        position += count;
        if (Outcome outcome = Step(count); !outcome) {
            return outcome;
        }
    }
    if (!status) {
        return Failure("write", path, status);
    }
    return digest.Equals(expected)
               ? Outcome()
               : Failure("What the medium gives back of " + path + " is not what was written.");
}

Outcome VerifiedCopier::Copy(const std::string& source, std::uint64_t size,
                             platform::FileWriter& writer) {
    Digest digest;
    Outcome outcome = ReadAll(source, size, &writer, digest);
    return outcome ? Verify(writer, source, size, digest) : outcome;
}

Outcome VerifiedCopier::Write(std::string_view content, const std::string& path,
                              platform::FileWriter& writer) {
    Digest digest;
    digest.Add(content);
    if (const platform::IoStatus status = writer.WriteAt(0, content); !status) {
        return Failure("write", path, status);
    }
    Outcome outcome = Step(content.size());
    return outcome ? Verify(writer, path, content.size(), digest) : outcome;
}

Outcome VerifiedCopier::Compare(const std::string& left, const std::string& right,
                                std::uint64_t size, bool& same) {
    Digest leftDigest;
    Digest rightDigest;
    Outcome outcome = ReadAll(left, size, nullptr, leftDigest);
    if (outcome) {
        outcome = ReadAll(right, size, nullptr, rightDigest);
    }
    same = outcome && leftDigest.Equals(rightDigest);
    return outcome;
}

Outcome VerifiedCopier::Compare(const std::string& path, std::string_view content, bool& same) {
    std::string found;
    const platform::IoStatus status = platform::Files().Read(path, content.size(), found);
    same = status && found == content;
    if (!status && status.error != platform::IoError::TooLarge) {
        return Failure("read", path, status);
    }
    return Step(content.size() * 2);
}

} // namespace nqp2::worker
