#include "bench/BenchSupport.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "core/LibraryErrors.h"
#include "isam/Container.h"

namespace bench {

namespace {

std::string engineSettings(bool create) {
    const isam::StorageTuning& tuning = isam::storageTuning();
    std::string settings = "PRAGMA locking_mode=EXCLUSIVE;";
    if (create) settings += "PRAGMA page_size=" + std::to_string(tuning.pageSize) + ";";
    settings +=
        "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA cell_size_check=ON;"
        "PRAGMA trusted_schema=OFF; PRAGMA cache_size=-" +
        std::to_string(tuning.cacheKiB) +
        "; PRAGMA wal_autocheckpoint=" + std::to_string(tuning.checkpointPages) + ";";
    return settings;
}

}  // namespace

void fail(const std::string& what) {
    throw std::runtime_error(what);
}

void failWithError(CDbObject& db, const char* what) {
    const int error = db.GetError();
    fail(std::string(what) + ": error " + std::to_string(error) + " (" + qvbErrorText(error) + ")");
}

void Connection::open(const std::string& path, bool create) {
    close();
    const int flags = SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0) |
                      SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    if (sqlite3_open_v2(path.c_str(), &db_, flags, nullptr) != SQLITE_OK) {
        fail("open " + path + ": " + sqlite3_errmsg(db_));
    }
    sqlite3_db_config(db_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_busy_timeout(db_, 0);
    exec(engineSettings(create).c_str());
}

void Connection::close() {
    if (db_) sqlite3_close_v2(db_);
    db_ = nullptr;
}

Stmt Connection::prepareIndexed(const char* sql) {
    Stmt plan(db_, (std::string("EXPLAIN QUERY PLAN ") + sql).c_str());
    while (plan.step()) {
        const std::string detail = plan.text(3);
        const bool sorts = detail.find("TEMP B-TREE") != std::string::npos;
        const bool scans =
            detail.find("SCAN") != std::string::npos && detail.find("INDEX") == std::string::npos;
        if (sorts || scans) fail(std::string("unindexed plan for ") + sql + ": " + detail);
    }
    return Stmt(db_, sql);
}

ScratchDir::ScratchDir(const std::string& parent, const std::string& prefix) {
    std::string pattern = parent + "/" + prefix + ".XXXXXX";
    if (!::mkdtemp(pattern.data())) fail("cannot create a directory under " + parent);
    path_ = pattern;
}

ScratchDir::~ScratchDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

Timing median(const std::vector<Timing>& timings) {
    std::vector<double> wall;
    std::vector<double> cpu;
    for (const Timing& t : timings) {
        wall.push_back(t.wall);
        cpu.push_back(t.cpu);
    }
    return {median(std::move(wall)), median(std::move(cpu))};
}

bool parseCount(const char* value, std::size_t low, std::size_t high, std::size_t* out) {
    char* end = nullptr;
    const unsigned long long n = std::strtoull(value, &end, 10);
    if (*end || n < low || n > high) return false;
    *out = static_cast<std::size_t>(n);
    return true;
}

}  // namespace bench
