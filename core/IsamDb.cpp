#include "core/IsamDb.h"

#include <algorithm>
#include <cstring>

#include "isam/IsamErrors.h"

IMPLEMENT_DYNAMIC(CIsamDb, CIsamFile)

bool CIsamDb::IsRegistered(const CIsamFile* file) const {
    return file && std::find(m_files.begin(), m_files.end(), file) != m_files.end();
}

int CIsamDb::Register(CIsamFile* file) {
    if (!file) return isam::ISAM_BAD_PARAMETER;
    if (IsRegistered(file)) return isam::ISAM_ALREADY_OPEN;
    m_files.push_back(file);
    file->SetInstanceName(m_instanceName);
    file->SetDirectory(m_directory);
    return isam::ISAM_OK;
}

int CIsamDb::Unregister(CIsamFile* file) {
    const auto it = std::find(m_files.begin(), m_files.end(), file);
    if (!file || it == m_files.end()) return QVB_NOT_REGISTERED;
    m_files.erase(it);
    return isam::ISAM_OK;
}

int CIsamDb::RegisterContainer(CIsamContainer* container) {
    // The container is always the instance's first file.
    if (!m_files.empty()) return isam::ISAM_ALREADY_OPEN;
    return Register(container);
}

int CIsamDb::RegisterTable(CIsamTable* table) { return Register(table); }

int CIsamDb::UnregisterContainer(CIsamContainer* container) { return Unregister(container); }

int CIsamDb::UnregisterTable(CIsamTable* table) { return Unregister(table); }

int CIsamDb::RebuildNamedFile(const std::string& name) {
    if (name.empty()) return QVB_EMPTY_FILE_NAME;
    const int rc = SelectInstance();
    return rc != isam::ISAM_OK ? rc : isam::rebuildContainer(name.c_str(), "");
}

// ---- Resources ------------------------------------------------------------------------

// Runs an engine call on one of this instance's tables.
template <typename Call>
int CIsamDb::OnTable(const CIsamTable& table, Call call) {
    if (!IsRegistered(&table)) return QVB_NOT_REGISTERED;
    const int rc = table.SelectInstance();
    return rc != isam::ISAM_OK ? rc : call(table.FileNumber());
}

int CIsamDb::WriteResource(const CIsamTable& table, std::uint32_t number, const void* data,
                           std::size_t length, bool replace) {
    return OnTable(table, [&](isam::FileNumber file) {
        const int rc = m_resource.Build(number, data, length);
        if (rc != isam::ISAM_OK) return rc;
        const auto write = replace ? isam::updateResource : isam::addResource;
        return write(file, CIsamResource::kType, number, m_resource.Record(), m_resource.RecordLength());
    });
}

int CIsamDb::AddResource(const CIsamTable& table, std::uint32_t number, const void* data,
                         std::size_t length) {
    return WriteResource(table, number, data, length, false);
}

int CIsamDb::UpdateResource(const CIsamTable& table, std::uint32_t number, const void* data,
                            std::size_t length) {
    return WriteResource(table, number, data, length, true);
}

int CIsamDb::GetResource(const CIsamTable& table, std::uint32_t number, void* data,
                         std::size_t* length) {
    if (!data && *length) return isam::ISAM_BAD_PARAMETER;
    return OnTable(table, [&](isam::FileNumber file) {
        std::size_t stored = 0;
        int rc = isam::readResource(file, CIsamResource::kType, number, m_resource.ReadArea(),
                                    CIsamResource::ReadCapacity(), &stored);
        // A resource longer than any this library writes is not one of its own.
        if (rc == isam::ISAM_BUFFER_TOO_SHORT) return isam::ISAM_DAMAGED;
        const std::uint8_t* content = nullptr;
        std::size_t contentLength = 0;
        if (rc == isam::ISAM_OK) rc = m_resource.Parse(stored, &content, &contentLength);
        if (rc != isam::ISAM_OK) return rc;
        if (contentLength > *length) return QVB_RESOURCE_BUFFER_SHORT;
        if (contentLength) std::memcpy(data, content, contentLength);
        *length = contentLength;
        return isam::ISAM_OK;
    });
}

int CIsamDb::ResourceNumbers(const CIsamTable& table, std::vector<std::uint32_t>* numbers) {
    return OnTable(table, [&](isam::FileNumber file) {
        return isam::listResources(file, CIsamResource::kType, numbers);
    });
}

int CIsamDb::DeleteResource(const CIsamTable& table, std::uint32_t number) {
    return OnTable(table, [&](isam::FileNumber file) {
        return isam::deleteResource(file, CIsamResource::kType, number);
    });
}
