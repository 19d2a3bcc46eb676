// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/RewrapEssence.h"
#include "worker/base/media_streams.h"

#include <cstdint>
#include <string>
#include <vector>

/// Which essence goes into which container, and how it is marked there.
namespace nqp2::worker::rewrap {

using Essence = RewrapEssence;

/// What a stream's units are; throws a Failure, in which the stream's file is called `name`, for
/// what is not put into other containers.
Essence EssenceOf(const MediaStream& stream, const std::string& name);

/// Fails with the containers that are left, unless this one can hold it all.
void RequireLegal(RewrapContainer container, const std::vector<Essence>& all);

/// What a container is called by libavformat: to write it, and to read it.
const char* WriterName(RewrapContainer container);
const char* ReaderName(RewrapContainer container);

/// How a picture is marked in a container, by what it is made of.
/// `bytesASecond`: of the first picture, at its rate.
PictureMarks MarksOf(Essence essence, const MediaStream& picture, RewrapContainer container,
                     bool interlaced, std::int64_t bytesASecond);

} // namespace nqp2::worker::rewrap
