#include "isam/RecordSeal.h"

#include <cstring>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace isam {

namespace {

void storeLittleEndian(std::uint32_t value, unsigned char* out) {
    for (std::size_t i = 0; i < kSealLength; ++i) out[i] = static_cast<unsigned char>(value >> (8 * i));
}

std::uint32_t loadLittleEndian(const unsigned char* in) {
    std::uint32_t value = 0;
    for (std::size_t i = kSealLength; i > 0; --i) value = value << 8 | in[i - 1];
    return value;
}

}  // namespace

std::uint32_t checksumOf(const void* data, std::size_t length) {
    return static_cast<std::uint32_t>(XXH3_64bits(length ? data : "", length));
}

void seal(const void* data, std::size_t length, std::string* out) {
    out->resize(length + kSealLength);
    if (length) std::memcpy(&(*out)[0], data, length);
    storeLittleEndian(checksumOf(data, length), reinterpret_cast<unsigned char*>(&(*out)[length]));
}

bool sealMatches(const void* record, std::size_t length, const void* seal) {
    return loadLittleEndian(static_cast<const unsigned char*>(seal)) == checksumOf(record, length);
}

bool unseal(const void* stored, std::size_t storedLength, std::size_t* length) {
    if (storedLength < kSealLength) return false;
    *length = storedLength - kSealLength;
    return sealMatches(stored, *length, static_cast<const unsigned char*>(stored) + *length);
}

}  // namespace isam
