// Binary data: blobs, files packed into them as one-entry zip archives, and files
// written back out.
#include <cstring>
#include <string>
#include <vector>

#include "core/LibraryErrors.h"
#include "platform/ZipArchive.h"
#include "tests/project/BlobTestSupport.h"

namespace blobtest {
namespace {

std::vector<DWORD> toVector(const CDWordArray& ids) {
    std::vector<DWORD> out;
    for (int i = 0; i < ids.GetSize(); ++i) out.push_back(ids[i]);
    return out;
}

class BinaryDataTest : public BlobTest {
protected:
    DWORD add() {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddBinaryData(&id)) << db_.GetError();
        return id;
    }
    DWORD length(DWORD id) {
        DWORD n = 0xFFFFFFFF;
        EXPECT_EQ(1, db_.GetBinaryDataLength(id, &n)) << db_.GetError();
        return n;
    }
    DWORD flags(DWORD id) {
        DWORD f = 0xFFFFFFFF;
        EXPECT_EQ(1, db_.GetBinaryData(id, &f)) << db_.GetError();
        return f;
    }
    void writeRaw(DWORD id, std::string bytes) {
        EXPECT_EQ(1, db_.WriteBinaryData(id, reinterpret_cast<BYTE*>(bytes.data()),
                                         static_cast<DWORD>(bytes.size())))
            << db_.GetError();
    }
    std::vector<DWORD> ids() {
        CDWordArray found;
        EXPECT_EQ(1, db_.EnumBinaryData(found)) << db_.GetError();
        return toVector(found);
    }
    // Stores `bytes` as a packed file.
    DWORD packed(const std::string& bytes) {
        const DWORD id = add();
        EXPECT_EQ(1, db_.ReadBinaryDataFile(id, fileWith("in.bin", bytes).c_str()))
            << db_.GetError();
        return id;
    }
};

TEST_F(BinaryDataTest, IdsAreTheTopIdPlusOne) {
    EXPECT_EQ(1u, add());
    EXPECT_EQ(2u, add());
    EXPECT_EQ(3u, add());
    ASSERT_EQ(1, db_.DeleteBinaryData(3));
    EXPECT_EQ(3u, add()) << "the top id is used again";
    ASSERT_EQ(1, db_.DeleteBinaryData(1));
    EXPECT_EQ(4u, add()) << "a gap below the top is not";
    EXPECT_EQ((std::vector<DWORD>{2, 3, 4}), ids());
}

TEST_F(BinaryDataTest, NewRecordIsEmptyWithNoFlags) {
    const DWORD id = add();
    EXPECT_EQ(0u, flags(id));
    EXPECT_EQ(0u, length(id));
    EXPECT_EQ("", storedBlob(id));
}

TEST_F(BinaryDataTest, FileRoundTripsByteForByte) {
    std::string contents = sampleBytes(300000);
    contents[10] = '\0';  // no text rules apply to a file
    const DWORD id = packed(contents);
    const std::string out = path("out.bin");
    ASSERT_EQ(1, db_.WriteBinaryDataFile(id, out.c_str())) << db_.GetError();
    EXPECT_EQ(contents, readFile(out));
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(BinaryDataTest, PackedFileIsAOneEntryDeflatedZipArchive) {
    const std::string contents = sampleBytes(100000);
    const DWORD id = packed(contents);
    const std::string blob = storedBlob(id);
    EXPECT_EQ(blob.size(), length(id)) << "the length is the archive's";
    EXPECT_LT(blob.size(), contents.size());

    // A program that knows nothing of this library reads it.
    const std::string zip = storedBlobFile(id, "blob.zip");
    const std::string listing = commandOutput("unzip -v '" + zip + "' 2>&1");
    EXPECT_NE(std::string::npos, listing.find("zipfile.tmp")) << listing;
    EXPECT_NE(std::string::npos, listing.find("Defl:")) << listing;
    EXPECT_NE(std::string::npos, listing.find("1 file")) << listing;
    EXPECT_EQ(contents, commandOutput("unzip -p '" + zip + "' zipfile.tmp"));
    EXPECT_NE(std::string::npos, commandOutput("unzip -l '" + zip + "'").find("zipfile.tmp"));
}

TEST_F(BinaryDataTest, EmptyFileStoresAnEmptyBlobAndWritesNoFile) {
    const DWORD id = packed("x");
    ASSERT_EQ(1, db_.ReadBinaryDataFile(id, fileWith("empty", "").c_str())) << db_.GetError();
    EXPECT_EQ(0u, length(id));

    const std::string absent = path("absent.bin");
    EXPECT_EQ(1, db_.WriteBinaryDataFile(id, absent.c_str())) << db_.GetError();
    EXPECT_FALSE(exists(absent));
    const std::string existing = fileWith("existing.bin", "keep me");
    EXPECT_EQ(1, db_.WriteBinaryDataFile(id, existing.c_str())) << db_.GetError();
    EXPECT_EQ("keep me", readFile(existing));
}

TEST_F(BinaryDataTest, NullPathEmptiesTheBlob) {
    const DWORD id = packed(sampleBytes(1000));
    ASSERT_EQ(1, db_.ReadBinaryDataFile(id, nullptr)) << db_.GetError();
    EXPECT_EQ(0u, length(id));
}

TEST_F(BinaryDataTest, RawBytesAreWrittenOutAsStored) {
    const DWORD id = add();
    // Also bytes that begin like an archive but are none.
    for (const std::string& raw :
         {std::string("\x01\x02\0raw bytes", 12), std::string("PK\x03\x04 no archive")}) {
        writeRaw(id, raw);
        EXPECT_EQ(raw, storedBlob(id));
        EXPECT_EQ(raw.size(), length(id));
        const std::string out = path("raw.out");
        ASSERT_EQ(1, db_.WriteBinaryDataFile(id, out.c_str())) << db_.GetError();
        EXPECT_EQ(raw, readFile(out));
    }
}

TEST_F(BinaryDataTest, ArchiveThatDoesNotExtractIsWrittenOutAsStored) {
    const std::string contents = sampleBytes(50000);
    const DWORD id = packed(contents);
    std::string damaged = storedBlob(id);
    // Inside the compressed data, past the local header and the entry's name.
    damaged[200] = static_cast<char>(damaged[200] ^ 0x55);
    writeRaw(id, damaged);
    const std::string out = path("damaged.out");
    ASSERT_EQ(1, db_.WriteBinaryDataFile(id, out.c_str())) << db_.GetError();
    EXPECT_EQ(damaged, readFile(out));
}

TEST_F(BinaryDataTest, ArchiveClaimingAnImpossibleSizeIsWrittenOutAsStored) {
    const DWORD id = packed(sampleBytes(1000));
    std::string forged = storedBlob(id);
    // The central directory's uncompressed size: 24 bytes into its record.
    const std::size_t central = forged.find("PK\x01\x02");
    ASSERT_NE(std::string::npos, central);
    std::memset(&forged[central + 24], 0xFF, 4);
    writeRaw(id, forged);
    const std::string out = path("forged.out");
    ASSERT_EQ(1, db_.WriteBinaryDataFile(id, out.c_str())) << db_.GetError();
    EXPECT_EQ(forged, readFile(out));
}

TEST_F(BinaryDataTest, FlagsAndBlobChangeIndependently) {
    const std::string contents = sampleBytes(5000);
    const DWORD id = packed(contents);
    const std::string blob = storedBlob(id);
    ASSERT_EQ(1, db_.UpdateBinaryData(id, 0x80000001)) << db_.GetError();
    EXPECT_EQ(0x80000001u, flags(id));
    EXPECT_EQ(blob, storedBlob(id)) << "the blob is kept";

    writeRaw(id, "new bytes");
    EXPECT_EQ(0x80000001u, flags(id)) << "the flags are kept";
    ASSERT_EQ(1, db_.ReadBinaryDataFile(id, fileWith("again", contents).c_str())) << db_.GetError();
    EXPECT_EQ(0x80000001u, flags(id));
}

TEST_F(BinaryDataTest, GetBinaryDataHandsOutACopyOneByteLonger) {
    const DWORD id = add();
    writeRaw(id, "abc");
    BYTE* data = nullptr;
    DWORD n = 0;
    ASSERT_EQ(1, db_.GetBinaryData(id, &data, &n)) << db_.GetError();
    ASSERT_EQ(3u, n);
    EXPECT_EQ(0, std::memcmp(data, "abc", 3));
    data[0] = 'X';
    data[3] = '!';  // the extra byte belongs to the caller as well
    delete[] data;
    EXPECT_EQ("abc", storedBlob(id));

    writeRaw(id, "");
    data = nullptr;
    ASSERT_EQ(1, db_.GetBinaryData(id, &data, &n)) << db_.GetError();
    EXPECT_EQ(0u, n);
    EXPECT_NE(nullptr, data);
    delete[] data;
}

TEST_F(BinaryDataTest, EnumerationAppendsAndCountCounts) {
    DWORD count = 99;
    ASSERT_EQ(1, db_.GetBinaryDataCount(&count)) << db_.GetError();
    EXPECT_EQ(0u, count);
    CDWordArray found;
    found.Add(77);
    ASSERT_EQ(1, db_.EnumBinaryData(found)) << db_.GetError();
    EXPECT_EQ((std::vector<DWORD>{77}), toVector(found));
    EXPECT_EQ(0, db_.GetError());

    add();
    packed(sampleBytes(2000));
    add();
    ASSERT_EQ(1, db_.EnumBinaryData(found)) << db_.GetError();
    EXPECT_EQ((std::vector<DWORD>{77, 1, 2, 3}), toVector(found));
    ASSERT_EQ(1, db_.GetBinaryDataCount(&count)) << db_.GetError();
    EXPECT_EQ(3u, count);
}

TEST_F(BinaryDataTest, MissingRecordFailsWith101AndChangesNothing) {
    const DWORD id = packed(sampleBytes(2000));
    const std::string blob = storedBlob(id);
    const std::string in = fileWith("in2.bin", "data");
    const std::string out = path("never.out");
    DWORD value = 0;
    BYTE* data = nullptr;
    BYTE raw[] = {1, 2, 3};
    const DWORD missing = id + 1;

    EXPECT_EQ(0, db_.GetBinaryData(missing, &value));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(0, db_.GetBinaryDataLength(missing, &value));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(0, db_.GetBinaryData(missing, &data, &value));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(nullptr, data);
    EXPECT_EQ(0, db_.WriteBinaryData(missing, raw, 3));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(0, db_.UpdateBinaryData(missing, 5));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(0, db_.ReadBinaryDataFile(missing, in.c_str()));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(0, db_.WriteBinaryDataFile(missing, out.c_str()));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_FALSE(exists(out));
    EXPECT_EQ(0, db_.DeleteBinaryData(missing));
    EXPECT_EQ(101, db_.GetError());

    EXPECT_EQ((std::vector<DWORD>{id}), ids());
    EXPECT_EQ(blob, storedBlob(id));
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(BinaryDataTest, FileFailuresHaveTheirCodesAndKeepTheRecord) {
    const DWORD id = packed(sampleBytes(2000));
    const std::string blob = storedBlob(id);

    EXPECT_EQ(0, db_.ReadBinaryDataFile(id, path("no such file").c_str()));
    EXPECT_EQ(QVB_INPUT_OPEN_FAILED, db_.GetError());
    EXPECT_EQ(0, db_.ReadBinaryDataFile(id, files_.path().c_str()));
    EXPECT_EQ(QVB_INPUT_OPEN_FAILED, db_.GetError()) << "a directory is no file to read";
    EXPECT_EQ(blob, storedBlob(id));

    EXPECT_EQ(0, db_.WriteBinaryDataFile(id, path("no such dir/out.bin").c_str()));
    EXPECT_EQ(QVB_OUTPUT_CREATE_FAILED, db_.GetError());
    EXPECT_EQ(0, db_.WriteBinaryDataFile(id, files_.path().c_str()));
    EXPECT_EQ(QVB_OUTPUT_CREATE_FAILED, db_.GetError());
    EXPECT_EQ(0, db_.WriteBinaryDataFile(id, nullptr));
    EXPECT_EQ(QVB_OUTPUT_CREATE_FAILED, db_.GetError());

    EXPECT_EQ(0, db_.WriteBinaryData(id, nullptr, 4));
    EXPECT_EQ(isam::ISAM_BAD_PARAMETER, db_.GetError());
    EXPECT_EQ(blob, storedBlob(id));
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(BinaryDataTest, WritingToAFullDeviceFailsWithWriteError) {
    if (!exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    const DWORD id = packed(sampleBytes(2000));
    EXPECT_EQ(0, db_.WriteBinaryDataFile(id, "/dev/full"));
    EXPECT_EQ(QVB_OUTPUT_WRITE_FAILED, db_.GetError());
}

TEST_F(BinaryDataTest, NoTemporaryDirectoryFailsWithArchiveError) {
    const DWORD id = packed(sampleBytes(2000));
    const std::string blob = storedBlob(id);
    {
        const TmpDirOverride gone(path("no such dir"));
        EXPECT_EQ(0, db_.ReadBinaryDataFile(id, fileWith("in3.bin", "data").c_str()));
        EXPECT_EQ(QVB_ARCHIVE_FAILED, db_.GetError());
    }
    EXPECT_EQ(blob, storedBlob(id));
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(BinaryDataTest, DeleteRemovesTheRecord) {
    const DWORD kept = add();
    const DWORD id = packed(sampleBytes(2000));
    ASSERT_EQ(1, db_.DeleteBinaryData(id)) << db_.GetError();
    DWORD value = 0;
    EXPECT_EQ(0, db_.GetBinaryDataLength(id, &value));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ((std::vector<DWORD>{kept}), ids());
}

TEST_F(BinaryDataTest, BlobsSurviveReopening) {
    const std::string contents = sampleBytes(20000, 3);
    const DWORD id = packed(contents);
    reopen();
    const std::string out = path("after.bin");
    ASSERT_EQ(1, db_.WriteBinaryDataFile(id, out.c_str())) << db_.GetError();
    EXPECT_EQ(contents, readFile(out));
}

TEST(MemoryArchiveTest, ReadsWhatWasWritten) {
    isamtest::TempDir dir;
    const std::string contents = sampleBytes(70000);
    const std::string zip = dir.file("a.zip");
    ASSERT_TRUE(platform::writeSingleEntryArchive(zip, contents.data(), contents.size()));
    const std::string archive = readFile(zip);
    platform::MemoryArchive reader(archive.data(), archive.size());
    ASSERT_TRUE(reader.isOpen());
    std::uint64_t size = 0;
    ASSERT_TRUE(reader.firstEntrySize(&size));
    EXPECT_EQ(contents.size(), size);
    std::vector<std::uint8_t> entry;
    ASSERT_TRUE(reader.extractFirstEntry(&entry));
    EXPECT_EQ(contents, std::string(entry.begin(), entry.end()));
}

TEST(MemoryArchiveTest, RefusesWhatIsNoArchive) {
    for (const std::string& bytes :
         {std::string(), std::string("PK\x05\x06", 4), std::string(5000, 'z')}) {
        platform::MemoryArchive reader(bytes.data(), bytes.size());
        EXPECT_FALSE(reader.isOpen());
        std::vector<std::uint8_t> entry;
        EXPECT_FALSE(reader.extractFirstEntry(&entry));
    }
}

TEST(MemoryArchiveTest, TruncatedArchiveIsRefused) {
    isamtest::TempDir dir;
    const std::string contents = sampleBytes(70000);
    const std::string zip = dir.file("a.zip");
    ASSERT_TRUE(platform::writeSingleEntryArchive(zip, contents.data(), contents.size()));
    const std::string archive = readFile(zip);
    // Cut into the end record (22 bytes), into the entry, into the header.
    for (std::size_t cut : {archive.size() - 12, archive.size() / 2, std::size_t{30}}) {
        platform::MemoryArchive reader(archive.data(), cut);
        std::vector<std::uint8_t> entry;
        EXPECT_FALSE(reader.isOpen() && reader.extractFirstEntry(&entry)) << cut;
    }
}

}  // namespace
}  // namespace blobtest
