// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/records.h"
#include "NQP2ParserU/CString.h"

#include <string>
#include <string_view>
#include <vector>

/// What is searched, the same for every engine: these only keep an index of it.
namespace nqp2::catalogue {

/// The words of a text in one case. Letters and digits are words, whatever stands between them
/// parts them; of scripts that do not part words each character is one.
std::vector<std::string> WordsOf(std::string_view text);

/// What filters find by a word that no text has: these marks, and the letters and digits behind
/// each other.
inline constexpr std::string_view kCameraMark = "qqcamera";
inline constexpr std::string_view kCodecMark = "qqcodec";
inline constexpr std::string_view kRateMark = "qqrate";
std::string MarkedWord(std::string_view mark, std::string_view text);

/// All words of a clip, with spaces between them.
std::string WordsOfClip(const ClipRecord& clip);

/// People or memos of a clip, each a line of the text.
std::vector<std::string> LinesOf(const std::string& text);

/// UTF-8 of a text of a card as every engine can keep it: what is no UTF-8 becomes U+FFFD, zeros
/// go, and what is longer than a text may be is cut.
std::string KeptText(std::string_view text);
/// A text by which something is found: a long one becomes its digest, since no index takes texts of
/// any length.
std::string KeyText(std::string_view text);
std::string KeptText(const CString& text);

} // namespace nqp2::catalogue
