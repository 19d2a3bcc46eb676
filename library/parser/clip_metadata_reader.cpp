// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_metadata.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "platform/guard.h"
#include "platform/unicode.h"

namespace nqp2 {

struct ClipMetadataReader::State {
    clips::MetadataFileReader files;

    MetadataStatus Read(const _tag_P2Clip& clip, ClipMetadata& metadata, CString& problem) {
        if (clip.XmlPath.IsEmpty()) {
            problem = L"the clip has no file that could tell";
            return MetadataStatus::NoFile;
        }
        const dom::ParseError error = files.Read(clip.XmlPath, metadata);
        if (error.fault == dom::Fault::None) {
            return MetadataStatus::Read;
        }
        problem = platform::TextFromUtf8(error.reason);
        return MetadataStatus::Unreadable;
    }
};

ClipMetadataReader::ClipMetadataReader(const CString& /*root*/) noexcept
    : m_state(
          platform::Guarded(std::unique_ptr<State>(), [&] { return std::make_unique<State>(); })) {}

ClipMetadataReader::~ClipMetadataReader() = default;

MetadataStatus ClipMetadataReader::Read(const _tag_P2Clip& clip, ClipMetadata& metadata,
                                        CString& problem) noexcept {
    const MetadataStatus status = platform::Guarded(MetadataStatus::Unreadable, [&] {
        problem.Empty();
        return m_state != nullptr ? m_state->Read(clip, metadata, problem)
                                  : MetadataStatus::Unreadable;
    });
    if (status != MetadataStatus::Read) {
        metadata = {};
        platform::Guarded([&] {
            problem = problem.IsEmpty() ? CString(L"there is not enough memory") : problem;
        });
    }
    return status;
}

} // namespace nqp2
