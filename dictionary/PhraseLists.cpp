// Lists of phrases: by language pair, by family of a source text, and in source-text
// order. Every list holds only the phrases that pass the current filter.
#include "core/Operation.h"
#include "dictionary/PhraseRecord.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// Indexes of Dic.
constexpr int kByPair = 2;
constexpr int kBySourceText = 3;
constexpr int kByFilteredText = 4;

// A condition on one field of a phrase: set when `value` is nonzero, clear when it
// is 0. Without a field every phrase meets it.
struct Condition {
    const char* field = nullptr;
    bool flag = false;  // a one-byte flag rather than a number
    int value = 0;
};

// Appends the identifier of the current phrase when it belongs to the pair, meets
// the condition and passes the database's filter. Only the fields that decide are
// read: lists are long.
int appendCurrent(CDbObject& db, const CIsamTable& phrases, DWORD PairLangId, Condition condition,
                  CDWordArray& ids) {
    PhraseHead head;
    std::uint32_t number = 0;
    int flag = 0;
    RecordReader record(phrases);
    if (condition.field && condition.flag) record.Bool(condition.field, &flag);
    if (condition.field && !condition.flag) record.Long(condition.field, &number);
    int rc = record.error();
    if (rc == isam::ISAM_OK) rc = readPhraseHead(phrases, &head);
    if (rc != isam::ISAM_OK) return rc;
    const bool meets = !condition.field || (flag != 0 || number != 0) == (condition.value != 0);
    if (head.pairLangId == PairLangId && meets && db.IsFiltered(head.flags)) ids.Add(head.textId);
    return isam::ISAM_OK;
}

// Appends the pair's phrases that meet the condition, in I2 order.
int appendPair(CDbObject& db, CIsamTable& phrases, DWORD PairLangId, Condition condition,
               CDWordArray& ids) {
    return forEachWithId(phrases, kByPair, PairLangId,
                         [&] { return appendCurrent(db, phrases, PairLangId, condition, ids); });
}

// The pair's phrases whose text (`text` of a phrase, keyed in `index`) is exactly
// `wanted`, in family order: non-standard ones go to the front as they are found,
// standard ones to the back.
int appendFamily(CDbObject& db, CIsamTable& phrases, int index, CString Phrase::*text,
                 DWORD PairLangId, const CString& wanted, CDWordArray& ids) {
    const CString key = phraseKey(wanted);
    return forEachWithPrefix(phrases, index, key.GetString(), kPhraseKeyLength, [&] {
        Phrase phrase;
        const int rc = readPhrase(phrases, &phrase);
        if (rc != isam::ISAM_OK) return rc;
        // The key holds only the leading characters: the whole text decides.
        if (phrase.pairLangId != PairLangId || phrase.*text != wanted || !db.IsFiltered(phrase.flags)) {
            return isam::ISAM_OK;
        }
        if (phrase.standard) {
            ids.Add(phrase.textId);
        } else {
            ids.InsertAt(0, phrase.textId);
        }
        return isam::ISAM_OK;
    });
}

}  // namespace

int CDbObject::EnumDictionary(CDWordArray& ids, DWORD PairLangId) {
    return Run([&] { return Result(appendPair(*this, Table(TAB_DIC), PairLangId, {}, ids)); });
}

int CDbObject::EnumDictionaryReadOnly(CDWordArray& ids, DWORD PairLangId, int Value) {
    return Run([&] {
        return Result(appendPair(*this, Table(TAB_DIC), PairLangId, {"ReadOnly", true, Value}, ids));
    });
}

int CDbObject::EnumDictionaryUsed(CDWordArray& ids, DWORD PairLangId, int Value) {
    return Run([&] {
        return Result(appendPair(*this, Table(TAB_DIC), PairLangId, {"Count", false, Value}, ids));
    });
}

int CDbObject::EnumDictionaryTranslated(CDWordArray& ids, DWORD PairLangId, int Value) {
    return Run([&] {
        return Result(appendPair(*this, Table(TAB_DIC), PairLangId, {"Translated", true, Value}, ids));
    });
}

int CDbObject::EnumDictionaryException(CDWordArray& ids, DWORD PairLangId, int Value) {
    return Run([&] {
        return Result(appendPair(*this, Table(TAB_DIC), PairLangId, {"Standard", true, Value}, ids));
    });
}

int CDbObject::EnumDictionary(CDWordArray& ids, DWORD PairLangId, const CString& SText) {
    return Run([&] {
        return Result(appendFamily(*this, Table(TAB_DIC), kBySourceText, &Phrase::sText,
                                   PairLangId, SText, ids));
    });
}

int CDbObject::EnumDictionarySTextFiltered(CDWordArray& ids, DWORD PairLangId,
                                           const CString& STextFiltered) {
    return Run([&] {
        return Result(appendFamily(*this, Table(TAB_DIC), kByFilteredText, &Phrase::sTextFiltered,
                                   PairLangId, STextFiltered, ids));
    });
}

int CDbObject::EnumDictionarySort(CDWordArray& ids, DWORD PairLangId) {
    return Run([&] {
        CIsamTable& phrases = Table(TAB_DIC);
        // The walk covers every pair: the source-text order is not grouped by pair.
        return Result(forEachRecord(phrases, kBySourceText,
                                    [&] { return appendCurrent(*this, phrases, PairLangId, {}, ids); }));
    });
}

int CDbObject::EnumFamily(CDWordArray& ids, DWORD PairLangId, const CString& SText) {
    const FILTER saved = m_Filter;
    m_Filter = FilterNone;
    const int listed = EnumDictionary(ids, PairLangId, SText);
    m_Filter = saved;
    return listed;
}
