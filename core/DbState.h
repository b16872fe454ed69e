// The state block of a database object: the engine instance, the container and
// one table object per table of the kind. Copies of a database object share it.
#pragma once

#include <array>
#include <memory>

#include "core/Catalogue.h"
#include "core/IsamContainer.h"
#include "core/IsamTable.h"
#include "core/TrovaDB.h"

enum DbState : int {
    DB_ALLOCATED = 0,   // objects exist, nothing registered
    DB_REGISTERED = 1,  // schemas bound, file names known
    DB_OPEN = 2,        // container and tables open
};

struct DbStateBlock {
    DbState state = DB_ALLOCATED;
    // Database objects sharing the block (an object and its copies); the last one
    // to let go of it takes it down.
    int owners = 1;
    std::unique_ptr<CTrovaDB> engine;
    std::unique_ptr<CIsamContainer> container;
    std::array<std::unique_ptr<CIsamTable>, qvb::catalogue::kTableCount> tables;
    // Stands in for a table the database does not have: it has no schema, so every
    // operation on it fails with the no-schema code instead of touching memory.
    CIsamTable absent;
};
