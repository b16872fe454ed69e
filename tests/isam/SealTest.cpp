// Records and resources whose stored bytes were changed on disk: every path that
// reads them reports damage, hands none of their bytes out, and leaves the other
// records readable.
#include <sqlite3.h>

#include <functional>
#include <set>
#include <utility>

#include "isam/RecordSeal.h"
#include "tests/db/RawFile.h"
#include "tests/isam/TestSupport.h"

namespace isamtest {
namespace {

using namespace isam;

// ---- The closed container through plain SQLite ------------------------------------

using dbtest::readBlob;
using dbtest::writeBlob;

// ---- Kinds of damage ------------------------------------------------------------------

// Changes the stored bytes of one record or resource.
struct Damage {
    const char* name;
    std::function<void(std::string* stored)> apply;
};

const std::vector<Damage> kDamages = {
    {"FlippedByte", [](std::string* s) { (*s)[kSampleFixed + 1] ^= 0x20; }},
    {"OneByteShorter", [](std::string* s) { s->erase(kSampleFixed, 1); }},
    {"OneByteLonger", [](std::string* s) { s->insert(kSampleFixed, "x"); }},
    {"ChecksumCutOff", [](std::string* s) { s->resize(s->size() - kSealLength); }},
    {"ShorterThanAChecksum", [](std::string* s) { s->resize(kSealLength - 1); }},
};

std::string damageName(const ::testing::TestParamInfo<Damage>& info) {
    return info.param.name;
}

// ---- Reading what was damaged -----------------------------------------------------------

constexpr unsigned char kUntouched = 0xA5;
constexpr std::uint32_t kGroup = 1;
constexpr std::uint32_t kTargetId = 3;
constexpr std::uint32_t kResourceType = 9;

std::string nameOf(std::uint32_t id) {
    return "record number " + std::to_string(id);
}
std::string resourceText(std::uint32_t number) {
    return "the resource numbered " + std::to_string(number);
}

// The end of a text, which every kind of damage but the shortest leaves in the
// stored bytes: a buffer that holds it was handed the damaged bytes.
std::string tailOf(const std::string& text) {
    return text.substr(text.size() - 8);
}

void expectNoneHandedOut(const std::vector<unsigned char>& buffer, const std::string& text) {
    const std::string held(buffer.begin(), buffer.end());
    EXPECT_EQ(std::string::npos, held.find(text)) << "damaged bytes were handed out";
}

// What one read gave: its answer and the whole buffer it was handed.
struct Outcome {
    int rc;
    std::size_t length;
    std::vector<unsigned char> buffer;
};

Outcome readInto(FileNumber data, Position position) {
    Outcome out{ISAM_OK, 0, std::vector<unsigned char>(512, kUntouched)};
    out.rc = readRecord(data, position, out.buffer.data(), out.buffer.size(), &out.length);
    return out;
}

// The ways a record is met, each reading every record once in id order.
using Visit = std::function<void(std::uint32_t id, const Outcome&)>;
struct ReadPath {
    const char* name;
    std::function<void(FileNumber data, const std::vector<Position>& positions, const Visit&)> walk;
};

const std::vector<ReadPath> kReadPaths = {
    {"by position",
     [](FileNumber data, const std::vector<Position>& positions, const Visit& visit) {
         for (std::uint32_t id = 1; id <= positions.size(); ++id) {
             visit(id, readInto(data, positions[id - 1]));
         }
     }},
    {"find and read",
     [](FileNumber data, const std::vector<Position>& positions, const Visit& visit) {
         for (std::uint32_t id = 1; id <= positions.size(); ++id) {
             Position p = 0;
             ASSERT_EQ(ISAM_OK, findEqual(indexOf(data, 1), &id, 4, &p));
             visit(id, readInto(data, p));
         }
     }},
    {"first and next",
     [](FileNumber data, const std::vector<Position>& positions, const Visit& visit) {
         Position p = 0;
         int rc = firstRecord(indexOf(data, 1), &p);
         for (std::uint32_t id = 1; rc == ISAM_OK; ++id, rc = nextRecord(indexOf(data, 1), &p)) {
             visit(id, readInto(data, p));
         }
         EXPECT_EQ(ISAM_NO_RECORD, rc);
         EXPECT_EQ(positions.back(), p);
     }},
    {"prefix walk read ahead",
     [](FileNumber data, const std::vector<Position>& positions, const Visit& visit) {
         std::uint32_t count = 0;
         std::vector<Position> scanned;
         ASSERT_EQ(ISAM_OK, scanByPrefix(indexOf(data, 2), &kGroup, 4, &count, &scanned));
         ASSERT_EQ(positions, scanned);
         for (std::uint32_t id = 1; id <= scanned.size(); ++id) {
             visit(id, readInto(data, scanned[id - 1]));
         }
     }},
};

class SealFixture : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        for (std::uint32_t id = 1; id <= 5; ++id) {
            const Record r = sampleRecord(id, kGroup, id * 10, nameOf(id), "data of " + nameOf(id));
            records_.push_back(r.bytes());
            Position p = 0;
            ASSERT_EQ(ISAM_OK, addRecord(data_, r.data(), r.size(), &p));
            positions_.push_back(p);
        }
        for (std::uint32_t number = 1; number <= 2; ++number) {
            const std::string text = resourceText(number);
            ASSERT_EQ(ISAM_OK, addResource(data_, kResourceType, number, text.data(), text.size()));
        }
    }

    // Changes stored values of the closed container: `change` gets them in the
    // order of the rows named, and what it leaves is stored back.
    void damage(const std::string& table, const std::string& column,
                const std::vector<std::string>& rows,
                const std::function<void(std::vector<std::string>*)>& change) {
        ASSERT_EQ(ISAM_OK, closeContainer());
        const std::string select = "SELECT " + column + " FROM \"" + table + "\" WHERE ";
        const std::string update = "UPDATE \"" + table + "\" SET " + column + " = ?1 WHERE ";
        std::vector<std::string> stored;
        for (const std::string& row : rows) {
            stored.push_back(readBlob(path_, select + row));
            ASSERT_FALSE(stored.back().empty());
        }
        change(&stored);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            ASSERT_TRUE(writeBlob(path_, update + rows[i], stored[i]));
        }
        ASSERT_EQ(ISAM_OK, openContainer(path_.c_str(), 582, nullptr));
        ASSERT_EQ(ISAM_OK, openFile(sampleDefinition(), &data_));
    }

    std::string rowOf(std::uint32_t id) const {
        return "rowid = " + std::to_string(positions_[id - 1]);
    }

    std::vector<std::vector<unsigned char>> records_;
    std::vector<Position> positions_;
};

class SealTest : public SealFixture, public ::testing::WithParamInterface<Damage> {
protected:
    void damageTarget() {
        damage("Sample", "rec", {rowOf(kTargetId)},
               [](std::vector<std::string>* stored) { GetParam().apply(&stored->front()); });
    }
};

TEST_P(SealTest, EveryReadPathReportsTheDamagedRecordAndOnlyIt) {
    damageTarget();
    for (const ReadPath& path : kReadPaths) {
        SCOPED_TRACE(path.name);
        std::set<std::uint32_t> met;
        path.walk(data_, positions_, [&](std::uint32_t id, const Outcome& out) {
            met.insert(id);
            if (id != kTargetId) {
                ASSERT_EQ(ISAM_OK, out.rc) << "id " << id;
                EXPECT_EQ(records_[id - 1],
                          std::vector<unsigned char>(out.buffer.begin(),
                                                     out.buffer.begin() + out.length));
                return;
            }
            EXPECT_EQ(ISAM_DAMAGED, out.rc);
            expectNoneHandedOut(out.buffer, tailOf(nameOf(kTargetId)));
        });
        EXPECT_EQ(records_.size(), met.size());
    }
}

TEST_P(SealTest, ARewriteOfTheDamagedRecordIsRefused) {
    damageTarget();
    const Record replacement = sampleRecord(kTargetId, kGroup + 1, 0, "replacement");
    for (const ReadPath& path : kReadPaths) {
        SCOPED_TRACE(path.name);
        bool tried = false;
        // The old keys of a rewrite come from the stored record the read met.
        path.walk(data_, positions_, [&](std::uint32_t id, const Outcome&) {
            if (id != kTargetId) return;
            tried = true;
            EXPECT_EQ(ISAM_DAMAGED, rewriteRecord(data_, replacement.data(), replacement.size()));
        });
        EXPECT_TRUE(tried);
        EXPECT_EQ(ISAM_DAMAGED, readInto(data_, positions_[kTargetId - 1]).rc);
        const std::uint32_t group = kGroup + 1;
        std::uint32_t count = 0;
        EXPECT_EQ(ISAM_NO_RECORD, countByPrefix(indexOf(data_, 2), &group, 4, &count));
    }
}

TEST_P(SealTest, ARebuildOfTheMemberStopsAtTheDamage) {
    damageTarget();
    ASSERT_EQ(ISAM_OK, closeFile(data_));
    EXPECT_EQ(ISAM_DAMAGED, rebuildFile(sampleDefinition()));
}

TEST_P(SealTest, ADamagedResourceIsReportedAndTheOtherReadable) {
    damage("Sample$res", "data", {"type = 9 AND number = 1"},
           [](std::vector<std::string>* stored) { GetParam().apply(&stored->front()); });
    for (std::uint32_t number = 1; number <= 2; ++number) {
        std::vector<unsigned char> buffer(64, kUntouched);
        std::size_t length = 0;
        const int rc =
            readResource(data_, kResourceType, number, buffer.data(), buffer.size(), &length);
        if (number == 1) {
            EXPECT_EQ(ISAM_DAMAGED, rc);
            expectNoneHandedOut(buffer, tailOf(resourceText(1)));
        } else {
            ASSERT_EQ(ISAM_OK, rc);
            EXPECT_EQ(resourceText(2), std::string(buffer.begin(), buffer.begin() + length));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Damages, SealTest, ::testing::ValuesIn(kDamages), damageName);

// A container of the first format has no checksums and padded text keys: it is
// read and written as it was.
TEST_F(SealFixture, FirstFormatContainersKeepTheirLayout) {
    ASSERT_EQ(ISAM_OK, closeContainer());
    sqlite3* db = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open_v2(path_.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(db, "UPDATE \"Sample\" SET rec = substr(rec, 1, length(rec) - 4);"
                                          "PRAGMA user_version = 1", nullptr, nullptr, nullptr));
    sqlite3_close(db);
    ASSERT_EQ(ISAM_OK, openContainer(path_.c_str(), 582, nullptr));
    ASSERT_EQ(ISAM_OK, openFile(sampleDefinition(), &data_));
    // Every record reads back without the checksum it had; a new one is stored plainly.
    for (const Position position : positions_) EXPECT_EQ(ISAM_OK, readInto(data_, position).rc);
    const Position added = add(9999, 1, 1, "plain name");
    const Outcome back = readInto(data_, added);
    ASSERT_EQ(ISAM_OK, back.rc);
    ASSERT_EQ(ISAM_OK, closeContainer());
    const std::string stored = readBlob(path_, "SELECT rec FROM \"Sample\" WHERE rowid = " + std::to_string(added));
    EXPECT_EQ(std::string(back.buffer.begin(), back.buffer.begin() + back.length), stored);
    ASSERT_EQ(ISAM_OK, openContainer(path_.c_str(), 582, nullptr));
}

}  // namespace
}  // namespace isamtest
