#include "isam/Container.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <set>

#include "isam/Keys.h"
#include "isam/RecordSeal.h"
#include "isam/Sql.h"
#include "platform/LocaleCollation.h"

namespace isam {

namespace {

// Marks a file as a container of this engine ("QVB1").
constexpr int kApplicationId = 0x51564231;
constexpr const char* kCatalogue = "qvb_files";
constexpr int kRebuildBatch = 1000;

// An existing file that SQLite cannot even set up or check (an unknown format
// version in a damaged header, say) is a damaged container, not an engine fault.
int asDamage(int rc) { return rc == ISAM_INTERNAL ? ISAM_DAMAGED : rc; }

bool fileExists(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

// What an operating-system error means to a caller; `denied` is the number for a
// permission refused, which depends on what was asked for.
int fromErrno(int error, int denied) {
    switch (error) {
        case EACCES:
        case EPERM: return denied;
        case EROFS: return ISAM_READ_ONLY;
        case ENOENT:
        case ENOTDIR: return ISAM_FILE_NOT_FOUND;
        case EISDIR: return ISAM_IS_DIRECTORY;
        case ENOSPC: return ISAM_DISK_FULL;
        case ENOMEM: return ISAM_OUT_OF_MEMORY;
        default: return ISAM_IO_ERROR;
    }
}

int accessProblem(const std::string& path, int mode, int denied) {
    if (::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0) return ISAM_OK;
    return fromErrno(errno, denied);
}

std::string directoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Why a container could not be opened (or created) at `path`, found before SQLite
// touches anything, so that the answer says what is wrong. The log is kept beside
// the container, so its directory must be writable too.
int pathProblem(const std::string& path, bool create) {
    struct stat st;
    if (::stat(path.c_str(), &st) == 0) {
        if (S_ISDIR(st.st_mode)) return ISAM_IS_DIRECTORY;
        if (create) return ISAM_FILE_EXISTS;
        int rc = accessProblem(path, R_OK, ISAM_ACCESS_DENIED);
        if (!rc) rc = accessProblem(path, W_OK, ISAM_READ_ONLY);
        if (rc) return rc;
    } else if (errno != ENOENT || !create) {
        return fromErrno(errno, ISAM_ACCESS_DENIED);
    }
    return accessProblem(directoryOf(path), W_OK | X_OK, ISAM_ACCESS_DENIED);
}

// Closes a connection that refused its file. A log that was there before stays
// as it was: checkpointing it would write to a file that is not ours.
void closeUntouched(sqlite3* db, bool logExisted) {
    if (logExisted) sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    sqlite3_close_v2(db);
}

int compareUnderLocale(void* context, int aLength, const void* a, int bLength, const void* b) {
    const std::uint32_t lcid = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(context));
    return platform::compareText(lcid, platform::kIgnoreWidth, static_cast<const char*>(a),
                                 static_cast<std::size_t>(aLength), static_cast<const char*>(b),
                                 static_cast<std::size_t>(bLength));
}

// Registers a locale collation when a statement or the schema names one.
void collationNeeded(void*, sqlite3* db, int, const char* name) {
    const char* prefix = "qvb_lcid_";
    if (std::strncmp(name, prefix, std::strlen(prefix)) != 0) return;
    char* end = nullptr;
    unsigned long lcid = std::strtoul(name + std::strlen(prefix), &end, 10);
    if (!end || *end || lcid == 0 || lcid > 0xFFFFFFFFul) return;
    sqlite3_create_collation_v2(db, name, SQLITE_UTF8, reinterpret_cast<void*>(std::uintptr_t(lcid)),
                                compareUnderLocale, nullptr);
}

int queryInt(sqlite3* db, const std::string& sql, std::int64_t* value) {
    Statement st;
    int rc = st.prepare(db, sql);
    if (rc) return rc;
    int step = st.step();
    if (step != SQLITE_ROW) return step == SQLITE_DONE ? ISAM_DAMAGED : fromSqlite(step);
    *value = st.columnInt(0);
    return ISAM_OK;
}

// Reads the mark of a container of this engine; writes nothing. An empty file
// or another program's database is sound, just not ours.
int checkIdentity(sqlite3* db) {
    std::int64_t id = 0;
    int rc = queryInt(db, "PRAGMA application_id", &id);
    if (rc) return rc;
    return id == kApplicationId ? ISAM_OK : ISAM_NOT_CONTAINER;
}

// A file that bears the mark but has no catalogue is damaged or forged.
int checkCatalogue(sqlite3* db) {
    Statement st;
    const int rc = st.prepare(db, "SELECT name, member, ordinal, locale, signature FROM " +
                                      std::string(kCatalogue) + " LIMIT 0");
    return rc ? ISAM_DAMAGED : ISAM_OK;
}

// The storage format a container was written in; one this engine does not know
// is not a container it can read.
int storageFormat(sqlite3* db, int* format) {
    std::int64_t version = 0;
    const int rc = queryInt(db, "PRAGMA user_version", &version);
    if (rc) return rc;
    if (version != kFirstFormat && version != kSealedFormat) return ISAM_DAMAGED;
    *format = static_cast<int>(version);
    return ISAM_OK;
}

// "ok", or the first problem an integrity check reports.
int integrity(sqlite3* db, const char* pragma) {
    Statement st;
    int rc = st.prepare(db, pragma);
    if (rc) return rc;
    int step = st.step();
    if (step != SQLITE_ROW) return fromSqlite(step);
    const unsigned char* text = st.columnBytes(0);
    return text && std::strcmp(reinterpret_cast<const char*>(text), "ok") == 0 ? ISAM_OK : ISAM_DAMAGED;
}

}  // namespace

StorageTuning& storageTuning() {
    static StorageTuning tuning;
    return tuning;
}

Container::~Container() {
    if (db_) close();
}

// Opens a connection with every setting that writes nothing to the file, so that
// an existing file can be looked at before anything is written to it.
int Container::connect(const std::string& path, bool create, sqlite3** db) {
    *db = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0) |
                      SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    int rc = sqlite3_open_v2(path.c_str(), db, flags, nullptr);
    if (rc != SQLITE_OK) {
        // The operating system's word counts only when the file could not be opened.
        const int error = *db && (rc & 0xff) == SQLITE_CANTOPEN ? sqlite3_system_errno(*db) : 0;
        sqlite3_close_v2(*db);
        *db = nullptr;
        return error ? fromErrno(error, ISAM_ACCESS_DENIED) : fromSqlite(rc);
    }
    sqlite3_collation_needed(*db, nullptr, collationNeeded);
    sqlite3_db_config(*db, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_busy_timeout(*db, 0);
    const StorageTuning& tuning = storageTuning();
    // The exclusive locking mode comes first so that the log needs no shared-memory
    // index and a second process is refused instead of waiting.
    std::string setup = "PRAGMA locking_mode=EXCLUSIVE;";
    if (create) setup += "PRAGMA page_size=" + std::to_string(tuning.pageSize) + ";";
    setup += "PRAGMA synchronous=NORMAL; PRAGMA cell_size_check=ON; PRAGMA trusted_schema=OFF;"
             "PRAGMA cache_size=-" +
             std::to_string(tuning.cacheKiB) +
             "; PRAGMA wal_autocheckpoint=" + std::to_string(tuning.checkpointPages) + ";";
    rc = execute(*db, setup);
    // SQLite falls back to reading a file it may not write.
    if (!rc && sqlite3_db_readonly(*db, "main") == 1) rc = ISAM_READ_ONLY;
    if (rc) {
        sqlite3_close_v2(*db);
        *db = nullptr;
    }
    return rc;
}

// The write-ahead log: the first setting that writes to the file.
int Container::useLog(sqlite3* db) { return execute(db, "PRAGMA journal_mode=WAL"); }

// Connects to an existing file once it is known to be a container of this engine
// with its catalogue; nothing has been written to it up to here.
int Container::connectOurs(const std::string& path, sqlite3** db) {
    *db = nullptr;
    int rc = pathProblem(path, false);
    if (rc) return rc;
    // Ours never have a rollback journal; reading past one would replay it.
    if (fileExists(path + "-journal")) return ISAM_NOT_CONTAINER;
    const bool logExisted = fileExists(path + "-wal");
    if ((rc = connect(path, false, db))) return rc;
    rc = checkIdentity(*db);
    if (!rc) rc = checkCatalogue(*db);
    if (rc) {
        closeUntouched(*db, logExisted);
        *db = nullptr;
    }
    return asDamage(rc);
}

int Container::create(const std::string& path, std::unique_ptr<Container>* out) {
    if (path.empty()) return ISAM_BAD_PARAMETER;
    int rc = pathProblem(path, true);
    if (rc) return rc;
    sqlite3* db = nullptr;
    rc = connect(path, true, &db);
    if (!rc) rc = useLog(db);
    if (rc) {
        sqlite3_close_v2(db);
        std::remove(path.c_str());
        return rc;
    }
    rc = execute(db, "BEGIN; PRAGMA application_id=" + std::to_string(kApplicationId) +
                         "; PRAGMA user_version=" + std::to_string(kCurrentFormat) +
                         "; CREATE TABLE " + std::string(kCatalogue) +
                         "(name TEXT PRIMARY KEY, member TEXT NOT NULL, ordinal INTEGER NOT NULL,"
                         " locale INTEGER NOT NULL DEFAULT 0, signature TEXT); COMMIT;");
    if (rc) {
        sqlite3_close_v2(db);
        std::remove(path.c_str());
        return rc;
    }
    out->reset(new Container(db));
    return ISAM_OK;
}

int Container::open(const std::string& path, std::unique_ptr<Container>* out) {
    if (path.empty()) return ISAM_BAD_PARAMETER;
    sqlite3* db = nullptr;
    int rc = connectOurs(path, &db);
    if (rc) return rc;
    // An open reads what it needs and no more, whatever the size of the file:
    // damage is found by the read that meets it (every record carries its
    // checksum, every page is checked as SQLite reads it) or by verify().
    int format = 0;
    rc = storageFormat(db, &format);
    if (!rc) rc = useLog(db);
    if (rc) {
        sqlite3_close_v2(db);
        return asDamage(rc);
    }
    out->reset(new Container(db));
    (*out)->format_ = format;
    return ISAM_OK;
}

int Container::verify() {
    if (!db_) return ISAM_NOT_OPEN;
    int rc = integrity(db_, "PRAGMA integrity_check(1)");
    if (rc || format_ < kSealedFormat) return rc;
    // Every record and resource against its checksum.
    Statement members;
    if ((rc = members.prepare(db_, "SELECT name FROM " + std::string(kCatalogue) + " WHERE ordinal = 0"))) {
        return rc;
    }
    std::vector<std::string> tables;
    while (members.step() == SQLITE_ROW) tables.emplace_back(reinterpret_cast<const char*>(members.columnBytes(0)));
    for (const std::string& table : tables) {
        if ((rc = verifySeals("SELECT rec FROM " + quoted(table))) ||
            (rc = verifySeals("SELECT data FROM " + quoted(table + "$res")))) {
            return rc;
        }
    }
    return ISAM_OK;
}

int Container::verifySeals(const std::string& sql) {
    Statement st;
    // A member that never had a resource has no resource table.
    if (st.prepare(db_, sql) != ISAM_OK) return sql.find("$res") != std::string::npos ? ISAM_OK : ISAM_DAMAGED;
    int step;
    std::size_t length = 0;
    while ((step = st.step()) == SQLITE_ROW) {
        if (!unseal(st.columnBytes(0), st.columnSize(0), &length)) return ISAM_DAMAGED;
    }
    return step == SQLITE_DONE ? ISAM_OK : asDamage(fromSqlite(step));
}

int Container::rebuild(const std::string& path) {
    if (path.empty()) return ISAM_BAD_PARAMETER;
    sqlite3* db = nullptr;
    int rc = connectOurs(path, &db);
    if (rc) return rc;
    rc = useLog(db);
    if (!rc && integrity(db, "PRAGMA integrity_check(1)") != ISAM_OK) {
        // Damaged indexes are rebuilt from the table data; damaged data stays damaged.
        rc = execute(db, "REINDEX");
        if (!rc) rc = integrity(db, "PRAGMA integrity_check(1)");
    }
    if (!rc) rc = execute(db, "VACUUM");
    const int closed = fromSqlite(sqlite3_close_v2(db));
    return asDamage(rc ? rc : closed);
}

int Container::close() {
    if (!db_) return ISAM_OK;
    int rc = commit();
    members_.clear();
    begin_ = Statement();
    commit_ = Statement();
    rollback_ = Statement();
    const int closed = fromSqlite(sqlite3_close_v2(db_));
    db_ = nullptr;
    return rc ? rc : closed;
}

// ---- Transactions --------------------------------------------------------------------

int Container::runOnce(Statement& st, const char* sql) {
    if (!st.prepared()) {
        int rc = st.prepare(db_, sql);
        if (rc) return rc;
    }
    const int step = st.step();
    st.reset();
    return step == SQLITE_DONE ? ISAM_OK : fromSqlite(step);
}

int Container::ensureTransaction() {
    if (!sqlite3_get_autocommit(db_)) return ISAM_OK;
    const int rc = runOnce(begin_, "BEGIN");
    inTransaction_ = rc == ISAM_OK;
    return rc;
}

void Container::resetAllCursors() {
    for (auto& entry : members_) entry.second->releaseReaders();
}

int Container::commit() {
    // Work that SQLite already rolled back must not be reported as committed.
    if (transactionLost()) {
        rollback();
        return ISAM_IO_ERROR;
    }
    if (sqlite3_get_autocommit(db_)) return ISAM_OK;
    resetAllCursors();
    const int rc = runOnce(commit_, "COMMIT");
    if (rc == ISAM_OK) {
        inTransaction_ = false;
        return ISAM_OK;
    }
    rollback();
    return rc;
}

int Container::rollback() {
    const bool lost = transactionLost();
    if (sqlite3_get_autocommit(db_) && !lost) return ISAM_OK;
    resetAllCursors();
    if (!lost) {
        const int rc = runOnce(rollback_, "ROLLBACK");
        if (rc) return rc;
    }
    inTransaction_ = false;
    return refreshMembers();
}

int Container::refreshMembers() {
    int rc = ISAM_OK;
    for (auto& entry : members_) {
        Member& member = *entry.second;
        std::string signature;
        bool exists = false;
        std::vector<std::uint32_t> locales;
        std::uint32_t dataLocale = 0;
        if (!rc) rc = catalogue(member.table(), &signature, &exists);
        if (!rc && exists && signature == definitionSignature(member.definition())) {
            rc = storedLocales(member.table(), member.indexCount(), &locales, &dataLocale);
            if (!rc) {
                member.restoreLocales(locales, dataLocale);
                continue;
            }
        }
        // Gone, replaced, or not readable now: the member answers "not open" until reopened.
        member.markStale();
    }
    return rc;
}

Savepoint::Savepoint(sqlite3* db) : db_(db) {}

// A unit whose transaction SQLite already rolled back has nothing left to undo.
Savepoint::~Savepoint() {
    if (open_ && !sqlite3_get_autocommit(db_)) {
        execute(db_, "ROLLBACK TO qvb_unit");
        execute(db_, "RELEASE qvb_unit");
    }
}

int Savepoint::begin() {
    int rc = execute(db_, "SAVEPOINT qvb_unit");
    open_ = rc == ISAM_OK;
    return rc;
}

int Savepoint::release() {
    if (open_ && sqlite3_get_autocommit(db_)) {
        open_ = false;
        return ISAM_IO_ERROR;
    }
    int rc = execute(db_, "RELEASE qvb_unit");
    if (!rc) open_ = false;
    return rc;
}

int Container::settleForBulkWork() {
    if (bulk_) return ISAM_OK;
    const StorageTuning& tuning = storageTuning();
    const int rc = execute(db_, "PRAGMA cache_size=-" + std::to_string(tuning.bulkCacheKiB) +
                                    "; PRAGMA wal_autocheckpoint=" + std::to_string(tuning.bulkCheckpointPages));
    bulk_ = rc == ISAM_OK;
    return rc;
}

// ---- Members -----------------------------------------------------------------------------

int Container::catalogue(const std::string& table, std::string* signature, bool* exists) {
    Statement st;
    int rc = st.prepare(db_, "SELECT signature FROM " + std::string(kCatalogue) +
                                 " WHERE name = ?1 AND ordinal = 0");
    if (rc) return rc;
    st.bindText(1, table.data(), table.size());
    int step = st.step();
    *exists = step == SQLITE_ROW;
    if (step == SQLITE_ROW) {
        const unsigned char* text = st.columnBytes(0);
        signature->assign(text ? reinterpret_cast<const char*>(text) : "", st.columnSize(0));
        return ISAM_OK;
    }
    return step == SQLITE_DONE ? ISAM_OK : fromSqlite(step);
}

int Container::closedMember(const std::string& table, std::string* signature) {
    if (members_.count(table)) return ISAM_ALREADY_OPEN;
    bool exists = false;
    int rc = catalogue(table, signature, &exists);
    if (rc) return rc;
    return exists ? ISAM_OK : ISAM_FILE_NOT_FOUND;
}

int Container::holdsMember(const std::string& table, bool* held) {
    std::string signature;
    return catalogue(table, &signature, held);
}

int Container::checkMemberShape(const std::string& table, std::size_t indexes) {
    Statement columns;
    int rc = columns.prepare(db_, "SELECT name FROM pragma_table_info(?1)");
    if (rc) return asDamage(rc);
    columns.bindText(1, table.data(), table.size());
    std::set<std::string> names;
    int step;
    while ((step = columns.step()) == SQLITE_ROW) {
        names.emplace(reinterpret_cast<const char*>(columns.columnBytes(0)), columns.columnSize(0));
    }
    if (step != SQLITE_DONE) return asDamage(fromSqlite(step));
    bool complete = names.count("pos") && names.count("rec");
    for (std::size_t i = 0; complete && i < indexes; ++i) complete = names.count(keyColumn(i)) > 0;
    if (!complete) return ISAM_DAMAGED;

    std::int64_t missing = 0;
    Statement indexesMissing;
    rc = indexesMissing.prepare(db_, "SELECT count(*) FROM " + std::string(kCatalogue) +
                                         " f WHERE f.member = ?1 AND f.ordinal > 0 AND NOT EXISTS"
                                         " (SELECT 1 FROM sqlite_schema s WHERE s.type = 'index'"
                                         " AND s.name = f.name AND s.tbl_name = ?1)");
    if (rc) return asDamage(rc);
    indexesMissing.bindText(1, table.data(), table.size());
    step = indexesMissing.step();
    if (step != SQLITE_ROW) return asDamage(fromSqlite(step));
    missing = indexesMissing.columnInt(0);
    return missing == 0 ? ISAM_OK : ISAM_DAMAGED;
}

int Container::storedLocales(const std::string& table, std::size_t indexes,
                             std::vector<std::uint32_t>* locales, std::uint32_t* dataLocale) {
    locales->assign(indexes, 0);
    *dataLocale = 0;
    Statement st;
    int rc = st.prepare(db_, "SELECT ordinal, locale FROM " + std::string(kCatalogue) +
                                 " WHERE member = ?1");
    if (rc) return rc;
    st.bindText(1, table.data(), table.size());
    int step;
    while ((step = st.step()) == SQLITE_ROW) {
        const std::int64_t ordinal = st.columnInt(0);
        const auto lcid = static_cast<std::uint32_t>(st.columnInt(1));
        if (ordinal == 0) {
            *dataLocale = lcid;
        } else if (ordinal > 0 && std::size_t(ordinal) <= indexes) {
            (*locales)[ordinal - 1] = lcid;
        }
    }
    return step == SQLITE_DONE ? ISAM_OK : fromSqlite(step);
}

namespace {

bool isValidDefinition(const FileDefinition& definition) {
    const std::string table = localName(definition.name);
    if (table.empty() || table.rfind("sqlite_", 0) == 0 || table.rfind("qvb_", 0) == 0) return false;
    if (definition.indexes.size() > kMostIndexes) return false;
    for (const IndexDefinition& index : definition.indexes) {
        if (!isValidIndex(definition, index) || localName(index.name).empty()) return false;
    }
    return true;
}

int insertCatalogue(sqlite3* db, const std::string& name, const std::string& member, int ordinal,
                    std::uint32_t locale, const std::string* signature) {
    Statement st;
    int rc = st.prepare(db, "INSERT OR REPLACE INTO " + std::string(kCatalogue) +
                                "(name, member, ordinal, locale, signature) VALUES(?1, ?2, ?3, ?4, ?5)");
    if (rc) return rc;
    st.bindText(1, name.data(), name.size());
    st.bindText(2, member.data(), member.size());
    st.bindInt(3, ordinal);
    st.bindInt(4, locale);
    if (signature) st.bindText(5, signature->data(), signature->size());
    int step = st.step();
    return step == SQLITE_DONE ? ISAM_OK : fromSqlite(step);
}

}  // namespace

int Container::createIndexes(const FileDefinition& definition,
                             const std::vector<std::uint32_t>& locales) {
    const std::string table = localName(definition.name);
    for (std::size_t i = 0; i < definition.indexes.size(); ++i) {
        int rc = execute(db_, createIndexSql(table, definition.indexes[i], i, locales[i]));
        if (rc) return rc;
        rc = insertCatalogue(db_, localName(definition.indexes[i].name), table, int(i) + 1,
                             locales[i], nullptr);
        if (rc) return rc;
    }
    return ISAM_OK;
}

int Container::createMember(const FileDefinition& definition, Member** out) {
    if (!isValidDefinition(definition)) return ISAM_BAD_PARAMETER;
    const std::string table = localName(definition.name);
    std::string signature;
    bool exists = false;
    int rc = catalogue(table, &signature, &exists);
    if (rc) return rc;
    if (exists) return ISAM_FILE_EXISTS;

    std::string sql = "CREATE TABLE " + quoted(table) + "(pos INTEGER PRIMARY KEY, rec BLOB NOT NULL";
    for (std::size_t i = 0; i < definition.indexes.size(); ++i) sql += ", " + keyColumn(i);
    sql += ")";
    resetAllCursors();
    Savepoint unit(db_);
    signature = definitionSignature(definition);
    const std::vector<std::uint32_t> locales(definition.indexes.size(), 0);
    if ((rc = unit.begin()) || (rc = execute(db_, sql)) ||
        (rc = insertCatalogue(db_, table, table, 0, 0, &signature)) ||
        (rc = createIndexes(definition, locales)) || (rc = unit.release())) {
        // A name SQLite already knows (an index of another member, say) is a clash.
        return rc == ISAM_INTERNAL ? ISAM_FILE_EXISTS : rc;
    }
    return openMember(definition, out);
}

int Container::openMember(const FileDefinition& definition, Member** out) {
    if (!isValidDefinition(definition)) return ISAM_BAD_PARAMETER;
    const std::string table = localName(definition.name);
    std::string signature;
    int rc = closedMember(table, &signature);
    if (rc) return rc;
    // A member keeps the records and keys it was made with: opened under another
    // definition (an older layout, say), it goes on with its own.
    FileDefinition own = definition;
    if (signature != definitionSignature(definition)) {
        if (!definitionFromSignature(signature, &own)) return ISAM_DAMAGED;
        for (std::size_t i = definition.indexes.size(); i < own.indexes.size(); ++i) {
            own.indexes[i].name = table + "I" + std::to_string(i + 1) + ".Qvi";
        }
        if (!isValidDefinition(own)) return ISAM_DAMAGED;
    }
    if ((rc = checkMemberShape(table, own.indexes.size()))) return rc;
    std::vector<std::uint32_t> locales;
    std::uint32_t dataLocale = 0;
    rc = storedLocales(table, own.indexes.size(), &locales, &dataLocale);
    if (rc) return rc;
    auto member = std::make_unique<Member>(db_, own, locales, dataLocale, format_);
    *out = member.get();
    members_[table] = std::move(member);
    return ISAM_OK;
}

int Container::closeMember(Member* member) {
    member->releaseReaders();
    members_.erase(member->table());
    return ISAM_OK;
}

int Container::deleteMember(const FileDefinition& definition) {
    const std::string table = localName(definition.name);
    if (table.empty()) return ISAM_BAD_PARAMETER;
    std::string signature;
    int rc = closedMember(table, &signature);
    if (rc) return rc;
    resetAllCursors();
    Savepoint unit(db_);
    Statement forget;
    if ((rc = unit.begin()) || (rc = execute(db_, "DROP TABLE " + quoted(table))) ||
        (rc = execute(db_, "DROP TABLE IF EXISTS " + quoted(table + "$res"))) ||
        (rc = forget.prepare(db_, "DELETE FROM " + std::string(kCatalogue) + " WHERE member = ?1"))) {
        return rc;
    }
    forget.bindText(1, table.data(), table.size());
    const int step = forget.step();
    if (step != SQLITE_DONE) return fromSqlite(step);
    return unit.release();
}

int Container::recomputeKeys(const FileDefinition& definition,
                             const std::vector<std::uint32_t>& locales) {
    const std::string table = localName(definition.name);
    Statement select, update;
    int rc = select.prepare(db_, "SELECT rowid, rec FROM " + quoted(table) +
                                     " WHERE rowid > ?1 ORDER BY rowid LIMIT " +
                                     std::to_string(kRebuildBatch));
    if (rc || definition.indexes.empty()) return rc;
    std::string sql = "UPDATE " + quoted(table) + " SET ";
    for (std::size_t i = 0; i < definition.indexes.size(); ++i) {
        sql += (i ? ", " : "") + keyColumn(i) + " = ?" + std::to_string(i + 1);
    }
    rc = update.prepare(db_, sql + " WHERE rowid = ?" + std::to_string(definition.indexes.size() + 1));
    if (rc) return rc;

    std::int64_t after = 0;
    std::vector<FieldSpan> fields;
    for (;;) {
        // Read a batch, then write it: the scan never runs across its own updates.
        std::vector<std::pair<std::int64_t, std::vector<std::string>>> batch;
        select.reset();
        select.bindInt(1, after);
        int step;
        while ((step = select.step()) == SQLITE_ROW) {
            const std::int64_t row = select.columnInt(0);
            const unsigned char* record = select.columnBytes(1);
            std::size_t length = select.columnSize(1);
            if ((format_ >= kSealedFormat && !unseal(record, length, &length)) ||
                parseRecord(definition, record, length, &fields) != ISAM_OK) {
                return ISAM_DAMAGED;
            }
            std::vector<std::string> keys;
            for (const IndexDefinition& index : definition.indexes) {
                keys.push_back(buildKey(index, record, fields, keyForm()));
            }
            batch.emplace_back(row, std::move(keys));
        }
        select.reset();
        if (step != SQLITE_DONE) return fromSqlite(step);
        if (batch.empty()) return ISAM_OK;
        for (const auto& [row, keys] : batch) {
            update.reset();
            for (std::size_t i = 0; i < keys.size(); ++i) {
                const bool text = locales[i] && isLocaleOrdered(definition.indexes[i]);
                if (text) {
                    update.bindText(int(i) + 1, keys[i].data(), keys[i].size());
                } else {
                    update.bindBlob(int(i) + 1, keys[i].data(), keys[i].size());
                }
            }
            update.bindInt(int(keys.size()) + 1, row);
            step = update.step();
            if (step != SQLITE_DONE) return fromSqlite(step);
        }
        after = batch.back().first;
    }
}

int Container::rebuildMember(const FileDefinition& definition) {
    if (!isValidDefinition(definition)) return ISAM_BAD_PARAMETER;
    const std::string table = localName(definition.name);
    std::string signature;
    int rc = closedMember(table, &signature);
    if (rc) return rc;

    // The locales set on the indexes survive the rebuild; a new index starts at 0.
    std::vector<std::uint32_t> locales(definition.indexes.size(), 0);
    {
        Statement st;
        if ((rc = st.prepare(db_, "SELECT locale FROM " + std::string(kCatalogue) + " WHERE name = ?1"))) {
            return rc;
        }
        for (std::size_t i = 0; i < definition.indexes.size(); ++i) {
            const std::string name = localName(definition.indexes[i].name);
            st.reset();
            st.bindText(1, name.data(), name.size());
            if (st.step() == SQLITE_ROW) locales[i] = static_cast<std::uint32_t>(st.columnInt(0));
        }
    }

    resetAllCursors();
    Savepoint unit(db_);
    if ((rc = unit.begin())) return rc;
    // Drop the old indexes, make room for as many key columns as the definition
    // needs, recompute every key from the records, and index them again.
    Statement oldIndexes;
    if ((rc = oldIndexes.prepare(db_, "SELECT name FROM sqlite_schema WHERE type = 'index' AND"
                                      " tbl_name = ?1 AND sql IS NOT NULL"))) {
        return rc;
    }
    oldIndexes.bindText(1, table.data(), table.size());
    std::vector<std::string> drops;
    while (oldIndexes.step() == SQLITE_ROW) {
        drops.emplace_back(reinterpret_cast<const char*>(oldIndexes.columnBytes(0)), oldIndexes.columnSize(0));
    }
    oldIndexes.reset();
    for (const std::string& name : drops) {
        if ((rc = execute(db_, "DROP INDEX " + quoted(name)))) return rc;
    }
    std::int64_t columns = 0;
    if ((rc = queryInt(db_, "SELECT count(*) FROM pragma_table_info(" + quoted(table) + ")", &columns))) {
        return rc;
    }
    // The table holds the position, the record and one key column per index.
    for (std::size_t i = std::size_t(columns) - 2; i < definition.indexes.size(); ++i) {
        if ((rc = execute(db_, "ALTER TABLE " + quoted(table) + " ADD COLUMN " + keyColumn(i)))) return rc;
    }
    Statement forget;
    if ((rc = forget.prepare(db_, "DELETE FROM " + std::string(kCatalogue) +
                                      " WHERE member = ?1 AND ordinal > 0"))) {
        return rc;
    }
    forget.bindText(1, table.data(), table.size());
    if (forget.step() != SQLITE_DONE) return ISAM_INTERNAL;
    signature = definitionSignature(definition);
    std::uint32_t dataLocale = 0;
    std::vector<std::uint32_t> unused;
    if ((rc = storedLocales(table, 0, &unused, &dataLocale)) ||
        (rc = insertCatalogue(db_, table, table, 0, dataLocale, &signature)) ||
        (rc = recomputeKeys(definition, locales)) || (rc = createIndexes(definition, locales))) {
        return rc;
    }
    return unit.release();
}

int Container::setLocale(Member* member, std::size_t ordinal, std::uint32_t lcid) {
    resetAllCursors();
    Savepoint unit(db_);
    int rc = unit.begin();
    if (rc) return rc;
    const FileDefinition& definition = member->definition();
    std::string name;
    if (ordinal == 0) {
        member->setDataLocale(lcid);
        name = member->table();
    } else {
        if ((rc = member->setIndexLocale(ordinal - 1, lcid))) return rc;
        name = localName(definition.indexes[ordinal - 1].name);
    }
    Statement st;
    if ((rc = st.prepare(db_, "UPDATE " + std::string(kCatalogue) + " SET locale = ?1 WHERE name = ?2"))) {
        return rc;
    }
    st.bindInt(1, lcid);
    st.bindText(2, name.data(), name.size());
    const int step = st.step();
    if (step != SQLITE_DONE) return fromSqlite(step);
    return unit.release();
}

}  // namespace isam
