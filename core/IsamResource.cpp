#include "core/IsamResource.h"

#include <cstring>

#include "isam/IsamErrors.h"

IMPLEMENT_DYNAMIC(CIsamResource, CObject)

namespace {

constexpr char kResourceName[12] = "DB!MAINDATA";
constexpr std::size_t kNumberAt = 4;
constexpr std::size_t kNameAt = 8;
constexpr std::size_t kLengthAt = 24;

void store32(std::uint8_t* p, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

std::uint32_t load32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8 |
           static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

}  // namespace

int CIsamResource::Build(std::uint32_t number, const void* data, std::size_t length) {
    if (length > kMostData) return isam::ISAM_RECORD_TOO_LONG;
    if (length && !data) return isam::ISAM_BAD_PARAMETER;
    std::memset(m_record, 0, kHeaderSize);
    store32(m_record, kType);
    store32(m_record + kNumberAt, number);
    std::memcpy(m_record + kNameAt, kResourceName, sizeof kResourceName);
    // The length is stored as a signed 16-bit value; 1024 fits.
    m_record[kLengthAt] = static_cast<std::uint8_t>(length);
    m_record[kLengthAt + 1] = static_cast<std::uint8_t>(length >> 8);
    if (length) std::memcpy(m_record + kHeaderSize, data, length);
    m_length = kHeaderSize + length;
    return isam::ISAM_OK;
}

int CIsamResource::Parse(std::size_t length, const std::uint8_t** data, std::size_t* dataLength) {
    if (length < kHeaderSize || length > ReadCapacity() || load32(m_record) != kType) {
        return isam::ISAM_DAMAGED;
    }
    const auto stored = static_cast<std::int16_t>(m_record[kLengthAt] | m_record[kLengthAt + 1] << 8);
    if (stored < 0 || kHeaderSize + static_cast<std::size_t>(stored) > length) return isam::ISAM_DAMAGED;
    m_length = length;
    *data = m_record + kHeaderSize;
    *dataLength = static_cast<std::size_t>(stored);
    return isam::ISAM_OK;
}
