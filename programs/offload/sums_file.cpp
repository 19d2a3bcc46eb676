// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/sums_file.h"

#include "copy/copier.h"
#include "copy/digest.h"
#include "copy/failure.h"

#include <fmt/core.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace nqp2::offload {
namespace {

using copy::Require;
using platform::Folder;
using platform::IoError;
using platform::IoStatus;

/// A line of md5sum, which writes a backslash before one whose name holds one or a line's end.
std::string SumLine(const std::string& sum, const std::string& name) {
    std::string escaped;
    for (const char letter : name) {
        escaped += letter == '\\' ? "\\\\" : letter == '\n' ? "\\n" : letter == '\r' ? "\\r" : "";
        if (letter != '\\' && letter != '\n' && letter != '\r') {
            escaped += letter;
        }
    }
    return fmt::format("{}{}  {}\n", escaped == name ? "" : "\\", sum, escaped);
}

/// A file that is written piece by piece and then takes its name. What has it with the same bytes
/// stays; what has it with others is set aside.
class NewFile {
public:
    NewFile(Folder& folder, std::string name, std::string path)
        : m_folder(folder), m_name(std::move(name)), m_path(std::move(path)) {
        Require(m_folder.Create(m_name, m_writer), "write", m_path);
    }

    void Add(std::string_view bytes) {
        Require(m_writer->WriteAt(m_digest.Size(), bytes), "write", m_path);
        m_digest.Add(bytes);
    }

    void Finish() {
        Require(m_writer->Flush(), "write", m_path);
        std::string block(copy::kDefaultBlock, '\0');
        copy::CheckReadBack(*m_writer, m_path, 0, m_digest, block, [](std::size_t) {});
        if (IsThere(block)) {
            return;
        }
        IoStatus status = m_writer->Commit();
        if (status.error == IoError::Exists) {
            SetAside();
            status = m_writer->Commit();
        }
        Require(status, "write", m_path);
    }

private:
    [[nodiscard]] bool IsThere(std::string& block) const {
        std::unique_ptr<platform::FileReader> old;
        IoStatus status = m_folder.Open(m_name, old);
        copy::Digest digest;
        for (std::size_t count = 1; status && count != 0;) {
            status = old->Read(block.data(), block.size(), count);
            digest.Add({block.data(), status ? count : 0});
        }
        return status && digest.Value() == m_digest.Value();
    }

    void SetAside() {
        constexpr int kMostTries = 10'000;
        IoStatus status{IoError::Exists, "all names for it are taken"};
        for (int number = 1; number < kMostTries && status.error == IoError::Exists; ++number) {
            status = m_folder.MoveToFree(m_name, fmt::format("{}.differs-{}", m_name, number));
        }
        Require(status, "set aside", m_path);
    }

    Folder& m_folder;
    std::string m_name;
    std::string m_path;
    std::unique_ptr<platform::FileWriter> m_writer;
    copy::Digest m_digest;
};

} // namespace

void WriteSums(const Plan& plan, std::size_t target, CopyOutcome& copy) {
    const mhl::Tree& tree = plan.index.tree;
    Folder& folder = *plan.targets[target].opened;
    const std::string name = plan.name + ".md5";
    const std::string path = platform::PathIn(plan.targets[target].folder, name);
    NewFile file(folder, name, path);
    for (mhl::NodeId node = tree.FirstInPostOrder(mhl::kScope); node != mhl::kNoNode;
         node = tree.NextInPostOrder(node, mhl::kScope)) {
        if (!tree.IsFolder(node)) {
            file.Add(SumLine(tree.HashesOf(node).Text(mhl::HashFormat::Md5),
                             plan.name + '/' + tree.PathOf(node)));
        }
    }
    file.Finish();
    copy.sums = path;
}

} // namespace nqp2::offload
