// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/worker_proxy.h"
#include "media/media_tags.h"
#include "NQP2ParserU/MediaDescription.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/RecordedClips.h"
#include "NQP2ParserU/Rewrap.h"
#include "NQP2ParserU/SmallPictures.h"
#include "platform/guard.h"

#include <algorithm>
#include <utility>

using nqp2::bridge::kChannelFailed;
using nqp2::bridge::kDone;
using nqp2::bridge::kRefused;
using nqp2::platform::Guarded;

using Proxy = CTNQ264BitSupport;

// What the front ends make of a proxy's answers differs: kept, hosts rely on it.
namespace {

/// The answer of a call of the proxy; kRefused without one. A call that throws counts as a channel
/// that failed.
template <class Call>
std::int32_t AskProxy(Proxy* proxy, Call call) {
    return proxy == nullptr ? kRefused : Guarded(kChannelFailed, [&] { return call(*proxy); });
}

/// 1 for success.
int OneWhenDone(std::int32_t answer) {
    return answer == kDone ? 1 : 0;
}

/// 0 for success.
std::int64_t ZeroWhenDone(std::int32_t answer) {
    return answer == kDone ? 0 : 1;
}

} // namespace

void CNQP2Parser::SetImpCallBack(nqp2::ImpCallBack callback, void* context) {
    AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.SetImpCallBack(callback, context); });
}

int CNQP2Parser::SetSystemType(eP2_VIDEO_STANDARD standard) noexcept {
    AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.SetSystemType(standard); });
    return 1; // whatever came of it: kept, hosts rely on it
}

CString CNQP2Parser::GetLastError() noexcept {
    CString text;
    AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.GetLastError(text); });
    return text;
}

__int64 CNQP2Parser::GetP2SerialNumber(CString path, CString& serial) {
    return ZeroWhenDone(
        AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.GetP2SerialNumber(path, serial); }));
}

int CNQP2Parser::GetP2BaseClipInfo(const CString& path, NQP2BaseClipInfo& info) {
    return AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.GetP2BaseClipInfo(path, info); });
}

__int64 CNQP2Parser::ImportFile(stu_R8P2TransInfo& info) {
    return ZeroWhenDone(AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.ImportFile(info); }));
}

int CNQP2Parser::GetUploadOffset(std::uint32_t& first, std::uint32_t& second) noexcept {
    first = 0;
    second = 0;
    AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.GetUploadOffset(first, second); });
    return 1; // whatever came of it: kept, hosts rely on it
}

int CNQP2Parser::ExportFile(stu_R8P2TransInfo* info, CStringArray& names) noexcept {
    if (info == nullptr) {
        return 0;
    }
    return AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.ExportFile(*info, names); });
}

void CNQP2Parser::DeleteFileW(CString first, CString second) noexcept {
    AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.DeleteFileW(first, second); });
    // The other way round: kept, hosts rely on it.
    DeleteIngestNode(second, first);
}

int CNQP2Parser::CreateIconBmp(CString first, CString second, unsigned char* pixels,
                               const tagSIZE& size) {
    return AskProxy(m_pSupport, [&](Proxy& proxy) {
        nqp2::bridge::IconMessage message;
        message.first = first;
        message.second = second;
        message.bits = pixels;
        message.size = size;
        return proxy.CreateIconBmp(message);
    });
}

int CNQP2Parser::SetWriteBlockSize(const int& size) {
    return OneWhenDone(
        AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.SetWriteBlockSize(size); }));
}

void CNQP2Parser::CloseAllFile() {
    AskProxy(m_pSupport, [](Proxy& proxy) { return proxy.CloseAllFile(); });
}

int CNQP2Parser::SetRTExportParam(eCodeType codeType, BITMAPINFOHEADER bitmap, WAVEFORMATEX wave,
                                  int* numbers, CString text1, CString text2, CString text3,
                                  std::uint32_t value1,
                                  CArray<stu_R8PRelationClipInfo>& relatedClips, int value2,
                                  std::uint32_t value3) {
    return OneWhenDone(AskProxy(m_pSupport, [&](Proxy& proxy) {
        nqp2::bridge::RTExportParamMessage message;
        message.codeType = codeType;
        message.bitmap = bitmap;
        message.wave = wave;
        if (numbers != nullptr) {
            std::copy_n(numbers, std::size(message.numbers), message.numbers);
        }
        message.text1 = text1;
        message.text2 = text2;
        message.text3 = text3;
        message.value1 = value1;
        message.relatedClips = relatedClips;
        message.value2 = value2;
        message.value3 = value3;
        return proxy.SetRTExportParam(message);
    }));
}

int CNQP2Parser::SetRTExportExtraParam(int value) {
    return OneWhenDone(
        AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.SetRTExportExtraParam(value); }));
}

int CNQP2Parser::StartRTExport(std::uint32_t value) {
    return OneWhenDone(
        AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.StartRTExport(value); }));
}

int CNQP2Parser::StopRTExport(int first, int second) {
    return OneWhenDone(
        AskProxy(m_pSupport, [&](Proxy& proxy) { return proxy.StopRTExport(first, second); }));
}

int CNQP2Parser::AddRTExportAVDataForBuf(int value, unsigned char*& data) noexcept {
    data = nullptr;
    return OneWhenDone(AskProxy(
        m_pSupport, [&](Proxy& proxy) { return proxy.AddRTExportAVDataForBuf(value, data); }));
}

int CNQP2Parser::AddRTExportAVData(unsigned char streamType, unsigned char* first,
                                   std::uint32_t firstLength, unsigned char* second,
                                   std::uint32_t secondLength, int flag) {
    return AskProxy(m_pSupport, [&](Proxy& proxy) {
        nqp2::bridge::AVDataMessage message;
        message.streamType = streamType;
        message.data1 = first;
        message.length1 = firstLength;
        message.data2 = second;
        message.length2 = secondLength;
        message.flag = flag;
        return proxy.AddRTExportAVData(message);
    });
}

struct nqp2::bridge::ProxyOf {
    static CTNQ264BitSupport* Get(const CNQP2Parser& parser) { return parser.m_pSupport; }
};

namespace nqp2 {

CStringArray RecordedClips(const CNQP2Parser& parser) noexcept {
    return Guarded(CStringArray(), [&] {
        CString lines;
        AskProxy(bridge::ProxyOf::Get(parser),
                 [&](Proxy& proxy) { return proxy.GetRecordedClips(lines); });
        CStringArray names;
        while (!lines.IsEmpty()) {
            const int end = lines.Find(L'\n');
            names.Add(end < 0 ? lines : lines.Left(end));
            lines = end < 0 ? CString() : lines.Mid(end + 1);
        }
        return names;
    });
}

PicturesStatus MakeSmallPictures(const CNQP2Parser& parser, const CStringArray& files,
                                 const SIZE& bounds, CArray<SmallPicture>& pictures) noexcept {
    pictures.RemoveAll();
    const std::int32_t answer = AskProxy(bridge::ProxyOf::Get(parser), [&](Proxy& proxy) {
        bridge::PicturesMessage message;
        message.paths = files;
        message.bounds = bounds;
        return proxy.MakePictures(message, [&] {
            for (const bridge::PictureRecord& each : message.pictures) {
                pictures.Add({{each.data, each.data + each.length}, each.problem});
            }
        });
    });
    const bool isWhole = answer == kDone && pictures.GetSize() == files.GetSize();
    if (!isWhole) {
        pictures.RemoveAll();
    }
    return isWhole              ? PicturesStatus::Made
           : answer == kRefused ? PicturesStatus::Refused
                                : PicturesStatus::NoWorker;
}

DescriptionStatus DescribeMedia(const CNQP2Parser& parser, const CString& path,
                                ClipMetadata& metadata) noexcept {
    metadata = {};
    const std::int32_t answer = AskProxy(bridge::ProxyOf::Get(parser), [&](Proxy& proxy) {
        bridge::MediaMessage message;
        message.path = path;
        const std::int32_t done = proxy.DescribeMedia(message);
        if (done == kDone) {
            ClipMetadata told;
            told.tracks = std::move(message.tracks);
            told.others = std::move(message.texts);
            told.isCut = message.isCut != 0;
            media::TakeMembersFromTags(told);
            metadata = std::move(told);
        }
        return done;
    });
    return answer == kDone      ? DescriptionStatus::Described
           : answer == kRefused ? DescriptionStatus::Refused
                                : DescriptionStatus::NoWorker;
}

RewrapStatus Rewrap(const CNQP2Parser& parser, const RewrapRequest& request,
                    RewrapResult& result) noexcept {
    result = {};
    bool isCancelled = false;
    const std::int32_t answer = AskProxy(bridge::ProxyOf::Get(parser), [&](Proxy& proxy) {
        bridge::RewrapMessage message;
        message.request = request;
        const std::int32_t done = proxy.Rewrap(message);
        isCancelled = done == kRefused && message.isCancelled != 0;
        if (done == kDone) {
            result = std::move(message.written);
        }
        return done;
    });
    return answer == kDone      ? RewrapStatus::Written
           : isCancelled        ? RewrapStatus::Cancelled
           : answer == kRefused ? RewrapStatus::Refused
                                : RewrapStatus::NoWorker;
}

} // namespace nqp2
