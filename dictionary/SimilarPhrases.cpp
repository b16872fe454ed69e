// A new translation offered to the phrases with the same source text: they take it
// as a proposal and stay untranslated.
#include "core/Operation.h"
#include "dictionary/PhraseRecord.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

bool blank(CString text) { return text.Trim().IsEmpty() != FALSE; }

}  // namespace

int CDbObject::UpdateAllSimilarSourcePhrases(DWORD TextId, CString TText) {
    return Run([&] {
        CIsamTable& phrases = Table(TAB_DIC);
        Phrase phrase;
        if (!Succeeded(findPhrase(phrases, TextId, &phrase))) return 0;
        if (TText == phrase.tText || blank(phrase.sText)) return 1;
        const CString& key = phrase.sTextFiltered.IsEmpty() ? phrase.sText : phrase.sTextFiltered;
        if (blank(key)) return 1;

        // Phrases whose normalised text or whose source text is the key; one may
        // be listed twice.
        CDWordArray similar;
        if (!EnumDictionarySTextFiltered(similar, phrase.pairLangId, key) ||
            !EnumDictionary(similar, phrase.pairLangId, key)) {
            return 0;
        }
        for (int i = 0; i < similar.GetSize(); ++i) {
            if (similar[i] == TextId) continue;
            Phrase other;
            if (!Succeeded(findPhrase(phrases, similar[i], &other))) return 0;
            if (other.translated) continue;
            if (!UpdateDictionaryInternal(other.textId, other.pairLangId, other.sText,
                                          other.sTextFiltered, TText, other.maxNrOfChar,
                                          other.readOnly, 0, other.standard, other.flags)) {
                return 0;
            }
        }
        return Result(isam::ISAM_OK);
    });
}
