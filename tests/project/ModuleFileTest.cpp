// Module files: a module's file kept in its binary-data record, and in the module
// record itself in the layout before version 20.
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>

#include "core/Catalogue.h"
#include "core/LibraryErrors.h"
#include "core/RecordAccess.h"
#include "tests/project/BlobTestSupport.h"

namespace blobtest {
namespace {

using namespace qvb::catalogue;

class ModuleFileTest : public BlobTest {
protected:
    DWORD addModule(const char* name = "app.exe") {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddModul(&id, name, 1, 0)) << db_.GetError();
        return id;
    }
    DWORD blobOf(DWORD modulId) {
        CString name;
        WORD type = 0;
        DWORD blobId = 0, flags = 0;
        EXPECT_EQ(1, db_.GetModul(modulId, name, &type, &blobId, &flags)) << db_.GetError();
        return blobId;
    }
    DWORD fileLength(DWORD modulId) {
        DWORD n = 0xFFFFFFFF;
        EXPECT_EQ(1, db_.GetModulFileLength(modulId, &n)) << db_.GetError();
        return n;
    }
};

TEST_F(ModuleFileTest, FileRoundTripsThroughTheModulesBlob) {
    const DWORD other = addModule("other.dll");
    const DWORD modul = addModule();
    std::string contents = sampleBytes(250000, 11);
    contents[0] = 'M';
    contents[1] = 'Z';
    ASSERT_EQ(1, db_.ReadModulFile(modul, fileWith("app.exe", contents).c_str())) << db_.GetError();

    DWORD blobLength = 0;
    ASSERT_EQ(1, db_.GetBinaryDataLength(blobOf(modul), &blobLength)) << db_.GetError();
    EXPECT_EQ(blobLength, fileLength(modul));
    EXPECT_GT(blobLength, 0u);
    EXPECT_EQ(0u, fileLength(other)) << "the other module's blob is untouched";

    const std::string out = path("app.out");
    ASSERT_EQ(1, db_.WriteModulFile(modul, out.c_str())) << db_.GetError();
    EXPECT_EQ(contents, readFile(out));
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(ModuleFileTest, FailuresOfTheModuleOrItsFile) {
    const DWORD modul = addModule();
    DWORD n = 0;
    EXPECT_EQ(0, db_.GetModulFileLength(modul + 1, &n));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(0, db_.ReadModulFile(modul + 1, fileWith("in", "x").c_str()));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(0, db_.WriteModulFile(modul + 1, path("out").c_str()));
    EXPECT_EQ(101, db_.GetError());

    EXPECT_EQ(0, db_.ReadModulFile(modul, path("missing").c_str()));
    EXPECT_EQ(QVB_INPUT_OPEN_FAILED, db_.GetError());
    ASSERT_EQ(1, db_.ReadModulFile(modul, fileWith("in", "bytes").c_str())) << db_.GetError();
    EXPECT_EQ(0, db_.WriteModulFile(modul, path("no dir/out").c_str()));
    EXPECT_EQ(QVB_OUTPUT_CREATE_FAILED, db_.GetError());
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(ModuleFileTest, EmptyModuleFileStaysEmpty) {
    const DWORD modul = addModule();
    ASSERT_EQ(1, db_.ReadModulFile(modul, fileWith("empty", "").c_str())) << db_.GetError();
    EXPECT_EQ(0u, fileLength(modul));
    const std::string out = fileWith("existing", "old contents");
    ASSERT_EQ(1, db_.WriteModulFile(modul, out.c_str())) << db_.GetError();
    EXPECT_EQ("old contents", readFile(out));
}

// ---- Large files ----------------------------------------------------------------------------

constexpr std::size_t kMiB = std::size_t{1} << 20;

// Writes `total` bytes of sample data without holding them all.
void writeSampleFile(const std::string& path, std::size_t total) {
    SampleBytes sample(29);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    for (std::size_t done = 0; done < total; done += kMiB) {
        const std::string chunk = sample.take(std::min(kMiB, total - done));
        out.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    }
    ASSERT_TRUE(out.good());
}

// Whether two files hold the same bytes, compared a slice at a time.
bool sameContents(const std::string& a, const std::string& b) {
    std::ifstream left(a, std::ios::binary), right(b, std::ios::binary);
    std::string x(kMiB, '\0'), y(kMiB, '\0');
    while (left && right) {
        left.read(&x[0], static_cast<std::streamsize>(x.size()));
        right.read(&y[0], static_cast<std::streamsize>(y.size()));
        if (left.gcount() != right.gcount() ||
            x.compare(0, static_cast<std::size_t>(left.gcount()), y, 0,
                      static_cast<std::size_t>(right.gcount())) != 0) {
            return false;
        }
    }
    return left.eof() && right.eof();
}

std::size_t peakResidentBytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

TEST_F(ModuleFileTest, HundredMegabyteFileRoundTrips) {
    constexpr std::size_t kSize = 100 * kMiB;
    const std::string in = path("big.exe");
    const std::string out = path("big.out");
    writeSampleFile(in, kSize);
    const DWORD modul = addModule("big.exe");

    const std::size_t before = peakResidentBytes();
    ASSERT_EQ(1, db_.ReadModulFile(modul, in.c_str())) << db_.GetError();
    ASSERT_EQ(1, db_.WriteModulFile(modul, out.c_str())) << db_.GetError();
    const std::size_t peak = peakResidentBytes();

    EXPECT_TRUE(sameContents(in, out));
    EXPECT_TRUE(leftovers().empty());
    const double growth = static_cast<double>(peak - before) / kSize;
    RecordProperty("StoredBytes", std::to_string(fileLength(modul)));
    RecordProperty("PeakGrowthPerFileByte", std::to_string(growth));
    std::printf(
        "100 MiB file, archive %u bytes: peak resident memory grew by %.0f MiB (%.2f x the file)\n",
        fileLength(modul), static_cast<double>(peak - before) / kMiB, growth);
#ifndef __SANITIZE_ADDRESS__
    // The file, its archive and a few copies of the archive at a time; the
    // sanitizer's allocator keeps freed memory back, so it is not measured there.
    EXPECT_LT(growth, 4.0);
#endif
}

// ---- The layout before version 20 ----------------------------------------------------------

class OldModuleFileTest : public ModuleFileTest {
protected:
    CIsamTable& modules() { return CDbInternals::Table(db_, TAB_MODUL); }
    void bind(const TableDef& layout, bool rebuild) {
        CIsamTable& t = modules();
        ASSERT_EQ(0, t.Close());
        t.ReleaseDefinition();
        t.Define(layout);
        // A rebuild makes the member store records of the layout bound.
        if (rebuild) {
            ASSERT_EQ(0, t.Rebuild());
        }
        ASSERT_EQ(0, t.Open());
    }
    // A module record stored as before version 20, with an empty file; the table
    // object is left under the current layout, as an old database opens.
    void addOldModule(DWORD id) {
        bind(*earlierTable('G', TAB_MODUL), true);
        qvb::RecordWriter record(modules());
        record.Long("ModulId", id)
            .Text("ModulName", "old.exe")
            .Short("ModulType", 1)
            .Long("Flags", 0);
        ASSERT_EQ(0, record.error());
        ASSERT_EQ(0, modules().Add());
        bind(*currentTable(TAB_MODUL), false);
    }
    DWORD oldFileLength(DWORD id) {
        DWORD n = 0xFFFFFFFF;
        EXPECT_EQ(1, db_.GetModulFileLengthV18(id, &n)) << db_.GetError();
        return n;
    }
    bool boundToCurrent() {
        return modules().Table() == currentTable(TAB_MODUL) && modules().IsOpen();
    }
};

TEST_F(OldModuleFileTest, FileRoundTripsThroughTheModuleRecord) {
    addOldModule(4);
    EXPECT_EQ(0u, oldFileLength(4));
    const std::string contents = sampleBytes(120000, 5);
    ASSERT_EQ(1, db_.ReadModulFileV18(4, fileWith("old.exe", contents).c_str())) << db_.GetError();
    EXPECT_TRUE(boundToCurrent());

    const DWORD stored = oldFileLength(4);
    EXPECT_GT(stored, 0u);
    EXPECT_LT(stored, contents.size()) << "stored packed";
    const std::string out = path("old.out");
    ASSERT_EQ(1, db_.WriteModulFileV18(4, out.c_str())) << db_.GetError();
    EXPECT_EQ(contents, readFile(out));
    EXPECT_TRUE(boundToCurrent());
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(OldModuleFileTest, EmptyFileIsPackedLikeAnyOther) {
    addOldModule(2);
    ASSERT_EQ(1, db_.ReadModulFileV18(2, fileWith("empty", "").c_str())) << db_.GetError();
    EXPECT_GT(oldFileLength(2), 0u) << "an archive with an empty entry";
    const std::string out = fileWith("existing", "old contents");
    ASSERT_EQ(1, db_.WriteModulFileV18(2, out.c_str())) << db_.GetError();
    EXPECT_EQ("", readFile(out)) << "the empty entry is written out";
}

TEST_F(OldModuleFileTest, FailuresKeepTheCurrentLayoutBound) {
    addOldModule(3);
    DWORD n = 0;
    EXPECT_EQ(0, db_.GetModulFileLengthV18(9, &n));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(0, db_.WriteModulFileV18(9, path("out").c_str()));
    EXPECT_EQ(101, db_.GetError());
    EXPECT_EQ(0, db_.ReadModulFileV18(3, path("missing").c_str()));
    EXPECT_EQ(QVB_INPUT_OPEN_FAILED, db_.GetError());
    EXPECT_EQ(0u, oldFileLength(3));
    EXPECT_TRUE(boundToCurrent());
}

TEST_F(ModuleFileTest, OldLayoutOperationsRefuseCurrentRecords) {
    const DWORD modul = addModule();
    DWORD n = 0;
    EXPECT_EQ(0, db_.GetModulFileLengthV18(modul, &n));
    EXPECT_EQ(isam::ISAM_RECORD_TOO_SHORT, db_.GetError());
    EXPECT_EQ(0, db_.ReadModulFileV18(modul, fileWith("in", "x").c_str()));
    EXPECT_EQ(isam::ISAM_RECORD_TOO_SHORT, db_.GetError());
    EXPECT_EQ(modul, 1u);
    EXPECT_EQ(0u, fileLength(modul)) << "the current record is unchanged";
}

}  // namespace
}  // namespace blobtest
