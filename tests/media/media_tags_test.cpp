// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/media_tags.h"
#include "media/track_texts.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

namespace nqp2::media {
namespace {

TEST(MediaTags, PlacesAreDegreesWhateverTheirForm) {
    const struct {
        const wchar_t* text;
        const wchar_t* latitude;
        const wchar_t* longitude;
        const wchar_t* altitude;
    } kRows[] = {
        {L"+48.1372+011.5755+520.5/", L"+48.1372", L"+011.5755", L"+520.5"},
        {L"-33-070CRSWGS_84/", L"-33", L"-070", L""},
        {L"+4808.25-01134.5/", L"+48.137500", L"-11.575000", L""},
        {L"+480815-0113430-3", L"+48.137500", L"-11.575000", L"-3"},
        {L"+91+000", L"", L"", L""},
        {L"+48.1", L"", L"", L""},
        {L"+48.1.2+011", L"", L"", L""},
        {L"+481+011", L"", L"", L""},
        {L"+9+9", L"", L"", L""},
        {L"north", L"", L"", L""},
        {L"+", L"", L"", L""},
    };
    for (const auto& row : kRows) {
        ClipMetadata metadata;
        metadata.others.Add({L"Tags/location", row.text});
        TakeMembersFromTags(metadata);
        EXPECT_EQ(metadata.place.latitude, row.latitude) << CString(row.text);
        EXPECT_EQ(metadata.place.longitude, row.longitude) << CString(row.text);
        EXPECT_EQ(metadata.place.altitude, row.altitude) << CString(row.text);
        EXPECT_EQ(metadata.others.GetSize(), 1);
    }
}

TEST(MediaTags, TheBestTagFillsAMemberAndTheOthersStay) {
    ClipMetadata metadata;
    for (const MetadataText& text : {MetadataText{L"Tags/date", L"2025"},
                                     {L"Tags/creation_time", L"2026"},
                                     {L"make", L"no tag"},
                                     {L"Track[2]/Tags/make", L"of a track"},
                                     {L"Tags/make", L""}}) {
        metadata.others.Add(text);
    }
    TakeMembersFromTags(metadata);
    EXPECT_EQ(metadata.access.creationDate, L"2026");
    EXPECT_EQ(metadata.device.manufacturer, L"of a track");
    ASSERT_EQ(metadata.others.GetSize(), 3);
    EXPECT_EQ(metadata.others[0].text, L"2025");
}

TEST(TrackTexts, LeaveOutWhatIsNotKnown) {
    EXPECT_EQ(PictureText(0, 576, nullptr), L"");
    EXPECT_EQ(SoundText(1, 44100), L"1 channel, 44.1 kHz");
    EXPECT_EQ(SoundText(0, 192000), L"192 kHz");
    EXPECT_EQ(SoundText(6, -1), L"6 channels");
}

} // namespace
} // namespace nqp2::media
