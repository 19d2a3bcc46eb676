// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/picture_maker.h"

#include "NQP2ParserU/PathText.h"
#include "tests/worker/media_bytes.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/base/bounded_file.h"

#include <chrono>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::worker {
namespace {

using testing::HasSubstr;

constexpr SIZE kBounds = {160, 120};

/// Red above, blue below. A negative height has the top row first in the file.
std::string Bitmap(std::int32_t width, std::int32_t height, int bits = 24) {
    const std::string red = bits == 24 ? std::string("\0\0\xFF", 3) : std::string("\0\0\xFF\0", 4);
    const std::string blue = bits == 24 ? std::string("\xFF\0\0", 3) : std::string("\xFF\0\0\0", 4);
    const std::int32_t size = 54 + (width * bits / 8 + 3) / 4 * 4 * std::abs(height);
    std::string bytes = "BM" + LittleEndian(size, 4) + LittleEndian(0, 4) + LittleEndian(54, 4) +
                        LittleEndian(40, 4) + LittleEndian(width, 4) + LittleEndian(height, 4) +
                        LittleEndian(1, 2) + LittleEndian(bits, 2) + LittleEndian(0, 24);
    const std::int32_t rows = std::abs(height);
    for (std::int32_t row = 0; row < rows; ++row) {
        const bool isTop = height < 0 ? row < rows / 2 : row >= rows / 2;
        std::string line;
        for (std::int32_t i = 0; i < width; ++i) {
            line += isTop ? red : blue;
        }
        bytes += line + std::string((4 - line.size() % 4) % 4, '\0');
    }
    return bytes;
}

class PictureMakerTest : public testing::Test {
protected:
    CString Put(const std::string& bytes) {
        return InterfaceRoot(m_folder.Write("picture", bytes));
    }
    Picture Decoded(const std::string& jpeg) {
        BoundedFile file(m_folder.Write("made.jpg", jpeg), kGoesOn, {});
        return ReadPicture(file, 1024, 1024);
    }
    std::string Made(const std::string& bytes) { return m_maker.Make(Put(bytes)); }

    test::TempFolder m_folder;
    PictureMaker m_maker{kBounds, kGoesOn};
};

/// Whether a pixel is nearly of that colour.
bool IsAt(const Picture& picture, std::int32_t row, int red, int blue) {
    const auto at = static_cast<std::size_t>(row * picture.width + picture.width / 2) * 3;
    const auto part = [&](std::size_t i) {
        return static_cast<int>(static_cast<unsigned char>(picture.pixels.at(at + i)));
    };
    return std::abs(part(0) - red) < 40 && part(1) < 40 && std::abs(part(2) - blue) < 40;
}

TEST_F(PictureMakerTest, KeepsColoursAndSidesAndNeverEnlarges) {
    struct Case {
        std::string bytes;
        std::int32_t width, height;
    };
    const Case cases[] = {
        {Bitmap(80, 60), 80, 60},
        {Bitmap(81, -60), 81, 60},
        {Bitmap(80, 60, 32), 80, 60},
        {Bitmap(640, 480), 160, 120},
        {Bitmap(400, 100), 160, 40},
        {Bitmap(16, -1000), 2, 120},
        {m_maker.Make(Put(Bitmap(80, 60))), 80, 60},
    };
    for (const Case& each : cases) {
        const Picture picture = Decoded(Made(each.bytes));
        EXPECT_TRUE(picture.width == each.width && picture.height == each.height)
            << picture.width << " x " << picture.height;
        EXPECT_TRUE(IsAt(picture, 0, 255, 0)) << "red above";
        EXPECT_TRUE(IsAt(picture, picture.height - 1, 0, 255)) << "blue below";
    }
}

TEST_F(PictureMakerTest, WhatIsNoPictureFailsInBoundedTime) {
    std::string palette = Bitmap(8, 8);
    palette[28] = 8;
    const std::string jpeg = Made(Bitmap(80, 60));
    std::string cases[] = {
        "",
        "BM",
        "no picture",
        Bitmap(80, 60).substr(0, 53),
        Bitmap(0, 0),
        Bitmap(1, 1).replace(18, 8, LittleEndian(65535, 4) + LittleEndian(65535, 4)),
        Bitmap(1, 1).replace(18, 8, LittleEndian(INT32_MAX, 4) + LittleEndian(INT32_MIN, 4)),
        Bitmap(80, 60).replace(10, 4, LittleEndian(UINT32_MAX, 4)),
        "\x89PNG\r\n\x1A\n" + std::string(1000, '\xFF'),
        "\x89PNG\r\n\x1A\n" + LittleEndian(13 << 24, 4) + "IHDR" + std::string(8, '\x7F') +
            "\x08\x02",
        jpeg.substr(0, 40),
        "\xFF\xD8\xFF" + std::string(100'000, '\xFF'),
        std::string(4, '\0') + "ftypqt  " + std::string(100'000, '\xFF'),
        "RIFF" + LittleEndian(-1, 4) + "AVI LIST" + std::string(100'000, '\x7F'),
    };
    for (const std::string& bytes : cases) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_NE(ErrorOf([&] { static_cast<void>(Made(bytes)); }), "") << bytes.substr(0, 40);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    }
}

TEST_F(PictureMakerTest, FilesThatAreNoneAndBoundsThatAreNoneFail) {
    for (const CString& path : {CString(L""), CString(L"relative"), InterfaceRoot("/dev/zero"),
                                InterfaceRoot(m_folder.MakeFolder("folder"))}) {
        EXPECT_THAT(ErrorOf([&] { m_maker.Make(path); }), HasSubstr("There is no file"));
    }
    for (const SIZE& bounds : {SIZE{0, 0}, SIZE{-1, 100}, SIZE{100, 15}, SIZE{1025, 100}}) {
        EXPECT_NE(ErrorOf([&] { PictureMaker(bounds, kGoesOn); }), "");
    }
    PictureMaker given(kBounds, [] { return false; });
    EXPECT_THAT(ErrorOf([&] { given.Make(Put(Bitmap(640, 480))); }), HasSubstr("Cancelled"));
}

} // namespace
} // namespace nqp2::worker
