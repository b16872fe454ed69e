#include "core/EarlierLayout.h"

#include "isam/IsamErrors.h"

namespace qvb {

namespace {

// Binds `layout` to the table, reopening it when it was open.
int rebind(CIsamTable& table, const catalogue::TableDef& layout, bool open) {
    if (table.IsOpen()) {
        const int closed = table.Close();
        if (closed != isam::ISAM_OK) return closed;
    }
    table.ReleaseDefinition();
    table.Define(layout);
    return open ? table.Open() : isam::ISAM_OK;
}

}  // namespace

EarlierLayoutScope::EarlierLayoutScope(CIsamTable& table, const catalogue::TableDef& earlier)
    : table_(table), current_(table.Table()), wasOpen_(table.IsOpen()), status_(QVB_NO_SCHEMA) {
    if (current_) status_ = rebind(table_, earlier, wasOpen_);
}

EarlierLayoutScope::~EarlierLayoutScope() {
    // A table that cannot be reopened stays closed; its next operation says so.
    if (current_) (void)rebind(table_, *current_, wasOpen_);
}

}  // namespace qvb
