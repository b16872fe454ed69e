// The ISAM engine: keyed record files held as members of one container file.
//
// Model. A process registers named instances; every call works on the instance
// selected last. An instance opens at most one container and hands out file
// numbers: one for the container, and for every open member (table) one for its
// data file followed by one for each of its indexes, in index order. Positioning
// calls take an index file number, record calls the data file number.
//
// Records are addressed by a 32-bit position. Each data file has one current
// record: the last one positioned on, read, or added. Rewrite and delete act on it.
//
// Keys. An index key is made of segments taken from the record: mode 1 takes bytes
// of the fixed part (an unsigned little-endian integer), mode 4 the leading bytes
// of the n-th variable field, padded with spaces. An index that allows duplicates
// appends the record's position, so its key length includes 4 more bytes.
// Key values passed to the engine are laid out like the key: the segments as they
// appear in the record, then, for a duplicate index, the position as a 4-byte
// little-endian integer. A shorter value is a prefix; it may end inside a text
// segment but not inside an integer segment or the position. Integer segments order
// by value, text segments by bytes, and a 250-byte text key with its position
// suffix (key length 254) by the index's locale when that is nonzero.
//
// Durability. Every write outside a batch is committed when the call returns. A
// batch groups calls into one commit; batches nest and the outermost end commits.
// A committed call survives a crash of the process; a power loss may lose the last
// commits but leaves the file consistent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "isam/IsamErrors.h"

namespace isam {

using FileNumber = std::uint16_t;
using Position = std::uint32_t;

constexpr FileNumber kNoFile = 65535;
// A member has at most this many indexes.
constexpr std::size_t kMostIndexes = 32;

enum SegmentMode : std::uint16_t {
    kSegmentFixed = 1,
    kSegmentVariableText = 4,
};

struct Segment {
    std::uint16_t position = 0;  // fixed-part offset (mode 1) or variable-field ordinal (mode 4)
    std::uint16_t length = 0;
    std::uint16_t mode = kSegmentFixed;
};

struct IndexDefinition {
    std::string name;  // member name, e.g. "demo.Prj!DialogI2.Qvi"
    std::uint16_t keyLength = 0;
    bool duplicates = false;
    std::uint16_t mode = 64;
    std::uint32_t extent = 1024;
    std::vector<Segment> segments;
};

// The variable part of a record: its fields in order. A text is zero-terminated and
// holds at most `limit` bytes before the terminator; a binary field is a 4-byte
// little-endian length followed by that many bytes, with no limit.
struct VariableField {
    bool binary = false;
    std::uint32_t limit = 0;
};

struct FileDefinition {
    std::string name;  // member name, e.g. "demo.Prj!Dialog"
    std::uint32_t recordLength = 0;  // fixed part
    std::uint16_t mode = 68;
    std::uint32_t extent = 1024;
    std::vector<VariableField> variableFields;
    std::vector<IndexDefinition> indexes;
};

enum class SearchMode {
    Equal,
    Greater,
    GreaterOrEqual,
    Less,
    LessOrEqual,
};

// ---- Instances -------------------------------------------------------------------

// ISAM_INSTANCE_TAKEN when a live instance already has the name.
int registerInstance(const char* name);
// Closes whatever the instance has open (committing) and forgets it.
int unregisterInstance(const char* name);
int selectInstance(const char* name);
// Sizes the selected instance. `files` bounds its file numbers; the other numbers
// are kept for the record and do not limit anything.
int initialiseInstance(int buffers, int files, int sectors, int dataBuffers, int userProfile,
                       int reserved1, int reserved2, int reserved3);

// ---- Container -------------------------------------------------------------------

// Creates a new container file and leaves it open. ISAM_FILE_EXISTS when the path
// exists. `mode` must be the container mode (582).
int createContainer(const char* path, std::uint16_t mode, std::uint32_t extent, FileNumber* file);
int openContainer(const char* path, std::uint16_t mode, FileNumber* file);
// Commits what is pending, closes every member still open and the container. An
// open batch stays open: what is written after the next open joins it.
int closeContainer();
// Checks a closed container's integrity, rebuilds damaged indexes, and compacts it.
// `parameters` is accepted for compatibility and must be empty or null.
int rebuildContainer(const char* path, const char* parameters);

// ---- Members -----------------------------------------------------------------------

// Creates the member's data and index files in the open container and opens them.
int createFile(const FileDefinition& definition, FileNumber* dataFile);
int openFile(const FileDefinition& definition, FileNumber* dataFile);
// Whether the open container holds a member of that name ("Modul", or a full
// member name such as "demo.Prj!Modul"), open or not.
int holdsMember(const char* name, bool* held);
int closeFile(FileNumber dataFile);
// Removes a closed member and its indexes from the open container.
int deleteFile(const FileDefinition& definition);
// Recomputes every key of a closed member from its records under `definition`
// (which the member adopts) and rebuilds its indexes in the locales set on them.
int rebuildFile(const FileDefinition& definition);
// The locale that orders an index's 254-byte text keys. Setting it on a data file
// number sets it on the data file only (which has no order of its own). An index
// whose order depends on the locale is reordered at once.
int setFileLocale(FileNumber file, std::uint32_t lcid);
int getFileLocale(FileNumber file, std::uint32_t* lcid);

// ---- Positioning (index file numbers) ----------------------------------------------

int firstRecord(FileNumber index, Position* position);
int nextRecord(FileNumber index, Position* position);
int lastRecord(FileNumber index, Position* position);
// The first record whose key begins with the value; `length` 0 means the whole key.
int findEqual(FileNumber index, const void* key, std::size_t length, Position* position);
// Ranged search comparing the first `length` bytes of each key with the value.
// Equal, Greater and GreaterOrEqual give the first such key, Less and LessOrEqual
// the last.
int findKey(FileNumber index, const void* key, std::size_t length, SearchMode mode,
            Position* position);
// The same with the first segment given as a zero-terminated text (padded to the
// segment's length), for indexes led by a text segment.
int findText(FileNumber index, const char* text, SearchMode mode, Position* position);

// ---- Key prefixes (index file numbers) ----------------------------------------------

// ISAM_NO_RECORD when no key begins with the prefix.
int countByPrefix(FileNumber index, const void* prefix, std::size_t length, std::uint32_t* count);
// Up to `wanted` positions of the keys beginning with the prefix, in key order.
int fetchByPrefix(FileNumber index, const void* prefix, std::size_t length, std::uint32_t wanted,
                  Position* positions, std::uint32_t* fetched);
// The count and the fetch from one scan: `count` keys begin with the prefix (0 is
// no error here), and `positions` their records' positions in key order. Reading
// those positions in that order then costs a copy each: the records are read
// ahead along the index.
int scanByPrefix(FileNumber index, const void* prefix, std::size_t length, std::uint32_t* count,
                 std::vector<Position>* positions);

// ---- Records (data file numbers) ----------------------------------------------------

// Reads the whole record and makes it current. ISAM_BUFFER_TOO_SHORT, with *length
// set to the record's length, when it does not fit; nothing is copied then.
int readRecord(FileNumber dataFile, Position position, void* buffer, std::size_t capacity,
               std::size_t* length);
// Adds a record with its keys in every index and makes it current.
int addRecord(FileNumber dataFile, const void* record, std::size_t length, Position* position);
int rewriteRecord(FileNumber dataFile, const void* record, std::size_t length);
int deleteRecord(FileNumber dataFile);
int currentPosition(FileNumber dataFile, Position* position);

// ---- Resources (data file numbers; outside every index) ------------------------------

// ISAM_RESOURCE_EXISTS when one of that type and number exists.
int addResource(FileNumber dataFile, std::uint32_t type, std::uint32_t number, const void* data,
                std::size_t length);
// Replaces the resource, or adds it when it is missing.
int updateResource(FileNumber dataFile, std::uint32_t type, std::uint32_t number, const void* data,
                   std::size_t length);
// ISAM_NO_RECORD when missing; ISAM_BUFFER_TOO_SHORT with *length set when it does not fit.
int readResource(FileNumber dataFile, std::uint32_t type, std::uint32_t number, void* buffer,
                 std::size_t capacity, std::size_t* length);
int deleteResource(FileNumber dataFile, std::uint32_t type, std::uint32_t number);
// The numbers of the resources of one type, in ascending order.
int listResources(FileNumber dataFile, std::uint32_t type, std::vector<std::uint32_t>* numbers);

// ---- Batches (selected instance) -----------------------------------------------------

// Opens a batch; nested batches only count. Costs nothing when already inside one.
int beginBatch();
// Ends a batch; the outermost end commits everything written since it began.
int endBatch();
// Discards everything written since the outermost batch began. The batch stays open
// (its ends are still due) and what is written after this is committed at its end.
int abortBatch();
// Checks the whole container file of the selected instance: every page, every
// index against its table, every record against its checksum. ISAM_DAMAGED when
// anything fails; the file is only read.
int verifyContainer();
// Settles the selected instance's open container for bulk work (an application's
// own batch: many writes between two commits) until it is closed.
int settleForBulkWork();
int batchDepth();

}  // namespace isam
