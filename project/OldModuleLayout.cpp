// The module tables as they were stored before version 20: fixed-length records
// whose texts are padded with blanks. Only the conversion of old databases reads
// and writes them, each operation with the old layout bound for its length.
#include "core/Operation.h"
#include "core/EarlierLayout.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

constexpr char kFixedLengthGeneration = 'G';
// The old path fields are padded to one character less than they hold.
constexpr int kPaddedPathWidth = 199;

CString paddedPath(const CString& path) {
    return paddedWithBlanks(path, kPaddedPathWidth);
}

void trimPadding(CString& text) {
    text.TrimRight(' ');
}

}  // namespace

int CDbProject::GetModulV18(DWORD ModulId, CString& Name, WORD* pType, DWORD* pFlags) {
    return Run([&] {
        CIsamTable& modules = Table(TAB_MODUL);
        const int rc = inEarlierLayout(modules, kFixedLengthGeneration, TAB_MODUL, [&] {
            const int found = readById(modules, ModulId);
            if (found != isam::ISAM_OK) return found;
            return RecordReader(modules)
                .Text("ModulName", Name)
                .Short("ModulType", pType)
                .Long("Flags", pFlags)
                .error();
        });
        if (!Succeeded(rc)) return 0;
        trimPadding(Name);
        return 1;
    });
}

int CDbProject::EnumModulV18(CDWordArray& ids) {
    return Run([&] {
        CIsamTable& modules = Table(TAB_MODUL);
        return Result(inEarlierLayout(modules, kFixedLengthGeneration, TAB_MODUL,
                                      [&] { return appendAll(modules, 1, "ModulId", ids); }));
    });
}

int CDbProject::GetModulExtraV18(DWORD ModulId, CString& Format) {
    return Run([&] {
        CIsamTable& extras = Table(TAB_MODULEXTRA);
        return Result(inEarlierLayout(extras, kFixedLengthGeneration, TAB_MODULEXTRA, [&] {
            const int found = readById(extras, ModulId);
            return found != isam::ISAM_OK
                       ? found
                       : RecordReader(extras).Text("ModulFormat", Format).error();
        }));
    });
}

int CDbProject::GetTargetPathsV18(DWORD ModulId, CString& Main, CString& Satellite1,
                                  CString& Satellite2) {
    return Run([&] {
        CIsamTable& paths = Table(TAB_TARGETPATHS);
        const int rc = inEarlierLayout(paths, kFixedLengthGeneration, TAB_TARGETPATHS, [&] {
            const int found = readById(paths, ModulId);
            if (found != isam::ISAM_OK) return found;
            return RecordReader(paths)
                .Text("MainTargetPath", Main)
                .Text("SatelliteDllTargetPath1", Satellite1)
                .Text("SatelliteDllTargetPath2", Satellite2)
                .error();
        });
        if (!Succeeded(rc)) return 0;
        trimPadding(Main);
        trimPadding(Satellite1);
        trimPadding(Satellite2);
        return 1;
    });
}

int CDbProject::AddTargetPathsV18(DWORD* pId, const CString& Main, const CString& Satellite1,
                                  const CString& Satellite2) {
    return Run([&] {
        CIsamTable& paths = Table(TAB_TARGETPATHS);
        return Result(inEarlierLayout(paths, kFixedLengthGeneration, TAB_TARGETPATHS, [&] {
            return addWithNewId(paths, "TargetPathModulId", pId, [&](RecordWriter& r) {
                r.Text("MainTargetPath", paddedPath(Main))
                    .Text("SatelliteDllTargetPath1", paddedPath(Satellite1))
                    .Text("SatelliteDllTargetPath2", paddedPath(Satellite2));
            });
        }));
    });
}

// Deleting needs no field of the record, so the layout makes no difference.
int CDbProject::DeleteTargetPathsV18(DWORD ModulId) {
    return DeleteTargetPaths(ModulId);
}
