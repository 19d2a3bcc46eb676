// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/base/media_file.h"

#include "copy/failure.h"
#include "worker/base/bounded_file.h"
#include "worker/base/media_loader.h"

namespace nqp2::worker {
namespace {

/// Lets the module read a file within its limits; `read` is given both.
template <class Read>
void ReadWithModule(BoundedFile& file, Read read) {
    const MediaFault fault = read(LoadMediaModule());
    file.RequireNotStopped(); // whatever was found until then is half of it
    if (!fault.empty()) {
        throw copy::Failure("Cannot understand " + file.Name() + ": " + fault + ".");
    }
}

} // namespace

MediaFacts ReadMediaFile(const std::string& path, const std::function<bool()>& goesOn,
                         const MediaLimits& limits) {
    LoadMediaModule();
    BoundedFile file(path, goesOn, limits);
    MediaFacts facts;
    ReadWithModule(file, [&](const MediaModule& module) { return module.Describe(file, facts); });
    return facts;
}

MediaDescription ReadMediaDescription(const std::string& path, const std::function<bool()>& goesOn,
                                      const MediaLimits& limits) {
    LoadMediaModule();
    BoundedFile file(path, goesOn, limits);
    MediaDescription description;
    ReadWithModule(
        file, [&](const MediaModule& module) { return module.DescribeAll(file, description); });
    return description;
}

Picture ReadPicture(BoundedFile& file, std::int32_t width, std::int32_t height) {
    Picture picture;
    ReadWithModule(file, [&](const MediaModule& module) {
        return module.MakePicture(file, width, height, picture);
    });
    return picture;
}

} // namespace nqp2::worker
