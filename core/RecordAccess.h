// The record patterns every operation is written in: find-and-read by identifier,
// the allocating add, walks over a whole index or over the records sharing a key
// prefix, and counting. Each returns 0 or the error code of the step that failed;
// "no record" at the end of a walk is success.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/IsamTable.h"
#include "core/LibraryErrors.h"
#include "isam/IsamErrors.h"
#include "qvb/CDWordArray.h"
#include "qvb/CString.h"

namespace qvb {

// Sets fields of a table's current record by name, keeping the first failure. A
// checking writer sets nothing and only answers what setting would answer.
class RecordWriter {
public:
    enum class Mode { Set, CheckOnly };
    explicit RecordWriter(CIsamTable& table, Mode mode = Mode::Set) : table_(table), mode_(mode) {}
    RecordWriter& Long(const char* field, std::uint32_t value);
    RecordWriter& Short(const char* field, std::uint16_t value);
    RecordWriter& Bool(const char* field, bool value);
    RecordWriter& Text(const char* field, const CString& value);
    RecordWriter& Text(const char* field, const std::string& value);
    RecordWriter& Text(const char* field, const char* value);
    RecordWriter& Text(const char* field, const char* value, std::size_t length);
    RecordWriter& Binary(const char* field, const void* data, std::size_t length);
    RecordWriter& ClearBinary(const char* field) { return Binary(field, nullptr, 0); }
    int error() const { return error_; }

private:
    RecordWriter& keep(int rc);
    bool checking() const { return mode_ == Mode::CheckOnly; }
    CIsamTable& table_;
    Mode mode_;
    int error_ = isam::ISAM_OK;
};

// Whether `fill` can set every field it names (a text longer than its field, above
// all). Operations ask before their first step, so that such a value is refused
// while nothing has changed; `fill` must only set fields.
template <typename Fill>
int checkFill(CIsamTable& table, Fill&& fill) {
    if (!table.HasSchema()) return QVB_NO_SCHEMA;
    RecordWriter checker(table, RecordWriter::Mode::CheckOnly);
    fill(checker);
    return checker.error();
}

// Gets fields of a table's current record by name into the caller's variables; a
// null destination skips its field.
class RecordReader {
public:
    explicit RecordReader(const CIsamTable& table) : table_(table) {}
    RecordReader& Long(const char* field, std::uint32_t* value);
    RecordReader& Short(const char* field, std::uint16_t* value);
    // A flag as the interface's int: 1 or 0.
    RecordReader& Bool(const char* field, int* value);
    RecordReader& Text(const char* field, CString* value);
    RecordReader& Text(const char* field, CString& value) { return Text(field, &value); }
    int error() const { return error_; }

private:
    RecordReader& keep(int rc);
    const CIsamTable& table_;
    int error_ = isam::ISAM_OK;
};

// Finds the record with identifier `id` on I1 and reads it.
int readById(CIsamTable& table, std::uint32_t id);
// The same, reading the fixed part only: enough for an operation that replaces the
// variable part, or reads none of it.
int readFixedPartById(CIsamTable& table, std::uint32_t id);

// The identifier the next record gets: the last one in I1 order plus one, 1 in an
// empty table. Positioning on the last record loads its fixed part only, as a find
// does; the variable fields keep the values of the table's previous operation.
int nextId(CIsamTable& table, const char* idField, std::uint32_t* id);

// Find and read the record with identifier `id`, then `take` gets its fields from
// the reader, whose first failure is the result.
template <typename Take>
int readFieldsById(CIsamTable& table, std::uint32_t id, Take take) {
    const int rc = readById(table, id);
    if (rc != isam::ISAM_OK) return rc;
    RecordReader reader(table);
    take(reader);
    return reader.error();
}

// The allocating add: the new identifier goes to the caller before the record is
// written; `fill` sets the other fields (fields it leaves alone keep what nextId
// left: the last record's fixed part, the previous operation's variable fields).
template <typename Fill>
int addWithNewId(CIsamTable& table, const char* idField, std::uint32_t* newId, Fill fill) {
    int rc = checkFill(table, fill);
    if (rc != isam::ISAM_OK) return rc;
    std::uint32_t id = 0;
    rc = nextId(table, idField, &id);
    if (rc != isam::ISAM_OK) return rc;
    if (newId) *newId = id;
    RecordWriter writer(table);
    writer.Long(idField, id);
    fill(writer);
    return writer.error() != isam::ISAM_OK ? writer.error() : table.Add();
}

// The add that keeps the caller's identifier.
template <typename Fill>
int addWithId(CIsamTable& table, const char* idField, std::uint32_t id, Fill fill) {
    const int rc = checkFill(table, fill);
    if (rc != isam::ISAM_OK) return rc;
    RecordWriter writer(table);
    writer.Long(idField, id);
    fill(writer);
    return writer.error() != isam::ISAM_OK ? writer.error() : table.Add();
}

// Find, read, change and rewrite the record with identifier `id`.
template <typename Fill>
int updateById(CIsamTable& table, std::uint32_t id, Fill fill) {
    int rc = checkFill(table, fill);
    if (rc == isam::ISAM_OK) rc = readById(table, id);
    if (rc != isam::ISAM_OK) return rc;
    RecordWriter writer(table);
    fill(writer);
    return writer.error() != isam::ISAM_OK ? writer.error() : table.Rewrite();
}

// Find, read and delete the record with identifier `id`.
int deleteById(CIsamTable& table, std::uint32_t id);

// Walks index `index` from the first record to the last, reading each and calling
// `visit()`, which returns 0 to go on or an error code to stop with.
template <typename Visit>
int forEachRecord(CIsamTable& table, int index, Visit visit) {
    for (int rc = table.First(index);; rc = table.Next(index)) {
        if (rc == isam::ISAM_NO_RECORD) return isam::ISAM_OK;
        if (rc == isam::ISAM_OK) rc = table.ReadCurrent();
        if (rc == isam::ISAM_OK) rc = visit();
        if (rc != isam::ISAM_OK) return rc;
    }
}

// Collects the positions of the records whose key in `index` begins with the
// prefix, in key order: the count and the fetch of one scan, which must agree
// (QVB_FETCH_MISMATCH otherwise). Reading them in this order is then cheap.
int positionsWithPrefix(CIsamTable& table, int index, const void* prefix, std::size_t length,
                        std::vector<isam::Position>* positions);

// Reads each record whose key in `index` begins with the prefix, in key order,
// calling `visit()` after each read.
template <typename Visit>
int forEachWithPrefix(CIsamTable& table, int index, const void* prefix, std::size_t length,
                      Visit visit) {
    std::vector<isam::Position> positions;
    int rc = positionsWithPrefix(table, index, prefix, length, &positions);
    for (std::size_t i = 0; rc == isam::ISAM_OK && i < positions.size(); ++i) {
        rc = table.ReadAt(positions[i]);
        if (rc == isam::ISAM_OK) rc = visit();
    }
    return rc;
}

// The same for the common prefix, a leading 32-bit identifier.
template <typename Visit>
int forEachWithId(CIsamTable& table, int index, std::uint32_t id, Visit visit) {
    return forEachWithPrefix(table, index, &id, sizeof id, visit);
}

// Appends the 32-bit field `field` of every record of a walk to `ids`.
int appendAll(CIsamTable& table, int index, const char* field, CDWordArray& ids);

// The same for the records whose key in `index` begins with the identifier `id`.
int appendAllWithId(CIsamTable& table, int index, std::uint32_t id, const char* field,
                    CDWordArray& ids);

// The number of records whose key in `index` begins with the identifier `id`. Counts
// go to the caller only on success; a null `count` just counts.
int countWithId(CIsamTable& table, int index, std::uint32_t id, std::uint32_t* count);

// The number of records, counted by walking `index`.
int countRecords(CIsamTable& table, int index, std::uint32_t* count);

// Deletes every record of a table.
int deleteAll(CIsamTable& table);

// A count that is the size of an enumeration: `enumerate` fills a scratch array,
// and its size goes to the caller whatever the outcome, so that after a failure
// the caller learns how many were gathered.
template <typename Enumerate>
int countByEnumerating(std::uint32_t* count, Enumerate enumerate) {
    CDWordArray scratch;
    const int rc = enumerate(scratch);
    if (count) *count = static_cast<std::uint32_t>(scratch.GetSize());
    return rc;
}

// The text padded on the right with blanks to `width` characters, as fixed-width
// texts are stored; a longer text is left as it is (its field may refuse it).
inline CString paddedWithBlanks(const CString& text, int width) {
    CString padded = text;
    if (padded.GetLength() < width) padded += CString(' ', width - padded.GetLength());
    return padded;
}

}  // namespace qvb
