// Language modules: a module in a language pair.
#include <vector>

#include "core/Catalogue.h"
#include "tests/db/DbTestSupport.h"

namespace dbtest {
namespace {

using namespace qvb::catalogue;

class LanguageModuleTest : public DbTest<CDbProject> {
protected:
    DWORD add(DWORD pair, DWORD modul, DWORD flags = 0) {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddLangModul(&id, pair, modul, flags)) << db_.GetError();
        return id;
    }
    void addWithId(DWORD id, DWORD pair, DWORD modul) {
        EXPECT_EQ(1, db_.AddLangModul(id, pair, modul, 0)) << db_.GetError();
    }
    // The pair's language modules appended to `initial`.
    std::vector<DWORD> ofPair(DWORD pair, std::vector<DWORD> initial = {}) {
        CDWordArray ids;
        for (DWORD id : initial) ids.Add(id);
        EXPECT_EQ(1, db_.EnumLangModul(ids, pair)) << db_.GetError();
        std::vector<DWORD> out;
        for (int i = 0; i < ids.GetSize(); ++i) out.push_back(ids[i]);
        return out;
    }
};

TEST_F(LanguageModuleTest, ANewIdIsOneAboveTheHighest) {
    for (DWORD expected = 1; expected <= 3; ++expected) EXPECT_EQ(expected, add(1, expected));
    EXPECT_EQ(1, db_.DeleteLangModul(3)) << db_.GetError();
    EXPECT_EQ(3u, add(1, 3));
    EXPECT_EQ(1, db_.DeleteLangModul(2)) << db_.GetError();
    EXPECT_EQ(4u, add(1, 2));
}

TEST_F(LanguageModuleTest, FieldsAreStoredReplacedAndRemoved) {
    const DWORD id = add(5, 8, 0x40);
    DWORD pair = 0, modul = 0, flags = 0;
    ASSERT_EQ(1, db_.GetLangModul(id, &pair, &modul, &flags)) << db_.GetError();
    EXPECT_EQ(5u, pair);
    EXPECT_EQ(8u, modul);
    EXPECT_EQ(0x40u, flags);

    EXPECT_EQ(1, db_.UpdateLangModul(id, 7, 9, 0x1)) << db_.GetError();
    ASSERT_EQ(1, db_.GetLangModul(id, &pair, &modul, &flags));
    EXPECT_EQ(7u, pair);
    EXPECT_EQ(9u, modul);
    EXPECT_EQ(0x1u, flags);
    // The keys moved with the fields.
    EXPECT_TRUE(ofPair(5).empty());
    EXPECT_EQ(std::vector<DWORD>{id}, ofPair(7));

    EXPECT_EQ(1, db_.DeleteLangModul(id)) << db_.GetError();
    EXPECT_EQ(0, db_.GetLangModul(id, &pair, &modul, &flags));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(0, db_.DeleteLangModul(id));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
}

TEST_F(LanguageModuleTest, ACallersIdIsKeptAndNeverOverwritten) {
    addWithId(20, 5, 1);
    EXPECT_EQ(0, db_.AddLangModul(DWORD{20}, 6, 2, 0));
    EXPECT_EQ(isam::ISAM_DUPLICATE_KEY, db_.GetError());
    DWORD pair = 0, modul = 0, flags = 0;
    ASSERT_EQ(1, db_.GetLangModul(20, &pair, &modul, &flags));
    EXPECT_EQ(5u, pair);
    EXPECT_EQ(1u, modul);
    EXPECT_EQ(21u, add(5, 2));
}

TEST_F(LanguageModuleTest, AModuleIsFoundInEachOfItsPairs) {
    const DWORD other = add(7, 3);
    const DWORD inFive = add(5, 4);
    const DWORD inSeven = add(7, 4);
    DWORD found = 0;
    ASSERT_EQ(1, db_.GetLangModulId(&found, 7, 4)) << db_.GetError();
    EXPECT_EQ(inSeven, found);
    ASSERT_EQ(1, db_.GetLangModulId(&found, 5, 4)) << db_.GetError();
    EXPECT_EQ(inFive, found);
    ASSERT_EQ(1, db_.GetLangModulId(&found, 7, 3)) << db_.GetError();
    EXPECT_EQ(other, found);

    found = 123;
    EXPECT_EQ(0, db_.GetLangModulId(&found, 9, 4));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(123u, found);
    EXPECT_EQ(0, db_.GetLangModulId(&found, 7, 99));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
}

TEST_F(LanguageModuleTest, APairsModulesAreAppendedInKeyOrder) {
    addWithId(10, 5, 1);
    addWithId(11, 6, 1);
    addWithId(3, 5, 2);
    // Within one pair the index keeps the order of insertion, not of the ids.
    EXPECT_EQ((std::vector<DWORD>{77, 10, 3}), ofPair(5, {77}));
    EXPECT_EQ((std::vector<DWORD>{77}), ofPair(8, {77}));
    EXPECT_EQ(0, db_.GetError());

    DWORD count = 99;
    EXPECT_EQ(1, db_.GetLangModulCount(&count, 5));
    EXPECT_EQ(2u, count);
    EXPECT_EQ(1, db_.GetLangModulCount(&count, 8));
    EXPECT_EQ(0u, count);
}

TEST_F(LanguageModuleTest, ACountIsStoredEvenWhenTheEnumerationFails) {
    add(5, 1);
    ASSERT_EQ(1, db_.CloseTable(TAB_LMODUL));
    DWORD count = 99;
    EXPECT_EQ(0, db_.GetLangModulCount(&count, 5));
    EXPECT_NE(0, db_.GetError());
    EXPECT_EQ(0u, count);
    ASSERT_EQ(1, db_.OpenTable(TAB_LMODUL));
}

}  // namespace
}  // namespace dbtest
