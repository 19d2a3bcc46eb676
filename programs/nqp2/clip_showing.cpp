// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_showing.h"

#include "console/output_text.h"
#include "nqp2/card.h"
#include "nqp2/clip_details.h"
#include "nqp2/clip_remarks.h"
#include "nqp2/work_ahead.h"

#include <array>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace nqp2::tool {
namespace {

/// Of larger metadata and files no text is made before the clip's turn: it may take some times as
/// much.
constexpr std::size_t kMostMade = std::size_t{1} << 20U;
/// What may be kept of a clip that was shown.
constexpr std::size_t kMostKept = std::size_t{256} << 10U;

/// What is held of a clip until it is shown.
struct Part {
    enum class Stage { Begun, MetadataRead, TextMade };

    Stage stage = Stage::Begun;
    bool hasFiles = false; ///< else there was no memory for them
    CArray<ClipFile> files;
    std::vector<std::string> remarks;
    ReadMetadata read;
    OutputText text;
};

/// What one thread makes clips with.
struct Maker {
    std::unordered_map<const CardScan*, std::unique_ptr<ClipMetadataReader>> readers;
    ReadMetadata read;
    OutputText text;
    PutClipAt put; ///< into the text
    bool hasBegun = false;
};

class Showing {
public:
    Showing(ClipDetails& details, const ClipOrder& clips, const ClipForm& form)
        : m_details(details), m_clips(clips), m_form(form) {
        for (Maker& maker : m_makers) {
            maker.put = form.into(maker.text);
        }
    }

    void ShowAll() {
        WorkAhead ahead(m_clips.size(), {[this](std::size_t index) { Begin(index); },
                                         [this](std::size_t worker, std::size_t index) noexcept {
                                             return Make(m_makers[worker], index);
                                         }});
        if (m_details.Wanted().metadata) {
            ahead.Start();
        }
        for (std::size_t index = 0; index < m_clips.size(); ++index) {
            ahead.Reach(index);
            ShowNext(index);
        }
    }

private:
    [[nodiscard]] Part& PartOf(std::size_t index) { return m_parts[index % m_parts.size()]; }

    /// What is found of files depends on those that were asked for before.
    void Begin(std::size_t index) noexcept {
        Part& part = PartOf(index);
        part.stage = Part::Stage::Begun;
        part.hasFiles =
            !m_details.Wanted().files || m_details.ReadFiles(*m_clips[index], part.files);
    }

    /// Each folder is read by one thread: the others begin with the largest of those that this one
    /// comes to last.
    void ReadShareOfFolders(Maker& maker, const _tag_P2Clip& clip) {
        if (m_form.hasPaths && !maker.hasBegun && &maker != &m_makers.front()) {
            ReadFolderOf(clip.AudioPath[0]);
        }
        maker.hasBegun = true;
    }

    [[nodiscard]] ShownClip ShownOf(std::size_t index, const ClipMetadata* metadata) {
        ShownClip shown = m_details.Of(*m_clips[index]);
        shown.metadata = metadata;
        Part& part = PartOf(index);
        shown.files = m_details.Wanted().files ? &part.files : nullptr;
        part.remarks = RemarksOn(*m_clips[index], metadata);
        shown.remarks = &part.remarks;
        return shown;
    }

    void Read(Maker& maker, const _tag_P2Clip& clip, ReadMetadata& read) {
        const CardScan& card = m_details.CardOf(clip);
        std::unique_ptr<ClipMetadataReader>& reader = maker.readers[&card];
        if (reader == nullptr) {
            reader = std::make_unique<ClipMetadataReader>(card.card.Root());
        }
        read.status = reader->Read(clip, read.metadata, read.problem);
        read.bytes = reader->SizeOfLast();
    }

    /// A clip that is like most. Where there is something to tell or to ask for, where much is to
    /// be written or memory is short, it is shown in its turn.
    std::size_t Make(Maker& maker, std::size_t index) noexcept {
        Part& part = PartOf(index);
        try {
            ReadShareOfFolders(maker, *m_clips[index]);
            Read(maker, *m_clips[index], maker.read);
            const std::size_t bytes = maker.read.bytes + SizeOf(part.files);
            if (maker.read.status != MetadataStatus::Read || bytes > kMostMade) {
                std::swap(part.read, maker.read);
                part.stage = Part::Stage::MetadataRead;
                return bytes;
            }
            maker.text.Clear();
            maker.put(ShownOf(index, &maker.read.metadata), index);
            std::swap(part.text, maker.text);
            part.stage = Part::Stage::TextMade;
            Forget(maker.read);
            return part.text.Text().size() + SizeOf(part.files);
        } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): comes again in its turn
            return SizeOf(part.files);
        }
    }

    void ShowNext(std::size_t index) {
        Part& part = PartOf(index);
        if (!part.hasFiles) {
            throw std::bad_alloc();
        }
        if (part.stage == Part::Stage::TextMade) {
            m_form.putText(part.text.Text());
            Forget(part.text);
        } else if (m_details.Wanted().metadata) {
            ReadMetadata& read = Metadata(index);
            m_form.put(ShownOf(index, m_details.ToShow(*m_clips[index], read)), index);
            Forget(read);
        } else {
            m_form.put(ShownOf(index, nullptr), index);
        }
        m_details.Remark(*m_clips[index], std::move(part.remarks));
        if (SizeOf(part.files) > kMostKept) {
            part.files = {};
        }
    }

    ReadMetadata& Metadata(std::size_t index) {
        Part& part = PartOf(index);
        if (part.stage == Part::Stage::MetadataRead) {
            return part.read;
        }
        Maker& here = m_makers[0];
        Read(here, *m_clips[index], here.read);
        return here.read;
    }

    static std::size_t SizeOf(const CArray<ClipFile>& files) {
        constexpr std::size_t kPath = 256;
        return static_cast<std::size_t>(files.GetSize()) * (sizeof(ClipFile) + kPath);
    }
    static void Forget(ReadMetadata& read) {
        if (read.bytes > kMostKept) {
            read = {};
        }
    }
    static void Forget(OutputText& text) {
        if (text.Text().size() > kMostKept) {
            text = OutputText();
        }
    }

    ClipDetails& m_details;
    const ClipOrder& m_clips;
    const ClipForm& m_form;
    std::array<Part, WorkAhead::kWindow> m_parts;
    std::array<Maker, WorkAhead::kMostWorkers> m_makers; ///< the first is this thread's
};

} // namespace

void ShowClips(ClipDetails& details, const ClipOrder& clips, const ClipForm& form) {
    Showing(details, clips, form).ShowAll();
}

} // namespace nqp2::tool
