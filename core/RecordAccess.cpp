#include "core/RecordAccess.h"

#include <cstring>

namespace qvb {

RecordWriter& RecordWriter::keep(int rc) {
    if (error_ == isam::ISAM_OK) error_ = rc;
    return *this;
}

RecordWriter& RecordWriter::Long(const char* field, std::uint32_t value) {
    return keep(checking() ? table_.CheckLong(field) : table_.SetLong(field, value));
}

RecordWriter& RecordWriter::Short(const char* field, std::uint16_t value) {
    return keep(checking() ? table_.CheckShort(field) : table_.SetShort(field, value));
}

RecordWriter& RecordWriter::Bool(const char* field, bool value) {
    return keep(checking() ? table_.CheckBool(field) : table_.SetBool(field, value));
}

RecordWriter& RecordWriter::Text(const char* field, const CString& value) {
    return Text(field, static_cast<const char*>(value), static_cast<std::size_t>(value.GetLength()));
}

RecordWriter& RecordWriter::Text(const char* field, const std::string& value) {
    return Text(field, value.data(), value.size());
}

RecordWriter& RecordWriter::Text(const char* field, const char* value) {
    return Text(field, value, value ? std::strlen(value) : 0);
}

RecordWriter& RecordWriter::Text(const char* field, const char* value, std::size_t length) {
    return keep(checking() ? table_.CheckText(field, value, length) : table_.SetText(field, value, length));
}

RecordWriter& RecordWriter::Binary(const char* field, const void* data, std::size_t length) {
    return keep(checking() ? table_.CheckBinary(field, length) : table_.SetBinary(field, data, length));
}

RecordReader& RecordReader::keep(int rc) {
    if (error_ == isam::ISAM_OK) error_ = rc;
    return *this;
}

RecordReader& RecordReader::Long(const char* field, std::uint32_t* value) {
    return value ? keep(table_.GetLong(field, value)) : *this;
}

RecordReader& RecordReader::Short(const char* field, std::uint16_t* value) {
    return value ? keep(table_.GetShort(field, value)) : *this;
}

RecordReader& RecordReader::Bool(const char* field, int* value) {
    if (!value) return *this;
    bool flag = false;
    keep(table_.GetBool(field, &flag));
    *value = flag ? 1 : 0;
    return *this;
}

RecordReader& RecordReader::Text(const char* field, CString* value) {
    if (!value) return *this;
    std::string text;
    keep(table_.GetText(field, &text));
    *value = CString(text.data(), static_cast<int>(text.size()));
    return *this;
}

int readById(CIsamTable& table, std::uint32_t id) {
    const int rc = table.FindId(id);
    return rc != isam::ISAM_OK ? rc : table.ReadCurrent();
}

int readFixedPartById(CIsamTable& table, std::uint32_t id) {
    const int rc = table.FindId(id);
    return rc != isam::ISAM_OK ? rc : table.ReadCurrentFixedPart();
}

int nextId(CIsamTable& table, const char* idField, std::uint32_t* id) {
    int rc = table.Last(1);
    if (rc == isam::ISAM_NO_RECORD) {
        *id = 1;
        return isam::ISAM_OK;
    }
    std::uint32_t last = 0;
    if (rc == isam::ISAM_OK) rc = table.ReadCurrentFixedPart();
    if (rc == isam::ISAM_OK) rc = table.GetLong(idField, &last);
    if (rc == isam::ISAM_OK && last == UINT32_MAX) rc = isam::ISAM_FILE_FULL;
    if (rc == isam::ISAM_OK) *id = last + 1;
    return rc;
}

int deleteById(CIsamTable& table, std::uint32_t id) {
    const int rc = readById(table, id);
    return rc != isam::ISAM_OK ? rc : table.Delete();
}

int positionsWithPrefix(CIsamTable& table, int index, const void* prefix, std::size_t length,
                        std::vector<isam::Position>* positions) {
    std::uint32_t count = 0;
    int rc = table.ScanByPrefix(index, prefix, length, &count, positions);
    if (rc == isam::ISAM_OK && positions->size() != count) rc = QVB_FETCH_MISMATCH;
    if (rc != isam::ISAM_OK) positions->clear();
    return rc;
}

namespace {

// Appends the 32-bit field `field` of the table's current record to `ids`.
int appendField(const CIsamTable& table, const char* field, CDWordArray& ids) {
    std::uint32_t id = 0;
    const int rc = table.GetLong(field, &id);
    if (rc == isam::ISAM_OK) ids.Add(id);
    return rc;
}

}  // namespace

int appendAll(CIsamTable& table, int index, const char* field, CDWordArray& ids) {
    return forEachRecord(table, index, [&] { return appendField(table, field, ids); });
}

int appendAllWithId(CIsamTable& table, int index, std::uint32_t id, const char* field,
                    CDWordArray& ids) {
    return forEachWithId(table, index, id, [&] { return appendField(table, field, ids); });
}

int countWithId(CIsamTable& table, int index, std::uint32_t id, std::uint32_t* count) {
    std::uint32_t n = 0;
    const int rc = table.CountByPrefix(index, &id, sizeof id, &n);
    if (rc != isam::ISAM_OK && rc != isam::ISAM_NO_RECORD) return rc;
    if (count) *count = rc == isam::ISAM_OK ? n : 0;
    return isam::ISAM_OK;
}

int countRecords(CIsamTable& table, int index, std::uint32_t* count) {
    std::uint32_t n = 0;
    for (int rc = table.First(index);; rc = table.Next(index)) {
        if (rc == isam::ISAM_NO_RECORD) break;
        if (rc != isam::ISAM_OK) return rc;
        ++n;
    }
    if (count) *count = n;
    return isam::ISAM_OK;
}

int deleteAll(CIsamTable& table) {
    for (;;) {
        int rc = table.First(1);
        if (rc == isam::ISAM_NO_RECORD) return isam::ISAM_OK;
        if (rc == isam::ISAM_OK) rc = table.Delete();
        if (rc != isam::ISAM_OK) return rc;
    }
}

}  // namespace qvb
