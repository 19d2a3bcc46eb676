// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/picture_maker.h"

#include "copy/failure.h"
#include "worker/base/bounded_file.h"
#include "worker/base/card_folder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>
#include <turbojpeg.h>
#include <utility>

namespace nqp2::worker {
namespace {

constexpr std::int32_t kSmallestSide = 16;
constexpr std::int32_t kLargestSide = 1024;
/// As much as a plain bitmap within the largest bounds takes.
constexpr std::uint64_t kLargestBitmap = std::uint64_t{kLargestSide} * kLargestSide * 4 + 4096;
/// A picture takes a few MiB and milliseconds.
constexpr MediaLimits kLimits = {std::uint64_t{64} << 20U, std::chrono::seconds(2)};

bool IsBound(std::int32_t side) {
    return side >= kSmallestSide && side <= kLargestSide;
}

std::int32_t NumberAt(std::string_view bytes, std::size_t at) {
    std::int32_t number = 0;
    std::memcpy(&number, bytes.data() + at, sizeof number);
    return number;
}

/// All of a file that is small, "" for any other.
std::string ReadSmall(BoundedFile& file) {
    std::string bytes(file.Size() <= kLargestBitmap ? file.Size() : 0, '\0');
    const std::int64_t count = file.ReadAt(0, bytes.data(), bytes.size());
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

} // namespace

struct PictureMaker::Pixels {
    const unsigned char* bytes = nullptr;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t rowBytes = 0;
    TJPF format = TJPF_RGB;
    bool isBottomUp = false;
};

void PictureMaker::EndEncoder::operator()(void* encoder) const {
    tjDestroy(encoder);
}

PictureMaker::PictureMaker(const SIZE& bounds, std::function<bool()> goesOn)
    : m_bounds(bounds), m_goesOn(std::move(goesOn)), m_encoder(tjInitCompress()) {
    if (!IsBound(bounds.cx) || !IsBound(bounds.cy)) {
        throw copy::Failure("Pictures of " + std::to_string(bounds.cx) + " x " +
                            std::to_string(bounds.cy) + " pixels are not made.");
    }
    if (m_encoder == nullptr) {
        throw std::bad_alloc();
    }
}

/// What cards have thousands of is encoded as it lies in the file: loading the media module takes
/// longer than a card full of these. Everything else is the module's.
bool PictureMaker::IsPlainBitmap(const std::string& bytes, const SIZE& bounds, Pixels& pixels) {
    constexpr std::size_t kShortestBitmap = 54;
    if (bytes.size() < kShortestBitmap || !bytes.starts_with("BM")) {
        return false;
    }
    const std::int64_t start = NumberAt(bytes, 10);
    const std::int64_t height = NumberAt(bytes, 22);
    const int bits = NumberAt(bytes, 28) & 0xFFFF;
    pixels.width = NumberAt(bytes, 18);
    const bool isPlain = NumberAt(bytes, 14) >= 40 && NumberAt(bytes, 30) == 0 &&
                         (bits == 24 || bits == 32) && start >= std::int64_t{kShortestBitmap};
    if (!isPlain || pixels.width < 1 || pixels.width > bounds.cx || height == 0 ||
        std::abs(height) > bounds.cy) {
        return false;
    }
    pixels.height = static_cast<std::int32_t>(std::abs(height));
    pixels.rowBytes = (pixels.width * bits / 8 + 3) / 4 * 4;
    pixels.format = bits == 24 ? TJPF_BGR : TJPF_BGRX;
    pixels.isBottomUp = height > 0;
    const std::int64_t end = start + std::int64_t{pixels.rowBytes} * pixels.height;
    if (end > static_cast<std::int64_t>(bytes.size())) {
        return false;
    }
    pixels.bytes = reinterpret_cast<const unsigned char*>(bytes.data()) + start;
    return true;
}

std::string PictureMaker::Encode(const Pixels& pixels) {
    constexpr int kQuality = 80;
    const int flags = TJFLAG_NOREALLOC | TJFLAG_FASTDCT | (pixels.isBottomUp ? TJFLAG_BOTTOMUP : 0);
    unsigned long size = tjBufSize(pixels.width, pixels.height, TJSAMP_420);
    m_room.resize(std::max<std::size_t>(m_room.size(), size));
    auto* target = reinterpret_cast<unsigned char*>(m_room.data());
    if (tjCompress2(m_encoder.get(), pixels.bytes, pixels.width, pixels.rowBytes, pixels.height,
                    pixels.format, &target, &size, TJSAMP_420, kQuality, flags) != 0) {
        throw copy::Failure(std::string("No JPEG could be made: ") +
                            tjGetErrorStr2(m_encoder.get()) + ".");
    }
    return m_room.substr(0, size);
}

std::string PictureMaker::Make(const CString& path) {
    const std::optional<std::string> found = FindFile(path);
    if (!found) {
        throw copy::Failure("There is no file " + platform::PathOnDisk(path) + ".");
    }
    BoundedFile file(*found, m_goesOn, kLimits);
    Pixels pixels;
    if (const std::string bytes = ReadSmall(file); IsPlainBitmap(bytes, m_bounds, pixels)) {
        return Encode(pixels);
    }
    const Picture picture = ReadPicture(file, m_bounds.cx, m_bounds.cy);
    pixels = {reinterpret_cast<const unsigned char*>(picture.pixels.data()), picture.width,
              picture.height, picture.width * 3};
    return Encode(pixels);
}

} // namespace nqp2::worker
