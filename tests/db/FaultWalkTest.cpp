// Storage faults under public operations. Each operation is first run without a fault
// to learn its I/O points and the state it leaves; then, from the same prepared file,
// the n-th read, write, sync or truncation fails. Whatever the operation answers, a
// new object reopening the file must find either the state before it or the state
// after it (never a mix), every phrase's use count must match the records using it,
// and the file must pass SQLite's integrity check.
#include <sqlite3.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "core/LibraryErrors.h"
#include "isam/Container.h"
#include "isam/FaultInjection.h"
#include "isam/IsamErrors.h"
#include "tests/db/DbTestSupport.h"
#include "tests/db/RawFile.h"

namespace {

using dbtest::integrityOf;

using isam::fault::Counts;
using isam::fault::Failure;
using isam::fault::Fault;
using isam::fault::Kind;

constexpr DWORD kPair = 1;
constexpr DWORD kModule = 7;
constexpr std::uint64_t kPointsPerKind = 16;

// ---- What a database holds, as text that compares and prints -----------------------------

using Snapshot = std::map<std::string, std::string>;

std::string joined(std::initializer_list<std::string> parts) {
    std::string out;
    for (const std::string& part : parts) out += part + "|";
    return out;
}

std::vector<DWORD> idsOf(const CDWordArray& ids) {
    std::vector<DWORD> out;
    for (int i = 0; i < ids.GetSize(); ++i) out.push_back(ids[i]);
    return out;
}

void readPhrases(CDbProject& db, Snapshot* s) {
    CDWordArray ids;
    if (!db.EnumDictionary(ids, kPair)) (*s)["phrases"] = "error " + std::to_string(db.GetError());
    for (DWORD id : idsOf(ids)) {
        DWORD pair = 0, flags = 0, count = 0;
        CString source, filtered, translation;
        WORD maxChars = 0;
        int readOnly = 0, used = 0, translated = 0, standard = 0;
        const int read = db.GetDictionary(id, &pair, &source, &filtered, &translation, &maxChars,
                                          &readOnly, &used, &translated, &standard, &flags) &&
                         db.GetDictionary(id, nullptr, static_cast<CString*>(nullptr), nullptr, nullptr,
                                          nullptr, &count, nullptr, nullptr, nullptr);
        (*s)["phrase " + std::to_string(id)] =
            read ? joined({std::to_string(pair), source.GetString(), filtered.GetString(),
                           translation.GetString(), std::to_string(translated), std::to_string(flags),
                           "count " + std::to_string(count)})
                 : "error " + std::to_string(db.GetError());
    }
}

void readStringTables(CDbProject& db, Snapshot* s) {
    CDWordArray ids;
    if (!db.DoEnumStringTable(ids, kModule)) (*s)["strings"] = "error " + std::to_string(db.GetError());
    for (DWORD id : idsOf(ids)) {
        DWORD module = 0, text = 0, flags = 0, notice = 0;
        WORD resId = 0;
        CString net;
        (*s)["string " + std::to_string(id)] =
            db.GetStringTable(id, &module, &text, &resId, &flags, &notice, net)
                ? joined({std::to_string(module), "text " + std::to_string(text), std::to_string(resId),
                          std::to_string(flags), std::to_string(notice), net.GetString()})
                : "error " + std::to_string(db.GetError());
    }
}

void readExceptionsAndNotices(CDbProject& db, Snapshot* s) {
    CDWordArray exceptions, notices;
    if (!db.EnumExceptions(exceptions) || !db.EnumNotice(notices)) {
        (*s)["others"] = "error " + std::to_string(db.GetError());
    }
    for (DWORD id : idsOf(exceptions)) {
        DWORD text = 0, kind = 0, element = 0, flags = 0;
        db.GetException(id, &text, &kind, &element, &flags);
        (*s)["exception " + std::to_string(id)] =
            joined({std::to_string(text), std::to_string(kind), std::to_string(element)});
    }
    for (DWORD id : idsOf(notices)) {
        CString text;
        db.GetNotice(id, text);
        (*s)["notice " + std::to_string(id)] = text.GetString();
    }
}

Snapshot snapshotOf(CDbProject& db) {
    Snapshot s;
    const FILTER saved = db.GetFilter();
    db.SetFilter(FilterNone);
    readPhrases(db, &s);
    readStringTables(db, &s);
    readExceptionsAndNotices(db, &s);
    db.SetFilter(saved);
    return s;
}

// Every phrase is counted once for each string-table entry that uses it.
std::string countMismatches(const Snapshot& s) {
    std::map<std::string, int> uses;
    for (const auto& [key, value] : s) {
        if (key.rfind("string ", 0) != 0) continue;
        const std::size_t at = value.find("text ");
        if (at != std::string::npos) ++uses[value.substr(at + 5, value.find('|', at) - at - 5)];
    }
    std::string out;
    for (const auto& [key, value] : s) {
        if (key.rfind("phrase ", 0) != 0) continue;
        const std::string id = key.substr(7);
        const std::string counted = "count " + std::to_string(uses[id]) + "|";
        if (value.size() < counted.size() || value.compare(value.size() - counted.size(), counted.size(), counted)) {
            out += key + " is " + value + " but used " + std::to_string(uses[id]) + " times; ";
        }
    }
    return out;
}

std::string describe(const Snapshot& s) {
    std::ostringstream out;
    for (const auto& [key, value] : s) out << "  " << key << ": " << value << "\n";
    return out.str();
}

// ---- The file ---------------------------------------------------------------------------------

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void restore(const std::string& path, const std::string& bytes) {
    std::remove((path + "-wal").c_str());
    std::remove((path + "-shm").c_str());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// ---- The operations walked --------------------------------------------------------------------

// The prepared database: three phrases, three string-table entries (the second with
// a notice and an exception bound to it).
struct Base {
    DWORD open = 0, save = 0, close = 0;
    DWORD first = 0, second = 0;
};

// Whether the operation runs on the open database, opens it or closes it.
enum class Shape { OnOpen, Opens, Closes };

struct Scenario {
    const char* name;
    Shape shape;
    std::function<int(CDbProject&, const Base&)> setup;
    std::function<int(CDbProject&, const Base&)> operation;
};

int none(CDbProject&, const Base&) { return 1; }

int addString(CDbProject& db, DWORD text, WORD resId, const char* net) {
    DWORD id = 0;
    CString netId = net;
    return db.AddStringTable(&id, kModule, text, resId, 0, 0, netId);
}

int addPhrase(CDbProject& db, const char* text) {
    DWORD id = 0;
    return db.AddDictionary(&id, kPair, text, text, "", 0, 0, 0, 0, 0);
}

int inTransaction(CDbProject& db, const Base& b) {
    if (!db.BeginTransaction()) return 0;
    DWORD help = 0;
    CString net = "IDS_T";
    int ok = db.AddDictionary(&help, kPair, "Help", "Help", "", 0, 0, 0, 0, 0);
    DWORD id = 0;
    ok &= db.AddStringTable(&id, kModule, help, 300, 0, 0, net);
    ok &= db.UpdateStringTable(b.first, kModule, b.close, 100, 0, 0, net);
    ok &= addPhrase(db, "Quit");
    return db.CommitTransaction() && ok;
}

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> all = {
        {"AddDictionary", Shape::OnOpen, none, [](CDbProject& db, const Base&) { return addPhrase(db, "Print"); }},
        {"AddStringTable", Shape::OnOpen, none,
         [](CDbProject& db, const Base& b) { return addString(db, b.close, 200, "IDS_NEW"); }},
        {"UpdateStringTableTextId", Shape::OnOpen, none,
         [](CDbProject& db, const Base& b) {
             CString net = "IDS_MOVED";
             return db.UpdateStringTable(b.first, kModule, b.save, 100, 0, 0, net);
         }},
        {"DeleteStringTableCascade", Shape::OnOpen, none,
         [](CDbProject& db, const Base& b) { return db.DeleteStringTable(b.second); }},
        {"ApplicationTransaction", Shape::OnOpen, none, inTransaction},
        {"RefreshNotTranslatedFilter", Shape::OnOpen, none,
         [](CDbProject& db, const Base&) { return db.RefreshNotTranslatedFilter(kPair); }},
        {"OpenDb", Shape::Opens, none, nullptr},
        {"CloseDbAfterAnAdd", Shape::Closes,
         [](CDbProject& db, const Base& b) { return addString(db, b.save, 400, "IDS_LAST"); },
         [](CDbProject& db, const Base&) { return db.CloseDb(); }},
    };
    return all;
}

// ---- The walk ---------------------------------------------------------------------------------

// n from 1 to count: all of them when few, else evenly spread with the first and last.
std::vector<std::uint64_t> sampled(std::uint64_t count, std::uint64_t most) {
    std::vector<std::uint64_t> out;
    if (count <= most) {
        for (std::uint64_t n = 1; n <= count; ++n) out.push_back(n);
        return out;
    }
    for (std::uint64_t i = 0; i < most; ++i) out.push_back(1 + i * (count - 1) / (most - 1));
    return out;
}

std::string faultName(const Fault& f) {
    static const char* kinds[] = {"read", "write", "sync", "truncate", "any"};
    return std::string(f.failure == Failure::DiskFull ? "disk full at " : "failing ") +
           kinds[static_cast<int>(f.kind)] + " " + std::to_string(f.nth);
}

class FaultWalk : public ::testing::TestWithParam<Scenario> {
protected:
    void SetUp() override {
        ASSERT_TRUE(isam::fault::install());
        // A cache of a few pages: the operations then read and spill pages as they go.
        savedCache_ = std::exchange(isam::storageTuning().cacheKiB, 40);
        ASSERT_EQ(1, qvb::createForUse(prepared_, dir().c_str(), "test")) << prepared_.GetError();
        prepare(prepared_);
        ASSERT_EQ(1, prepared_.CloseDb());
        golden_ = fileBytes(path());
    }

    void TearDown() override { isam::storageTuning().cacheKiB = savedCache_; }

    std::string dir() const { return dbtest::dirOf(tmp_); }
    std::string path() const { return dir() + "test.Prj"; }

    void prepare(CDbProject& db) {
        ASSERT_EQ(1, db.AddSLang(kPair, 1031, 1033, "Arial", 0)) << db.GetError();
        ASSERT_EQ(1, db.AddDictionary(&base_.open, kPair, "Open", "Open", "Offnen", 0, 0, 1, 0, 0));
        ASSERT_EQ(1, db.AddDictionary(&base_.save, kPair, "Save", "Save", "", 0, 0, 0, 0, 0));
        ASSERT_EQ(1, db.AddDictionary(&base_.close, kPair, "Close", "Close", "", 0, 0, 0, 0, 0));
        DWORD notice = 0, exception = 0;
        ASSERT_EQ(1, db.AddNotice(&notice, "check the length"));
        CString net = "IDS_OPEN";
        ASSERT_EQ(1, db.AddStringTable(&base_.first, kModule, base_.open, 100, 0, 0, net));
        net = "IDS_SAVE";
        ASSERT_EQ(1, db.AddStringTable(&base_.second, kModule, base_.save, 101, 0, notice, net));
        ASSERT_EQ(1, addString(db, base_.open, 102, "IDS_OPEN2"));
        ASSERT_EQ(1, db.AddException(&exception, base_.save, RES_STRINGTABLE, base_.second, 0));
    }

    // Opens the restored file and runs the scenario's setup.
    void start(CDbProject& db, const Scenario& s) {
        restore(path(), golden_);
        if (s.shape == Shape::Opens) return;
        ASSERT_EQ(1, db.OpenDb(dir().c_str(), "test", 0)) << db.GetError();
        ASSERT_EQ(1, s.setup(db, base_)) << db.GetError();
    }

    int operate(CDbProject& db, const Scenario& s) {
        if (s.shape == Shape::Opens) return db.OpenDb(dir().c_str(), "test", 0);
        return s.operation(db, base_);
    }

    Snapshot stored() {
        CDbProject db;
        Snapshot s;
        const int opened = db.OpenDb(dir().c_str(), "test", 0);
        if (!opened) s["open"] = "error " + std::to_string(db.GetError());
        if (opened) s = snapshotOf(db);
        if (opened && !db.CloseDb()) s["close"] = "error " + std::to_string(db.GetError());
        return s;
    }

    // Learns the states before and after the operation and how much I/O it does.
    Counts reference(const Scenario& s) {
        {
            CDbProject db;
            start(db, s);
            if (s.shape != Shape::Opens) {
                EXPECT_EQ(1, db.CloseDb());
            }
        }
        before_ = stored();
        CDbProject db;
        start(db, s);
        isam::fault::resetCounts();
        EXPECT_EQ(1, operate(db, s)) << db.GetError();
        const Counts counts = isam::fault::counts();
        db.CloseDb();
        after_ = stored();
        EXPECT_EQ("", countMismatches(before_));
        EXPECT_EQ("", countMismatches(after_));
        return counts;
    }

    // The open's whole-file check reports a page it could not read as damage.
    static void expectStorageError(const Scenario& s, const Fault& fault, LONG error) {
        if (s.shape == Shape::Opens && fault.kind == Kind::Read && error == isam::ISAM_DAMAGED) return;
        EXPECT_TRUE(error == isam::ISAM_IO_ERROR || error == isam::ISAM_DISK_FULL) << error;
    }

    void runWithFault(const Scenario& s, const Fault& fault) {
        SCOPED_TRACE(faultName(fault));
        Snapshot live;
        bool acknowledged = false;
        {
            CDbProject db;
            start(db, s);
            isam::fault::arm(fault);
            acknowledged = operate(db, s) == 1;
            const LONG error = db.GetError();
            isam::fault::disarm();
            EXPECT_TRUE(isam::fault::fired());
            if (!acknowledged) expectStorageError(s, fault, error);
            // Once the fault is lifted the same object works on, and sees what the file holds.
            bool open = s.shape == Shape::OnOpen || acknowledged;
            if (s.shape == Shape::Opens && !acknowledged) {
                open = db.OpenDb(dir().c_str(), "test", 0) == 1;
                EXPECT_TRUE(open) << "a failed open leaves the object unable to open: " << db.GetError();
            }
            if (open && s.shape != Shape::Closes) live = snapshotOf(db);
            // Every run starts from a fresh open, where no filter is up to date.
            if (!acknowledged) {
                EXPECT_EQ(0, db.IsFilterValid(FilterNotTranslated)) << "a failed refresh counts as done";
            }
            db.CloseDb();
        }
        const Snapshot found = stored();
        EXPECT_EQ("ok", integrityOf(path()));
        EXPECT_EQ("", countMismatches(found));
        if (acknowledged) {
            EXPECT_EQ(describe(after_), describe(found));
        } else if (found != before_) {
            EXPECT_EQ(describe(after_), describe(found)) << "neither before nor after";
        }
        if (!live.empty()) {
            EXPECT_EQ(describe(found), describe(live)) << "the object's own view";
        }
    }

    int savedCache_ = 0;
    CDbProject prepared_;
    dbtest::TempDir tmp_;
    std::string golden_;
    Base base_;
    Snapshot before_, after_;
};

TEST_P(FaultWalk, EveryIoPointFailsCleanly) {
    const Scenario& s = GetParam();
    const Counts counts = reference(s);
    ASSERT_FALSE(before_.empty());
    for (Kind kind : {Kind::Read, Kind::Write, Kind::Sync, Kind::Truncate}) {
        for (std::uint64_t n : sampled(counts.of(kind), kPointsPerKind)) {
            runWithFault(s, Fault{kind, n, Failure::IoError, false});
            if (HasFailure()) return;
        }
    }
    for (std::uint64_t n : sampled(counts.writes, 3)) {
        runWithFault(s, Fault{Kind::Write, n, Failure::DiskFull, true});
        if (HasFailure()) return;
    }
}

// A storage failure inside a batch fails the batch as a whole: SQLite may already have
// rolled back the work before it, which must then not be followed by a partial commit.
class BatchFailure : public isamtest::EngineTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(isam::fault::install());
        // A cache of a few pages, so that a large record is written out while it is added.
        savedCache_ = std::exchange(isam::storageTuning().cacheKiB, 40);
        EngineTest::SetUp();
        add(1, 0, 0);
    }

    void TearDown() override {
        EngineTest::TearDown();
        isam::storageTuning().cacheKiB = savedCache_;
    }

    int savedCache_ = 0;

    int failingAdd(std::uint32_t id) {
        isam::fault::arm(Fault{Kind::Write, 1, Failure::IoError, false});
        const isamtest::Record record = isamtest::sampleRecord(id, 0, 0, "", std::string(200000, 'x'));
        const int rc = isam::addRecord(data_, record.data(), record.size(), nullptr);
        isam::fault::disarm();
        EXPECT_TRUE(isam::fault::fired());
        return rc;
    }

    std::vector<std::uint32_t> ids() { return isamtest::walkIds(data_, isamtest::indexOf(data_, 1)); }
};

TEST_F(BatchFailure, LaterCallsAreRefusedAndTheEndAnswersTheFailure) {
    ASSERT_EQ(isam::ISAM_OK, isam::beginBatch());
    EXPECT_EQ(isam::ISAM_IO_ERROR, failingAdd(2));
    const isamtest::Record next = isamtest::sampleRecord(3, 0, 0);
    EXPECT_EQ(isam::ISAM_IO_ERROR, isam::addRecord(data_, next.data(), next.size(), nullptr));
    EXPECT_EQ(isam::ISAM_IO_ERROR, isam::endBatch());
    EXPECT_EQ(0, isam::batchDepth());
    add(4, 0, 0);
    reopen();
    EXPECT_EQ((std::vector<std::uint32_t>{1, 4}), ids());
}

TEST_F(BatchFailure, DiscardingTheBatchClearsTheFailure) {
    ASSERT_EQ(isam::ISAM_OK, isam::beginBatch());
    EXPECT_EQ(isam::ISAM_IO_ERROR, failingAdd(2));
    ASSERT_EQ(isam::ISAM_OK, isam::abortBatch());
    add(5, 0, 0);
    ASSERT_EQ(isam::ISAM_OK, isam::endBatch());
    reopen();
    EXPECT_EQ((std::vector<std::uint32_t>{1, 5}), ids());
}

// A key-prefix count that the fetch after it disagrees with is reported, not trusted.
class PrefixMismatch : public dbtest::DbTest<CDbProject> {};

TEST_F(PrefixMismatch, AnEnumerationWhoseFetchFindsFewerThanItsCountAnswersMinus13) {
    ASSERT_EQ(1, db_.AddSLang(kPair, 1031, 1033, "Arial", 0));
    ASSERT_EQ(1, addPhrase(db_, "Open"));
    ASSERT_EQ(1, addString(db_, 1, 100, "A"));
    ASSERT_EQ(1, addString(db_, 1, 101, "B"));
    CDWordArray ids;
    isam::fault::skewNextPrefixCount(1);
    EXPECT_EQ(0, db_.EnumStringTable(ids, kModule, 1));
    EXPECT_EQ(QVB_FETCH_MISMATCH, db_.GetError());
    // The skew is spent: the same list is whole again.
    ids.RemoveAll();
    EXPECT_EQ(1, db_.EnumStringTable(ids, kModule, 1));
    EXPECT_EQ((std::vector<DWORD>{1, 2}), idsOf(ids));
}

INSTANTIATE_TEST_SUITE_P(Operations, FaultWalk, ::testing::ValuesIn(scenarios()),
                         [](const ::testing::TestParamInfo<Scenario>& info) { return std::string(info.param.name); });

}  // namespace
