// Thin helpers over the SQLite C interface. Only the engine includes this file.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>

#include "isam/IsamErrors.h"

namespace isam {

// Maps an SQLite result code to the engine's error number.
int fromSqlite(int rc);

// Quotes an identifier for use in SQL text.
std::string quoted(const std::string& identifier);

// One prepared statement, finalised with its owner. Reset and rebind between uses.
class Statement {
public:
    Statement() = default;
    ~Statement() { sqlite3_finalize(stmt_); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    Statement(Statement&& other) noexcept : stmt_(other.stmt_) { other.stmt_ = nullptr; }
    Statement& operator=(Statement&& other) noexcept {
        if (this != &other) {
            sqlite3_finalize(stmt_);
            stmt_ = other.stmt_;
            other.stmt_ = nullptr;
        }
        return *this;
    }

    // Returns an engine error number.
    int prepare(sqlite3* db, const std::string& sql) {
        sqlite3_finalize(stmt_);
        stmt_ = nullptr;
        return fromSqlite(sqlite3_prepare_v3(db, sql.c_str(), static_cast<int>(sql.size()),
                                             SQLITE_PREPARE_PERSISTENT, &stmt_, nullptr));
    }
    bool prepared() const { return stmt_ != nullptr; }
    sqlite3_stmt* get() const { return stmt_; }

    void reset() {
        if (stmt_) sqlite3_reset(stmt_);
    }
    void bindInt(int i, std::int64_t v) { sqlite3_bind_int64(stmt_, i, v); }
    // Values are bound without a copy: the caller keeps them alive until the
    // statement is reset. copy = true is for statements that outlive the value,
    // such as a cursor stepped by later calls.
    void bindBlob(int i, const void* p, std::size_t n, bool copy = false) {
        // A zero-length blob must still be a blob, not NULL.
        sqlite3_bind_blob64(stmt_, i, n ? p : "", n, copy ? SQLITE_TRANSIENT : SQLITE_STATIC);
    }
    void bindText(int i, const void* p, std::size_t n, bool copy = false) {
        sqlite3_bind_text64(stmt_, i, static_cast<const char*>(p), n,
                            copy ? SQLITE_TRANSIENT : SQLITE_STATIC, SQLITE_UTF8);
    }
    // SQLITE_ROW, SQLITE_DONE or an SQLite error code.
    int step() { return sqlite3_step(stmt_); }

    std::int64_t columnInt(int i) const { return sqlite3_column_int64(stmt_, i); }
    const unsigned char* columnBytes(int i) const {
        const void* p = sqlite3_column_blob(stmt_, i);
        return static_cast<const unsigned char*>(p);
    }
    std::size_t columnSize(int i) const { return static_cast<std::size_t>(sqlite3_column_bytes(stmt_, i)); }

private:
    sqlite3_stmt* stmt_ = nullptr;
};

// Runs SQL text without results; returns an engine error number.
int execute(sqlite3* db, const std::string& sql);

}  // namespace isam
