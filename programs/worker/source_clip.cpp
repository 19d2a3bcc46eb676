// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/source_clip.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/case_fold.h"
#include "platform/unicode.h"
#include "worker/card_folder.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

using platform::EntryKind;
using platform::IoStatus;

/// What is wrong with an essence file; "" for nothing.
std::string Fault(const clips::ClipEssence& wanted, const SourceFile* file) {
    if (file == nullptr) {
        return "is missing";
    }
    if (file->info.size == 0) {
        return "is empty";
    }
    return file->info.size >= wanted.size
               ? ""
               : "has " + std::to_string(file->info.size) + " bytes of the " +
                     std::to_string(wanted.size) + " that the clip's metadata tell";
}

std::string PathOf(const std::string& contents, const CString& clip,
                   const clips::ClipEssence& wanted) {
    return contents + "/" + wanted.folder + "/" + platform::NameBytesFromText(clip.View()) +
           wanted.suffix;
}

void CheckEssence(const std::string& contents, SourceClip& clip) {
    for (const clips::ClipEssence& wanted : clip.facts.essence) {
        const auto file =
            std::find_if(clip.files.begin(), clip.files.end(), [&](const SourceFile& each) {
                return each.folder == wanted.folder &&
                       platform::FoldNameCase(each.suffix) == wanted.suffix;
            });
        const bool isThere = file != clip.files.end();
        const std::string fault = Fault(wanted, isThere ? &*file : nullptr);
        if (!fault.empty()) {
            clip.lacks.push_back(isThere ? file->path : PathOf(contents, clip.name, wanted));
            clip.lacks.back().append(" ").append(fault).append(".");
        }
    }
}

Outcome AddFile(const std::string& contents, const ClipFile& file, SourceClip& clip) {
    SourceFile added{file, contents + "/" + file.placed + "/" + file.name, {}};
    if (const IoStatus status = platform::Files().Stat(added.path, added.info); !status) {
        return Failure("read", added.path, status);
    }
    if (added.info.kind != EntryKind::File) {
        return Failure(added.path + " is no file.");
    }
    clip.files.push_back(std::move(added));
    return {};
}

Outcome ReadMetadata(bool incomplete, SourceClip& clip) {
    const SourceFile& file = clip.files.back();
    if (const auto status = platform::Files().Read(file.path, MaxXmlFileSize(), clip.xml);
        !status) {
        return Failure("read", file.path, status);
    }
    Outcome outcome = ReadFacts(clip.xml, file.path, clip.facts);
    if (!outcome && incomplete) {
        clip.lacks.push_back(std::move(outcome.error));
        return {};
    }
    return outcome;
}

Outcome ReadSourceClip(const std::string& contents, const std::vector<ClipFile>& files,
                       bool incomplete, SourceClip& clip) {
    if (files.empty() || files.back().part != ClipPart::Metadata) {
        return MissingClip(contents, clip.name);
    }
    Outcome outcome;
    for (std::size_t i = 0; outcome && i < files.size(); ++i) {
        outcome = AddFile(contents, files[i], clip);
    }
    if (outcome) {
        outcome = ReadMetadata(incomplete, clip);
    }
    if (!outcome) {
        return outcome;
    }
    CheckEssence(contents, clip);
    return clip.lacks.empty() || incomplete ? Outcome() : Failure(clip.lacks.front());
}

} // namespace

Outcome ReadSourceClips(const std::string& contents, std::span<const CString> names,
                        bool incomplete, std::vector<SourceClip>& clips) {
    for (const CString& name : names) {
        if (Outcome outcome = CheckClipName(name); !outcome) {
            return outcome;
        }
    }
    std::vector<std::vector<ClipFile>> files;
    Outcome outcome = FindClipFiles(ListByPath(contents), names, files);
    for (std::size_t i = 0; outcome && i < names.size(); ++i) {
        clips.emplace_back().name = names[i];
        outcome = ReadSourceClip(contents, files[i], incomplete, clips.back());
    }
    return outcome;
}

std::string Lacks(const std::vector<SourceClip>& clips) {
    constexpr std::size_t kShown = 4;
    std::size_t count = 0;
    std::string told;
    for (const SourceClip& clip : clips) {
        for (const std::string& sentence : clip.lacks) {
            if (++count <= kShown) {
                told += (told.empty() ? "" : " ") + sentence;
            }
        }
    }
    return count > kShown ? told + " And " + std::to_string(count - kShown) + " more." : told;
}

copy::Item ItemFor(const SourceFile& file, const std::string& otherClip) {
    const std::string name = otherClip.empty() ? file.name : otherClip + file.suffix;
    return {{file.path, file.info.size, {}, file.info}, "CONTENTS/" + file.placed, name};
}

} // namespace nqp2::worker
