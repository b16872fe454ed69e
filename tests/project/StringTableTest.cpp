// String tables: identifiers, the phrase counts through every change, what a delete
// takes along, the filtered and sorted lists, and the overloads that keep old
// behaviour.
#include "core/RecordAccess.h"
#include "tests/project/ResourceSupport.h"

namespace resourcetest {
namespace {

struct Entry {
    DWORD langModul = 0, textId = 0;
    WORD resId = 0;
    DWORD flags = 0, noticeId = 0;
    CString resNetId;
};

class StringTableTest : public ResourceTest {
protected:
    DWORD add(DWORD langModul, DWORD textId, WORD resId, const char* resNetId = "", DWORD flags = 0,
              DWORD noticeId = 0) {
        DWORD id = 0;
        CString net = resNetId;
        EXPECT_EQ(1, db_.AddStringTable(&id, langModul, textId, resId, flags, noticeId, net))
            << db_.GetError();
        return id;
    }

    Entry get(DWORD id) {
        Entry e;
        EXPECT_EQ(1, db_.GetStringTable(id, &e.langModul, &e.textId, &e.resId, &e.flags, &e.noticeId,
                                        e.resNetId))
            << "string " << id << " error " << db_.GetError();
        return e;
    }

    std::vector<DWORD> ofModule(DWORD langModul, FILTER filter = FilterNone) {
        return listedUnder(filter, [&](CDWordArray& ids) { return db_.DoEnumStringTable(ids, langModul); });
    }
};

TEST_F(StringTableTest, AllocatingAddsNumberFromOneCountThePhraseAndMarkTheFiltersStale) {
    const DWORD text = phrase("Open");
    ASSERT_EQ(1, db_.RefreshNotTranslatedFilter(kPair));
    ASSERT_EQ(1, db_.IsFilterValid(FilterNotTranslated));

    EXPECT_EQ(1u, add(7, text, 100, "IDS_OPEN", 0x40, 0));
    EXPECT_EQ(0, db_.IsFilterValid(FilterNotTranslated));
    EXPECT_EQ(2u, add(7, text, 101));
    EXPECT_EQ(2u, useCount(text));

    const Entry e = get(1);
    EXPECT_EQ(7u, e.langModul);
    EXPECT_EQ(text, e.textId);
    EXPECT_EQ(100, e.resId);
    EXPECT_EQ(0x40u, e.flags);
    EXPECT_STREQ("IDS_OPEN", e.resNetId);

    // After the highest id is deleted it is the next one again.
    ASSERT_EQ(1, db_.DeleteStringTable(2));
    EXPECT_EQ(2u, add(7, text, 102));
}

TEST_F(StringTableTest, AnAddWhosePhraseIsMissingFailsAndAddsNothing) {
    DWORD id = 99;
    CString net;
    EXPECT_EQ(0, db_.AddStringTable(&id, 7, 12345, 1, 0, 0, net));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(99u, id);
    DWORD count = 5;
    EXPECT_EQ(1, db_.GetStringTableCount(&count, 7));
    EXPECT_EQ(0u, count);
}

TEST_F(StringTableTest, AddsUnderTheCallersIdCountOnlyForRepair) {
    const DWORD text = phrase("Save");
    ASSERT_EQ(1, db_.AddStringTable(DWORD{10}, 7, text, 1, 0, 0));
    EXPECT_EQ(0u, useCount(text));
    ASSERT_EQ(1, db_.RepairAddStringTable(11, 7, text, 2, 0, 0));
    EXPECT_EQ(1u, useCount(text));
    EXPECT_STREQ("", get(11).resNetId);

    // A duplicate id is refused, and the count raised before the insert stays.
    EXPECT_EQ(0, db_.RepairAddStringTable(11, 8, text, 3, 0, 0));
    EXPECT_NE(0, db_.GetError());
    EXPECT_EQ(2u, useCount(text));
    EXPECT_EQ(7u, get(11).langModul);

    // The next allocated id follows the highest one.
    EXPECT_EQ(12u, add(7, text, 4));
}

TEST_F(StringTableTest, TheStringlessAllocatingAddKeepsTheResNetIdOfTheLastRecordRead) {
    const DWORD text = phrase("Close");
    add(7, text, 1, "FIRST");
    add(7, text, 2, "SECOND");
    get(1);
    DWORD id = 0;
    ASSERT_EQ(1, db_.AddStringTable(&id, 7, text, 3, 0, 0));
    EXPECT_STREQ("FIRST", get(id).resNetId);
}

TEST_F(StringTableTest, EveryReadingOverloadGivesTheSameFieldsAndAMissingIdIs101) {
    const DWORD text = phrase("Print");
    const DWORD id = add(3, text, 55, "NET", 0x10, 0);
    DWORD langModul = 0, textId = 0, flags = 0, noticeId = 9;
    WORD resId = 0;
    ASSERT_EQ(1, db_.GetStringTable(id, &langModul, &textId, &resId, &flags, &noticeId));
    EXPECT_EQ(3u, langModul);
    EXPECT_EQ(55, resId);
    EXPECT_EQ(0u, noticeId);
    flags = 0;
    ASSERT_EQ(1, db_.GetStringTable(id, nullptr, nullptr, nullptr, &flags));
    EXPECT_EQ(0x10u, flags);

    EXPECT_EQ(0, db_.GetStringTable(id + 1, &langModul, &textId, &resId, &flags));
    EXPECT_EQ(101, db_.GetError());
}

TEST_F(StringTableTest, UpdatesCountTheNewPhraseUpBeforeTheOldOneDown) {
    const DWORD a = phrase("Alpha");
    const DWORD b = phrase("Beta");
    const DWORD id = add(7, a, 1, "NET");
    CString net = "NET2";

    // The same phrase: its only use never passes through 0, so it stays.
    ASSERT_EQ(1, db_.UpdateStringTable(id, 7, a, 2, 0, 0, net));
    EXPECT_TRUE(phraseExists(a));
    EXPECT_EQ(1u, useCount(a));
    EXPECT_STREQ("NET2", get(id).resNetId);

    // Another phrase: the old one loses its last use, and its family goes.
    ASSERT_EQ(1, db_.UpdateStringTable(id, 8, b, 3, 4, 0, net));
    EXPECT_EQ(1u, useCount(b));
    EXPECT_FALSE(phraseExists(a));
    const Entry e = get(id);
    EXPECT_EQ(8u, e.langModul);
    EXPECT_EQ(3, e.resId);
    EXPECT_EQ(4u, e.flags);

    // A missing record fails after the new phrase was counted up.
    EXPECT_EQ(0, db_.UpdateStringTable(id + 5, 7, b, 1, 0, 0, net));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(2u, useCount(b));
}

TEST_F(StringTableTest, TheSixArgumentUpdateRewritesTheResNetIdTheTableObjectHolds) {
    const DWORD text = phrase("Find");
    const DWORD first = add(7, text, 1, "FIRST");
    const DWORD second = add(7, text, 2, "SECOND");
    get(second);
    ASSERT_EQ(1, db_.UpdateStringTable(first, 7, text, 9, 0, 0));
    const Entry e = get(first);
    EXPECT_EQ(9, e.resId);
    EXPECT_STREQ("SECOND", e.resNetId);
    EXPECT_EQ(2u, useCount(text));
}

TEST_F(StringTableTest, ADeleteTakesItsExceptionsOneCountAndItsNoticeAlong) {
    const DWORD text = phrase("Exit");
    const DWORD note = notice("check the accelerator");
    const DWORD doomed = add(7, text, 1, "", 0, note);
    const DWORD kept = add(7, text, 2);
    exceptionFor(text, RES_STRINGTABLE, doomed);
    exceptionFor(text, RES_STRINGTABLE, kept);
    exceptionFor(text, RES_MESSAGETABLE, doomed);

    ASSERT_EQ(1, db_.DeleteStringTable(doomed)) << db_.GetError();
    EXPECT_EQ(0, db_.GetError());
    EXPECT_FALSE(noticeExists(note));
    EXPECT_EQ(1u, useCount(text));
    EXPECT_EQ((std::vector<DWORD>{kept, doomed}), exceptionElements(text));
    EXPECT_EQ(std::vector<DWORD>{kept}, ofModule(7));

    // The last use of the phrase goes with the last entry.
    ASSERT_EQ(1, db_.DeleteStringTable(kept));
    EXPECT_FALSE(phraseExists(text));

    EXPECT_EQ(0, db_.DeleteStringTable(kept));
    EXPECT_EQ(101, db_.GetError());
}

TEST_F(StringTableTest, ADeleteWhoseNoticeIsGoneStillDeletes) {
    const DWORD text = phrase("Help");
    const DWORD id = add(7, text, 1, "", 0, 4711);
    ASSERT_EQ(1, db_.DeleteStringTable(id));
    EXPECT_EQ(0, db_.GetError());
    EXPECT_EQ(std::vector<DWORD>{}, ofModule(7));
}

TEST_F(StringTableTest, TheRecordOnlyDeleteLeavesCountsNoticesAndExceptions) {
    const DWORD text = phrase("Undo");
    const DWORD note = notice("n");
    const DWORD id = add(7, text, 1, "", 0, note);
    exceptionFor(text, RES_STRINGTABLE, id);
    ASSERT_EQ(1, db_.RefreshNotTranslatedFilter(kPair));

    ASSERT_EQ(1, db_.DeleteStringTableOnly(id));
    EXPECT_EQ(1, db_.IsFilterValid(FilterNotTranslated));
    EXPECT_EQ(1u, useCount(text));
    EXPECT_TRUE(noticeExists(note));
    EXPECT_EQ(std::vector<DWORD>{id}, exceptionElements(text));
    EXPECT_EQ(0, db_.DeleteStringTableOnly(id));
    EXPECT_EQ(101, db_.GetError());
}

TEST_F(StringTableTest, ListsSelectByModuleOrPhraseAndByTheCurrentFilter) {
    const DWORD a = phrase("A");
    const DWORD b = phrase("B");
    const DWORD plain = add(7, a, 1, "", 0x100);
    const DWORD untranslated = add(7, b, 2, "", 0x101);
    const DWORD inUser = add(7, a, 3, "", 0x102);
    const DWORD both = add(7, b, 4, "", 0x103);
    const DWORD elsewhere = add(8, a, 5, "", 0x103);

    EXPECT_EQ((std::vector<DWORD>{plain, untranslated, inUser, both}), ofModule(7));
    EXPECT_EQ((std::vector<DWORD>{untranslated, both}), ofModule(7, FilterNotTranslated));
    EXPECT_EQ((std::vector<DWORD>{inUser, both}), ofModule(7, FilterUser));
    EXPECT_EQ(std::vector<DWORD>{}, ofModule(7, static_cast<FILTER>(3)));
    EXPECT_EQ(std::vector<DWORD>{}, ofModule(9));

    EXPECT_EQ((std::vector<DWORD>{plain, inUser, elsewhere}),
              listedUnder(FilterNone, [&](CDWordArray& ids) { return db_.EnumStringTableTextId(ids, a); }));
    EXPECT_EQ((std::vector<DWORD>{inUser, elsewhere}),
              listedUnder(FilterUser, [&](CDWordArray& ids) { return db_.EnumStringTableTextId(ids, a); }));

    // Counts go through the same lists.
    db_.SetFilter(FilterNotTranslated);
    DWORD count = 0;
    ASSERT_EQ(1, db_.GetStringTableCount(&count, 7));
    EXPECT_EQ(2u, count);
    ASSERT_EQ(1, db_.GetStringTableTextIdCount(&count, a));
    EXPECT_EQ(1u, count);
    ASSERT_EQ(1, db_.GetStringTableTextIdCount(&count, 999));
    EXPECT_EQ(0u, count);
    db_.SetFilter(FilterNone);

    // The lists append.
    CDWordArray ids = list({42});
    ASSERT_EQ(1, db_.DoEnumStringTable(ids, 8));
    EXPECT_EQ((std::vector<DWORD>{42, elsewhere}), toVector(ids));
}

TEST_F(StringTableTest, TheSortedListIsInResIdOrder) {
    const DWORD text = phrase("Sort");
    const DWORD thirty = add(7, text, 30);
    const DWORD ten = add(7, text, 10);
    const DWORD twenty = add(7, text, 20);
    add(8, text, 5);

    CDWordArray ids;
    ASSERT_EQ(1, db_.EnumStringTable(ids, 7, TRUE));
    EXPECT_EQ((std::vector<DWORD>{ten, twenty, thirty}), toVector(ids));
    CDWordArray unsorted;
    ASSERT_EQ(1, db_.EnumStringTable(unsorted, 7, FALSE));
    EXPECT_EQ((std::vector<DWORD>{thirty, ten, twenty}), toVector(unsorted));

    // A list of fewer than two ids is left alone, even one that names nothing.
    CDWordArray single = list({999});
    db_.SortStringTableIDList(single);
    EXPECT_EQ(std::vector<DWORD>{999}, toVector(single));
}

TEST_F(StringTableTest, PhraseCountsStayExactThroughAMixOfChanges) {
    const DWORD a = phrase("Shared");
    const DWORD b = phrase("Other");
    std::vector<DWORD> ids;
    for (WORD i = 0; i < 6; ++i) ids.push_back(add(7, i % 2 ? b : a, i));
    EXPECT_EQ(3u, useCount(a));
    EXPECT_EQ(3u, useCount(b));
    CString net;
    ASSERT_EQ(1, db_.UpdateStringTable(ids[0], 7, b, 0, 0, 0, net));   // a -> b
    ASSERT_EQ(1, db_.UpdateStringTable(ids[1], 7, b, 1, 0, 0, net));   // b -> b
    ASSERT_EQ(1, db_.DeleteStringTable(ids[2]));                        // a
    ASSERT_EQ(1, db_.DeleteStringTableOnly(ids[3]));                    // b, count kept
    EXPECT_EQ(1u, useCount(a));
    EXPECT_EQ(4u, useCount(b));
    ASSERT_EQ(1, db_.DeleteStringTable(ids[4]));                        // a's last use
    EXPECT_FALSE(phraseExists(a));
    EXPECT_EQ(4u, useCount(b));
}

}  // namespace
}  // namespace resourcetest
