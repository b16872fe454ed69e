// One database as an application sees it: a directory, a name, a kind, the last
// error, the sort locale and the current filter, and the operations that both
// kinds of database share. Every operation returns 1 on success and 0 on failure,
// leaving the reason in GetError(): 0 none, a positive engine error number, or one
// of the library's own negative codes.
#pragma once

#include "qvb/CDWordArray.h"
#include "qvb/CString.h"
#include "qvb/QvbVersion.h"
#include "qvb/Records.h"
#include "qvb/WinTypes.h"

struct DbStateBlock;
class CDbInternals;
class CIsamTable;

class QVB_API CDbObject {
public:
    explicit CDbObject(DBTYPEONE kind);
    // A copy shares the source's open database: a second handle on the same files.
    // Only one of the two may be destroyed while the other is still in use.
    CDbObject(const CDbObject& other);
    CDbObject& operator=(const CDbObject& other);
    virtual ~CDbObject();

    // ---- Lifecycle ------------------------------------------------------------------
    // The directory is joined to the name as given, so it ends in a path separator.
    int CreateDb(const char* directory, const char* name);
    int OpenDb(const char* directory, const char* name, int rebuild);
    int RepairOpenDb(const char* directory, const char* name, int rebuild);
    int SafeOpenDb(const char* directory, const char* name);
    int CloseDb();

    int GetDBVersion();
    int SetDBVersion(int version);
    DBTYPEONE GetDbTyp();
    CString GetFileName();
    CString GetFilePath();
    LONG GetError();
    FILTER GetFilter();
    void SetFilter(FILTER filter);

    // ---- Tables and resource records --------------------------------------------------
    int AddTable(LONG index);
    int OpenTable(LONG index);
    int CloseTable(LONG index);

    int AddResource(DWORD number, void* data, WORD length);
    int UpdateResourceA(DWORD number, void* data, WORD length);
    // `*length` holds the room in `data` and receives the stored data's length.
    int GetResource(DWORD number, void* data, WORD* length);
    int DeleteResource(DWORD number);

    // ---- Bulk work ------------------------------------------------------------------
    // Every operation commits on its own; between these calls all operations
    // commit together, which makes loading many records much cheaper.
    int BeginTransaction();
    int CommitTransaction();
    // Discards everything written since BeginTransaction.
    int RollbackTransaction();

    // ---- Sort locale ------------------------------------------------------------------
    int SetSortLCID(DWORD lcid, int Reopen);

    // ---- Language pairs -----------------------------------------------------------------
    int AddSLang(DWORD* pPairLangId, DWORD PLangId, DWORD SLangId, const CString& FontName,
                 DWORD Flags);
    int AddSLang(DWORD PairLangId, DWORD PLangId, DWORD SLangId, const CString& FontName,
                 DWORD Flags);
    int GetSLang(DWORD PairLangId, DWORD* PLangId, DWORD* SLangId, CString& FontName, DWORD* Flags);
    int UpdateSLang(DWORD PairLangId, DWORD PLangId, DWORD SLangId, const CString& FontName,
                    DWORD Flags);
    int DeleteSLang(DWORD PairLangId);
    int EnumSLang(CDWordArray& ids);
    int GetSLangCount(DWORD* count);

protected:
    void SetError(LONG error);
    void ClearError();

private:
    friend class CDbInternals;

    int AllocStructs();
    int DeAllocStructs();
    int RegisterTables();
    int UnRegisterTables();
    const char* GetDbExtension();
    int GetTopTableIndex();
    int UpdateDictionaryAfterRebuild();

    // The steps of an open shared by OpenDb and RepairOpenDb.
    int OpenDatabase(const char* directory, const char* name, int rebuild, bool repair);
    int RebuildTable(int index, bool repair);
    int TablesAtStoredVersion();
    void BindOldPhraseLayout();
    // Runs one operation as one engine batch: everything it writes is committed
    // together when it ends.
    template <typename Body>
    int Run(Body body);
    // Records an outcome; true when it is success.
    bool Succeeded(int result);
    // Records an outcome and gives the operation's result for it, 1 or 0.
    int Result(int result) { return Succeeded(result) ? 1 : 0; }
    // The table object of a table list index; one that answers -4 to everything
    // when the database has no such table.
    CIsamTable& Table(int index);

    CString m_FilePath;
    CString m_FileName;
    DbStateBlock* m_pStructs;
    LONG m_Error;
    DWORD m_SortLCID;
    int m_NewDb;
    DBTYPEONE m_DbTyp;
    WORD m_FilterValid;
    DWORD m_Reserved;  // carried along by copies; nothing gives it a meaning
    FILTER m_Filter;
    USERFILTER m_UserFilter;
};
