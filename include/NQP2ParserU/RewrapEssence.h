// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/Rewrap.h"

#include <cstdint>

namespace nqp2 {

/// What a track of a rewrapped file is made of.
enum class RewrapEssence : std::uint32_t { Dv, AvcIntra, H264, Pcm, Ac3 };

/// Why a file of that kind cannot hold tracks like these, in a sentence that names the kinds that
/// can; "" when it can. The worker refuses by this, too.
NQP2_API CString RewrapObstacle(RewrapContainer container,
                                const CArray<RewrapEssence>& tracks) noexcept;

} // namespace nqp2
