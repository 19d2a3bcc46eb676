// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

/// One whose value is empty is not written.
struct XmlAttribute {
    std::string_view name;
    std::string_view value;
};
using XmlAttributes = std::initializer_list<XmlAttribute>;

/// Writes a document piece by piece, an element a line. After a failure of the sink nothing more
/// reaches it.
class XmlWriter {
public:
    using Sink = std::function<platform::IoStatus(std::string_view)>;

    explicit XmlWriter(const Sink& sink);

    /// `name`, here and below, lives until the element is closed.
    void Open(std::string_view name, XmlAttributes attributes = {});
    void Close();
    /// An element with nothing but a text.
    void Leaf(std::string_view name, std::string_view text, XmlAttributes attributes = {});
    /// Hands on what is still here. The sink's first failure, if there was one.
    platform::IoStatus Finish();

private:
    void Begin(std::string_view name, XmlAttributes attributes);
    void EndLine();

    const Sink& m_sink;
    std::string m_text;
    std::vector<std::string_view> m_open;
    platform::IoStatus m_status;
};

} // namespace nqp2::mhl
