// Prefix walks served from records read ahead give what reading the same
// positions one by one gives: across the chunk limits, in every kind of index,
// and around writes and other scans made in the middle of a walk.
#include <cctype>
#include <functional>
#include <iterator>
#include <map>
#include <tuple>

#include "tests/isam/TestSupport.h"

namespace isamtest {
namespace {

using namespace isam;
using Bytes = std::vector<unsigned char>;

struct Walked {
    std::vector<Position> positions;
    std::vector<Bytes> records;
};

bool operator==(const Walked& a, const Walked& b) {
    return a.positions == b.positions && a.records == b.records;
}

std::ostream& operator<<(std::ostream& out, const Walked& w) {
    return out << w.positions.size() << " positions";
}

// Count, fetch, then a read of each position: no scan, so nothing is read ahead.
Walked walkOneByOne(FileNumber data, FileNumber index, const std::string& prefix) {
    Walked w;
    std::uint32_t count = 0, fetched = 0;
    const int rc = countByPrefix(index, prefix.data(), prefix.size(), &count);
    EXPECT_EQ(count ? ISAM_OK : ISAM_NO_RECORD, rc);
    w.positions.resize(count);
    EXPECT_EQ(ISAM_OK, fetchByPrefix(index, prefix.data(), prefix.size(), count, w.positions.data(),
                                     &fetched));
    EXPECT_EQ(count, fetched);
    for (Position p : w.positions) w.records.push_back(readAt(data, p));
    return w;
}

// One scan, then the reads in its order, served from the records read ahead.
Walked walkScanned(FileNumber data, FileNumber index, const std::string& prefix) {
    Walked w;
    std::uint32_t count = 0;
    EXPECT_EQ(ISAM_OK, scanByPrefix(index, prefix.data(), prefix.size(), &count, &w.positions));
    EXPECT_EQ(w.positions.size(), count);
    for (Position p : w.positions) w.records.push_back(readAt(data, p));
    return w;
}

std::string u32Bytes(std::uint32_t value) {
    Record r(4);
    r.u32(0, value);
    return std::string(r.bytes().begin(), r.bytes().end());
}

// ---- Chunk limits, index kinds --------------------------------------------------------------

// Records of group 7 with the walked names, and a few around them in other
// groups and names, so that every walk has neighbours outside its prefix.
constexpr std::uint32_t kWalkedGroup = 7;
// Names of the walked records start with 0xFF: no prefix of them has a successor.
const std::string kWalkedName = "\xFFname ";

struct Fill {
    std::uint32_t records;
    std::size_t dataBytes;
};

std::string fillName(const ::testing::TestParamInfo<Fill>& info) {
    return std::to_string(info.param.records) + "RecordsOf" + std::to_string(info.param.dataBytes) +
           "Bytes";
}

class ReadAheadLimitsTest : public EngineTest, public ::testing::WithParamInterface<Fill> {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        ASSERT_EQ(ISAM_OK, beginBatch());
        add(900001, kWalkedGroup - 1, 0, "\xFE\xFFname before");
        const Fill fill = GetParam();
        for (std::uint32_t id = 1; id <= fill.records; ++id) {
            // Names descend as positions ascend: text order is not position order.
            const std::string name = kWalkedName + std::to_string(100000 - id);
            add(id, kWalkedGroup, id, name, std::string(fill.dataBytes, char('a' + id % 26)));
        }
        add(900002, kWalkedGroup + 1, 0, "zz name after");
        ASSERT_EQ(ISAM_OK, endBatch());
    }
};

TEST_P(ReadAheadLimitsTest, ScannedWalksMatchReadsOneByOne) {
    const std::uint32_t middleId = GetParam().records / 2 + 1;
    std::string middleWithPosition = u32Bytes(kWalkedGroup);
    Position middle = 0;
    if (GetParam().records) {
        ASSERT_EQ(ISAM_OK, findEqual(indexOf(data_, 1), &middleId, 4, &middle));
        middleWithPosition += u32Bytes(middle);
    }
    const struct {
        const char* name;
        int index;
        std::string prefix;
    } walks[] = {
        {"unique id, whole index", 1, ""},
        {"unique id, one whole key", 1, u32Bytes(middleId)},
        {"equal integer keys", 2, u32Bytes(kWalkedGroup)},
        {"integer key with its position", 2, middleWithPosition},
        {"duplicate integer key, whole index", 2, ""},
        {"text prefix", 3, kWalkedName},
        {"text prefix without successor", 3, "\xFF"},
    };
    // Every walk one by one first: once a scan ran, reads may be served ahead.
    std::vector<Walked> expected;
    for (const auto& w : walks) {
        expected.push_back(walkOneByOne(data_, indexOf(data_, w.index), w.prefix));
    }
    for (std::size_t i = 0; i < std::size(walks); ++i) {
        SCOPED_TRACE(walks[i].name);
        EXPECT_EQ(expected[i], walkScanned(data_, indexOf(data_, walks[i].index), walks[i].prefix));
    }
    EXPECT_EQ(GetParam().records, expected[2].positions.size());
}

INSTANTIATE_TEST_SUITE_P(Chunks, ReadAheadLimitsTest,
                         ::testing::Values(Fill{0, 0}, Fill{1, 0}, Fill{255, 0}, Fill{256, 0},
                                           Fill{257, 0}, Fill{1000, 0}, Fill{300, 8000},
                                           Fill{4, 1536 * 1024}),
                         fillName);

// A 254-byte text key ordered by a locale: chunks resume under its collation.
TEST(ReadAheadLocaleTest, ScannedWalksMatchReadsOneByOneInLocaleOrder) {
    TempDir dir;
    ScopedInstance instance;
    const std::string path = dir.file("w.Dic");
    ASSERT_EQ(ISAM_OK, createContainer(path.c_str(), 582, 1024, nullptr));
    FileDefinition def;
    def.name = "w.Dic!Words";
    def.recordLength = 4;
    def.variableFields = {{false, 300}};
    def.indexes = {{"w.Dic!WordsI1.Qvi", 254, true, 64, 1024, {{0, 250, kSegmentVariableText}}}};
    FileNumber data = kNoFile;
    ASSERT_EQ(ISAM_OK, createFile(def, &data));
    ASSERT_EQ(ISAM_OK, setFileLocale(data + 1, 1031));
    const std::vector<std::string> words = {"zebra", "\xC4pfel", "banana",
                                            "apple", "Zoo",      "banana"};
    for (std::uint32_t id = 1; id <= 700; ++id) {
        Record r(4);
        r.u32(0, id).text(words[id % words.size()]);
        ASSERT_EQ(ISAM_OK, addRecord(data, r.data(), r.size(), nullptr));
    }
    const std::string banana = "banana" + std::string(244, ' ');
    const Walked all = walkOneByOne(data, data + 1, "");
    const Walked bananas = walkOneByOne(data, data + 1, banana);
    EXPECT_EQ(all, walkScanned(data, data + 1, ""));
    EXPECT_EQ(bananas, walkScanned(data, data + 1, banana));
    EXPECT_EQ(700u, all.positions.size());
    EXPECT_EQ(700u / 3, bananas.positions.size());
    EXPECT_EQ(ISAM_OK, closeContainer());
}

// ---- Writes and scans in the middle of a walk ----------------------------------------------

// A walk over group 7 with what every position should hold now.
struct WalkState {
    FileNumber data;
    std::vector<Position> positions;
    std::size_t at = 0;  // the index of the position read last
    std::map<Position, Bytes> model;

    Position current() const { return positions[at]; }
    Position ahead(std::size_t by) const { return positions[at + by]; }
};

constexpr std::uint32_t kWalkLength = 600;  // three chunks of rows
constexpr std::size_t kStopAt = 10;

Bytes bytesOf(const Record& r) {
    return r.bytes();
}

// Makes the record at a position current without reading it.
void makeCurrent(const WalkState& s, Position p) {
    const std::uint32_t id = u32At(s.model.at(p), 0);
    Position found = 0;
    ASSERT_EQ(ISAM_OK, findEqual(indexOf(s.data, 1), &id, 4, &found));
    ASSERT_EQ(p, found);
}

void rewriteCurrent(WalkState& s, Position p, std::uint32_t group, const std::string& name) {
    const Record r = sampleRecord(u32At(s.model.at(p), 0), group, 12345, name);
    ASSERT_EQ(ISAM_OK, rewriteRecord(s.data, r.data(), r.size()));
    s.model[p] = bytesOf(r);
}

void rewriteAt(WalkState& s, Position p, std::uint32_t group, const std::string& name) {
    makeCurrent(s, p);
    rewriteCurrent(s, p, group, name);
}

void deleteAt(WalkState& s, Position p) {
    makeCurrent(s, p);
    ASSERT_EQ(ISAM_OK, deleteRecord(s.data));
    s.model.erase(p);
}

Position addTo(WalkState& s, std::uint32_t id, std::uint32_t group) {
    const Record r = sampleRecord(id, group, 0, "added " + std::to_string(id));
    Position p = 0;
    EXPECT_EQ(ISAM_OK, addRecord(s.data, r.data(), r.size(), &p));
    s.model[p] = bytesOf(r);
    return p;
}

// Leaves the other scan's rows read ahead in the middle of a chunk.
void readPartOfAScan(const WalkState& s, FileNumber index, const std::string& prefix) {
    std::uint32_t count = 0;
    std::vector<Position> positions;
    ASSERT_EQ(ISAM_OK, scanByPrefix(index, prefix.data(), prefix.size(), &count, &positions));
    ASSERT_LT(20u, positions.size());
    for (std::size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(s.model.at(positions[i]), readAt(s.data, positions[i]));
    }
}

struct Intervention {
    const char* name;
    std::function<void(WalkState&)> apply;
};

const std::vector<Intervention> kInterventions = {
    {"rewrite the current record",
     [](WalkState& s) { rewriteCurrent(s, s.current(), kWalkedGroup, "new"); }},
    {"move the current record out of the prefix",
     [](WalkState& s) { rewriteCurrent(s, s.current(), kWalkedGroup + 1, "moved"); }},
    {"rewrite records ahead, in this chunk and the next",
     [](WalkState& s) {
         rewriteAt(s, s.ahead(5), kWalkedGroup, "ahead");
         rewriteAt(s, s.ahead(300), kWalkedGroup, "next chunk");
     }},
    {"move a record ahead out of the prefix",
     [](WalkState& s) { rewriteAt(s, s.ahead(7), 1, "out"); }},
    {"delete records ahead, in this chunk and the next",
     [](WalkState& s) {
         deleteAt(s, s.ahead(1));
         deleteAt(s, s.ahead(400));
     }},
    {"delete the last record and add one at its position",
     [](WalkState& s) {
         const Position last = s.positions.back();
         deleteAt(s, last);
         EXPECT_EQ(last, addTo(s, 700000, kWalkedGroup));
     }},
    {"add records inside the prefix",
     [](WalkState& s) {
         for (std::uint32_t id = 800000; id < 800300; ++id) addTo(s, id, kWalkedGroup);
     }},
    {"scan another index and read part of it",
     [](WalkState& s) { readPartOfAScan(s, indexOf(s.data, 3), "name"); }},
    {"scan the same prefix again and read part of it",
     [](WalkState& s) { readPartOfAScan(s, indexOf(s.data, 2), u32Bytes(kWalkedGroup)); }},
};

std::string interventionName(const ::testing::TestParamInfo<std::tuple<std::size_t, bool>>& info) {
    std::string name = kInterventions[std::get<0>(info.param)].name;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name + (std::get<1>(info.param) ? "_InABatch" : "_Committed");
}

// Outside a batch every write commits, which ends the read-ahead; inside one the
// rows read ahead must follow the writes.
class ReadAheadWriteTest : public EngineTest,
                           public ::testing::WithParamInterface<std::tuple<std::size_t, bool>> {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        state_.data = data_;
        ASSERT_EQ(ISAM_OK, beginBatch());
        for (std::uint32_t id = 1; id <= kWalkLength; ++id) {
            const Record r = sampleRecord(id, kWalkedGroup, id, "name " + std::to_string(id));
            state_.model[add(id, kWalkedGroup, id, "name " + std::to_string(id))] = bytesOf(r);
        }
        ASSERT_EQ(ISAM_OK, endBatch());
    }

    void expectReadAsModelSays(Position p) {
        std::vector<unsigned char> buffer(256);
        std::size_t length = 0;
        const int rc = readRecord(data_, p, buffer.data(), buffer.size(), &length);
        const auto held = state_.model.find(p);
        if (held == state_.model.end()) {
            EXPECT_EQ(ISAM_NO_RECORD, rc) << "position " << p;
            return;
        }
        ASSERT_EQ(ISAM_OK, rc) << "position " << p;
        buffer.resize(length);
        EXPECT_EQ(held->second, buffer) << "position " << p;
    }

    // The indexes agree with the records: every id found, every group counted.
    void expectIndexesAgree() {
        std::map<std::uint32_t, std::uint32_t> groups;
        for (const auto& [p, bytes] : state_.model) {
            const std::uint32_t id = u32At(bytes, 0);
            Position found = 0;
            EXPECT_EQ(ISAM_OK, findEqual(indexOf(data_, 1), &id, 4, &found));
            EXPECT_EQ(p, found);
            ++groups[u32At(bytes, 4)];
        }
        for (const auto& [group, expected] : groups) {
            std::uint32_t count = 0;
            EXPECT_EQ(ISAM_OK, countByPrefix(indexOf(data_, 2), &group, 4, &count));
            EXPECT_EQ(expected, count) << "group " << group;
        }
    }

    WalkState state_;
};

TEST_P(ReadAheadWriteTest, TheWalkReadsWhatIsStoredNow) {
    const auto [which, inBatch] = GetParam();
    if (inBatch) {
        ASSERT_EQ(ISAM_OK, beginBatch());
    }
    std::uint32_t count = 0;
    ASSERT_EQ(ISAM_OK,
              scanByPrefix(indexOf(data_, 2), &kWalkedGroup, 4, &count, &state_.positions));
    ASSERT_EQ(kWalkLength, state_.positions.size());
    for (state_.at = 0; state_.at < state_.positions.size(); ++state_.at) {
        expectReadAsModelSays(state_.current());
        if (state_.at == kStopAt) kInterventions[which].apply(state_);
    }
    // Read again, everything holds what was written last.
    for (Position p : state_.positions) expectReadAsModelSays(p);
    expectIndexesAgree();
    if (inBatch) {
        ASSERT_EQ(ISAM_OK, endBatch());
    }
    expectIndexesAgree();
}

INSTANTIATE_TEST_SUITE_P(Interventions, ReadAheadWriteTest,
                         ::testing::Combine(::testing::Range<std::size_t>(0, kInterventions.size()),
                                            ::testing::Bool()),
                         interventionName);

class ReadAheadKeysTest : public EngineTest {};

// A rewrite takes the old keys from the record read last; once that record was
// rewritten, the copy read ahead no longer holds them.
TEST_F(ReadAheadKeysTest, ARecordReadAheadAndRewrittenTwiceKeepsItsKeys) {
    const Position first = add(1, kWalkedGroup, 0, "first");
    add(2, kWalkedGroup, 0, "second");
    ASSERT_EQ(ISAM_OK, beginBatch());
    std::uint32_t count = 0;
    std::vector<Position> positions;
    ASSERT_EQ(ISAM_OK, scanByPrefix(indexOf(data_, 2), &kWalkedGroup, 4, &count, &positions));
    readAt(data_, first);
    const Record moved = sampleRecord(1, kWalkedGroup + 1, 0, "first");
    ASSERT_EQ(ISAM_OK, rewriteRecord(data_, moved.data(), moved.size()));
    // Elsewhere, then back by position.
    const std::uint32_t second = 2;
    Position p = 0;
    ASSERT_EQ(ISAM_OK, findEqual(indexOf(data_, 1), &second, 4, &p));
    readAt(data_, first);
    const Record back = sampleRecord(1, kWalkedGroup, 0, "first");
    ASSERT_EQ(ISAM_OK, rewriteRecord(data_, back.data(), back.size()));
    ASSERT_EQ(ISAM_OK, endBatch());
    ASSERT_EQ(ISAM_OK, countByPrefix(indexOf(data_, 2), &kWalkedGroup, 4, &count));
    EXPECT_EQ(2u, count);
}

}  // namespace
}  // namespace isamtest
