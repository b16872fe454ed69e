// The project's history log and notices.
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "core/Catalogue.h"
#include "core/LibraryErrors.h"
#include "tests/db/DbTestSupport.h"

namespace dbtest {
namespace {

using namespace qvb::catalogue;
using HistoryList = CArray<HISTORYLOG*, HISTORYLOG*>;

constexpr int kTextLimit = 32768;

class HistoryNoticeTest : public DbTest<CDbProject> {
protected:
    // Puts back the stored layout after a test bound another one.
    void TearDown() override { history().Define(*currentTable(TAB_HISTORY)); }
    CIsamTable& history() { return CDbInternals::Table(db_, TAB_HISTORY); }

    DWORD addEntry(LONG stamp, DWORD type = 1, const char* data1 = "d1", const char* data2 = "d2") {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddHistory(&id, stamp, type, data1, data2)) << db_.GetError();
        return id;
    }
    HISTORYLOG entry(DWORD id) {
        HISTORYLOG e;
        EXPECT_EQ(1, db_.GetHistory(id, &e.TimeStamp, &e.HistoryType, e.HistoryData1, e.HistoryData2))
            << db_.GetError();
        return e;
    }
    DWORD addNotice(const char* text) {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddNotice(&id, text)) << db_.GetError();
        return id;
    }
    std::string notice(DWORD id) {
        CString text;
        EXPECT_EQ(1, db_.GetNotice(id, text)) << db_.GetError();
        return static_cast<const char*>(text);
    }
    template <typename Enum>
    std::vector<DWORD> ids(Enum enumerate) {
        CDWordArray found;
        EXPECT_EQ(1, enumerate(found)) << db_.GetError();
        std::vector<DWORD> out;
        for (int i = 0; i < found.GetSize(); ++i) out.push_back(found[i]);
        return out;
    }
    std::vector<DWORD> historyIds() { return ids([&](CDWordArray& a) { return db_.EnumHistory(a); }); }
    std::vector<DWORD> noticeIds() { return ids([&](CDWordArray& a) { return db_.EnumNotice(a); }); }

    static void deleteEntries(HistoryList& list) {
        for (int i = 0; i < list.GetSize(); ++i) delete list[i];
        list.SetSize(0);
    }
    template <std::size_t N>
    void bindHistoryLayout(const FieldDef (&fields)[N], std::uint32_t recordLength) {
        layout_ = *currentTable(TAB_HISTORY);
        layout_.recordLength = recordLength;
        layout_.fields = fields;
        history().Define(layout_);
    }

    TableDef layout_{};
};

TEST_F(HistoryNoticeTest, IdsStartAt1AndOnlyTheTopOneIsGivenAgain) {
    for (DWORD expected = 1; expected <= 3; ++expected) {
        EXPECT_EQ(expected, addEntry(100));
        EXPECT_EQ(expected, addNotice("n"));
    }
    ASSERT_EQ(1, db_.DeleteHistory(3));
    ASSERT_EQ(1, db_.DeleteNotice(3));
    EXPECT_EQ(3u, addEntry(100));
    EXPECT_EQ(3u, addNotice("n"));
    ASSERT_EQ(1, db_.DeleteHistory(1));
    ASSERT_EQ(1, db_.DeleteNotice(1));
    EXPECT_EQ(4u, addEntry(100));
    EXPECT_EQ(4u, addNotice("n"));
    EXPECT_EQ((std::vector<DWORD>{2, 3, 4}), historyIds());
    EXPECT_EQ((std::vector<DWORD>{2, 3, 4}), noticeIds());
    DWORD entries = 0, notices = 0;
    ASSERT_EQ(1, db_.GetHistoryCount(&entries));
    ASSERT_EQ(1, db_.GetNoticeCount(&notices));
    EXPECT_EQ(3u, entries);
    EXPECT_EQ(3u, notices);
}

TEST_F(HistoryNoticeTest, UpdatesRewriteEveryFieldAndEverythingSurvivesReopen) {
    ASSERT_EQ(1, db_.AddHistory(DWORD{50}, 10L, 1, "old1", "old2"));
    ASSERT_EQ(1, db_.AddNotice(DWORD{7}, CString("seven")));
    ASSERT_EQ(1, db_.UpdateHistory(50, -30, 3, "new1", "new2")) << db_.GetError();
    ASSERT_EQ(1, db_.UpdateNotice(7, "revised")) << db_.GetError();
    EXPECT_EQ(0, db_.GetError());
    reopen();
    const HISTORYLOG e = entry(50);
    EXPECT_EQ(-30, e.TimeStamp);
    EXPECT_EQ(3u, e.HistoryType);
    EXPECT_STREQ("new1", e.HistoryData1);
    EXPECT_STREQ("new2", e.HistoryData2);
    EXPECT_EQ("revised", notice(7));
    EXPECT_EQ(0, db_.AddNotice(DWORD{7}, CString("again")));
    EXPECT_EQ(isam::ISAM_DUPLICATE_KEY, db_.GetError());
}

// Stamps are 32-bit on every platform, as the exported interface declares them.
static_assert(sizeof(LONG) == 4, "history stamps are 32 bits");

TEST_F(HistoryNoticeTest, StampsKeepTheirSignUpToThe32BitLimits) {
    for (LONG stamp : {LONG{-1}, LONG{-86400 * 365}, LONG{INT32_MIN}, LONG{INT32_MAX}}) {
        EXPECT_EQ(stamp, entry(addEntry(stamp)).TimeStamp);
    }
    ASSERT_EQ(1, db_.UpdateHistory(1, INT32_MIN, 1, "a", "b"));
    EXPECT_EQ(INT32_MIN, entry(1).TimeStamp);
}

TEST_F(HistoryNoticeTest, TheStampedAddUsesTheCurrentTime) {
    const long before = static_cast<long>(std::time(nullptr));
    ASSERT_EQ(1, db_.AddHistory(DWORD{4}, "now1", "now2"));
    const long after = static_cast<long>(std::time(nullptr));
    const HISTORYLOG e = entry(1);
    EXPECT_LE(before, e.TimeStamp);
    EXPECT_GE(after, e.TimeStamp);
    EXPECT_EQ(4u, e.HistoryType);
    EXPECT_STREQ("now2", e.HistoryData2);
}

TEST_F(HistoryNoticeTest, UnknownIdsLeaveNotFound) {
    CString text;
    LONG stamp = 0;
    DWORD type = 0;
    const auto expectNotFound = [&](int result) {
        EXPECT_EQ(0, result);
        EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    };
    expectNotFound(db_.GetHistory(9, &stamp, &type, text, text));
    expectNotFound(db_.UpdateHistory(9, 1, 1, "x", "y"));
    expectNotFound(db_.DeleteHistory(9));
    expectNotFound(db_.GetNotice(9, text));
    expectNotFound(db_.UpdateNotice(9, "x"));
    expectNotFound(db_.DeleteNotice(9));
    EXPECT_TRUE(historyIds().empty());
    EXPECT_EQ(0, db_.GetError());
}

TEST_F(HistoryNoticeTest, TextsUpToTheFieldLimitAreKeptLongerOnesWriteNothing) {
    const std::string full(kTextLimit, 'x');
    const std::string over(kTextLimit + 1, 'y');
    const DWORD id = addEntry(1, 1, full.c_str(), full.c_str());
    const DWORD noticeId = addNotice(full.c_str());
    const auto expectTooLong = [&](int result) {
        EXPECT_EQ(0, result);
        EXPECT_EQ(isam::ISAM_RECORD_TOO_LONG, db_.GetError());
    };
    expectTooLong(db_.AddHistory(DWORD{40}, 1L, 1, over.c_str(), ""));
    expectTooLong(db_.UpdateHistory(id, 2, 2, "short", over.c_str()));
    expectTooLong(db_.AddNotice(DWORD{40}, CString(over.c_str())));
    expectTooLong(db_.UpdateNotice(noticeId, over.c_str()));
    EXPECT_STREQ(full.c_str(), entry(id).HistoryData1);
    EXPECT_STREQ(full.c_str(), entry(id).HistoryData2);
    EXPECT_EQ(full, notice(noticeId));
    EXPECT_EQ((std::vector<DWORD>{id}), historyIds());
    EXPECT_EQ((std::vector<DWORD>{noticeId}), noticeIds());
}

TEST_F(HistoryNoticeTest, TheListHoldsEveryEntryInIdOrderWhateverItsStamp) {
    addEntry(500, 1, "first", "a");
    addEntry(500, 2, "second", "b");
    addEntry(-7, 3, "earlier stamp, later id", "c");
    HistoryList list;
    ASSERT_EQ(1, db_.EnumHistory(&list)) << db_.GetError();
    ASSERT_EQ(3, list.GetSize());
    for (int i = 0; i < 3; ++i) EXPECT_EQ(static_cast<DWORD>(i + 1), list[i]->HistoryId);
    EXPECT_EQ(500, list[1]->TimeStamp);
    EXPECT_EQ(2u, list[1]->HistoryType);
    EXPECT_STREQ("second", list[1]->HistoryData1);
    EXPECT_STREQ("b", list[1]->HistoryData2);
    EXPECT_EQ(-7, list[2]->TimeStamp);
    deleteEntries(list);
}

TEST_F(HistoryNoticeTest, AnEmptyLogEmptiesTheListWithoutDeletingWhatItHeld) {
    HISTORYLOG* callers = new HISTORYLOG;
    callers->HistoryData1 = "still the caller's";
    HistoryList list;
    list.Add(callers);
    ASSERT_EQ(1, db_.EnumHistory(&list)) << db_.GetError();
    EXPECT_EQ(0, list.GetSize());
    // The sanitizer build reports a use after free here if the call deleted it.
    EXPECT_STREQ("still the caller's", callers->HistoryData1);
    delete callers;
    EXPECT_EQ(0, db_.EnumHistory(static_cast<HistoryList*>(nullptr)));
    EXPECT_EQ(isam::ISAM_BAD_PARAMETER, db_.GetError());
}

// Read under a fixed part 4 bytes longer, a record whose texts are both empty is
// too short, which stops the walk at the second entry.
constexpr FieldDef kWiderFields[] = {
    {"HistoryId", FT_INT4U, 4, 0},         {"TimeStamp", FT_INT4U, 4, 4},
    {"HistoryType", FT_INT4U, 4, 8},       {"Spare", FT_INT4U, 4, 12},
    {"HistoryData1", FT_STRING, 32768, 0}, {"HistoryData2", FT_STRING, 32768, 1},
};
// Without HistoryType every entry is read but cannot be filled in.
constexpr FieldDef kWithoutTypeFields[] = {
    {"HistoryId", FT_INT4U, 4, 0},
    {"TimeStamp", FT_INT4U, 4, 4},
    {"HistoryData1", FT_STRING, 32768, 0},
    {"HistoryData2", FT_STRING, 32768, 1},
};

TEST_F(HistoryNoticeTest, AWalkThatFailsPartWayKeepsTheEntriesListedSoFar) {
    addEntry(1, 1, "long enough", "to read");
    addEntry(2, 2, "", "");
    bindHistoryLayout(kWiderFields, 16);
    HistoryList list;
    EXPECT_EQ(0, db_.EnumHistory(&list));
    EXPECT_EQ(isam::ISAM_RECORD_TOO_SHORT, db_.GetError());
    ASSERT_EQ(1, list.GetSize());
    EXPECT_EQ(1u, list[0]->HistoryId);
    deleteEntries(list);
}

TEST_F(HistoryNoticeTest, AnEntryThatCannotBeFilledInIsNotListed) {
    addEntry(1);
    bindHistoryLayout(kWithoutTypeFields, 12);
    HistoryList list;
    // The sanitizer build reports the entry as leaked if the failure drops it.
    EXPECT_EQ(0, db_.EnumHistory(&list));
    EXPECT_EQ(QVB_NO_SUCH_FIELD, db_.GetError());
    EXPECT_EQ(0, list.GetSize());
}

TEST_F(HistoryNoticeTest, AClosedProjectRefusesEverything) {
    addNotice("before");
    ASSERT_EQ(1, db_.CloseDb());
    DWORD id = 0;
    HistoryList list;
    EXPECT_EQ(0, db_.AddNotice(&id, "after"));
    EXPECT_EQ(isam::ISAM_NOT_OPEN, db_.GetError());
    EXPECT_EQ(0, db_.AddHistory(DWORD{1}, "a", "b"));
    EXPECT_EQ(isam::ISAM_NOT_OPEN, db_.GetError());
    EXPECT_EQ(0, db_.EnumHistory(&list));
    EXPECT_EQ(isam::ISAM_NOT_OPEN, db_.GetError());
    ASSERT_EQ(1, db_.OpenDb(dir().c_str(), "test", 0)) << db_.GetError();
    EXPECT_EQ((std::vector<DWORD>{1}), noticeIds());
    EXPECT_TRUE(historyIds().empty());
}

}  // namespace
}  // namespace dbtest
