// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/bitmap_file.h"
#include "nqp2/worker_session.h"

#include <string>

namespace nqp2::tool {

/// The picture of a file as an icon takes it: of a bitmap file of 24 bits a pixel its own, of any
/// other picture and of a video's first frame one that the worker makes to fit an icon's usual
/// size. Throws Failure.
Bitmap IconPicture(WorkerSession& session, const std::string& path);

} // namespace nqp2::tool
