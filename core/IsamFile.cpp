#include "core/IsamFile.h"

IMPLEMENT_DYNAMIC(CIsamFile, CObject)

void CIsamFile::Define(const qvb::catalogue::TableDef& table) {
    m_table = &table;
    FormatNames();
}

void CIsamFile::FormatNames() {
    if (!m_table) return;
    const qvb::catalogue::TableDef& table = *m_table;
    m_definition = qvb::catalogue::makeFileDefinition(table, std::string());
    m_definition.name = FormatMemberName(table.filePattern);
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        m_definition.indexes[i].name = FormatMemberName(table.indexes[i].filePattern);
    }
}

void CIsamFile::ReleaseDefinition() {
    m_table = nullptr;
    m_definition = isam::FileDefinition();
}

std::string CIsamFile::FormatMemberName(const char* pattern) const {
    if (m_owner) {
        return qvb::catalogue::formatMemberName(pattern, m_owner->FileName(), "",
                                                qvb::catalogue::kMemberSeparator);
    }
    return qvb::catalogue::formatMemberName(pattern, m_directory, m_fileName, ' ');
}

int CIsamFile::SelectInstance() const { return isam::selectInstance(m_instanceName.c_str()); }
