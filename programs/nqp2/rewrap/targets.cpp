// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap/targets.h"

#include "nqp2/output_folder.h"
#include "nqp2/timeline/plain_text.h"
#include "nqp2/worker_session.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <string_view>

namespace nqp2::rewrap {
namespace {

namespace fs = std::filesystem;
using tool::Failure;

bool IsSameWord(const std::string& left, const std::string& right) {
    return TextFromBytes(left).CompareNoCase(TextFromBytes(right)) == 0;
}

/// A name that is one on every system and hides nothing.
std::string SafeName(const std::string& name) {
    constexpr std::size_t kMostBytes = 200; // with number and suffix below what systems take
    constexpr std::string_view kForeign = "/\\:*?\"<>|";
    std::string safe = timeline::OneLine(timeline::CutText(name, kMostBytes));
    std::replace_if(
        safe.begin(), safe.end(),
        [&](char each) { return kForeign.find(each) != std::string_view::npos; }, '_');
    const bool isHidden = safe.empty() || safe.front() == '.' || safe.front() == '-';
    return isHidden ? '_' + safe : safe;
}

/// Names that none has had, in whatever letters.
class FreshNames {
public:
    std::string Of(const std::string& name) {
        std::string fresh = name;
        for (int number = 2; !m_taken.insert(TextFromBytes(fresh).MakeUpper()).second; ++number) {
            fresh = fmt::format("{}-{}", name, number);
        }
        return fresh;
    }

private:
    std::set<CString> m_taken;
};

} // namespace

std::vector<std::string> FormNames() {
    std::vector<std::string> names;
    std::transform(std::begin(kForms), std::end(kForms), std::back_inserter(names),
                   [](const Form& form) { return std::string(form.name); });
    return names;
}

const Form* FindForm(const std::string& name) {
    const auto* const form =
        std::find_if(std::begin(kForms), std::end(kForms),
                     [&](const Form& each) { return IsSameWord(name, each.name); });
    return form == std::end(kForms) ? nullptr : form;
}

const char* NameOf(RewrapContainer container) {
    return std::find_if(std::begin(kForms), std::end(kForms),
                        [&](const Form& each) { return each.container == container; })
        ->name;
}

void SetTarget(Plan& plan, const Form& form, const std::string& file) {
    tool::RequireNew(file);
    const fs::path path(file);
    if (path.filename().native().find('\\') != std::string::npos) {
        throw Failure(file, "is no name for a file on every system", "");
    }
    const std::string folder = path.parent_path().native();
    plan.request.target = tool::WorkerPath(folder.empty() ? "." : folder) + L"\\" +
                          TextFromBytes(path.filename().native());
    plan.request.container = form.container;
    plan.failure = BytesFromText(RewrapObstacle(form.container, plan.tracks));
}

void SetTargets(std::vector<Plan>& plans, const Form& form, const std::string& folder) {
    FreshNames names;
    for (Plan& plan : plans) {
        if (!plan.IsPossible()) {
            continue;
        }
        const std::string name = names.Of(SafeName(plan.name)) + '.' + form.name;
        SetTarget(plan, form, (fs::path(folder) / name).native());
    }
}

} // namespace nqp2::rewrap
