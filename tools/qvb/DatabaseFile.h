// A database named by its file: "DIR/NAME.Prj" is the project NAME in DIR,
// "DIR/NAME.Dic" the dictionary. The library takes the three parts apart.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qvb/qvb.h"

namespace qvbtool {

struct DatabaseFile {
    std::string path;       // DIR/NAME.EXT
    std::string directory;  // DIR/ (with the separator)
    std::string name;       // NAME
    DBTYPEONE kind = PROJECT;
};

const char* kindName(DBTYPEONE kind);

// The file of a database of `kind` named `name` in `directory`.
DatabaseFile databaseIn(const std::string& directory, const std::string& name, DBTYPEONE kind);

// Splits a path by its extension; false, with the reason, when the extension names
// no kind of database or the name is empty.
bool parseDatabaseFile(const std::string& path, DatabaseFile* file, std::string* problem);

// The operands of a command that takes no options and whose first operand is a
// database file (of `kind` when it is not null); `expected` describes the
// operands for the usage error. kExitOk, or the usage error once reported.
struct Operands {
    DatabaseFile file;
    std::vector<std::string> rest;  // the operands after FILE
};
int parseFileOperands(const std::vector<std::string>& args, std::size_t count, const char* expected,
                      const DBTYPEONE* kind, const char* command, const char* usage,
                      Operands* operands);

std::unique_ptr<CDbObject> newDatabase(DBTYPEONE kind);

// Opens the database as it is (no rebuild); kExitOk, or kExitFailed once reported.
int openDatabase(CDbObject& db, const DatabaseFile& file, const char* command);
int closeDatabase(CDbObject& db, const DatabaseFile& file, const char* command);

}  // namespace qvbtool
