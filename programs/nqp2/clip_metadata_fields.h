// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value_sink.h"
#include "NQP2ParserU/ClipMetadata.h"

namespace nqp2::tool {

/// Shows all that a clip's own files tell, each member under its own name.
void PutMetadata(ValueSink& sink, const ClipMetadata& metadata);

} // namespace nqp2::tool
