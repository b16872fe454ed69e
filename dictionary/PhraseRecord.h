// A phrase of the Dic table as one value, read from and written to the table's
// current record in one place.
#pragma once

#include <cstdint>

#include "core/IsamTable.h"
#include "core/RecordAccess.h"
#include "qvb/CString.h"

namespace qvb {

// Source texts are keyed by this many leading characters (I3 and I4).
constexpr int kPhraseKeyLength = 125;

struct Phrase {
    std::uint32_t textId = 0;
    std::uint32_t pairLangId = 0;
    std::uint16_t maxNrOfChar = 0;
    int readOnly = 0;
    std::uint32_t count = 0;
    int translated = 0;
    int standard = 0;
    std::uint32_t flags = 0;
    CString sText;
    CString sTextFiltered;
    CString tText;
};

// What every walk over a pair's phrases looks at first.
struct PhraseHead {
    std::uint32_t textId = 0;
    std::uint32_t pairLangId = 0;
    std::uint32_t flags = 0;
};

int readPhraseHead(const CIsamTable& table, PhraseHead* head);

// Reads every field of the table's current record.
int readPhrase(const CIsamTable& table, Phrase* phrase);

// Finds the phrase by its TextId and reads it.
int findPhrase(CIsamTable& table, std::uint32_t textId, Phrase* phrase);

// Sets every field but TextId and Count. A dictionary database keeps no length
// limit and no read-only mark: both are stored as 0 there.
void writePhrase(RecordWriter& record, const Phrase& phrase, bool dictionaryDb);

// The key of a source text in I3 and I4: its leading characters, padded with spaces.
CString phraseKey(const CString& text);

}  // namespace qvb
