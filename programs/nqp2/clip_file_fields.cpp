// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_file_fields.h"

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

constexpr Field<ClipFile> kFileFields[] = {
    {"kind", PutRole},
    {"number", Plain<&ClipFile::number>},
    {"path", Path<&ClipFile::path>},
    {"size", Plain<&ClipFile::size>},
    {"promisedSize", Plain<&ClipFile::promisedSize>},
    {"state", PutState},
};

constexpr Field<LooseFile> kLooseFields[] = {
    {"path", Path<&LooseFile::path>},
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
    PutFields(sink, kLooseFields, file);
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
