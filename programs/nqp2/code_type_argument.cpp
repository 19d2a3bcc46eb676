// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/code_type_argument.h"

#include "nqp2/console.h"
#include "nqp2/whole_number.h"
#include "NQP2ParserU/TextBytes.h"

#include <cstdint>
#include <optional>

namespace nqp2::tool {

eCodeType CodeTypeFromArgument(const std::string& text) {
    if (const auto known = CodeTypeFromName(TextFromBytes(text))) {
        return *known;
    }
    const std::optional<std::int32_t> number = WholeNumber<std::int32_t>(text);
    if (!number) {
        throw Failure("--code-type " + text, "is no code type",
                      "give a name like CT_DV25_50I or a number", kUsage);
    }
    return static_cast<eCodeType>(*number);
}

} // namespace nqp2::tool
