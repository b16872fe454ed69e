// The record layer as operations use it: identifiers, enumerations, fields by
// name, resources and tables one at a time.
#include <cstring>
#include <string>
#include <vector>

#include "core/RecordAccess.h"
#include "tests/db/DbTestSupport.h"

namespace dbtest {
namespace {

using namespace qvb;
using qvb::catalogue::TAB_DIC;
using qvb::catalogue::TAB_DICT;
using qvb::catalogue::TAB_SLANG;

class RecordLayerTest : public DbTest<CDbProject> {
protected:
    CIsamTable& phrases() { return CDbInternals::Table(db_, TAB_DIC); }

    // A phrase written straight through the record layer.
    void addPhrase(DWORD id, DWORD pair, const std::string& source) {
        ASSERT_EQ(1, CDbInternals::Run(db_, [&] {
            return addWithId(phrases(), "TextId", id, [&](RecordWriter& r) {
                r.Long("PairLangId", pair).Text("SText", source).Text("TText", "t:" + source).Long("Count", id);
            });
        })) << db_.GetError();
    }

    std::vector<DWORD> phrasesOfPair(DWORD pair) {
        std::vector<DWORD> ids;
        EXPECT_EQ(1, CDbInternals::Run(db_, [&] {
            return forEachWithId(phrases(), 2, pair, [&] {
                std::uint32_t id = 0;
                const int rc = phrases().GetLong("TextId", &id);
                ids.push_back(id);
                return rc;
            });
        }));
        return ids;
    }
};

TEST_F(RecordLayerTest, IdentifiersStartAt1AndOnlyTheTopOneIsGivenAgain) {
    DWORD id = 0;
    for (DWORD expected = 1; expected <= 3; ++expected) {
        ASSERT_EQ(1, db_.AddSLang(&id, 1031, 1033, "Arial", 0));
        EXPECT_EQ(expected, id);
    }
    ASSERT_EQ(1, db_.DeleteSLang(3));
    ASSERT_EQ(1, db_.AddSLang(&id, 1031, 1033, "Arial", 0));
    EXPECT_EQ(3u, id);
    ASSERT_EQ(1, db_.DeleteSLang(2));
    ASSERT_EQ(1, db_.AddSLang(&id, 1031, 1033, "Arial", 0));
    EXPECT_EQ(4u, id);
    // A caller's identifier is kept, and a taken one is refused by the key.
    ASSERT_EQ(1, db_.AddSLang(DWORD{100}, 1031, 1033, "Arial", 0));
    EXPECT_EQ(0, db_.AddSLang(DWORD{100}, 1031, 1033, "Arial", 0));
    EXPECT_EQ(isam::ISAM_DUPLICATE_KEY, db_.GetError());
    ASSERT_EQ(1, db_.AddSLang(&id, 1031, 1033, "Arial", 0));
    EXPECT_EQ(101u, id);
}

TEST_F(RecordLayerTest, EnumeratingAnEmptyTableSucceedsAndAppendsNothing) {
    CDWordArray ids;
    ids.Add(77);
    ASSERT_EQ(1, db_.EnumSLang(ids));
    EXPECT_EQ(0, db_.GetError());
    ASSERT_EQ(1, ids.GetSize());
    EXPECT_EQ(77u, ids[0]);
    DWORD count = 9;
    ASSERT_EQ(1, db_.GetSLangCount(&count));
    EXPECT_EQ(0u, count);
}

TEST_F(RecordLayerTest, MissingRecordsLeaveTheEnginesNotFound) {
    DWORD plang = 0, slang = 0, flags = 0;
    CString font;
    EXPECT_EQ(0, db_.GetSLang(5, &plang, &slang, font, &flags));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(0, db_.DeleteSLang(5));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(0, db_.UpdateSLang(5, 1, 2, "x", 0));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
}

TEST_F(RecordLayerTest, LanguagePairsRoundTripWithTheirFontPadded) {
    DWORD id = 0;
    ASSERT_EQ(1, db_.AddSLang(&id, 1031, 1033, "MS Shell Dlg", 0x80000001u));
    ASSERT_EQ(1, db_.UpdateSLang(id, 1049, 1033, "Tahoma", 7));
    DWORD plang = 0, slang = 0, flags = 0;
    CString font;
    ASSERT_EQ(1, db_.GetSLang(id, &plang, &slang, font, &flags));
    EXPECT_EQ(1049u, plang);
    EXPECT_EQ(1033u, slang);
    EXPECT_EQ(7u, flags);
    EXPECT_EQ(199, font.GetLength());
    EXPECT_EQ(CString("Tahoma"), font.Left(6));
    EXPECT_EQ(CString(' ', 193), font.Mid(6));
    // A name longer than the field is refused, not cut.
    EXPECT_EQ(0, db_.AddSLang(&id, 1031, 1033, CString('x', 201), 0));
    EXPECT_EQ(isam::ISAM_RECORD_TOO_LONG, db_.GetError());
}

TEST_F(RecordLayerTest, FieldsAreSetOnlyWithTypesThatFit) {
    CIsamTable& table = phrases();
    table.ClearModified();
    // A 32-bit number into a text field fails and leaves the mark alone.
    EXPECT_EQ(QVB_NO_SUCH_FIELD, table.SetLong("SText", 5));
    EXPECT_FALSE(table.IsModified());
    EXPECT_EQ(0, table.SetLong("Count", 5));
    EXPECT_TRUE(table.IsModified());
    EXPECT_EQ(QVB_NO_SUCH_FIELD, table.SetLong("MaxNrOfChar", 5));
    EXPECT_TRUE(table.IsModified());
    table.ClearModified();
    // Missing fields: the 16-bit and flag setters ignore them, the others refuse.
    EXPECT_EQ(0, table.SetShort("NoSuchField", 1));
    EXPECT_EQ(0, table.SetBool("NoSuchField", true));
    EXPECT_EQ(QVB_NO_SUCH_FIELD, table.SetLong("NoSuchField", 1));
    EXPECT_EQ(QVB_NO_SUCH_FIELD, table.SetText("NoSuchField", "x"));
    EXPECT_FALSE(table.IsModified());
    // A wrong type for the 16-bit setter is still refused.
    EXPECT_EQ(QVB_NO_SUCH_FIELD, table.SetShort("Count", 1));

    // Every field reads as text: numbers in decimal.
    ASSERT_EQ(0, table.SetLong("Count", 4294967295u));
    ASSERT_EQ(0, table.SetShort("MaxNrOfChar", 65535));
    ASSERT_EQ(0, table.SetBool("ReadOnly", true));
    std::string text;
    ASSERT_EQ(0, table.GetText("Count", &text));
    EXPECT_EQ("4294967295", text);
    ASSERT_EQ(0, table.GetText("MaxNrOfChar", &text));
    EXPECT_EQ("65535", text);
    ASSERT_EQ(0, table.GetText("ReadOnly", &text));
    EXPECT_EQ("1", text);
    EXPECT_EQ(QVB_NO_SUCH_FIELD, table.GetText("NoSuchField", &text));
}

TEST_F(RecordLayerTest, AnOverlongTextIsRefusedAndTheOldValueKept) {
    CIsamTable& table = phrases();
    ASSERT_EQ(0, table.SetText("SText", "kept"));
    EXPECT_EQ(isam::ISAM_RECORD_TOO_LONG, table.SetText("SText", std::string(32769, 'a')));
    std::string text;
    ASSERT_EQ(0, table.GetText("SText", &text));
    EXPECT_EQ("kept", text);
    EXPECT_EQ(0, table.SetText("SText", std::string(32768, 'a')));
}

TEST_F(RecordLayerTest, RecordsRoundTripWithEveryKindOfField) {
    const std::string longText(32768, 'z');
    ASSERT_EQ(1, CDbInternals::Run(db_, [&] {
        return addWithId(phrases(), "TextId", 9, [&](RecordWriter& r) {
            r.Long("PairLangId", 2).Short("MaxNrOfChar", 80).Bool("ReadOnly", true).Long("Count", 3)
                .Bool("Standard", true).Long("Flags", 0xFFFFFFFFu).Text("SText", longText)
                .Text("STextFiltered", "").Text("TText", "\xe4\xf6\xfc");
        });
    }));
    reopen();
    CIsamTable& table = phrases();
    ASSERT_EQ(1, CDbInternals::Run(db_, [&] { return readById(table, 9); }));
    std::uint32_t pair = 0, flags = 0;
    std::uint16_t limit = 0;
    bool readOnly = false, translated = true;
    std::string source, translation;
    EXPECT_EQ(0, table.GetLong("PairLangId", &pair));
    EXPECT_EQ(0, table.GetLong("Flags", &flags));
    EXPECT_EQ(0, table.GetShort("MaxNrOfChar", &limit));
    EXPECT_EQ(0, table.GetBool("ReadOnly", &readOnly));
    EXPECT_EQ(0, table.GetBool("Translated", &translated));
    EXPECT_EQ(0, table.GetText("SText", &source));
    EXPECT_EQ(0, table.GetText("TText", &translation));
    EXPECT_EQ(2u, pair);
    EXPECT_EQ(0xFFFFFFFFu, flags);
    EXPECT_EQ(80, limit);
    EXPECT_TRUE(readOnly);
    EXPECT_FALSE(translated);
    EXPECT_EQ(longText, source);
    EXPECT_EQ("\xe4\xf6\xfc", translation);

    // A binary field keeps every byte, zeros included.
    CIsamTable& pairs = CDbInternals::Table(db_, TAB_SLANG);
    const std::string font("\x00\x01\xff\x00zz", 6);
    ASSERT_EQ(1, CDbInternals::Run(db_, [&] {
        return addWithId(pairs, "PairLangId", 1, [&](RecordWriter& r) {
            r.Binary("Font", font.data(), font.size());
        });
    }));
    ASSERT_EQ(1, CDbInternals::Run(db_, [&] { return readById(pairs, 1); })) << db_.GetError();
    std::string back;
    ASSERT_EQ(0, pairs.GetBinary("Font", &back));
    EXPECT_EQ(font, back);
}

TEST_F(RecordLayerTest, AnUpdateByIdChangesOnlyWhatItSets) {
    addPhrase(4, 1, "before");
    ASSERT_EQ(1, CDbInternals::Run(db_, [&] {
        return updateById(phrases(), 4, [](RecordWriter& r) { r.Long("PairLangId", 2); });
    }));
    EXPECT_EQ((std::vector<DWORD>{4}), phrasesOfPair(2));
    ASSERT_EQ(1, CDbInternals::Run(db_, [&] { return readById(phrases(), 4); }));
    std::string source;
    ASSERT_EQ(0, phrases().GetText("SText", &source));
    EXPECT_EQ("before", source);
    EXPECT_EQ(0, CDbInternals::Run(db_, [&] {
        return updateById(phrases(), 5, [](RecordWriter& r) { r.Long("PairLangId", 2); });
    }));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
}

TEST_F(RecordLayerTest, KeyPrefixWalksFindExactlyTheRecordsOfOneKey) {
    addPhrase(1, 2, "b");
    addPhrase(2, 1, "a");
    addPhrase(3, 2, "c");
    addPhrase(4, 3, "d");
    addPhrase(5, 2, "e");
    EXPECT_EQ((std::vector<DWORD>{1, 3, 5}), phrasesOfPair(2));
    EXPECT_EQ((std::vector<DWORD>{4}), phrasesOfPair(3));
    EXPECT_TRUE(phrasesOfPair(7).empty());
    EXPECT_EQ(0, db_.GetError());
}

TEST_F(RecordLayerTest, ARebuildingOpenRewritesThePhrasesAndEmptiesTheWorkTable) {
    for (DWORD id = 1; id <= 20; ++id) addPhrase(id, id % 3, "phrase " + std::to_string(100 - id));
    ASSERT_EQ(1, db_.CloseDb());
    ASSERT_EQ(1, db_.OpenDb(dir().c_str(), "test", 1)) << db_.GetError();
    std::vector<DWORD> ids;
    ASSERT_EQ(1, CDbInternals::Run(db_, [&] {
        return forEachRecord(phrases(), 1, [&] {
            std::uint32_t id = 0, count = 0;
            std::string source;
            phrases().GetLong("TextId", &id);
            phrases().GetLong("Count", &count);
            phrases().GetText("SText", &source);
            EXPECT_EQ(id, count);
            EXPECT_EQ("phrase " + std::to_string(100 - id), source);
            ids.push_back(id);
            return 0;
        });
    }));
    EXPECT_EQ(20u, ids.size());
    EXPECT_EQ((std::vector<DWORD>{2, 5, 8, 11, 14, 17, 20}), phrasesOfPair(2));
    std::uint32_t work = 1;
    ASSERT_EQ(1, CDbInternals::Run(db_, [&] { return countRecords(CDbInternals::Table(db_, TAB_DICT), 1, &work); }));
    EXPECT_EQ(0u, work);
}

TEST_F(RecordLayerTest, ResourcesKeepTheirBytesAndRefuseShortBuffers) {
    unsigned char data[300];
    for (int i = 0; i < 300; ++i) data[i] = static_cast<unsigned char>(i);
    ASSERT_EQ(1, db_.AddResource(6, data, sizeof data));
    EXPECT_EQ(0, db_.AddResource(6, data, sizeof data));
    EXPECT_EQ(isam::ISAM_RESOURCE_EXISTS, db_.GetError());

    // One byte short: -11, and nothing is copied.
    unsigned char back[300];
    std::memset(back, 0xAB, sizeof back);
    WORD length = 299;
    EXPECT_EQ(0, db_.GetResource(6, back, &length));
    EXPECT_EQ(-11, db_.GetError());
    EXPECT_EQ(299, length);
    EXPECT_EQ(0xAB, back[0]);
    length = 300;
    ASSERT_EQ(1, db_.GetResource(6, back, &length));
    EXPECT_EQ(300, length);
    EXPECT_EQ(0, std::memcmp(data, back, sizeof data));

    // Update replaces, and adds a missing one; the data is at most 1024 bytes.
    unsigned char big[1025] = {};
    EXPECT_EQ(0, db_.UpdateResourceA(6, big, 1025));
    EXPECT_EQ(isam::ISAM_RECORD_TOO_LONG, db_.GetError());
    ASSERT_EQ(1, db_.UpdateResourceA(6, big, 1024));
    ASSERT_EQ(1, db_.UpdateResourceA(8, data, 10));
    unsigned char all[1024];
    length = sizeof all;
    ASSERT_EQ(1, db_.GetResource(6, all, &length));
    EXPECT_EQ(1024, length);
    ASSERT_EQ(1, db_.DeleteResource(6));
    EXPECT_EQ(0, db_.GetResource(6, all, &length));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(0, db_.DeleteResource(6));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    // Resources are no records: table 0 has none.
    DWORD count = 5;
    ASSERT_EQ(1, db_.GetSLangCount(&count));
    EXPECT_EQ(0u, count);
}

TEST_F(RecordLayerTest, ResourcesNeedTheTablesRegistered) {
    CDbProject unregistered;
    int value = 21;
    EXPECT_EQ(0, unregistered.SetDBVersion(value));
    EXPECT_EQ(-12, unregistered.GetError());
    EXPECT_EQ(0, unregistered.GetDBVersion());
    EXPECT_EQ(-12, unregistered.GetError());
}

TEST_F(RecordLayerTest, TablesOneAtATime) {
    EXPECT_EQ(0, db_.CloseTable(40));
    EXPECT_EQ(QVB_NO_SCHEMA, db_.GetError());
    ASSERT_EQ(1, db_.CloseTable(31));
    EXPECT_EQ(0, db_.CloseTable(31));
    EXPECT_EQ(QVB_TABLE_NOT_OPEN, db_.GetError());
    ASSERT_EQ(1, db_.OpenTable(31));
    EXPECT_EQ(0, db_.OpenTable(31));
    EXPECT_EQ(isam::ISAM_ALREADY_OPEN, db_.GetError());

    // AddTable makes a table that the database lacks, and leaves it open.
    ASSERT_EQ(1, db_.CloseTable(31));
    CIsamTable& history = CDbInternals::Table(db_, 31);
    ASSERT_EQ(isam::ISAM_OK, history.SelectInstance());
    ASSERT_EQ(isam::ISAM_OK, isam::deleteFile(history.Definition()));
    EXPECT_EQ(0, db_.OpenTable(31));
    EXPECT_EQ(isam::ISAM_FILE_NOT_FOUND, db_.GetError());
    ASSERT_EQ(1, db_.AddTable(31));
    EXPECT_TRUE(history.IsOpen());
    EXPECT_EQ(0, db_.AddTable(31));
    EXPECT_EQ(isam::ISAM_ALREADY_OPEN, db_.GetError());
}

TEST_F(RecordLayerTest, ATransactionCommitsOrDiscardsEverythingInIt) {
    DWORD id = 0;
    ASSERT_EQ(1, db_.BeginTransaction());
    for (int i = 0; i < 10; ++i) ASSERT_EQ(1, db_.AddSLang(&id, 1031, 1033, "", 0));
    ASSERT_EQ(1, db_.RollbackTransaction());
    DWORD count = 9;
    ASSERT_EQ(1, db_.GetSLangCount(&count));
    EXPECT_EQ(0u, count);

    ASSERT_EQ(1, db_.BeginTransaction());
    for (int i = 0; i < 10; ++i) ASSERT_EQ(1, db_.AddSLang(&id, 1031, 1033, "", 0));
    ASSERT_EQ(1, db_.CommitTransaction());
    reopen();
    ASSERT_EQ(1, db_.GetSLangCount(&count));
    EXPECT_EQ(10u, count);

    // Closing inside a transaction commits what came before it; the closed
    // database then has no transaction to commit.
    ASSERT_EQ(1, db_.BeginTransaction());
    ASSERT_EQ(1, db_.AddSLang(&id, 1031, 1033, "", 0));
    ASSERT_EQ(1, db_.CloseDb());
    EXPECT_EQ(0, db_.CommitTransaction());
    EXPECT_EQ(isam::ISAM_NOT_OPEN, db_.GetError());
    ASSERT_EQ(1, db_.OpenDb(dir().c_str(), "test", 0));
    ASSERT_EQ(1, db_.GetSLangCount(&count));
    EXPECT_EQ(11u, count);

    EXPECT_EQ(0, db_.CommitTransaction());
    EXPECT_EQ(isam::ISAM_NO_BATCH, db_.GetError());
}

}  // namespace
}  // namespace dbtest
