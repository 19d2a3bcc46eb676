// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/CodeType.h"
#include "media/P2Clip.h"
#include "media/P2EDL.h"
#include "media/P2SegInfo.h"
#include "parser/DiskFormat.h"
#include "parser/ScanReport.h"
#include "platform/CArray.h"
#include "platform/CString.h"
#include "platform/Export.h"
#include "platform/FixedTypes.h"
#include "platform/Guid.h"

#include <cstdint>

class CMarkupMSXML;
class CNQXmlParser;
class CTNQ264BitSupport;
struct NQP2BaseClipInfo;

namespace nqp2::parser {
struct NQP2ParserPeer; ///< the tests' view of what is private
}

/// Progress of a running import: position and total, an abort flag that the callee may set to 1,
/// and the host's own pointer.
using ImpCallBack = void (*)(std::uint32_t position, std::uint32_t total, std::int32_t& abort,
                             void* context);

/// Reads one camera card at a time and hands what must be written to the worker process.
///
/// Life: construct, Init, read, Release, destroy. No locks: one object is used from one thread at
/// a time. Reading operations take the card's root ("E", "E:", "/media/card", "/media/card:"),
/// return 0 for success and 1 when the card cannot be read, and append to the caller's arrays
/// without clearing them. No exception leaves them.
class NQP2_API CNQP2Parser {
public:
    CNQP2Parser();
    ~CNQP2Parser();
    CNQP2Parser(const CNQP2Parser&) = delete;
    /// Copies the six fields as they are: both objects then share what they point to, and only one
    /// of them may release it.
    CNQP2Parser& operator=(const CNQP2Parser& other);

    /// Creates what is missing of the working objects. Returns 0.
    __int64 Init();
    /// Destroys the working objects; may be called twice. Must be called before destruction, which
    /// leaves the XML objects alone. Returns 0.
    __int64 Release();

    /// Sets who hears of the progress of imports. Does nothing without a worker proxy.
    void SetImpCallBack(ImpCallBack callback, void* context);
    /// Tells the worker the rate family of the system. Returns 1, also without a worker proxy.
    int SetSystemType(eP2_VIDEO_STANDARD standard);
    /// The worker's text for its last failure; "" when there is none or no worker proxy.
    CString GetLastError();

    /// Reads CONTENTS/CLIP/`clipName`.XML into `clip`, which is not reset first. Returns 0, or 1
    /// before Init and when the file does not load.
    __int64 LoadClipInfo(CString root, CString clipName, _tag_P2Clip& clip);

    /// Appends every clip whose metadata file loads, in the file system's order. With
    /// `keepDigit` 0 each record's ClipIdDigit becomes -1. Returns 0, or 1 when the card has no
    /// CONTENTS folder.
    __int64 LoadClipEx(CString root, CArray<_tag_P2Clip>& clips, int keepDigit);
    /// The same scan; `report` receives (appended) what was left out and which takes the clips
    /// form.
    __int64 LoadClipEx(CString root, CArray<_tag_P2Clip>& clips, int keepDigit,
                       nqp2::ScanReport& report);

    /// The card's code type and rate family from its first clip file that loads, the code type from
    /// the codec name alone. Returns 0, with the outputs untouched when no file loads; 1 before Init
    /// and when the card has no CONTENTS folder.
    __int64 GetDiskFormat(CString root, eCodeType& codeType, eP2_VIDEO_STANDARD& standard);
    /// All that the card's first clip file tells, the texts as they stand there. Same result.
    __int64 GetDiskFormat(CString root, nqp2::DiskFormat& format);

    /// Whether a recording of that many frames fits on the card: 1 or 0. `audioFlag` 0 counts
    /// 16-bit audio, anything else 24-bit; always four channels. 0 for a card without contents
    /// folder.
    int GetDiscFree(CString drive, eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                    __int64 frames);
    /// The same; also the card's free bytes and the frames that fit in them, these counted with
    /// 16-bit audio whatever the flag says.
    int GetDiscFree(CString drive, eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                    __int64 frames, __int64& freeBytes, __int64& maxFrames);
    /// The first frame count at which a video file reaches the size limit, and in `size` the bytes
    /// that the recording then takes. 0 and size 0 for a code type without a frame size.
    __int64 GetMaxFrameBy4GBSize(eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                                 __int64& size);
    /// Frames that fit in the space; zero or negative below the fixed cost of a recording.
    __int64 CountFramesFromSpace(eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                                 __int64 space);
    /// Bytes that a recording takes. Results beyond 64 bits are cut off at the largest number.
    __int64 CountSpaceFromFrames(eCodeType codeType, int audioFlag, eP2_VIDEO_STANDARD standard,
                                 __int64 frames);

    /// Appends the edit lists in root/EDITLIST that can be read. Returns 0, or 1 before Init and
    /// when there is no such folder.
    __int64 LoadEdl(CString root, CArray<tag_P2EDL>& edls);
    /// Writes an edit list into root/EDITLIST, under `name` when `useName` is nonzero and the name
    /// is not empty, else under the next free name. Returns 0, or 1 for any failure.
    __int64 SaveToEdl(const CString& root, const tag_P2EDL& edl, int useName, CString name);
    /// The same; `saved` receives the interface path of the file.
    __int64 SaveToEdl(const CString& root, const tag_P2EDL& edl, int useName, CString name,
                      CString& saved);

    /// Appends the clips of an AVCHD card, a disc folder or a camera's folder: BDMV clip information
    /// and the camera files of two makers (the worker describes these). Returns 0, or 1 for an empty
    /// root and when none of the folders is there. May be called before Init.
    __int64 LoadAVCHDClip(const CString& root, CArray<_tag_P2Clip>& clips);
    /// The same scan; `report` receives (appended) what was left out.
    __int64 LoadAVCHDClip(const CString& root, CArray<_tag_P2Clip>& clips,
                          nqp2::ScanReport& report);
    /// Fills `clip`, which is not reset first, from the clip information CLIPINF/`clipName`.CPI, the
    /// card's playlists and the beginning of the clip's stream. Returns 1, or 0 with the record
    /// untouched when the clip cannot be decoded.
    int GetAVCHDCPIMetadata(const CString& root, const CString& clipName, _tag_P2Clip& clip);
    /// The same for CLIPINF/`clipName`.clpi of a disc, whose playlists tell nothing of its clips.
    int GetAVCHDClpiDataInfo(const CString& root, const CString& clipName, _tag_P2Clip& clip);

    /// Appends the AVCHD card's playlists as edit lists. Returns 0, or 1 when there is no playlist
    /// folder.
    __int64 LoadAVCHDEdl(CString card, CArray<tag_P2EDL>& edls);
    /// Fills `edl` from PLAYLIST/`name`.MPL: an event for each item whose clip can be read, with that
    /// clip's record, all at offset 0 and with exclusive out points. Returns 1, or 0 with the record
    /// untouched when the playlist cannot be decoded or is empty.
    int GetAVCHDMPLMetadata(const CString& card, const CString& name, tag_P2EDL& edl);

    /// Adds segments to the ingest lists of one or more cards: root/USERDATA/`fileName` on each.
    /// Returns 0, or 1 for an empty file name and when a card's folder cannot be made (cards before
    /// it are written). Whether a list could be saved is not told.
    __int64 WriteIngestXML(const CString& fileName, IngestRequest& request);

    /// The 64-digit identifier text of a GUID; a fresh one for an all-zero GUID.
    CString CreateUMID(_GUID guid);
    /// The GUID in an identifier's last 32 digits; all zero when they are not hexadecimal.
    static GUID GuidFromUMID(const CString& identifier);

    /// Finds a clip name whose video file does not exist on the card. Returns 1, or 0 with `name`
    /// untouched when every candidate is taken or the folder of video files cannot be read.
    int CheckName(CString& name, CString root);
    /// The same search; `tried` receives the number of names that were looked at.
    int CheckName(CString& name, CString root, __int64& tried);

    /// Asks the worker for the description of a camera file. Returns 0 without a worker proxy.
    int GetP2BaseClipInfo(const CString& path, NQP2BaseClipInfo& info);

private:
    friend struct nqp2::parser::NQP2ParserPeer;

    void InitP2CmgrDll();
    int LoadClipFromXml(const CString& path, _tag_P2Clip& clip);
    __int64 GetDiskFormatEx(CString root, CString& frameRate, CString& codec, CString& editUnit,
                            int& class50);
    __int64 GetNewEdlName(CString root, CString id, CString& name);
    int CheckEdlSerialNumber(int number, const CString& pattern);
    __int64 GetClobalClipID(CString guidText, CString note, CString& identifier);
    int DeleteIngestNode(const CString& root, const CString& clipName);
    static void DeleteSameMemo(CArray<_tag_P2Memo>& memos);

    CTNQ264BitSupport* m_pSupport = nullptr;
    CNQXmlParser* m_pXmlBuilder = nullptr;
    CMarkupMSXML* m_pMarkup = nullptr;
    void* m_hP2Cmgr = nullptr;
    void (*m_pfnDDP2CInit)() = nullptr;
    void (*m_pfnDDP2CLogSense)() = nullptr;
};
