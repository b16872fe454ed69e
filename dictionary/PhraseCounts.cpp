// Use counts of phrases and what follows from them: a family goes when none of its
// members is used any more, and unused phrases can be cleared out of a pair.
#include "core/Operation.h"
#include "dictionary/PhraseRecord.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// Rewrites a phrase as it is but for its Standard mark.
int setStandard(CDbObject& db, const Phrase& phrase, int standard) {
    return db.UpdateDictionary(phrase.textId, phrase.pairLangId, phrase.sText, phrase.tText,
                               phrase.maxNrOfChar, phrase.readOnly, phrase.translated, standard,
                               phrase.flags, 0);
}

}  // namespace

int CDbObject::ChangeCountInDictionary(DWORD TextId, int Increment) {
    return Run([&] {
        CIsamTable& phrases = Table(TAB_DIC);
        Phrase phrase;
        if (!Succeeded(findPhrase(phrases, TextId, &phrase))) return 0;
        // Unsigned and unbounded: a count of 0 taken down wraps and deletes nothing.
        const std::uint32_t count = Increment ? phrase.count + 1 : phrase.count - 1;
        if (!Succeeded(RecordWriter(phrases).Long("Count", count).error()) ||
            !Succeeded(phrases.Rewrite())) {
            return 0;
        }
        return count == 0 ? CheckAndDeleteAllMembersInFamilyForCount(phrase.sText, phrase.pairLangId) : 1;
    });
}

int CDbObject::CheckAndDeleteAllMembersInFamilyForCount(CString& SText, DWORD PairLangId) {
    CDWordArray family;
    if (!EnumFamily(family, PairLangId, SText)) return 0;
    CIsamTable& phrases = Table(TAB_DIC);
    for (int i = 0; i < family.GetSize(); ++i) {
        std::uint32_t count = 0;
        if (!Succeeded(readById(phrases, family[i])) ||
            !Succeeded(RecordReader(phrases).Long("Count", &count).error())) {
            return 0;
        }
        if (count != 0) return 1;
    }
    for (int i = family.GetSize() - 1; i >= 0; --i) {
        if (!DeletePhrase(family[i])) return 0;
    }
    return 1;
}

int CDbObject::CanDelete(DWORD TextId, int* pCanDelete) {
    return Run([&] {
        if (pCanDelete) *pCanDelete = 0;
        Phrase phrase;
        if (!Succeeded(findPhrase(Table(TAB_DIC), TextId, &phrase))) return 0;
        if (phrase.count != 0) return 1;
        bool alone = phrase.standard != 0;
        if (!alone) {
            CDWordArray family;
            if (!EnumFamily(family, phrase.pairLangId, phrase.sText)) return 0;
            alone = family.GetSize() == 1;
        }
        if (pCanDelete) *pCanDelete = alone ? 1 : 0;
        return Result(isam::ISAM_OK);
    });
}

int CDbObject::MakeExceptionBeforeDeleting(DWORD TextId) {
    return Run([&] {
        CIsamTable& phrases = Table(TAB_DIC);
        Phrase doomed;
        if (!Succeeded(findPhrase(phrases, TextId, &doomed))) return 0;
        if (doomed.standard) return 1;
        CDWordArray family;
        if (!EnumFamily(family, doomed.pairLangId, doomed.sText)) return 0;
        if (family.GetSize() < 2) return Result(isam::ISAM_OK);
        int heir = 0;
        while (heir < family.GetSize() && family[heir] == TextId) ++heir;
        if (heir == family.GetSize()) return Result(isam::ISAM_OK);

        // Another member takes over as the family's ordinary translation; the one
        // about to go becomes the standard one.
        Phrase successor;
        if (!Succeeded(findPhrase(phrases, family[heir], &successor)) ||
            !setStandard(*this, successor, 0)) {
            return 0;
        }
        if (!Succeeded(findPhrase(phrases, TextId, &doomed))) return 0;
        return setStandard(*this, doomed, 1);
    });
}

int CDbObject::DeleteUnusedPhrases(DWORD PairLangId) {
    return Run([&] {
        const FILTER saved = m_Filter;
        // The filter stays switched off afterwards, unless a listing fails.
        m_Filter = FilterNone;
        CIsamTable& phrases = Table(TAB_DIC);

        // Unused phrases of the pair that are, when read again, still unused and of
        // the kind `standard` asks for.
        auto clearOut = [&](bool standard, auto remove) {
            CDWordArray unused;
            if (!EnumDictionaryUsed(unused, PairLangId, 0)) {
                m_Filter = saved;
                return 0;
            }
            for (int i = 0; i < unused.GetSize(); ++i) {
                Phrase phrase;
                if (!Succeeded(findPhrase(phrases, unused[i], &phrase))) return 0;
                if (phrase.count == 0 && (phrase.standard != 0) == standard && !remove(phrase.textId)) {
                    return 0;
                }
            }
            return 1;
        };
        return clearOut(true, [&](DWORD id) { return DeletePhrase(id); }) &&
               clearOut(false, [&](DWORD id) {
                   return MakeExceptionBeforeDeleting(id) && DeletePhrase(id);
               });
    });
}
