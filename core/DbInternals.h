// What the library's own tools and tests may see of a database object beyond its
// public interface: the table objects and the state block.
#pragma once

#include "core/DbState.h"
#include "core/Operation.h"
#include "qvb/CDbObject.h"

class CDbInternals {
public:
    static DbStateBlock* State(CDbObject& db) { return db.m_pStructs; }
    static CIsamTable& Table(CDbObject& db, int index) { return db.Table(index); }
    static int TableCount(CDbObject& db) { return db.GetTopTableIndex(); }
    static int TablesAtStoredVersion(CDbObject& db) { return db.TablesAtStoredVersion(); }
    static const char* Extension(CDbObject& db) { return db.GetDbExtension(); }
    static DWORD SortLocale(const CDbObject& db) { return db.m_SortLCID; }
    // Runs work on the database's tables as one operation, its error recorded.
    template <typename Body>
    static int Run(CDbObject& db, Body body) {
        return db.Run([&] { return db.Result(body()); });
    }
};
