// Message tables: what each overload stores and returns, and the counts, deletes
// and lists they share with the other resource tables.
#include "core/RecordAccess.h"
#include "tests/project/ResourceSupport.h"

namespace resourcetest {
namespace {

struct Message {
    DWORD langModul = 0, textId = 0, id = 0;
    WORD messageFlags = 0;
    DWORD flags = 0, noticeId = 0;
    CString noticeText, key;
};

class MessageTableTest : public ResourceTest {
protected:
    DWORD add(DWORD langModul, DWORD textId, DWORD messageId, const char* resNetId = "",
              const char* key = "", DWORD noticeId = 0, DWORD flags = 0) {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddMessageTable(&id, langModul, textId, messageId, 3, flags, noticeId,
                                         CString(resNetId), CString(key)))
            << db_.GetError();
        return id;
    }

    Message get(DWORD recordId) {
        Message m;
        EXPECT_EQ(1, db_.GetMessageTable(recordId, &m.langModul, &m.textId, &m.id, &m.messageFlags,
                                         &m.flags, &m.noticeId, m.noticeText, m.key))
            << "message " << recordId << " error " << db_.GetError();
        return m;
    }

    // ResNetId as stored, which no reading overload returns.
    CString storedResNetId(DWORD recordId) {
        CIsamTable& table = CDbInternals::Table(db_, qvb::catalogue::TAB_MTABLE);
        EXPECT_EQ(0, qvb::readById(table, recordId));
        std::string text;
        EXPECT_EQ(0, table.GetText("ResNetId", &text));
        return CString(text.c_str());
    }
};

TEST_F(MessageTableTest, EachAddingOverloadStoresItsOwnTextsAndCounts) {
    const DWORD text = phrase("File not found");
    DWORD first = 0, second = 0;
    CString net = "NET";
    ASSERT_EQ(1, db_.AddMessageTable(&first, 5, text, 0x2001, 1, 0, 0, net));
    ASSERT_EQ(1, db_.AddMessageTable(&second, 5, text, 0x2002, 1, 0, 0));
    const DWORD third = add(5, text, 0x2003, "NET3", "KEY3");
    EXPECT_EQ((std::vector<DWORD>{1, 2, 3}), (std::vector<DWORD>{first, second, third}));
    EXPECT_EQ(3u, useCount(text));

    EXPECT_STREQ("NET", storedResNetId(first));
    EXPECT_STREQ("", get(first).key);
    EXPECT_STREQ("", storedResNetId(second));
    EXPECT_STREQ("NET3", storedResNetId(third));
    EXPECT_STREQ("KEY3", get(third).key);

    // Under the caller's id: the string-less one neither counts nor keeps texts,
    // the one with both texts counts.
    ASSERT_EQ(1, db_.AddMessageTable(DWORD{20}, 5, text, 0x2004, 2, 0, 0));
    EXPECT_EQ(3u, useCount(text));
    EXPECT_STREQ("", storedResNetId(20));
    ASSERT_EQ(1, db_.AddMessageTable(DWORD{21}, 5, text, 0x2005, 2, 0, 0, CString("N"), CString("K")));
    EXPECT_EQ(4u, useCount(text));
    EXPECT_STREQ("K", get(21).key);
    EXPECT_EQ(0, db_.AddMessageTable(DWORD{21}, 5, text, 0x2005, 2, 0, 0));
    EXPECT_NE(0, db_.GetError());
}

TEST_F(MessageTableTest, TheReadingOverloadsGiveTheNoticeNumberWhereResNetIdIsAskedFor) {
    const DWORD text = phrase("Disk full");
    const DWORD withNotice = add(5, text, 0x10, "NET", "KEY", 12, 0x8);
    const DWORD without = add(5, text, 0x11, "NET", "KEY");

    const Message m = get(withNotice);
    EXPECT_EQ(5u, m.langModul);
    EXPECT_EQ(text, m.textId);
    EXPECT_EQ(0x10u, m.id);
    EXPECT_EQ(3, m.messageFlags);
    EXPECT_EQ(0x8u, m.flags);
    EXPECT_EQ(12u, m.noticeId);
    EXPECT_STREQ("12", m.noticeText);
    EXPECT_STREQ("KEY", m.key);

    CString resNetId;
    DWORD noticeId = 1;
    ASSERT_EQ(1, db_.GetMessageTable(without, nullptr, nullptr, nullptr, nullptr, nullptr, &noticeId, resNetId));
    EXPECT_STREQ("0", resNetId);
    EXPECT_EQ(0u, noticeId);
    DWORD flags = 1;
    ASSERT_EQ(1, db_.GetMessageTable(without, nullptr, nullptr, nullptr, nullptr, &flags));
    EXPECT_EQ(0u, flags);
    EXPECT_EQ(0, db_.GetMessageTable(999, nullptr, nullptr, nullptr, nullptr, &flags));
    EXPECT_EQ(101, db_.GetError());
}

TEST_F(MessageTableTest, UpdatesReplaceTheTextsTheirOverloadTakesAndKeepTheCounts) {
    const DWORD a = phrase("Retry");
    const DWORD b = phrase("Cancel");
    const DWORD id = add(5, a, 1, "NET", "KEY");

    ASSERT_EQ(1, db_.UpdateMessageTable(id, 5, a, 2, 4, 0, 0));
    EXPECT_EQ(1u, useCount(a));
    EXPECT_STREQ("NET", storedResNetId(id));
    EXPECT_STREQ("KEY", get(id).key);
    EXPECT_EQ(2u, get(id).id);

    CString net = "NET2";
    ASSERT_EQ(1, db_.UpdateMessageTable(id, 5, a, 3, 4, 0, 0, net));
    EXPECT_STREQ("NET2", storedResNetId(id));
    EXPECT_STREQ("KEY", get(id).key);

    ASSERT_EQ(1, db_.UpdateMessageTable(id, 6, b, 4, 5, 0, 0, CString("NET3"), CString("KEY3")));
    EXPECT_FALSE(phraseExists(a));
    EXPECT_EQ(1u, useCount(b));
    const Message m = get(id);
    EXPECT_EQ(6u, m.langModul);
    EXPECT_EQ(5, m.messageFlags);
    EXPECT_STREQ("KEY3", m.key);
    EXPECT_STREQ("NET3", storedResNetId(id));
}

TEST_F(MessageTableTest, DeletesReleaseTheirOwnKindOfExceptionAndTheNotice) {
    const DWORD text = phrase("Abort");
    const DWORD note = notice("why");
    const DWORD doomed = add(5, text, 1, "", "", note);
    const DWORD kept = add(5, text, 2);
    exceptionFor(text, RES_STRINGTABLE, doomed);
    exceptionFor(text, RES_MESSAGETABLE, doomed);

    ASSERT_EQ(1, db_.DeleteMessageTable(doomed));
    EXPECT_FALSE(noticeExists(note));
    EXPECT_EQ(std::vector<DWORD>{doomed}, exceptionElements(text));  // the string-table one
    EXPECT_EQ(1u, useCount(text));

    ASSERT_EQ(1, db_.DeleteMessageTableOnly(kept));
    EXPECT_EQ(1u, useCount(text));
    EXPECT_EQ(0, db_.DeleteMessageTable(kept));
    EXPECT_EQ(101, db_.GetError());
}

TEST_F(MessageTableTest, ListsAndCountsFollowTheFilter) {
    const DWORD a = phrase("One");
    const DWORD b = phrase("Two");
    const DWORD m1 = add(5, a, 1, "", "", 0, 0x1);
    const DWORD m2 = add(5, b, 2, "", "", 0, 0x2);
    const DWORD m3 = add(6, a, 3, "", "", 0, 0x3);

    EXPECT_EQ((std::vector<DWORD>{m1, m2}),
              listedUnder(FilterNone, [&](CDWordArray& ids) { return db_.EnumMessageTable(ids, 5); }));
    EXPECT_EQ((std::vector<DWORD>{m1}),
              listedUnder(FilterNotTranslated, [&](CDWordArray& ids) { return db_.EnumMessageTable(ids, 5); }));
    EXPECT_EQ((std::vector<DWORD>{m3}),
              listedUnder(FilterUser, [&](CDWordArray& ids) { return db_.EnumMessageTableTextId(ids, a); }));

    db_.SetFilter(FilterUser);
    DWORD count = 9;
    ASSERT_EQ(1, db_.GetMessageTableCount(&count, 5));
    EXPECT_EQ(1u, count);
    ASSERT_EQ(1, db_.GetMessageTableTextIdCount(&count, b));
    EXPECT_EQ(1u, count);
    ASSERT_EQ(1, db_.GetMessageTableCount(&count, 77));
    EXPECT_EQ(0u, count);
}

TEST_F(MessageTableTest, EntriesOfBothTablesAreFoundByTheirKindForExceptions) {
    const DWORD text = phrase("Bound");
    const DWORD message = add(5, text, 1);
    DWORD stringId = 0;
    CString net;
    ASSERT_EQ(1, db_.AddStringTable(&stringId, 5, text, 1, 0, 0, net));

    DWORD found = 0;
    ASSERT_EQ(1, db_.GetRecordTextID(RES_MESSAGETABLE, message, found));
    EXPECT_EQ(text, found);
    found = 0;
    ASSERT_EQ(1, db_.GetRecordTextID(RES_STRINGTABLE, stringId, found));
    EXPECT_EQ(text, found);
    EXPECT_EQ(0, db_.GetRecordTextID(RES_STRINGTABLE, stringId + 1, found));
    EXPECT_EQ(101, db_.GetError());

    ASSERT_EQ(1, db_.AddExceptions(RES_MESSAGETABLE, list({message})));
    EXPECT_EQ(std::vector<DWORD>{message}, exceptionElements(text));
    ASSERT_EQ(1, db_.DeleteMessageTable(message));
    EXPECT_EQ(std::vector<DWORD>{}, exceptionElements(text));
}

}  // namespace
}  // namespace resourcetest
