// Modules: the programs and libraries that the project translates. Each module's
// file is kept in a binary-data record of its own, made together with the module.
#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// The fields a caller gives; BinaryDataId is set by the module's add alone.
void writeModul(RecordWriter& record, const CString& Name, WORD Type, DWORD Flags) {
    record.Short("ModulType", Type).Long("Flags", Flags).Text("ModulName", Name);
}

}  // namespace

int CDbProject::AddModul(DWORD* pModulId, const CString& Name, WORD Type, DWORD Flags) {
    return Run([&] {
        // The blob comes first and stays if the module record cannot be added; a
        // name the record cannot hold is refused before either is made.
        DWORD binaryDataId = 0;
        const auto record = [&](RecordWriter& r) {
            writeModul(r.Long("BinaryDataId", binaryDataId), Name, Type, Flags);
        };
        if (!Succeeded(checkFill(Table(TAB_MODUL), record))) return 0;
        if (!AddBinaryData(&binaryDataId)) return 0;
        return Result(addWithNewId(Table(TAB_MODUL), "ModulId", pModulId, record));
    });
}

int CDbProject::AddModul(DWORD ModulId, const CString& Name, WORD Type, DWORD Flags) {
    return Run([&] {
        DWORD binaryDataId = 0;
        const auto record = [&](RecordWriter& r) {
            writeModul(r.Long("BinaryDataId", binaryDataId), Name, Type, Flags);
        };
        if (!Succeeded(checkFill(Table(TAB_MODUL), record))) return 0;
        if (!AddBinaryData(&binaryDataId)) return 0;
        return Result(addWithId(Table(TAB_MODUL), "ModulId", ModulId, record));
    });
}

int CDbProject::GetModul(DWORD ModulId, CString& Name, WORD* pType, DWORD* pFlags) {
    return GetModul(ModulId, Name, pType, nullptr, pFlags);
}

int CDbProject::GetModul(DWORD ModulId, CString& Name, WORD* pType, DWORD* pBinaryDataId,
                         DWORD* pFlags) {
    return Run([&] {
        return Result(readFieldsById(Table(TAB_MODUL), ModulId, [&](RecordReader& r) {
            r.Text("ModulName", Name)
                .Short("ModulType", pType)
                .Long("BinaryDataId", pBinaryDataId)
                .Long("Flags", pFlags);
        }));
    });
}

int CDbProject::UpdateModul(DWORD ModulId, CString& Name, WORD Type, DWORD Flags) {
    return Run([&] {
        CIsamTable& modules = Table(TAB_MODUL);
        if (!Succeeded(readById(modules, ModulId))) return 0;
        // BinaryDataId stays as read. Once the module was found and read the update
        // counts as done: the rewrite's own outcome is not part of the answer.
        RecordWriter record(modules);
        writeModul(record, Name, Type, Flags);
        if (record.error() == isam::ISAM_OK) (void)modules.Rewrite();
        return 1;
    });
}

int CDbProject::DeleteModul(DWORD ModulId) {
    return Run([&] {
        CIsamTable& modules = Table(TAB_MODUL);
        std::uint32_t binaryDataId = 0;
        if (!Succeeded(readById(modules, ModulId))) return 0;
        if (!Succeeded(modules.GetLong("BinaryDataId", &binaryDataId))) return 0;
        // Without its file gone the module stays.
        if (!DeleteBinaryData(binaryDataId)) return 0;
        return Result(modules.Delete());
    });
}

int CDbProject::EnumModul(CDWordArray& ids) {
    return Run([&] { return Result(appendAll(Table(TAB_MODUL), 1, "ModulId", ids)); });
}

int CDbProject::GetModulCount(DWORD* pCount) {
    return Run([&] {
        return Result(countByEnumerating(pCount, [&](CDWordArray& ids) {
            return appendAll(Table(TAB_MODUL), 1, "ModulId", ids);
        }));
    });
}
