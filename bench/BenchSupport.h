// What the benchmarks share: failing with a message, the hand-written SQLite side's
// statements and its connection (set up as the engine sets up a container), the
// scratch directory, timing in alternating slices, and the reading of options.
//
// What runs inside the timed work (Stmt, check, race) stays inline here, so that a
// benchmark's measured calls are compiled as if written in its own file.
#pragma once

#include <sqlite3.h>

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "qvb/CDbObject.h"

namespace bench {

// ---- Errors ------------------------------------------------------------------------------

[[noreturn]] void fail(const std::string& what);

// Throws with the database's error code and its text.
[[noreturn]] void failWithError(CDbObject& db, const char* what);

// For the library's calls, which give 1 on success.
inline void check(int ok, CDbObject& db, const char* what) {
    if (!ok) failWithError(db, what);
}

inline void sqlOk(int rc, sqlite3* db, const char* what) {
    if (rc != SQLITE_OK) fail(std::string(what) + ": " + sqlite3_errmsg(db));
}

// ---- The hand-written side ---------------------------------------------------------------

// A prepared statement. Bound texts and blobs are not copied: they must outlive the step.
class Stmt {
public:
    Stmt() = default;
    Stmt(sqlite3* db, const char* sql) : db_(db) {
        sqlOk(sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, &stmt_, nullptr), db, sql);
    }
    ~Stmt() { sqlite3_finalize(stmt_); }
    Stmt(const Stmt&) = delete;
    Stmt& operator=(const Stmt&) = delete;
    Stmt& operator=(Stmt&& other) noexcept {
        std::swap(db_, other.db_);
        std::swap(stmt_, other.stmt_);
        return *this;
    }

    sqlite3_stmt* get() const { return stmt_; }
    // True on a row, false when done.
    bool step() {
        const int rc = sqlite3_step(stmt_);
        if (rc == SQLITE_ROW) return true;
        if (rc != SQLITE_DONE) fail(std::string("step: ") + sqlite3_errmsg(db_));
        return false;
    }
    void reset() { sqlite3_reset(stmt_); }

    void integer(int i, std::int64_t v) { sqlite3_bind_int64(stmt_, i, v); }
    void text(int i, const char* p, std::size_t n) {
        sqlite3_bind_text(stmt_, i, p, static_cast<int>(n), SQLITE_STATIC);
    }
    void blob(int i, const void* p, std::size_t n) {
        sqlite3_bind_blob(stmt_, i, p, static_cast<int>(n), SQLITE_STATIC);
    }

    std::int64_t integer(int column) const { return sqlite3_column_int64(stmt_, column); }
    const char* text(int column) const {
        return reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column));
    }
    std::size_t bytes(int column) const {
        return static_cast<std::size_t>(sqlite3_column_bytes(stmt_, column));
    }

private:
    sqlite3* db_ = nullptr;
    sqlite3_stmt* stmt_ = nullptr;
};

// A connection set up as the engine sets up its container: exclusive locking, WAL,
// synchronous=NORMAL, and the engine's page, cache and checkpoint sizes.
class Connection {
public:
    Connection() = default;
    ~Connection() { close(); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // The page size takes effect only in a new file.
    void open(const std::string& path, bool create);
    // The file closes once the statements made on it are finalised as well.
    void close();

    void exec(const char* sql) {
        sqlOk(sqlite3_exec(db_, sql, nullptr, nullptr, nullptr), db_, sql);
    }
    Stmt prepare(const char* sql) { return Stmt(db_, sql); }
    // A hand-written query that sorts or scans without an index would not be the
    // floor the benchmarks need: such a plan fails here.
    Stmt prepareIndexed(const char* sql);
    // Reads the whole file as the library's open does, so that both sides' page
    // caches start alike after a reopen.
    void readWhole() { exec("PRAGMA quick_check(1)"); }

private:
    sqlite3* db_ = nullptr;
};

// ---- Scratch files -----------------------------------------------------------------------

// A new directory `parent`/`prefix`.XXXXXX, removed with all in it at the end.
class ScratchDir {
public:
    ScratchDir(const std::string& parent, const std::string& prefix);
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    // With the trailing slash the library wants of a directory.
    std::string path() const { return path_ + "/"; }
    std::string file(const std::string& name) const { return path() + name; }

private:
    std::string path_;
};

// ---- Timing ------------------------------------------------------------------------------

template <typename Body>
double secondsOf(Body body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Wall-clock and process CPU seconds. The machine may be shared: the CPU time leaves
// out the waits for other processes (and for the disk).
struct Timing {
    double wall = 0;
    double cpu = 0;

    Timing& operator+=(const Timing& other) {
        wall += other.wall;
        cpu += other.cpu;
        return *this;
    }
};

inline double cpuSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename Body>
Timing timed(Body body) {
    const auto start = std::chrono::steady_clock::now();
    const double cpuStart = cpuSeconds();
    body();
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
            cpuSeconds() - cpuStart};
}

// library / SQLite, 0 when the SQLite side took no measurable time.
inline double ratio(double library, double raw) {
    return raw > 0 ? library / raw : 0;
}

// The index key of a phrase's source text: its leading 125 bytes padded with
// spaces, as the engine keys it.
inline std::string textKey(const CString& text) {
    constexpr std::size_t kKeyLength = 125;
    std::string key(text.GetString(), std::min<std::size_t>(text.GetLength(), kKeyLength));
    key.resize(kKeyLength, ' ');
    return key;
}

// Runs the insert of a hand-written phrase table, whose parameters are ?1 TextId,
// ?2 PairLangId, ?3 Translated, ?4 to ?6 the three texts and ?7, ?8 the keys of
// the source text and of its filtered form.
inline void insertPhrase(Stmt& insert, std::uint32_t textId, std::uint32_t pair, bool translated,
                         const CString& sText, const CString& sTextFiltered, const CString& tText) {
    const std::string key = textKey(sText);
    const std::string filteredKey = textKey(sTextFiltered);
    insert.integer(1, textId);
    insert.integer(2, pair);
    insert.integer(3, translated ? 1 : 0);
    insert.text(4, sText.GetString(), sText.GetLength());
    insert.text(5, sTextFiltered.GetString(), sTextFiltered.GetLength());
    insert.text(6, tText.GetString(), tText.GetLength());
    insert.blob(7, key.data(), key.size());
    insert.blob(8, filteredKey.data(), filteredKey.size());
    insert.step();
    insert.reset();
}

// `part` as a percentage of `whole`.
inline double percent(std::size_t part, std::size_t whole) {
    return 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

double median(std::vector<double> values);
// The median wall and the median CPU time, each on its own.
Timing median(const std::vector<Timing>& timings);

// Items [begin, end) of a case, worked by each side in its turn.
struct Slice {
    std::size_t begin;
    std::size_t end;
    bool first;
    bool last;
};

// Both sides work the `count` items in `slices` alternating slices, so that other load
// on the machine and changes of clock speed fall on both alike; each side's time is the
// sum of its slices. `timer(body)` runs the body and gives a time that adds up with +=.
template <typename Time, typename Timer, typename LeftSlice, typename RightSlice>
void race(std::size_t count, std::size_t slices, Timer timer, Time* leftTime, LeftSlice leftSlice,
          Time* rightTime, RightSlice rightSlice) {
    for (std::size_t s = 0; s < slices; ++s) {
        const Slice slice{count * s / slices, count * (s + 1) / slices, s == 0, s + 1 == slices};
        const bool leftFirst = s % 2 == 0;
        const Time first = timer([&] { leftFirst ? leftSlice(slice) : rightSlice(slice); });
        const Time second = timer([&] { leftFirst ? rightSlice(slice) : leftSlice(slice); });
        *leftTime += leftFirst ? first : second;
        *rightTime += leftFirst ? second : first;
    }
}

// ---- Options -----------------------------------------------------------------------------

// A whole decimal number from `low` to `high`, and nothing after it.
bool parseCount(const char* value, std::size_t low, std::size_t high, std::size_t* out);

// Reads `--name value` pairs: `take(name, value)` says whether the name is known and
// its value good. False on a name without a value or on one `take` refuses.
template <typename Take>
bool parseNamedValues(int argc, char** argv, Take take) {
    for (int i = 1; i < argc; i += 2) {
        if (i + 1 >= argc || !take(std::string(argv[i]), argv[i + 1])) return false;
    }
    return true;
}

}  // namespace bench
