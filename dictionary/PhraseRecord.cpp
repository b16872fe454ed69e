#include "dictionary/PhraseRecord.h"

namespace qvb {

int readPhraseHead(const CIsamTable& table, PhraseHead* head) {
    return RecordReader(table)
        .Long("TextId", &head->textId)
        .Long("PairLangId", &head->pairLangId)
        .Long("Flags", &head->flags)
        .error();
}

int readPhrase(const CIsamTable& table, Phrase* phrase) {
    return RecordReader(table)
        .Long("TextId", &phrase->textId)
        .Long("PairLangId", &phrase->pairLangId)
        .Short("MaxNrOfChar", &phrase->maxNrOfChar)
        .Bool("ReadOnly", &phrase->readOnly)
        .Long("Count", &phrase->count)
        .Bool("Translated", &phrase->translated)
        .Bool("Standard", &phrase->standard)
        .Long("Flags", &phrase->flags)
        .Text("SText", phrase->sText)
        .Text("STextFiltered", phrase->sTextFiltered)
        .Text("TText", phrase->tText)
        .error();
}

int findPhrase(CIsamTable& table, std::uint32_t textId, Phrase* phrase) {
    const int rc = readById(table, textId);
    return rc != isam::ISAM_OK ? rc : readPhrase(table, phrase);
}

void writePhrase(RecordWriter& record, const Phrase& phrase, bool dictionaryDb) {
    record.Long("PairLangId", phrase.pairLangId)
        .Short("MaxNrOfChar", dictionaryDb ? 0 : phrase.maxNrOfChar)
        .Bool("ReadOnly", !dictionaryDb && phrase.readOnly)
        .Bool("Translated", phrase.translated)
        .Bool("Standard", phrase.standard)
        .Long("Flags", phrase.flags)
        .Text("SText", phrase.sText)
        .Text("STextFiltered", phrase.sTextFiltered)
        .Text("TText", phrase.tText);
}

CString phraseKey(const CString& text) {
    CString key = text.Left(kPhraseKeyLength);
    if (key.GetLength() < kPhraseKeyLength) key += CString(' ', kPhraseKeyLength - key.GetLength());
    return key;
}

}  // namespace qvb
