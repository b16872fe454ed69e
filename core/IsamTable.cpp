#include "core/IsamTable.h"

#include "isam/IsamErrors.h"

IMPLEMENT_DYNAMIC(CIsamTable, CRecordSchema)

template <typename Call>
int CIsamTable::OnEngine(Call call) {
    if (!HasSchema()) return QVB_NO_SCHEMA;
    const int selected = SelectInstance();
    return selected != isam::ISAM_OK ? selected : call();
}

isam::FileNumber CIsamTable::IndexFile(int index) const {
    if (!IsOpen() || index < 1 || static_cast<std::size_t>(index) > m_definition.indexes.size()) {
        return isam::kNoFile;
    }
    return static_cast<isam::FileNumber>(m_fileNumber + index);
}

// ---- Files ------------------------------------------------------------------------------

int CIsamTable::Create() {
    if (!HasSchema()) return QVB_NO_SCHEMA;
    if (IsOpen()) return isam::ISAM_ALREADY_OPEN;
    FormatNames();
    return OnEngine([&] { return isam::createFile(m_definition, &m_fileNumber); });
}

int CIsamTable::Open() {
    if (!HasSchema()) return QVB_NO_SCHEMA;
    if (IsOpen()) return isam::ISAM_ALREADY_OPEN;
    FormatNames();
    m_positioned = false;
    return OnEngine([&] { return isam::openFile(m_definition, &m_fileNumber); });
}

int CIsamTable::Close() {
    if (!HasSchema()) return QVB_NO_SCHEMA;
    if (!IsOpen()) return QVB_TABLE_NOT_OPEN;
    return OnEngine([&] {
        const int rc = isam::closeFile(m_fileNumber);
        if (rc == isam::ISAM_OK) m_fileNumber = isam::kNoFile;
        return rc;
    });
}

int CIsamTable::Rebuild() {
    if (!HasSchema()) return QVB_NO_SCHEMA;
    FormatNames();
    return OnEngine([&] { return isam::rebuildFile(m_definition); });
}

int CIsamTable::SetLocale(std::uint32_t lcid) {
    return OnEngine([&] {
        for (std::size_t file = 0; file <= m_definition.indexes.size(); ++file) {
            const isam::FileNumber number =
                IsOpen() ? static_cast<isam::FileNumber>(m_fileNumber + file) : isam::kNoFile;
            const int rc = isam::setFileLocale(number, lcid);
            if (rc != isam::ISAM_OK) return rc;
        }
        return isam::ISAM_OK;
    });
}

// ---- Positioning ------------------------------------------------------------------------

template <typename Call>
int CIsamTable::Position(Call call) {
    return OnEngine([&] {
        isam::Position position = 0;
        const int rc = call(&position);
        m_positioned = rc == isam::ISAM_OK;
        if (m_positioned) m_position = position;
        return rc;
    });
}

int CIsamTable::First(int index) {
    return Position([&](isam::Position* at) { return isam::firstRecord(IndexFile(index), at); });
}

int CIsamTable::Next(int index) {
    return Position([&](isam::Position* at) { return isam::nextRecord(IndexFile(index), at); });
}

int CIsamTable::Last(int index) {
    return Position([&](isam::Position* at) { return isam::lastRecord(IndexFile(index), at); });
}

int CIsamTable::Find(int index, const void* key, std::size_t length) {
    return Position([&](isam::Position* at) { return isam::findEqual(IndexFile(index), key, length, at); });
}

// ---- Records ----------------------------------------------------------------------------

int CIsamTable::ReadCurrent() {
    if (!m_positioned) return isam::ISAM_NO_CURRENT_RECORD;
    return ReadAt(m_position);
}

template <typename Unpacking>
int CIsamTable::Read(isam::Position position, Unpacking unpack) {
    if (!HasSchema()) return QVB_NO_SCHEMA;
    return Position([&](isam::Position* at) {
        *at = position;
        std::size_t length = 0;
        std::uint8_t* buffer = ReadBuffer(0);
        int rc = isam::readRecord(m_fileNumber, position, buffer, ReadCapacity(), &length);
        if (rc == isam::ISAM_BUFFER_TOO_SHORT) {
            // Longer than any record read before: once more, with room for it.
            buffer = ReadBuffer(length);
            rc = isam::readRecord(m_fileNumber, position, buffer, ReadCapacity(), &length);
        }
        return rc == isam::ISAM_OK ? unpack(length) : rc;
    });
}

int CIsamTable::ReadAt(isam::Position position) {
    return Read(position, [&](std::size_t length) { return Unpack(length); });
}

int CIsamTable::ReadCurrentFixedPart() {
    if (!m_positioned) return isam::ISAM_NO_CURRENT_RECORD;
    return Read(m_position, [&](std::size_t length) { return UnpackFixedPart(length); });
}

int CIsamTable::Add() {
    const std::uint8_t* record = nullptr;
    std::size_t length = 0;
    const int packed = Pack(&record, &length);
    if (packed != isam::ISAM_OK) return packed;
    const int rc =
        Position([&](isam::Position* at) { return isam::addRecord(m_fileNumber, record, length, at); });
    ReleaseLargeScratch();
    return rc;
}

int CIsamTable::Rewrite() {
    const std::uint8_t* record = nullptr;
    std::size_t length = 0;
    const int packed = Pack(&record, &length);
    if (packed != isam::ISAM_OK) return packed;
    const int rc = OnEngine([&] { return isam::rewriteRecord(m_fileNumber, record, length); });
    ReleaseLargeScratch();
    return rc;
}

int CIsamTable::Delete() {
    return OnEngine([&] {
        const int rc = isam::deleteRecord(m_fileNumber);
        if (rc == isam::ISAM_OK) m_positioned = false;
        return rc;
    });
}

// ---- Key prefixes -----------------------------------------------------------------------

int CIsamTable::CountByPrefix(int index, const void* prefix, std::size_t length,
                              std::uint32_t* count) {
    return OnEngine([&] { return isam::countByPrefix(IndexFile(index), prefix, length, count); });
}

int CIsamTable::ScanByPrefix(int index, const void* prefix, std::size_t length, std::uint32_t* count,
                             std::vector<isam::Position>* positions) {
    return OnEngine([&] { return isam::scanByPrefix(IndexFile(index), prefix, length, count, positions); });
}

int CIsamTable::FetchByPrefix(int index, const void* prefix, std::size_t length,
                              std::uint32_t wanted, std::vector<isam::Position>* positions) {
    return OnEngine([&] {
        positions->resize(wanted);
        std::uint32_t fetched = 0;
        const int rc = isam::fetchByPrefix(IndexFile(index), prefix, length, wanted,
                                           positions->data(), &fetched);
        positions->resize(rc == isam::ISAM_OK ? fetched : 0);
        return rc;
    });
}
