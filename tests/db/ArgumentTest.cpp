// Arguments the records cannot hold are refused before an operation's first step:
// the database stays exactly as it was, phrase counts and the filters' validity
// included. Also the calls that need an open database, and damaged stored texts.
#include <functional>
#include <string>
#include <vector>

#include "core/Catalogue.h"
#include "core/LibraryErrors.h"
#include "tests/db/RawFile.h"
#include "tests/project/ResourceSupport.h"

namespace resourcetest {
namespace {

using isam::ISAM_RECORD_TOO_LONG;

const CString kLong300(std::string(300, 'r').c_str());
const CString kLong5000(std::string(5000, 'p').c_str());
const CString kLong40000(std::string(40000, 't').c_str());

struct OverlongCase {
    const char* name;
    std::function<int(CDbProject&)> call;
    int result = 0;  // the two updates that report only their find answer 1
};

void PrintTo(const OverlongCase& c, std::ostream* os) { *os << c.name; }

// One of everything a text can go to, with phrases in use so that counts can move.
class OverlongTextTest : public ResourceTest, public ::testing::WithParamInterface<OverlongCase> {
protected:
    void SetUp() override {
        ResourceTest::SetUp();
        phrase("alpha");
        phrase("beta");
        phrase("alpha");  // untranslated like phrase 1: an update with similars reaches it
        DWORD id = 0;
        ASSERT_EQ(1, db_.AddModul(&id, "app.exe", 1, 0));
        ASSERT_EQ(1, db_.AddModulExtra(1, "format"));
        ASSERT_EQ(1, db_.AddTargetPaths(DWORD{1}, "main", "s1", "s2"));
        ASSERT_EQ(1, db_.AddLangModul(&id, kPair, 1, 0));
        CString net("net");
        ASSERT_EQ(1, db_.AddStringTable(&id, 1, 1, 10, 0, 0, net));
        ASSERT_EQ(1, db_.AddMessageTable(&id, 1, 1, 20, 0, 0, 0, CString("net"), CString("key")));
        ASSERT_EQ(1, db_.AddNotice(&id, "notice"));
        ASSERT_EQ(1, db_.AddHistory(&id, 5, 1, "d1", "d2"));
        ASSERT_EQ(1, db_.RefreshNotTranslatedFilter(kPair));
    }

    std::string snapshot() {
        EXPECT_EQ(1, db_.CloseDb()) << db_.GetError();
        const std::string state = dbtest::fileSnapshot(dir() + "test.Prj");
        EXPECT_EQ(1, db_.OpenDb(dir().c_str(), "test", 0)) << db_.GetError();
        return state;
    }
};

TEST_P(OverlongTextTest, ChangesNothing) {
    const OverlongCase& c = GetParam();
    ASSERT_EQ(1, db_.RefreshNotTranslatedFilter(kPair));
    const std::string before = snapshot();
    ASSERT_EQ(1, db_.RefreshNotTranslatedFilter(kPair)) << db_.GetError();
    const int validBefore = db_.IsFilterValid(FilterNotTranslated);

    EXPECT_EQ(c.result, c.call(db_)) << c.name;
    if (c.result == 0) {
        EXPECT_EQ(ISAM_RECORD_TOO_LONG, db_.GetError()) << c.name;
    }
    EXPECT_EQ(validBefore, db_.IsFilterValid(FilterNotTranslated)) << c.name;
    EXPECT_EQ(before, snapshot()) << c.name;
}

const OverlongCase kOverlongCases[] = {
    {"AddDictionary", [](CDbProject& db) { DWORD id = 0;
         return db.AddDictionary(&id, 1, kLong40000, "", "", 0, 0, 0, 0, 0); }},
    {"AddDictionaryWithId", [](CDbProject& db) {
         return db.AddDictionary(DWORD{9}, 1, "s", "", kLong40000, 0, 0, 0, 0, 0); }},
    {"UpdateDictionaryWithSimilars", [](CDbProject& db) {
         return db.UpdateDictionary(1, 1, "alpha", kLong40000, 0, 0, 1, 0, 0, 1); }},
    {"AddSLang", [](CDbProject& db) { DWORD id = 0; return db.AddSLang(&id, 1031, 1033, kLong300, 0); }},
    {"UpdateSLang", [](CDbProject& db) { return db.UpdateSLang(1, 1031, 1033, kLong300, 0); }, 1},
    {"AddModul", [](CDbProject& db) { DWORD id = 0; return db.AddModul(&id, kLong5000, 1, 0); }},
    {"AddModulWithId", [](CDbProject& db) { return db.AddModul(DWORD{7}, kLong5000, 1, 0); }},
    {"UpdateModul", [](CDbProject& db) { CString name = kLong5000; return db.UpdateModul(1, name, 1, 0); }, 1},
    {"AddModulExtra", [](CDbProject& db) { return db.AddModulExtra(2, kLong5000); }},
    {"UpdateModulExtra", [](CDbProject& db) { return db.UpdateModulExtra(1, kLong5000); }},
    {"AddTargetPaths", [](CDbProject& db) { DWORD id = 0; return db.AddTargetPaths(&id, "m", "s", kLong5000); }},
    {"UpdateTargetPaths", [](CDbProject& db) { CString m = kLong5000, s1 = "a", s2 = "b";
         return db.UpdateTargetPaths(1, m, s1, s2); }},
    {"AddNotice", [](CDbProject& db) { DWORD id = 0; return db.AddNotice(&id, kLong40000); }},
    {"UpdateNotice", [](CDbProject& db) { return db.UpdateNotice(1, kLong40000); }},
    {"AddHistory", [](CDbProject& db) { DWORD id = 0; return db.AddHistory(&id, 1, 1, "a", kLong40000); }},
    {"UpdateHistory", [](CDbProject& db) { return db.UpdateHistory(1, 1, 1, kLong40000, "b"); }},
    {"AddStringTable", [](CDbProject& db) { DWORD id = 0; CString net = kLong300;
         return db.AddStringTable(&id, 1, 2, 11, 0, 0, net); }},
    {"UpdateStringTableToOtherPhrase", [](CDbProject& db) { CString net = kLong300;
         return db.UpdateStringTable(1, 1, 2, 10, 0, 0, net); }},
    {"UpdateStringTableSamePhrase", [](CDbProject& db) { CString net = kLong300;
         return db.UpdateStringTable(1, 1, 1, 10, 0, 0, net); }},
    {"AddMessageTable", [](CDbProject& db) { DWORD id = 0;
         return db.AddMessageTable(&id, 1, 2, 21, 0, 0, 0, CString("n"), kLong300); }},
    {"AddMessageTableCounting", [](CDbProject& db) {
         return db.AddMessageTable(DWORD{5}, 1, 2, 21, 0, 0, 0, kLong300, CString("k")); }},
    {"UpdateMessageTable", [](CDbProject& db) {
         return db.UpdateMessageTable(1, 1, 2, 20, 0, 0, 0, CString("n"), kLong300); }},
    {"UpdateMessageTableResNetId", [](CDbProject& db) { CString net = kLong300;
         return db.UpdateMessageTable(1, 1, 2, 20, 0, 0, 0, net); }},
};

INSTANTIATE_TEST_SUITE_P(EveryTextTakingOperation, OverlongTextTest, ::testing::ValuesIn(kOverlongCases),
                         [](const ::testing::TestParamInfo<OverlongCase>& info) { return info.param.name; });

// A text at its field's limit is no error: the check is on the limit, not below it.
TEST_F(ResourceTest, TextsAtTheirLimitAreStored) {
    const DWORD textId = phrase("gamma");
    DWORD id = 0;
    CString net(std::string(200, 'n').c_str());
    ASSERT_EQ(1, db_.AddStringTable(&id, 1, textId, 1, 0, 0, net)) << db_.GetError();
    CString back;
    ASSERT_EQ(1, db_.GetStringTable(id, nullptr, nullptr, nullptr, nullptr, nullptr, back));
    EXPECT_EQ(net, back);
    EXPECT_EQ(1u, useCount(textId));
}

// ---- Transactions need an open database ------------------------------------------------

TEST(TransactionTest, ANeverOpenedOrClosedDatabaseHasNoTransactions) {
    dbtest::TempDir tmp;
    CDbProject never;
    for (auto call : {&CDbObject::BeginTransaction, &CDbObject::CommitTransaction,
                      &CDbObject::RollbackTransaction}) {
        EXPECT_EQ(0, (never.*call)());
        EXPECT_EQ(isam::ISAM_NOT_OPEN, never.GetError());
    }
    CDbProject db;
    const std::string dir = dbtest::dirOf(tmp);
    ASSERT_EQ(1, qvb::createForUse(db, dir.c_str(), "t"));
    ASSERT_EQ(1, db.CloseDb());
    EXPECT_EQ(0, db.BeginTransaction());
    EXPECT_EQ(isam::ISAM_NOT_OPEN, db.GetError());
}

// A batch left open across a close must not hold back what the next open writes.
TEST(TransactionTest, ABatchLeftOpenAcrossACloseEndsWithTheCommitThatFails) {
    dbtest::TempDir tmp;
    const std::string dir = dbtest::dirOf(tmp);
    {
        CDbProject db;
        ASSERT_EQ(1, qvb::createForUse(db, dir.c_str(), "t"));
        ASSERT_EQ(1, db.BeginTransaction());
        ASSERT_EQ(1, db.CloseDb());
        EXPECT_EQ(0, db.CommitTransaction());
        EXPECT_EQ(isam::ISAM_NOT_OPEN, db.GetError());
        ASSERT_EQ(1, db.OpenDb(dir.c_str(), "t", 0));
        DWORD id = 0;
        ASSERT_EQ(1, db.AddNotice(&id, "kept"));
        EXPECT_EQ(0, db.CommitTransaction());  // nothing left to commit
    }
    CDbProject again;
    ASSERT_EQ(1, again.OpenDb(dir.c_str(), "t", 0)) << again.GetError();
    CString text;
    ASSERT_EQ(1, again.GetNotice(1, text)) << again.GetError();
    EXPECT_STREQ("kept", text);
}

// ---- Stored texts longer than their field ---------------------------------------------

class DamagedTextTest : public ResourceTest {};

TEST_F(DamagedTextTest, AStoredTextLongerThanItsFieldIsDamageNotData) {
    DWORD id = 0;
    ASSERT_EQ(1, db_.AddNotice(&id, "short"));
    for (std::size_t length : {std::size_t{32769}, std::size_t{1000000}}) {
        ASSERT_EQ(1, db_.CloseDb());
        std::string record(reinterpret_cast<const char*>(&id), sizeof id);  // NoticeId stays
        record += std::string(length, 'x');
        ASSERT_TRUE(dbtest::forgeRecord(dir() + "test.Prj", "Notice", id, record));
        ASSERT_EQ(1, db_.OpenDb(dir().c_str(), "test", 0)) << db_.GetError();
        CString text("before");
        EXPECT_EQ(0, db_.GetNotice(id, text)) << length;
        EXPECT_EQ(isam::ISAM_DAMAGED, db_.GetError()) << length;
        EXPECT_STREQ("before", text);
    }
}

}  // namespace
}  // namespace resourcetest
