// Crash safety. A child process adds records, singly and in batches, and tells the
// parent over a pipe what the engine has committed; the parent kills it with SIGKILL
// and then checks that every committed record survived whole and in every index, that
// the unit of work in flight at the kill is there completely or not at all, and that
// the file passes the integrity check. Each round's kill point comes from a seed
// derived from the round number, so the shape of the test does not depend on timing.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "isam/Container.h"
#include "tests/db/KillChild.h"
#include "tests/isam/TestSupport.h"

namespace {

using isam::FileNumber;
using isam::ISAM_OK;
using isam::Position;
using isamtest::indexOf;
using isamtest::Record;

constexpr std::uint16_t kContainerMode = 582;
constexpr std::uint32_t kIdsPerRound = 1000000;
constexpr std::uint32_t kGroups = 53;
constexpr std::size_t kNamePrefix = 20;  // the bytes of Name that I3 indexes

// ---- Records: everything follows from the id, so any record found can be verified ----

std::uint32_t groupOf(std::uint32_t id) {
    return (id / 5) % kGroups;
}
std::uint32_t valueOf(std::uint32_t id) {
    return id * 2654435761u;
}

// Three consecutive ids share their I3 key.
std::string namePrefixOf(std::uint32_t id) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "nm%018u", id / 3);
    return buffer;
}

std::string nameOf(std::uint32_t id) {
    return namePrefixOf(id) + "-" + std::to_string(id) +
           std::string(id % 37, static_cast<char>('a' + id % 26));
}

// Mostly short; every eleventh record spills over several pages.
std::string dataOf(std::uint32_t id) {
    const std::size_t length = id % 11 == 0 ? 3000 + id % 5000 : id % 300;
    std::string data(length, '\0');
    for (std::size_t i = 0; i < length; ++i) data[i] = static_cast<char>(id * 131 + i * 7);
    return data;
}

Record recordOf(std::uint32_t id) {
    return isamtest::sampleRecord(id, groupOf(id), valueOf(id), nameOf(id), dataOf(id));
}

// ---- Reports from the child ----------------------------------------------------------

enum FrameKind : std::uint32_t {
    kBeginAdd = 1,    // a single add of `first` is about to be made
    kBeginBatch = 2,  // a batch adding first..last is about to begin
    kAdded = 3,       // inside the batch, `first` was added at `position` (not committed)
    kDone = 4,        // first..last are committed; `position` of a single add
    kHolding = 5,     // the batch is written but not ended; the child waits to be killed
    kFailed = 6,      // an engine call failed: `first` is the error, `last` the step
};

void report(int fd, std::uint32_t kind, std::uint32_t first, std::uint32_t last,
            std::uint32_t position) {
    killtest::send(fd, kind, first, last, position);
}

// ---- The child ---------------------------------------------------------------------

struct ChildPlan {
    std::string path;
    std::uint32_t firstId = 0;
    std::uint32_t seed = 0;
    bool smallCache = false;
    int holdInBatch = 0;  // 0: never; n: stop inside the n-th batch, before its end
};

enum ChildStep {
    kStepRegister = 1,
    kStepSelect,
    kStepInitialise,
    kStepOpenContainer,
    kStepOpenFile,
    kStepAdd,
    kStepBeginBatch,
    kStepBatchAdd,
    kStepEndBatch,
};

// Runs after fork; it must never return into the test framework.
[[noreturn]] void runChild(const ChildPlan& plan, int reportFd, int holdFd) {
    ::alarm(20);  // never outlive a parent that died without killing us
    auto check = [&](int rc, int step) {
        if (rc == ISAM_OK) return;
        report(reportFd, kFailed, static_cast<std::uint32_t>(rc), static_cast<std::uint32_t>(step),
               0);
        ::_exit(2);
    };
    if (plan.smallCache) {
        // A tiny page cache spills a batch's pages into the log before it commits, and
        // frequent checkpoints put some kills in the middle of one.
        isam::storageTuning().cacheKiB = 32;
        isam::storageTuning().checkpointPages = 24;
    }
    const std::string instance = "CrashChild" + std::to_string(::getpid());
    check(isam::registerInstance(instance.c_str()), kStepRegister);
    check(isam::selectInstance(instance.c_str()), kStepSelect);
    check(isam::initialiseInstance(12, 140, 48, 12, 64, 0, 0, 0), kStepInitialise);
    check(isam::openContainer(plan.path.c_str(), kContainerMode, nullptr), kStepOpenContainer);
    FileNumber data = isam::kNoFile;
    check(isam::openFile(isamtest::sampleDefinition(), &data), kStepOpenFile);

    std::mt19937 rng(plan.seed ^ 0xC0FFEEu);
    std::uint32_t next = plan.firstId;
    for (int unit = 0, batches = 0;; ++unit) {
        if (unit % 2 == 0) {
            report(reportFd, kBeginAdd, next, next, 0);
            const Record r = recordOf(next);
            Position p = 0;
            check(isam::addRecord(data, r.data(), r.size(), &p), kStepAdd);
            report(reportFd, kDone, next, next, p);
            ++next;
            continue;
        }
        ++batches;
        const bool hold = batches == plan.holdInBatch;
        const std::uint32_t size = hold ? 120 : 2 + rng() % 11;
        const std::uint32_t first = next;
        const std::uint32_t last = next + size - 1;
        // Every other batch nests one around its second half: the inner end must
        // commit nothing.
        const bool nested = batches % 2 == 0;
        const std::uint32_t innerFrom = first + size / 2;
        report(reportFd, kBeginBatch, first, last, 0);
        check(isam::beginBatch(), kStepBeginBatch);
        for (std::uint32_t id = first; id <= last; ++id) {
            if (nested && id == innerFrom) check(isam::beginBatch(), kStepBeginBatch);
            const Record r = recordOf(id);
            Position p = 0;
            check(isam::addRecord(data, r.data(), r.size(), &p), kStepBatchAdd);
            report(reportFd, kAdded, id, id, p);
        }
        if (nested) check(isam::endBatch(), kStepEndBatch);
        if (hold) {
            report(reportFd, kHolding, first, last, 0);
            killtest::holdUntilKilled(holdFd);
        }
        check(isam::endBatch(), kStepEndBatch);
        report(reportFd, kDone, first, last, 0);
        next = last + 1;
    }
}

// ---- What the parent learnt from the reports -------------------------------------------

struct Unit {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    bool batch = false;
};

struct RoundLog {
    std::vector<Unit> done;                       // committed, in order
    std::map<std::uint32_t, Position> positions;  // where the child's adds put each id
    bool inFlight = false;                        // a unit was begun and not reported done
    Unit flying;
    bool holding = false;
    std::uint32_t failedRc = 0;
    std::uint32_t failedStep = 0;
    std::string protocolError;
    std::size_t partialBytes = 0;  // a frame cut short by the kill, ignored

    // The frame's fields: a the first id, b the last, c the position.
    void take(const killtest::Frame& frame) {
        if (!protocolError.empty()) return;
        if (!killtest::isWhole(frame)) {
            protocolError = "malformed frame";
            return;
        }
        const struct {
            std::uint32_t first, last, position;
        } f{frame.a, frame.b, frame.c};
        switch (frame.type) {
            case kBeginAdd:
            case kBeginBatch:
                if (inFlight) protocolError = "begin while a unit is in flight";
                inFlight = true;
                flying = {f.first, f.last, frame.type == kBeginBatch};
                break;
            case kAdded:
                if (!inFlight || !flying.batch || f.first < flying.first || f.first > flying.last) {
                    protocolError = "add outside its batch";
                }
                positions[f.first] = f.position;
                break;
            case kDone:
                if (!inFlight || f.first != flying.first || f.last != flying.last) {
                    protocolError = "done without its begin";
                }
                if (!flying.batch) positions[f.first] = f.position;
                done.push_back(flying);
                inFlight = false;
                break;
            case kHolding:
                if (!inFlight || !flying.batch) protocolError = "holding outside a batch";
                holding = true;
                break;
            case kFailed:
                failedRc = f.first;
                failedStep = f.last;
                break;
            default:
                protocolError = "unknown frame kind";
        }
    }
};

struct KillPlan {
    int commitsBeforeKill = 0;  // completed units to see before the kill
    int delayMicros = 0;        // then this long before it
    bool atHold = false;        // kill as soon as the child holds inside its batch
};

std::string listIds(const std::vector<std::uint32_t>& ids) {
    std::ostringstream out;
    out << ids.size() << " ids:";
    for (std::size_t i = 0; i < ids.size() && i < 12; ++i) out << ' ' << ids[i];
    if (ids.size() > 12) out << " ...";
    return out.str();
}

std::vector<Position> sorted(std::vector<Position> v) {
    std::sort(v.begin(), v.end());
    return v;
}

class CrashTest : public ::testing::Test {
protected:
    void SetUp() override {
        path_ = dir_.file("test.Prj");
        FileNumber data = isam::kNoFile;
        ASSERT_EQ(ISAM_OK, isam::createContainer(path_.c_str(), kContainerMode, 1024, nullptr));
        ASSERT_EQ(ISAM_OK, isam::createFile(isamtest::sampleDefinition(), &data));
        ASSERT_EQ(ISAM_OK, isam::closeContainer());
    }

    void TearDown() override {
        instance_.select();
        isam::closeContainer();
    }

    // Forks a writer, kills it as planned and collects every whole report it made.
    RoundLog runWriter(const ChildPlan& child, const KillPlan& kill);
    // Opens the file as the killed writer left it and checks it against the reports.
    void verify(const RoundLog& log, bool mustLoseFlying);

    isamtest::TempDir dir_;
    isamtest::ScopedInstance instance_;
    std::string path_;
    std::map<std::uint32_t, Position> committed_;  // every record found by earlier rounds
    int flyingBatches_ = 0;                        // kills that caught a batch unreported
    int flyingBatchesKept_ = 0;
    int flyingAddsKept_ = 0;
};

RoundLog CrashTest::runWriter(const ChildPlan& child, const KillPlan& kill) {
    RoundLog log;
    killtest::KillWhen when;
    when.ready = [&] {
        return kill.atHold ? log.holding : static_cast<int>(log.done.size()) >= kill.commitsBeforeKill;
    };
    when.delayMicros = kill.atHold ? 0 : kill.delayMicros;
    const killtest::Outcome outcome = killtest::runUntilKilled(
        [&](int reportFd, int holdFd) { runChild(child, reportFd, holdFd); },
        [&](const killtest::Frame& f) { log.take(f); }, when);
    log.partialBytes = outcome.partialBytes;
    EXPECT_EQ("", log.protocolError);
    EXPECT_EQ("", outcome.error) << "engine error " << log.failedRc << " ("
                                 << isam::errorText(static_cast<int>(log.failedRc)) << ") at step "
                                 << log.failedStep;
    return log;
}

void CrashTest::verify(const RoundLog& log, bool mustLoseFlying) {
    instance_.select();
    ASSERT_EQ(ISAM_OK, isam::openContainer(path_.c_str(), kContainerMode, nullptr));
    FileNumber data = isam::kNoFile;
    ASSERT_EQ(ISAM_OK, isam::openFile(isamtest::sampleDefinition(), &data));

    // Every record there must be whole: its bytes follow from its id.
    std::map<std::uint32_t, Position> found;
    std::vector<Position> byId = isamtest::walk(indexOf(data, 1));
    for (Position p : byId) {
        const std::vector<unsigned char> bytes = isamtest::readAt(data, p);
        const std::uint32_t id = isamtest::u32At(bytes, 0);
        EXPECT_TRUE(bytes == recordOf(id).bytes())
            << "record " << id << " at " << p << " is damaged or partial";
        EXPECT_TRUE(found.empty() || id > found.rbegin()->first)
            << "I1 out of order or repeated at id " << id;
        found.emplace(id, p);
    }

    // Committed in an earlier round: still there, at the same position.
    std::vector<std::uint32_t> lost;
    std::vector<std::uint32_t> moved;
    for (const auto& [id, p] : committed_) {
        auto it = found.find(id);
        if (it == found.end()) {
            lost.push_back(id);
        } else if (it->second != p) {
            moved.push_back(id);
        }
    }
    // Committed in this round, as reported: there, where the add put it.
    std::set<std::uint32_t> expected;
    for (const auto& [id, p] : committed_) expected.insert(id);
    for (const Unit& u : log.done) {
        for (std::uint32_t id = u.first; id <= u.last; ++id) {
            expected.insert(id);
            auto it = found.find(id);
            if (it == found.end()) {
                lost.push_back(id);
            } else if (log.positions.count(id) && log.positions.at(id) != it->second) {
                moved.push_back(id);
            }
        }
    }
    EXPECT_TRUE(lost.empty()) << "committed records lost: " << listIds(lost);
    EXPECT_TRUE(moved.empty()) << "committed records at another position: " << listIds(moved);

    // Beyond those, only the unit in flight at the kill, whole or not at all.
    std::vector<std::uint32_t> flyingFound;
    std::vector<std::uint32_t> flyingMoved;
    std::vector<std::uint32_t> strangers;
    for (const auto& [id, p] : found) {
        if (expected.count(id)) continue;
        if (log.inFlight && id >= log.flying.first && id <= log.flying.last) {
            flyingFound.push_back(id);
            if (log.positions.count(id) && log.positions.at(id) != p) flyingMoved.push_back(id);
        } else {
            strangers.push_back(id);
        }
    }
    EXPECT_TRUE(strangers.empty())
        << "records never begun or not from this writer: " << listIds(strangers);
    if (log.inFlight) {
        const std::size_t size = log.flying.last - log.flying.first + 1;
        EXPECT_TRUE(flyingFound.empty() || flyingFound.size() == size)
            << (log.flying.batch ? "batch " : "add ") << log.flying.first << ".." << log.flying.last
            << " survived in part: " << listIds(flyingFound);
        if (mustLoseFlying) {
            EXPECT_TRUE(flyingFound.empty())
                << "batch " << log.flying.first << ".." << log.flying.last
                << " was never ended but survived: " << listIds(flyingFound);
        }
        EXPECT_TRUE(flyingMoved.empty())
            << "in-flight records at another position: " << listIds(flyingMoved);
        if (log.flying.batch) {
            ++flyingBatches_;
            if (!flyingFound.empty()) ++flyingBatchesKept_;
        } else if (!flyingFound.empty()) {
            ++flyingAddsKept_;
        }
    }

    // Every index holds every record exactly once.
    const std::vector<Position> all = sorted(byId);
    EXPECT_EQ(all, sorted(isamtest::walk(indexOf(data, 2)))) << "I2 differs from I1";
    EXPECT_EQ(all, sorted(isamtest::walk(indexOf(data, 3)))) << "I3 differs from I1";

    // Each group's I2 keys are exactly its records.
    std::map<std::uint32_t, std::vector<Position>> groups;
    for (const auto& [id, p] : found) groups[groupOf(id)].push_back(p);
    for (const auto& [group, positions] : groups) {
        std::uint32_t count = 0;
        EXPECT_EQ(ISAM_OK, isam::countByPrefix(indexOf(data, 2), &group, 4, &count));
        EXPECT_EQ(positions.size(), count) << "group " << group;
        std::vector<Position> fetched(positions.size() + 1);
        std::uint32_t got = 0;
        EXPECT_EQ(ISAM_OK, isam::fetchByPrefix(indexOf(data, 2), &group, 4,
                                               static_cast<std::uint32_t>(fetched.size()),
                                               fetched.data(), &got));
        fetched.resize(got);
        EXPECT_EQ(sorted(positions), sorted(fetched)) << "group " << group;
    }

    // The records new in this round can be found by each of their keys.
    std::set<std::string> prefixesSeen;
    for (const auto& [id, p] : found) {
        if (committed_.count(id)) continue;
        Position at = 0;
        EXPECT_EQ(ISAM_OK, isam::findEqual(indexOf(data, 1), &id, 4, &at)) << "id " << id;
        EXPECT_EQ(p, at) << "I1 finds another record for id " << id;

        const std::string prefix = namePrefixOf(id);
        if (!prefixesSeen.insert(prefix).second) continue;
        std::vector<Position> sharing;
        for (std::uint32_t other = id / 3 * 3; other < id / 3 * 3 + 3; ++other) {
            auto it = found.find(other);
            if (it != found.end()) sharing.push_back(it->second);
        }
        Position fetched[4] = {};
        std::uint32_t got = 0;
        EXPECT_EQ(ISAM_OK, isam::fetchByPrefix(indexOf(data, 3), prefix.data(), kNamePrefix, 4,
                                               fetched, &got));
        EXPECT_EQ(sorted(sharing), sorted(std::vector<Position>(fetched, fetched + got)))
            << "I3 prefix " << prefix;
        ASSERT_EQ(ISAM_OK, isam::findEqual(indexOf(data, 3), prefix.data(), kNamePrefix, &at))
            << "I3 prefix " << prefix;
        EXPECT_EQ(0u, isamtest::textAt(isamtest::readAt(data, at), isamtest::kSampleFixed, 0)
                          .rfind(prefix, 0))
            << "I3 prefix " << prefix << " finds a record of another name";
    }

    ASSERT_EQ(ISAM_OK, isam::closeContainer());
    EXPECT_EQ(ISAM_OK, isam::rebuildContainer(path_.c_str(), ""));
    committed_ = std::move(found);
}

std::uint32_t seedOf(std::uint32_t salt, int round) {
    return salt + static_cast<std::uint32_t>(round);
}

// Kills at a random moment: during the open, a single add, a batch, a commit or a
// checkpoint, or between a commit and its report.
TEST_F(CrashTest, KillAtRandomMomentsKeepsEveryCommit) {
    constexpr int kRounds = 30;
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        const std::uint32_t seed = seedOf(0x5EED0000u, round);
        std::mt19937 rng(seed);
        KillPlan kill;
        kill.commitsBeforeKill = static_cast<int>(rng() % 40);
        kill.delayMicros = static_cast<int>(rng() % 2500);
        ChildPlan child;
        child.path = path_;
        child.firstId = static_cast<std::uint32_t>(round + 1) * kIdsPerRound;
        child.seed = seed;
        child.smallCache = round % 2 == 1;
        SCOPED_TRACE("round " + std::to_string(round) + ", seed " + std::to_string(seed) +
                     ": kill after " + std::to_string(kill.commitsBeforeKill) + " commits and " +
                     std::to_string(kill.delayMicros) + " us" +
                     (child.smallCache ? ", small cache" : ""));
        const RoundLog log = runWriter(child, kill);
        if (HasFailure()) break;
        verify(log, false);
    }
    std::printf(
        "[ crash    ] %zu records committed; in flight at the kill: %d batches (%d kept), "
        "%d single adds kept\n",
        committed_.size(), flyingBatches_, flyingBatchesKept_, flyingAddsKept_);
}

// Kills while a batch (some of them nested) is written but not ended, after some
// committed work: none of the batch may survive, everything before it must.
TEST_F(CrashTest, KillInsideOpenBatchLosesTheWholeBatch) {
    constexpr int kRounds = 6;
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        const std::uint32_t seed = seedOf(0xBA7C0000u, round);
        KillPlan kill;
        kill.atHold = true;
        ChildPlan child;
        child.path = path_;
        child.firstId = static_cast<std::uint32_t>(round + 1) * kIdsPerRound;
        child.seed = seed;
        child.smallCache = round % 4 < 2;
        child.holdInBatch = 1 + round % 4;  // the even ones are nested
        SCOPED_TRACE("round " + std::to_string(round) + ", seed " + std::to_string(seed) +
                     ": kill inside batch " + std::to_string(child.holdInBatch) +
                     (child.smallCache ? ", small cache" : ""));
        const RoundLog log = runWriter(child, kill);
        if (HasFailure()) break;
        ASSERT_TRUE(log.holding && log.inFlight) << "the writer never reached its batch";
        verify(log, true);
    }
}

}  // namespace
