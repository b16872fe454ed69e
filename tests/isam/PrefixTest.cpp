// Counting and fetching record positions by key prefix.
#include "tests/isam/TestSupport.h"

namespace isamtest {
namespace {

using namespace isam;

class PrefixTest : public EngineTest {};

TEST_F(PrefixTest, CountAndFetchCoverExactlyTheDuplicatesOfAKey) {
    std::vector<Position> groupSeven;
    for (std::uint32_t id = 1; id <= 50; ++id) {
        const std::uint32_t group = id % 3 == 0 ? 7 : (id % 3 == 1 ? 6 : 8);
        const Position p = add(id, group, 0);
        if (group == 7) groupSeven.push_back(p);
    }
    const std::uint32_t group = 7;
    std::uint32_t count = 0, fetched = 0;
    ASSERT_EQ(ISAM_OK, countByPrefix(indexOf(data_, 2), &group, 4, &count));
    EXPECT_EQ(groupSeven.size(), count);
    std::vector<Position> positions(count + 5, 0);
    ASSERT_EQ(ISAM_OK, fetchByPrefix(indexOf(data_, 2), &group, 4, count + 5, positions.data(), &fetched));
    positions.resize(fetched);
    EXPECT_EQ(groupSeven, positions);  // key order, that is position order among duplicates

    // Fewer wanted than present: the first ones in key order.
    ASSERT_EQ(ISAM_OK, fetchByPrefix(indexOf(data_, 2), &group, 4, 3, positions.data(), &fetched));
    EXPECT_EQ(3u, fetched);
    EXPECT_EQ(groupSeven[2], positions[2]);

    const std::uint32_t missing = 9;
    EXPECT_EQ(ISAM_NO_RECORD, countByPrefix(indexOf(data_, 2), &missing, 4, &count));
    EXPECT_EQ(0u, count);
    ASSERT_EQ(ISAM_OK, fetchByPrefix(indexOf(data_, 2), &missing, 4, 10, positions.data(), &fetched));
    EXPECT_EQ(0u, fetched);
}

TEST_F(PrefixTest, PrefixesAtTheEndsOfTheKeyRange) {
    add(1, 0, 0);
    add(2, 0xFFFFFFFFu, 0);
    add(3, 0xFFFFFFFFu, 0);
    add(4, 0xFFFFFF00u, 0);
    std::uint32_t count = 0;
    const std::uint32_t top = 0xFFFFFFFFu, bottom = 0;
    ASSERT_EQ(ISAM_OK, countByPrefix(indexOf(data_, 2), &top, 4, &count));
    EXPECT_EQ(2u, count);
    ASSERT_EQ(ISAM_OK, countByPrefix(indexOf(data_, 2), &bottom, 4, &count));
    EXPECT_EQ(1u, count);
    // The empty prefix covers the whole index.
    ASSERT_EQ(ISAM_OK, countByPrefix(indexOf(data_, 2), nullptr, 0, &count));
    EXPECT_EQ(4u, count);
}

TEST_F(PrefixTest, TextPrefixesMatchLeadingBytes) {
    add(1, 0, 0, "File");
    add(2, 0, 0, "File open");
    add(3, 0, 0, "Filter");
    add(4, 0, 0, "Fil");
    add(5, 0, 0, "Edit");
    std::uint32_t count = 0;
    ASSERT_EQ(ISAM_OK, countByPrefix(indexOf(data_, 3), "File", 4, &count));
    EXPECT_EQ(2u, count);
    ASSERT_EQ(ISAM_OK, countByPrefix(indexOf(data_, 3), "Fil", 3, &count));
    EXPECT_EQ(4u, count);
    // "File" padded to the segment: only the record whose text is exactly "File".
    const std::string padded = std::string("File") + std::string(16, ' ');
    ASSERT_EQ(ISAM_OK, countByPrefix(indexOf(data_, 3), padded.data(), padded.size(), &count));
    EXPECT_EQ(1u, count);
}

TEST_F(PrefixTest, MultiSegmentKeysCountByTheirLeadingSegment) {
    // A member keyed by (Group, Id), unique, like the per-language tables.
    FileDefinition def;
    def.name = "test.Prj!Pairs";
    def.recordLength = 8;
    def.indexes = {{"test.Prj!PairsI1.Qvi", 8, false, 64, 1024, {{0, 4, 1}, {4, 4, 1}}}};
    FileNumber pairs = kNoFile;
    ASSERT_EQ(ISAM_OK, createFile(def, &pairs));
    for (std::uint32_t group = 1; group <= 3; ++group) {
        for (std::uint32_t id = 300; id >= 100; id -= 100) {
            Record r(8);
            r.u32(0, group).u32(4, id);
            ASSERT_EQ(ISAM_OK, addRecord(pairs, r.data(), r.size(), nullptr));
        }
    }
    const std::uint32_t group = 2;
    std::uint32_t count = 0, fetched = 0;
    ASSERT_EQ(ISAM_OK, countByPrefix(pairs + 1, &group, 4, &count));
    EXPECT_EQ(3u, count);
    std::vector<Position> positions(count);
    ASSERT_EQ(ISAM_OK, fetchByPrefix(pairs + 1, &group, 4, count, positions.data(), &fetched));
    std::vector<std::uint32_t> ids;
    for (Position p : positions) ids.push_back(u32At(readAt(pairs, p), 4));
    EXPECT_EQ((std::vector<std::uint32_t>{100, 200, 300}), ids);

    const std::uint32_t whole[2] = {2, 200};
    Position p = 0;
    ASSERT_EQ(ISAM_OK, findEqual(pairs + 1, whole, 0, &p));
    EXPECT_EQ(200u, u32At(readAt(pairs, p), 4));
    Record clash(8);
    clash.u32(0, 2).u32(4, 200);
    EXPECT_EQ(ISAM_DUPLICATE_KEY, addRecord(pairs, clash.data(), clash.size(), nullptr));
}

}  // namespace
}  // namespace isamtest
