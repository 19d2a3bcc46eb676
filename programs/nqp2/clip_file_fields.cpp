// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_file_fields.h"

#include "console/utf8_text.h"
#include "nqp2/field.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>

namespace nqp2::tool {
namespace {

template <class Enum>
struct EnumName {
    Enum value;
    const char* name;
};
constexpr EnumName<ClipFileRole> kRoles[] = {
    {ClipFileRole::Video, "video"},       {ClipFileRole::Audio, "audio"},
    {ClipFileRole::Metadata, "metadata"}, {ClipFileRole::Icon, "icon"},
    {ClipFileRole::Proxy, "proxy"},       {ClipFileRole::Voice, "voice"},
    {ClipFileRole::Other, "other"},
};
constexpr EnumName<ClipFileState> kStates[] = {
    {ClipFileState::Present, "present"},
    {ClipFileState::Missing, "missing"},
    {ClipFileState::Empty, "empty"},
    {ClipFileState::Short, "short"},
};

constexpr EnumName<LooseKind> kLooseKinds[] = {
    {LooseKind::Link, "link"},
    {LooseKind::Special, "special"},
};

template <class Enum, std::size_t Count>
const char* NameOf(const EnumName<Enum> (&names)[Count], Enum value) {
    const auto* const found =
        std::find_if(std::begin(names), std::end(names),
                     [value](const EnumName<Enum>& row) { return row.value == value; });
    return found == std::end(names) ? "" : found->name;
}

void PutRole(ValueSink& sink, const ClipFile& file) {
    sink.Put(std::string_view(NameOf(kRoles, file.role)));
}
void PutState(ValueSink& sink, const ClipFile& file) {
    sink.Put(std::string_view(NameOf(kStates, file.state)));
}

/// The bytes are missing where the path says all.
template <class File>
void PutPathAndBytes(ValueSink& sink, const File& file) {
    const std::string path = OutputPath(file.path);
    sink.Put(std::string_view(path));
    if (const std::string bytes = BytesUnlessUtf8(path); !bytes.empty()) {
        sink.Name("pathBytes");
        sink.Put(std::string_view(bytes));
    }
}

constexpr Field<ClipFile> kFileFields[] = {
    {"kind", PutRole},
    {"number", Plain<&ClipFile::number>},
    {"path", PutPathAndBytes<ClipFile>},
    {"size", Plain<&ClipFile::size>},
    {"promisedSize", Plain<&ClipFile::promisedSize>},
    {"state", PutState},
};

constexpr Field<LooseFile> kLooseFields[] = {
    {"path", PutPathAndBytes<LooseFile>},
    {"size", Plain<&LooseFile::size>},
};

} // namespace

void PutFiles(ValueSink& sink, const CArray<ClipFile>& files) {
    sink.BeginList(ListOf::Records);
    for (const ClipFile& file : files) {
        PutFields(sink, kFileFields, file);
    }
    sink.EndList();
}

void PutLooseFile(ValueSink& sink, const LooseFile& file) {
    sink.BeginRecord();
    PutMembers(sink, kLooseFields, file);
    if (file.kind != LooseKind::File) {
        sink.Name("kind");
        sink.Put(std::string_view(NameOf(kLooseKinds, file.kind)));
    }
    sink.EndRecord();
}

const char* LooseName(const LooseFile& file) {
    switch (file.kind) {
    case LooseKind::Link:
        return "link";
    case LooseKind::Special:
        return "special file";
    default:
        return "file";
    }
}

bool IsSound(const ClipFile& file) {
    return file.state == ClipFileState::Present;
}

std::string FaultText(const ClipFile& file) {
    const std::string path = RealPath(file.path);
    return file.state == ClipFileState::Short
               ? fmt::format("{} has {} bytes of {}", path, file.size, file.promisedSize)
               : fmt::format("{} is {}", path, NameOf(kStates, file.state));
}

} // namespace nqp2::tool
