#include "core/RecordSchema.h"

#include <algorithm>
#include <cstring>

#include "isam/IsamErrors.h"

using namespace qvb::catalogue;

IMPLEMENT_DYNAMIC(CRecordSchema, CIsamFile)

namespace {

constexpr std::uint16_t kLongTypes[] = {FT_INT4U, FT_INT4, FT_DATE};
constexpr std::uint16_t kShortTypes[] = {FT_INT2U, FT_INT2};
constexpr std::uint16_t kBoolTypes[] = {FT_BOOL};
constexpr std::uint16_t kTextTypes[] = {FT_STRING, FT_FSTRING};
constexpr std::uint16_t kBinaryTypes[] = {FT_4STRING};

// The fixed image also covers fields that an old layout places past its stored
// record length, so that reading such a record never goes out of bounds.
std::size_t fixedImageSize(const TableDef& table) {
    std::size_t size = table.recordLength;
    for (const FieldDef& field : table.fields) {
        if (isFixedWidth(field.type)) size = std::max<std::size_t>(size, field.position + field.length);
    }
    return size;
}

std::size_t variableCount(const TableDef& table) {
    std::size_t count = 0;
    for (const FieldDef& field : table.fields) {
        if (!isFixedWidth(field.type)) ++count;
    }
    return count;
}

// The buffer holds the fixed part and every text at its limit; binaries grow it.
std::size_t bufferSize(const TableDef& table) {
    std::size_t size = fixedImageSize(table);
    for (const FieldDef& field : table.fields) {
        if (field.type == FT_STRING) size += field.length + 1u;
        if (field.type == FT_4STRING) size += 4;
    }
    return size;
}

template <typename T>
T loadLittleEndian(const std::uint8_t* p) {
    T value = 0;
    for (std::size_t i = sizeof(T); i > 0; --i) value = static_cast<T>(value << 8 | p[i - 1]);
    return value;
}

template <typename T>
void storeLittleEndian(std::uint8_t* p, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) p[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

bool isSigned(std::uint16_t type) { return type == FT_INT4 || type == FT_INT2; }

// Scratch up to this size is kept from one record to the next; beyond it, it is
// given back after use, so that one large blob does not stay with the table.
constexpr std::size_t kScratchKept = std::size_t{1} << 20;

}  // namespace

void CRecordSchema::Define(const TableDef& table) {
    CIsamFile::Define(table);
    m_fixed.assign(fixedImageSize(table), 0);
    m_variable.assign(variableCount(table), std::string());
    m_spans.assign(m_variable.size(), Span());
    m_pendingSpans.assign(m_variable.size(), Span());
    m_lazyIn = -1;
    m_readIn = 0;
    m_variableFields.clear();
    for (const FieldDef& field : table.fields) {
        if (!isFixedWidth(field.type)) m_variableFields.push_back(&field);
    }
    m_foundFields.fill({});
    m_fieldsByName.clear();
    for (const FieldDef& field : table.fields) m_fieldsByName.emplace(field.name, &field);
    m_readCapacity = bufferSize(table);
    m_buffers[0].assign(m_readCapacity, 0);
    m_buffers[1].clear();
    m_modified = false;
}

void CRecordSchema::ReleaseDefinition() {
    CIsamFile::ReleaseDefinition();
    m_fixed.clear();
    m_variable.clear();
    m_spans.clear();
    m_pendingSpans.clear();
    m_lazyIn = -1;
    m_readIn = 0;
    m_variableFields.clear();
    m_foundFields.fill({});
    m_fieldsByName.clear();
    for (std::vector<std::uint8_t>& buffer : m_buffers) std::vector<std::uint8_t>().swap(buffer);
    m_packed.clear();
    m_packed.shrink_to_fit();
}

const FieldDef* CRecordSchema::Find(const char* name) const {
    if (!m_table || !name) return nullptr;
    // Operations name their fields with literals, so the same name usually comes
    // at the same address: remember where it was found, and check the name. Any
    // other name costs one hash lookup.
    FoundField& slot = m_foundFields[(reinterpret_cast<std::uintptr_t>(name) >> 3) % m_foundFields.size()];
    if (slot.name == name && std::strcmp(slot.field->name, name) == 0) return slot.field;
    const auto found = m_fieldsByName.find(name);
    if (found == m_fieldsByName.end()) return nullptr;
    slot = {name, found->second};
    return found->second;
}

const FieldDef* CRecordSchema::FindOfType(const char* name, const std::uint16_t* types,
                                          std::size_t count, int* error) const {
    const FieldDef* field = Find(name);
    *error = QVB_NO_SUCH_FIELD;
    if (!field || std::find(types, types + count, field->type) == types + count) return nullptr;
    *error = isam::ISAM_OK;
    return field;
}

std::uint8_t* CRecordSchema::FixedAt(const FieldDef& field) { return m_fixed.data() + field.position; }

const std::uint8_t* CRecordSchema::FixedAt(const FieldDef& field) const {
    return m_fixed.data() + field.position;
}

template <typename T, std::size_t N>
int CRecordSchema::GetFixed(const char* name, const std::uint16_t (&types)[N], T* value) const {
    int error = 0;
    const FieldDef* field = FindOfType(name, types, N, &error);
    if (field && value) *value = loadLittleEndian<T>(FixedAt(*field));
    return error;
}

template <typename T, std::size_t N>
int CRecordSchema::SetFixed(const char* name, const std::uint16_t (&types)[N], T value,
                            bool ignoreMissing) {
    if (ignoreMissing && !Find(name)) return isam::ISAM_OK;
    int error = 0;
    const FieldDef* field = FindOfType(name, types, N, &error);
    if (!field) return error;
    storeLittleEndian(FixedAt(*field), value);
    m_modified = true;
    return isam::ISAM_OK;
}

int CRecordSchema::GetLong(const char* name, std::uint32_t* value) const {
    return GetFixed(name, kLongTypes, value);
}

int CRecordSchema::SetLong(const char* name, std::uint32_t value) {
    return SetFixed(name, kLongTypes, value, false);
}

int CRecordSchema::GetShort(const char* name, std::uint16_t* value) const {
    return GetFixed(name, kShortTypes, value);
}

// A missing field is no error for the 16-bit and the flag setters.
int CRecordSchema::SetShort(const char* name, std::uint16_t value) {
    return SetFixed(name, kShortTypes, value, true);
}

int CRecordSchema::GetBool(const char* name, bool* value) const {
    std::uint8_t byte = 0;
    const int rc = GetFixed(name, kBoolTypes, &byte);
    if (rc == isam::ISAM_OK && value) *value = byte != 0;
    return rc;
}

int CRecordSchema::SetBool(const char* name, bool value) {
    return SetFixed(name, kBoolTypes, static_cast<std::uint8_t>(value ? 1 : 0), true);
}

int CRecordSchema::GetText(const char* name, std::string* value) const {
    const FieldDef* field = Find(name);
    if (!field) return QVB_NO_SUCH_FIELD;
    return GetTextAt(static_cast<std::size_t>(field - m_table->fields.begin()), value);
}

int CRecordSchema::GetTextAt(std::size_t i, std::string* value) const {
    if (!m_table || i >= m_table->fields.size()) return QVB_NO_SUCH_FIELD;
    const FieldDef& field = m_table->fields[i];
    std::string text;
    const std::uint8_t* at = isFixedWidth(field.type) ? FixedAt(field) : nullptr;
    switch (field.type) {
        case FT_STRING:
        case FT_4STRING:
            text = VariableValue(field.position);
            break;
        case FT_FSTRING: {
            const void* end = std::memchr(at, 0, field.length);
            text.assign(reinterpret_cast<const char*>(at),
                        end ? static_cast<const std::uint8_t*>(end) - at : field.length);
            break;
        }
        case FT_BOOL:
            text = std::to_string(*at);
            break;
        case FT_INT2U:
        case FT_INT2: {
            const std::uint16_t v = loadLittleEndian<std::uint16_t>(at);
            text = isSigned(field.type) ? std::to_string(static_cast<std::int16_t>(v)) : std::to_string(v);
            break;
        }
        case FT_INT4U:
        case FT_INT4:
        case FT_DATE: {
            const std::uint32_t v = loadLittleEndian<std::uint32_t>(at);
            text = isSigned(field.type) ? std::to_string(static_cast<std::int32_t>(v)) : std::to_string(v);
            break;
        }
        default:
            return QVB_NO_SUCH_FIELD;
    }
    if (value) *value = std::move(text);
    return isam::ISAM_OK;
}

const FieldDef* CRecordSchema::TextField(const char* name, const char* text, std::size_t* length,
                                         int* error) const {
    const FieldDef* field = FindOfType(name, kTextTypes, std::size(kTextTypes), error);
    if (!field) return nullptr;
    if (!text) *length = 0;
    // A text ends at its first zero byte, as it will when it is read back.
    if (const void* end = *length ? std::memchr(text, 0, *length) : nullptr) {
        *length = static_cast<std::size_t>(static_cast<const char*>(end) - text);
    }
    if (*length > field->length) {
        *error = isam::ISAM_RECORD_TOO_LONG;
        return nullptr;
    }
    return field;
}

int CRecordSchema::SetText(const char* name, const char* text, std::size_t length) {
    int error = 0;
    const FieldDef* field = TextField(name, text, &length, &error);
    if (!field) return error;
    if (field->type == FT_FSTRING) {
        std::uint8_t* at = FixedAt(*field);
        std::memset(at, 0, field->length);
        if (length) std::memcpy(at, text, length);
    } else {
        Materialize();
        m_variable[field->position].assign(text ? text : "", length);
    }
    m_modified = true;
    return isam::ISAM_OK;
}

int CRecordSchema::CheckText(const char* name, const char* text, std::size_t length) const {
    int error = 0;
    TextField(name, text, &length, &error);
    return error;
}

int CRecordSchema::CheckLong(const char* name) const {
    int error = 0;
    FindOfType(name, kLongTypes, std::size(kLongTypes), &error);
    return error;
}

int CRecordSchema::CheckShort(const char* name) const {
    int error = 0;
    if (Find(name)) FindOfType(name, kShortTypes, std::size(kShortTypes), &error);
    return error;
}

int CRecordSchema::CheckBool(const char* name) const {
    int error = 0;
    if (Find(name)) FindOfType(name, kBoolTypes, std::size(kBoolTypes), &error);
    return error;
}

int CRecordSchema::CheckBinary(const char* name, std::size_t length) const {
    int error = 0;
    FindOfType(name, kBinaryTypes, std::size(kBinaryTypes), &error);
    return error == isam::ISAM_OK && length > UINT32_MAX ? isam::ISAM_RECORD_TOO_LONG : error;
}

int CRecordSchema::GetBinary(const char* name, std::string* value) const {
    int error = 0;
    const FieldDef* field = FindOfType(name, kBinaryTypes, std::size(kBinaryTypes), &error);
    if (field && value) *value = VariableValue(field->position);
    return error;
}

int CRecordSchema::SetBinary(const char* name, const void* data, std::size_t length) {
    int error = 0;
    const FieldDef* field = FindOfType(name, kBinaryTypes, std::size(kBinaryTypes), &error);
    if (!field) return error;
    if (length > UINT32_MAX) return isam::ISAM_RECORD_TOO_LONG;
    Materialize();
    m_variable[field->position].assign(data ? static_cast<const char*>(data) : "", data ? length : 0);
    m_modified = true;
    return isam::ISAM_OK;
}

int CRecordSchema::CopyFieldsFrom(const CRecordSchema& other) {
    if (!m_table || !other.m_table) return QVB_NO_SCHEMA;
    Materialize();
    for (const FieldDef& field : m_table->fields) {
        const FieldDef* source = findField(*other.m_table, field.name);
        if (!source || source->type != field.type) continue;
        if (isFixedWidth(field.type)) {
            if (source->length != field.length) continue;
            std::memcpy(FixedAt(field), other.FixedAt(*source), field.length);
            continue;
        }
        const std::string_view value = other.VariableValue(source->position);
        if (field.type == FT_STRING && value.size() > field.length) return isam::ISAM_RECORD_TOO_LONG;
        m_variable[field.position] = value;
    }
    m_modified = true;
    return isam::ISAM_OK;
}

void CRecordSchema::ReleaseLargeScratch() {
    const std::size_t usual = m_table ? bufferSize(*m_table) : 0;
    for (int i = 0; i < 2; ++i) {
        std::vector<std::uint8_t>& buffer = m_buffers[static_cast<std::size_t>(i)];
        if (buffer.size() <= kScratchKept || buffer.size() <= usual) continue;
        if (m_lazyIn == i) Materialize();
        std::vector<std::uint8_t>(usual, 0).swap(buffer);
        m_readCapacity = usual;
    }
    if (m_packed.capacity() > kScratchKept) std::vector<std::uint8_t>().swap(m_packed);
}

int CRecordSchema::Pack(const std::uint8_t** record, std::size_t* length) {
    if (!m_table) return QVB_NO_SCHEMA;
    m_packed.assign(m_fixed.begin(), m_fixed.begin() + m_table->recordLength);
    for (const FieldDef* variable : m_variableFields) {
        const FieldDef& field = *variable;
        const std::string_view value = VariableValue(field.position);
        if (field.type == FT_4STRING) {
            std::uint8_t prefix[4];
            storeLittleEndian(prefix, static_cast<std::uint32_t>(value.size()));
            m_packed.insert(m_packed.end(), prefix, prefix + 4);
            m_packed.insert(m_packed.end(), value.begin(), value.end());
        } else {
            m_packed.insert(m_packed.end(), value.begin(), value.end());
            m_packed.push_back(0);
        }
    }
    *record = m_packed.data();
    *length = m_packed.size();
    return isam::ISAM_OK;
}

std::string_view CRecordSchema::VariableValue(std::size_t position) const {
    if (m_lazyIn < 0) return m_variable[position];
    const Span& span = m_spans[position];
    return std::string_view(
        reinterpret_cast<const char*>(m_buffers[static_cast<std::size_t>(m_lazyIn)].data()) + span.offset,
        span.length);
}

void CRecordSchema::Materialize() {
    if (m_lazyIn < 0) return;
    for (std::size_t i = 0; i < m_variable.size(); ++i) m_variable[i] = VariableValue(i);
    m_lazyIn = -1;
}

std::uint8_t* CRecordSchema::ReadBuffer(std::size_t capacity) {
    m_readIn = m_lazyIn == 0 ? 1 : 0;
    std::vector<std::uint8_t>& buffer = m_buffers[static_cast<std::size_t>(m_readIn)];
    m_readCapacity = std::max(m_readCapacity, capacity);
    if (buffer.size() < m_readCapacity) buffer.resize(m_readCapacity);
    return buffer.data();
}

int CRecordSchema::Unpack(std::size_t length) {
    if (!m_table) return QVB_NO_SCHEMA;
    const std::vector<std::uint8_t>& buffer = m_buffers[static_cast<std::size_t>(m_readIn)];
    const std::uint8_t* record = buffer.data();
    const std::size_t fixedLength = m_table->recordLength;
    if (length < fixedLength || length > buffer.size()) return isam::ISAM_RECORD_TOO_SHORT;
    // Everything is checked before anything is taken, so a malformed record
    // leaves the previous values in place.
    for (Span& span : m_pendingSpans) span = Span();
    std::size_t at = fixedLength;
    for (const FieldDef* variable : m_variableFields) {
        const FieldDef& field = *variable;
        if (at >= length) break;
        const std::size_t rest = length - at;
        Span& span = m_pendingSpans[field.position];
        if (field.type == FT_4STRING) {
            if (rest < 4) return isam::ISAM_RECORD_TOO_SHORT;
            const std::uint32_t n = loadLittleEndian<std::uint32_t>(record + at);
            if (n > rest - 4) return isam::ISAM_RECORD_TOO_SHORT;
            span = {at + 4, n};
            at += 4 + n;
        } else {
            const void* end = std::memchr(record + at, 0, rest);
            const std::size_t n = end ? static_cast<const std::uint8_t*>(end) - (record + at) : rest;
            // A stored text longer than its field was not written by this library.
            if (n > field.length) return isam::ISAM_DAMAGED;
            span = {at, n};
            at += end ? n + 1 : n;
        }
    }
    m_spans.swap(m_pendingSpans);
    m_lazyIn = m_readIn;
    return UnpackFixedPart(length);
}

int CRecordSchema::UnpackFixedPart(std::size_t length) {
    if (!m_table) return QVB_NO_SCHEMA;
    const std::vector<std::uint8_t>& buffer = m_buffers[static_cast<std::size_t>(m_readIn)];
    if (length < m_table->recordLength || length > buffer.size()) return isam::ISAM_RECORD_TOO_SHORT;
    std::fill(m_fixed.begin(), m_fixed.end(), 0);
    std::memcpy(m_fixed.data(), buffer.data(), std::min(length, m_fixed.size()));
    ReleaseLargeScratch();
    return isam::ISAM_OK;
}
