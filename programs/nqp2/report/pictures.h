// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/clip_table.h"
#include "NQP2ParserU/SmallPictures.h"

#include <condition_variable>
#include <exception>
#include <future>
#include <mutex>
#include <string>
#include <unordered_map>

namespace nqp2::report {

/// The pictures that the worker makes of clips: of the icon, else of a frame of the proxy or the
/// video. They come while others read and write; who wants one waits until it is known. A file that
/// ends the worker is left out, and the worker is started again.
class Pictures {
public:
    /// Begins to ask for them, in the clips' order. Clips and console must outlive it. A worker
    /// that is long silent while somebody waits is told of once.
    Pictures(tool::Console& console, const tool::ClipOrder& clips, const std::string& worker);
    ~Pictures();
    Pictures(const Pictures&) = delete;
    Pictures& operator=(const Pictures&) = delete;

    /// A clip's picture, or, where there is one, the reason why it has none.
    const SmallPicture& Of(const _tag_P2Clip& clip);
    /// Why the picture is another than that of the clip's icon; "" where it is not. Waits as `Of`
    /// does.
    CString IconProblem(const _tag_P2Clip& clip);
    /// Why the rest has none, "" when all were asked for. Waits until all are known; throws what
    /// ended the asking early.
    const std::string& Remark();

private:
    struct Known {
        SmallPicture picture;
        CString iconProblem;
        bool isFinal = false;
    };
    class Asking;

    void AskForAll(const tool::ClipOrder& clips, const std::string& worker);
    const Known& KnownOf(const _tag_P2Clip& clip);
    template <class IsKnown>
    void Wait(std::unique_lock<std::mutex>& lock, const std::string& what, IsKnown isKnown);
    void End(const std::string& remark, std::exception_ptr error = nullptr);

    tool::Console& m_console;
    bool m_isSilenceTold = false;
    std::unordered_map<const _tag_P2Clip*, Known> m_byClip; ///< complete before the asking begins
    std::string m_remark;
    std::exception_ptr m_error;
    bool m_isOver = false;
    std::mutex m_mutex; ///< of the entries' values and what is before it
    std::condition_variable m_news;
    std::future<void> m_asked; ///< the last, so that the rest outlives it
};

} // namespace nqp2::report
