// The dictionary passes of the two refreshes, which recompute the not-translated and
// the user-filter marker of every phrase of a language pair, and the refreshes of a
// database that has phrases only.
#include <cstring>

#include "dictionary/PhraseRecord.h"
#include "dictionary/Refresh.h"
#include "dictionary/ResourceKinds.h"
#include "platform/TextMatching.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

constexpr int kByPair = 2;

// Walks the pair's phrases that pass the filter, sets `marker` in those that
// `belongs(table, id)` accepts (reading from the current record what it needs) and
// clears it in the others. Only phrases whose Flags change are written;
// `*rewritten` tells whether there were any.
template <typename Belongs>
int markPhrases(CDbObject& db, CIsamTable& phrases, DWORD PairLangId, std::uint32_t marker,
                bool* rewritten, Belongs belongs) {
    return forEachWithId(phrases, kByPair, PairLangId, [&] {
        PhraseHead head;
        bool in = false;
        int rc = readPhraseHead(phrases, &head);
        if (rc != isam::ISAM_OK || head.pairLangId != PairLangId || !db.IsFiltered(head.flags)) return rc;
        rc = belongs(head.textId, &in);
        if (rc != isam::ISAM_OK) return rc;
        const std::uint32_t marked = withMarker(head.flags, marker, in);
        if (marked == head.flags) return isam::ISAM_OK;
        *rewritten = true;
        rc = RecordWriter(phrases).Long("Flags", marked).error();
        return rc != isam::ISAM_OK ? rc : phrases.Rewrite();
    });
}

// A three-state condition on a property: 0 = must be false, 1 = must be true,
// anything else = either.
bool meets(int condition, bool property) {
    if (condition == 0) return !property;
    if (condition == 1) return property;
    return true;
}

// The user filter's test of the phrase last read: the state conditions first, and
// only when they hold the texts, which are read as the test needs them.
class UserFilterTest {
public:
    UserFilterTest(const USERFILTER& filter, DWORD language)
        : filter_(filter),
          findText_(filter.FindText, strnlen(filter.FindText, sizeof filter.FindText)),
          matcher_(language, filter.MatchCase != 0) {}

    int operator()(const CIsamTable& phrases, bool* in) const {
        std::uint32_t count = 0;
        std::uint16_t maxNrOfChar = 0;
        int translated = 0, readOnly = 0, standard = 0;
        const int rc = RecordReader(phrases)
                           .Long("Count", &count)
                           .Short("MaxNrOfChar", &maxNrOfChar)
                           .Bool("Translated", &translated)
                           .Bool("ReadOnly", &readOnly)
                           .Bool("Standard", &standard)
                           .error();
        *in = rc == isam::ISAM_OK && meets(filter_.StateTranslated, translated != 0) &&
              meets(filter_.StateUsed, count > 0) && meets(filter_.StateReadOnly, readOnly != 0) &&
              meets(filter_.StateStandard, standard != 0) &&
              meets(filter_.StateLimited, maxNrOfChar > 0);
        return *in ? textMatches(phrases, in) : rc;
    }

private:
    // Without a find text there is no text condition; with one, an enabled side
    // must contain it.
    int textMatches(const CIsamTable& phrases, bool* in) const {
        if (findText_.empty()) return isam::ISAM_OK;
        *in = false;
        int rc = isam::ISAM_OK;
        if (filter_.InSource) rc = contains(phrases, "SText", in);
        if (rc == isam::ISAM_OK && !*in && filter_.InTranslation) rc = contains(phrases, "TText", in);
        return rc;
    }

    int contains(const CIsamTable& phrases, const char* field, bool* in) const {
        std::string text;
        const int rc = phrases.GetText(field, &text);
        if (rc != isam::ISAM_OK) return rc;
        if (filter_.IgnoreHotKeys) text = matcher_.withoutHotKeys(text);
        *in = matcher_.contains(text, findText_, filter_.WholeWord != 0);
        return isam::ISAM_OK;
    }

    const USERFILTER& filter_;
    std::string findText_;
    platform::TextMatcher matcher_;
};

}  // namespace

int CDbObject::SetNotTranslatedFlagInDictionary(DWORD PairLangId) {
    return Run([&] {
        PhraseIdList& untranslated = untranslatedPhrases();
        untranslated.clear();
        CIsamTable& phrases = Table(TAB_DIC);
        bool rewritten = false;
        const int rc = markPhrases(*this, phrases, PairLangId, kNotTranslatedMarker, &rewritten,
                                   [&](std::uint32_t id, bool* in) {
                                       int translated = 0;
                                       const int read = RecordReader(phrases).Bool("Translated", &translated).error();
                                       *in = !translated;
                                       if (*in) untranslated.add(id);
                                       return read;
                                   });
        if (rewritten) MarkFiltersStale();
        return Result(rc);
    });
}

int CDbObject::SetUserFilterFlagInDictionary(DWORD PairLangId, DWORD PLangId, DWORD /*SLangId*/) {
    return Run([&] {
        PhraseIdList& inFilter = userFilterPhrases();
        inFilter.clear();
        CIsamTable& phrases = Table(TAB_DIC);
        // Both texts are matched under the locale of the pair's PLangId.
        const UserFilterTest test(m_UserFilter, PLangId);
        bool rewritten = false;
        const int rc = markPhrases(*this, phrases, PairLangId, kUserFilterMarker, &rewritten,
                                   [&](std::uint32_t id, bool* in) {
                                       const int read = test(phrases, in);
                                       if (*in) inFilter.add(id);
                                       return read;
                                   });
        if (rewritten) MarkFiltersStale();
        return Result(rc);
    });
}

int CDbObject::IsPhraseInUserFilter(RESTABLE table, DWORD TextId, int* pIn) {
    const ResourceKind* kind = resourceKind(table);
    if (!kind) return Result(QVB_UNKNOWN_KIND);
    std::uint32_t notice = 0;
    if (!Succeeded(RecordReader(Table(kind->table)).Long("NoticeId", &notice).error())) return 0;
    const int condition = m_UserFilter.StateNotice;
    bool in = false;
    if (meets(condition, notice != 0)) {
        // A menu has no phrase of its own: a definite notice condition decides alone.
        in = (table == RES_MENU && (condition == 0 || condition == 1)) ||
             userFilterPhrases().contains(TextId);
    }
    if (pIn) *pIn = in ? 1 : 0;
    return 1;
}

int CDbObject::RefreshNotTranslatedFilter(DWORD PairLangId) {
    return RefreshMarkers(kNotTranslatedStale,
                          [&] { return SetNotTranslatedFlagInDictionary(PairLangId); });
}

int CDbObject::RefreshUserFilter(DWORD PairLangId, const USERFILTER& filter) {
    AdoptUserFilter(filter, m_DbTyp == DICTINARY);
    DWORD source = 0;
    DWORD target = 0;
    if (!UserFilterLanguages(PairLangId, &source, &target)) return 0;
    return RefreshMarkers(kUserFilterStale,
                          [&] { return SetUserFilterFlagInDictionary(PairLangId, source, target); });
}
