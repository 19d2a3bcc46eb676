// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/ReadyParser.h"

#include <optional>
#include <string>

namespace nqp2::tool {

/// The POSIX path of the file that an interface path names, in its letters on the disk; "" for "".
std::string RealPath(const CString& path);
/// The same as a whole path, which leads there from any folder.
std::string OutputPath(const CString& path);
/// That of a path of the system.
std::string OutputPath(std::string path);
/// Of a folder in which files are under the very names that records give them.
void TakeAsWritten(const CString& folder);
/// Learns what RealPath needs of the file's folder, for all threads: before many of its files come.
void ReadFolderOf(const CString& path);

/// Whether a text names a drive ("E", "E:", "E:\\copies") whose letter the drive table knows.
bool IsMappedDrive(const CString& text);

/// Whether there may be more cards than a search has found.
bool WasCutShort(const CardSearch& search);

/// The card that the user named: a folder, or a drive text ("E", "E:", "E:\copies") whose letter
/// the drive table knows.
class Card {
public:
    explicit Card(const std::string& argument);
    explicit Card(const FoundCard& found);

    /// Makes it the card that its folder was found to be or to lead to.
    void Take(const FoundCard& found);
    /// What is known of it once it was found.
    [[nodiscard]] const std::optional<FoundCard>& Found() const { return m_found; }
    /// As the user would name it: what WorkerPath takes.
    [[nodiscard]] const std::string& Argument() const { return m_argument; }
    /// Makes the folder above it, where that is the top of a memory card whose PRIVATE folder it
    /// is, part of it.
    void TakeTop();
    /// As the library takes it: that folder, else the root.
    [[nodiscard]] const CString& Top() const { return m_top.IsEmpty() ? m_root : m_top; }
    /// As the library takes it.
    [[nodiscard]] const CString& Root() const { return m_root; }
    /// The card's CONTENTS folder in the place of a root.
    [[nodiscard]] CString ContentsRoot() const;
    /// The folder behind it.
    [[nodiscard]] std::string Folder() const;
    /// Whether that holds a folder of a name, in any letter case.
    [[nodiscard]] bool HoldsFolder(const wchar_t* name) const;
    /// Throws the failure to report unless there is a folder.
    void RequireFolder() const;
    /// Throws the failure to report unless the folder holds a CONTENTS folder.
    void RequireContents() const;
    /// The failure to report when the library cannot read the card. Looks what is there.
    [[noreturn]] void ThrowUnreadable() const;
    /// The same for a card whose playlists are missing.
    [[noreturn]] void ThrowNoPlaylists() const;

private:
    /// Throws the failure to report unless the folder can be listed.
    void RequireOpen() const;
    /// The same unless something is in it.
    void RequireSomething() const;
    /// The root with its drive part closed: a bare letter names the drive only with its colon.
    [[nodiscard]] CString DriveRoot() const;

    std::string m_argument;
    CString m_root;
    CString m_top;
    std::optional<FoundCard> m_found;
};

} // namespace nqp2::tool
