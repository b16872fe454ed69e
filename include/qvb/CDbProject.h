// A localisation project: the modules being translated and every resource of them.
#pragma once

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

    // ---- Language modules -------------------------------------------------------------------
    int EnumLangModul(CDWordArray& ids, DWORD PairLangId);

    // ---- History ----------------------------------------------------------------------------
    int AddHistory(DWORD* pHistoryId, long TimeStamp, DWORD HistoryType, CString Data1,
                   CString Data2);
    int AddHistory(DWORD HistoryId, long TimeStamp, DWORD HistoryType, CString Data1,
                   CString Data2);
    // Stamped with the current time; the new entry's identifier is not handed out.
    int AddHistory(DWORD HistoryType, CString Data1, CString Data2);
    int GetHistory(DWORD HistoryId, long* TimeStamp, DWORD* HistoryType, CString& Data1,
                   CString& Data2);
    int UpdateHistory(DWORD HistoryId, long TimeStamp, DWORD HistoryType, CString Data1,
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
};
