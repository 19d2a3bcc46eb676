// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/PathText.h"
#include "tests/support/temp_folder.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::test {

/// One value of a clip file. The path leads from the clip content to an element ("A/B") or to an
/// attribute of one ("A/B@Name", "@Name" for the content itself). Elements of the same name are
/// one, unless a step starts with "+", which opens a new one.
struct ClipValue {
    std::string path;
    std::string value;
};
using ClipValues = std::vector<ClipValue>;

/// A small tree of elements that is filled path by path and written once.
class ClipElement {
public:
    explicit ClipElement(std::string_view name) : m_name(name) {}

    void Set(std::string_view path, std::string_view value) {
        const std::size_t end = path.find_first_of("/@");
        const std::string_view step = path.substr(0, end);
        ClipElement& element = step.empty() ? *this : Below(step);
        if (end == std::string_view::npos) {
            element.m_text = value;
        } else if (path[end] == '@') {
            element.m_attributes.emplace_back(path.substr(end + 1), value);
        } else {
            element.Set(path.substr(end + 1), value);
        }
    }

    [[nodiscard]] std::string Xml() const {
        std::string xml = "<" + m_name;
        for (const auto& [name, value] : m_attributes) {
            xml += " " + name + "=\"" + Escaped(value) + "\"";
        }
        xml += ">" + Escaped(m_text);
        for (const auto& child : m_children) {
            xml += child->Xml();
        }
        return xml + "</" + m_name + ">";
    }

private:
    ClipElement& Below(std::string_view step) {
        const bool isNew = step.starts_with('+');
        const std::string_view name = isNew ? step.substr(1) : step;
        for (std::size_t i = m_children.size(); !isNew && i-- > 0;) {
            if (m_children[i]->m_name == name) {
                return *m_children[i];
            }
        }
        m_children.push_back(std::make_unique<ClipElement>(name));
        return *m_children.back();
    }

    static std::string Escaped(std::string_view text) {
        std::string escaped;
        for (const char ch : text) {
            const bool isMarkup = ch == '&' || ch == '<' || ch == '"';
            escaped += isMarkup ? "&#" + std::to_string(ch) + ";" : std::string(1, ch);
        }
        return escaped;
    }

    std::string m_name;
    std::string m_text;
    std::vector<std::pair<std::string, std::string>> m_attributes;
    std::vector<std::unique_ptr<ClipElement>> m_children;
};

inline constexpr const char* kClipNamespace =
    R"(xmlns="urn:schemas-Professional-Plug-in:P2:ClipMetadata:v3.1")";

/// A whole clip file. `rootAttributes` stand as written in the root's tag.
inline std::string ClipXml(const ClipValues& values,
                           std::string_view rootAttributes = kClipNamespace) {
    ClipElement content("ClipContent");
    for (const ClipValue& each : values) {
        content.Set(each.path, each.value);
    }
    return R"(<?xml version="1.0" encoding="UTF-8" standalone="no" ?>)"
           "\r\n<P2Main " +
           std::string(rootAttributes) + ">" + content.Xml() + "</P2Main>\r\n";
}

/// A card in a folder of its own, removed at the end of the test.
class CardBuilder {
public:
    /// Without `hasContents` the folder stays empty and is no card.
    explicit CardBuilder(bool hasContents = true) {
        if (hasContents) {
            m_folder.MakeFolder("CONTENTS/CLIP");
        }
    }

    [[nodiscard]] const TempFolder& Folder() const { return m_folder; }
    /// What a host passes as the card's root.
    [[nodiscard]] CString Root() const { return InterfaceRoot(m_folder.Path()); }
    /// The contents folder as records show it.
    [[nodiscard]] CString Contents() const { return Root() + L"\\CONTENTS\\"; }

    /// Writes a file below CONTENTS and returns its POSIX path.
    std::string AddFile(std::string_view name, std::string_view bytes = {}) const {
        return m_folder.Write("CONTENTS/" + std::string(name), bytes);
    }
    /// Writes CLIP/`name`.XML; its ClipName is `name` unless a value says otherwise.
    std::string AddClip(const std::string& name, const ClipValues& values = {}) const {
        ClipValues all = {{"ClipName", name}};
        all.insert(all.end(), values.begin(), values.end());
        return AddFile("CLIP/" + name + ".XML", ClipXml(all));
    }

private:
    TempFolder m_folder;
};

} // namespace nqp2::test
