// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/source_clip.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/case_fold.h"
#include "platform/unicode.h"
#include "worker/base/card_folder.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

using platform::PathIn;

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
    const std::string name = platform::NameBytesFromText(clip.View()) + wanted.Suffix();
    return PathIn(PathIn(contents, wanted.Folder()), name);
}

void CheckEssence(const std::string& contents, SourceClip& clip) {
    for (const clips::ClipEssence& wanted : clip.facts.essence) {
        const auto file =
            std::find_if(clip.files.begin(), clip.files.end(), [&](const SourceFile& each) {
                return each.folder == wanted.Folder() &&
                       platform::FoldNameCase(each.suffix) == wanted.Suffix();
            });
        const bool isThere = file != clip.files.end();
        const std::string fault = Fault(wanted, isThere ? &*file : nullptr);
        if (!fault.empty()) {
            clip.lacks.push_back(isThere ? file->path : PathOf(contents, clip.name, wanted));
            clip.lacks.back().append(" ").append(fault).append(".");
        }
    }
}

void AddFile(const std::string& contents, const ClipFile& file, SourceClip& clip) {
    SourceFile added{file, PathIn(PathIn(contents, file.placed), file.name), {}};
    copy::Require(platform::Files().Stat(added.path, added.info), "read", added.path);
    if (added.info.kind != platform::EntryKind::File) {
        throw copy::Failure(added.path + " is no file.");
    }
    clip.files.push_back(std::move(added));
}

void ReadMetadata(bool incomplete, SourceClip& clip) {
    const std::string& path = clip.files.back().path;
    copy::Require(platform::Files().Read(path, MaxXmlFileSize(), clip.xml), "read", path);
    if (std::optional<ClipFacts> facts = ReadFacts(clip.xml)) {
        clip.facts = *std::move(facts);
    } else if (incomplete) {
        clip.lacks.emplace_back(NotMetadata(path).what());
    } else {
        throw NotMetadata(path);
    }
}

SourceClip ReadSourceClip(const std::string& contents, const CString& name,
                          const std::vector<ClipFile>& files, bool incomplete) {
    if (files.empty() || files.back().part != ClipPart::Metadata) {
        throw MissingClip(contents, name);
    }
    SourceClip clip;
    clip.name = name;
    for (const ClipFile& file : files) {
        AddFile(contents, file, clip);
    }
    ReadMetadata(incomplete, clip);
    CheckEssence(contents, clip);
    if (!clip.lacks.empty() && !incomplete) {
        throw copy::Failure(clip.lacks.front());
    }
    return clip;
}

} // namespace

std::vector<SourceClip> ReadSourceClips(const platform::Place& contents,
                                        std::span<const CString> names, bool incomplete) {
    std::for_each(names.begin(), names.end(), CheckClipName);
    const std::vector<std::vector<ClipFile>> files = FindClipFiles(ListByPath(contents), names);
    std::vector<SourceClip> clips;
    for (std::size_t i = 0; i < names.size(); ++i) {
        clips.push_back(ReadSourceClip(contents.OnDisk(), names[i], files[i], incomplete));
    }
    return clips;
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
    return {{file.path, file.info.size, {}, file.info},
            PathIn(media::kContents.Bytes(), file.placed),
            name};
}

} // namespace nqp2::worker
