// A container file: one SQLite database holding every member of one database,
// with the engine's catalogue of members (definition signature and locales).
#pragma once

#include <sqlite3.h>

#include <map>
#include <memory>
#include <string>

#include "isam/Isam.h"
#include "isam/Member.h"
#include "isam/RecordSeal.h"
#include "isam/Sql.h"

namespace isam {

// Storage settings, chosen by measurement (bench/).
struct StorageTuning {
    int pageSize = 4096;
    int cacheKiB = 16384;
    // Once an application's own batch has begun: many writes between two commits.
    int bulkCacheKiB = 262144;
    int bulkCheckpointPages = 65536;
    int checkpointPages = 10000;
};
StorageTuning& storageTuning();

class Container {
public:
    ~Container();

    static int create(const std::string& path, std::unique_ptr<Container>* out);
    static int open(const std::string& path, std::unique_ptr<Container>* out);
    // Integrity check, index repair and compaction of a closed container file.
    static int rebuild(const std::string& path);

    // The whole file checked: every page and index, every record's checksum.
    int verify();

    // Commits and closes every member and the file.
    int close();

    // The connection always works inside a transaction: reads then need no
    // transaction of their own, and writes are committed by commit().
    int ensureTransaction();
    // A commit that fails has not happened: the transaction is rolled back.
    int commit();
    int rollback();
    // SQLite ended the transaction on its own (it rolls back on an I/O failure).
    bool transactionLost() const { return inTransaction_ && sqlite3_get_autocommit(db_); }

    // Settles the connection for bulk work: a page cache large enough that a batch
    // of inserts all over the indexes does not spill or read its pages again, and
    // fewer checkpoints, each copying pages that several commits rewrote once.
    // It stays so until the file is closed: the next batch is likely to follow.
    int settleForBulkWork();

    int createMember(const FileDefinition& definition, Member** out);
    int openMember(const FileDefinition& definition, Member** out);
    int closeMember(Member* member);
    int deleteMember(const FileDefinition& definition);
    int rebuildMember(const FileDefinition& definition);
    // Whether the container holds a member of that name (its own part, "Modul").
    int holdsMember(const std::string& table, bool* held);
    // Stores a locale on the data file (ordinal 0) or an index (1..n) of a member.
    int setLocale(Member* member, std::size_t ordinal, std::uint32_t lcid);

private:
    explicit Container(sqlite3* db) : db_(db) {}

    static int connect(const std::string& path, bool create, sqlite3** db);
    static int useLog(sqlite3* db);
    static int connectOurs(const std::string& path, sqlite3** db);
    // The member's table has its position, record and key columns and every index
    // the catalogue lists for it.
    int checkMemberShape(const std::string& table, std::size_t indexes);
    int catalogue(const std::string& table, std::string* signature, bool* exists);
    // A member that exists and is not open, with its stored definition signature.
    int closedMember(const std::string& table, std::string* signature);
    int storedLocales(const std::string& table, std::size_t indexes, std::vector<std::uint32_t>* locales,
                      std::uint32_t* dataLocale);
    int createIndexes(const FileDefinition& definition, const std::vector<std::uint32_t>& locales);
    int recomputeKeys(const FileDefinition& definition, const std::vector<std::uint32_t>& locales);
    void resetAllCursors();
    // After a rollback: members made inside it are gone, locales set inside it undone.
    int refreshMembers();
    // Runs a statement without results, preparing it on first use.
    int runOnce(Statement& st, const char* sql);

    int verifySeals(const std::string& sql);
    KeyForm keyForm() const { return format_ >= kSealedFormat ? KeyForm::Compact : KeyForm::Padded; }

    sqlite3* db_;
    int format_ = kCurrentFormat;  // the file's storage format (its user_version)
    bool bulk_ = false;
    Statement begin_, commit_, rollback_;
    bool inTransaction_ = false;
    std::map<std::string, std::unique_ptr<Member>> members_;
};

// Runs a group of statements as one unit inside the open transaction: what it
// wrote is undone unless release() is reached.
class Savepoint {
public:
    explicit Savepoint(sqlite3* db);
    ~Savepoint();
    int begin();
    int release();

private:
    sqlite3* db_;
    bool open_ = false;
};

}  // namespace isam
