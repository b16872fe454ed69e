// Times the same keyed-record work through the ISAM engine and through hand-written
// SQLite statements on the same table layout and storage settings. The engine is a
// layer over SQLite, so the hand-written side is the floor it is measured against.
//
//   isam_vs_sqlite [--records N] [--commits N] [--tuning PAGE,CACHE_KIB,CHECKPOINT]
//                  [--settings | --settings-only] [--rounds N] [--dir DIR]
//
// --records   records loaded in one batch (default 200000); the other counts follow it
// --commits   records added afterwards, each its own commit (default records / 10)
// --tuning    storage settings for the cases instead of the engine's (both sides use them)
// --settings  also time single commits under several page, cache and checkpoint sizes
// --rounds    repetitions of that sweep, each setting reported by its median (default 1)
// --dir       where the scratch directory is made (default /tmp); it is removed at the end
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchSupport.h"
#include "isam/Container.h"
#include "isam/Isam.h"
#include "isam/Keys.h"
#include "isam/RecordSeal.h"

namespace {

using bench::fail;
using bench::ScratchDir;
using bench::Slice;
using bench::Stmt;

// ---- Errors ----------------------------------------------------------------------------

void engineOk(int rc, const char* what) {
    if (rc != isam::ISAM_OK) {
        fail(std::string(what) + ": engine error " + std::to_string(rc) + " (" +
             isam::errorText(rc) + ")");
    }
}

// ---- Records ---------------------------------------------------------------------------

// Fixed part: Id (unique, I1), Group (I2, ~100 records each), Value. Variable part:
// one text of 70 to 80 bytes whose first 20 bytes are I3 (~20 records each).
constexpr std::uint32_t kFixedLength = 12;
constexpr std::uint32_t kTextLimit = 100;
constexpr std::uint16_t kTextKeyLength = 20;
constexpr std::uint32_t kRecordsPerGroup = 100;
constexpr std::uint32_t kRecordsPerTextKey = 20;
constexpr std::size_t kIdAt = 0;
constexpr std::size_t kGroupAt = 4;
constexpr std::size_t kValueAt = 8;

std::uint32_t getU32(const void* p) {
    const auto* b = static_cast<const unsigned char*>(p);
    return b[0] | b[1] << 8 | b[2] << 16 | static_cast<std::uint32_t>(b[3]) << 24;
}

void putU32(void* p, std::uint32_t v) {
    auto* b = static_cast<unsigned char*>(p);
    for (int i = 0; i < 4; ++i) b[i] = static_cast<unsigned char>(v >> (8 * i));
}

// Integer key segments are stored big-endian so that byte order is numeric order.
void putBigEndian(unsigned char* p, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (24 - 8 * i));
}

struct Dataset {
    std::vector<std::string> records;  // in insertion order
    std::vector<std::size_t> byId;     // Id -> index into records
    std::uint32_t groups = 0;
};

Dataset makeDataset(std::size_t count, std::uint32_t seed) {
    static const char* const kWords[] = {
        "open",   "the",    "file",    "dialog", "save",   "changes",  "before",     "closing",
        "window", "cancel", "project", "import", "export", "text",     "column",     "resource",
        "string", "menu",   "item",    "label",  "check",  "spelling", "translated", "source"};
    std::mt19937 random(seed);
    Dataset data;
    data.groups = static_cast<std::uint32_t>(std::max<std::size_t>(1, count / kRecordsPerGroup));
    const auto textKeys =
        static_cast<std::uint32_t>(std::max<std::size_t>(1, count / kRecordsPerTextKey));
    std::vector<std::uint32_t> ids(count);
    std::iota(ids.begin(), ids.end(), 1u);
    std::shuffle(ids.begin(), ids.end(), random);
    data.byId.assign(count + 1, 0);
    data.records.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::string record(kFixedLength, '\0');
        putU32(&record[kIdAt], ids[i]);
        putU32(&record[kGroupAt], static_cast<std::uint32_t>(random() % data.groups));
        putU32(&record[kValueAt], static_cast<std::uint32_t>(random()));
        char head[32];  // 20 bytes: the I3 key
        std::snprintf(head, sizeof head, "Dialog%06u.Caption",
                      static_cast<unsigned>(random() % textKeys % 1000000));
        std::string text(head);
        const std::size_t length = 70 + random() % 11;
        while (text.size() < length) {
            text += ' ';
            text += kWords[random() % (sizeof kWords / sizeof kWords[0])];
        }
        text.resize(length);
        record += text;
        record += '\0';
        data.byId[ids[i]] = i;
        data.records.push_back(std::move(record));
    }
    return data;
}

// ---- The engine side ---------------------------------------------------------------------

constexpr const char* kInstance = "IsamVsSqlite";
constexpr std::uint16_t kContainerMode = 582;

isam::FileDefinition recordsDefinition(const std::string& container) {
    isam::FileDefinition def;
    def.name = container + "!Records";
    def.recordLength = kFixedLength;
    def.variableFields = {isam::VariableField{false, kTextLimit}};
    const isam::Segment id{kIdAt, 4, isam::kSegmentFixed};
    const isam::Segment group{kGroupAt, 4, isam::kSegmentFixed};
    const isam::Segment text{0, kTextKeyLength, isam::kSegmentVariableText};
    def.indexes = {{container + "!RecordsI1.Qvi", 4, false, 64, 1024, {id}},
                   {container + "!RecordsI2.Qvi", 8, true, 64, 1024, {group}},
                   {container + "!RecordsI3.Qvi", 24, true, 64, 1024, {text}}};
    return def;
}

class EngineSide {
public:
    ~EngineSide() {
        if (open_) isam::closeContainer();
    }

    void create(const std::string& path) {
        isam::FileNumber container = isam::kNoFile;
        engineOk(isam::createContainer(path.c_str(), kContainerMode, 1024, &container),
                 "createContainer");
        open_ = true;
        engineOk(isam::createFile(recordsDefinition("bench"), &data_), "createFile");
    }

    void open(const std::string& path) {
        isam::FileNumber container = isam::kNoFile;
        engineOk(isam::openContainer(path.c_str(), kContainerMode, &container), "openContainer");
        open_ = true;
        engineOk(isam::openFile(recordsDefinition("bench"), &data_), "openFile");
    }

    void close() {
        open_ = false;
        engineOk(isam::closeContainer(), "closeContainer");
    }

    isam::FileNumber data() const { return data_; }
    isam::FileNumber index(int n) const { return static_cast<isam::FileNumber>(data_ + n); }

private:
    bool open_ = false;
    isam::FileNumber data_ = isam::kNoFile;
};

// ---- The hand-written side ---------------------------------------------------------------

// The same stored layout as the engine's: records with their checksum behind them,
// text keys in the compact form (both made by the engine's own functions).
struct RawKeys {
    unsigned char id[4];
    unsigned char group[4];
    std::string text;
};

RawKeys keysOf(const std::string& record) {
    RawKeys k;
    putBigEndian(k.id, getU32(&record[kIdAt]));
    putBigEndian(k.group, getU32(&record[kGroupAt]));
    const char* text = record.data() + kFixedLength;
    const std::vector<isam::FieldSpan> fields{{kFixedLength, std::strlen(text)}};
    static const isam::IndexDefinition textIndex = recordsDefinition("bench").indexes[2];
    k.text = isam::buildKey(textIndex,
                            reinterpret_cast<const unsigned char*>(record.data()), fields,
                            isam::KeyForm::Compact);
    return k;
}

std::string stored(const std::string& record) {
    std::string bytes;
    isam::seal(record.data(), record.size(), &bytes);
    return bytes;
}

class RawSide {
public:
    ~RawSide() { close(); }

    void open(const std::string& path, bool create) {
        db_.open(path, create);
        if (create) {
            exec(
                "BEGIN;"
                "CREATE TABLE \"Records\"(pos INTEGER PRIMARY KEY, rec BLOB NOT NULL, k1, k2, k3);"
                "CREATE UNIQUE INDEX \"RecordsI1.Qvi\" ON \"Records\"(k1);"
                "CREATE INDEX \"RecordsI2.Qvi\" ON \"Records\"(k2);"
                "CREATE INDEX \"RecordsI3.Qvi\" ON \"Records\"(k3);"
                "COMMIT");
        }
        insert = db_.prepare("INSERT INTO \"Records\"(rec, k1, k2, k3) VALUES(?1, ?2, ?3, ?4)");
        byId = db_.prepareIndexed("SELECT rec FROM \"Records\" WHERE k1 = ?1");
        byGroup = db_.prepareIndexed("SELECT rec FROM \"Records\" WHERE k2 = ?1 ORDER BY k2, pos");
        walk = db_.prepareIndexed("SELECT rec FROM \"Records\" ORDER BY k3, pos");
        regroup = db_.prepareIndexed("UPDATE \"Records\" SET rec = ?1, k2 = ?2 WHERE k1 = ?3");
    }

    void close() {
        insert = Stmt();
        byId = Stmt();
        byGroup = Stmt();
        walk = Stmt();
        regroup = Stmt();
        db_.close();
    }

    void exec(const char* sql) { db_.exec(sql); }

    void add(const std::string& record) {
        const RawKeys k = keysOf(record);
        const std::string bytes = stored(record);
        insert.blob(1, bytes.data(), bytes.size());
        insert.blob(2, k.id, sizeof k.id);
        insert.blob(3, k.group, sizeof k.group);
        insert.blob(4, k.text.data(), k.text.size());
        insert.step();
        insert.reset();
    }

    Stmt insert, byId, byGroup, walk, regroup;

private:
    bench::Connection db_;
};

// ---- Scratch files -----------------------------------------------------------------------

// So that the next case starts from an empty file.
void removeDatabase(const std::string& path) {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        ::unlink((path + suffix).c_str());
    }
}

double megabytes(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? st.st_size / 1048576.0 : 0.0;
}

// ---- Cases -------------------------------------------------------------------------------

struct Result {
    bench::Timing time;
    std::uint64_t digest = 0;  // what the work saw, to show that both sides did the same
};

struct Row {
    Row(const char* name, std::uint64_t count, bool compared)
        : name(name), count(count), compared(compared) {}

    const char* name;
    std::uint64_t count;
    bool compared;  // both sides return a digest of what they read
    Result engine;
    Result raw;
};

std::uint64_t mix(std::uint64_t digest, std::uint64_t value) {
    return (digest ^ value) * 1099511628211ull;
}

// Open transactions and cursors stay open from one slice to the next.
constexpr std::size_t kSlices = 40;

template <typename EngineSlice, typename RawSlice>
void race(Row* row, EngineSlice engineSlice, RawSlice rawSlice) {
    bench::race(
        row->count, kSlices, [](auto body) { return bench::timed(body); }, &row->engine.time,
        engineSlice, &row->raw.time, rawSlice);
}

void copyColumn(Stmt& st, unsigned char* buffer, std::size_t capacity) {
    const auto n = static_cast<std::size_t>(sqlite3_column_bytes(st.get(), 0));
    std::memcpy(buffer, sqlite3_column_blob(st.get(), 0), std::min(n, capacity));
}

Row addEach(EngineSide& engine, RawSide& raw, const Dataset& data, std::size_t from,
            std::size_t count) {
    Row row("1 add, each its own commit", count, false);
    race(
        &row,
        [&](const Slice& slice) {
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                const std::string& rec = data.records[from + i];
                engineOk(isam::addRecord(engine.data(), rec.data(), rec.size(), nullptr),
                         "addRecord");
            }
        },
        [&](const Slice& slice) {
            for (std::size_t i = slice.begin; i < slice.end; ++i) raw.add(data.records[from + i]);
        });
    return row;
}

Row addBatch(EngineSide& engine, RawSide& raw, const Dataset& data, std::size_t count) {
    Row row("2 add in one batch", count, false);
    race(
        &row,
        [&](const Slice& slice) {
            if (slice.first) engineOk(isam::beginBatch(), "beginBatch");
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                const std::string& rec = data.records[i];
                engineOk(isam::addRecord(engine.data(), rec.data(), rec.size(), nullptr),
                         "addRecord");
            }
            if (slice.last) engineOk(isam::endBatch(), "endBatch");
        },
        [&](const Slice& slice) {
            if (slice.first) raw.exec("BEGIN");
            for (std::size_t i = slice.begin; i < slice.end; ++i) raw.add(data.records[i]);
            if (slice.last) raw.exec("COMMIT");
        });
    return row;
}

Row find(EngineSide& engine, RawSide& raw, const std::vector<std::uint32_t>& ids) {
    Row row("3 find on I1 + read", ids.size(), true);
    unsigned char buffer[256];
    race(
        &row,
        [&](const Slice& slice) {
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                unsigned char key[4];
                putU32(key, ids[i]);
                isam::Position position = 0;
                std::size_t length = 0;
                engineOk(isam::findEqual(engine.index(1), key, sizeof key, &position), "findEqual");
                engineOk(isam::readRecord(engine.data(), position, buffer, sizeof buffer, &length),
                         "readRecord");
                row.engine.digest = mix(row.engine.digest, getU32(buffer + kValueAt));
            }
        },
        [&](const Slice& slice) {
            if (slice.first) raw.exec("BEGIN");
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                unsigned char key[4];
                putBigEndian(key, ids[i]);
                raw.byId.blob(1, key, sizeof key);
                if (!raw.byId.step()) fail("hand-written find: no record");
                copyColumn(raw.byId, buffer, sizeof buffer);
                raw.byId.reset();
                row.raw.digest = mix(row.raw.digest, getU32(buffer + kValueAt));
            }
            if (slice.last) raw.exec("COMMIT");
        });
    return row;
}

Row prefix(EngineSide& engine, RawSide& raw, const std::vector<std::uint32_t>& groups) {
    Row row("4 prefix scan + read ~100 on I2", groups.size(), true);
    unsigned char buffer[256];
    std::vector<isam::Position> positions;
    race(
        &row,
        [&](const Slice& slice) {
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                unsigned char key[4];
                putU32(key, groups[i]);
                std::uint32_t count = 0;
                engineOk(isam::scanByPrefix(engine.index(2), key, sizeof key, &count, &positions),
                         "scanByPrefix");
                if (count == 0) continue;
                row.engine.digest = mix(row.engine.digest, count);
                for (std::uint32_t k = 0; k < count; ++k) {
                    std::size_t length = 0;
                    engineOk(isam::readRecord(engine.data(), positions[k], buffer, sizeof buffer,
                                              &length),
                             "readRecord");
                    row.engine.digest = mix(row.engine.digest, getU32(buffer + kIdAt));
                }
            }
        },
        [&](const Slice& slice) {
            if (slice.first) raw.exec("BEGIN");
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                unsigned char key[4];
                putBigEndian(key, groups[i]);
                // One query; the count is the number of rows it returns.
                std::vector<std::uint32_t> ids;
                raw.byGroup.blob(1, key, sizeof key);
                while (raw.byGroup.step()) {
                    copyColumn(raw.byGroup, buffer, sizeof buffer);
                    ids.push_back(getU32(buffer + kIdAt));
                }
                raw.byGroup.reset();
                if (ids.empty()) continue;
                row.raw.digest = mix(row.raw.digest, static_cast<std::uint64_t>(ids.size()));
                for (std::uint32_t id : ids) row.raw.digest = mix(row.raw.digest, id);
            }
            if (slice.last) raw.exec("COMMIT");
        });
    return row;
}

// Each slice walks on from where the side's previous slice stopped.
Row walk(EngineSide& engine, RawSide& raw, std::size_t total) {
    Row row("5 ordered walk on I3 + read", total, true);
    unsigned char buffer[256];
    std::size_t engineWalked = 0;
    std::size_t rawWalked = 0;
    race(
        &row,
        [&](const Slice& slice) {
            // The last slice goes on to the end, to see that there is nothing more.
            const std::size_t end = slice.last ? total + 1 : slice.end;
            while (engineWalked < end) {
                isam::Position position = 0;
                const int rc = engineWalked == 0 ? isam::firstRecord(engine.index(3), &position)
                                                 : isam::nextRecord(engine.index(3), &position);
                if (rc == isam::ISAM_NO_RECORD) break;
                engineOk(rc, "nextRecord");
                std::size_t length = 0;
                engineOk(isam::readRecord(engine.data(), position, buffer, sizeof buffer, &length),
                         "readRecord");
                row.engine.digest = mix(row.engine.digest, getU32(buffer + kIdAt));
                ++engineWalked;
            }
        },
        [&](const Slice& slice) {
            const std::size_t end = slice.last ? total + 1 : slice.end;
            if (slice.first) raw.exec("BEGIN");
            while (rawWalked < end && raw.walk.step()) {
                copyColumn(raw.walk, buffer, sizeof buffer);
                row.raw.digest = mix(row.raw.digest, getU32(buffer + kIdAt));
                ++rawWalked;
            }
            if (slice.last) {
                raw.walk.reset();
                raw.exec("COMMIT");
            }
        });
    if (engineWalked != total || rawWalked != total) fail("walk: wrong number of records");
    return row;
}

struct Regroup {
    std::uint32_t id;
    std::uint32_t group;
};

// The hand-written side knows its records and needs no read before the update.
Row regroup(EngineSide& engine, RawSide& raw, Dataset& data, const std::vector<Regroup>& work) {
    Row row("6 find + read + rewrite new I2 key", work.size(), false);
    unsigned char buffer[256];
    race(
        &row,
        [&](const Slice& slice) {
            if (slice.first) engineOk(isam::beginBatch(), "beginBatch");
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                unsigned char key[4];
                putU32(key, work[i].id);
                isam::Position position = 0;
                std::size_t length = 0;
                engineOk(isam::findEqual(engine.index(1), key, sizeof key, &position), "findEqual");
                engineOk(isam::readRecord(engine.data(), position, buffer, sizeof buffer, &length),
                         "readRecord");
                putU32(buffer + kGroupAt, work[i].group);
                engineOk(isam::rewriteRecord(engine.data(), buffer, length), "rewriteRecord");
            }
            if (slice.last) engineOk(isam::endBatch(), "endBatch");
        },
        [&](const Slice& slice) {
            if (slice.first) raw.exec("BEGIN");
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                std::string& rec = data.records[data.byId[work[i].id]];
                putU32(&rec[kGroupAt], work[i].group);
                unsigned char id[4];
                unsigned char group[4];
                putBigEndian(id, work[i].id);
                putBigEndian(group, work[i].group);
                const std::string bytes = stored(rec);
                raw.regroup.blob(1, bytes.data(), bytes.size());
                raw.regroup.blob(2, group, sizeof group);
                raw.regroup.blob(3, id, sizeof id);
                raw.regroup.step();
                raw.regroup.reset();
                if (sqlite3_changes(sqlite3_db_handle(raw.regroup.get())) != 1) {
                    fail("hand-written update found no record");
                }
            }
            if (slice.last) raw.exec("COMMIT");
        });
    return row;
}

// Everything stored in a member table, in row order.
std::uint64_t fileDigest(const std::string& path) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close_v2(db);
        fail("cannot open " + path);
    }
    std::uint64_t digest = 0;
    {
        Stmt all(db, "SELECT pos, rec, k1, k2, k3 FROM \"Records\" ORDER BY pos");
        while (all.step()) {
            for (int c = 0; c < 5; ++c) {
                const auto* p =
                    static_cast<const unsigned char*>(sqlite3_column_blob(all.get(), c));
                const int n = sqlite3_column_bytes(all.get(), c);
                for (int i = 0; i < n; ++i) digest = mix(digest, p[i]);
                digest = mix(digest, static_cast<std::uint64_t>(n) << 32);
            }
        }
    }
    sqlite3_close_v2(db);
    return digest;
}

// ---- Reports -------------------------------------------------------------------------------

// Wall and CPU time per call on each side, and the engine/SQLite ratio of each; CPU
// time leaves out waiting for other processes and for the disk.
void printRows(const std::vector<Row>& rows) {
    std::printf("%-40s %8s %21s %21s %13s\n", "", "", "wall us per call", "CPU us per call",
                "engine/raw");
    std::printf("%-40s %8s %10s %10s %10s %10s %6s %6s\n", "case", "count", "engine", "raw",
                "engine", "raw", "wall", "CPU");
    for (const Row& row : rows) {
        const double perCall = 1e6 / static_cast<double>(row.count);
        const bench::Timing& engine = row.engine.time;
        const bench::Timing& raw = row.raw.time;
        std::printf("%-40s %8llu %10.2f %10.2f %10.2f %10.2f %6.2f %6.2f%s\n", row.name,
                    static_cast<unsigned long long>(row.count), engine.wall * perCall,
                    raw.wall * perCall, engine.cpu * perCall, raw.cpu * perCall,
                    bench::ratio(engine.wall, raw.wall), bench::ratio(engine.cpu, raw.cpu),
                    row.compared && row.engine.digest != row.raw.digest ? "  RESULTS DIFFER" : "");
    }
}

void describeTuning() {
    const isam::StorageTuning& t = isam::storageTuning();
    std::printf("storage: page %d B, cache %d KiB, checkpoint every %d pages; SQLite %s\n",
                t.pageSize, t.cacheKiB, t.checkpointPages, sqlite3_libversion());
}

struct Options {
    std::size_t records = 200000;
    std::size_t commits = 0;
    bool cases = true;
    bool settings = false;
    int rounds = 1;
    std::string dir = "/tmp";
};

// Loads `records` in one batch on both sides, then reopens both files so that the
// single commits start from a cold page cache as after opening a database.
Row loadAndReopen(EngineSide& engine, RawSide& raw, const ScratchDir& scratch, const Dataset& data,
                  std::size_t records) {
    engine.create(scratch.file("engine.db"));
    raw.open(scratch.file("raw.db"), true);
    Row row = addBatch(engine, raw, data, records);
    engine.close();
    raw.close();
    engine.open(scratch.file("engine.db"));
    raw.open(scratch.file("raw.db"), false);
    return row;
}

double averageLength(const Dataset& data) {
    double sum = 0;
    for (const std::string& record : data.records) sum += static_cast<double>(record.size());
    return sum / static_cast<double>(data.records.size());
}

void runCases(const Options& options, const ScratchDir& scratch) {
    const std::size_t n = options.records;
    const std::size_t commits = options.commits;
    const std::size_t total = n + commits;
    Dataset data = makeDataset(total, 20240601);
    std::mt19937 random(7);

    std::printf(
        "Engine vs hand-written SQLite: %zu records (+%zu committed singly), "
        "%.0f bytes on average, 3 indexes\n",
        n, commits, averageLength(data));
    describeTuning();
    std::printf("(case 2 loads the file first; case 1 then adds to it after a reopen)\n\n");

    std::vector<Row> rows;
    EngineSide engine;
    RawSide raw;
    Row load = loadAndReopen(engine, raw, scratch, data, n);
    rows.push_back(addEach(engine, raw, data, n, commits));
    rows.push_back(load);

    std::vector<std::uint32_t> ids(n);
    for (std::uint32_t& id : ids) id = static_cast<std::uint32_t>(1 + random() % total);
    rows.push_back(find(engine, raw, ids));

    std::vector<std::uint32_t> groups(std::max<std::size_t>(1, n / kRecordsPerGroup));
    for (std::uint32_t& g : groups) g = static_cast<std::uint32_t>(random() % data.groups);
    rows.push_back(prefix(engine, raw, groups));

    rows.push_back(walk(engine, raw, total));

    std::vector<Regroup> work(std::max<std::size_t>(1, n / 4));
    for (Regroup& w : work) {
        w.id = static_cast<std::uint32_t>(1 + random() % total);
        w.group = static_cast<std::uint32_t>(random() % data.groups);
    }
    rows.push_back(regroup(engine, raw, data, work));

    engine.close();
    raw.close();
    printRows(rows);
    const bool same = fileDigest(scratch.file("engine.db")) == fileDigest(scratch.file("raw.db"));
    std::printf("\nfiles after all cases: %s; engine %.1f MB, hand-written %.1f MB\n",
                same ? "same records and keys" : "CONTENTS DIFFER",
                megabytes(scratch.file("engine.db")), megabytes(scratch.file("raw.db")));
    removeDatabase(scratch.file("engine.db"));
    removeDatabase(scratch.file("raw.db"));
}

// Single-commit cost under other page, cache and checkpoint sizes, on a file already
// holding the batch-loaded records. The sweep is repeated `rounds` times and each
// setting reported by its median, since the settings are timed one after another.
void runSettings(const Options& options, const ScratchDir& scratch) {
    const isam::StorageTuning defaults = isam::storageTuning();
    const std::size_t n = options.records;
    const std::size_t commits = options.commits;
    Dataset data = makeDataset(n + commits, 20240601);
    const std::vector<isam::StorageTuning> tunings = {
        {4096, 2000, 1000},  // SQLite's own defaults
        {4096, 16384, 1000},  {4096, 16384, 4000},  {4096, 16384, 10000}, {4096, 16384, 20000},
        {4096, 2000, 10000},  {4096, 65536, 10000}, {8192, 16384, 2000},  {8192, 16384, 5000},
        {16384, 16384, 1250}, {16384, 16384, 2500},
    };
    struct Timing {
        std::vector<double> engine, raw, wal;
    };
    std::vector<Timing> timings(tunings.size());
    const double per = 1e6 / static_cast<double>(commits);
    for (int round = 0; round < options.rounds; ++round) {
        for (std::size_t t = 0; t < tunings.size(); ++t) {
            isam::storageTuning() = tunings[t];
            EngineSide engine;
            RawSide raw;
            loadAndReopen(engine, raw, scratch, data, n);
            const Row row = addEach(engine, raw, data, n, commits);
            // The log is not truncated after a checkpoint: its size is its high-water mark.
            timings[t].wal.push_back(std::max(megabytes(scratch.file("engine.db") + "-wal"),
                                              megabytes(scratch.file("raw.db") + "-wal")));
            engine.close();
            raw.close();
            timings[t].engine.push_back(row.engine.time.wall * per);
            timings[t].raw.push_back(row.raw.time.wall * per);
            removeDatabase(scratch.file("engine.db"));
            removeDatabase(scratch.file("raw.db"));
        }
    }
    isam::storageTuning() = defaults;

    std::printf(
        "\nSingle commits (case 1) by storage settings: %zu adds to a file of %zu records,"
        " median of %d rounds\n",
        commits, n, options.rounds);
    std::printf("%6s %9s %11s %10s %10s %6s %8s\n", "page", "cache KiB", "checkpoint", "engine us",
                "raw us", "ratio", "WAL MB");
    for (std::size_t t = 0; t < tunings.size(); ++t) {
        const double engine = bench::median(timings[t].engine);
        const double raw = bench::median(timings[t].raw);
        std::printf("%6d %9d %11d %10.2f %10.2f %6.2f %8.1f\n", tunings[t].pageSize,
                    tunings[t].cacheKiB, tunings[t].checkpointPages, engine, raw, engine / raw,
                    bench::median(timings[t].wal));
    }
}

bool parse(int argc, char** argv, Options* options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--records" && hasValue) {
            options->records = std::strtoull(argv[++i], nullptr, 10);
        } else if (arg == "--commits" && hasValue) {
            options->commits = std::strtoull(argv[++i], nullptr, 10);
        } else if (arg == "--tuning" && hasValue) {
            isam::StorageTuning& tuning = isam::storageTuning();
            if (std::sscanf(argv[++i], "%d,%d,%d", &tuning.pageSize, &tuning.cacheKiB,
                            &tuning.checkpointPages) != 3) {
                return false;
            }
        } else if (arg == "--rounds" && hasValue) {
            options->rounds = std::atoi(argv[++i]);
        } else if (arg == "--dir" && hasValue) {
            options->dir = argv[++i];
        } else if (arg == "--settings") {
            options->settings = true;
        } else if (arg == "--settings-only") {
            options->settings = true;
            options->cases = false;
        } else {
            return false;
        }
    }
    if (options->records < kRecordsPerGroup || options->rounds < 1) return false;
    if (options->commits == 0) options->commits = std::max<std::size_t>(1, options->records / 10);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, &options)) {
        std::fprintf(stderr,
                     "usage: %s [--records N (>= 100)] [--commits N]"
                     " [--tuning PAGE,CACHE_KIB,CHECKPOINT] [--settings | --settings-only]"
                     " [--rounds N] [--dir DIR]\n",
                     argv[0]);
        return 2;
    }
    try {
        engineOk(isam::registerInstance(kInstance), "registerInstance");
        engineOk(isam::selectInstance(kInstance), "selectInstance");
        engineOk(isam::initialiseInstance(12, 16, 48, 12, 64, 0, 0, 0), "initialiseInstance");
        ScratchDir scratch(options.dir, "isam_vs_sqlite");
        if (options.cases) runCases(options, scratch);
        if (options.settings) runSettings(options, scratch);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "isam_vs_sqlite: %s\n", error.what());
        isam::unregisterInstance(kInstance);
        return 1;
    }
    isam::unregisterInstance(kInstance);
    return 0;
}
