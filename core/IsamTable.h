// One table of the table list: its data file and index files as members of the
// database's container, one current record and one buffer. Every operation
// selects the database's engine instance first and returns 0 or an error code.
//
// Index numbers count from 1 (I1 is the unique primary key). Key values are in
// record layout: 32-bit identifiers little-endian, as they are in memory.
#pragma once

#include <cstdint>
#include <vector>

#include "core/RecordSchema.h"

class CIsamTable : public CRecordSchema {
    DECLARE_DYNAMIC(CIsamTable)

public:
    // Files: each takes the bound definition, with member names formatted from the
    // owning container's name at the time of the call.
    int Create();  // creates the members and leaves them open
    int Open();
    int Close();   // QVB_TABLE_NOT_OPEN when it is not open
    int Rebuild(); // the table must be closed
    // The container was closed under the table: its files are gone with it.
    void Forget() { m_fileNumber = isam::kNoFile; m_positioned = false; }
    // Gives the locale to the data file and every index file.
    int SetLocale(std::uint32_t lcid);

    // Positioning; the record found becomes the current one.
    int First(int index);
    int Next(int index);
    int Last(int index);
    // The record whose key begins with the value; `length` 0 = the whole key.
    int Find(int index, const void* key, std::size_t length);
    int FindId(std::uint32_t id) { return Find(1, &id, sizeof id); }

    // Records.
    int ReadCurrent();
    int ReadAt(isam::Position position);
    // Reads the current record's fixed-width fields only; the variable fields keep
    // the values of the table's last read or set.
    int ReadCurrentFixedPart();
    int Add();
    int Rewrite();
    int Delete();

    // Key prefixes.
    int CountByPrefix(int index, const void* prefix, std::size_t length, std::uint32_t* count);
    int FetchByPrefix(int index, const void* prefix, std::size_t length, std::uint32_t wanted,
                      std::vector<isam::Position>* positions);
    // Count and fetch from one scan; reads of the positions in order are cheap.
    int ScanByPrefix(int index, const void* prefix, std::size_t length, std::uint32_t* count,
                     std::vector<isam::Position>* positions);

private:
    template <typename Call>
    int OnEngine(Call call);
    isam::FileNumber IndexFile(int index) const;
    // Runs a call that positions on a record, which becomes the current one.
    template <typename Call>
    int Position(Call call);
    // Reads the record at `position` into the buffer and unpacks it with `unpack`.
    template <typename Unpacking>
    int Read(isam::Position position, Unpacking unpack);

    isam::Position m_position = 0;
    bool m_positioned = false;
};
