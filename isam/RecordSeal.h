// Every record and resource is stored with a checksum of its bytes behind it, so
// that bytes damaged on disk are reported as damage instead of being returned as
// data. Containers of the first format stored no checksums; theirs are read as
// they are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace isam {

constexpr std::size_t kSealLength = 4;

// Storage formats of a container: the first stored no checksums and padded every
// key text; the second seals records and writes compact keys.
constexpr int kFirstFormat = 1;
constexpr int kSealedFormat = 2;
constexpr int kCurrentFormat = kSealedFormat;

std::uint32_t checksumOf(const void* data, std::size_t length);

// The bytes to store: the record followed by its checksum, built in `out`.
void seal(const void* data, std::size_t length, std::string* out);

// Whether `seal` (kSealLength bytes) is the checksum of the record.
bool sealMatches(const void* record, std::size_t length, const void* seal);

// Whether stored bytes end in the checksum of what precedes it; `length` receives
// the record's own length.
bool unseal(const void* stored, std::size_t storedLength, std::size_t* length);

}  // namespace isam
