// Adding, reading, rewriting and deleting records, with every index kept in step.
#include <cstring>

#include "tests/isam/TestSupport.h"

namespace isamtest {
namespace {

using namespace isam;

class RecordTest : public EngineTest {
protected:
    // Positions found by a whole-key search on each index of a record with these keys.
    bool inIndex(int index, const void* key, std::size_t length, Position expected) {
        std::uint32_t count = 0;
        if (countByPrefix(indexOf(data_, index), key, length, &count) != ISAM_OK) return false;
        std::vector<Position> positions(count);
        std::uint32_t fetched = 0;
        EXPECT_EQ(ISAM_OK, fetchByPrefix(indexOf(data_, index), key, length, count, positions.data(), &fetched));
        for (Position p : positions) {
            if (p == expected) return true;
        }
        return false;
    }
};

TEST_F(RecordTest, RecordsReadBackExactlyAsWritten) {
    const std::string blob("\0\1\2binary\xff", 10);
    Record r = sampleRecord(7, 3, 99, "Open file", blob);
    Position p = 0;
    ASSERT_EQ(ISAM_OK, addRecord(data_, r.data(), r.size(), &p));
    EXPECT_EQ(r.bytes(), readAt(data_, p));

    // A buffer one byte short copies nothing and tells the length.
    std::vector<unsigned char> small(r.size() - 1, 0xAA);
    std::size_t length = 0;
    EXPECT_EQ(ISAM_BUFFER_TOO_SHORT, readRecord(data_, p, small.data(), small.size(), &length));
    EXPECT_EQ(r.size(), length);
    EXPECT_EQ(std::vector<unsigned char>(r.size() - 1, 0xAA), small);

    EXPECT_EQ(ISAM_NO_RECORD, readRecord(data_, p + 100, small.data(), small.size(), &length));
}

TEST_F(RecordTest, UniqueKeyViolationLeavesNoTrace) {
    const Position first = add(1, 10, 0, "alpha");
    Record clash = sampleRecord(1, 20, 0, "beta");
    Position p = 0;
    EXPECT_EQ(ISAM_DUPLICATE_KEY, addRecord(data_, clash.data(), clash.size(), &p));

    EXPECT_EQ(std::vector<Position>{first}, walk(indexOf(data_, 1)));
    EXPECT_EQ(std::vector<Position>{first}, walk(indexOf(data_, 2)));
    EXPECT_EQ(std::vector<Position>{first}, walk(indexOf(data_, 3)));
    const std::uint32_t group = 20;
    std::uint32_t count = 0;
    EXPECT_EQ(ISAM_NO_RECORD, countByPrefix(indexOf(data_, 2), &group, 4, &count));
    EXPECT_EQ(ISAM_NO_RECORD, findText(indexOf(data_, 3), "beta", SearchMode::Equal, &p));
    reopen();
    EXPECT_EQ(std::vector<Position>{first}, walk(indexOf(data_, 1)));
}

TEST_F(RecordTest, RewriteMovesOnlyTheChangedKey) {
    add(1, 10, 0, "one");
    const Position p = add(2, 10, 0, "two");
    add(3, 30, 0, "three");
    const std::vector<Position> byName = walk(indexOf(data_, 3));

    const std::uint32_t id = 2;
    Position found = 0;
    ASSERT_EQ(ISAM_OK, findEqual(indexOf(data_, 1), &id, 4, &found));
    ASSERT_EQ(p, found);
    Record changed = sampleRecord(2, 30, 5, "two");
    ASSERT_EQ(ISAM_OK, rewriteRecord(data_, changed.data(), changed.size()));

    const std::uint32_t oldGroup = 10, newGroup = 30;
    EXPECT_FALSE(inIndex(2, &oldGroup, 4, p));
    EXPECT_TRUE(inIndex(2, &newGroup, 4, p));
    EXPECT_EQ(byName, walk(indexOf(data_, 3)));
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2, 3}), walkIds(data_, indexOf(data_, 1)));
    EXPECT_EQ(changed.bytes(), readAt(data_, p));

    // A rewrite onto another record's unique key fails and keeps the record.
    Record clash = sampleRecord(3, 30, 5, "two");
    ASSERT_EQ(ISAM_OK, findEqual(indexOf(data_, 1), &id, 4, &found));
    EXPECT_EQ(ISAM_DUPLICATE_KEY, rewriteRecord(data_, clash.data(), clash.size()));
    EXPECT_EQ(changed.bytes(), readAt(data_, p));
}

TEST_F(RecordTest, RewritesKeepEveryIndexRightHoweverTheRecordWasReached) {
    const Position a = add(1, 10, 0, "first");
    const Position b = add(2, 20, 0, "second");
    // Reached by position, by an add, and by a search on another index.
    readAt(data_, a);
    Record r1 = sampleRecord(1, 11, 0, "first, renamed");
    ASSERT_EQ(ISAM_OK, rewriteRecord(data_, r1.data(), r1.size()));
    Record r3 = sampleRecord(3, 30, 0, "third");
    Position c = 0;
    ASSERT_EQ(ISAM_OK, addRecord(data_, r3.data(), r3.size(), &c));
    Record r3b = sampleRecord(3, 31, 0, "third");
    ASSERT_EQ(ISAM_OK, rewriteRecord(data_, r3b.data(), r3b.size()));
    Position p = 0;
    ASSERT_EQ(ISAM_OK, findText(indexOf(data_, 3), "second", SearchMode::Equal, &p));
    Record r2 = sampleRecord(4, 20, 0, "second");
    ASSERT_EQ(ISAM_OK, rewriteRecord(data_, r2.data(), r2.size()));

    EXPECT_EQ((std::vector<Position>{a, c, b}), walk(indexOf(data_, 1)));  // ids 1, 3, 4
    EXPECT_EQ((std::vector<Position>{a, b, c}), walk(indexOf(data_, 2)));  // groups 11, 20, 31
    EXPECT_EQ((std::vector<Position>{a, b, c}), walk(indexOf(data_, 3)));  // names
    for (std::uint32_t group : {10u, 30u}) {
        std::uint32_t count = 0;
        EXPECT_EQ(ISAM_NO_RECORD, countByPrefix(indexOf(data_, 2), &group, 4, &count));
    }
}

TEST_F(RecordTest, ReadsInsideABatchSeeTheBatchsOwnWrites) {
    ASSERT_EQ(ISAM_OK, beginBatch());
    const Position p = add(1, 1, 1, "before");
    const Position q = add(2, 2, 2, "other");
    EXPECT_EQ("before", textAt(readAt(data_, p), kSampleFixed, 0));
    Record changed = sampleRecord(1, 1, 1, "after");
    ASSERT_EQ(ISAM_OK, rewriteRecord(data_, changed.data(), changed.size()));
    EXPECT_EQ("other", textAt(readAt(data_, q), kSampleFixed, 0));
    EXPECT_EQ("after", textAt(readAt(data_, p), kSampleFixed, 0));
    ASSERT_EQ(ISAM_OK, deleteRecord(data_));
    std::size_t length = 0;
    unsigned char buffer[64];
    EXPECT_EQ(ISAM_NO_RECORD, readRecord(data_, p, buffer, sizeof buffer, &length));
    ASSERT_EQ(ISAM_OK, endBatch());
    EXPECT_EQ(ISAM_NO_RECORD, readRecord(data_, p, buffer, sizeof buffer, &length));
}

TEST_F(RecordTest, DeleteRemovesEveryKey) {
    add(1, 10, 0, "keep");
    const Position gone = add(2, 10, 0, "gone");
    const std::uint32_t id = 2, group = 10;
    Position p = 0;
    ASSERT_EQ(ISAM_OK, findEqual(indexOf(data_, 1), &id, 4, &p));
    ASSERT_EQ(ISAM_OK, deleteRecord(data_));
    // The deleted record is no longer current.
    EXPECT_EQ(ISAM_NO_CURRENT_RECORD, deleteRecord(data_));
    Record r = sampleRecord(2, 10, 0);
    EXPECT_EQ(ISAM_NO_CURRENT_RECORD, rewriteRecord(data_, r.data(), r.size()));

    EXPECT_EQ(ISAM_NO_RECORD, findEqual(indexOf(data_, 1), &id, 4, &p));
    EXPECT_FALSE(inIndex(2, &group, 4, gone));
    EXPECT_EQ(ISAM_NO_RECORD, findText(indexOf(data_, 3), "gone", SearchMode::Equal, &p));
    EXPECT_EQ((std::vector<std::uint32_t>{1}), walkIds(data_, indexOf(data_, 2)));
}

TEST_F(RecordTest, NextAfterDeleteContinuesWithTheFollowingRecord) {
    for (std::uint32_t id = 1; id <= 6; ++id) add(id, id % 2, 0);
    // Delete every record of group 1 while walking the group index.
    std::vector<std::uint32_t> kept;
    Position p = 0;
    for (int rc = firstRecord(indexOf(data_, 2), &p); rc == ISAM_OK; rc = nextRecord(indexOf(data_, 2), &p)) {
        const std::vector<unsigned char> record = readAt(data_, p);
        if (u32At(record, 4) == 1) {
            ASSERT_EQ(ISAM_OK, deleteRecord(data_));
        } else {
            kept.push_back(u32At(record, 0));
        }
    }
    EXPECT_EQ((std::vector<std::uint32_t>{2, 4, 6}), kept);
    EXPECT_EQ((std::vector<std::uint32_t>{2, 4, 6}), walkIds(data_, indexOf(data_, 1)));
}

TEST_F(RecordTest, RecordsBreakingTheirDefinitionAreRefused) {
    Position p = 0;
    // Shorter than the fixed part.
    Record shortRecord(kSampleFixed - 1);
    EXPECT_EQ(ISAM_RECORD_TOO_SHORT, addRecord(data_, shortRecord.data(), shortRecord.size(), &p));
    // A text over its limit of 200 bytes.
    Record longText = sampleRecord(1, 1, 1, std::string(201, 'x'));
    EXPECT_EQ(ISAM_RECORD_TOO_LONG, addRecord(data_, longText.data(), longText.size(), &p));
    // A binary field whose length runs past the record.
    Record truncated(kSampleFixed);
    truncated.text("ok").u32(0, 1);
    std::vector<unsigned char> bytes = truncated.bytes();
    bytes.insert(bytes.end(), {50, 0, 0, 0, 'a'});
    EXPECT_EQ(ISAM_RECORD_TOO_SHORT, addRecord(data_, bytes.data(), bytes.size(), &p));
    // Bytes after the last field.
    Record trailing = sampleRecord(1, 1, 1, "a", "b");
    std::vector<unsigned char> extra = trailing.bytes();
    extra.push_back('!');
    EXPECT_EQ(ISAM_RECORD_TOO_LONG, addRecord(data_, extra.data(), extra.size(), &p));
    EXPECT_TRUE(walk(indexOf(data_, 1)).empty());

    // A record may end before its last variable fields; they read as empty.
    Record fixedOnly(kSampleFixed);
    fixedOnly.u32(0, 5);
    ASSERT_EQ(ISAM_OK, addRecord(data_, fixedOnly.data(), fixedOnly.size(), &p));
    EXPECT_EQ(ISAM_OK, findText(indexOf(data_, 3), "", SearchMode::Equal, &p));
}

TEST_F(RecordTest, CallsOnWrongOrClosedFilesFailCleanly) {
    Record r = sampleRecord(1, 1, 1);
    Position p = 0;
    std::size_t length = 0;
    unsigned char buffer[64];
    // An index file number where a data file is wanted, and the reverse.
    EXPECT_EQ(ISAM_BAD_FILE_NUMBER, addRecord(indexOf(data_, 1), r.data(), r.size(), &p));
    EXPECT_EQ(ISAM_BAD_FILE_NUMBER, firstRecord(data_, &p));
    // Numbers that are not open.
    EXPECT_EQ(ISAM_NOT_OPEN, addRecord(100, r.data(), r.size(), &p));
    EXPECT_EQ(ISAM_NOT_OPEN, readRecord(kNoFile, 1, buffer, sizeof buffer, &length));
    ASSERT_EQ(ISAM_OK, closeFile(data_));
    EXPECT_EQ(ISAM_NOT_OPEN, addRecord(data_, r.data(), r.size(), &p));
    EXPECT_EQ(ISAM_NOT_OPEN, closeFile(data_));
    // Rewrite and delete need a current record.
    ASSERT_EQ(ISAM_OK, openFile(sampleDefinition(), &data_));
    EXPECT_EQ(ISAM_NO_CURRENT_RECORD, deleteRecord(data_));
    EXPECT_EQ(ISAM_NO_CURRENT_RECORD, nextRecord(indexOf(data_, 1), &p));
}

TEST_F(RecordTest, LargeBinaryFieldsRoundTrip) {
    std::string blob(8 << 20, '\0');
    for (std::size_t i = 0; i < blob.size(); ++i) blob[i] = static_cast<char>(i * 7);
    const Position p = add(1, 1, 1, "big", blob);
    reopen();
    const std::vector<unsigned char> record = readAt(data_, p);
    ASSERT_EQ(kSampleFixed + 4 + 4 + blob.size(), record.size());
    EXPECT_EQ(0, std::memcmp(record.data() + kSampleFixed + 8, blob.data(), blob.size()));
}

}  // namespace
}  // namespace isamtest
