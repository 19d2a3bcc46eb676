// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Bytes as a message or an exchanged record: the first byte picks which.

#include "bridge/messages.h"
#include "fuzz/fuzz_target.h"
#include "NQP2ParserU/ClipListRecords.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace nqp2::fuzz {
namespace {

using Bytes = std::vector<unsigned char>;

template <class Message>
Bytes Saved(const Message& message, std::size_t capacity) {
    Bytes bytes(capacity);
    const std::int32_t written = message.Save(bytes.data(), static_cast<std::int32_t>(capacity));
    bytes.resize(static_cast<std::size_t>(written));
    return bytes;
}

/// What was restored must come out as the very bytes that were read; the reader has put the 0
/// behind each text in place.
template <class Message>
void TryMessage(Bytes image) {
    Message message;
    const Bytes fresh = Saved(message, 4096);
    const auto length = static_cast<std::int32_t>(image.size());
    const std::int32_t read = message.Restore(image.data(), length);
    Require(read >= 0 && read <= length, "no more is read than there is");
    if (read == 0) {
        Require(Saved(message, 4096) == fresh, "a broken image changes nothing");
        return;
    }
    image.resize(static_cast<std::size_t>(read));
    Require(message.Size() <= read, "the size figure is never more than a whole image");
    Require(Saved(message, image.size()) == image, "a message survives");
    Require(Saved(message, image.size() - 1).empty(), "no room, no image");
}

void TryClipListEntry(Bytes image) {
    _BLCLIP clip;
    unsigned char* at = image.data();
    const std::int32_t read = clip.RestoreFromBuf(at, static_cast<std::int32_t>(image.size()));
    Require(at == image.data() + read, "the pointer moves behind what was read");
    if (read == 0) {
        Require(clip.GetSize() == _BLCLIP().GetSize(), "a broken image changes nothing");
        return;
    }
    Require(clip.GetSize() == read, "the size is that of the image");
    Bytes saved(static_cast<std::size_t>(read));
    at = saved.data();
    clip.SaveToBuf(at);
    Require(std::equal(saved.begin(), saved.end(), image.begin()), "an entry survives");
}

using Trial = void (*)(Bytes image);
constexpr Trial kTrials[] = {
    TryMessage<bridge::SystemTypeMessage>,    TryMessage<bridge::ResultMessage>,
    TryMessage<bridge::ProgressMessage>,      TryMessage<bridge::ImportFileMessage>,
    TryMessage<bridge::UploadOffsetMessage>,  TryMessage<bridge::ExportFileMessage>,
    TryMessage<bridge::TextPairMessage>,      TryMessage<bridge::ValueMessage>,
    TryMessage<bridge::RTExportParamMessage>, TryMessage<bridge::StopRTExportMessage>,
    TryMessage<bridge::BufferMessage>,        TryMessage<bridge::AVDataMessage>,
    TryMessage<bridge::IconMessage>,          TryMessage<bridge::ErrorTextMessage>,
    TryMessage<bridge::BaseClipInfoMessage>,  TryClipListEntry,
    TryMessage<bridge::ConnectionRecord>,     TryMessage<bridge::PicturesMessage>,
    TryMessage<bridge::MediaMessage>,         TryMessage<bridge::RewrapMessage>,
};

} // namespace

void TestInput(Input input) {
    if (input.size() > 1) {
        // A copy of its own, so that the sanitizer sees each step beyond its end.
        kTrials[input[0] % std::size(kTrials)]({input.begin() + 1, input.end()});
    }
}

} // namespace nqp2::fuzz
