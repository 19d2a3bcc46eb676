// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/output_text.h"
#include "nqp2/timeline/model.h"
#include "nqp2/timeline/remarks.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::timeline {

/// A document in the making: what is put goes on piece by piece.
class Document {
public:
    using Sink = std::function<void(std::string_view piece)>;

    /// Paths are told from the folder `base`, as whole paths when it is "".
    Document(Sink sink, std::string base) : m_sink(std::move(sink)), m_base(std::move(base)) {}

    [[nodiscard]] tool::OutputText& Out() { return m_out; }
    /// To be called between things that are put. Throws what the sink throws.
    void Step() {
        if (m_out.Text().size() >= kPiece) {
            Finish();
        }
    }
    void Finish() {
        m_sink(m_out.Text());
        m_out.Clear();
    }

    [[nodiscard]] bool IsRelative() const { return !m_base.empty(); }
    /// The path of a file as this document tells it.
    [[nodiscard]] std::string PathOf(const MediaFile& file) const;
    /// The same percent-encoded, without a scheme.
    [[nodiscard]] std::string EncodedPathOf(const MediaFile& file) const;

private:
    static constexpr std::size_t kPiece = std::size_t{64} * 1024;

    Sink m_sink;
    std::string m_base;
    tool::OutputText m_out;
};

/// The name of a file without its folders.
std::string_view FileName(std::string_view path);

// Each writes one document; what its form cannot tell becomes remarks.
void WriteOtio(const Timeline& timeline, Document& document, Remarks& remarks);
void WriteXmeml(const Timeline& timeline, Document& document, Remarks& remarks);
void WriteCmx(const Timeline& timeline, Document& document, Remarks& remarks);
void WriteAle(const Timeline& timeline, Document& document, Remarks& remarks);

/// A form of documents.
struct Form {
    std::string_view name; ///< also of files behind their dot
    void (*write)(const Timeline& timeline, Document& document, Remarks& remarks);
    /// Whether a document holds one rate alone.
    bool oneRate = false;
    /// The most events that a document holds; 0: any number.
    std::size_t mostEvents = 0;
};

inline constexpr Form kForms[] = {
    {"otio", WriteOtio},
    {"edl", WriteCmx, true, 999},
    {"xml", WriteXmeml},
    {"ale", WriteAle, true},
};

/// The timeline as the documents that it takes in a form.
std::vector<Timeline> PartsFor(const Form& form, Timeline timeline, Remarks& remarks);

} // namespace nqp2::timeline
