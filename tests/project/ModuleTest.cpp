// Modules, module extras and target paths, in the current layout and in the
// fixed-length layout that databases before version 20 store.
#include <string>
#include <vector>

#include "core/Catalogue.h"
#include "core/LibraryErrors.h"
#include "core/RecordAccess.h"
#include "tests/db/DbTestSupport.h"

namespace dbtest {
namespace {

using namespace qvb::catalogue;

std::vector<DWORD> toVector(const CDWordArray& ids) {
    std::vector<DWORD> out;
    for (int i = 0; i < ids.GetSize(); ++i) out.push_back(ids[i]);
    return out;
}

class ModuleTest : public DbTest<CDbProject> {
protected:
    DWORD addModul(const char* name = "app.exe", WORD type = 1, DWORD flags = 0) {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddModul(&id, name, type, flags)) << db_.GetError();
        return id;
    }
    DWORD binaryDataOf(DWORD modulId) {
        CString name;
        WORD type = 0;
        DWORD binaryDataId = 0;
        DWORD flags = 0;
        EXPECT_EQ(1, db_.GetModul(modulId, name, &type, &binaryDataId, &flags)) << db_.GetError();
        return binaryDataId;
    }
    std::vector<DWORD> binaryDataIds() {
        CDWordArray ids;
        EXPECT_EQ(1, db_.EnumBinaryData(ids)) << db_.GetError();
        return toVector(ids);
    }
};

TEST_F(ModuleTest, AnEmptyProjectHasNoModulesAndNumbersTheFirstOne) {
    CDWordArray ids;
    ids.Add(99);
    EXPECT_EQ(1, db_.EnumModul(ids));
    EXPECT_EQ(0, db_.GetError());
    EXPECT_EQ(std::vector<DWORD>{99}, toVector(ids));
    DWORD count = 77;
    EXPECT_EQ(1, db_.GetModulCount(&count));
    EXPECT_EQ(0u, count);
    EXPECT_EQ(1u, addModul());
}

TEST_F(ModuleTest, ANewIdIsOneAboveTheHighest) {
    for (DWORD expected = 1; expected <= 3; ++expected) EXPECT_EQ(expected, addModul());
    EXPECT_EQ(1, db_.DeleteModul(3)) << db_.GetError();
    EXPECT_EQ(3u, addModul());
    EXPECT_EQ(1, db_.DeleteModul(2)) << db_.GetError();
    EXPECT_EQ(4u, addModul());
}

TEST_F(ModuleTest, TheModulesFileLivesAndDiesWithTheModule) {
    const DWORD first = addModul("a.dll", 2, 0x10);
    const DWORD second = addModul("b.dll");
    const DWORD blob = binaryDataOf(first);
    EXPECT_EQ(2u, binaryDataIds().size());
    EXPECT_NE(blob, binaryDataOf(second));

    CString name = "renamed.dll";
    EXPECT_EQ(1, db_.UpdateModul(first, name, 5, 0x20)) << db_.GetError();
    CString read;
    WORD type = 0;
    DWORD binaryDataId = 0;
    DWORD flags = 0;
    ASSERT_EQ(1, db_.GetModul(first, read, &type, &binaryDataId, &flags)) << db_.GetError();
    EXPECT_STREQ("renamed.dll", read);
    EXPECT_EQ(5, type);
    EXPECT_EQ(blob, binaryDataId);
    EXPECT_EQ(0x20u, flags);

    EXPECT_EQ(1, db_.DeleteModul(first)) << db_.GetError();
    EXPECT_EQ(std::vector<DWORD>{binaryDataOf(second)}, binaryDataIds());
    EXPECT_EQ(0, db_.GetModul(first, read, &type, &flags));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(0, db_.UpdateModul(first, name, 1, 0));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(0, db_.DeleteModul(first));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(1u, binaryDataIds().size());
}

TEST_F(ModuleTest, ACallersIdIsKeptAndNeverOverwritten) {
    ASSERT_EQ(1, db_.AddModul(DWORD{40}, "kept.exe", 1, 0)) << db_.GetError();
    EXPECT_EQ(0, db_.AddModul(DWORD{40}, "other.exe", 2, 0));
    EXPECT_EQ(isam::ISAM_DUPLICATE_KEY, db_.GetError());
    CString name;
    WORD type = 0;
    DWORD flags = 0;
    ASSERT_EQ(1, db_.GetModul(40, name, &type, &flags));
    EXPECT_STREQ("kept.exe", name);
    // The failed add's blob is not taken back.
    DWORD blobs = 0;
    EXPECT_EQ(1, db_.GetBinaryDataCount(&blobs));
    EXPECT_EQ(2u, blobs);
    EXPECT_EQ(41u, addModul());
}

TEST_F(ModuleTest, EnumerationAppendsInIdOrderAndTheCountFollows) {
    ASSERT_EQ(1, db_.AddModul(DWORD{7}, "seven", 1, 0));
    ASSERT_EQ(1, db_.AddModul(DWORD{2}, "two", 1, 0));
    CDWordArray ids;
    ids.Add(500);
    EXPECT_EQ(1, db_.EnumModul(ids));
    EXPECT_EQ((std::vector<DWORD>{500, 2, 7}), toVector(ids));
    DWORD count = 0;
    EXPECT_EQ(1, db_.GetModulCount(&count));
    EXPECT_EQ(2u, count);
}

TEST_F(ModuleTest, ACountIsStoredEvenWhenTheEnumerationFails) {
    addModul();
    ASSERT_EQ(1, db_.CloseTable(TAB_MODUL));
    DWORD count = 77;
    EXPECT_EQ(0, db_.GetModulCount(&count));
    EXPECT_NE(0, db_.GetError());
    EXPECT_EQ(0u, count);
    ASSERT_EQ(1, db_.OpenTable(TAB_MODUL));
}

// ---- Module extras and target paths ------------------------------------------------------

TEST_F(ModuleTest, AModulesExtraRecordIsKeptUnderItsId) {
    ASSERT_EQ(1, db_.AddModulExtra(4, "PE32")) << db_.GetError();
    ASSERT_EQ(1, db_.AddModulExtra(2, "NE")) << db_.GetError();
    EXPECT_EQ(0, db_.AddModulExtra(4, "other"));
    EXPECT_EQ(isam::ISAM_DUPLICATE_KEY, db_.GetError());
    EXPECT_EQ(1, db_.UpdateModulExtra(2, "PE64")) << db_.GetError();
    CString format;
    EXPECT_EQ(1, db_.GetModulExtra(4, format));
    EXPECT_STREQ("PE32", format);
    EXPECT_EQ(1, db_.GetModulExtra(2, format));
    EXPECT_STREQ("PE64", format);
    CDWordArray ids;
    ids.Add(1);
    EXPECT_EQ(1, db_.EnumModulExtra(ids));
    EXPECT_EQ((std::vector<DWORD>{1, 2, 4}), toVector(ids));
    EXPECT_EQ(0, db_.UpdateModulExtra(3, "x"));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
}

TEST_F(ModuleTest, DeletingAMissingExtraSucceedsButMissingTargetPathsFail) {
    ASSERT_EQ(1, db_.AddModulExtra(1, "PE32"));
    ASSERT_EQ(1, db_.AddTargetPaths(DWORD{1}, "main", "s1", "s2"));
    // A failure first, so that success has to clear the error code.
    CString format;
    EXPECT_EQ(0, db_.GetModulExtra(5, format));
    EXPECT_EQ(1, db_.DeleteModulExtra(5));
    EXPECT_EQ(0, db_.GetError());
    EXPECT_EQ(0, db_.DeleteTargetPaths(5));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());

    EXPECT_EQ(1, db_.DeleteModulExtra(1));
    EXPECT_EQ(1, db_.DeleteTargetPaths(1));
    EXPECT_EQ(0, db_.GetModulExtra(1, format));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
}

TEST_F(ModuleTest, TargetPathsAreFoundByTheModulesId) {
    ASSERT_EQ(1, db_.AddTargetPaths(DWORD{6}, "C:\\out", "C:\\sat1", "")) << db_.GetError();
    EXPECT_EQ(0, db_.AddTargetPaths(DWORD{6}, "a", "b", "c"));
    EXPECT_EQ(isam::ISAM_DUPLICATE_KEY, db_.GetError());
    DWORD allocated = 0;
    ASSERT_EQ(1, db_.AddTargetPaths(&allocated, "m", "", "")) << db_.GetError();
    EXPECT_EQ(7u, allocated);

    CString main = "D:\\new", sat1 = "", sat2 = "D:\\sat2";
    EXPECT_EQ(1, db_.UpdateTargetPaths(6, main, sat1, sat2)) << db_.GetError();
    CString a, b, c;
    ASSERT_EQ(1, db_.GetTargetPaths(6, a, b, c));
    EXPECT_STREQ("D:\\new", a);
    EXPECT_STREQ("", b);
    EXPECT_STREQ("D:\\sat2", c);
    EXPECT_EQ(0, db_.UpdateTargetPaths(8, main, sat1, sat2));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());

    CDWordArray ids;
    ids.Add(3);
    EXPECT_EQ(1, db_.EnumTargetPaths(ids));
    EXPECT_EQ((std::vector<DWORD>{3, 6, 7}), toVector(ids));
}

// ---- The layout before version 20 ----------------------------------------------------------

constexpr int kPaddedWidth = 199;

std::string padded(const std::string& text) {
    return text.size() < kPaddedWidth ? text + std::string(kPaddedWidth - text.size(), ' ') : text;
}

class OldModuleLayoutTest : public ModuleTest {
protected:
    CIsamTable& table(int index) { return CDbInternals::Table(db_, index); }

    // Binds a layout to an open table; a rebuild makes the members store it.
    void bind(int index, const TableDef& layout, bool rebuild) {
        CIsamTable& t = table(index);
        ASSERT_EQ(0, t.Close());
        t.ReleaseDefinition();
        t.Define(layout);
        if (rebuild) {
            ASSERT_EQ(0, t.Rebuild());
        }
        ASSERT_EQ(0, t.Open());
    }
    // The table's records are stored fixed-length from now on, as in a database
    // before version 20; until bindCurrent() the table object reads them that way.
    void storeFixedLength(int index) { bind(index, *earlierTable('G', index), true); }
    void bindFixedLength(int index) { bind(index, *earlierTable('G', index), false); }
    // The table object back under its current layout, the members left as they are.
    void bindCurrent(int index) { bind(index, *currentTable(index), false); }
    bool boundToCurrent(int index) { return table(index).Table() == currentTable(index); }

    void addOldModul(DWORD id, const std::string& name, WORD type, DWORD flags) {
        CIsamTable& modules = table(TAB_MODUL);
        qvb::RecordWriter record(modules);
        record.Long("ModulId", id)
            .Text("ModulName", name)
            .Short("ModulType", type)
            .Long("Flags", flags);
        record.Binary("File", "MZ", 2);
        ASSERT_EQ(0, record.error());
        ASSERT_EQ(0, modules.Add());
    }
    // The stored text of a field of a fixed-length target-paths record.
    std::string storedPath(DWORD id, const char* field) {
        bindFixedLength(TAB_TARGETPATHS);
        CIsamTable& paths = table(TAB_TARGETPATHS);
        std::string text;
        EXPECT_EQ(0, qvb::readById(paths, id));
        EXPECT_EQ(0, paths.GetText(field, &text));
        bindCurrent(TAB_TARGETPATHS);
        return text;
    }
};

TEST_F(OldModuleLayoutTest, ModulesAreReadFromFixedLengthRecords) {
    storeFixedLength(TAB_MODUL);
    addOldModul(5, padded("old.dll"), 3, 0x10);
    addOldModul(2, padded("first.exe"), 1, 0);
    bindCurrent(TAB_MODUL);

    CString name;
    WORD type = 0;
    DWORD flags = 0;
    ASSERT_EQ(1, db_.GetModulV18(5, name, &type, &flags)) << db_.GetError();
    EXPECT_STREQ("old.dll", name);
    EXPECT_EQ(3, type);
    EXPECT_EQ(0x10u, flags);
    EXPECT_TRUE(boundToCurrent(TAB_MODUL));

    CDWordArray ids;
    ids.Add(9);
    EXPECT_EQ(1, db_.EnumModulV18(ids)) << db_.GetError();
    EXPECT_EQ((std::vector<DWORD>{9, 2, 5}), toVector(ids));

    EXPECT_EQ(0, db_.GetModulV18(4, name, &type, &flags));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_TRUE(boundToCurrent(TAB_MODUL));
}

TEST_F(OldModuleLayoutTest, AnOldExtraRecordIsReadAsStored) {
    storeFixedLength(TAB_MODULEXTRA);
    CIsamTable& extras = table(TAB_MODULEXTRA);
    ASSERT_EQ(0, qvb::RecordWriter(extras)
                     .Long("ModulExtraModulId", 3)
                     .Text("ModulFormat", "PE32 ")
                     .error());
    ASSERT_EQ(0, extras.Add());
    bindCurrent(TAB_MODULEXTRA);

    CString format;
    ASSERT_EQ(1, db_.GetModulExtraV18(3, format)) << db_.GetError();
    EXPECT_STREQ("PE32 ", format);
    EXPECT_EQ(0, db_.GetModulExtraV18(4, format));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_TRUE(boundToCurrent(TAB_MODULEXTRA));
}

TEST_F(OldModuleLayoutTest, TargetPathsArePaddedWithBlanksAndTrimmedAgain) {
    storeFixedLength(TAB_TARGETPATHS);
    bindCurrent(TAB_TARGETPATHS);
    const std::string tenChars = "C:\\out\\app";
    ASSERT_EQ(10u, tenChars.size());
    const std::string longest(200, 'p');
    DWORD id = 0;
    ASSERT_EQ(1, db_.AddTargetPathsV18(&id, tenChars.c_str(), "", longest.c_str()))
        << db_.GetError();
    EXPECT_EQ(1u, id);
    EXPECT_TRUE(boundToCurrent(TAB_TARGETPATHS));

    EXPECT_EQ(tenChars + std::string(189, ' '), storedPath(id, "MainTargetPath"));
    EXPECT_EQ(std::string(199, ' '), storedPath(id, "SatelliteDllTargetPath1"));
    EXPECT_EQ(longest, storedPath(id, "SatelliteDllTargetPath2"));

    CString main, sat1, sat2;
    ASSERT_EQ(1, db_.GetTargetPathsV18(id, main, sat1, sat2)) << db_.GetError();
    EXPECT_EQ(tenChars, static_cast<const char*>(main));
    EXPECT_STREQ("", sat1);
    EXPECT_EQ(longest, static_cast<const char*>(sat2));
    EXPECT_EQ(0, db_.GetTargetPathsV18(id + 1, main, sat1, sat2));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());

    EXPECT_EQ(1, db_.DeleteTargetPathsV18(id)) << db_.GetError();
    EXPECT_EQ(0, db_.DeleteTargetPathsV18(id));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
}

TEST_F(OldModuleLayoutTest, APathLongerThanItsFieldIsRefusedNotCut) {
    storeFixedLength(TAB_TARGETPATHS);
    bindCurrent(TAB_TARGETPATHS);
    DWORD id = 0;
    EXPECT_EQ(0, db_.AddTargetPathsV18(&id, std::string(201, 'x').c_str(), "", ""));
    EXPECT_EQ(isam::ISAM_RECORD_TOO_LONG, db_.GetError());
    CDWordArray ids;
    EXPECT_EQ(1, db_.EnumTargetPaths(ids));
    EXPECT_EQ(0, ids.GetSize());
    EXPECT_TRUE(boundToCurrent(TAB_TARGETPATHS));
}

}  // namespace
}  // namespace dbtest
