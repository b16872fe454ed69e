// Key order: integers by value, duplicates by position, texts by bytes, and the
// ranged searches on either side of a key.
#include <cstring>

#include "tests/isam/TestSupport.h"

namespace isamtest {
namespace {

using namespace isam;

class KeyOrderTest : public EngineTest {};

TEST_F(KeyOrderTest, IntegerKeysOrderByValue) {
    for (std::uint32_t id : {0x100u, 0xFFu, 0x1u, 0x10000u, 0xFFFFFFFFu, 0x80000000u, 0x2u}) add(id, 0, 0);
    EXPECT_EQ((std::vector<std::uint32_t>{0x1, 0x2, 0xFF, 0x100, 0x10000, 0x80000000u, 0xFFFFFFFFu}),
              walkIds(data_, indexOf(data_, 1)));
    Position p = 0;
    ASSERT_EQ(ISAM_OK, lastRecord(indexOf(data_, 1), &p));
    EXPECT_EQ(0xFFFFFFFFu, u32At(readAt(data_, p), 0));
}

TEST_F(KeyOrderTest, DuplicateKeysFollowPositionOrder) {
    std::vector<Position> group5;
    for (std::uint32_t id = 1; id <= 9; ++id) {
        const Position p = add(id * 3 % 10, id % 2 ? 5 : 4, 0);
        if (id % 2) group5.push_back(p);
    }
    const std::vector<Position> order = walk(indexOf(data_, 2));
    const std::vector<Position> tail(order.end() - group5.size(), order.end());
    EXPECT_EQ(group5, tail);
}

TEST_F(KeyOrderTest, EmptyIndexHasNoFirstOrLast) {
    Position p = 0;
    EXPECT_EQ(ISAM_NO_RECORD, firstRecord(indexOf(data_, 1), &p));
    EXPECT_EQ(ISAM_NO_RECORD, lastRecord(indexOf(data_, 2), &p));
}

TEST_F(KeyOrderTest, TextKeysUseLeadingBytesPaddedWithSpaces) {
    add(1, 0, 0, "beta");
    add(2, 0, 0, "alpha");
    add(3, 0, 0, "alpha and more than twenty bytes");
    add(4, 0, 0, "alpha and more than twenty bytes, differently");
    add(5, 0, 0, "Zulu");
    add(6, 0, 0, "");
    // Byte order with space padding: "" < "Zulu" < "alpha" < "alpha and..." < "beta".
    EXPECT_EQ((std::vector<std::uint32_t>{6, 5, 2, 3, 4, 1}), walkIds(data_, indexOf(data_, 3)));

    // Texts equal in their first 20 bytes share the key and are both kept.
    Position p = 0;
    ASSERT_EQ(ISAM_OK, findText(indexOf(data_, 3), "alpha and more than ", SearchMode::Equal, &p));
    EXPECT_EQ(3u, u32At(readAt(data_, p), 0));
    ASSERT_EQ(ISAM_OK, nextRecord(indexOf(data_, 3), &p));
    EXPECT_EQ(4u, u32At(readAt(data_, p), 0));
    EXPECT_EQ(ISAM_KEY_TOO_LONG, findText(indexOf(data_, 3), std::string(21, 'a').c_str(),
                                          SearchMode::Equal, &p));
}

TEST_F(KeyOrderTest, RangedSearchesTreatAValueAsAPrefix) {
    for (std::uint32_t id = 10; id <= 50; id += 10) add(id, id / 20, 0);
    const FileNumber ids = indexOf(data_, 1);
    auto found = [&](std::uint32_t key, SearchMode mode) -> std::int64_t {
        Position p = 0;
        int rc = findKey(ids, &key, 4, mode, &p);
        return rc == ISAM_OK ? std::int64_t(u32At(readAt(data_, p), 0)) : -rc;
    };
    EXPECT_EQ(30, found(30, SearchMode::Equal));
    EXPECT_EQ(-ISAM_NO_RECORD, found(35, SearchMode::Equal));
    EXPECT_EQ(30, found(30, SearchMode::GreaterOrEqual));
    EXPECT_EQ(40, found(35, SearchMode::GreaterOrEqual));
    EXPECT_EQ(40, found(30, SearchMode::Greater));
    EXPECT_EQ(20, found(30, SearchMode::Less));
    EXPECT_EQ(30, found(30, SearchMode::LessOrEqual));
    EXPECT_EQ(30, found(35, SearchMode::LessOrEqual));
    EXPECT_EQ(-ISAM_NO_RECORD, found(50, SearchMode::Greater));
    EXPECT_EQ(-ISAM_NO_RECORD, found(10, SearchMode::Less));

    // A search positions the index: next goes on from the found key.
    Position p = 0;
    const std::uint32_t from = 25;
    ASSERT_EQ(ISAM_OK, findKey(ids, &from, 4, SearchMode::GreaterOrEqual, &p));
    ASSERT_EQ(ISAM_OK, nextRecord(ids, &p));
    EXPECT_EQ(40u, u32At(readAt(data_, p), 0));

    // On a duplicate index the position suffix selects among equal keys.
    const FileNumber groups = indexOf(data_, 2);
    const std::vector<Position> order = walk(groups);
    unsigned char key[8] = {1, 0, 0, 0};
    std::memcpy(key + 4, &order[1], 4);
    ASSERT_EQ(ISAM_OK, findEqual(groups, key, 0, &p));
    EXPECT_EQ(order[1], p);
    ASSERT_EQ(ISAM_OK, findKey(groups, key, 8, SearchMode::Greater, &p));
    EXPECT_EQ(order[2], p);
    ASSERT_EQ(ISAM_OK, findKey(groups, key, 8, SearchMode::Less, &p));
    EXPECT_EQ(order[0], p);
}

TEST_F(KeyOrderTest, KeyValuesThatCutASegmentAreRefused) {
    add(1, 1, 0, "x");
    Position p = 0;
    const unsigned char key[9] = {};
    EXPECT_EQ(ISAM_KEY_TOO_LONG, findEqual(indexOf(data_, 1), key, 5, &p));
    EXPECT_EQ(ISAM_BAD_KEY, findEqual(indexOf(data_, 1), key, 3, &p));
    EXPECT_EQ(ISAM_BAD_KEY, findEqual(indexOf(data_, 2), key, 6, &p));
    std::uint32_t count = 0;
    EXPECT_EQ(ISAM_KEY_TOO_LONG, countByPrefix(indexOf(data_, 2), key, 9, &count));
}

TEST_F(KeyOrderTest, WalkingOneIndexWhileReadingByAnotherKeepsItsPlace) {
    for (std::uint32_t id = 1; id <= 5; ++id) add(id, 6 - id, 0);
    const FileNumber ids = indexOf(data_, 1), groups = indexOf(data_, 2);
    Position p = 0, q = 0;
    ASSERT_EQ(ISAM_OK, firstRecord(ids, &p));
    ASSERT_EQ(ISAM_OK, firstRecord(groups, &q));  // id 5: the current record moves
    // next on the id index goes on from the current record (id 5): nothing follows.
    EXPECT_EQ(ISAM_NO_RECORD, nextRecord(ids, &p));
    // Reading by position makes that record current for every index.
    readAt(data_, walk(ids)[1]);
    ASSERT_EQ(ISAM_OK, nextRecord(ids, &p));
    EXPECT_EQ(3u, u32At(readAt(data_, p), 0));
    ASSERT_EQ(ISAM_OK, nextRecord(groups, &q));
    EXPECT_EQ(2u, u32At(readAt(data_, q), 0));
}

}  // namespace
}  // namespace isamtest
