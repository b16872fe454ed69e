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
namespace qvb {
class ResourceFamilyOps;
}

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

    // ---- Phrases ------------------------------------------------------------------------
    // A dictionary database stores 0 for MaxNrOfChar and ReadOnly whatever is passed.
    // The allocating add: the new TextId is written to *pTextId before the insert.
    int AddDictionary(DWORD* pTextId, DWORD PairLangId, const CString& SText,
                      const CString& STextFiltered, const CString& TText, WORD MaxNrOfChar,
                      int ReadOnly, int Translated, int Standard, DWORD Flags);
    int AddDictionary(DWORD TextId, DWORD PairLangId, const CString& SText,
                      const CString& STextFiltered, const CString& TText, WORD MaxNrOfChar,
                      int ReadOnly, int Translated, int Standard, DWORD Flags);
    int AddDictionary(DWORD TextId, DWORD PairLangId, const CString& SText,
                      const CString& STextFiltered, const CString& TText, WORD MaxNrOfChar,
                      int ReadOnly, DWORD Count, int Translated, int Standard, DWORD Flags);

    // Reading one phrase. `pUsed` receives whether Count is above 0; a null pointer
    // skips its field.
    int GetDictionary(DWORD TextId, DWORD* pPairLangId, CString* pSText, CString* pTText,
                      WORD* pMaxNrOfChar, int* pReadOnly, int* pUsed, int* pTranslated,
                      int* pStandard, DWORD* pFlags);
    int GetDictionary(DWORD TextId, DWORD* pPairLangId, CString* pSText, CString* pTText,
                      WORD* pMaxNrOfChar, int* pReadOnly, DWORD* pCount, int* pTranslated,
                      int* pStandard, DWORD* pFlags);
    int GetDictionary(DWORD TextId, DWORD* pPairLangId, CString& SText, CString& TText,
                      WORD* pMaxNrOfChar, int* pReadOnly, int* pUsed, int* pTranslated,
                      int* pStandard, DWORD* pFlags);
    int GetDictionary(DWORD TextId, DWORD* pPairLangId, CString& SText, CString& STextFiltered,
                      CString& TText, WORD* pMaxNrOfChar, int* pReadOnly, int* pUsed,
                      int* pTranslated, int* pStandard, DWORD* pFlags);
    int GetDictionary(DWORD TextId, DWORD* pPairLangId, CString* pSText, CString* pSTextFiltered,
                      CString* pTText, WORD* pMaxNrOfChar, int* pReadOnly, int* pUsed,
                      int* pTranslated, int* pStandard, DWORD* pFlags);

    // Rewrites every field but TextId, Count and STextFiltered. With UpdateSimilar the
    // new translation is first offered to the untranslated phrases of the same text.
    int UpdateDictionary(DWORD TextId, DWORD PairLangId, const CString& SText, const CString& TText,
                         WORD MaxNrOfChar, int ReadOnly, int Translated, int Standard, DWORD Flags,
                         int UpdateSimilar);
    int UpdateAllSimilarSourcePhrases(DWORD TextId, CString TText);
    // Deletes one phrase, used or not, leaving its family alone.
    int DeleteDictionary(DWORD TextId);

    // One reference more (Increment nonzero) or fewer. A count that reaches 0 removes
    // the phrase's family once none of its members is used any more.
    int ChangeCountInDictionary(DWORD TextId, int Increment);
    int CanDelete(DWORD TextId, int* pCanDelete);
    int MakeExceptionBeforeDeleting(DWORD TextId);
    // Leaves the filter at FilterNone.
    int DeleteUnusedPhrases(DWORD PairLangId);

    // Phrase lists: identifiers of the phrases that pass the current filter, appended.
    int EnumDictionary(CDWordArray& ids, DWORD PairLangId);
    // The family of a source text: the non-standard members first, newest found
    // first, then the standard ones in key order.
    int EnumDictionary(CDWordArray& ids, DWORD PairLangId, const CString& SText);
    int EnumDictionarySTextFiltered(CDWordArray& ids, DWORD PairLangId,
                                    const CString& STextFiltered);
    int EnumDictionaryReadOnly(CDWordArray& ids, DWORD PairLangId, int Value);
    int EnumDictionaryUsed(CDWordArray& ids, DWORD PairLangId, int Value);
    int EnumDictionaryTranslated(CDWordArray& ids, DWORD PairLangId, int Value);
    int EnumDictionaryException(CDWordArray& ids, DWORD PairLangId, int Value);
    // In source-text order over the whole table.
    int EnumDictionarySort(CDWordArray& ids, DWORD PairLangId);

    // ---- Exceptions -----------------------------------------------------------------------
    int AddException(DWORD* pExceptionId, DWORD TextId, DWORD ElementTyp, DWORD ElementId,
                     DWORD Flags);
    int AddException(DWORD ExceptionId, DWORD TextId, DWORD ElementTyp, DWORD ElementId,
                     DWORD Flags);
    int GetException(DWORD ExceptionId, DWORD* TextId, DWORD* ElementTyp, DWORD* ElementId,
                     DWORD* Flags);
    int UpdateExceptions(DWORD ExceptionId, DWORD TextId, DWORD ElementTyp, DWORD ElementId,
                         DWORD Flags);
    int DeleteExceptions(DWORD ExceptionId);
    int EnumExceptions(CDWordArray& ids);
    int EnumExceptions(CDWordArray& ids, DWORD TextId);
    int GetExceptionsCount(DWORD* count);
    int GetExceptionsCount(DWORD* count, DWORD TextId);

    // ---- Binary data ------------------------------------------------------------------------
    // Blobs: module files packed as a one-entry zip archive, or raw bytes.
    // The allocating add of an empty blob; the id is written before the insert.
    int AddBinaryData(DWORD* pId);
    int GetBinaryData(DWORD Id, DWORD* pFlags);
    // The stored length: for a packed file, the archive's.
    int GetBinaryDataLength(DWORD Id, DWORD* pLength);
    // A copy of the stored blob in a new BYTE[length + 1] that the caller deletes[].
    int GetBinaryData(DWORD Id, BYTE** ppData, DWORD* pLength);
    // Replaces the blob by these bytes as they are; Flags is kept.
    int WriteBinaryData(DWORD Id, BYTE* pData, DWORD Length);
    // Replaces Flags; the blob is kept.
    int UpdateBinaryData(DWORD Id, DWORD Flags);
    // Stores a disk file packed; a null path empties the blob.
    int ReadBinaryDataFile(DWORD Id, const char* pPath);
    // Writes the blob to a disk file, unpacked when it is a packed file. An empty
    // blob writes nothing and leaves an existing file alone.
    int WriteBinaryDataFile(DWORD Id, const char* pPath);
    int DeleteBinaryData(DWORD Id);
    int EnumBinaryData(CDWordArray& ids);
    int GetBinaryDataCount(DWORD* pCount);

    // ---- Translation state and the user filter -----------------------------------------------
    // Whether the markers that `filter` selects by are up to date.
    int IsFilterValid(FILTER filter);
    // Whether a record with these Flags passes the current filter.
    int IsFiltered(DWORD Flags);
    int IsPhraseTranslated(DWORD TextId, int* pTranslated);
    // Recompute one marker in every phrase of a language pair (a project also in
    // its resource records) and make it valid again. The user filter is kept in
    // the object for later refreshes.
    virtual int RefreshUserFilter(DWORD PairLangId, const USERFILTER& filter);
    virtual int RefreshNotTranslatedFilter(DWORD PairLangId);

protected:
    void SetError(LONG error);
    void ClearError();

    // Rewrites every field but TextId and Count.
    int UpdateDictionaryInternal(DWORD TextId, DWORD PairLangId, const CString& SText,
                                 const CString& STextFiltered, const CString& TText,
                                 WORD MaxNrOfChar, int ReadOnly, int Translated, int Standard,
                                 DWORD Flags);

    // The dictionary passes of the refreshes: each walks the pair's phrases, sets
    // its marker in them and collects the marked phrases for the table passes.
    int SetNotTranslatedFlagInDictionary(DWORD PairLangId);
    int SetUserFilterFlagInDictionary(DWORD PairLangId, DWORD PLangId, DWORD SLangId);
    // Whether a resource record, the one last read in the table of `table`, is in
    // the user filter, by its notice and by its phrase.
    int IsPhraseInUserFilter(RESTABLE table, DWORD TextId, int* pIn);

private:
    friend class CDbInternals;
    // The steps every resource family of a project shares.
    friend class qvb::ResourceFamilyOps;
    // The project's operations run through the same machinery as the shared ones.
    friend class CDbProject;

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

    // Phrases
    int CheckAndDeleteAllMembersInFamilyForCount(CString& SText, DWORD PairLangId);
    // Find, read and delete one phrase.
    int DeletePhrase(DWORD TextId);
    // The family of a text with the filter switched off for the listing.
    int EnumFamily(CDWordArray& ids, DWORD PairLangId, const CString& SText);

    // Filters
    void MarkFiltersStale();
    // Runs the passes that recompute one marker (`refreshed`, a stale bit) with the
    // filter switched off, then makes the marker valid if they succeeded.
    template <typename Passes>
    int RefreshMarkers(WORD refreshed, Passes passes);
    // Keeps a filter for the user-filter passes; a dictionary has no used, read-only
    // or length conditions.
    void AdoptUserFilter(const USERFILTER& filter, bool dictionaryRules);
    // The language whose locale matches the user filter's text; on failure the
    // filter is left switched off.
    int UserFilterLanguages(DWORD PairLangId, DWORD* PLangId, DWORD* SLangId);

    // The stored form of the user filter (resource 3).
    static WORD MakeUserFilterForDB(void* filter, USERFILTER_IN_DB& out);
    static WORD ConvertUserFilterToApp(void* record, WORD size);

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
