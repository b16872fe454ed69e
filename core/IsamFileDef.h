// One engine file definition and the file number the engine gave it.
#pragma once

#include "isam/Isam.h"

class CIsamFileDef {
public:
    virtual ~CIsamFileDef() = default;

    const isam::FileDefinition& Definition() const { return m_definition; }
    // The data file's number (a table) or the container's; kNoFile while closed.
    isam::FileNumber FileNumber() const { return m_fileNumber; }
    bool IsOpen() const { return m_fileNumber != isam::kNoFile; }

protected:
    isam::FileDefinition m_definition;
    isam::FileNumber m_fileNumber = isam::kNoFile;
};
