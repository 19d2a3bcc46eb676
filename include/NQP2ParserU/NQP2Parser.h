// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/DiskFormat.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/FixedTypes.h"
#include "NQP2ParserU/Guid.h"
#include "NQP2ParserU/ImpCallBack.h"
#include "NQP2ParserU/MediaHeaders.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/P2SegInfo.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "NQP2ParserU/ScanReport.h"

#include <cstdint>

class CMarkupMSXML;
class CNQXmlParser;
class CTNQ264BitSupport;

namespace nqp2::parser {
struct NQP2ParserPeer; ///< the tests' view of what is private
}
namespace nqp2::bridge {
struct ProxyOf; ///< how functions beside the class reach the worker
}

/// Reads one camera card at a time and hands what must be written to the worker process.
///
/// Life: construct, Init, read, Release, destroy. No locks: one object is used from one thread at
/// a time. Reading operations take the card's root ("E", "E:", "/media/card", "/media/card:"),
/// return 0 for success and 1 when the card cannot be read, and append to the caller's arrays
/// without clearing them. No exception leaves them.
///
/// What writes to a card or needs the worker process goes through the parser's worker proxy and
/// waits for the worker's answer. The proxy is there from construction to Release and again after
/// Init; it takes the channel functions that R8P2Parser_SetSysInterface has set when it is made.
/// Each of those operations states what it returns when the worker succeeded, when it refused, when
/// the channel failed (no worker, or it is gone) and without a proxy: they differ.
class NQP2_API CNQP2Parser {
public:
    /// Opens the way to the worker; works without one too.
    CNQP2Parser() noexcept;
    /// Closes the way to the worker.
    ~CNQP2Parser();
    CNQP2Parser(const CNQP2Parser&) = delete;
    /// Copies the six fields as they are: both objects then share what they point to, and only one
    /// of them may release it. The worker proxy is closed by the first of them that is released or
    /// destroyed, and lives as long as the last.
    CNQP2Parser& operator=(const CNQP2Parser& other) noexcept;

    /// Creates what is missing of the working objects. Returns 0.
    __int64 Init();
    /// Destroys the working objects; may be called twice. Must be called before destruction, which
    /// leaves the XML objects alone. Returns 0.
    __int64 Release() noexcept;

    /// Reads CONTENTS/CLIP/`clipName`.XML into `clip`, which is not reset first. Returns 0, or 1
    /// before Init and when the file does not load.
    __int64 LoadClipInfo(CString root, CString clipName, _tag_P2Clip& clip);
    /// The same. When 1 is returned `report.failure` says why, and `report.skipped` receives the
    /// file if there is one, with the place in it where it is no XML.
    __int64 LoadClipInfo(CString root, CString clipName, _tag_P2Clip& clip,
                         nqp2::ScanReport& report);

    /// Appends every clip whose metadata file loads, in the file system's order. With
    /// `keepDigit` 0 each record's ClipIdDigit becomes -1. Returns 0, or 1 when the card has no
    /// CONTENTS folder.
    __int64 LoadClipEx(CString root, CArray<_tag_P2Clip>& clips, int keepDigit) noexcept;
    /// The same scan; `report` receives (appended) what was left out and which takes the clips
    /// form. When 1 is returned its `failure` says why, here and in all that take a report.
    __int64 LoadClipEx(CString root, CArray<_tag_P2Clip>& clips, int keepDigit,
                       nqp2::ScanReport& report) noexcept;

    /// The card's code type and rate family from its first clip file that loads, the code type from
    /// the codec name alone. Returns 0, with the outputs untouched when no file loads; 1 before
    /// Init and when the card has no CONTENTS folder.
    __int64 GetDiskFormat(CString root, eCodeType& codeType, eP2_VIDEO_STANDARD& standard);
    /// All that the card's first clip file tells, the texts as they are in it. Same result; when it
    /// is 1, `format.failure` says why.
    __int64 GetDiskFormat(CString root, nqp2::DiskFormat& format);

    /// Whether a recording of that many frames fits on the card: 1 or 0. `audioFlag` 0 counts
    /// 16-bit audio, anything else 24-bit; always four channels. 0 for a card without contents
    /// folder and for a recording whose bytes 64 bits cannot count.
    int GetDiscFree(CString drive, eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                    __int64 frames);
    /// The same; also the card's free bytes and the frames that fit in them, these counted with
    /// 16-bit audio whatever the flag says.
    int GetDiscFree(CString drive, eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                    __int64 frames, __int64& freeBytes, __int64& maxFrames);
    /// The first frame count at which a video file reaches the size limit, and in `size` the bytes
    /// that the recording then takes. 0 and size 0 for a code type without a frame size.
    __int64 GetMaxFrameBy4GBSize(eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                                 __int64& size) noexcept;
    /// Frames that fit in the space; zero or negative below the fixed cost of a recording.
    __int64 CountFramesFromSpace(eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                                 __int64 space) noexcept;
    /// Bytes that a recording takes. Results beyond 64 bits are cut off at the largest number.
    __int64 CountSpaceFromFrames(eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                                 __int64 frames) noexcept;

    /// Appends the edit lists in root/EDITLIST that can be read. Returns 0, or 1 before Init and
    /// when there is no such folder.
    __int64 LoadEdl(CString root, CArray<tag_P2EDL>& edls);
    /// Appends the edit lists in root/EDITLIST and root/CONTENTS/EDITLIST; `report` receives
    /// (appended) what was left out and which folder could not be read. Returns 0, or 1 before Init
    /// and when neither folder can be reached.
    __int64 LoadCardEdls(const CString& root, CArray<tag_P2EDL>& edls, nqp2::ScanReport& report);
    /// Writes an edit list into root/EDITLIST, under `name` when `useName` is nonzero and the name
    /// is not empty, else under the next free name, which replaces no file. Returns 0, or 1 for any
    /// failure.
    __int64 SaveToEdl(const CString& root, const tag_P2EDL& edl, int useName, CString name);
    /// The same; when 1 is returned `report.failure` says why.
    __int64 SaveToEdl(const CString& root, const tag_P2EDL& edl, int useName, const CString& name,
                      nqp2::ScanReport& report);
    /// Writes an edit list among those that LoadCardEdls reads: into root/EDITLIST, or into
    /// root/CONTENTS/EDITLIST where the card has that folder alone. An empty `name` means the
    /// next number that no list in either folder has; a file that is there is never replaced then.
    /// `saved` receives the interface path of the file. Returns 0, or 1 for any failure.
    __int64 SaveCardEdl(const CString& root, const tag_P2EDL& edl, const CString& name,
                        CString& saved);
    /// The same; when 1 is returned `report.failure` says why.
    __int64 SaveCardEdl(const CString& root, const tag_P2EDL& edl, const CString& name,
                        CString& saved, nqp2::ScanReport& report);

    /// Appends the clips of an AVCHD card, a disc folder or a camera's folder: BDMV clip
    /// information and the camera files of two makers (the worker describes these). Returns 0, or 1
    /// for an empty root and when none of the folders is there. May be called before Init.
    __int64 LoadAVCHDClip(const CString& root, CArray<_tag_P2Clip>& clips) noexcept;
    /// The same scan; `report` receives (appended) what was left out, and as takes the recordings
    /// that a camera split into several clips, as the card's playlists tell.
    __int64 LoadAVCHDClip(const CString& root, CArray<_tag_P2Clip>& clips,
                          nqp2::ScanReport& report);
    /// Fills `clip`, which is not reset first, from the clip information CLIPINF/`clipName`.CPI,
    /// the card's playlists and the beginning of the clip's stream. Returns 1, or 0 with the record
    /// untouched when the clip cannot be decoded.
    int GetAVCHDCPIMetadata(const CString& root, const CString& clipName,
                            _tag_P2Clip& clip) noexcept;
    /// The same for CLIPINF/`clipName`.clpi of a disc, with its playlists (.mpls).
    int GetAVCHDClpiDataInfo(const CString& root, const CString& clipName,
                             _tag_P2Clip& clip) noexcept;

    /// Appends the AVCHD card's playlists as edit lists. Returns 0, or 1 when there is no playlist
    /// folder.
    __int64 LoadAVCHDEdl(CString card, CArray<tag_P2EDL>& edls);
    /// Appends the playlists of AVCHD cards (.MPL) and behind them those of discs (.mpls), each in
    /// the order of the playlist folder. An item whose clip cannot be read is an event with the
    /// clip's name, its length and, in a fresh clip record, its rate. `report` receives (appended)
    /// what was left out and which lists have such items. Returns 0, or 1 for an empty card and
    /// when there is no playlist folder.
    __int64 LoadCardPlaylists(const CString& card, CArray<tag_P2EDL>& edls,
                              nqp2::ScanReport& report);
    /// Fills `edl` from PLAYLIST/`name`.MPL: an event for each item whose clip can be read, with
    /// that clip's record, all at offset 0 and with exclusive out points. Returns 1, or 0 with the
    /// record untouched when the playlist cannot be decoded or is empty.
    int GetAVCHDMPLMetadata(const CString& card, const CString& name, tag_P2EDL& edl);

    /// Adds segments to the ingest lists of one or more cards: root/USERDATA/`fileName` on each.
    /// Returns 0, or 1 for an empty file name and when a card's folder cannot be made or is kept
    /// locked by another program (cards before it are written). Whether a list could be saved is
    /// not told; AddToIngestList tells.
    __int64 WriteIngestXML(const CString& fileName, nqp2::IngestRequest& request);

    /// The 64-digit identifier text of a GUID; a fresh one for an all-zero GUID.
    CString CreateUMID(_GUID guid);
    /// The GUID in an identifier's last 32 digits; all zero when they are not hexadecimal.
    static GUID GuidFromUMID(const CString& identifier);

    /// Finds a clip name whose video file does not exist on the card. Returns 1, or 0 with `name`
    /// untouched when every candidate is taken or the folder of video files cannot be read.
    int CheckName(CString& name, CString root) noexcept;
    /// The same search; `tried` receives the number of names that were looked at.
    int CheckName(CString& name, CString root, __int64& tried);

    /// Sets what is called with the progress of imports, on a thread of the library; nothing is
    /// called while either pointer is null. A call that is under way may end after this returns.
    /// Does nothing without a worker proxy.
    void SetImpCallBack(nqp2::ImpCallBack callback, void* context);
    /// Tells the worker the rate family of the system. Returns 1, also when the worker refused and
    /// without a worker proxy.
    int SetSystemType(eP2_VIDEO_STANDARD standard) noexcept;
    /// The worker's text for its last failure; "" when there is none, when the channel failed and
    /// without a worker proxy.
    CString GetLastError() noexcept;

    /// Lets the worker import what `info` describes; `info` becomes the record that it sends back.
    /// Returns 0 for success and 1 in all other cases.
    __int64 ImportFile(stu_R8P2TransInfo& info);
    /// Two offsets of the last transfer, 0 when the worker gives none. Returns 1 always.
    int GetUploadOffset(std::uint32_t& first, std::uint32_t& second) noexcept;
    /// Lets the worker export the named files; neither argument changes. Returns the worker's own
    /// number, -1 when the channel failed, 0 without a worker proxy and for null.
    int ExportFile(stu_R8P2TransInfo* info, CStringArray& names) noexcept;
    /// Lets the worker delete; `first` and `second` go to it in this order. Whatever comes of that,
    /// also without a worker proxy, the clip `first` is then taken out of the ingest list of the
    /// card with root `second`.
    void DeleteFileW(CString first, CString second) noexcept;
    /// Lets the worker make an icon file of width x height 24-bit pixels without row padding; null
    /// sends none. Returns 1 for success, 0 when the worker refused and without a worker proxy, -1
    /// when the channel failed.
    int CreateIconBmp(CString first, CString second, unsigned char* pixels, const tagSIZE& size);
    /// Sets in which pieces the worker writes, in bytes. Returns 1 when the worker answers 1, else
    /// 0, also for other numbers.
    int SetWriteBlockSize(const int& size);
    /// Lets the worker close all its files.
    void CloseAllFile();
    /// Asks the worker for a card's serial number, which every answer sets, a refusal too. Returns
    /// 0 for success and 1 in all other cases.
    __int64 GetP2SerialNumber(CString path, CString& serial);
    /// Asks the worker for the description of a camera file; `info` travels with the request and
    /// becomes what it sends back. Returns 1 for success, 0 when the worker refused and without a
    /// worker proxy, -1 when the channel failed.
    int GetP2BaseClipInfo(const CString& path, NQP2BaseClipInfo& info);

    /// Begins a real-time export: format of the stream and its target. What the values mean is the
    /// worker's business; `numbers` points to eight, null means zeros. The order of an export:
    /// this, SetRTExportExtraParam if wanted, StartRTExport, AddRTExportAVData as often as needed,
    /// StopRTExport. Returns 1 for success and 0 in all other cases, as the next three do.
    int SetRTExportParam(eCodeType codeType, BITMAPINFOHEADER bitmap, WAVEFORMATEX wave,
                         int* numbers, CString text1, CString text2, CString text3,
                         std::uint32_t value1, CArray<stu_R8PRelationClipInfo>& relatedClips,
                         int value2, std::uint32_t value3);
    /// Before StartRTExport: not 0 means 16:9 for a picture of standard definition, 0 means 4:3.
    int SetRTExportExtraParam(int value);
    /// Begins the export; `value` is the number of frames that are expected, 0 when not known.
    int StartRTExport(std::uint32_t value);
    /// Ends the export: a `first` of 0 keeps what was recorded as a clip, any other drops the clip
    /// in the making. Our worker does not use `second`.
    int StopRTExport(int first, int second);
    /// Asks the worker for data. On an answer `data` points to a buffer of the worker proxy that
    /// stays until the next such call or Release; else it is null. Returns 1 for success and 0 in
    /// all other cases.
    int AddRTExportAVDataForBuf(int value, unsigned char*& data) noexcept;
    /// Hands the worker video or audio data, lengths in bytes. Stream types 0 and 1 are refused
    /// with 0 and not sent. Returns 1 for success, 0 when the worker refused and without a worker
    /// proxy, -1 when the channel failed.
    int AddRTExportAVData(unsigned char streamType, unsigned char* first, std::uint32_t firstLength,
                          unsigned char* second, std::uint32_t secondLength, int flag);

private:
    friend struct nqp2::parser::NQP2ParserPeer;
    friend struct nqp2::bridge::ProxyOf;

    void InitP2CmgrDll();
    void MakeProxy();
    void CloseProxy() noexcept;
    void DropProxy() noexcept;
    int LoadClipFromXml(const CString& path, _tag_P2Clip& clip);
    __int64 GetDiskFormatEx(CString root, CString& frameRate, CString& codec, CString& editUnit,
                            int& class50);
    __int64 GetNewEdlName(CString root, CString id, CString& name);
    int CheckEdlSerialNumber(int number, const CString& pattern);
    __int64 GetClobalClipID(CString guidText, CString note, CString& identifier);
    int DeleteIngestNode(const CString& root, const CString& clipName) noexcept;
    static void DeleteSameMemo(CArray<_tag_P2Memo>& memos);

    CTNQ264BitSupport* m_pSupport = nullptr;
    CNQXmlParser* m_pXmlBuilder = nullptr;
    CMarkupMSXML* m_pMarkup = nullptr;
    void* m_hP2Cmgr = nullptr;
    void (*m_pfnDDP2CInit)() = nullptr;
    void (*m_pfnDDP2CLogSense)() = nullptr;
};
