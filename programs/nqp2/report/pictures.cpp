// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/pictures.h"

#include "console/console.h"
#include "nqp2/card.h"
#include "nqp2/worker_session.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <system_error>
#include <vector>

namespace nqp2::report {
namespace {

using Clip = _tag_P2Clip;

constexpr SIZE kBounds = {240, 180};
/// A request is not so large that much would have to be asked again, nor so small that it costs.
constexpr std::size_t kFilesAtOnce = 32;
constexpr int kMostStarts = 24;
constexpr std::chrono::seconds kPatience{10};

/// A clip without a picture, and the files that may have one.
struct Wish {
    const Clip* clip;
    std::vector<CString> files;
    std::size_t next = 0;
};

Wish WishOf(const Clip& clip) {
    Wish wish = {&clip, {}};
    for (const CString* file :
         {&clip.IconPath, &clip.ProxyPath, &clip.Proxy.ProxyFilePath, &clip.VideoPath}) {
        if (!file->IsEmpty() && (wish.files.empty() || !(wish.files.back() == *file))) {
            wish.files.push_back(*file);
        }
    }
    return wish;
}

} // namespace

class Pictures::Asking {
public:
    Asking(const std::string& worker, Pictures& pictures)
        : m_program(worker), m_pictures(pictures) {
        Start();
    }

    /// Of each clip the next file that it has. Those that got no picture are asked again.
    void Ask(std::vector<Wish> wishes) {
        while (!wishes.empty()) {
            for (std::size_t at = 0; at < wishes.size(); at += kFilesAtOnce) {
                const std::size_t count = std::min(kFilesAtOnce, wishes.size() - at);
                AskTogether({wishes.data() + at, count});
            }
            std::erase_if(wishes, [this](Wish& wish) {
                return m_pictures.m_byClip.at(wish.clip).isFinal ||
                       ++wish.next == wish.files.size();
            });
        }
    }

private:
    void AskTogether(std::span<const Wish> wishes) {
        CStringArray files;
        for (const Wish& wish : wishes) {
            // Whole, whatever folder the program runs in.
            files.Add(InterfaceRoot(tool::OutputPath(PosixPath(wish.files[wish.next]))));
        }
        CArray<SmallPicture> made;
        const PicturesStatus status =
            MakeSmallPictures(*m_session->operator->(), files, kBounds, made);
        if (status == PicturesStatus::Made) {
            Take(wishes, [&](std::size_t i) { return std::move(made[static_cast<int>(i)]); });
        } else if (status == PicturesStatus::Refused) {
            const CString sentence = TextFromBytes(m_session->Sentence());
            SetProblem(wishes, sentence.IsEmpty() ? CString(L"The worker refused it.") : sentence);
        } else {
            AskAgain(wishes);
        }
    }

    /// After the worker has ended: one by one, until the file is found at which it ends.
    void AskAgain(std::span<const Wish> wishes) {
        Start();
        if (wishes.size() == 1) {
            SetProblem(wishes, L"The worker ended while it read the file.");
            return;
        }
        for (std::size_t i = 0; i < wishes.size(); ++i) {
            AskTogether(wishes.subspan(i, 1));
        }
    }

    void SetProblem(std::span<const Wish> wishes, const CString& problem) {
        Take(wishes, [&](std::size_t /*i*/) { return SmallPicture{{}, problem}; });
    }

    /// Of several files that have no picture the first is told of: it should have had one.
    template <class PictureAt>
    void Take(std::span<const Wish> wishes, PictureAt at) {
        {
            const std::lock_guard lock(m_pictures.m_mutex);
            for (std::size_t i = 0; i < wishes.size(); ++i) {
                Known& known = m_pictures.m_byClip.at(wishes[i].clip);
                SmallPicture picture = at(i);
                const bool isMade = picture.problem.IsEmpty();
                if (!isMade && wishes[i].next == 0 && !wishes[i].clip->IconPath.IsEmpty()) {
                    known.iconProblem = picture.problem;
                }
                known.isFinal = isMade || wishes[i].next + 1 == wishes[i].files.size();
                if (isMade || known.picture.problem.IsEmpty()) {
                    known.picture = std::move(picture);
                }
            }
        }
        m_pictures.m_news.notify_one();
    }

    void Start() {
        m_session.reset();
        if (++m_starts > kMostStarts) {
            throw tool::Failure("the worker", "ends too often", "", tool::kWorkerFailed);
        }
        m_session.emplace(m_program);
    }

    const std::string& m_program;
    Pictures& m_pictures;
    std::optional<tool::WorkerSession> m_session;
    int m_starts = 0;
};

Pictures::Pictures(tool::Console& console, const tool::ClipOrder& clips, const std::string& worker)
    : m_console(console) {
    m_byClip.reserve(clips.size());
    for (const Clip* clip : clips) {
        m_byClip.try_emplace(clip);
    }
    const auto ask = [this, clips, worker] {
        try {
            AskForAll(clips, worker);
        } catch (...) {
            End("", std::current_exception());
        }
    };
    try {
        m_asked = std::async(std::launch::async, ask);
    } catch (const std::system_error&) {
        ask(); // there is no thread: before all else
    }
}

Pictures::~Pictures() = default;

void Pictures::AskForAll(const tool::ClipOrder& clips, const std::string& worker) {
    std::vector<Wish> wishes;
    for (const Clip* clip : clips) {
        if (Wish wish = WishOf(*clip); !wish.files.empty()) {
            wishes.push_back(std::move(wish));
        }
    }
    try {
        std::optional<Asking> asking;
        if (!wishes.empty()) {
            asking.emplace(worker, *this).Ask(std::move(wishes));
        }
        End(""); // nobody waits until the worker has gone
    } catch (const tool::Failure& failure) {
        End(failure.what());
    }
}

void Pictures::End(const std::string& remark, std::exception_ptr error) {
    {
        const std::lock_guard lock(m_mutex);
        m_remark = remark;
        m_error = std::move(error);
        m_isOver = true;
    }
    m_news.notify_one();
}

/// Any news, also of other clips, begins the silence anew.
template <class IsKnown>
void Pictures::Wait(std::unique_lock<std::mutex>& lock, const std::string& what, IsKnown isKnown) {
    while (!isKnown()) {
        if (m_isSilenceTold) {
            m_news.wait(lock);
        } else if (m_news.wait_for(lock, kPatience) == std::cv_status::timeout && !isKnown()) {
            m_isSilenceTold = true;
            m_console.Message(fmt::format("nqp2: waiting for {}: the worker has not answered for "
                                          "{} seconds",
                                          what, kPatience.count()));
        }
    }
}

const Pictures::Known& Pictures::KnownOf(const Clip& clip) {
    const Known& known = m_byClip.at(&clip);
    std::unique_lock lock(m_mutex);
    Wait(lock, "the picture of " + BytesFromText(clip.ClipName),
         [&] { return known.isFinal || m_isOver; });
    return known;
}

const SmallPicture& Pictures::Of(const Clip& clip) {
    return KnownOf(clip).picture;
}

CString Pictures::IconProblem(const Clip& clip) {
    const Known& known = KnownOf(clip);
    return known.picture.jpeg.empty() ? CString() : known.iconProblem;
}

const std::string& Pictures::Remark() {
    std::unique_lock lock(m_mutex);
    Wait(lock, "the last pictures", [&] { return m_isOver; });
    if (m_error != nullptr) {
        std::rethrow_exception(m_error);
    }
    return m_remark;
}

} // namespace nqp2::report
