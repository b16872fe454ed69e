// Use counts, families of one source text, and what deleting and translating do to
// the other members of a family.
#include <string>

#include "tests/db/DbTestSupport.h"
#include "tests/dictionary/PhraseSupport.h"

using namespace phrasetest;

namespace {

template <typename Db>
class FamilyTest : public dbtest::DbTest<Db> {};

using BothKinds = ::testing::Types<CDbProject, CDbDictionary>;
TYPED_TEST_SUITE(FamilyTest, BothKinds);

TYPED_TEST(FamilyTest, AFamilyGoesOnlyWhenItsLastUsedMemberIsReleased) {
    CDbObject& db = this->db_;
    const DWORD first = add(db, {1, "File", "", "Datei"});
    const DWORD second = add(db, {1, "File", "", "Akte"});
    const DWORD stranger = add(db, {1, "Files"});
    for (int i = 0; i < 2; ++i) ASSERT_EQ(1, db.ChangeCountInDictionary(first, 1));
    ASSERT_EQ(1, db.ChangeCountInDictionary(second, 1));
    ASSERT_EQ(2u, read(db, first).count);

    ASSERT_EQ(1, db.ChangeCountInDictionary(second, 0));
    EXPECT_TRUE(exists(db, second)) << "its sibling is still used";
    ASSERT_EQ(1, db.ChangeCountInDictionary(first, 0));
    EXPECT_TRUE(exists(db, first));
    EXPECT_EQ(1u, read(db, first).count);
    ASSERT_EQ(1, db.ChangeCountInDictionary(first, 0));
    EXPECT_FALSE(exists(db, first));
    EXPECT_FALSE(exists(db, second));
    EXPECT_TRUE(exists(db, stranger));
}

TYPED_TEST(FamilyTest, AnIncrementBeforeTheDecrementNeverPassesThroughZero) {
    CDbObject& db = this->db_;
    const DWORD id = add(db, {1, "Edit"});
    ASSERT_EQ(1, db.ChangeCountInDictionary(id, 1));
    // An update of a resource that keeps its phrase: the new one up, the old one down.
    ASSERT_EQ(1, db.ChangeCountInDictionary(id, 1));
    ASSERT_EQ(1, db.ChangeCountInDictionary(id, 0));
    EXPECT_EQ(1u, read(db, id).count);
}

TYPED_TEST(FamilyTest, ReleasingAnUnusedPhraseWrapsItsCountAndDeletesNothing) {
    CDbObject& db = this->db_;
    const DWORD id = add(db, {1, "View"});
    ASSERT_EQ(1, db.ChangeCountInDictionary(id, 0));
    EXPECT_EQ(4294967295u, read(db, id).count);
    ASSERT_EQ(1, db.ChangeCountInDictionary(id, 1));
    EXPECT_FALSE(exists(db, id)) << "reaching 0 again removes the family";
}

TYPED_TEST(FamilyTest, TextsAlikeInTheirKeyButDifferentLaterAreDifferentFamilies) {
    CDbObject& db = this->db_;
    const std::string common(125, 'x');
    const std::string a = common + "A", b = common + "B";
    const DWORD idA = add(db, {1, a.c_str()});
    const DWORD idB = add(db, {1, b.c_str()});
    const DWORD shortOne = add(db, {1, "x"});
    EXPECT_EQ(std::vector<DWORD>{idA}, family(db, 1, a.c_str()));
    EXPECT_EQ(std::vector<DWORD>{idB}, family(db, 1, b.c_str()));
    EXPECT_EQ(std::vector<DWORD>{shortOne}, family(db, 1, "x"));
    EXPECT_EQ(std::vector<DWORD>{}, family(db, 1, "x "));
    EXPECT_EQ(std::vector<DWORD>{}, family(db, 2, "x"));

    ASSERT_EQ(1, db.ChangeCountInDictionary(idA, 1));
    ASSERT_EQ(1, db.ChangeCountInDictionary(idB, 1));
    ASSERT_EQ(1, db.ChangeCountInDictionary(idA, 0));
    EXPECT_FALSE(exists(db, idA));
    EXPECT_TRUE(exists(db, idB));
}

TYPED_TEST(FamilyTest, NonStandardMembersComeFirstNewestFoundFirstThenStandardOnesInKeyOrder) {
    CDbObject& db = this->db_;
    const DWORD standard1 = add(db, {1, "Run", "", "", 0, 0, 0, 1});
    const DWORD plain1 = add(db, {1, "Run"});
    const DWORD standard2 = add(db, {1, "Run", "", "", 0, 0, 0, 1});
    const DWORD plain2 = add(db, {1, "Run"});
    CDWordArray ids;
    ids.Add(77);
    ASSERT_EQ(1, db.EnumDictionary(ids, 1, "Run"));
    EXPECT_EQ((std::vector<DWORD>{plain2, plain1, 77, standard1, standard2}), toVector(ids));

    // The normalised text groups the same way.
    const DWORD f1 = add(db, {1, "A", "key"});
    const DWORD f2 = add(db, {1, "B", "key", "", 0, 0, 0, 1});
    const DWORD f3 = add(db, {1, "C", "key"});
    CDWordArray filtered;
    ASSERT_EQ(1, db.EnumDictionarySTextFiltered(filtered, 1, "key"));
    EXPECT_EQ((std::vector<DWORD>{f3, f1, f2}), toVector(filtered));
}

TYPED_TEST(FamilyTest, APhraseCanGoWhenUnusedAndStandardOrAloneInItsFamily) {
    CDbObject& db = this->db_;
    const DWORD standard = add(db, {1, "Copy", "", "", 0, 0, 0, 1});
    const DWORD plain = add(db, {1, "Copy"});
    const DWORD alone = add(db, {1, "Paste"});
    int can = -1;
    ASSERT_EQ(1, db.CanDelete(standard, &can));
    EXPECT_EQ(1, can);
    ASSERT_EQ(1, db.CanDelete(plain, &can));
    EXPECT_EQ(0, can);
    ASSERT_EQ(1, db.CanDelete(alone, &can));
    EXPECT_EQ(1, can);
    ASSERT_EQ(1, db.ChangeCountInDictionary(alone, 1));
    ASSERT_EQ(1, db.CanDelete(alone, &can));
    EXPECT_EQ(0, can);
    db.SetFilter(FilterNotTranslated);
    ASSERT_EQ(1, db.CanDelete(standard, &can));
    EXPECT_EQ(FilterNotTranslated, db.GetFilter());
    EXPECT_EQ(0, db.CanDelete(999, &can));
    EXPECT_EQ(0, can);
}

TYPED_TEST(FamilyTest, BeforeAnOrdinaryMemberGoesAnotherTakesItsPlace) {
    CDbObject& db = this->db_;
    const DWORD keep = add(db, {1, "Cut", "", "Schneiden", 0, 0, 1, 1, 0x40});
    const DWORD doomed = add(db, {1, "Cut", "", "Ausschneiden"});
    ASSERT_EQ(1, db.MakeExceptionBeforeDeleting(doomed));
    EXPECT_EQ(0, read(db, keep).standard);
    EXPECT_EQ(1, read(db, doomed).standard);
    EXPECT_EQ("Schneiden", std::string(read(db, keep).translation));
    EXPECT_EQ(0x40u, read(db, keep).flags);
    // A standard phrase, or one alone, needs nothing.
    const DWORD lonely = add(db, {1, "Undo"});
    ASSERT_EQ(1, db.MakeExceptionBeforeDeleting(lonely));
    EXPECT_EQ(0, read(db, lonely).standard);
}

TYPED_TEST(FamilyTest, DeletingUnusedPhrasesKeepsUsedOnesAndLeavesTheFilterOff) {
    CDbObject& db = this->db_;
    const DWORD used = add(db, {1, "Find"});
    ASSERT_EQ(1, db.ChangeCountInDictionary(used, 1));
    const DWORD sibling = add(db, {1, "Find", "", "Suchen"});
    const DWORD unusedStandard = add(db, {1, "Replace", "", "", 0, 0, 0, 1});
    const DWORD unusedPlain = add(db, {1, "Select"});
    const DWORD otherPair = add(db, {2, "Select"});
    db.SetFilter(FilterUser);
    ASSERT_EQ(1, db.DeleteUnusedPhrases(1)) << db.GetError();
    EXPECT_EQ(FilterNone, db.GetFilter());
    EXPECT_TRUE(exists(db, used));
    EXPECT_FALSE(exists(db, sibling));
    EXPECT_FALSE(exists(db, unusedStandard));
    EXPECT_FALSE(exists(db, unusedPlain));
    EXPECT_TRUE(exists(db, otherPair));
    EXPECT_EQ(0, read(db, used).standard) << "the family's ordinary member stays ordinary";
}

TYPED_TEST(FamilyTest, ANewTranslationIsOfferedToUntranslatedSimilarPhrasesOnly) {
    CDbObject& db = this->db_;
    const DWORD source = add(db, {1, "&Save", "save", ""});
    const DWORD sameFiltered = add(db, {1, "Save", "save", ""});
    const DWORD sameSource = add(db, {1, "save", "", ""});
    const DWORD translated = add(db, {1, "SAVE", "save", "Sichern", 0, 0, 1});
    const DWORD otherPair = add(db, {2, "Save", "save", ""});

    // An unchanged translation changes nothing else.
    ASSERT_EQ(1, db.UpdateDictionary(source, 1, "&Save", "", 0, 0, 0, 0, 0, 1));
    EXPECT_EQ("", std::string(read(db, sameFiltered).translation));

    ASSERT_EQ(1, db.UpdateDictionary(source, 1, "&Save", "Speichern", 0, 0, 1, 0, 0, 1));
    for (DWORD id : {sameFiltered, sameSource}) {
        EXPECT_EQ("Speichern", std::string(read(db, id).translation)) << id;
        EXPECT_EQ(0, read(db, id).translated) << id;
    }
    EXPECT_EQ("Sichern", std::string(read(db, translated).translation));
    EXPECT_EQ("", std::string(read(db, otherPair).translation));
    EXPECT_EQ(1, read(db, source).translated);
}

TYPED_TEST(FamilyTest, ABlankSourceOffersNothing) {
    CDbObject& db = this->db_;
    const DWORD blank = add(db, {1, "  ", "", ""});
    const DWORD twin = add(db, {1, "  ", "", ""});
    ASSERT_EQ(1, db.UpdateAllSimilarSourcePhrases(blank, "x"));
    EXPECT_EQ("", std::string(read(db, twin).translation));
    EXPECT_EQ(0, db.UpdateAllSimilarSourcePhrases(999, "x"));
    EXPECT_EQ(101, db.GetError());
}

}  // namespace
