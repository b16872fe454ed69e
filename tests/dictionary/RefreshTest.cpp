// The refreshes: which phrases get which marker, how the user filter's text and
// conditions decide, and what the table passes read from the dictionary pass.
#include <cstring>
#include <string>

#include "core/Catalogue.h"
#include "core/RecordAccess.h"
#include "tests/db/DbTestSupport.h"
#include "tests/dictionary/PhraseSupport.h"

using namespace phrasetest;

namespace {

USERFILTER anyState(const char* text = "") {
    USERFILTER f;
    std::strncpy(f.FindText, text, sizeof f.FindText - 1);
    f.StateTranslated = f.StateUsed = f.StateReadOnly = 2;
    f.StateStandard = f.StateLimited = f.StateNotice = 2;
    return f;
}

template <typename Db>
class RefreshTest : public dbtest::DbTest<Db> {
protected:
    // A pair whose first language sets the locale of the user filter's text match.
    DWORD pair(DWORD language = 1033) {
        DWORD id = 0;
        EXPECT_EQ(1, this->db_.AddSLang(&id, language, 1031, "", 0));
        return id;
    }
    // The phrases of the pair that the filter lets through after a user refresh.
    std::vector<DWORD> inUserFilter(DWORD pairId, const USERFILTER& filter) {
        EXPECT_EQ(1, this->db_.RefreshUserFilter(pairId, filter)) << this->db_.GetError();
        return listedUnder(pairId, FilterUser);
    }
    std::vector<DWORD> listedUnder(DWORD pairId, FILTER filter) {
        const FILTER saved = this->db_.GetFilter();
        this->db_.SetFilter(filter);
        CDWordArray ids;
        EXPECT_EQ(1, this->db_.EnumDictionary(ids, pairId));
        this->db_.SetFilter(saved);
        return toVector(ids);
    }
};

using BothKinds = ::testing::Types<CDbProject, CDbDictionary>;
TYPED_TEST_SUITE(RefreshTest, BothKinds);

TYPED_TEST(RefreshTest, UntranslatedPhrasesOfThePairGetTheirMarkerAndKeepTheirOtherBits) {
    CDbObject& db = this->db_;
    const DWORD p = this->pair();
    const DWORD open = add(db, {p, "Open", "", "", 0, 0, 0, 0, 0x100});
    const DWORD done = add(db, {p, "Close", "", "Schließen", 0, 0, 1, 0, 0x101});
    const DWORD elsewhere = add(db, {p + 1, "Quit"});
    db.SetFilter(FilterUser);
    ASSERT_EQ(1, db.RefreshNotTranslatedFilter(p));
    EXPECT_EQ(FilterUser, db.GetFilter());
    EXPECT_EQ(0x101u, read(db, open).flags);
    EXPECT_EQ(0x100u, read(db, done).flags);
    EXPECT_EQ(0u, read(db, elsewhere).flags);
    EXPECT_EQ(std::vector<DWORD>{open}, this->listedUnder(p, FilterNotTranslated));
}

TYPED_TEST(RefreshTest, AnEmptyFindTextTakesEveryPhraseAndBothSidesOffTakeNone) {
    CDbObject& db = this->db_;
    const DWORD p = this->pair();
    const DWORD a = add(db, {p, "Alpha"});
    const DWORD b = add(db, {p, "Beta", "", "", 0, 0, 0, 0, 0x2});
    EXPECT_EQ((std::vector<DWORD>{a, b}), this->inUserFilter(p, anyState()));
    EXPECT_EQ(std::vector<DWORD>{}, this->inUserFilter(p, anyState("Alpha")));
    USERFILTER translationOnly = anyState("Alpha");
    translationOnly.InTranslation = 1;
    EXPECT_EQ(std::vector<DWORD>{}, this->inUserFilter(p, translationOnly));
}

TYPED_TEST(RefreshTest, TheTextMatchFollowsCaseHotKeyAndWholeWordSwitches) {
    CDbObject& db = this->db_;
    const DWORD p = this->pair();
    const DWORD hotKey = add(db, {p, "&Open file"});
    const DWORD upper = add(db, {p, "OPEN"});
    const DWORD inside = add(db, {p, "Reopened", "", "ge\xF6" "ffnet"});
    USERFILTER f = anyState("open");
    f.InSource = 1;
    EXPECT_EQ((std::vector<DWORD>{hotKey, upper, inside}), this->inUserFilter(p, f));
    // A hot-key marker belongs to the word it stands in.
    f.WholeWord = 1;
    EXPECT_EQ(std::vector<DWORD>{upper}, this->inUserFilter(p, f));
    f.IgnoreHotKeys = 1;
    EXPECT_EQ((std::vector<DWORD>{hotKey, upper}), this->inUserFilter(p, f));
    f.MatchCase = 1;
    EXPECT_EQ(std::vector<DWORD>{}, this->inUserFilter(p, f));
    std::strcpy(f.FindText, "Open");
    EXPECT_EQ(std::vector<DWORD>{hotKey}, this->inUserFilter(p, f));
    // Either enabled side is enough.
    USERFILTER either = anyState("GE\xD6" "FFNET");
    either.InSource = 1;
    either.InTranslation = 1;
    EXPECT_EQ(std::vector<DWORD>{inside}, this->inUserFilter(p, either));
}

TYPED_TEST(RefreshTest, TextsCompareAsUsersOfThePairsFirstLanguageExpect) {
    CDbObject& db = this->db_;
    // Russian in windows-1251: "ФАЙЛ" and "файл".
    const DWORD russian = this->pair(1049);
    const DWORD file = add(db, {russian, "\xD4\xC0\xC9\xCB \xEE\xF2\xEA\xF0\xFB\xF2"});
    USERFILTER f = anyState("\xF4\xE0\xE9\xEB");
    f.InSource = 1;
    f.WholeWord = 1;
    EXPECT_EQ(std::vector<DWORD>{file}, this->inUserFilter(russian, f));
    f.MatchCase = 1;
    EXPECT_EQ(std::vector<DWORD>{}, this->inUserFilter(russian, f));

    // German in windows-1252: "ÄNDERN" and "ändern".
    const DWORD german = this->pair(1031);
    const DWORD change = add(db, {german, "", "", "\xC4NDERN"});
    USERFILTER g = anyState("\xE4ndern");
    g.InTranslation = 1;
    EXPECT_EQ(std::vector<DWORD>{change}, this->inUserFilter(german, g));
}

TYPED_TEST(RefreshTest, StateConditionsNarrowTheMatch) {
    CDbObject& db = this->db_;
    const DWORD p = this->pair();
    const DWORD translated = add(db, {p, "One", "", "Eins", 0, 0, 1});
    const DWORD standard = add(db, {p, "Two", "", "", 0, 0, 0, 1});
    USERFILTER f = anyState();
    f.StateTranslated = 1;
    EXPECT_EQ(std::vector<DWORD>{translated}, this->inUserFilter(p, f));
    f = anyState();
    f.StateStandard = 0;
    EXPECT_EQ(std::vector<DWORD>{translated}, this->inUserFilter(p, f));
    f.StateStandard = 1;
    EXPECT_EQ(std::vector<DWORD>{standard}, this->inUserFilter(p, f));
}

TYPED_TEST(RefreshTest, AnUnknownPairFailsAndLeavesTheFilterOff) {
    CDbObject& db = this->db_;
    db.SetFilter(FilterNotTranslated);
    EXPECT_EQ(0, db.RefreshUserFilter(42, anyState()));
    EXPECT_EQ(101, db.GetError());
    EXPECT_EQ(FilterNone, db.GetFilter());
    EXPECT_EQ(0, db.IsFilterValid(FilterUser));
}

// Used, read-only and limited apply to a project's phrases; a dictionary's phrases
// have none of these properties.
TYPED_TEST(RefreshTest, OnlyAProjectAppliesTheUsedReadOnlyAndLengthConditions) {
    CDbObject& db = this->db_;
    const DWORD p = this->pair();
    const DWORD limited = add(db, {p, "Limited", "", "", 20, 1});
    ASSERT_EQ(1, db.ChangeCountInDictionary(limited, 1));
    const DWORD plain = add(db, {p, "Plain"});
    USERFILTER f = anyState();
    f.StateUsed = 0;
    f.StateReadOnly = 0;
    f.StateLimited = 0;
    const std::vector<DWORD> in = this->inUserFilter(p, f);
    if (db.GetDbTyp() == PROJECT) {
        EXPECT_EQ(std::vector<DWORD>{plain}, in);
    } else {
        EXPECT_EQ((std::vector<DWORD>{limited, plain}), in);
    }
}

// The notice test the resource tables' passes make on the record they have read.
class ProbeProject : public CDbProject {
public:
    using CDbObject::IsPhraseInUserFilter;
};

class NoticeRuleTest : public dbtest::DbTest<ProbeProject> {
protected:
    // Writes a string-table record and a menu with or without a notice and leaves
    // them read as the current records of their tables.
    void writeResources(DWORD notice) {
        using namespace qvb::catalogue;
        ASSERT_EQ(1, CDbInternals::Run(db_, [&] {
            CIsamTable& strings = CDbInternals::Table(db_, TAB_STABLE);
            CIsamTable& menus = CDbInternals::Table(db_, TAB_MENU);
            int rc = qvb::addWithId(strings, "StringId", ++serial_, [&](qvb::RecordWriter& r) {
                r.Long("TextId", phrase_).Long("NoticeId", notice);
            });
            if (rc == 0) rc = qvb::readById(strings, serial_);
            if (rc == 0) rc = qvb::addWithId(menus, "MenuId", serial_,
                                             [&](qvb::RecordWriter& r) { r.Long("NoticeId", notice); });
            return rc == 0 ? qvb::readById(menus, serial_) : rc;
        }));
    }
    int in(RESTABLE kind, DWORD textId) {
        int answer = -1;
        EXPECT_EQ(1, db_.IsPhraseInUserFilter(kind, textId, &answer)) << db_.GetError();
        return answer;
    }

    DWORD serial_ = 0;
    DWORD phrase_ = 0;
};

TEST_F(NoticeRuleTest, TheNoticeConditionComesFirstAndAMenuNeedsNoPhrase) {
    DWORD pairId = 0;
    ASSERT_EQ(1, db_.AddSLang(&pairId, 1033, 1031, "", 0));
    phrase_ = add(db_, {pairId, "Match"});
    const DWORD outside = add(db_, {pairId, "Other"});
    USERFILTER f = anyState("Match");
    f.InSource = 1;
    ASSERT_EQ(1, db_.RefreshUserFilter(pairId, f));

    writeResources(0);
    EXPECT_EQ(1, in(RES_STRINGTABLE, phrase_));
    EXPECT_EQ(0, in(RES_STRINGTABLE, outside));
    EXPECT_EQ(0, in(RES_MENU, 0)) << "either way, a menu goes by the list";

    f.StateNotice = 1;
    ASSERT_EQ(1, db_.RefreshUserFilter(pairId, f));
    EXPECT_EQ(0, in(RES_STRINGTABLE, phrase_)) << "no notice";
    EXPECT_EQ(0, in(RES_MENU, 0));
    writeResources(5);
    EXPECT_EQ(1, in(RES_STRINGTABLE, phrase_));
    EXPECT_EQ(0, in(RES_STRINGTABLE, outside));
    EXPECT_EQ(1, in(RES_MENU, 0)) << "a definite notice condition decides a menu alone";

    f.StateNotice = 0;
    ASSERT_EQ(1, db_.RefreshUserFilter(pairId, f));
    EXPECT_EQ(0, in(RES_STRINGTABLE, phrase_)) << "has a notice";

    int answer = -1;
    EXPECT_EQ(0, db_.IsPhraseInUserFilter(static_cast<RESTABLE>(13), phrase_, &answer));
    EXPECT_EQ(-21, db_.GetError());
}

}  // namespace
