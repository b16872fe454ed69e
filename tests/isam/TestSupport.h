// Shared pieces of the engine tests: a temporary directory, an engine instance of
// the test's own, records built byte by byte, and a sample member definition.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "isam/Isam.h"

namespace isamtest {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Registers, selects and initialises an instance under a name no other test uses.
class ScopedInstance {
public:
    ScopedInstance();
    ~ScopedInstance();
    ScopedInstance(const ScopedInstance&) = delete;
    ScopedInstance& operator=(const ScopedInstance&) = delete;
    void select() const;
    const std::string& name() const { return name_; }

private:
    std::string name_;
};

// A record: the fixed part, then the variable fields in order.
class Record {
public:
    explicit Record(std::size_t fixedLength) : bytes_(fixedLength, 0) {}
    Record& u32(std::size_t at, std::uint32_t value);
    Record& u16(std::size_t at, std::uint16_t value);
    Record& text(const std::string& value);  // zero-terminated
    Record& binary(const std::string& value);  // 4-byte length prefix
    const std::vector<unsigned char>& bytes() const { return bytes_; }
    const unsigned char* data() const { return bytes_.data(); }
    std::size_t size() const { return bytes_.size(); }

private:
    std::vector<unsigned char> bytes_;
};

std::uint32_t u32At(const unsigned char* p);
std::uint32_t u32At(const std::vector<unsigned char>& record, std::size_t at);
// The n-th zero-terminated text of a record's variable part.
std::string textAt(const std::vector<unsigned char>& record, std::size_t fixedLength, std::size_t n);

// The sample member "Sample": fixed part Id (0), Group (4), Value (8), then the
// variable fields Name (text, 200) and Data (binary). Indexes: I1 Id unique,
// I2 Group with duplicates, I3 the first 20 bytes of Name with duplicates.
constexpr std::size_t kSampleFixed = 12;
isam::FileDefinition sampleDefinition(const std::string& container = "test.Prj");
Record sampleRecord(std::uint32_t id, std::uint32_t group, std::uint32_t value,
                    const std::string& name = "", const std::string& data = "");

// File numbers of the sample member's indexes.
inline isam::FileNumber indexOf(isam::FileNumber dataFile, int i) {
    return static_cast<isam::FileNumber>(dataFile + i);
}

// Reads a whole record; fails the test on an engine error.
std::vector<unsigned char> readAt(isam::FileNumber dataFile, isam::Position position);

// Positions of every record in an index, first to last.
std::vector<isam::Position> walk(isam::FileNumber index);
// The Id field (offset 0) of each record in an index's order.
std::vector<std::uint32_t> walkIds(isam::FileNumber dataFile, isam::FileNumber index);

// A container with the sample member, created fresh for each test.
class EngineTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Closes and opens the container and the sample member again.
    void reopen();
    isam::Position add(std::uint32_t id, std::uint32_t group, std::uint32_t value,
                       const std::string& name = "", const std::string& data = "");

    TempDir dir_;
    ScopedInstance instance_;
    std::string path_;
    isam::FileNumber data_ = isam::kNoFile;
};

}  // namespace isamtest
