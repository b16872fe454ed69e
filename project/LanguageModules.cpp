// Language modules: one module of the project in one language pair. Every resource
// record of the project belongs to one of them.
#include <vector>

#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// I2 holds the PairLangId, duplicates allowed: the modules of one pair.
constexpr int kByPair = 2;
// I3 holds the ModulId, duplicates allowed: the pairs of one module.
constexpr int kByModul = 3;

void writeLangModul(RecordWriter& record, DWORD PairLangId, DWORD ModulId, DWORD Flags) {
    record.Long("PairLangId", PairLangId).Long("ModulId", ModulId).Long("Flags", Flags);
}

// The first language module of the module, in I3 order, that is in the pair;
// ISAM_NO_RECORD when there is none.
int findLangModul(CIsamTable& langModules, DWORD PairLangId, DWORD ModulId,
                  std::uint32_t* LangModulId) {
    std::vector<isam::Position> positions;
    int rc = positionsWithPrefix(langModules, kByModul, &ModulId, sizeof ModulId, &positions);
    if (rc != isam::ISAM_OK) return rc;
    if (positions.empty()) return isam::ISAM_NO_RECORD;
    for (const isam::Position position : positions) {
        std::uint32_t pair = 0;
        rc = langModules.ReadAt(position);
        if (rc == isam::ISAM_OK) rc = langModules.GetLong("PairLangId", &pair);
        if (rc != isam::ISAM_OK) return rc;
        if (pair == PairLangId) return langModules.GetLong("LangModulId", LangModulId);
    }
    return isam::ISAM_NO_RECORD;
}

int appendPairModules(CIsamTable& langModules, DWORD PairLangId, CDWordArray& ids) {
    return appendAllWithId(langModules, kByPair, PairLangId, "LangModulId", ids);
}

}  // namespace

int CDbProject::AddLangModul(DWORD* pLangModulId, DWORD PairLangId, DWORD ModulId, DWORD Flags) {
    return Run([&] {
        return Result(
            addWithNewId(Table(TAB_LMODUL), "LangModulId", pLangModulId,
                         [&](RecordWriter& r) { writeLangModul(r, PairLangId, ModulId, Flags); }));
    });
}

int CDbProject::AddLangModul(DWORD LangModulId, DWORD PairLangId, DWORD ModulId, DWORD Flags) {
    return Run([&] {
        return Result(
            addWithId(Table(TAB_LMODUL), "LangModulId", LangModulId,
                      [&](RecordWriter& r) { writeLangModul(r, PairLangId, ModulId, Flags); }));
    });
}

int CDbProject::GetLangModul(DWORD LangModulId, DWORD* pPairLangId, DWORD* pModulId,
                             DWORD* pFlags) {
    return Run([&] {
        return Result(readFieldsById(Table(TAB_LMODUL), LangModulId, [&](RecordReader& r) {
            r.Long("PairLangId", pPairLangId)
                .Long("ModulId", pModulId)
                .Long("Flags", pFlags);
        }));
    });
}

int CDbProject::GetLangModulId(DWORD* pLangModulId, DWORD PairLangId, DWORD ModulId) {
    return Run([&] {
        std::uint32_t found = 0;
        if (!Succeeded(findLangModul(Table(TAB_LMODUL), PairLangId, ModulId, &found))) return 0;
        if (pLangModulId) *pLangModulId = found;
        return 1;
    });
}

int CDbProject::UpdateLangModul(DWORD LangModulId, DWORD PairLangId, DWORD ModulId, DWORD Flags) {
    return Run([&] {
        return Result(updateById(Table(TAB_LMODUL), LangModulId, [&](RecordWriter& r) {
            writeLangModul(r, PairLangId, ModulId, Flags);
        }));
    });
}

int CDbProject::DeleteLangModul(DWORD LangModulId) {
    return Run([&] { return Result(deleteById(Table(TAB_LMODUL), LangModulId)); });
}

int CDbProject::EnumLangModul(CDWordArray& ids, DWORD PairLangId) {
    return Run([&] { return Result(appendPairModules(Table(TAB_LMODUL), PairLangId, ids)); });
}

int CDbProject::GetLangModulCount(DWORD* pCount, DWORD PairLangId) {
    return Run([&] {
        return Result(countByEnumerating(pCount, [&](CDWordArray& ids) {
            return appendPairModules(Table(TAB_LMODUL), PairLangId, ids);
        }));
    });
}
