// The sort locale: the locale every index of the open database orders text keys by.
#include <string>

#include "core/DbState.h"
#include "core/Operation.h"

int CDbObject::SetSortLCID(DWORD lcid, int Reopen) {
    m_SortLCID = lcid;
    if (!m_pStructs || m_pStructs->state != DB_OPEN) return 1;
    if (Reopen) {
        // Rebuilding every index is what puts the existing keys in the new order.
        const std::string path(m_FilePath);
        const std::string name(m_FileName);
        return CloseDb() && OpenDb(path.c_str(), name.c_str(), 1) ? 1 : 0;
    }
    return Run([&] {
        // Only new keys follow the new order: the indexes are not rebuilt here, and
        // a table that refuses the locale keeps its order.
        const int count = TablesAtStoredVersion();
        for (int i = 0; i < count; ++i) (void)Table(i).SetLocale(lcid);
        return 1;
    });
}
