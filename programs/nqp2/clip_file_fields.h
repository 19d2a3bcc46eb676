// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value_sink.h"
#include "NQP2ParserU/ClipFiles.h"

#include <string>

namespace nqp2::tool {

/// Shows files as a list of records: kind, number, path, size, promisedSize, state.
void PutFiles(ValueSink& sink, const CArray<ClipFile>& files);
/// Shows a file that belongs to no clip: path and size.
void PutLooseFile(ValueSink& sink, const LooseFile& file);

/// "file", "link" or "special file".
const char* LooseName(const LooseFile& file);

/// Whether the file is there as the metadata promise it.
bool IsSound(const ClipFile& file);

/// What is wrong with a file, in words: "VIDEO/0001AB.MXF is missing".
std::string FaultText(const ClipFile& file);

} // namespace nqp2::tool
