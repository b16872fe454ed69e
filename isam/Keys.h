// Record layout checks and key building from the segment definitions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "isam/Isam.h"

namespace isam {

// Where each variable field of a record lies: the first byte of its content and
// its length (a text without its terminator, a binary field without its prefix).
struct FieldSpan {
    std::size_t offset = 0;
    std::size_t length = 0;
};

// Checks a record against its definition and locates its variable fields. A record
// may end before its last variable fields, which then count as empty.
int parseRecord(const FileDefinition& definition, const unsigned char* record, std::size_t length,
                std::vector<FieldSpan>* fields);

// True when the index orders its keys under a locale: one 250-byte text segment
// and the position suffix, 254 bytes in all.
bool isLocaleOrdered(const IndexDefinition& index);

// Checks an index definition against its file's layout.
bool isValidIndex(const FileDefinition& file, const IndexDefinition& index);

// How the text segments of stored keys are laid out. Padded: the text's bytes
// padded with spaces to the segment's length. Compact (containers of the second
// format on): the same order in far fewer bytes, trailing spaces dropped; see
// Keys.cpp. Locale-ordered keys are always padded (their collation reads them).
enum class KeyForm { Padded, Compact };

// The stored key of a record: its segments, integers in big-endian order so that
// byte order is numeric order; no position suffix (the position is the row).
std::string buildKey(const IndexDefinition& index, const unsigned char* record,
                     const std::vector<FieldSpan>& fields, KeyForm form);

// A caller's key value, split into the stored-key bytes it fixes and, when it
// reaches into the suffix, the position. Its keys are those that begin with
// `bytes`, or, when `hasUpper`, those from `bytes` up to `upper` (exclusive).
struct SearchKey {
    std::string bytes;
    bool complete = false;  // covers every segment byte
    bool hasPosition = false;
    Position position = 0;
    bool hasUpper = false;
    std::string upper;
};

// length 0 means the whole key. Errors: ISAM_KEY_TOO_LONG, ISAM_BAD_KEY.
int parseSearchKey(const IndexDefinition& index, const void* value, std::size_t length,
                   bool wholeWhenZero, KeyForm form, SearchKey* out);

// The total length of an index's segments (its key without the suffix).
std::size_t segmentBytes(const IndexDefinition& index);

// The smallest byte string greater than every string that begins with `prefix`;
// false when there is none (the prefix is all 0xFF).
bool prefixSuccessor(const std::string& prefix, std::string* successor);

// A stable text form of what a definition fixes about a member's records and keys,
// stored with the member: the member's own definition, whatever it is opened with.
std::string definitionSignature(const FileDefinition& definition);
// The records and keys of a stored signature (names, modes and extents are left
// alone); false when the text is not a signature.
bool definitionFromSignature(const std::string& signature, FileDefinition* definition);

}  // namespace isam
