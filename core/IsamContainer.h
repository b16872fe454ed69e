// The container file of one database: every table is a member of it.
#pragma once

#include <string>

#include "core/IsamFile.h"

class CIsamContainer : public CIsamFile {
    DECLARE_DYNAMIC(CIsamContainer)

public:
    // The container's path: the directory and the file name ("demo.Prj").
    std::string FullName() const { return FormatMemberName("%s%s"); }

    int Create();
    int Open();
    int Close();
    // Whether the open container holds the table of that name.
    int HoldsMember(const char* table, bool* held);
};
