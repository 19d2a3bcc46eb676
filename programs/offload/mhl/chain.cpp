// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/chain.h"

#include "offload/mhl/element_reader.h"
#include "offload/mhl/xml_writer.h"
#include "platform/folder.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <utility>

namespace nqp2::mhl {
namespace {

constexpr std::string_view kChainNamespace = "urn:ASC:MHL:DIRECTORY:v2.0";

enum ChainElement : ElementId { kTop, kDirectory, kListed, kListedPath, kListedDigest };

constexpr ElementRow kChainRows[] = {
    {kTop, "ascmhldirectory", kDirectory, ElementRow::Kind::Children},
    {kDirectory, "hashlist", kListed, ElementRow::Kind::Children},
    {kListed, "path", kListedPath, ElementRow::Kind::Text},
    {kListed, "", kListedDigest, ElementRow::Kind::Text},
};

class ChainReader final : private ElementHandler {
public:
    explicit ChainReader(const ChainFault& onFault)
        : m_onFault(onFault), m_reader(kChainRows, kChainNamespace, *this) {}

    Chain Read(std::string_view bytes) {
        m_chain.isWhole = m_reader.Add(bytes) && m_reader.Finish();
        return std::move(m_chain);
    }

private:
    void OnOpen(ElementId element, ElementId /*parent*/, const dom::EventElement& event) override {
        if (element == kListed) {
            m_entry = {};
            m_entry.line = event.line;
            Number(AttributeOf(event, "sequencenr"));
        } else if (element == kListedDigest) {
            m_formatName = event.name;
        }
    }

    void Number(std::string_view text) {
        const auto [end, error] =
            std::from_chars(text.data(), text.data() + text.size(), m_entry.number);
        if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
            OnFault(m_entry.line, "the number \"" + std::string(text) + "\" is none");
        } else if (m_entry.number != m_last + 1) {
            OnFault(m_entry.line, "number " + std::to_string(m_entry.number) + " stands where " +
                                      std::to_string(m_last + 1) + " should");
        }
        m_last = std::max(m_last + 1, m_entry.number);
    }

    void OnClose(ElementId element, ElementId /*parent*/, const std::string& text,
                 int line) override {
        if (element == kListedPath) {
            m_entry.name = text;
        } else if (element == kListedDigest) {
            CloseDigest(Trimmed(text), line);
        } else if (element == kListed) {
            CloseEntry();
        }
    }

    void CloseDigest(std::string_view text, int line) {
        m_hasDigest = true;
        const std::string fault = HashFormatNamed(m_formatName) == HashFormat::C4
                                      ? ParseHashText(HashFormat::C4, text, m_entry.c4)
                                      : "stands where only a c4 may";
        if (!fault.empty()) {
            OnFault(line, "the " + m_formatName + " of " + m_entry.name + " " + fault);
        }
    }

    void CloseEntry() {
        if (!std::exchange(m_hasDigest, false)) {
            OnFault(m_entry.line, m_entry.name + " has no hash");
        }
        if (!platform::IsEntryName(m_entry.name)) {
            OnFault(m_entry.line, "\"" + m_entry.name + "\" is no name of a file beside the chain");
        } else if (m_chain.entries.size() == kMostGenerations) {
            OnFault(m_entry.line, "there are too many generations");
        } else if (!m_names.insert(m_entry.name).second) {
            OnFault(m_entry.line, m_entry.name + " stands there twice");
        } else {
            m_chain.entries.push_back(std::move(m_entry));
        }
    }

    void OnUnknown(ElementId /*parent*/, const dom::EventElement& event) override {
        OnFault(event.line, "the element " + std::string(event.name) + " may not stand there");
    }
    void OnFault(int line, std::string sentence) override { m_onFault(line, std::move(sentence)); }

    static constexpr std::size_t kMostGenerations = 20'000;

    const ChainFault& m_onFault;
    Chain m_chain;
    ChainEntry m_entry;
    std::set<std::string> m_names;
    std::string m_formatName;
    std::uint64_t m_last = 0;
    bool m_hasDigest = false;
    ElementReader m_reader;
};

} // namespace

Chain ReadChain(std::string_view bytes, const ChainFault& onFault) {
    return ChainReader(onFault).Read(bytes);
}

std::string ChainText(const std::vector<ChainEntry>& entries) {
    std::string text;
    const XmlWriter::Sink sink = [&](std::string_view piece) {
        text.append(piece);
        return platform::IoStatus{};
    };
    XmlWriter xml(sink);
    xml.Open("ascmhldirectory", {{"xmlns", kChainNamespace}});
    for (const ChainEntry& each : entries) {
        xml.Open("hashlist", {{"sequencenr", std::to_string(each.number)}});
        xml.Leaf("path", each.name);
        xml.Leaf("c4", each.c4.Text(HashFormat::C4));
        xml.Close();
    }
    xml.Close();
    static_cast<void>(xml.Finish()); // a text takes all
    return text;
}

} // namespace nqp2::mhl
