// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/base/media_streams.h"
#include "worker/rewrap/containers.h"
#include "worker/rewrap/units_of_h264.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::worker::rewrap {

/// Whether units can be pictures of a stream, by what their bytes tell without being decoded: what
/// a medium has lost or filled with something else shows where the codec has its marks.
class PictureCheck {
public:
    /// Units that come from a stream like that; `areSingle`: one that has more than a picture is
    /// no good.
    PictureCheck(Essence essence, const MediaStream& stream, bool areSingle = false);

    /// What is wrong with the next unit, in words; "" when nothing is seen.
    std::string FaultOf(std::string_view unit);

private:
    std::string FaultOfH264(std::string_view unit);

    Essence m_essence;
    UnitForm m_form;
    bool m_areSingle;
    std::size_t m_slices = 0; ///< of the first unit
};

} // namespace nqp2::worker::rewrap
