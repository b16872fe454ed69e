// The stored file of a module: a binary-data record that the module refers to by
// BinaryDataId. Before version 20 the module record held the packed file itself,
// in the variable part of the old module layout; the V18 operations work on that.
#include "core/Operation.h"
#include "project/BlobFiles.h"
#include "core/EarlierLayout.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// The layout of the module table before version 20, and its binary field.
constexpr char kOldLayout = 'G';
constexpr const char* kOldFile = "File";

// The BinaryDataId of the module, read from its record.
int moduleBlobId(CIsamTable& modules, DWORD modulId, DWORD* blobId) {
    const int rc = readById(modules, modulId);
    return rc != isam::ISAM_OK ? rc : modules.GetLong("BinaryDataId", blobId);
}

// Runs `work` on the module's record, found and read whole in the old layout;
// reading it whole refuses a record not stored that way before it could be
// rewritten in it.
template <typename Work>
int onOldModuleRecord(CIsamTable& modules, DWORD modulId, Work work) {
    return inEarlierLayout(modules, kOldLayout, TAB_MODUL, [&] {
        const int rc = readById(modules, modulId);
        return rc != isam::ISAM_OK ? rc : work();
    });
}

}  // namespace

int CDbProject::GetModulFileLength(DWORD ModulId, DWORD* pLength) {
    return Run([&] {
        DWORD blobId = 0;
        if (!Succeeded(moduleBlobId(Table(TAB_MODUL), ModulId, &blobId))) return 0;
        return GetBinaryDataLength(blobId, pLength);
    });
}

int CDbProject::ReadModulFile(DWORD ModulId, const char* pPath) {
    return Run([&] {
        DWORD blobId = 0;
        if (!Succeeded(moduleBlobId(Table(TAB_MODUL), ModulId, &blobId))) return 0;
        return ReadBinaryDataFile(blobId, pPath);
    });
}

int CDbProject::WriteModulFile(DWORD ModulId, const char* pPath) {
    return Run([&] {
        DWORD blobId = 0;
        if (!Succeeded(moduleBlobId(Table(TAB_MODUL), ModulId, &blobId))) return 0;
        return WriteBinaryDataFile(blobId, pPath);
    });
}

int CDbProject::GetModulFileLengthV18(DWORD ModulId, DWORD* pLength) {
    return Run([&] {
        CIsamTable& modules = Table(TAB_MODUL);
        return Result(onOldModuleRecord(modules, ModulId,
                                        [&] { return storedLength(modules, kOldFile, pLength); }));
    });
}

// Unlike a binary-data record, an old module record packs an empty file too.
int CDbProject::ReadModulFileV18(DWORD ModulId, const char* pPath) {
    return Run([&] {
        CIsamTable& modules = Table(TAB_MODUL);
        return Result(onOldModuleRecord(modules, ModulId, [&] {
            return packFileIntoRecord(modules, kOldFile, pPath, EmptyInput::Packed);
        }));
    });
}

int CDbProject::WriteModulFileV18(DWORD ModulId, const char* pPath) {
    return Run([&] {
        CIsamTable& modules = Table(TAB_MODUL);
        return Result(onOldModuleRecord(
            modules, ModulId, [&] { return unpackRecordToFile(modules, kOldFile, pPath); }));
    });
}
