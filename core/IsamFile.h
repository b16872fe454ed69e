// One named engine file: the instance it belongs to, where it lives, and who owns
// it. A table is owned by its container, whose name its member names are made of.
#pragma once

#include <string>

#include "core/Catalogue.h"
#include "core/IsamFileDef.h"
#include "qvb/CObject.h"

class CIsamFile : public CIsamFileDef, public CObject {
    DECLARE_DYNAMIC(CIsamFile)

public:
    // Takes a table's definition and formats its member names.
    virtual void Define(const qvb::catalogue::TableDef& table);
    virtual void ReleaseDefinition();
    // Member names: an owned file fills the pattern with the owner's name, an
    // empty text and "!"; a file of its own with the directory, its name and a blank.
    virtual std::string FormatMemberName(const char* pattern) const;

    // Formats the member names again, from the owner's name as it is now.
    void FormatNames();

    // Makes this file's engine instance the current one; every engine call needs it.
    int SelectInstance() const;

    void SetInstanceName(const std::string& name) { m_instanceName = name; }
    const std::string& InstanceName() const { return m_instanceName; }
    void SetDirectory(const std::string& directory) { m_directory = directory; }
    const std::string& Directory() const { return m_directory; }
    void SetFileName(const std::string& name) { m_fileName = name; }
    const std::string& FileName() const { return m_fileName; }
    void SetOwner(const CIsamFile* owner) { m_owner = owner; }
    const CIsamFile* Owner() const { return m_owner; }
    // The table definition bound by Define, or null.
    const qvb::catalogue::TableDef* Table() const { return m_table; }

protected:
    std::string m_instanceName;
    std::string m_directory;
    std::string m_fileName;
    const CIsamFile* m_owner = nullptr;
    const qvb::catalogue::TableDef* m_table = nullptr;
};
