// Phrases one at a time: adding, reading, rewriting and deleting records of Dic.
#include "core/Operation.h"
#include "dictionary/PhraseRecord.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

Phrase phraseOf(DWORD PairLangId, const CString& SText, const CString& STextFiltered,
                const CString& TText, WORD MaxNrOfChar, int ReadOnly, int Translated,
                int Standard, DWORD Flags) {
    Phrase phrase;
    phrase.pairLangId = PairLangId;
    phrase.maxNrOfChar = MaxNrOfChar;
    phrase.readOnly = ReadOnly;
    phrase.translated = Translated;
    phrase.standard = Standard;
    phrase.flags = Flags;
    phrase.sText = SText;
    phrase.sTextFiltered = STextFiltered;
    phrase.tText = TText;
    return phrase;
}

// Fills a new record: the phrase's values and its starting use count.
auto newRecord(const Phrase& phrase, DWORD count, bool dictionaryDb) {
    return [&phrase, count, dictionaryDb](RecordWriter& record) {
        writePhrase(record, phrase, dictionaryDb);
        record.Long("Count", count);
    };
}

// Copies a phrase out to the caller's variables; a null pointer skips its field.
void copyOut(const Phrase& phrase, DWORD* pPairLangId, CString* pSText, CString* pSTextFiltered,
             CString* pTText, WORD* pMaxNrOfChar, int* pReadOnly, int* pTranslated,
             int* pStandard, DWORD* pFlags) {
    if (pPairLangId) *pPairLangId = phrase.pairLangId;
    if (pSText) *pSText = phrase.sText;
    if (pSTextFiltered) *pSTextFiltered = phrase.sTextFiltered;
    if (pTText) *pTText = phrase.tText;
    if (pMaxNrOfChar) *pMaxNrOfChar = phrase.maxNrOfChar;
    if (pReadOnly) *pReadOnly = phrase.readOnly;
    if (pTranslated) *pTranslated = phrase.translated;
    if (pStandard) *pStandard = phrase.standard;
    if (pFlags) *pFlags = phrase.flags;
}

}  // namespace

// ---- Adding ---------------------------------------------------------------------------------

int CDbObject::AddDictionary(DWORD* pTextId, DWORD PairLangId, const CString& SText,
                             const CString& STextFiltered, const CString& TText, WORD MaxNrOfChar,
                             int ReadOnly, int Translated, int Standard, DWORD Flags) {
    return Run([&] {
        const Phrase phrase = phraseOf(PairLangId, SText, STextFiltered, TText, MaxNrOfChar,
                                       ReadOnly, Translated, Standard, Flags);
        const auto record = newRecord(phrase, 0, m_DbTyp == DICTINARY);
        if (!Succeeded(checkFill(Table(TAB_DIC), record))) return 0;
        MarkFiltersStale();
        return Result(addWithNewId(Table(TAB_DIC), "TextId", pTextId, record));
    });
}

int CDbObject::AddDictionary(DWORD TextId, DWORD PairLangId, const CString& SText,
                             const CString& STextFiltered, const CString& TText, WORD MaxNrOfChar,
                             int ReadOnly, int Translated, int Standard, DWORD Flags) {
    return AddDictionary(TextId, PairLangId, SText, STextFiltered, TText, MaxNrOfChar, ReadOnly,
                         DWORD{0}, Translated, Standard, Flags);
}

int CDbObject::AddDictionary(DWORD TextId, DWORD PairLangId, const CString& SText,
                             const CString& STextFiltered, const CString& TText, WORD MaxNrOfChar,
                             int ReadOnly, DWORD Count, int Translated, int Standard, DWORD Flags) {
    return Run([&] {
        const Phrase phrase = phraseOf(PairLangId, SText, STextFiltered, TText, MaxNrOfChar,
                                       ReadOnly, Translated, Standard, Flags);
        return Result(addWithId(Table(TAB_DIC), "TextId", TextId,
                                newRecord(phrase, Count, m_DbTyp == DICTINARY)));
    });
}

// ---- Reading --------------------------------------------------------------------------------

int CDbObject::GetDictionary(DWORD TextId, DWORD* pPairLangId, CString* pSText,
                             CString* pSTextFiltered, CString* pTText, WORD* pMaxNrOfChar,
                             int* pReadOnly, int* pUsed, int* pTranslated, int* pStandard,
                             DWORD* pFlags) {
    return Run([&] {
        Phrase phrase;
        if (!Succeeded(findPhrase(Table(TAB_DIC), TextId, &phrase))) return 0;
        copyOut(phrase, pPairLangId, pSText, pSTextFiltered, pTText, pMaxNrOfChar, pReadOnly,
                pTranslated, pStandard, pFlags);
        if (pUsed) *pUsed = phrase.count > 0 ? 1 : 0;
        return 1;
    });
}

int CDbObject::GetDictionary(DWORD TextId, DWORD* pPairLangId, CString* pSText, CString* pTText,
                             WORD* pMaxNrOfChar, int* pReadOnly, int* pUsed, int* pTranslated,
                             int* pStandard, DWORD* pFlags) {
    return GetDictionary(TextId, pPairLangId, pSText, nullptr, pTText, pMaxNrOfChar, pReadOnly,
                         pUsed, pTranslated, pStandard, pFlags);
}

int CDbObject::GetDictionary(DWORD TextId, DWORD* pPairLangId, CString* pSText, CString* pTText,
                             WORD* pMaxNrOfChar, int* pReadOnly, DWORD* pCount, int* pTranslated,
                             int* pStandard, DWORD* pFlags) {
    return Run([&] {
        Phrase phrase;
        if (!Succeeded(findPhrase(Table(TAB_DIC), TextId, &phrase))) return 0;
        copyOut(phrase, pPairLangId, pSText, nullptr, pTText, pMaxNrOfChar, pReadOnly, pTranslated,
                pStandard, pFlags);
        if (pCount) *pCount = phrase.count;
        return 1;
    });
}

int CDbObject::GetDictionary(DWORD TextId, DWORD* pPairLangId, CString& SText, CString& TText,
                             WORD* pMaxNrOfChar, int* pReadOnly, int* pUsed, int* pTranslated,
                             int* pStandard, DWORD* pFlags) {
    return GetDictionary(TextId, pPairLangId, &SText, nullptr, &TText, pMaxNrOfChar, pReadOnly,
                         pUsed, pTranslated, pStandard, pFlags);
}

int CDbObject::GetDictionary(DWORD TextId, DWORD* pPairLangId, CString& SText,
                             CString& STextFiltered, CString& TText, WORD* pMaxNrOfChar,
                             int* pReadOnly, int* pUsed, int* pTranslated, int* pStandard,
                             DWORD* pFlags) {
    return GetDictionary(TextId, pPairLangId, &SText, &STextFiltered, &TText, pMaxNrOfChar,
                         pReadOnly, pUsed, pTranslated, pStandard, pFlags);
}

// ---- Changing and deleting ----------------------------------------------------------------------

int CDbObject::UpdateDictionary(DWORD TextId, DWORD PairLangId, const CString& SText,
                                const CString& TText, WORD MaxNrOfChar, int ReadOnly,
                                int Translated, int Standard, DWORD Flags, int UpdateSimilar) {
    return Run([&] {
        // The similar phrases take the same translation: a text the record cannot
        // hold is refused before any of them changes.
        const Phrase phrase = phraseOf(PairLangId, SText, CString(), TText, MaxNrOfChar, ReadOnly,
                                       Translated, Standard, Flags);
        if (!Succeeded(checkFill(Table(TAB_DIC), [&](RecordWriter& record) {
                writePhrase(record, phrase, m_DbTyp == DICTINARY);
            }))) {
            return 0;
        }
        if (UpdateSimilar && !UpdateAllSimilarSourcePhrases(TextId, TText)) return 0;
        // The normalised source text is the adding caller's; an update keeps it.
        Phrase stored;
        if (!Succeeded(findPhrase(Table(TAB_DIC), TextId, &stored))) return 0;
        return UpdateDictionaryInternal(TextId, PairLangId, SText, stored.sTextFiltered, TText,
                                        MaxNrOfChar, ReadOnly, Translated, Standard, Flags);
    });
}

int CDbObject::UpdateDictionaryInternal(DWORD TextId, DWORD PairLangId, const CString& SText,
                                        const CString& STextFiltered, const CString& TText,
                                        WORD MaxNrOfChar, int ReadOnly, int Translated,
                                        int Standard, DWORD Flags) {
    return Run([&] {
        const Phrase phrase = phraseOf(PairLangId, SText, STextFiltered, TText, MaxNrOfChar,
                                       ReadOnly, Translated, Standard, Flags);
        const auto record = [&](RecordWriter& r) { writePhrase(r, phrase, m_DbTyp == DICTINARY); };
        if (!Succeeded(checkFill(Table(TAB_DIC), record))) return 0;
        MarkFiltersStale();
        return Result(updateById(Table(TAB_DIC), TextId, record));
    });
}

int CDbObject::DeleteDictionary(DWORD TextId) {
    return Run([&] { return DeletePhrase(TextId); });
}

int CDbObject::DeletePhrase(DWORD TextId) {
    MarkFiltersStale();
    return Result(deleteById(Table(TAB_DIC), TextId));
}

int CDbObject::IsPhraseTranslated(DWORD TextId, int* pTranslated) {
    return Run([&] {
        CIsamTable& phrases = Table(TAB_DIC);
        if (!Succeeded(readById(phrases, TextId))) return 0;
        return Result(RecordReader(phrases).Bool("Translated", pTranslated).error());
    });
}
