// Language modules: one module of the project in one language pair.
#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// I2 holds the PairLangId, duplicates allowed: the modules of one pair.
constexpr int kByPair = 2;

}  // namespace

int CDbProject::EnumLangModul(CDWordArray& ids, DWORD PairLangId) {
    return Run([&] {
        return Result(appendAllWithId(Table(TAB_LMODUL), kByPair, PairLangId, "LangModulId", ids));
    });
}
