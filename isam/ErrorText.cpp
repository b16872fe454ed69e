#include "isam/IsamErrors.h"
#include "isam/Sql.h"

namespace isam {

const char* errorText(int error) {
    switch (error) {
        case ISAM_OK: return "success";
        case ISAM_NO_RECORD: return "no record";
        case ISAM_INSTANCE_TAKEN: return "instance name already registered";
        case ISAM_NO_INSTANCE: return "no such engine instance";
        case ISAM_NOT_INITIALISED: return "engine instance not initialised";
        case ISAM_BAD_PARAMETER: return "bad parameter";
        case ISAM_FILE_NOT_FOUND: return "file not found";
        case ISAM_FILE_EXISTS: return "file already exists";
        case ISAM_NOT_OPEN: return "file not open";
        case ISAM_BAD_FILE_NUMBER: return "file number of the wrong kind";
        case ISAM_TOO_MANY_FILES: return "too many open files in the instance";
        case ISAM_ALREADY_OPEN: return "file already open";
        case ISAM_FILE_BUSY: return "file in use by another process";
        case ISAM_IS_DIRECTORY: return "the path is a directory";
        case ISAM_NOT_CONTAINER: return "not a database of this library";
        case ISAM_DAMAGED: return "database damaged";
        case ISAM_IO_ERROR: return "input/output error";
        case ISAM_DISK_FULL: return "disk full";
        case ISAM_OUT_OF_MEMORY: return "out of memory";
        case ISAM_READ_ONLY: return "file is read-only";
        case ISAM_ACCESS_DENIED: return "permission denied";
        case ISAM_DUPLICATE_KEY: return "duplicate key";
        case ISAM_NO_CURRENT_RECORD: return "no current record";
        case ISAM_RECORD_TOO_LONG: return "record too long for its definition";
        case ISAM_RECORD_TOO_SHORT: return "record too short or malformed";
        case ISAM_KEY_TOO_LONG: return "key value too long";
        case ISAM_BAD_KEY: return "key value cuts a segment";
        case ISAM_BUFFER_TOO_SHORT: return "buffer too short";
        case ISAM_FILE_FULL: return "record positions exhausted";
        case ISAM_RESOURCE_EXISTS: return "resource already exists";
        case ISAM_NO_BATCH: return "no batch open";
        case ISAM_INTERNAL: return "internal engine error";
        default: return "unknown engine error";
    }
}

int fromSqlite(int rc) {
    switch (rc & 0xff) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE: return ISAM_OK;
        case SQLITE_CONSTRAINT: return ISAM_DUPLICATE_KEY;
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
        case SQLITE_FORMAT: return ISAM_DAMAGED;
        case SQLITE_IOERR: return ISAM_IO_ERROR;
        case SQLITE_FULL: return ISAM_DISK_FULL;
        case SQLITE_NOMEM: return ISAM_OUT_OF_MEMORY;
        case SQLITE_BUSY:
        case SQLITE_LOCKED: return ISAM_FILE_BUSY;
        case SQLITE_READONLY:
        case SQLITE_PERM: return ISAM_READ_ONLY;
        case SQLITE_CANTOPEN: return ISAM_FILE_NOT_FOUND;
        case SQLITE_TOOBIG: return ISAM_RECORD_TOO_LONG;
        default: return ISAM_INTERNAL;
    }
}

std::string quoted(const std::string& identifier) {
    std::string out = "\"";
    for (char c : identifier) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + "\"";
}

int execute(sqlite3* db, const std::string& sql) {
    return fromSqlite(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr));
}

}  // namespace isam
