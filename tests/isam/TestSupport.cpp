#include "tests/isam/TestSupport.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>

namespace isamtest {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qvb-test-XXXXXX").string();
    char* made = ::mkdtemp(pattern.data());
    if (!made) std::abort();
    path_ = made;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

namespace {
std::atomic<int> gInstanceCounter{0};
}  // namespace

ScopedInstance::ScopedInstance()
    : name_("TestInstance" + std::to_string(::getpid()) + "_" + std::to_string(gInstanceCounter++)) {
    EXPECT_EQ(isam::ISAM_OK, isam::registerInstance(name_.c_str()));
    select();
    EXPECT_EQ(isam::ISAM_OK, isam::initialiseInstance(12, 140, 48, 12, 64, 0, 0, 0));
}

ScopedInstance::~ScopedInstance() { isam::unregisterInstance(name_.c_str()); }

void ScopedInstance::select() const { ASSERT_EQ(isam::ISAM_OK, isam::selectInstance(name_.c_str())); }

Record& Record::u32(std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes_[at + i] = static_cast<unsigned char>(value >> (8 * i));
    return *this;
}

Record& Record::u16(std::size_t at, std::uint16_t value) {
    bytes_[at] = static_cast<unsigned char>(value);
    bytes_[at + 1] = static_cast<unsigned char>(value >> 8);
    return *this;
}

Record& Record::text(const std::string& value) {
    bytes_.insert(bytes_.end(), value.begin(), value.end());
    bytes_.push_back(0);
    return *this;
}

Record& Record::binary(const std::string& value) {
    const std::size_t at = bytes_.size();
    bytes_.resize(at + 4);
    u32(at, static_cast<std::uint32_t>(value.size()));
    bytes_.insert(bytes_.end(), value.begin(), value.end());
    return *this;
}

std::uint32_t u32At(const unsigned char* p) {
    return p[0] | p[1] << 8 | p[2] << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

std::uint32_t u32At(const std::vector<unsigned char>& record, std::size_t at) {
    return record.size() >= at + 4 ? u32At(record.data() + at) : 0xFFFFFFFFu;
}

std::string textAt(const std::vector<unsigned char>& record, std::size_t fixedLength, std::size_t n) {
    std::size_t at = fixedLength;
    for (std::size_t i = 0; i < n && at < record.size(); ++i) {
        while (at < record.size() && record[at]) ++at;
        ++at;
    }
    std::string out;
    while (at < record.size() && record[at]) out.push_back(static_cast<char>(record[at++]));
    return out;
}

isam::FileDefinition sampleDefinition(const std::string& container) {
    isam::FileDefinition def;
    def.name = container + "!Sample";
    def.recordLength = kSampleFixed;
    def.variableFields = {{false, 200}, {true, 0}};
    def.indexes = {
        {container + "!SampleI1.Qvi", 4, false, 64, 1024, {{0, 4, isam::kSegmentFixed}}},
        {container + "!SampleI2.Qvi", 8, true, 64, 1024, {{4, 4, isam::kSegmentFixed}}},
        {container + "!SampleI3.Qvi", 24, true, 64, 1024, {{0, 20, isam::kSegmentVariableText}}},
    };
    return def;
}

Record sampleRecord(std::uint32_t id, std::uint32_t group, std::uint32_t value, const std::string& name,
                    const std::string& data) {
    Record r(kSampleFixed);
    r.u32(0, id).u32(4, group).u32(8, value).text(name).binary(data);
    return r;
}

std::vector<unsigned char> readAt(isam::FileNumber dataFile, isam::Position position) {
    std::vector<unsigned char> buffer(1 << 16);
    std::size_t length = 0;
    int rc = isam::readRecord(dataFile, position, buffer.data(), buffer.size(), &length);
    if (rc == isam::ISAM_BUFFER_TOO_SHORT) {
        buffer.resize(length);
        rc = isam::readRecord(dataFile, position, buffer.data(), buffer.size(), &length);
    }
    EXPECT_EQ(isam::ISAM_OK, rc);
    buffer.resize(rc ? 0 : length);
    return buffer;
}

std::vector<isam::Position> walk(isam::FileNumber index) {
    std::vector<isam::Position> positions;
    isam::Position p = 0;
    int rc = isam::firstRecord(index, &p);
    while (rc == isam::ISAM_OK) {
        positions.push_back(p);
        rc = isam::nextRecord(index, &p);
    }
    EXPECT_EQ(isam::ISAM_NO_RECORD, rc);
    return positions;
}

std::vector<std::uint32_t> walkIds(isam::FileNumber dataFile, isam::FileNumber index) {
    std::vector<std::uint32_t> ids;
    for (isam::Position p : walk(index)) ids.push_back(u32At(readAt(dataFile, p), 0));
    return ids;
}

void EngineTest::SetUp() {
    path_ = dir_.file("test.Prj");
    ASSERT_EQ(isam::ISAM_OK, isam::createContainer(path_.c_str(), 582, 1024, nullptr));
    ASSERT_EQ(isam::ISAM_OK, isam::createFile(sampleDefinition(), &data_));
}

void EngineTest::TearDown() {
    instance_.select();
    isam::closeContainer();
}

void EngineTest::reopen() {
    ASSERT_EQ(isam::ISAM_OK, isam::closeContainer());
    ASSERT_EQ(isam::ISAM_OK, isam::openContainer(path_.c_str(), 582, nullptr));
    ASSERT_EQ(isam::ISAM_OK, isam::openFile(sampleDefinition(), &data_));
}

isam::Position EngineTest::add(std::uint32_t id, std::uint32_t group, std::uint32_t value,
                               const std::string& name, const std::string& data) {
    Record r = sampleRecord(id, group, value, name, data);
    isam::Position p = 0;
    EXPECT_EQ(isam::ISAM_OK, isam::addRecord(data_, r.data(), r.size(), &p));
    return p;
}

}  // namespace isamtest
