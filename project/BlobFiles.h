// A disk file kept in a binary (FT_4STRING) field of a table's current record:
// packed into the field as a one-entry zip archive, and written out to disk again,
// unpacked when the field holds such an archive. Binary-data records and the old
// module records keep files this way.
#pragma once

#include <cstdint>

#include "core/IsamTable.h"

namespace qvb {

// What an empty input file becomes.
enum class EmptyInput {
    StoredEmpty,  // an empty field: no archive is made
    Packed,       // an archive whose one entry is empty, as for any other file
};

// The length of the field as stored (for a packed file, the archive's length).
int storedLength(const CIsamTable& table, const char* field, std::uint32_t* length);

// Packs the file at `path` into the field of the current record, which the caller
// has found and read, and rewrites the record; a null path empties the field.
// 0, the engine's status, or QVB_INPUT_OPEN_FAILED / QVB_ARCHIVE_FAILED. The stored
// record changes only when everything before the rewrite has worked.
int packFileIntoRecord(CIsamTable& table, const char* field, const char* path, EmptyInput empty);

// Writes the field of the current record, which the caller has found and read, to
// `path`: the entry of the archive it holds, or its bytes as stored when it holds
// no archive that can be extracted. An empty field writes nothing, so an existing
// file at `path` stays as it is. 0, or QVB_OUTPUT_CREATE_FAILED / _WRITE_ / _CLOSE_.
int unpackRecordToFile(const CIsamTable& table, const char* field, const char* path);

}  // namespace qvb
