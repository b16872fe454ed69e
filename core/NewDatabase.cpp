#include "core/NewDatabase.h"

#include <cstdint>

namespace qvb {

int currentVersionOf(CDbObject& db) {
    switch (db.GetDbTyp()) {
        case PROJECT: return kCurrentProjectVersion;
        case DICTINARY: return kCurrentDictionaryVersion;
    }
    return 0;
}

int createForUse(CDbObject& db, const char* directory, const char* name) {
    if (!db.CreateDb(directory, name) || !db.OpenDb(directory, name, 0)) return 0;
    const int version = currentVersionOf(db);
    if (version == 0) return 1;
    std::int32_t stored = version;
    return db.AddResource(0, &stored, sizeof stored);
}

}  // namespace qvb
