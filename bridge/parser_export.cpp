// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/ask_proxy.h"
#include "bridge/messages.h"
#include "bridge/RecordedClips.h"
#include "parser/NQP2Parser.h"
#include "platform/guard.h"

#include <algorithm>

using nqp2::bridge::AskProxy;
using nqp2::bridge::OneWhenDone;

using Proxy = CTNQ264BitSupport;

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
    return platform::Guarded(CStringArray(), [&] {
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

} // namespace nqp2
