// One member of a container: a data file and its indexes, held as one table whose
// rows are the records (row id = position, the packed record, one key column per
// index) with one index per key column.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "isam/Isam.h"
#include "isam/Keys.h"
#include "isam/Sql.h"

namespace isam {

// The SQL-level name of a member: the part of its name after the container
// separator ("demo.Prj!DialogI2.Qvi" -> "DialogI2.Qvi").
std::string localName(const std::string& memberName);

// The collation that orders a locale-ordered index, "" for byte order.
std::string collationFor(std::uint32_t lcid);

// The key column of the index with that 0-based number, and the statement that
// creates the index on it.
std::string keyColumn(std::size_t index);
std::string createIndexSql(const std::string& table, const IndexDefinition& index,
                           std::size_t ordinal, std::uint32_t lcid);

class Member {
public:
    // `format`: the container's storage format, which decides whether records carry
    // checksums and how keys lay out their texts.
    Member(sqlite3* db, FileDefinition definition, std::vector<std::uint32_t> indexLocales,
           std::uint32_t dataLocale, int format);
    ~Member();
    Member(const Member&) = delete;
    Member& operator=(const Member&) = delete;

    const FileDefinition& definition() const { return definition_; }
    const std::string& table() const { return table_; }
    std::size_t indexCount() const { return indexes_.size(); }

    // Positioning by index number (0-based).
    int first(std::size_t index, Position* position);
    int last(std::size_t index, Position* position);
    int next(std::size_t index, Position* position);
    int findEqual(std::size_t index, const void* key, std::size_t length, Position* position);
    int findKey(std::size_t index, const void* key, std::size_t length, SearchMode mode,
                Position* position);
    int findText(std::size_t index, const char* text, SearchMode mode, Position* position);

    int countByPrefix(std::size_t index, const void* prefix, std::size_t length,
                      std::uint32_t* count);
    int fetchByPrefix(std::size_t index, const void* prefix, std::size_t length,
                      std::uint32_t wanted, Position* positions, std::uint32_t* fetched);
    // The count and the fetch from one scan: the positions of the keys that begin
    // with the prefix, in key order. Reads of those positions in that order are
    // then served from records read ahead in chunks along the same index.
    int scanByPrefix(std::size_t index, const void* prefix, std::size_t length,
                     std::vector<Position>* positions);

    int read(Position position, void* buffer, std::size_t capacity, std::size_t* length);
    int add(const void* record, std::size_t length, Position* position);
    int rewrite(const void* record, std::size_t length);
    int remove();
    int current(Position* position) const;

    int addResource(std::uint32_t type, std::uint32_t number, const void* data, std::size_t length,
                    bool replace);
    int readResource(std::uint32_t type, std::uint32_t number, void* buffer, std::size_t capacity,
                     std::size_t* length);
    int deleteResource(std::uint32_t type, std::uint32_t number);
    int resourceNumbers(std::uint32_t type, std::vector<std::uint32_t>* numbers);

    std::uint32_t dataLocale() const { return dataLocale_; }
    std::uint32_t indexLocale(std::size_t index) const { return indexes_[index].locale; }
    void setDataLocale(std::uint32_t lcid) { dataLocale_ = lcid; }
    // Reorders a locale-ordered index under the new locale; the caller persists it.
    int setIndexLocale(std::size_t index, std::uint32_t lcid);

    // Drops every pending statement position (before writes, commits and schema changes).
    void resetCursors();
    // Also lets go of the record reader, which would keep a transaction or the
    // schema busy (before commits, rollbacks and schema changes).
    void releaseReaders();

    // After a rollback: the member's table may be gone (stale) or its index locales
    // back at their earlier values.
    bool stale() const { return stale_; }
    void markStale() { stale_ = true; }
    void restoreLocales(const std::vector<std::uint32_t>& locales, std::uint32_t dataLocale);

private:
    // Row filters of the index queries. Parameters: ?1 a key, ?2 a second key or a row.
    enum Filter {
        kAll,
        kGe,        // key >= ?1
        kGt,        // key > ?1
        kLt,        // key < ?1
        kLe,        // key <= ?1
        kEq,        // key = ?1
        kRange,     // key >= ?1 and key < ?2
        kEqRow,     // key = ?1 and row = ?2
        kEqRowGe,   // key = ?1 and row >= ?2
        kEqRowLt,   // key = ?1 and row < ?2
        kGtLt,      // key > ?1 and key < ?2
        kFilterCount
    };
    // What a query returns.
    enum Shape {
        kAscending,   // row, key, record in key order
        kDescending,  // the same in reverse order
        kCount,
        kRows,        // rows in key order, at most ?3
        kShapeCount
    };

    struct Bound {
        Filter filter = kAll;
        std::string key;
        std::string key2;
        std::int64_t row = 0;
    };

    // The records of a prefix scan, read ahead: rows in key order from the scanned
    // index, each with its stored bytes and its key there.
    struct ReadAhead {
        // Where a row's key and stored bytes lie in `bytes`; `written`: the row
        // was written since, so its copy here no longer answers for it.
        struct Row {
            std::int64_t row;
            std::size_t key, keyLength;
            std::size_t stored, storedLength;
            bool written;
        };
        std::string bytes;  // every row's key and stored bytes, one after the other
        std::string keyOf(const Row& r) const { return bytes.substr(r.key, r.keyLength); }
        const char* storedOf(const Row& r) const { return bytes.data() + r.stored; }
        bool active = false;
        std::size_t index = 0;
        Bound bound;
        std::vector<Row> rows;
        std::size_t next = 0;       // the first row not yet read
        bool exhausted = false;     // no rows beyond those loaded
        bool resumed = false;       // the next load continues after resumeKey/resumeRow
        std::string resumeKey;
        std::int64_t resumeRow = 0;
        // Where the rows loaded now began, to load them again.
        bool startResumed = false;
        std::string startKey;
        std::int64_t startRow = 0;
    };

    struct IndexState {
        IndexDefinition definition;
        std::uint32_t locale = 0;
        std::string column;
        std::array<std::array<Statement, kFilterCount>, kShapeCount> statements;
        Statement keyOf;  // the key of a given row
        // The statement whose row is this index's position while it can still be
        // stepped, and the key and row of that position.
        Statement* cursor = nullptr;
        bool cursorBounded = false;
        bool anchorValid = false;
        std::string anchorKey;
        std::int64_t anchorRow = 0;
    };

    bool collated(const IndexState& ix) const;
    // The key column, with the index's collation when it has one.
    std::string keyExpression(const IndexState& ix) const;
    static std::string whereClause(const std::string& key, Filter filter);
    std::string orderClause(const IndexState& ix, bool descending) const;
    int statement(IndexState& ix, Shape shape, Filter filter, Statement** out);
    void bindKey(const IndexState& ix, Statement& st, int slot, const std::string& key) const;
    void bindBound(const IndexState& ix, Statement& st, const Bound& bound) const;

    // Runs the bounds in order until one yields a row, which becomes the position.
    int seek(std::size_t index, Shape shape, const std::vector<Bound>& bounds, Position* position);
    int seekAfterAnchor(std::size_t index, Position* position);
    int takeRow(std::size_t index, Statement* st, bool bounded, Position* position);
    int anchorFromCurrent(std::size_t index);
    Bound prefixBound(const IndexState& ix, const SearchKey& key) const;

    // The bytes to store for a record or resource (kept in sealScratch_ while sealed).
    std::pair<const void*, std::size_t> toStore(const void* data, std::size_t length);
    // The record inside stored bytes; false when its checksum does not match.
    bool recordOf(const void* stored, std::size_t storedLength, std::size_t* length) const;
    int buildKeys(const void* record, std::size_t length, std::vector<std::string>* keys) const;
    // The same from stored bytes, checksum checked.
    int buildStoredKeys(const void* stored, std::size_t storedLength, std::vector<std::string>* keys) const;
    int currentKeys(std::vector<std::string>* keys) const;
    bool readByBlob(Position position, void* buffer, std::size_t capacity, std::size_t* length,
                    int* rc);
    // Serves a read from the rows read ahead; false when the position is not among
    // them (the plain read then answers).
    bool readAhead(Position position, void* buffer, std::size_t capacity, std::size_t* length, int* rc);
    int loadAhead();
    int appendAhead(Statement* st, std::size_t* bytes);
    // Copies the statement's row (position, key, stored record) to the rows read
    // ahead; the bytes it took.
    std::size_t appendAheadRow(const Statement& st);
    static std::vector<Bound> partsAfter(const Bound& bound, const std::string& key, std::int64_t row);
    // A write to `row`: rows read ahead from it on are read again.
    void forgetAheadFrom(std::int64_t row);
    void endReadAhead();
    void closeBlob();
    void anchorAll(const std::vector<std::string>& keys, std::int64_t row);
    // Prepares a statement on first use; the SQL text is built only then.
    template <typename MakeSql>
    int prepareOnce(Statement& st, MakeSql makeSql) {
        return st.prepared() ? ISAM_OK : st.prepare(db_, makeSql());
    }
    int resourceStatement(Statement& st, const char* head, const char* tail, std::uint32_t type,
                          std::uint32_t number);

    sqlite3* db_;
    FileDefinition definition_;
    std::string table_;
    std::vector<IndexState> indexes_;
    std::uint32_t dataLocale_;
    bool sealed_;
    KeyForm keyForm_;
    std::string sealScratch_;

    bool stale_ = false;
    bool hasCurrent_ = false;
    std::int64_t current_ = 0;
    Statement* recordSource_ = nullptr;  // holds the current record in its column 2
    ReadAhead ahead_;

    Statement insert_, delete_, read_;
    // UPDATE statements by the set of key columns they write (bit i: index i).
    std::map<std::uint32_t, Statement> updates_;
    // Reads records by position: moving it to another row is a seek, not a new
    // statement execution.
    sqlite3_blob* blob_ = nullptr;
    std::int64_t blobRow_ = -1;  // the row the blob handle is on
    Statement resourceInsert_, resourceReplace_, resourceRead_, resourceDelete_;
};

}  // namespace isam
