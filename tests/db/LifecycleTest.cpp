// The life of a database object: create, open (with and without rebuild), close,
// versions and the tables a stored version has, copies, and instances.
#include <fstream>
#include <memory>
#include <vector>

#include "tests/db/DbTestSupport.h"

namespace dbtest {
namespace {

using qvb::catalogue::earlierTable;
using qvb::catalogue::currentTable;

class ProjectTest : public DbTest<CDbProject> {};
class DictionaryTest : public DbTest<CDbDictionary> {};

TEST(LifecycleTest, CreateLeavesTheDatabaseRegisteredAndOpenAfterwardsOpensEveryTable) {
    TempDir tmp;
    CDbProject db;
    ASSERT_EQ(1, db.CreateDb(dirOf(tmp).c_str(), "fresh"));
    EXPECT_EQ(DB_REGISTERED, CDbInternals::State(db)->state);
    EXPECT_EQ(0, openTableCount(db));
    // The new database has no version record; the open right after creating
    // skips the version and opens all 32 tables.
    ASSERT_EQ(1, db.OpenDb(dirOf(tmp).c_str(), "fresh", 0));
    EXPECT_EQ(DB_OPEN, CDbInternals::State(db)->state);
    EXPECT_EQ(32, openTableCount(db));
    EXPECT_EQ(0, db.GetDBVersion());
    EXPECT_EQ(101, db.GetError());
    EXPECT_EQ(CString("fresh"), db.GetFileName());
    EXPECT_EQ(CString(dirOf(tmp).c_str()), db.GetFilePath());
}

TEST(LifecycleTest, CreatingOverAnExistingDatabaseFailsAndLeavesItAlone) {
    TempDir tmp;
    {
        CDbProject first;
        ASSERT_EQ(1, qvb::createForUse(first, dirOf(tmp).c_str(), "same"));
        DWORD id = 0;
        ASSERT_EQ(1, first.AddSLang(&id, 1031, 1033, "Arial", 0));
    }
    CDbProject second;
    EXPECT_EQ(0, second.CreateDb(dirOf(tmp).c_str(), "same"));
    EXPECT_EQ(isam::ISAM_FILE_EXISTS, second.GetError());
    ASSERT_EQ(1, second.OpenDb(dirOf(tmp).c_str(), "same", 0));
    DWORD count = 0;
    ASSERT_EQ(1, second.GetSLangCount(&count));
    EXPECT_EQ(1u, count);
}

TEST_F(ProjectTest, CloseIsIdempotentAndAClosedDatabaseRefusesRecords) {
    ASSERT_EQ(1, db_.CloseDb());
    EXPECT_EQ(DB_REGISTERED, CDbInternals::State(db_)->state);
    EXPECT_EQ(0, openTableCount(db_));
    db_.SetFilter(FilterUser);
    EXPECT_EQ(1, db_.CloseDb());  // nothing to do
    CDWordArray ids;
    EXPECT_EQ(0, db_.EnumSLang(ids));
    EXPECT_EQ(isam::ISAM_NOT_OPEN, db_.GetError());
}

TEST(LifecycleTest, OpeningAMissingDatabaseFailsRegistered) {
    TempDir tmp;
    CDbProject db;
    EXPECT_EQ(0, db.OpenDb(dirOf(tmp).c_str(), "absent", 0));
    EXPECT_EQ(isam::ISAM_FILE_NOT_FOUND, db.GetError());
    EXPECT_EQ(DB_REGISTERED, CDbInternals::State(db)->state);
    EXPECT_EQ(1, db.CloseDb());
}

TEST_F(ProjectTest, TheStoredVersionDecidesHowManyTablesOpenAndClose) {
    const std::vector<std::pair<int, int>> tablesAt = {
        {1, 15}, {3, 15}, {4, 18}, {5, 24}, {6, 24}, {7, 25}, {8, 26}, {14, 26},
        {15, 28}, {18, 28}, {19, 30}, {20, 31}, {21, 32}, {40, 32}};
    for (const auto& [version, tables] : tablesAt) {
        ASSERT_EQ(1, db_.SetDBVersion(version));
        reopen();
        EXPECT_EQ(version, db_.GetDBVersion());
        EXPECT_EQ(tables, openTableCount(db_)) << "version " << version;
        EXPECT_EQ(tables, CDbInternals::TablesAtStoredVersion(db_));
    }
    // A version-3 project closes exactly the 15 tables it opened.
    ASSERT_EQ(1, db_.SetDBVersion(3));
    reopen();
    ASSERT_EQ(1, db_.CloseDb());
    EXPECT_EQ(0, openTableCount(db_));
}

TEST_F(ProjectTest, ProjectsBeforeVersion16ReadPhrasesInTheOldLayout) {
    ASSERT_EQ(1, db_.SetDBVersion(15));
    reopen();
    EXPECT_EQ(earlierTable('D', 1), CDbInternals::Table(db_, 1).Table());
    EXPECT_TRUE(CDbInternals::Table(db_, 1).IsOpen());
    ASSERT_EQ(1, db_.SetDBVersion(16));
    reopen();
    EXPECT_EQ(currentTable(1), CDbInternals::Table(db_, 1).Table());
}

TEST_F(DictionaryTest, DictionariesBeforeVersion2ReadPhrasesInTheOldLayout) {
    EXPECT_EQ(2, db_.GetDBVersion());
    EXPECT_EQ(3, openTableCount(db_));
    ASSERT_EQ(1, db_.SetDBVersion(1));
    reopen();
    EXPECT_EQ(earlierTable('D', 1), CDbInternals::Table(db_, 1).Table());
    EXPECT_EQ(3, openTableCount(db_));
    ASSERT_EQ(1, db_.SetDBVersion(2));
    reopen();
    EXPECT_EQ(currentTable(1), CDbInternals::Table(db_, 1).Table());
}

TEST(LifecycleTest, AnObjectOfNoKnownKindHandlesTheContainerOnly) {
    TempDir tmp;
    CDbObject db(static_cast<DBTYPEONE>(7));
    EXPECT_STREQ("___", CDbInternals::Extension(db));
    EXPECT_EQ(0, CDbInternals::TableCount(db));
    ASSERT_EQ(1, db.CreateDb(dirOf(tmp).c_str(), "other"));
    EXPECT_TRUE(std::ifstream(tmp.file("other.___")).good());
    ASSERT_EQ(1, db.OpenDb(dirOf(tmp).c_str(), "other", 0));
    EXPECT_EQ(1, db.CloseDb());
    // It has no table 0 to keep resources in.
    int value = 1;
    EXPECT_EQ(0, db.AddResource(0, &value, sizeof value));
    EXPECT_EQ(-12, db.GetError());
}

TEST_F(ProjectTest, ACopySharesTheOpenDatabase) {
    CDbProject copy(db_);
    DWORD id = 0;
    ASSERT_EQ(1, db_.AddSLang(&id, 1031, 1033, "Arial", 5));
    CDWordArray ids;
    ASSERT_EQ(1, copy.EnumSLang(ids));
    ASSERT_EQ(1, ids.GetSize());
    EXPECT_EQ(id, ids[0]);
    EXPECT_EQ(db_.GetFileName(), copy.GetFileName());

    // Assignment shares too, and lets go of what the target had.
    CDbProject other;
    other = copy;
    ASSERT_EQ(1, other.AddSLang(&id, 1036, 1033, "Arial", 0));
    DWORD count = 0;
    ASSERT_EQ(1, db_.GetSLangCount(&count));
    EXPECT_EQ(2u, count);
}

TEST_F(ProjectTest, DestroyingACopyLeavesTheSourceWorking) {
    { CDbProject copy(db_); }
    DWORD id = 0;
    EXPECT_EQ(1, db_.AddSLang(&id, 1031, 1033, "Arial", 0));
}

TEST(LifecycleTest, AHundredDatabasesAtOnceAndTheNextFailsAtItsFirstEngineCall) {
    TempDir tmp;
    std::vector<std::unique_ptr<CDbDictionary>> open;
    for (int i = 0; i < 100; ++i) {
        open.push_back(std::make_unique<CDbDictionary>());
        EXPECT_EQ("IsamInstance" + std::to_string(i),
                  CDbInternals::State(*open.back())->engine->InstanceName());
    }
    CDbDictionary extra;
    EXPECT_TRUE(CDbInternals::State(extra)->engine->InstanceName().empty());
    EXPECT_EQ(0, extra.CreateDb(dirOf(tmp).c_str(), "extra"));
    EXPECT_EQ(isam::ISAM_NO_INSTANCE, extra.GetError());

    // Each of the hundred works on its own instance.
    ASSERT_EQ(1, qvb::createForUse(*open[0], dirOf(tmp).c_str(), "first"));
    ASSERT_EQ(1, qvb::createForUse(*open[99], dirOf(tmp).c_str(), "last"));
    DWORD id = 0;
    ASSERT_EQ(1, open[0]->AddSLang(&id, 1031, 1033, "", 0));
    DWORD count = 5;
    ASSERT_EQ(1, open[99]->GetSLangCount(&count));
    EXPECT_EQ(0u, count);

    // A freed name is taken by the next database.
    open[42].reset();
    CDbDictionary late;
    EXPECT_EQ("IsamInstance42", CDbInternals::State(late)->engine->InstanceName());
}

TEST_F(ProjectTest, ARebuildingOpenKeepsEveryRecordAndResource) {
    for (DWORD i = 0; i < 50; ++i) {
        ASSERT_EQ(1, db_.AddSLang(i + 1, 1031 + i, 1033, "Tahoma", i));
    }
    char note[] = "kept";
    ASSERT_EQ(1, db_.AddResource(5, note, sizeof note));
    ASSERT_EQ(1, db_.CloseDb());
    ASSERT_EQ(1, db_.OpenDb(dir().c_str(), "test", 1)) << db_.GetError();
    EXPECT_EQ(21, db_.GetDBVersion());
    CDWordArray ids;
    ASSERT_EQ(1, db_.EnumSLang(ids));
    ASSERT_EQ(50, ids.GetSize());
    DWORD plang = 0, slang = 0, flags = 0;
    CString font;
    ASSERT_EQ(1, db_.GetSLang(50, &plang, &slang, font, &flags));
    EXPECT_EQ(1080u, plang);
    EXPECT_EQ(49u, flags);
    char back[8] = {};
    WORD length = sizeof back;
    ASSERT_EQ(1, db_.GetResource(5, back, &length));
    EXPECT_STREQ("kept", back);
}

TEST_F(ProjectTest, RepairOpenGoesOnPastTablesThatWillNotOpen) {
    ASSERT_EQ(1, db_.CloseDb());
    // Remove one table's files behind the database's back.
    isamtest::ScopedInstance instance;
    ASSERT_EQ(isam::ISAM_OK, isam::openContainer((dir() + "test.Prj").c_str(), 582, nullptr));
    ASSERT_EQ(isam::ISAM_OK, isam::deleteFile(qvb::catalogue::makeFileDefinition(*currentTable(13), "test.Prj")));
    ASSERT_EQ(isam::ISAM_OK, isam::closeContainer());

    // A table that its version has and its container lacks is damage; the failed
    // open lets go of the 13 tables it had opened.
    EXPECT_EQ(0, db_.OpenDb(dir().c_str(), "test", 0));
    EXPECT_EQ(isam::ISAM_DAMAGED, db_.GetError());
    EXPECT_EQ(0, openTableCount(db_));

    ASSERT_EQ(1, db_.RepairOpenDb(dir().c_str(), "test", 0));
    EXPECT_EQ(31, openTableCount(db_));
    EXPECT_EQ(DB_OPEN, CDbInternals::State(db_)->state);
    EXPECT_EQ(isam::ISAM_OK, db_.GetError());  // the last table opened
}

TEST(LifecycleTest, SafeOpenNeedsASourceLanguageAndTakesItsLocale) {
    TempDir tmp;
    CDbProject db;
    ASSERT_EQ(1, qvb::createForUse(db, dirOf(tmp).c_str(), "safe"));
    ASSERT_EQ(1, db.CloseDb());
    EXPECT_EQ(0, db.SafeOpenDb(dirOf(tmp).c_str(), "safe"));
    EXPECT_EQ(DB_OPEN, CDbInternals::State(db)->state);  // stays open

    DWORD id = 0;
    ASSERT_EQ(1, db.AddSLang(&id, 1031, 1033, "Arial", 0));
    ASSERT_EQ(1, db.CloseDb());
    ASSERT_EQ(1, db.SafeOpenDb(dirOf(tmp).c_str(), "safe"));
    EXPECT_EQ(1031u, CDbInternals::SortLocale(db));
    std::uint32_t lcid = 0;
    CIsamTable& phrases = CDbInternals::Table(db, 1);
    ASSERT_EQ(isam::ISAM_OK, phrases.SelectInstance());
    ASSERT_EQ(isam::ISAM_OK, isam::getFileLocale(phrases.FileNumber() + 3, &lcid));
    EXPECT_EQ(1031u, lcid);
}

TEST_F(ProjectTest, SortLocaleOnAClosedDatabaseWaitsForTheNextOpen) {
    ASSERT_EQ(1, db_.CloseDb());
    EXPECT_EQ(1, db_.SetSortLCID(1049, 0));
    ASSERT_EQ(1, db_.OpenDb(dir().c_str(), "test", 0));
    std::uint32_t lcid = 0;
    CIsamTable& pairs = CDbInternals::Table(db_, 0);
    ASSERT_EQ(isam::ISAM_OK, pairs.SelectInstance());
    ASSERT_EQ(isam::ISAM_OK, isam::getFileLocale(pairs.FileNumber() + 1, &lcid));
    EXPECT_EQ(1049u, lcid);
    // On an open database the locale reaches every file at once.
    EXPECT_EQ(1, db_.SetSortLCID(1031, 0));
    ASSERT_EQ(isam::ISAM_OK, isam::getFileLocale(pairs.FileNumber() + 1, &lcid));
    EXPECT_EQ(1031u, lcid);
    EXPECT_EQ(1, db_.SetSortLCID(1036, 1));
    EXPECT_EQ(DB_OPEN, CDbInternals::State(db_)->state);
    ASSERT_EQ(isam::ISAM_OK, CDbInternals::Table(db_, 0).SelectInstance());
    ASSERT_EQ(isam::ISAM_OK, isam::getFileLocale(CDbInternals::Table(db_, 0).FileNumber() + 1, &lcid));
    EXPECT_EQ(1036u, lcid);
}

}  // namespace
}  // namespace dbtest
