// Target paths: where a module's translation and its satellite libraries are
// written, one record per module under the module's id.
#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

void writePaths(RecordWriter& record, const CString& Main, const CString& Satellite1,
                const CString& Satellite2) {
    record.Text("MainTargetPath", Main)
        .Text("SatelliteDllTargetPath1", Satellite1)
        .Text("SatelliteDllTargetPath2", Satellite2);
}

}  // namespace

int CDbProject::AddTargetPaths(DWORD* pId, const CString& Main, const CString& Satellite1,
                               const CString& Satellite2) {
    return Run([&] {
        return Result(
            addWithNewId(Table(TAB_TARGETPATHS), "TargetPathModulId", pId,
                         [&](RecordWriter& r) { writePaths(r, Main, Satellite1, Satellite2); }));
    });
}

int CDbProject::AddTargetPaths(DWORD ModulId, const CString& Main, const CString& Satellite1,
                               const CString& Satellite2) {
    return Run([&] {
        return Result(
            addWithId(Table(TAB_TARGETPATHS), "TargetPathModulId", ModulId,
                      [&](RecordWriter& r) { writePaths(r, Main, Satellite1, Satellite2); }));
    });
}

int CDbProject::GetTargetPaths(DWORD ModulId, CString& Main, CString& Satellite1,
                               CString& Satellite2) {
    return Run([&] {
        return Result(readFieldsById(Table(TAB_TARGETPATHS), ModulId, [&](RecordReader& r) {
            r.Text("MainTargetPath", Main)
                .Text("SatelliteDllTargetPath1", Satellite1)
                .Text("SatelliteDllTargetPath2", Satellite2);
        }));
    });
}

int CDbProject::UpdateTargetPaths(DWORD ModulId, CString& Main, CString& Satellite1,
                                  CString& Satellite2) {
    return Run([&] {
        return Result(updateById(Table(TAB_TARGETPATHS), ModulId, [&](RecordWriter& r) {
            writePaths(r, Main, Satellite1, Satellite2);
        }));
    });
}

int CDbProject::DeleteTargetPaths(DWORD ModulId) {
    return Run([&] { return Result(deleteById(Table(TAB_TARGETPATHS), ModulId)); });
}

int CDbProject::EnumTargetPaths(CDWordArray& ids) {
    return Run(
        [&] { return Result(appendAll(Table(TAB_TARGETPATHS), 1, "TargetPathModulId", ids)); });
}
