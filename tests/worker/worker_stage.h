// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "platform/unicode.h"
#include "tests/channel/channel_test.h"
#include "tests/support/child_process.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"

namespace nqp2::worker {

/// A card with a whole clip, a folder to bring it to, and where the worker that does it listens.
struct WorkerStage {
    WorkerStage() {
        AddWholeClip(card, "0001AB");
        R8P2Parser_SetSysInterface(HostInterface().systemObject, HostInterface().table);
    }
    ~WorkerStage() {
        R8XDCAMParser_ResetSysInterface();
        R8P2Parser_SetSysInterface(nullptr, nullptr);
        LeaveWorker();
    }
    WorkerStage(const WorkerStage&) = delete;
    WorkerStage& operator=(const WorkerStage&) = delete;

    pid_t StartWorker() const {
        EXPECT_TRUE(UseWorker({.program = NQP2_WORKER_PROGRAM, .socket = socket.Socket()}));
        return test::ChildNamed("nqp2-worker");
    }
    [[nodiscard]] CString To() const { return InterfaceRoot(to.Path()); }
    [[nodiscard]] stu_R8P2TransInfo Transfer(const CString& cardRoot, const CString& folder) const {
        stu_R8P2TransInfo info;
        info.text1 = cardRoot;
        info.text2 = L"0001AB";
        info.text3 = folder;
        return info;
    }
    bool Import(CNQP2Parser& parser) const {
        auto info = Transfer(card.Root(), To());
        return parser.ImportFile(info) == 0;
    }

    test::SocketFolder socket;
    test::CardBuilder card;
    test::TempFolder to;
};

/// One that is connected for as long as it lives.
class OpenParser : public CNQP2Parser {
public:
    OpenParser() { EXPECT_EQ(Init(), 0); }
    ~OpenParser() { Release(); }
    OpenParser(const OpenParser&) = delete;
    OpenParser& operator=(const OpenParser&) = delete;

    std::string LastError() { return platform::Utf8FromText(GetLastError().View()); }

    bool StartRecording(const CString& cardRoot) {
        CArray<stu_R8PRelationClipInfo> related;
        int numbers[8] = {};
        const WAVEFORMATEX wave{1, 2, 48000, 192000, 4, 16, 0};
        return SetRTExportParam(CT_DV25_50I, {}, wave, numbers, cardRoot, L"", L"", 0, related, 0,
                                0) == 1 &&
               StartRTExport(2) == 1;
    }
    bool AddFrame(std::string unit) {
        std::string sound(std::size_t{1920} * 4, 's');
        return AddRTExportAVData(2, reinterpret_cast<unsigned char*>(unit.data()),
                                 static_cast<std::uint32_t>(unit.size()),
                                 reinterpret_cast<unsigned char*>(sound.data()),
                                 static_cast<std::uint32_t>(sound.size()), 0) == 1;
    }
};

} // namespace nqp2::worker
