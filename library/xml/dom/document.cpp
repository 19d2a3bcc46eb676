// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/document.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/file_system.h"
#include "xml/dom/quick_parser.h"
#include "xml/dom/select.h"
#include "xml/dom/serialize.h"

#include <algorithm>
#include <new>
#include <utility>

namespace nqp2::dom {
namespace {

// Files up to this size are read whole, in four system calls. Larger ones only when they may be
// read quickly, which takes a copy of them; any parse by libxml2 is piece by piece, so that such a
// file is never in memory beside its tree and what libxml2 keeps.
constexpr std::uint64_t kReadWhole = std::uint64_t{256} * 1024;

ParseError FaultOf(const platform::IoStatus& status) {
    switch (status.error) {
    case platform::IoError::NotFound:
        return {kErrorNotFound, "the file does not exist", 0, 0, Fault::NotFound};
    case platform::IoError::IsFolder:
        return {kErrorUnreadable, "it is a folder", 0, 0, Fault::IsFolder};
    case platform::IoError::TooLarge:
        return {kErrorTooLarge, kFileTooLarge, 0, 0, Fault::TooLarge};
    default:
        return {kErrorUnreadable, status.reason, 0, 0, Fault::Unreadable};
    }
}

/// What could not be loaded again must not take the place of what can.
bool LoadsAgain(const Serialized& saved) {
    // Plain texts are taken at their word: reading each back would double what saving costs.
    return !saved.isDoubtful ||
           Parser().ParseBytes(saved.text, *std::make_shared<Tree>()).fault == Fault::None;
}

} // namespace

Document::Document(SelectionRule::Names names)
    : m_rule(std::make_shared<const SelectionRule>(SelectionRule{names, {}})),
      m_tree(std::make_shared<Tree>()) {
    m_tree->SetRule(m_rule);
}

bool Document::TakeFreshTree() noexcept {
    // A tree with no other holder serves again: its memory is already there.
    if (m_tree.use_count() == 1) {
        m_tree->Clear();
        return true;
    }
    try {
        m_tree = std::make_shared<Tree>();
        m_tree->SetRule(m_rule);
        return true;
    } catch (const std::bad_alloc&) {
        m_tree->TakeOutAll(); // empty all the same, and others keep what they hold
        return false;
    }
}

void Document::Clear() noexcept {
    TakeFreshTree();
}

void Document::Fail(std::string_view reason) noexcept {
    Clear();
    try {
        m_error = {kErrorUnreadable, std::string(reason), 0, 0, Fault::Unreadable};
    } catch (const std::bad_alloc&) {
        m_error = OutOfMemory();
    }
}

void Document::FailForMemory() noexcept {
    Clear();
    m_error = OutOfMemory();
}

/// Whatever a load throws leaves an empty document with a reason.
template <class Load>
bool Document::Replace(const Load& load) {
    try {
        m_error = TakeFreshTree() ? load() : OutOfMemory();
    } catch (const std::bad_alloc&) {
        m_error = OutOfMemory();
    }
    if (m_error.fault != Fault::None) {
        Clear();
    }
    return m_error.fault == Fault::None;
}

bool Document::LoadText(std::string_view utf8) {
    return Replace([&] { return m_parser.ParseText(utf8, *m_tree); });
}

bool Document::LoadBytes(std::string_view bytes) {
    return Replace([&] { return m_parser.ParseBytes(bytes, *m_tree); });
}

bool Document::LoadFile(const std::string& path) {
    return Replace([&] { return ReadFile(path); });
}

ParseError Document::ReadFile(const std::string& path) {
    const std::uint64_t limit = nqp2::MaxXmlFileSize();
    platform::FileSystem& files = platform::Files();
    platform::IoStatus status =
        files.Read(path, std::min<std::uint64_t>(limit, kLargestQuickDocument), m_buffer);
    if (status && m_buffer.size() <= kReadWhole) {
        return m_parser.ParseBytes(m_buffer, *m_tree);
    }
    if (status && TakeBufferQuickly()) {
        return {};
    }
    if (!status &&
        (status.error != platform::IoError::TooLarge || limit <= kLargestQuickDocument)) {
        return FaultOf(status);
    }
    std::unique_ptr<platform::FileReader> reader;
    status = files.Open(path, reader);
    if (!status) {
        return FaultOf(status);
    }
    if (reader->Size() > limit) {
        return {kErrorTooLarge, kFileTooLarge, 0, 0, Fault::TooLarge};
    }
    return m_parser.ParseStream(*reader, limit, *m_tree);
}

/// A large file; its buffer is given back.
bool Document::TakeBufferQuickly() {
    const std::string bytes = std::exchange(m_buffer, {});
    return ParseQuickly(bytes, *m_tree, MaxTreeBytes(bytes.size()));
}

std::optional<std::string> Document::TextToSave() const {
    if (m_tree->Root() == nullptr) {
        return std::nullopt;
    }
    Serialized saved = SerializeToReload(m_tree->DocumentNode());
    if (saved.text.size() > nqp2::MaxXmlFileSize() || !LoadsAgain(saved)) {
        return std::nullopt;
    }
    return std::move(saved.text);
}

bool Document::Save(const std::string& path) const {
    const std::optional<std::string> text = TextToSave();
    return text && platform::Files().WriteWhole(path, *text);
}

std::shared_ptr<Node> Document::DocumentNode() const {
    return m_tree->Share(&m_tree->DocumentNode());
}

std::shared_ptr<Node> Document::SelectSingle(std::string_view path) const {
    return m_tree->Share(SelectFirst(m_tree->DocumentNode(), path));
}

std::shared_ptr<NodeList> Document::SelectNodes(std::string_view path) const {
    return ListOf(m_tree->DocumentNode(), path);
}

bool Document::SetSelectionNamespaces(std::string_view declarations) {
    auto bindings = ParseBindings(declarations);
    const bool sound = bindings.has_value();
    auto rule = std::make_shared<SelectionRule>();
    rule->names = m_rule->names;
    rule->bindings = std::move(bindings).value_or(decltype(rule->bindings)());
    m_rule = std::move(rule);
    m_tree->SetRule(m_rule);
    return sound;
}

std::shared_ptr<NodeList> ListOf(Node& context, std::string_view path) {
    return std::make_shared<NodeList>(context.tree->shared_from_this(), SelectAll(context, path));
}

} // namespace nqp2::dom
