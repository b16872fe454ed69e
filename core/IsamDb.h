// An engine instance and the files registered with it: the container first, then
// the tables. Registering a file hands it the instance's name and directory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/IsamContainer.h"
#include "core/IsamResource.h"
#include "core/IsamTable.h"

class CIsamDb : public CIsamFile {
    DECLARE_DYNAMIC(CIsamDb)

public:
    virtual int RegisterContainer(CIsamContainer* container);
    virtual int RegisterTable(CIsamTable* table);
    virtual int UnregisterContainer(CIsamContainer* container);
    virtual int UnregisterTable(CIsamTable* table);
    // Rebuilds a closed container file by its full name; QVB_EMPTY_FILE_NAME for "".
    virtual int RebuildNamedFile(const std::string& name);

    bool IsRegistered(const CIsamFile* file) const;

    // Resource records, kept in `table`'s data file; QVB_NOT_REGISTERED when the
    // table is not one of this instance's files.
    int AddResource(const CIsamTable& table, std::uint32_t number, const void* data,
                    std::size_t length);
    int UpdateResource(const CIsamTable& table, std::uint32_t number, const void* data,
                       std::size_t length);
    // `*length` is the room in `data` on entry and the data's length on success;
    // QVB_RESOURCE_BUFFER_SHORT, copying nothing, when the stored data is longer.
    int GetResource(const CIsamTable& table, std::uint32_t number, void* data, std::size_t* length);
    int DeleteResource(const CIsamTable& table, std::uint32_t number);
    // The numbers of the resource records present, in ascending order.
    int ResourceNumbers(const CIsamTable& table, std::vector<std::uint32_t>* numbers);

protected:
    int Register(CIsamFile* file);
    template <typename Call>
    int OnTable(const CIsamTable& table, Call call);
    int WriteResource(const CIsamTable& table, std::uint32_t number, const void* data,
                      std::size_t length, bool replace);
    int Unregister(CIsamFile* file);

    std::vector<CIsamFile*> m_files;
    CIsamResource m_resource;
};
