// Crash safety through the public API. A child process adds phrases and string-table
// entries one call at a time and in application transactions, reporting each call
// only after it returned success (a transaction's adds only after its commit did);
// the parent kills it with SIGKILL and opens the database with a new object. Every
// acknowledged record must be there with its fields, every use count must equal the
// entries that refer to the phrase, a transaction must be there whole or not at all,
// the file must pass the integrity check and take another add. Each round's kill
// point comes from a seed derived from the round number.
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "isam/Container.h"
#include "tests/db/DbTestSupport.h"
#include "tests/db/RawFile.h"
#include "tests/db/KillChild.h"

namespace {

using dbtest::integrityOf;

using Key = std::uint32_t;

constexpr const char* kName = "test";
constexpr DWORD kPairs = 2;
constexpr DWORD kLangModules = 3;
constexpr Key kKeysPerRound = 1000000;
constexpr Key kParentKeys = 900000;  // the parent's own adds, past any child's

// ---- Records: every field follows from the key written into the record ----------------

struct PhraseValues {
    DWORD pair = 0;
    std::string source, filtered, translation;
    WORD maxChars = 0;
    int readOnly = 0, translated = 0, standard = 0;
    DWORD flags = 0;
};

// Two keys of a pair share a source text, so families form; some texts run past
// the 125 characters that the text indexes hold.
PhraseValues phraseOf(Key key) {
    PhraseValues p;
    p.pair = 1 + key % kPairs;
    p.source = "Source " + std::to_string(key / 4) + std::string(key / 4 % 160, 'x');
    p.filtered = "source " + std::to_string(key / 4);
    p.translation = "T" + std::to_string(key) + "|" + std::string(key % 7, 'y');
    p.maxChars = static_cast<WORD>(key % 300);
    p.readOnly = key % 5 == 0;
    p.translated = key % 3 == 0;
    p.standard = key % 2;
    p.flags = (key % 16) << 8;
    return p;
}

struct StringValues {
    DWORD langModul = 0;
    WORD resId = 0;
    DWORD flags = 0, noticeId = 0;
    std::string resNetId;
};

StringValues stringOf(Key key) {
    StringValues s;
    s.langModul = 1 + key % kLangModules;
    s.resId = static_cast<WORD>(key);
    s.flags = (key % 8) << 8;
    s.noticeId = key % 5;
    s.resNetId = "S" + std::to_string(key) + "|" + std::string(key % 40, 'z');
    return s;
}

// The key behind a text made above ("T123|yy", "S123|z"); false for any other text.
bool keyIn(const char* text, char mark, Key* key) {
    if (text[0] != mark) return false;
    char* end = nullptr;
    const unsigned long value = std::strtoul(text + 1, &end, 10);
    *key = static_cast<Key>(value);
    return end != text + 1 && *end == '|';
}

enum RecordKind : std::uint32_t { kPhrase = 1, kString = 2 };

// A record as the writer made it or the parent found it.
struct Added {
    std::uint32_t kind = 0;
    DWORD id = 0;      // TextId or StringId; 0 while an add is not answered
    DWORD textId = 0;  // the phrase a string refers to

    bool operator==(const Added& o) const {
        return kind == o.kind && id == o.id && textId == o.textId;
    }
};

std::string describe(Key key, const Added& a) {
    std::ostringstream out;
    out << (a.kind == kPhrase ? "phrase" : "string") << " key " << key << " id " << a.id;
    if (a.kind == kString) out << " -> phrase " << a.textId;
    return out.str();
}

int addRecord(CDbProject& db, Key key, std::uint32_t kind, DWORD textId, DWORD* id) {
    if (kind == kPhrase) {
        const PhraseValues p = phraseOf(key);
        return db.AddDictionary(id, p.pair, p.source.c_str(), p.filtered.c_str(),
                                p.translation.c_str(), p.maxChars, p.readOnly, p.translated,
                                p.standard, p.flags);
    }
    const StringValues s = stringOf(key);
    CString resNetId = s.resNetId.c_str();
    return db.AddStringTable(id, s.langModul, textId, s.resId, s.flags, s.noticeId, resNetId);
}

// ---- The writer --------------------------------------------------------------------

enum FrameType : std::uint32_t {
    kBeginSingle = 1,       // a = key, b = kind, c = phrase of a string
    kBeginTransaction = 2,  // a..b = the keys it adds
    kAdded = 3,             // a = key, b = kind, c = id, d = phrase: a single add is acknowledged
    kCommitted = 4,         // a..b: the transaction's adds are acknowledged
    kHolding = 5,           // the transaction is written but not committed
    kFailed = 6,            // a = error, b = step
};

enum Step : std::uint32_t { kStepOpen = 1, kStepAdd, kStepBegin, kStepCommit };

struct WriterPlan {
    std::string dir;
    Key firstKey = 0;
    std::uint32_t seed = 0;
    bool smallCache = false;
    int holdInTransaction = 0;   // 0: never; n: stop inside the n-th, before its commit
    std::vector<DWORD> phrases;  // known to be stored
};

class Writer {
public:
    Writer(const WriterPlan& plan, int reportFd)
        : plan_(plan), fd_(reportFd), rng_(plan.seed ^ 0xC0FFEEu), phrases_(plan.phrases) {}

    [[noreturn]] void run(int holdFd) {
        if (!db_.OpenDb(plan_.dir.c_str(), kName, 0)) fail(kStepOpen);
        Key next = plan_.firstKey;
        for (int unit = 0, transactions = 0;; ++unit) {
            if (unit % 3 != 2) {
                single(next++);
                continue;
            }
            const bool hold = ++transactions == plan_.holdInTransaction;
            const Key size = hold ? 60 : 2 + rng_() % 7;
            transaction(next, next + size - 1);
            if (hold) {
                killtest::send(fd_, kHolding, next, next + size - 1);
                killtest::holdUntilKilled(holdFd);
            }
            commit(next, next + size - 1);
            next += size;
        }
    }

private:
    [[noreturn]] void fail(Step step) {
        killtest::send(fd_, kFailed, static_cast<std::uint32_t>(db_.GetError()), step);
        ::_exit(2);
    }

    // A string needs a stored phrase, preferably a recent one so that counts climb.
    std::uint32_t nextKind() { return phrases_.empty() || rng_() % 5 < 2 ? kPhrase : kString; }
    DWORD somePhrase() {
        const std::size_t recent = std::min<std::size_t>(phrases_.size(), 12);
        return phrases_[phrases_.size() - 1 - rng_() % recent];
    }

    // The kind and phrase are chosen before the begin report, so a record found
    // after a kill during its call can be checked in full.
    Added plan() {
        Added a;
        a.kind = nextKind();
        if (a.kind == kString) a.textId = somePhrase();
        return a;
    }

    Added add(Key key, Added a) {
        if (!addRecord(db_, key, a.kind, a.textId, &a.id)) fail(kStepAdd);
        if (a.kind == kPhrase) phrases_.push_back(a.id);
        return a;
    }

    void single(Key key) {
        const Added planned = plan();
        killtest::send(fd_, kBeginSingle, key, planned.kind, planned.textId);
        const Added a = add(key, planned);
        killtest::send(fd_, kAdded, key, a.kind, a.id, a.textId);
    }

    void transaction(Key first, Key last) {
        killtest::send(fd_, kBeginTransaction, first, last);
        if (!db_.BeginTransaction()) fail(kStepBegin);
        for (Key key = first; key <= last; ++key) {
            const Added a = add(key, plan());
            killtest::send(fd_, kAdded, key, a.kind, a.id, a.textId);
        }
    }

    void commit(Key first, Key last) {
        if (!db_.CommitTransaction()) fail(kStepCommit);
        killtest::send(fd_, kCommitted, first, last);
    }

    const WriterPlan& plan_;
    int fd_;
    std::mt19937 rng_;
    std::vector<DWORD> phrases_;
    CDbProject db_;
};

[[noreturn]] void runWriter(const WriterPlan& plan, int reportFd, int holdFd) {
    ::alarm(30);  // never outlive a parent that died without killing us
    if (plan.smallCache) {
        // A tiny page cache spills a transaction's pages into the log before it
        // commits, and frequent checkpoints put some kills in the middle of one.
        isam::storageTuning().cacheKiB = 32;
        isam::storageTuning().checkpointPages = 24;
    }
    Writer(plan, reportFd).run(holdFd);
}

// ---- What the parent learnt from the reports ----------------------------------------

struct RoundLog {
    std::map<Key, Added> acknowledged;
    int units = 0;  // acknowledged calls and commits
    bool inFlight = false;
    bool transaction = false;
    Key first = 0, last = 0;
    std::map<Key, Added> pending;  // the unit in flight as far as reported
    bool holding = false;
    std::uint32_t failedRc = 0, failedStep = 0;
    std::string protocolError;

    void take(const killtest::Frame& f) {
        if (!protocolError.empty()) return;
        if (!killtest::isWhole(f)) return setError("malformed frame");
        switch (f.type) {
            case kBeginSingle:
            case kBeginTransaction:
                if (inFlight) return setError("begin while a unit is in flight");
                inFlight = true;
                transaction = f.type == kBeginTransaction;
                first = f.a;
                last = transaction ? f.b : f.a;
                pending.clear();
                if (!transaction) pending[f.a] = Added{f.b, 0, f.c};
                return;
            case kAdded:
                return takeAdded(f.a, Added{f.b, f.c, f.d});
            case kCommitted:
                if (!inFlight || !transaction || f.a != first || f.b != last ||
                    pending.size() != last - first + 1) {
                    return setError("commit without its adds");
                }
                acknowledged.insert(pending.begin(), pending.end());
                return close();
            case kHolding:
                if (!inFlight || !transaction) return setError("holding outside a transaction");
                holding = true;
                return;
            case kFailed:
                failedRc = f.a;
                failedStep = f.b;
                return;
            default:
                return setError("unknown frame type");
        }
    }

private:
    void setError(const char* what) { protocolError = what; }
    void close() {
        pending.clear();
        inFlight = false;
        ++units;
    }
    void takeAdded(Key key, const Added& a) {
        if (!inFlight || key < first || key > last) return setError("add outside its unit");
        if (transaction) {
            pending[key] = a;
            return;
        }
        const Added& planned = pending[key];
        if (planned.kind != a.kind || planned.textId != a.textId) {
            return setError("add other than begun");
        }
        acknowledged[key] = a;
        close();
    }
};

// ---- What the parent finds in the database --------------------------------------------

struct Found {
    std::map<Key, Added> records;
    std::map<DWORD, DWORD> useCounts;  // by TextId
    std::vector<std::string> damage;
};

std::string listOf(const std::vector<std::string>& lines) {
    std::ostringstream out;
    out << lines.size() << ':';
    for (std::size_t i = 0; i < lines.size() && i < 12; ++i) out << "\n  " << lines[i];
    if (lines.size() > 12) out << "\n  ...";
    return out.str();
}

void keep(Found& found, Key key, const Added& a) {
    if (!found.records.emplace(key, a).second)
        found.damage.push_back("two records: " + describe(key, a));
}

void readPhrase(CDbProject& db, DWORD id, Found& found) {
    DWORD pair = 0, count = 0, flags = 0;
    CString source, filtered, translation;
    WORD maxChars = 0;
    int readOnly = 0, used = 0, translated = 0, standard = 0;
    Key key = 0;
    if (!db.GetDictionary(id, &pair, &source, &filtered, &translation, &maxChars, &readOnly, &used,
                          &translated, &standard, &flags) ||
        !db.GetDictionary(id, nullptr, static_cast<CString*>(nullptr), nullptr, nullptr, nullptr,
                          &count, nullptr, nullptr, nullptr)) {
        found.damage.push_back("phrase " + std::to_string(id) + " listed but unreadable, error " +
                               std::to_string(db.GetError()));
        return;
    }
    if (!keyIn(translation, 'T', &key)) {
        found.damage.push_back("phrase " + std::to_string(id) +
                               " of no writer: " + translation.GetString());
        return;
    }
    const PhraseValues p = phraseOf(key);
    if (pair != p.pair || source.Compare(p.source.c_str()) != 0 ||
        filtered.Compare(p.filtered.c_str()) != 0 ||
        translation.Compare(p.translation.c_str()) != 0 || maxChars != p.maxChars ||
        (readOnly != 0) != (p.readOnly != 0) || (translated != 0) != (p.translated != 0) ||
        (standard != 0) != (p.standard != 0) || flags != p.flags || (used != 0) != (count != 0)) {
        found.damage.push_back("phrase " + std::to_string(id) + " (key " + std::to_string(key) +
                               ") has other fields than written");
    }
    found.useCounts[id] = count;
    keep(found, key, Added{kPhrase, id, 0});
}

void readString(CDbProject& db, DWORD id, Found& found) {
    DWORD langModul = 0, textId = 0, flags = 0, noticeId = 0;
    WORD resId = 0;
    CString resNetId;
    Key key = 0;
    if (!db.GetStringTable(id, &langModul, &textId, &resId, &flags, &noticeId, resNetId)) {
        found.damage.push_back("string " + std::to_string(id) + " listed but unreadable, error " +
                               std::to_string(db.GetError()));
        return;
    }
    if (!keyIn(resNetId, 'S', &key)) {
        found.damage.push_back("string " + std::to_string(id) +
                               " of no writer: " + resNetId.GetString());
        return;
    }
    const StringValues s = stringOf(key);
    if (langModul != s.langModul || resId != s.resId || flags != s.flags ||
        noticeId != s.noticeId || resNetId.Compare(s.resNetId.c_str()) != 0) {
        found.damage.push_back("string " + std::to_string(id) + " (key " + std::to_string(key) +
                               ") has other fields than written");
    }
    keep(found, key, Added{kString, id, textId});
}

// Every phrase and every string-table entry, each listed and read through the API.
Found readEverything(CDbProject& db) {
    Found found;
    db.SetFilter(FilterNone);
    for (DWORD pair = 1; pair <= kPairs; ++pair) {
        CDWordArray ids;
        if (!db.EnumDictionary(ids, pair)) {
            found.damage.push_back("phrases of pair " + std::to_string(pair) + " unlisted");
        }
        for (int i = 0; i < ids.GetSize(); ++i) readPhrase(db, ids[i], found);
    }
    for (DWORD module = 1; module <= kLangModules; ++module) {
        CDWordArray ids;
        if (!db.DoEnumStringTable(ids, module)) {
            found.damage.push_back("strings of module " + std::to_string(module) + " unlisted");
        }
        for (int i = 0; i < ids.GetSize(); ++i) readString(db, ids[i], found);
    }
    return found;
}

// Each phrase's count is the number of entries that refer to it, both as stored and
// as the TextId index lists them; no entry refers to a phrase that is not there.
std::vector<std::string> countMismatches(CDbProject& db, const Found& found) {
    std::map<DWORD, DWORD> references;
    std::vector<std::string> wrong;
    for (const auto& [key, a] : found.records) {
        if (a.kind != kString) continue;
        if (!found.useCounts.count(a.textId)) wrong.push_back("dangling " + describe(key, a));
        ++references[a.textId];
    }
    for (const auto& [id, count] : found.useCounts) {
        DWORD listed = 0;
        if (!db.GetStringTableTextIdCount(&listed, id)) listed = ~0u;
        if (count != references[id] || listed != references[id]) {
            wrong.push_back("phrase " + std::to_string(id) + ": count " + std::to_string(count) +
                            ", entries " + std::to_string(references[id]) + ", listed " +
                            std::to_string(listed));
        }
    }
    return wrong;
}

// The file and its log as the kill left them, checked on a copy so the library
// still opens what the writer left.
std::string integrityAsKilled(const std::string& path, const std::string& scratch) {
    namespace fs = std::filesystem;
    const auto options = fs::copy_options::overwrite_existing;
    fs::remove(scratch + "-wal");
    fs::copy_file(path, scratch, options);
    if (fs::exists(path + "-wal")) fs::copy_file(path + "-wal", scratch + "-wal", options);
    return integrityOf(scratch);
}

struct KillPlan {
    int unitsBeforeKill = 0;
    int delayMicros = 0;
    bool atHold = false;
};

class KillTest : public ::testing::Test {
protected:
    void SetUp() override {
        CDbProject db;
        ASSERT_EQ(1, qvb::createForUse(db, dir().c_str(), kName)) << db.GetError();
        for (DWORD pair = 1; pair <= kPairs; ++pair) {
            ASSERT_EQ(1, db.AddSLang(pair, 1031 + pair, 1033, "Arial", 0)) << db.GetError();
        }
        ASSERT_EQ(1, db.CloseDb()) << db.GetError();
    }

    std::string dir() const { return dbtest::dirOf(tmp_); }
    std::string file() const { return dir() + kName + ".Prj"; }

    // Runs one writer and kills it as planned; false when the round could not run.
    bool runRound(const WriterPlan& plan, const KillPlan& kill, RoundLog& log);
    void verify(const RoundLog& log, Key parentKey, bool mustLoseFlying);
    void checkFlying(const RoundLog& log, const std::vector<Key>& flyingFound, const Found& found,
                     bool mustLoseFlying);
    void addAfterRecovery(CDbProject& db, Key key, std::map<Key, Added>& into);

    std::vector<DWORD> knownPhrases() const {
        std::vector<DWORD> ids;
        for (const auto& [key, a] : known_) {
            if (a.kind == kPhrase) ids.push_back(a.id);
        }
        return ids;
    }

    dbtest::TempDir tmp_;
    dbtest::TempDir scratch_;
    std::map<Key, Added> known_;  // every record that must be there
    int acknowledged_ = 0;
    int flyingTransactions_ = 0;
    int flyingTransactionsKept_ = 0;
    int flyingSinglesKept_ = 0;
};

bool KillTest::runRound(const WriterPlan& plan, const KillPlan& kill, RoundLog& log) {
    killtest::KillWhen when;
    when.ready = [&] { return kill.atHold ? log.holding : log.units >= kill.unitsBeforeKill; };
    when.delayMicros = kill.atHold ? 0 : kill.delayMicros;
    const killtest::Outcome out = killtest::runUntilKilled(
        [&](int reportFd, int holdFd) { runWriter(plan, reportFd, holdFd); },
        [&](const killtest::Frame& f) { log.take(f); }, when);
    EXPECT_EQ("", out.error) << "writer error " << log.failedRc << " at step " << log.failedStep;
    EXPECT_EQ("", log.protocolError);
    return out.error.empty() && log.protocolError.empty();
}

void KillTest::checkFlying(const RoundLog& log, const std::vector<Key>& flyingFound,
                           const Found& found, bool mustLoseFlying) {
    const std::string unit = (log.transaction ? "transaction " : "add ") +
                             std::to_string(log.first) + ".." + std::to_string(log.last);
    EXPECT_TRUE(flyingFound.empty() || flyingFound.size() == log.last - log.first + 1)
        << unit << " survived in part: " << flyingFound.size() << " records";
    if (mustLoseFlying) {
        EXPECT_TRUE(flyingFound.empty()) << unit << " was never committed but survived";
    }
    for (Key key : flyingFound) {
        const Added& there = found.records.at(key);
        auto told = log.pending.find(key);
        if (told == log.pending.end()) continue;  // a torn transaction, reported above
        Added expected = told->second;
        if (expected.id == 0) expected.id = there.id;  // a single add the kill left unanswered
        EXPECT_TRUE(expected == there) << "in flight: " << describe(key, there) << ", reported "
                                       << describe(key, told->second);
    }
    if (log.transaction) {
        ++flyingTransactions_;
        if (!flyingFound.empty()) ++flyingTransactionsKept_;
    } else if (!flyingFound.empty()) {
        ++flyingSinglesKept_;
    }
}

// The database goes on working after the recovery: a phrase and an entry using it.
void KillTest::addAfterRecovery(CDbProject& db, Key key, std::map<Key, Added>& into) {
    Added phrase{kPhrase, 0, 0};
    ASSERT_EQ(1, addRecord(db, key, kPhrase, 0, &phrase.id)) << db.GetError();
    Added entry{kString, 0, phrase.id};
    ASSERT_EQ(1, addRecord(db, key + 1, kString, phrase.id, &entry.id)) << db.GetError();
    DWORD count = 0;
    EXPECT_EQ(1, db.GetDictionary(phrase.id, nullptr, static_cast<CString*>(nullptr), nullptr,
                                  nullptr, nullptr, &count, nullptr, nullptr, nullptr));
    EXPECT_EQ(1u, count);
    into[key] = phrase;
    into[key + 1] = entry;
}

void KillTest::verify(const RoundLog& log, Key parentKey, bool mustLoseFlying) {
    EXPECT_EQ("ok", integrityAsKilled(file(), scratch_.file("copy.Prj"))) << "as the kill left it";

    CDbProject db;
    ASSERT_EQ(1, db.OpenDb(dir().c_str(), kName, 0)) << db.GetError();
    const Found found = readEverything(db);
    EXPECT_TRUE(found.damage.empty()) << "damaged or foreign records " << listOf(found.damage);

    std::map<Key, Added> expected = known_;
    expected.insert(log.acknowledged.begin(), log.acknowledged.end());
    std::vector<std::string> lost;
    for (const auto& [key, a] : expected) {
        auto it = found.records.find(key);
        if (it == found.records.end()) {
            lost.push_back(describe(key, a));
        } else if (!(it->second == a)) {
            lost.push_back(describe(key, a) + " found as " + describe(key, it->second));
        }
    }
    EXPECT_TRUE(lost.empty()) << "acknowledged records lost or changed " << listOf(lost);

    std::vector<Key> flyingFound;
    std::vector<std::string> strangers;
    for (const auto& [key, a] : found.records) {
        if (expected.count(key)) continue;
        if (log.inFlight && key >= log.first && key <= log.last) {
            flyingFound.push_back(key);
        } else {
            strangers.push_back(describe(key, a));
        }
    }
    EXPECT_TRUE(strangers.empty()) << "records never begun " << listOf(strangers);
    if (log.inFlight) checkFlying(log, flyingFound, found, mustLoseFlying);

    const std::vector<std::string> counts = countMismatches(db, found);
    EXPECT_TRUE(counts.empty()) << "use counts out of step " << listOf(counts);

    std::map<Key, Added> now = found.records;
    addAfterRecovery(db, parentKey, now);
    ASSERT_EQ(1, db.CloseDb()) << db.GetError();
    EXPECT_FALSE(std::filesystem::exists(file() + "-wal")) << "the close left its log";
    EXPECT_EQ("ok", integrityOf(file())) << "after the recovery";
    known_ = std::move(now);
    acknowledged_ += static_cast<int>(log.acknowledged.size());
}

std::uint32_t seedOf(std::uint32_t salt, int round) {
    return salt + static_cast<std::uint32_t>(round);
}

std::string roundTrace(int round, std::uint32_t seed, const KillPlan& kill,
                       const WriterPlan& plan) {
    std::ostringstream out;
    out << "round " << round << ", seed " << seed << ": ";
    if (kill.atHold) {
        out << "kill inside transaction " << plan.holdInTransaction;
    } else {
        out << "kill after " << kill.unitsBeforeKill << " acknowledgements and " << kill.delayMicros
            << " us";
    }
    if (plan.smallCache) out << ", small cache";
    return out.str();
}

// Kills at a random moment: in the open, inside a call, inside a transaction or its
// commit, in a checkpoint, or between a success and its report.
TEST_F(KillTest, KillAtRandomMomentsKeepsEveryAcknowledgedAdd) {
    constexpr int kRounds = 30;
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        const std::uint32_t seed = seedOf(0x4B110000u, round);
        std::mt19937 rng(seed);
        KillPlan kill;
        kill.unitsBeforeKill = static_cast<int>(rng() % 30);
        kill.delayMicros = static_cast<int>(rng() % 3000);
        WriterPlan plan;
        plan.dir = dir();
        plan.firstKey = static_cast<Key>(round + 1) * kKeysPerRound;
        plan.seed = seed;
        plan.smallCache = round % 2 == 1;
        plan.phrases = knownPhrases();
        SCOPED_TRACE(roundTrace(round, seed, kill, plan));
        RoundLog log;
        if (!runRound(plan, kill, log)) break;
        verify(log, plan.firstKey + kParentKeys, false);
    }
    std::printf(
        "[ kill     ] %zu records, %d acknowledged by writers; in flight at the kill: %d "
        "transactions (%d kept), %d single adds kept\n",
        known_.size(), acknowledged_, flyingTransactions_, flyingTransactionsKept_,
        flyingSinglesKept_);
}

// Kills while a transaction is written but not committed: none of it may survive,
// everything acknowledged before it must.
TEST_F(KillTest, KillInsideTransactionLosesTheWholeTransaction) {
    constexpr int kRounds = 6;
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        const std::uint32_t seed = seedOf(0x7EA50000u, round);
        KillPlan kill;
        kill.atHold = true;
        WriterPlan plan;
        plan.dir = dir();
        plan.firstKey = static_cast<Key>(round + 1) * kKeysPerRound;
        plan.seed = seed;
        plan.smallCache = round % 2 == 0;
        plan.holdInTransaction = 1 + round % 3;
        plan.phrases = knownPhrases();
        SCOPED_TRACE(roundTrace(round, seed, kill, plan));
        RoundLog log;
        if (!runRound(plan, kill, log)) break;
        ASSERT_TRUE(log.holding && log.inFlight) << "the writer never reached its transaction";
        verify(log, plan.firstKey + kParentKeys, true);
    }
}

}  // namespace
