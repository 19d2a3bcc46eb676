// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/icon_picture.h"

#include "console/console.h"
#include "nqp2/input_file.h"
#include "NQP2ParserU/SmallPictures.h"
#include "NQP2ParserU/TextBytes.h"

#include <turbojpeg.h>

#include <memory>
#include <vector>

namespace nqp2::tool {
namespace {

constexpr SIZE kIcon = {80, 60};

bool IsBitmap(const std::string& path) {
    return InputFile(path).Read(2) == "BM";
}

/// Blue, green, red, the bottom row first, as an icon has them.
Bitmap Decoded(const std::vector<unsigned char>& jpeg, const std::string& path) {
    const std::unique_ptr<void, int (*)(tjhandle)> decoder(tjInitDecompress(), tjDestroy);
    Bitmap bitmap;
    int width = 0;
    int height = 0;
    const auto size = static_cast<unsigned long>(jpeg.size());
    if (decoder == nullptr ||
        tjDecompressHeader(decoder.get(), const_cast<unsigned char*>(jpeg.data()), size, &width,
                           &height) != 0 ||
        width <= 0 || width > kIcon.cx || height <= 0 || height > kIcon.cy) {
        throw Failure(path, "is no picture", "the worker's copy of it cannot be decoded");
    }
    bitmap.size = {width, height};
    bitmap.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
    if (tjDecompress2(decoder.get(), jpeg.data(), size,
                      reinterpret_cast<unsigned char*>(bitmap.pixels.data()), width, 0, height,
                      TJPF_BGR, TJFLAG_BOTTOMUP) != 0) {
        throw Failure(path, "is no picture", tjGetErrorStr2(decoder.get()));
    }
    return bitmap;
}

} // namespace

Bitmap IconPicture(WorkerSession& session, const std::string& path) {
    RequireRegularFile(path);
    if (IsBitmap(path)) {
        return ReadBitmap(path);
    }
    CStringArray files;
    files.Add(WorkerPath(path));
    CArray<SmallPicture> pictures;
    const PicturesStatus status = MakeSmallPictures(*session.operator->(), files, kIcon, pictures);
    session.Require(status == PicturesStatus::Made && pictures.GetSize() == 1, path,
                    "no picture was made of it");
    if (pictures[0].jpeg.empty()) {
        throw Failure(path, "no picture was made of it", BytesFromText(pictures[0].problem));
    }
    return Decoded(pictures[0].jpeg, path);
}

} // namespace nqp2::tool
