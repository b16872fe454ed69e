// Instances, containers and members: their life cycle and every way of misusing it.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>

#include "core/Catalogue.h"
#include "tests/isam/TestSupport.h"

namespace isamtest {
namespace {

using namespace isam;
namespace fs = std::filesystem;

void overwrite(const std::string& path, std::size_t offset, std::size_t count, char byte) {
    std::fstream f(path, std::ios::in | std::ios::out | std::ios::binary);
    f.seekp(static_cast<std::streamoff>(offset));
    const std::string bytes(count, byte);
    f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TEST(InstanceTest, NamesAreUniqueAndMustBeSelectedAndInitialised) {
    const std::string name = "RegistryProbe" + std::to_string(::getpid());
    ASSERT_EQ(ISAM_OK, registerInstance(name.c_str()));
    EXPECT_EQ(ISAM_INSTANCE_TAKEN, registerInstance(name.c_str()));
    ASSERT_EQ(ISAM_OK, selectInstance(name.c_str()));
    EXPECT_EQ(ISAM_NOT_INITIALISED, openContainer("/nonexistent.Prj", 582, nullptr));
    EXPECT_EQ(ISAM_BAD_PARAMETER, initialiseInstance(12, 0, 48, 12, 64, 0, 0, 0));
    EXPECT_EQ(ISAM_OK, initialiseInstance(12, 140, 48, 12, 64, 0, 0, 0));
    EXPECT_EQ(ISAM_OK, unregisterInstance(name.c_str()));
    EXPECT_EQ(ISAM_NO_INSTANCE, closeContainer());
    EXPECT_EQ(ISAM_NO_INSTANCE, selectInstance(name.c_str()));
    // The name is free again.
    ASSERT_EQ(ISAM_OK, registerInstance(name.c_str()));
    EXPECT_EQ(ISAM_OK, unregisterInstance(name.c_str()));
}

TEST(InstanceTest, FileNumbersAreBoundedByTheInstanceSize) {
    TempDir dir;
    ScopedInstance instance;
    ASSERT_EQ(ISAM_OK, initialiseInstance(12, 6, 48, 12, 64, 0, 0, 0));
    FileNumber container = kNoFile, data = kNoFile;
    ASSERT_EQ(ISAM_OK, createContainer(dir.file("t.Prj").c_str(), 582, 1024, &container));
    EXPECT_EQ(0, container);
    ASSERT_EQ(ISAM_OK, createFile(sampleDefinition("t.Prj"), &data));
    EXPECT_EQ(1, data);  // then its three indexes: 2, 3, 4
    FileDefinition other = sampleDefinition("t.Prj");
    other.name = "t.Prj!Other";
    for (auto& index : other.indexes) index.name.replace(index.name.find("Sample"), 6, "Other");
    FileNumber second = kNoFile;
    EXPECT_EQ(ISAM_TOO_MANY_FILES, createFile(other, &second));
    ASSERT_EQ(ISAM_OK, closeFile(data));
    ASSERT_EQ(ISAM_OK, createFile(other, &second));
    EXPECT_EQ(1, second);
    closeContainer();
}

TEST(ContainerTest, CreateOpenAndTheirFailures) {
    TempDir dir;
    ScopedInstance instance;
    const std::string path = dir.file("a.Prj");
    EXPECT_EQ(ISAM_FILE_NOT_FOUND, openContainer(path.c_str(), 582, nullptr));
    EXPECT_EQ(ISAM_BAD_PARAMETER, createContainer(path.c_str(), 68, 1024, nullptr));
    ASSERT_EQ(ISAM_OK, createContainer(path.c_str(), 582, 1024, nullptr));
    EXPECT_EQ(ISAM_ALREADY_OPEN, openContainer(path.c_str(), 582, nullptr));
    ASSERT_EQ(ISAM_OK, closeContainer());
    EXPECT_EQ(ISAM_NOT_OPEN, closeContainer());
    EXPECT_EQ(ISAM_FILE_EXISTS, createContainer(path.c_str(), 582, 1024, nullptr));
    // Closing leaves no log file beside the container.
    EXPECT_FALSE(fs::exists(path + "-wal"));

    FileNumber data = kNoFile;
    EXPECT_EQ(ISAM_NOT_OPEN, createFile(sampleDefinition(), &data));
    ASSERT_EQ(ISAM_OK, openContainer(path.c_str(), 582, nullptr));
    EXPECT_EQ(ISAM_FILE_NOT_FOUND, openFile(sampleDefinition(), &data));
    ASSERT_EQ(ISAM_OK, createFile(sampleDefinition(), &data));
    EXPECT_EQ(ISAM_FILE_EXISTS, createFile(sampleDefinition(), &data));
    EXPECT_EQ(ISAM_ALREADY_OPEN, openFile(sampleDefinition(), &data));

    FileDefinition inconsistent = sampleDefinition();
    inconsistent.name = "test.Prj!Broken";
    inconsistent.indexes[0].keyLength = 8;  // its one 4-byte segment, unique
    EXPECT_EQ(ISAM_BAD_PARAMETER, createFile(inconsistent, &data));
    closeContainer();
}

TEST(ContainerTest, AMemberKeepsItsOwnDefinitionWhateverItIsOpenedWith) {
    TempDir dir;
    ScopedInstance instance;
    const std::string path = dir.file("test.Prj");
    FileNumber data = kNoFile;
    ASSERT_EQ(ISAM_OK, createContainer(path.c_str(), 582, 1024, nullptr));
    ASSERT_EQ(ISAM_OK, createFile(sampleDefinition(), &data));
    const Record record = sampleRecord(1, 7, 42, "alpha");
    ASSERT_EQ(ISAM_OK, addRecord(data, record.data(), record.size(), nullptr));
    ASSERT_EQ(ISAM_OK, closeFile(data));

    // Opened under a definition without its third index: that index still answers.
    FileDefinition fewer = sampleDefinition();
    fewer.indexes.pop_back();
    ASSERT_EQ(ISAM_OK, openFile(fewer, &data));
    EXPECT_EQ(1u, walk(data + 3).size());
    ASSERT_EQ(ISAM_OK, closeFile(data));

    // Opened under one with an index more: that number is taken but has no index,
    // and the next member's numbers come after it.
    FileDefinition more = sampleDefinition();
    more.indexes.push_back({"test.Prj!SampleI4.Qvi", 8, true, 64, 1024, {{8, 4, 1}}});
    ASSERT_EQ(ISAM_OK, openFile(more, &data));
    Position position = 0;
    EXPECT_EQ(ISAM_BAD_FILE_NUMBER, firstRecord(data + 4, &position));
    EXPECT_EQ(ISAM_BAD_FILE_NUMBER, setFileLocale(data + 4, 1031));
    FileDefinition other = sampleDefinition();
    other.name = "test.Prj!Other";
    for (std::size_t i = 0; i < other.indexes.size(); ++i) {
        other.indexes[i].name = "test.Prj!OtherI" + std::to_string(i + 1) + ".Qvi";
    }
    FileNumber otherData = kNoFile;
    ASSERT_EQ(ISAM_OK, createFile(other, &otherData));
    EXPECT_GT(otherData, data + 4);
    ASSERT_EQ(ISAM_OK, closeFile(data));
    ASSERT_EQ(ISAM_OK, closeFile(otherData));

    // Renaming the container does not matter: members are found by their own names.
    EXPECT_EQ(ISAM_OK, openFile(sampleDefinition("elsewhere.Prj"), &data));
    closeContainer();
}

TEST(ContainerTest, EveryCatalogueTableCanBeCreatedAndReopened) {
    TempDir dir;
    ScopedInstance instance;
    const std::string path = dir.file("all.Prj");
    ASSERT_EQ(ISAM_OK, createContainer(path.c_str(), 582, 1024, nullptr));
    ASSERT_EQ(ISAM_OK, beginBatch());
    for (int i = 0; i < qvb::catalogue::kTableCount; ++i) {
        FileNumber data = kNoFile;
        const auto def = qvb::catalogue::makeFileDefinition(*qvb::catalogue::currentTable(i), "all.Prj");
        ASSERT_EQ(ISAM_OK, createFile(def, &data)) << def.name;
        ASSERT_EQ(ISAM_OK, closeFile(data));
    }
    ASSERT_EQ(ISAM_OK, endBatch());
    ASSERT_EQ(ISAM_OK, closeContainer());

    ASSERT_EQ(ISAM_OK, openContainer(path.c_str(), 582, nullptr));
    FileNumber expected = 1;  // after the container's own number
    for (int i = 0; i < qvb::catalogue::kTableCount; ++i) {
        const auto* table = qvb::catalogue::currentTable(i);
        FileNumber data = kNoFile;
        ASSERT_EQ(ISAM_OK, openFile(qvb::catalogue::makeFileDefinition(*table, "all.Prj"), &data));
        EXPECT_EQ(expected, data) << table->name;
        expected = static_cast<FileNumber>(expected + 1 + table->indexes.size());
    }
    EXPECT_EQ(105, expected);  // 1 container + 32 data files + 72 indexes
    closeContainer();
}

TEST(ContainerTest, TwoInstancesKeepTwoDatabasesOpen) {
    TempDir dir;
    ScopedInstance first;
    ScopedInstance second;
    FileNumber a = kNoFile, b = kNoFile;
    first.select();
    ASSERT_EQ(ISAM_OK, createContainer(dir.file("a.Prj").c_str(), 582, 1024, nullptr));
    ASSERT_EQ(ISAM_OK, createFile(sampleDefinition("a.Prj"), &a));
    second.select();
    ASSERT_EQ(ISAM_OK, createContainer(dir.file("b.Prj").c_str(), 582, 1024, nullptr));
    ASSERT_EQ(ISAM_OK, createFile(sampleDefinition("b.Prj"), &b));
    EXPECT_EQ(a, b);  // each instance numbers its own files

    for (std::uint32_t id = 1; id <= 3; ++id) {
        first.select();
        Record r = sampleRecord(id, 1, 100 + id);
        ASSERT_EQ(ISAM_OK, addRecord(a, r.data(), r.size(), nullptr));
        second.select();
        Record s = sampleRecord(id * 10, 2, 200 + id);
        ASSERT_EQ(ISAM_OK, addRecord(b, s.data(), s.size(), nullptr));
    }
    first.select();
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2, 3}), walkIds(a, a + 1));
    second.select();
    EXPECT_EQ((std::vector<std::uint32_t>{10, 20, 30}), walkIds(b, b + 1));

    // The same container cannot be opened twice at once.
    ScopedInstance third;
    EXPECT_EQ(ISAM_FILE_BUSY, openContainer(dir.file("a.Prj").c_str(), 582, nullptr));
    first.select();
    closeContainer();
    second.select();
    closeContainer();
}

class DamageTest : public ::testing::Test {
protected:
    void SetUp() override {
        path_ = dir_.file("d.Prj");
        ASSERT_EQ(ISAM_OK, createContainer(path_.c_str(), 582, 1024, nullptr));
        FileNumber data = kNoFile;
        ASSERT_EQ(ISAM_OK, createFile(sampleDefinition("d.Prj"), &data));
        ASSERT_EQ(ISAM_OK, beginBatch());
        for (std::uint32_t id = 1; id <= 2000; ++id) {
            Record r = sampleRecord(id, id % 17, id, "record " + std::to_string(id));
            ASSERT_EQ(ISAM_OK, addRecord(data, r.data(), r.size(), nullptr));
        }
        ASSERT_EQ(ISAM_OK, endBatch());
        ASSERT_EQ(ISAM_OK, closeContainer());
        size_ = fs::file_size(path_);
    }
    void TearDown() override {
        instance_.select();
        closeContainer();
    }
    int openAndRead() {
        int rc = openContainer(path_.c_str(), 582, nullptr);
        if (rc) return rc;
        FileNumber data = kNoFile;
        rc = openFile(sampleDefinition("d.Prj"), &data);
        Position p = 0;
        while (rc == ISAM_OK) rc = p == 0 ? firstRecord(data + 1, &p) : nextRecord(data + 1, &p);
        closeContainer();
        return rc == ISAM_NO_RECORD ? ISAM_OK : rc;
    }

    TempDir dir_;
    ScopedInstance instance_;
    std::string path_;
    std::uintmax_t size_ = 0;
};

TEST_F(DamageTest, SoundFileOpensAndRebuilds) {
    EXPECT_EQ(ISAM_OK, openAndRead());
    EXPECT_EQ(ISAM_OK, rebuildContainer(path_.c_str(), ""));
    EXPECT_EQ(ISAM_BAD_PARAMETER, rebuildContainer(path_.c_str(), "-x"));
    EXPECT_EQ(ISAM_FILE_NOT_FOUND, rebuildContainer(dir_.file("none.Prj").c_str(), nullptr));
    EXPECT_EQ(ISAM_OK, openAndRead());
}

TEST_F(DamageTest, RebuildCompactsTheFileAndKeepsEveryRecord) {
    ASSERT_EQ(ISAM_OK, openContainer(path_.c_str(), 582, nullptr));
    FileNumber data = kNoFile;
    ASSERT_EQ(ISAM_OK, openFile(sampleDefinition("d.Prj"), &data));
    ASSERT_EQ(ISAM_OK, beginBatch());
    for (std::uint32_t id = 1; id <= 2000; id += 2) {
        Position p = 0;
        ASSERT_EQ(ISAM_OK, findEqual(data + 1, &id, 4, &p));
        ASSERT_EQ(ISAM_OK, deleteRecord(data));
    }
    ASSERT_EQ(ISAM_OK, endBatch());
    ASSERT_EQ(ISAM_OK, closeContainer());
    const std::uintmax_t before = fs::file_size(path_);

    ASSERT_EQ(ISAM_OK, rebuildContainer(path_.c_str(), ""));
    EXPECT_LT(fs::file_size(path_), before);
    ASSERT_EQ(ISAM_OK, openContainer(path_.c_str(), 582, nullptr));
    ASSERT_EQ(ISAM_OK, openFile(sampleDefinition("d.Prj"), &data));
    const std::vector<std::uint32_t> ids = walkIds(data, data + 1);
    ASSERT_EQ(1000u, ids.size());
    EXPECT_EQ(2u, ids.front());
    EXPECT_EQ(2000u, ids.back());
}

TEST_F(DamageTest, TruncatedFileIsRefused) {
    fs::resize_file(path_, size_ / 2);
    EXPECT_EQ(ISAM_DAMAGED, openAndRead());
    EXPECT_EQ(ISAM_DAMAGED, rebuildContainer(path_.c_str(), ""));
}

TEST_F(DamageTest, OverwrittenPagesAreRefused) {
    overwrite(path_, size_ / 2, 8192, '\x55');
    EXPECT_EQ(ISAM_DAMAGED, openAndRead());
}

TEST_F(DamageTest, OverwrittenHeaderIsRefused) {
    overwrite(path_, 0, 100, 'x');
    EXPECT_EQ(ISAM_DAMAGED, openAndRead());
}

// Damage anywhere: whatever an operation returns, it is one of the engine's numbers
// and nothing crashes (the sanitizer build turns a stray access into a failure).
TEST_F(DamageTest, RandomDamageNeverCrashes) {
    const std::string pristine = dir_.file("pristine.Prj");
    fs::copy_file(path_, pristine);
    std::mt19937 random(20261122);
    auto isEngineError = [](int rc) {
        return rc == ISAM_OK || rc == ISAM_NO_RECORD || (rc > 600 && rc < 700);
    };
    for (int round = 0; round < 24; ++round) {
        fs::copy_file(pristine, path_, fs::copy_options::overwrite_existing);
        // Heavy damage anywhere, or one small hit that may slip past the open.
        const bool heavy = round % 2 == 0;
        for (int hit = 0; hit < (heavy ? 8 : 1); ++hit) {
            const std::size_t at = random() % size_;
            overwrite(path_, at, 1 + random() % (heavy ? 64 : 4), static_cast<char>(random()));
        }
        SCOPED_TRACE("round " + std::to_string(round));
        int rc = openContainer(path_.c_str(), 582, nullptr);
        EXPECT_TRUE(isEngineError(rc)) << rc;
        if (rc == ISAM_OK) {
            FileNumber data = kNoFile;
            rc = openFile(sampleDefinition("d.Prj"), &data);
            EXPECT_TRUE(isEngineError(rc)) << rc;
            for (int index = 1; rc == ISAM_OK && index <= 3; ++index) {
                Position p = 0;
                for (rc = firstRecord(data + index, &p); rc == ISAM_OK; rc = nextRecord(data + index, &p)) {
                    unsigned char buffer[512];
                    std::size_t length = 0;
                    rc = readRecord(data, p, buffer, sizeof buffer, &length);
                    if (rc) break;
                }
                EXPECT_TRUE(isEngineError(rc)) << rc;
                rc = rc == ISAM_NO_RECORD ? ISAM_OK : rc;
            }
            closeContainer();
        }
        EXPECT_TRUE(isEngineError(rebuildContainer(path_.c_str(), "")));
    }
}

TEST_F(DamageTest, FilesOfOtherKindsAreRefused) {
    // Text may be a container whose header was overwritten; an empty file is none.
    const std::string text = dir_.file("text.Prj");
    std::ofstream(text) << "not a database at all, just some text that is long enough to matter\n";
    EXPECT_EQ(ISAM_DAMAGED, openContainer(text.c_str(), 582, nullptr));
    EXPECT_EQ(ISAM_DAMAGED, rebuildContainer(text.c_str(), ""));
    const std::string empty = dir_.file("empty.Prj");
    std::ofstream{empty};
    EXPECT_EQ(ISAM_NOT_CONTAINER, openContainer(empty.c_str(), 582, nullptr));
    EXPECT_EQ(ISAM_NOT_CONTAINER, rebuildContainer(empty.c_str(), ""));
    EXPECT_EQ(0u, fs::file_size(empty));
    EXPECT_EQ(ISAM_NOT_OPEN, closeContainer());
    bool held = true;
    EXPECT_EQ(ISAM_NOT_OPEN, holdsMember("Sample", &held));
}

TEST_F(DamageTest, TheCatalogueTellsWhichMembersAreHeld) {
    ASSERT_EQ(ISAM_OK, openContainer(path_.c_str(), 582, nullptr));
    bool held = false;
    ASSERT_EQ(ISAM_OK, holdsMember("d.Prj!Sample", &held));
    EXPECT_TRUE(held);
    ASSERT_EQ(ISAM_OK, holdsMember("Other", &held));
    EXPECT_FALSE(held);
    EXPECT_EQ(ISAM_BAD_PARAMETER, holdsMember(nullptr, &held));
    closeContainer();
}

TEST_F(DamageTest, RebuildOfAMemberRecomputesKeysUnderANewDefinition) {
    ASSERT_EQ(ISAM_OK, openContainer(path_.c_str(), 582, nullptr));
    // An extra index on Value, which the old definition did not have.
    FileDefinition extended = sampleDefinition("d.Prj");
    extended.indexes.push_back({"d.Prj!SampleI4.Qvi", 8, true, 64, 1024, {{8, 4, 1}}});
    FileNumber data = kNoFile;
    ASSERT_EQ(ISAM_OK, openFile(sampleDefinition("d.Prj"), &data));
    EXPECT_EQ(ISAM_ALREADY_OPEN, rebuildFile(extended));
    ASSERT_EQ(ISAM_OK, closeFile(data));
    ASSERT_EQ(ISAM_OK, rebuildFile(extended));
    // The member now has the fourth index, even opened under the old definition.
    ASSERT_EQ(ISAM_OK, openFile(sampleDefinition("d.Prj"), &data));
    EXPECT_EQ(2000u, walk(data + 4).size());
    ASSERT_EQ(ISAM_OK, closeFile(data));
    ASSERT_EQ(ISAM_OK, openFile(extended, &data));
    const std::uint32_t value = 1234;
    Position p = 0;
    ASSERT_EQ(ISAM_OK, findEqual(data + 4, &value, 4, &p));
    EXPECT_EQ(1234u, u32At(readAt(data, p), 0));
    EXPECT_EQ(2000u, walk(data + 4).size());
    ASSERT_EQ(ISAM_OK, closeFile(data));

    // Removing a member leaves the others and frees its names.
    ASSERT_EQ(ISAM_OK, deleteFile(extended));
    EXPECT_EQ(ISAM_FILE_NOT_FOUND, openFile(extended, &data));
    EXPECT_EQ(ISAM_FILE_NOT_FOUND, deleteFile(extended));
    ASSERT_EQ(ISAM_OK, createFile(sampleDefinition("d.Prj"), &data));
    EXPECT_TRUE(walk(data + 1).empty());
    closeContainer();
}

}  // namespace
}  // namespace isamtest
