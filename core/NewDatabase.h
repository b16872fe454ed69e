// Creating a database that is ready for use: CreateDb makes the files only, and
// the stored version comes into being here.
#pragma once

#include "qvb/CDbObject.h"

namespace qvb {

constexpr int kCurrentProjectVersion = 21;
constexpr int kCurrentDictionaryVersion = 2;

// The version a new database of the object's kind starts at; 0 for a kind
// without tables.
int currentVersionOf(CDbObject& db);

// Creates the database, opens it and stores the current version as resource 0.
// Leaves it open; 1 on success, 0 with the database's error code otherwise.
int createForUse(CDbObject& db, const char* directory, const char* name);

}  // namespace qvb
