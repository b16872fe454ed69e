// Reading and writing a table in an earlier record layout for the length of one
// operation: the conversions of old databases use it on tables whose records are
// still stored the old way.
#pragma once

#include "core/Catalogue.h"
#include "core/IsamTable.h"
#include "core/LibraryErrors.h"

namespace qvb {

// Binds the earlier layout on construction and the table's current layout again
// on destruction; a table that was open is reopened under each.
class EarlierLayoutScope {
public:
    EarlierLayoutScope(CIsamTable& table, const catalogue::TableDef& earlier);
    ~EarlierLayoutScope();
    EarlierLayoutScope(const EarlierLayoutScope&) = delete;
    EarlierLayoutScope& operator=(const EarlierLayoutScope&) = delete;

    // 0 when the earlier layout is bound (and the table open if it was).
    int status() const { return status_; }

private:
    CIsamTable& table_;
    const catalogue::TableDef* current_;
    bool wasOpen_;
    int status_;
};

// Runs `body` with the table bound to its layout of `generation`; the current
// layout is bound again afterwards, whatever `body` returned.
template <typename Body>
int inEarlierLayout(CIsamTable& table, char generation, int index, Body body) {
    const catalogue::TableDef* layout = catalogue::earlierTable(generation, index);
    if (!layout) return QVB_NO_SCHEMA;
    EarlierLayoutScope scope(table, *layout);
    return scope.status() != isam::ISAM_OK ? scope.status() : body();
}

}  // namespace qvb
