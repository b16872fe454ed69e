#include "tests/db/DbTestSupport.h"

namespace dbtest {

int openTableCount(CDbObject& db) {
    int open = 0;
    for (int i = 0; i < CDbInternals::TableCount(db); ++i) {
        if (CDbInternals::Table(db, i).IsOpen()) ++open;
    }
    return open;
}

}  // namespace dbtest
