// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "capacity/card_space.h"
#include "capacity/recording_cost.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "platform/guard.h"

using nqp2::capacity::CostOf;
using nqp2::capacity::RecordingCost;
using nqp2::platform::Guarded;

int CNQP2Parser::GetDiscFree(CString drive, eCodeType codeType, int audioFlag,
                             eP2_VIDEO_STANDARD standard, __int64 frames) {
    return Guarded(0, [&] {
        const auto freeBytes = nqp2::capacity::FreeBytes(drive);
        const RecordingCost cost = CostOf(codeType, audioFlag != 0, standard);
        return freeBytes && cost.Fits(frames, *freeBytes) ? 1 : 0;
    });
}

int CNQP2Parser::GetDiscFree(CString drive, eCodeType codeType, int audioFlag,
                             eP2_VIDEO_STANDARD standard, __int64 frames, __int64& freeBytes,
                             __int64& maxFrames) {
    return Guarded(0, [&] {
        const auto found = nqp2::capacity::FreeBytes(drive);
        if (!found) {
            return 0;
        }
        freeBytes = *found;
        // The frames that fit are counted with 16-bit audio whatever the flag says: kept, hosts
        // rely on it.
        maxFrames = CostOf(codeType, false, standard).Frames(freeBytes);
        return CostOf(codeType, audioFlag != 0, standard).Fits(frames, freeBytes) ? 1 : 0;
    });
}

__int64 CNQP2Parser::GetMaxFrameBy4GBSize(eCodeType codeType, int audioFlag,
                                          eP2_VIDEO_STANDARD standard, __int64& size) noexcept {
    const nqp2::capacity::FileLimit limit =
        nqp2::capacity::LimitOfFile(CostOf(codeType, audioFlag != 0, standard));
    size = limit.size;
    return limit.frames;
}

__int64 CNQP2Parser::CountFramesFromSpace(eCodeType codeType, int audioFlag,
                                          eP2_VIDEO_STANDARD standard, __int64 space) noexcept {
    return CostOf(codeType, audioFlag != 0, standard).Frames(space);
}

__int64 CNQP2Parser::CountSpaceFromFrames(eCodeType codeType, int audioFlag,
                                          eP2_VIDEO_STANDARD standard, __int64 frames) noexcept {
    return CostOf(codeType, audioFlag != 0, standard).Space(frames);
}
