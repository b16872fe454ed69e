// A closed database file seen and changed with a plain SQLite connection, below
// the library: what tests use to compare files and to forge records.
#pragma once

#include <cstdint>
#include <string>

namespace dbtest {

// What the file holds, table by table and row by row: two snapshots are equal
// when nothing stored changed.
std::string fileSnapshot(const std::string& path);

// The blob the query's first row has in its first column ("" when none).
std::string readBlob(const std::string& path, const std::string& select);
// Runs an update whose ?1 is `bytes`; whether it changed exactly one row.
bool writeBlob(const std::string& path, const std::string& update, const std::string& bytes);

// The stored bytes of one record of a member table ("" when there is none).
std::string storedRecord(const std::string& path, const std::string& table, std::int64_t position);

// Replaces the stored bytes of one record of a member table, keys untouched.
// Returns whether exactly that record was changed.
bool forgeRecord(const std::string& path, const std::string& table, std::int64_t position,
                 const std::string& bytes);

// SQLite's whole-file check through a connection of its own: "ok" when sound.
std::string integrityOf(const std::string& path);

}  // namespace dbtest
