// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Requests of a hostile host to the worker, on a scratch card with foreign files. Whole messages of
// any bytes are the business of another target; here their fields lead into every operation.
//
// The input: a byte of choices, the length of the card's description in two bytes, the card
// (MemoryFiles::AddFrom), then requests, each a byte for its number and what its fields take.

#include "bridge/messages.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/memory_files.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"
#include "worker/operations.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>
#include <vector>

namespace nqp2::fuzz {
namespace {

namespace fs = std::filesystem;
using bridge::MessageId;

constexpr std::size_t kMostRequests = 12;
constexpr std::size_t kMostFiles = 40;
constexpr std::size_t kMostData = 300'000; ///< of one piece of a recording

/// Folders in memory where the system has any, deep enough that no name which an input can hold
/// leads out of them.
class Scratch {
public:
    Scratch() {
        const fs::path shared = "/dev/shm";
        std::string made =
            (fs::is_directory(shared) ? shared : fs::temp_directory_path()) / "nqp2-fuzz-XXXXXX";
        Require(mkdtemp(made.data()) != nullptr, "there is a folder");
        m_top = made;
        m_place = m_top / "1/2/3/4/5/6/7/8/9/10/11/12";
        fs::create_directories(m_place / "outside");
        std::ofstream(m_place / "outside" / "kept") << "kept";
        MapDrive(L"X", (m_place / "card").c_str());
    }
    ~Scratch() {
        std::error_code ignored;
        fs::remove_all(m_top, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    [[nodiscard]] std::string Path(const std::string& name) const { return m_place / name; }

    void Fill(ByteSource& files, bool hasLink) {
        fs::remove_all(m_place / "card");
        fs::remove_all(m_place / "other");
        fs::create_directories(m_place / "other");
        fs::create_directories(m_place / "card/CONTENTS/CLIP");
        MemoryFiles card;
        card.AddFrom(files, "");
        std::size_t count = 0;
        for (const auto& [path, content] : card.files) {
            if (path.find("..") == std::string::npos && count++ < kMostFiles) {
                Write(m_place / ("card" + path), content);
            }
        }
        std::error_code taken;
        if (hasLink) {
            fs::create_symlink(m_place / "outside", m_place / "card/CONTENTS/PROXY", taken);
        }
    }

    void Check() const {
        const std::vector<std::string> expected = {"card", "other", "outside"};
        Require(NamesIn(m_place) == expected, "nothing is made beside the folders that are named");
        Require(NamesIn(m_place / "outside") == std::vector<std::string>{"kept"} &&
                    fs::file_size(m_place / "outside/kept") == 4,
                "nothing behind a link is changed");
        for (fs::path above = m_place.parent_path(); above != m_top; above = above.parent_path()) {
            Require(NamesIn(above).size() == 1, "no name leads out of its folder");
        }
    }

private:
    static std::vector<std::string> NamesIn(const fs::path& folder) {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    /// What cannot be written, as a file below a file, is left out.
    static void Write(const fs::path& path, const std::string& content) {
        std::error_code failed;
        fs::create_directories(path.parent_path(), failed);
        if (!failed && path.has_filename()) {
            std::ofstream(path, std::ios::binary) << content;
        }
    }

    fs::path m_top;
    fs::path m_place;
};

/// What one host asks.
class Host {
public:
    Host(const Scratch& scratch, ByteSource& input) : m_scratch(scratch), m_input(input) {}

    void Ask() {
        const auto& request = kRequests[m_input.Byte() % std::size(kRequests)];
        (this->*request)();
    }

private:
    using Request = void (Host::*)();
    static const Request kRequests[20];

    CString Root() {
        constexpr const char* kFolders[] = {"card", "card", "other", "missing/deeper",
                                            "card/CONTENTS"};
        constexpr const wchar_t* kOthers[] = {L"X", L"X:\\", L"", L"relative", L"Z:\\"};
        const std::uint8_t choice = m_input.Byte();
        if (choice < 2 * std::size(kFolders)) {
            return InterfaceRoot(m_scratch.Path(kFolders[choice / 2U]));
        }
        return choice < 0xC0 ? CString(kOthers[choice % std::size(kOthers)])
                             : InterfaceRoot(m_scratch.Path("card/" + OwnName()));
    }

    std::string OwnName() { return std::string(m_input.Take(m_input.Byte() % 24U)); }

    CString Name() {
        constexpr const char* kNames[] = {"0001AA", "0001AA", "0002BB", "0003CC",    "0001aa",
                                          "..",     "",       "P001ED", "../0001AA", "._0001AA"};
        const std::uint8_t choice = m_input.Byte();
        return TextFromBytes(choice < 0xC0 ? kNames[choice % std::size(kNames)] : OwnName());
    }

    std::int32_t Number() { return static_cast<std::int32_t>(m_input.Number(4)); }

    /// Bytes that may be many: a few of the input, repeated.
    const std::vector<unsigned char>& Data() {
        const std::size_t count = m_input.Number(3) % kMostData;
        const std::string_view some = m_input.Take(m_input.Byte());
        m_data.assign(count, 0);
        for (std::size_t i = 0; i < count && !some.empty(); ++i) {
            m_data[i] = static_cast<unsigned char>(some[i % some.size()]);
        }
        return m_data;
    }

    template <class Message>
    void Send(MessageId id, const Message& message) {
        m_request.resize(static_cast<std::size_t>(message.Size()) + 4096);
        m_reply.resize(bridge::BufferMessage::kFrameBytes + 4096U);
        const std::int32_t length =
            message.Save(m_request.data(), static_cast<std::int32_t>(m_request.size()));
        const auto capacity = static_cast<std::int32_t>(m_reply.size());
        const worker::Answer write =
            worker::Dispatch(m_operations, bridge::Number(id), m_request.data(), length);
        const std::int32_t answered = write(m_reply.data(), capacity);
        Require(answered >= 0 && answered <= capacity, "an answer fits its buffer");
        Message answer;
        Require(length == 0 || (answered > 0 && answer.Restore(m_reply.data(), answered) > 0),
                "a sound request has a sound answer");
        Require(answer.result == bridge::kDone || answer.result == bridge::kRefused,
                "the answer is yes or no");
    }

    void SetSystemType() {
        bridge::SystemTypeMessage message;
        message.standard = m_input.Byte() % 8;
        Send(MessageId::SetSystemType, message);
    }
    void Import() {
        bridge::ImportFileMessage message;
        message.info.text1 = Root();
        message.info.text2 = Name();
        message.info.text3 = Root();
        message.info.value2 = m_input.Byte() % 2U;
        Send(MessageId::ImportFile, message);
    }
    void Export() {
        bridge::ExportFileMessage message;
        message.info.text1 = Root();
        message.info.text3 = Root();
        for (int left = m_input.Byte() % 4; left > 0; --left) {
            message.names.Add(Name());
        }
        Send(MessageId::ExportFile, message);
    }
    void Delete() {
        bridge::TextPairMessage message;
        message.second = Root();
        message.first = Name();
        Send(MessageId::DeleteFile, message);
    }
    void GetSerialNumber() {
        bridge::TextPairMessage message;
        message.first = Root();
        Send(MessageId::GetP2SerialNumber, message);
    }
    template <MessageId Id, class Message, int Most = INT32_MAX>
    void SendValue() {
        Message message;
        message.value = std::min(Number() >> m_input.Byte() % 32, Most);
        Send(Id, message);
    }
    template <MessageId Id, class Message>
    void SendEmpty() {
        Send(Id, Message());
    }
    void SetParameters() {
        bridge::RTExportParamMessage message;
        message.codeType = m_input.Byte();
        message.wave.wFormatTag = 1; // PCM
        message.wave.nChannels = static_cast<std::uint16_t>(m_input.Byte() % 20);
        message.wave.wBitsPerSample = m_input.Byte();
        message.wave.nSamplesPerSec = m_input.Byte() % 2 == 0 ? 48000 : m_input.Number(4);
        message.text1 = Root();
        message.text2 = Name();
        message.text3 = Name();
        message.value1 = m_input.Number(4);
        message.value2 = m_input.Byte();
        message.relatedClips.SetSize(m_input.Byte() % 3);
        Send(MessageId::SetRTExportParam, message);
    }
    void AddData() {
        bridge::AVDataMessage message;
        message.streamType = m_input.Byte() % 4;
        const std::vector<unsigned char> video = Data();
        message.data1 = video.data();
        message.length1 = static_cast<std::uint32_t>(video.size());
        const std::vector<unsigned char>& sound = Data();
        message.data2 = sound.data();
        message.length2 = static_cast<std::uint32_t>(sound.size());
        message.flag = static_cast<std::int32_t>(sound.size() % 5); // units of type 3
        Send(MessageId::AddRTExportAVData, message);
    }
    void StopRecording() {
        bridge::StopRTExportMessage message;
        message.first = m_input.Byte() % 2;
        Send(MessageId::StopRTExport, message);
    }
    void CreateIcon() {
        bridge::IconMessage message;
        message.first = Root();
        message.second = Name();
        message.size = {m_input.Byte(), m_input.Byte()};
        const std::vector<unsigned char> bits(bridge::PixelBytes(message.size), m_input.Byte());
        message.bits = bits.data();
        Send(MessageId::CreateIconBmp, message);
    }
    void GetBaseClipInfo() {
        bridge::BaseClipInfoMessage message;
        message.path = Root() + L"\\CONTENTS\\VIDEO\\" + Name() + L".MXF";
        message.info.clipText1 = Name();
        Send(MessageId::GetP2BaseClipInfo, message);
    }

    void MakePictures() {
        bridge::PicturesMessage message;
        for (int left = m_input.Byte() % 4; left > 0; --left) {
            message.paths.Add(Root() + L"\\CONTENTS\\ICON\\" + Name() + L".BMP");
        }
        message.bounds = {m_input.Byte(), m_input.Byte()};
        Send(MessageId::MakePictures, message);
    }

    void DescribeMedia() {
        bridge::MediaMessage message;
        message.path = Root() + L"\\CONTENTS\\VIDEO\\" + Name() + L".MXF";
        Send(MessageId::DescribeMedia, message);
    }

    void Rewrap() {
        bridge::RewrapMessage message;
        RewrapRequest& request = message.request;
        request.target = Root() + L"\\" + Name() + L".mov";
        request.container = static_cast<RewrapContainer>(m_input.Byte() % 5);
        request.join = static_cast<RewrapJoin>(m_input.Byte() % 3);
        request.oneTrack = m_input.Byte() % 2 == 1;
        request.rate = {m_input.Byte(), m_input.Byte()};
        request.timecode = Name();
        request.date = Name();
        request.title = Name();
        request.interlaced = m_input.Byte() % 2 == 1;
        request.aspectWidth = m_input.Byte();
        request.aspectHeight = m_input.Byte();
        for (int left = m_input.Byte() % 3; left > 0; --left) {
            RewrapPart part;
            part.video = Root() + L"\\CONTENTS\\VIDEO\\" + Name() + L".MXF";
            part.first = m_input.Byte();
            part.frames = m_input.Byte();
            part.promised = m_input.Byte();
            for (int sounds = m_input.Byte() % 3; sounds > 0; --sounds) {
                part.sounds.Add(Root() + L"\\CONTENTS\\AUDIO\\" + Name() + L"00.MXF");
            }
            request.parts.Add(part);
            request.chapters.Add({m_input.Byte(), Name()});
        }
        Send(MessageId::Rewrap, message);
    }

    const Scratch& m_scratch;
    ByteSource& m_input;
    worker::ProgressLink m_progress;
    worker::Operations m_operations{m_progress};
    std::vector<unsigned char> m_data;
    std::vector<unsigned char> m_request;
    std::vector<unsigned char> m_reply;
};

const Host::Request Host::kRequests[] = {
    &Host::SetSystemType,
    &Host::Import,
    &Host::SendEmpty<MessageId::GetUploadOffset, bridge::UploadOffsetMessage>,
    &Host::Export,
    &Host::Delete,
    &Host::GetSerialNumber,
    &Host::SendValue<MessageId::SetWriteBlockSize, bridge::ValueMessage, 1 << 20>,
    &Host::SendValue<MessageId::StartRTExport, bridge::ValueMessage>,
    &Host::SendValue<MessageId::SetRTExportExtraParam, bridge::ValueMessage>,
    &Host::SetParameters,
    &Host::AddData,
    &Host::SendValue<MessageId::AddRTExportAVDataForBuf, bridge::BufferMessage>,
    &Host::StopRecording,
    &Host::CreateIcon,
    &Host::SendEmpty<MessageId::CloseAllFile, bridge::ResultMessage>,
    &Host::SendEmpty<MessageId::GetLastError, bridge::ErrorTextMessage>,
    &Host::GetBaseClipInfo,
    &Host::MakePictures,
    &Host::DescribeMedia,
    &Host::Rewrap,
};

} // namespace

void TestInput(Input data) {
    static Scratch scratch;
    ByteSource input(data);
    const bool hasLink = input.Byte() % 2 == 1;
    ByteSource files(input.Bytes(input.Number(2)));
    scratch.Fill(files, hasLink);
    {
        Host host(scratch, input);
        for (std::size_t i = 0; i < kMostRequests && !input.IsEmpty(); ++i) {
            host.Ask();
        }
    }
    scratch.Check();
}

} // namespace nqp2::fuzz
