// A table's field schema and its current record: field values got and set by
// name, packed into the record buffer for a write and unpacked after a read.
//
// The fixed-width fields live in an image of the fixed part; each variable field
// (a text or a length-prefixed binary) is held on its own. Only a write packs the
// two into the buffer, and only a read fills them from it. A read takes the variable
// fields lazily: it checks and locates them in the record it read, and they are
// copied out only once one of them is set (reading one copies just that one).
// Reads go into two buffers in turn, so a failed read leaves the previous values.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/IsamFile.h"
#include "core/LibraryErrors.h"

class CRecordSchema : public CIsamFile {
    DECLARE_DYNAMIC(CRecordSchema)

public:
    // Binds the table's fields and allocates the values and the buffer.
    void Define(const qvb::catalogue::TableDef& table) override;
    void ReleaseDefinition() override;

    // Set by every successful set-field operation.
    virtual bool IsModified() const { return m_modified; }
    virtual void ClearModified() { m_modified = false; }

    bool HasSchema() const { return m_table != nullptr; }

    // Field access by name: 0, or QVB_NO_SUCH_FIELD. The 32-bit accessors take
    // FT_INT4U, FT_INT4 and FT_DATE; the 16-bit ones FT_INT2U and FT_INT2; the flag
    // accessors FT_BOOL. Setting a missing field with the 16-bit or flag setter is
    // ignored (0); a text longer than its field is ISAM_RECORD_TOO_LONG.
    int GetLong(const char* name, std::uint32_t* value) const;
    int SetLong(const char* name, std::uint32_t value);
    int GetShort(const char* name, std::uint16_t* value) const;
    int SetShort(const char* name, std::uint16_t value);
    int GetBool(const char* name, bool* value) const;
    int SetBool(const char* name, bool value);
    // Any field as text: numbers in decimal, texts and binaries as their bytes.
    int GetText(const char* name, std::string* value) const;
    int SetText(const char* name, const char* text, std::size_t length);
    int SetText(const char* name, const std::string& text) {
        return SetText(name, text.data(), text.size());
    }
    // Binary (FT_4STRING) fields.
    int GetBinary(const char* name, std::string* value) const;
    int SetBinary(const char* name, const void* data, std::size_t length);
    int ClearBinary(const char* name) { return SetBinary(name, nullptr, 0); }

    // What the setter of the same name would answer, without setting anything: an
    // operation asks before its first step, so that a value its record cannot hold
    // is refused while nothing has changed yet.
    int CheckLong(const char* name) const;
    int CheckShort(const char* name) const;
    int CheckBool(const char* name) const;
    int CheckText(const char* name, const char* text, std::size_t length) const;
    int CheckBinary(const char* name, std::size_t length) const;

    // Takes the value of every field that `other` has under the same name and type
    // (a record of one layout into another); the other fields keep their values.
    int CopyFieldsFrom(const CRecordSchema& other);

    // The fields in record order, for walking a record without knowing its table.
    std::size_t FieldCount() const { return m_table ? m_table->fields.size() : 0; }
    const qvb::catalogue::FieldDef& FieldAt(std::size_t i) const { return m_table->fields[i]; }
    int GetTextAt(std::size_t i, std::string* value) const;

protected:
    // Packs the values for a write: QVB_NO_SCHEMA when no schema is bound.
    int Pack(const std::uint8_t** record, std::size_t* length);
    // The buffer to read a record into: at least `capacity` bytes, and never less
    // than the largest record read so far, so that a second read is rare.
    std::uint8_t* ReadBuffer(std::size_t capacity);
    std::size_t ReadCapacity() const { return m_buffers[m_readIn].size(); }
    // Takes the values from a record read into the buffer.
    int Unpack(std::size_t length);
    // Takes the fixed-width values only; the variable fields keep theirs.
    int UnpackFixedPart(std::size_t length);
    // Gives back the scratch room that a record larger than usual (a blob) took to
    // read or pack; the field values stay. Reads and writes call it once done.
    void ReleaseLargeScratch();

private:
    const qvb::catalogue::FieldDef* Find(const char* name) const;
    const qvb::catalogue::FieldDef* FindOfType(const char* name, const std::uint16_t* types,
                                               std::size_t count, int* error) const;
    template <typename T, std::size_t N>
    int GetFixed(const char* name, const std::uint16_t (&types)[N], T* value) const;
    // The text field `name` and the length a text takes in it (up to its first zero
    // byte), or the reason it cannot be set.
    const qvb::catalogue::FieldDef* TextField(const char* name, const char* text, std::size_t* length,
                                              int* error) const;
    template <typename T, std::size_t N>
    int SetFixed(const char* name, const std::uint16_t (&types)[N], T value, bool ignoreMissing);
    std::uint8_t* FixedAt(const qvb::catalogue::FieldDef& field);
    const std::uint8_t* FixedAt(const qvb::catalogue::FieldDef& field) const;

    std::vector<std::uint8_t> m_fixed;     // the fixed part
    // Where a variable field lies in the record read.
    struct Span {
        std::size_t offset = 0;
        std::size_t length = 0;
    };
    // A variable field's value: in the record read while taken lazily.
    std::string_view VariableValue(std::size_t position) const;
    // Copies the values taken lazily out of the record read.
    void Materialize();

    std::vector<std::string> m_variable;   // the variable fields in order, once copied out
    std::vector<Span> m_spans;             // ... or where they lie in m_buffers[m_lazyIn]
    std::vector<Span> m_pendingSpans;      // where a read gathers them before they count
    int m_lazyIn = -1;                     // the buffer the values lie in, -1: copied out
    std::vector<const qvb::catalogue::FieldDef*> m_variableFields;  // in record order
    struct FoundField {
        const char* name = nullptr;
        const qvb::catalogue::FieldDef* field = nullptr;
    };
    mutable std::array<FoundField, 16> m_foundFields;  // recent lookups by name
    std::unordered_map<std::string_view, const qvb::catalogue::FieldDef*> m_fieldsByName;
    // Records read, sized for the largest one; a read takes the one the values do
    // not lie in.
    std::array<std::vector<std::uint8_t>, 2> m_buffers;
    int m_readIn = 0;
    std::vector<std::uint8_t> m_packed;    // a record to write; apart, so that reads keep their room
    std::size_t m_readCapacity = 0;
    bool m_modified = false;
};
