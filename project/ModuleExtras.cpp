// Module extras: at most one record per module, under the module's own id, holding
// the module's format as the application names it.
#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

int CDbProject::AddModulExtra(DWORD ModulId, const CString& Format) {
    return Run([&] {
        return Result(addWithId(Table(TAB_MODULEXTRA), "ModulExtraModulId", ModulId,
                                [&](RecordWriter& r) { r.Text("ModulFormat", Format); }));
    });
}

int CDbProject::GetModulExtra(DWORD ModulId, CString& Format) {
    return Run([&] {
        return Result(readFieldsById(Table(TAB_MODULEXTRA), ModulId, [&](RecordReader& r) {
            r.Text("ModulFormat", Format);
        }));
    });
}

int CDbProject::UpdateModulExtra(DWORD ModulId, const CString& Format) {
    return Run([&] {
        return Result(updateById(Table(TAB_MODULEXTRA), ModulId,
                                 [&](RecordWriter& r) { r.Text("ModulFormat", Format); }));
    });
}

int CDbProject::DeleteModulExtra(DWORD ModulId) {
    return Run([&] {
        // Most modules have no extra record; removing a module relies on this
        // being no error.
        const int rc = deleteById(Table(TAB_MODULEXTRA), ModulId);
        return Result(rc == isam::ISAM_NO_RECORD ? isam::ISAM_OK : rc);
    });
}

int CDbProject::EnumModulExtra(CDWordArray& ids) {
    return Run(
        [&] { return Result(appendAll(Table(TAB_MODULEXTRA), 1, "ModulExtraModulId", ids)); });
}
