// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2EDL.h"

#include <vector>

class CMarkupMSXML;

namespace nqp2::platform {
class Folder;
}

namespace nqp2::edl {

/// Where an edit list goes.
struct EditListPlace {
    CString folder;               ///< with its trailing separator
    std::vector<CString> numbers; ///< patterns of the lists whose numbers are not given again
    CString name;                 ///< "" for the next number
};

/// Writes an edit list of clips that are on the card into the open folder of its place. A file of
/// the given name is replaced (extension added when it has none), one of a number's name never, also
/// when another writer takes it at the same moment. What the edit is made of (edit unit, rate, codec)
/// comes from the first event's clip that is there. What killed writers left is removed. `saved`
/// receives the file's path. Returns false for any failure, a list that could not be read again
/// included; nothing is left in the folder then.
bool WriteEditList(const CString& cardPath, platform::Folder& folder, const EditListPlace& place,
                   const tag_P2EDL& edl, CMarkupMSXML& reader, CString& saved);

} // namespace nqp2::edl
