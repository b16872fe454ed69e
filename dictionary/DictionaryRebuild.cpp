// After a rebuilding open: the phrases are copied out to the work table and back,
// so that the phrase indexes are built afresh under the sort locale.
#include "core/Operation.h"
#include "core/RecordAccess.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// Copies every record of `from`, in identifier order, into `to`.
int copyAll(CIsamTable& from, CIsamTable& to) {
    return forEachRecord(from, 1, [&] {
        const int rc = to.CopyFieldsFrom(from);
        return rc != isam::ISAM_OK ? rc : to.Add();
    });
}

}  // namespace

int CDbObject::UpdateDictionaryAfterRebuild() {
    return Run([&] {
        CIsamTable& phrases = Table(TAB_DIC);
        CIsamTable& work = Table(TAB_DICT);
        return Succeeded(phrases.SetLocale(0)) && Succeeded(copyAll(phrases, work)) &&
               Succeeded(deleteAll(phrases)) && Succeeded(phrases.SetLocale(m_SortLCID)) &&
               Succeeded(copyAll(work, phrases)) && Succeeded(deleteAll(work));
    });
}
