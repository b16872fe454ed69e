// Phrases one at a time and the lists of a pair, on both kinds of database.
#include <string>

#include "tests/db/DbTestSupport.h"
#include "tests/dictionary/PhraseSupport.h"

using namespace phrasetest;

namespace {

template <typename Db>
class PhraseTest : public dbtest::DbTest<Db> {};

using BothKinds = ::testing::Types<CDbProject, CDbDictionary>;
TYPED_TEST_SUITE(PhraseTest, BothKinds);

TYPED_TEST(PhraseTest, IdentifiersCountFromOneAndOnlyTheTopOneIsGivenAgain) {
    CDbObject& db = this->db_;
    EXPECT_EQ(1u, add(db, {}));
    EXPECT_EQ(2u, add(db, {}));
    EXPECT_EQ(3u, add(db, {}));
    ASSERT_EQ(1, db.DeleteDictionary(3));
    EXPECT_EQ(3u, add(db, {}));
    ASSERT_EQ(1, db.DeleteDictionary(2));
    EXPECT_EQ(4u, add(db, {}));
}

TYPED_TEST(PhraseTest, APhraseReadsBackAsAddedAndUnusedWithTheCountOverloadTakingItsCount) {
    CDbObject& db = this->db_;
    const DWORD id = add(db, {7, "Open file", "open file", "Datei öffnen", 0, 0, 1, 1, 0x10});
    Stored s = read(db, id);
    EXPECT_EQ(7u, s.pair);
    EXPECT_EQ("Open file", std::string(s.source));
    EXPECT_EQ("open file", std::string(s.filtered));
    EXPECT_EQ("Datei öffnen", std::string(s.translation));
    EXPECT_EQ(0u, s.count);
    EXPECT_EQ(1, s.translated);
    EXPECT_EQ(1, s.standard);
    EXPECT_EQ(0x10u, s.flags);

    ASSERT_EQ(1, db.AddDictionary(DWORD{50}, 7, "Save", "", "", 0, 0, DWORD{12}, 0, 0, 0));
    EXPECT_EQ(12u, read(db, 50).count);
    // The reference overloads fill every output.
    CString source, filtered, translation;
    DWORD pair = 0, flags = 0;
    WORD chars = 0;
    int readOnly = 0, used = 0, translated = 0, standard = 0;
    ASSERT_EQ(1, db.GetDictionary(50, &pair, source, filtered, translation, &chars, &readOnly,
                                  &used, &translated, &standard, &flags));
    EXPECT_EQ(1, used);
    EXPECT_EQ("Save", std::string(source));
}

TYPED_TEST(PhraseTest, OnlyAProjectKeepsLengthLimitsAndReadOnlyMarks) {
    CDbObject& db = this->db_;
    const bool project = db.GetDbTyp() == PROJECT;
    const DWORD id = add(db, {1, "Cancel", "", "", 80, 1});
    ASSERT_EQ(1, db.AddDictionary(DWORD{20}, 1, "Help", "", "", 40, 1, 0, 0, 0));
    ASSERT_EQ(1, db.AddDictionary(DWORD{21}, 1, "Exit", "", "", 40, 1, DWORD{3}, 0, 0, 0));
    for (DWORD each : {id, DWORD{20}, DWORD{21}}) {
        Stored s = read(db, each);
        EXPECT_EQ(project ? 1 : 0, s.readOnly) << each;
        EXPECT_EQ(project, s.maxChars != 0) << each;
    }
    ASSERT_EQ(1, db.UpdateDictionary(id, 1, "Cancel", "", 60, 1, 0, 0, 0, 0));
    EXPECT_EQ(project ? 60 : 0, read(db, id).maxChars);
}

TYPED_TEST(PhraseTest, AnUpdateKeepsTheCountAndTheNormalisedTextAndMarksTheFiltersStale) {
    CDbObject& db = this->db_;
    ASSERT_EQ(1, db.AddDictionary(DWORD{5}, 1, "Print", "print", "", 0, 0, DWORD{2}, 0, 0, 0));
    ASSERT_EQ(1, db.RefreshNotTranslatedFilter(1));
    ASSERT_EQ(1, db.IsFilterValid(FilterNotTranslated));
    ASSERT_EQ(1, db.UpdateDictionary(5, 2, "Print...", "Drucken", 0, 0, 1, 0, 0x20, 0));
    Stored s = read(db, 5);
    EXPECT_EQ(2u, s.count);
    EXPECT_EQ("print", std::string(s.filtered));
    EXPECT_EQ("Print...", std::string(s.source));
    EXPECT_EQ(2u, s.pair);
    EXPECT_EQ(0x20u, s.flags);
    EXPECT_EQ(0, db.IsFilterValid(FilterNotTranslated));
    EXPECT_EQ(0, db.IsFilterValid(FilterUser));
}

TYPED_TEST(PhraseTest, BadRequestsFailWithTheirCodeAndChangeNothing) {
    CDbObject& db = this->db_;
    const DWORD id = add(db, {1, "Yes"});
    EXPECT_EQ(0, db.AddDictionary(id, 1, "Other", "", "", 0, 0, 0, 0, 0));
    EXPECT_EQ(631, db.GetError());
    EXPECT_EQ("Yes", std::string(read(db, id).source));

    EXPECT_EQ(0, db.UpdateDictionary(99, 1, "x", "", 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(101, db.GetError());
    EXPECT_EQ(0, db.DeleteDictionary(99));
    EXPECT_EQ(101, db.GetError());
    EXPECT_EQ(0, db.ChangeCountInDictionary(99, 1));
    EXPECT_EQ(101, db.GetError());
    int translated = 7;
    EXPECT_EQ(0, db.IsPhraseTranslated(99, &translated));
    EXPECT_EQ(101, db.GetError());

    const std::string overlong(32769, 'a');
    DWORD next = 0;
    EXPECT_EQ(0, db.AddDictionary(&next, 1, overlong.c_str(), "", "", 0, 0, 0, 0, 0));
    EXPECT_EQ(633, db.GetError());
    EXPECT_FALSE(exists(db, next));
    EXPECT_EQ(0, db.UpdateDictionary(id, 1, "Yes", overlong.c_str(), 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(633, db.GetError());
    EXPECT_EQ("", std::string(read(db, id).translation));
}

TYPED_TEST(PhraseTest, ListsSelectByPairPropertyAndFilterAndAppend) {
    CDbObject& db = this->db_;
    const DWORD plain = add(db, {1, "a"});
    const DWORD done = add(db, {1, "b", "", "B", 0, 0, 1, 1, 0x2});
    const DWORD other = add(db, {2, "c"});
    ASSERT_EQ(1, db.ChangeCountInDictionary(done, 1));

    CDWordArray ids;
    ids.Add(999);
    ASSERT_EQ(1, db.EnumDictionary(ids, 1));
    EXPECT_EQ((std::vector<DWORD>{999, plain, done}), toVector(ids));

    auto list = [&](auto enumerate, int value) {
        CDWordArray found;
        EXPECT_EQ(1, (db.*enumerate)(found, 1, value));
        return toVector(found);
    };
    using Enum = int (CDbObject::*)(CDWordArray&, DWORD, int);
    EXPECT_EQ(std::vector<DWORD>{done}, list(Enum{&CDbObject::EnumDictionaryUsed}, 1));
    EXPECT_EQ(std::vector<DWORD>{plain}, list(Enum{&CDbObject::EnumDictionaryUsed}, 0));
    EXPECT_EQ(std::vector<DWORD>{done}, list(Enum{&CDbObject::EnumDictionaryTranslated}, 5));
    EXPECT_EQ(std::vector<DWORD>{plain}, list(Enum{&CDbObject::EnumDictionaryException}, 0));
    EXPECT_EQ(std::vector<DWORD>{}, list(Enum{&CDbObject::EnumDictionaryReadOnly}, 1));

    db.SetFilter(FilterUser);
    CDWordArray filtered;
    ASSERT_EQ(1, db.EnumDictionary(filtered, 1));
    EXPECT_EQ(std::vector<DWORD>{done}, toVector(filtered));
    db.SetFilter(static_cast<FILTER>(3));
    CDWordArray none;
    ASSERT_EQ(1, db.EnumDictionary(none, 2));
    EXPECT_EQ(0, none.GetSize());
    db.SetFilter(FilterNone);
    CDWordArray empty;
    ASSERT_EQ(1, db.EnumDictionary(empty, 42));
    EXPECT_EQ(0, empty.GetSize());
    (void)other;
}

TYPED_TEST(PhraseTest, TheSortedListFollowsTheSourceTextAndSkipsOtherPairs) {
    CDbObject& db = this->db_;
    const DWORD zebra = add(db, {1, "Zebra"});
    const DWORD apple = add(db, {1, "Apple"});
    add(db, {2, "Banana"});
    const DWORD mango = add(db, {1, "Mango"});
    CDWordArray ids;
    ASSERT_EQ(1, db.EnumDictionarySort(ids, 1));
    EXPECT_EQ((std::vector<DWORD>{apple, mango, zebra}), toVector(ids));
}

TYPED_TEST(PhraseTest, TranslationStateReadsTheTranslatedMark) {
    CDbObject& db = this->db_;
    const DWORD open = add(db, {1, "Open", "", "", 0, 0, 1});
    const DWORD close = add(db, {1, "Close"});
    int translated = -1;
    ASSERT_EQ(1, db.IsPhraseTranslated(open, &translated));
    EXPECT_EQ(1, translated);
    ASSERT_EQ(1, db.IsPhraseTranslated(close, &translated));
    EXPECT_EQ(0, translated);
}

}  // namespace
