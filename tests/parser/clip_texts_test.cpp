// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "parser/clip_texts.h"

#include "platform/number_text.h"
#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "xml/MarkupMSXML.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace nqp2::parser {
namespace {

/// Documents of elements with the names that the paths are made of, in places right and wrong.
class RandomDocument {
public:
    explicit RandomDocument(unsigned seed) : m_random(seed) {
        for (const ClipPathEntry& each : kClipPaths) {
            Learn(each.below);
        }
        for (const std::string_view path : {kMemoPath, kProxyAudioPath, kAudioPath}) {
            Learn(path);
        }
        m_names.insert(m_names.end(), {"P2Main", "ClipContent", "p:Codec", "Other"});
    }

    std::string Xml() {
        m_left = 400;
        std::string xml = R"(<P2Main xmlns="urn:a" xmlns:p="urn:b">)";
        for (int contents = Below(3); contents >= 0; --contents) {
            xml += Content();
        }
        return xml + Element(4) + "</P2Main>";
    }

private:
    void Learn(std::string_view path) {
        m_paths.emplace_back(path);
        for (std::size_t start = 0; start < path.size();) {
            const std::size_t end = std::min(path.find('/', start), path.size());
            m_names.emplace_back(path.substr(start, end - start));
            start = end + 1;
        }
    }
    int Below(std::size_t limit) {
        return static_cast<int>(std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random));
    }
    template <class Container>
    const std::string& Pick(const Container& from) {
        return from[static_cast<std::size_t>(Below(from.size()))];
    }

    /// Mostly whole paths, so that many of the questions have an answer.
    std::string Content() {
        std::string xml = "<ClipContent>";
        for (int i = Below(30); i > 0; --i) {
            xml += Below(4) == 0 ? Element(3) : Path(Pick(m_paths));
        }
        return xml + (Below(4) == 0 ? "<P2Main>" + Content() + "</P2Main>" : "") + "</ClipContent>";
    }
    std::string Path(const std::string& path) {
        const std::size_t slash = path.find('/');
        const std::string name = path.substr(0, slash);
        const std::string inside =
            slash == std::string::npos ? Inside() : Path(path.substr(slash + 1));
        return Wrapped(name, inside);
    }
    std::string Element(int depth) {
        std::string inside = Inside();
        for (int i = depth > 0 && --m_left > 0 ? Below(4) : 0; i > 0; --i) {
            inside += Element(depth - 1);
        }
        return Wrapped(Pick(m_names), inside);
    }
    std::string Wrapped(const std::string& name, const std::string& inside) {
        static const std::vector<std::string> kAttributes = {
            "", "", "", R"( Class="50")", R"( p:Class="1" Class="2")", R"( xmlns="urn:c")"};
        return "<" + name + Pick(kAttributes) + ">" + inside + "</" + name + ">";
    }
    std::string Inside() {
        static const std::vector<std::string> kTexts = {
            "", " 12 ", "-7x", "&amp;<![CDATA[<x>]]>", "a<!-- b -->c", "<Other>in</Other>side"};
        return Pick(kTexts);
    }

    std::mt19937 m_random;
    std::vector<std::string> m_paths;
    std::vector<std::string> m_names;
    int m_left = 0;
};

std::string Full(std::string_view below) {
    return std::string(kClipContentPath) + "/" + std::string(below);
}

int CountOf(CMarkupMSXML& markup, const std::string& path) {
    CMSXmlParserNode list = markup.GetNodeList(_bstr_t(platform::TextFromUtf8(path)));
    int count = 0;
    if (!list.IsEmpty()) {
        while (list.GetNextNode()) {
            ++count;
        }
    }
    return count;
}

TEST(ClipTexts, GiveWhatAskingPathByPathGives) {
    int answered = 0;
    for (unsigned seed = 1; seed <= 150; ++seed) {
        const std::string xml = RandomDocument(seed).Xml();
        CMarkupMSXML markup;
        ASSERT_EQ(markup.LoadBytes(xml), 1) << xml;
        TextPool pool;
        const ClipTexts texts(*markup.GetDocumentPtr(), pool);
        for (const ClipPathEntry& each : kClipPaths) {
            const CString path = platform::TextFromUtf8(Full(each.below));
            const CString expected = markup.GetNodeText(path, 1);
            ASSERT_EQ(texts.Int64(each.path), platform::ToInt64(expected.View())) << xml;
            answered += expected.IsEmpty() ? 0 : 1;
            ASSERT_EQ(texts.Text(each.path), expected) << path << "\n" << xml;
            // The same as a question that only the general evaluation answers.
            ASSERT_EQ(markup.GetNodeText(L"(" + path + L")[1]", 1), expected) << path << "\n"
                                                                              << xml;
            ASSERT_EQ(texts.Attribute(each.path, "Class"), markup.GetNodeAttribute(path, L"Class"))
                << path << "\n"
                << xml;
        }
        for (const std::string_view below : {kMemoPath, kProxyAudioPath, kAudioPath}) {
            ASSERT_EQ(static_cast<int>(texts.All(below).size()), CountOf(markup, Full(below)))
                << below << "\n"
                << xml;
        }
    }
    EXPECT_GT(answered, 1000) << "the documents hold what is asked for";
}

TEST(ClipTexts, TellWhetherThereIsContent) {
    struct Case {
        const char* xml;
        bool hasContent;
    };
    constexpr Case kCases[] = {
        {"<P2Main><ClipContent/></P2Main>", true},
        {"<A><P2Main><ClipContent/></P2Main></A>", true},
        {"<P2Main><A><ClipContent/></A></P2Main>", false},
        {"<p:P2Main xmlns:p='urn:p'><p:ClipContent/></p:P2Main>", false},
        {"<ClipMain><ClipContent/></ClipMain>", false},
    };
    for (const Case& each : kCases) {
        CMarkupMSXML markup;
        ASSERT_EQ(markup.LoadBytes(each.xml), 1);
        TextPool pool;
        EXPECT_EQ(ClipTexts(*markup.GetDocumentPtr(), pool).HasContent(), each.hasContent)
            << each.xml;
    }
}

} // namespace
} // namespace nqp2::parser
