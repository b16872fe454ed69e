// The buffer of a resource record: a 26-byte header followed by at most 1024
// bytes of data. Resources live in table 0's data file, outside every index.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qvb/CObject.h"

class CIsamResource : public CObject {
    DECLARE_DYNAMIC(CIsamResource)

public:
    static constexpr std::size_t kHeaderSize = 26;
    static constexpr std::size_t kMostData = 1024;
    static constexpr std::uint32_t kType = 17;

    // Lays out the header and copies the data behind it; ISAM_RECORD_TOO_LONG when
    // the data does not fit.
    int Build(std::uint32_t number, const void* data, std::size_t length);
    const std::uint8_t* Record() const { return m_record; }
    std::size_t RecordLength() const { return m_length; }

    // Where a resource is read to, and how much room that has.
    std::uint8_t* ReadArea() { return m_record; }
    static constexpr std::size_t ReadCapacity() { return kHeaderSize + kMostData; }
    // Checks a record of `length` bytes read into the buffer; its data and length.
    int Parse(std::size_t length, const std::uint8_t** data, std::size_t* dataLength);

private:
    std::uint8_t m_record[kHeaderSize + kMostData] = {};
    std::size_t m_length = 0;
};
