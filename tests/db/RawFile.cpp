#include "tests/db/RawFile.h"

#include <sqlite3.h>

#include <vector>

namespace dbtest {

namespace {

void appendRows(sqlite3* db, const std::string& table, std::string* out) {
    sqlite3_stmt* st = nullptr;
    const std::string sql = "SELECT * FROM \"" + table + "\" ORDER BY rowid";
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &st, nullptr) != SQLITE_OK) {
        *out += "!" + table + "\n";
        return;
    }
    *out += "[" + table + "]\n";
    while (sqlite3_step(st) == SQLITE_ROW) {
        for (int c = 0; c < sqlite3_column_count(st); ++c) {
            const void* bytes = sqlite3_column_blob(st, c);
            const int size = sqlite3_column_bytes(st, c);
            out->append(std::to_string(size)).append(":");
            if (bytes) out->append(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
        }
        *out += "\n";
    }
    sqlite3_finalize(st);
}

}  // namespace

std::string fileSnapshot(const std::string& path) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close(db);
        return "cannot open " + path;
    }
    std::vector<std::string> tables;
    sqlite3_stmt* st = nullptr;
    sqlite3_prepare_v2(db, "SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY name", -1, &st,
                       nullptr);
    while (st && sqlite3_step(st) == SQLITE_ROW) {
        tables.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(st, 0)));
    }
    sqlite3_finalize(st);
    std::string out;
    for (const std::string& table : tables) appendRows(db, table, &out);
    sqlite3_close(db);
    return out;
}

std::string readBlob(const std::string& path, const std::string& select) {
    sqlite3* db = nullptr;
    std::string bytes;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v2(db, select.c_str(), -1, &st, nullptr) == SQLITE_OK &&
            sqlite3_step(st) == SQLITE_ROW && sqlite3_column_blob(st, 0)) {
            bytes.assign(static_cast<const char*>(sqlite3_column_blob(st, 0)),
                         static_cast<std::size_t>(sqlite3_column_bytes(st, 0)));
        }
        sqlite3_finalize(st);
    }
    sqlite3_close(db);
    return bytes;
}

bool writeBlob(const std::string& path, const std::string& update, const std::string& bytes) {
    sqlite3* db = nullptr;
    bool changed = false;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v2(db, update.c_str(), -1, &st, nullptr) == SQLITE_OK) {
            sqlite3_bind_blob(st, 1, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
            changed = sqlite3_step(st) == SQLITE_DONE && sqlite3_changes(db) == 1;
        }
        sqlite3_finalize(st);
    }
    sqlite3_close(db);
    return changed;
}

std::string storedRecord(const std::string& path, const std::string& table, std::int64_t position) {
    return readBlob(path, "SELECT rec FROM \"" + table + "\" WHERE rowid = " + std::to_string(position));
}

bool forgeRecord(const std::string& path, const std::string& table, std::int64_t position,
                 const std::string& bytes) {
    return writeBlob(path, "UPDATE \"" + table + "\" SET rec = ?1 WHERE rowid = " + std::to_string(position),
                     bytes);
}

std::string integrityOf(const std::string& path) {
    sqlite3* db = nullptr;
    std::string verdict;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        verdict = std::string("cannot open: ") + sqlite3_errmsg(db);
    } else {
        // Exclusive, as the library opens its files: no shared-memory index is made.
        sqlite3_exec(db, "PRAGMA locking_mode=EXCLUSIVE", nullptr, nullptr, nullptr);
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &st, nullptr) != SQLITE_OK) {
            verdict = std::string("check failed: ") + sqlite3_errmsg(db);
        }
        while (st && sqlite3_step(st) == SQLITE_ROW) {
            verdict += (verdict.empty() ? "" : "; ") +
                       std::string(reinterpret_cast<const char*>(sqlite3_column_text(st, 0)));
        }
        sqlite3_finalize(st);
    }
    sqlite3_close_v2(db);
    return verdict;
}

}  // namespace dbtest
