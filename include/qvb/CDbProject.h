// A localisation project: the modules being translated and every resource of them.
#pragma once

#include <vector>

#include "qvb/CArray.h"
#include "qvb/CDbObject.h"

class QVB_API CDbProject : public CDbObject {
public:
    CDbProject();
    CDbProject(const CDbProject& other);
    CDbProject& operator=(const CDbProject& other);
    ~CDbProject() override;

    // ---- Translation state ------------------------------------------------------------------
    // The phrases of the pair, then the resource records of its language modules.
    int RefreshUserFilter(DWORD PairLangId, const USERFILTER& filter) override;
    int RefreshNotTranslatedFilter(DWORD PairLangId) override;

    // ---- Exceptions bound to resource elements -------------------------------------------
    // Binds each element to its own phrase through a new exception.
    int AddExceptions(RESTABLE kind, const CDWordArray& elementIds);
    // Deletes the first exception binding this phrase to this element, if any.
    int DeleteBoundException(DWORD TextId, RESTABLE kind, DWORD ElementId);
    // The phrase of a resource element; 0 for the kinds that have none (menus and
    // database-translation tables).
    int GetRecordTextID(RESTABLE kind, DWORD ElementId, DWORD& TextId);

    // ---- Modules ----------------------------------------------------------------------------
    // Each module gets an empty binary-data record for its file.
    int AddModul(DWORD* pModulId, const CString& Name, WORD Type, DWORD Flags);
    int AddModul(DWORD ModulId, const CString& Name, WORD Type, DWORD Flags);
    int GetModul(DWORD ModulId, CString& Name, WORD* pType, DWORD* pFlags);
    int GetModul(DWORD ModulId, CString& Name, WORD* pType, DWORD* pBinaryDataId, DWORD* pFlags);
    // Keeps BinaryDataId. Reports the find and the read only, not the rewrite.
    int UpdateModul(DWORD ModulId, CString& Name, WORD Type, DWORD Flags);
    // Deletes the module's file, then the module record.
    int DeleteModul(DWORD ModulId);
    int EnumModul(CDWordArray& ids);
    int GetModulCount(DWORD* pCount);

    // The module's stored file, through its binary-data record.
    int GetModulFileLength(DWORD ModulId, DWORD* pLength);
    int ReadModulFile(DWORD ModulId, const char* pPath);
    int WriteModulFile(DWORD ModulId, const char* pPath);

    // ---- Module extras ----------------------------------------------------------------------
    int AddModulExtra(DWORD ModulId, const CString& Format);
    int GetModulExtra(DWORD ModulId, CString& Format);
    int UpdateModulExtra(DWORD ModulId, const CString& Format);
    // A module without an extra record is success.
    int DeleteModulExtra(DWORD ModulId);
    int EnumModulExtra(CDWordArray& ids);

    // ---- Target paths -----------------------------------------------------------------------
    int AddTargetPaths(DWORD* pId, const CString& Main, const CString& Satellite1,
                       const CString& Satellite2);
    // The overload for a module: its record is found again by the module's id.
    int AddTargetPaths(DWORD ModulId, const CString& Main, const CString& Satellite1,
                       const CString& Satellite2);
    int GetTargetPaths(DWORD ModulId, CString& Main, CString& Satellite1, CString& Satellite2);
    int UpdateTargetPaths(DWORD ModulId, CString& Main, CString& Satellite1, CString& Satellite2);
    // A module without target paths is a failure (101).
    int DeleteTargetPaths(DWORD ModulId);
    int EnumTargetPaths(CDWordArray& ids);

    // ---- Language modules -------------------------------------------------------------------
    int AddLangModul(DWORD* pLangModulId, DWORD PairLangId, DWORD ModulId, DWORD Flags);
    int AddLangModul(DWORD LangModulId, DWORD PairLangId, DWORD ModulId, DWORD Flags);
    int GetLangModul(DWORD LangModulId, DWORD* pPairLangId, DWORD* pModulId, DWORD* pFlags);
    // The language module of a module in a language pair; 101 when it has none.
    int GetLangModulId(DWORD* pLangModulId, DWORD PairLangId, DWORD ModulId);
    int UpdateLangModul(DWORD LangModulId, DWORD PairLangId, DWORD ModulId, DWORD Flags);
    // The record alone; its resources are not touched.
    int DeleteLangModul(DWORD LangModulId);
    int EnumLangModul(CDWordArray& ids, DWORD PairLangId);
    int GetLangModulCount(DWORD* pCount, DWORD PairLangId);

    // ---- The module layout before version 20 (for conversion only) --------------------------
    int GetModulV18(DWORD ModulId, CString& Name, WORD* pType, DWORD* pFlags);
    int EnumModulV18(CDWordArray& ids);
    int GetModulExtraV18(DWORD ModulId, CString& Format);
    int GetTargetPathsV18(DWORD ModulId, CString& Main, CString& Satellite1, CString& Satellite2);
    // Each path is stored padded with blanks to 199 characters.
    int AddTargetPathsV18(DWORD* pId, const CString& Main, const CString& Satellite1,
                          const CString& Satellite2);
    int DeleteTargetPathsV18(DWORD ModulId);
    // The module's file held in the module record itself; an empty input file is
    // packed like any other.
    int GetModulFileLengthV18(DWORD ModulId, DWORD* pLength);
    int ReadModulFileV18(DWORD ModulId, const char* pPath);
    int WriteModulFileV18(DWORD ModulId, const char* pPath);

    // ---- String tables ----------------------------------------------------------------------
    // The allocating adds count the phrase up and mark the filters stale.
    int AddStringTable(DWORD* pStringId, DWORD LangModulId, DWORD TextId, WORD ResId, DWORD Flags,
                       DWORD NoticeId, CString& ResNetId);
    // ResNetId is whatever the table's record buffer holds from its last operation.
    int AddStringTable(DWORD* pStringId, DWORD LangModulId, DWORD TextId, WORD ResId, DWORD Flags,
                       DWORD NoticeId);
    // For copying: no count, no marks.
    int AddStringTable(DWORD StringId, DWORD LangModulId, DWORD TextId, WORD ResId, DWORD Flags,
                       DWORD NoticeId);
    // For repair: counts the phrase up, no marks.
    int RepairAddStringTable(DWORD StringId, DWORD LangModulId, DWORD TextId, WORD ResId,
                             DWORD Flags, DWORD NoticeId);
    int GetStringTable(DWORD StringId, DWORD* pLangModulId, DWORD* pTextId, WORD* pResId,
                       DWORD* pFlags, DWORD* pNoticeId, CString& ResNetId);
    int GetStringTable(DWORD StringId, DWORD* pLangModulId, DWORD* pTextId, WORD* pResId,
                       DWORD* pFlags, DWORD* pNoticeId);
    int GetStringTable(DWORD StringId, DWORD* pLangModulId, DWORD* pTextId, WORD* pResId,
                       DWORD* pFlags);
    // Rewrites from the record's fixed part as found: ResNetId becomes whatever the
    // table's record buffer holds.
    int UpdateStringTable(DWORD StringId, DWORD LangModulId, DWORD TextId, WORD ResId,
                          DWORD Flags, DWORD NoticeId);
    int UpdateStringTable(DWORD StringId, DWORD LangModulId, DWORD TextId, WORD ResId,
                          DWORD Flags, DWORD NoticeId, CString& ResNetId);
    // Releases the element's exceptions, one count of its phrase and its notice.
    int DeleteStringTable(DWORD StringId);
    // The record alone.
    int DeleteStringTableOnly(DWORD StringId);
    // The entries of a language module that pass the current filter, appended.
    int DoEnumStringTable(CDWordArray& ids, DWORD LangModulId);
    int EnumStringTable(CDWordArray& ids, DWORD LangModulId, int bSort);
    int GetStringTableCount(DWORD* pCount, DWORD LangModulId);
    // The entries of every language module that use one phrase and pass the filter.
    int EnumStringTableTextId(CDWordArray& ids, DWORD TextId);
    int GetStringTableTextIdCount(DWORD* pCount, DWORD TextId);
    // Orders the ids by ResId; entries with equal ResIds in no defined order.
    void SortStringTableIDList(CDWordArray& ids);

    // ---- Message tables ---------------------------------------------------------------------
    int AddMessageTable(DWORD* pId, DWORD LangModulId, DWORD TextId, DWORD Id, WORD MessageFlags,
                        DWORD Flags, DWORD NoticeId, CString& ResNetId);
    int AddMessageTable(DWORD* pId, DWORD LangModulId, DWORD TextId, DWORD Id, WORD MessageFlags,
                        DWORD Flags, DWORD NoticeId);
    int AddMessageTable(DWORD* pId, DWORD LangModulId, DWORD TextId, DWORD Id, WORD MessageFlags,
                        DWORD Flags, DWORD NoticeId, const CString& ResNetId, const CString& Key);
    // For copying: no count, no marks; ResNetId and Key empty.
    int AddMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                        WORD MessageFlags, DWORD Flags, DWORD NoticeId);
    // Counts the phrase up, no marks.
    int AddMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                        WORD MessageFlags, DWORD Flags, DWORD NoticeId, const CString& ResNetId,
                        const CString& Key);
    int GetMessageTable(DWORD RecordId, DWORD* pLangModulId, DWORD* pTextId, DWORD* pId,
                        WORD* pMessageFlags, DWORD* pFlags, DWORD* pNoticeId);
    // ResNetId receives the NoticeId as decimal text, not the stored ResNetId.
    int GetMessageTable(DWORD RecordId, DWORD* pLangModulId, DWORD* pTextId, DWORD* pId,
                        WORD* pMessageFlags, DWORD* pFlags, DWORD* pNoticeId, CString& ResNetId);
    int GetMessageTable(DWORD RecordId, DWORD* pLangModulId, DWORD* pTextId, DWORD* pId,
                        WORD* pMessageFlags, DWORD* pFlags, DWORD* pNoticeId, CString& ResNetId,
                        CString& Key);
    int GetMessageTable(DWORD RecordId, DWORD* pLangModulId, DWORD* pTextId, DWORD* pId,
                        WORD* pMessageFlags, DWORD* pFlags);
    int UpdateMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                           WORD MessageFlags, DWORD Flags, DWORD NoticeId);
    int UpdateMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                           WORD MessageFlags, DWORD Flags, DWORD NoticeId, CString& ResNetId);
    int UpdateMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                           WORD MessageFlags, DWORD Flags, DWORD NoticeId,
                           const CString& ResNetId, const CString& Key);
    int DeleteMessageTable(DWORD RecordId);
    int DeleteMessageTableOnly(DWORD RecordId);
    int EnumMessageTable(CDWordArray& ids, DWORD LangModulId);
    int GetMessageTableCount(DWORD* pCount, DWORD LangModulId);
    int EnumMessageTableTextId(CDWordArray& ids, DWORD TextId);
    int GetMessageTableTextIdCount(DWORD* pCount, DWORD TextId);

    // ---- History ----------------------------------------------------------------------------
    int AddHistory(DWORD* pHistoryId, LONG TimeStamp, DWORD HistoryType, CString Data1,
                   CString Data2);
    int AddHistory(DWORD HistoryId, LONG TimeStamp, DWORD HistoryType, CString Data1,
                   CString Data2);
    // Stamped with the current time; the new entry's identifier is not handed out.
    int AddHistory(DWORD HistoryType, CString Data1, CString Data2);
    int GetHistory(DWORD HistoryId, LONG* TimeStamp, DWORD* HistoryType, CString& Data1,
                   CString& Data2);
    int UpdateHistory(DWORD HistoryId, LONG TimeStamp, DWORD HistoryType, CString Data1,
                      CString Data2);
    int DeleteHistory(DWORD HistoryId);
    int EnumHistory(CDWordArray& ids);
    // Empties the list (without deleting what it held) and fills it with newly
    // allocated entries in identifier order; the caller deletes them.
    int EnumHistory(CArray<HISTORYLOG*, HISTORYLOG*>* list);
    int GetHistoryCount(DWORD* count);

    // ---- Notices ----------------------------------------------------------------------------
    int AddNotice(DWORD* pNoticeId, const CString& Text);
    int AddNotice(DWORD NoticeId, const CString& Text);
    int GetNotice(DWORD NoticeId, CString& Text);
    int UpdateNotice(DWORD NoticeId, const CString& Text);
    // Records that refer to the notice keep their NoticeId.
    int DeleteNotice(DWORD NoticeId);
    int EnumNotice(CDWordArray& ids);
    int GetNoticeCount(DWORD* count);

protected:
    // ---- Refresh passes over the resource tables of language modules -------------------------
    int SetNotTranslatedFlagInStringTable(const CDWordArray& LangModulIds);
    int SetNotTranslatedFlagInMessageTable(const CDWordArray& LangModulIds);
    int SetUserFilterFlagInStringTable(const CDWordArray& LangModulIds);
    int SetUserFilterFlagInMessageTable(const CDWordArray& LangModulIds);

private:
    // Orders ids by ResId; the ResIds of the ids from `unknown` on are known already.
    void SortByResId(CDWordArray& ids, int unknown, const std::vector<WORD>& knownResIds);
};
