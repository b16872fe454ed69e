// Opens that fail: what they leave behind, what they report, and that a file
// they refuse is not touched.
#include <grp.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>

#include "core/LibraryErrors.h"
#include "tests/db/DbTestSupport.h"

namespace dbtest {
namespace {

namespace fs = std::filesystem;
using qvb::catalogue::currentTable;

std::string bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// Runs SQL on a closed database file below the library.
void rawSql(const std::string& path, const std::string& sql) {
    sqlite3* db = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open_v2(path.c_str(), &db,
                                         SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr));
    char* message = nullptr;
    const int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message);
    EXPECT_EQ(SQLITE_OK, rc) << (message ? message : "");
    sqlite3_free(message);
    sqlite3_close(db);
}

template <typename Db>
void makeDatabase(const std::string& dir, const char* name) {
    Db db;
    ASSERT_EQ(1, qvb::createForUse(db, dir.c_str(), name)) << db.GetError();
}

class OpenFaultTest : public ::testing::Test {
protected:
    void SetUp() override { makeDatabase<CDbProject>(dir(), "good"); }
    std::string dir() const { return dirOf(tmp_); }
    std::string file(const std::string& name) const { return tmp_.file(name); }

    // A failed open leaves the object as a close would: it opens and creates again.
    void expectReusable(CDbObject& db) {
        EXPECT_EQ(DB_REGISTERED, CDbInternals::State(db)->state);
        EXPECT_EQ(0, openTableCount(db));
        ASSERT_EQ(1, db.OpenDb(dir().c_str(), "good", 0)) << db.GetError();
        EXPECT_EQ(32, openTableCount(db));
        ASSERT_EQ(1, db.CloseDb());
        ASSERT_EQ(1, db.CreateDb(dir().c_str(), ("new" + std::to_string(++created_)).c_str()))
            << db.GetError();
    }

    TempDir tmp_;
    int created_ = 0;
};

TEST_F(OpenFaultTest, EveryFailedOpenLeavesTheObjectReady_ForTheNextOpen) {
    makeDatabase<CDbProject>(dir(), "partial");
    rawSql(file("partial.Prj"), "DROP TABLE \"History\"");
    makeDatabase<CDbDictionary>(dir(), "words");
    fs::rename(file("words.Dic"), file("words.Prj"));
    makeDatabase<CDbProject>(dir(), "held");
    CDbProject holder;
    ASSERT_EQ(1, holder.OpenDb(dir().c_str(), "held", 0));

    const struct {
        const char* name;
        long error;
    } cases[] = {
        {"absent", isam::ISAM_FILE_NOT_FOUND},  // before the container opens
        {"partial", isam::ISAM_DAMAGED},        // after 31 tables opened
        {"words", QVB_OTHER_KIND},              // a dictionary's file
        {"held", isam::ISAM_FILE_BUSY},         // another object has it open
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CDbProject db;
        EXPECT_EQ(0, db.OpenDb(dir().c_str(), c.name, 0));
        EXPECT_EQ(c.error, db.GetError());
        expectReusable(db);
    }
}

TEST_F(OpenFaultTest, AFileThatIsNotOneOfOursIsRefusedUntouched) {
    rawSql(file("plain.Prj"), "CREATE TABLE t(x); INSERT INTO t VALUES (1)");
    rawSql(file("logged.Prj"), "PRAGMA journal_mode=WAL; CREATE TABLE t(x)");
    std::ofstream{file("empty.Prj")};
    std::ofstream(file("text.Prj"))
        << "no database at all, just text that is long enough to look at\n";
    makeDatabase<CDbProject>(dir(), "project");
    fs::rename(file("project.Prj"), file("project.Dic"));
    makeDatabase<CDbDictionary>(dir(), "dictionary");
    fs::rename(file("dictionary.Dic"), file("dictionary.Prj"));

    const struct {
        const char* name;
        bool project;
        long error;
    } cases[] = {
        {"plain", true, isam::ISAM_NOT_CONTAINER},
        {"logged", true, isam::ISAM_NOT_CONTAINER}, {"empty", true, isam::ISAM_NOT_CONTAINER},
        {"text", true, isam::ISAM_DAMAGED},        {"project", false, QVB_OTHER_KIND},
        {"dictionary", true, QVB_OTHER_KIND},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = file(std::string(c.name) + (c.project ? ".Prj" : ".Dic"));
        const std::string before = bytesOf(path);
        std::unique_ptr<CDbObject> db;
        if (c.project) {
            db = std::make_unique<CDbProject>();
        } else {
            db = std::make_unique<CDbDictionary>();
        }
        EXPECT_EQ(0, db->OpenDb(dir().c_str(), c.name, 0));
        EXPECT_EQ(c.error, db->GetError());
        EXPECT_EQ(0, db->OpenDb(dir().c_str(), c.name, 1));  // a rebuild writes nothing either
        EXPECT_EQ(c.error, db->GetError());
        db.reset();
        EXPECT_TRUE(before == bytesOf(path));
        EXPECT_FALSE(fs::exists(path + "-wal"));
        EXPECT_FALSE(fs::exists(path + "-shm"));
    }
}

// ---- The version record -----------------------------------------------------------------

TEST_F(OpenFaultTest, ADatabaseNeverVersionedOpensWithEveryTableInTheCurrentLayout) {
    CDbProject db;
    ASSERT_EQ(1, db.CreateDb(dir().c_str(), "bare"));
    ASSERT_EQ(1, db.OpenDb(dir().c_str(), "bare", 0));
    DWORD pair = 0, textId = 0;
    ASSERT_EQ(1, db.AddSLang(&pair, 1033, 1031, "Arial", 0));
    ASSERT_EQ(1, db.AddDictionary(&textId, pair, "Open", "open", "Offnen", 0, 0, 1, 0, 0));
    ASSERT_EQ(1, db.CloseDb());

    ASSERT_EQ(1, db.OpenDb(dir().c_str(), "bare", 0)) << db.GetError();
    EXPECT_EQ(32, openTableCount(db));
    EXPECT_EQ(32, CDbInternals::TablesAtStoredVersion(db));
    EXPECT_EQ(currentTable(1), CDbInternals::Table(db, 1).Table());
    CString source, filtered, translated;
    ASSERT_EQ(1, db.GetDictionary(textId, nullptr, &source, &filtered, &translated, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr))
        << db.GetError();
    EXPECT_EQ(CString("Offnen"), translated);
    ASSERT_EQ(1, db.CloseDb());
    EXPECT_EQ(0, openTableCount(db));
}

TEST_F(OpenFaultTest, AnUnreadableVersionRecordIsDamageThatRepairGoesPast) {
    const struct {
        const char* name;
        std::string stored;
    } cases[] = {{"short", std::string(2, '\x15')}, {"long", std::string(8, '\x15')}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CDbProject db;
        ASSERT_EQ(1, qvb::createForUse(db, dir().c_str(), c.name));
        std::string bytes = c.stored;
        ASSERT_EQ(1, db.UpdateResourceA(0, bytes.data(), static_cast<WORD>(bytes.size())));
        ASSERT_EQ(1, db.CloseDb());
        EXPECT_EQ(0, db.OpenDb(dir().c_str(), c.name, 0));
        EXPECT_EQ(isam::ISAM_DAMAGED, db.GetError());
        EXPECT_EQ(0, openTableCount(db));
        ASSERT_EQ(1, db.RepairOpenDb(dir().c_str(), c.name, 0));
        EXPECT_EQ(32, openTableCount(db));
    }
}

// ---- What an error number says ----------------------------------------------------------

TEST_F(OpenFaultTest, DamageIsReportedAsDamage) {
    const std::string other = "CREATE TABLE \"Modul\"(pos INTEGER PRIMARY KEY, other BLOB)";
    const struct {
        const char* name;
        std::string sql;
    } cases[] = {
        {"columns", "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = '" + other +
                        "' WHERE name = 'Modul'"},
        {"schema",
         "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = 'CREATE TABLE' "
         "WHERE name = 'Modul'"},
        {"dropped", "DROP TABLE \"Modul\""},
        {"index", "DROP INDEX \"LModulI2.Qvi\""},
        {"catalogue", "DROP TABLE qvb_files"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        makeDatabase<CDbProject>(dir(), c.name);
        rawSql(file(std::string(c.name) + ".Prj"), c.sql);
        CDbProject db;
        EXPECT_EQ(0, db.OpenDb(dir().c_str(), c.name, 0));
        EXPECT_EQ(isam::ISAM_DAMAGED, db.GetError());
    }
    // A forged file: the engine's mark on a database of some other making.
    rawSql(file("forged.Prj"), "PRAGMA application_id = 1364607537; CREATE TABLE t(x)");
    CDbProject db;
    EXPECT_EQ(0, db.OpenDb(dir().c_str(), "forged", 0));
    EXPECT_EQ(isam::ISAM_DAMAGED, db.GetError());
}

// Runs `body` in a child process that permission bits apply to: as root, the
// child drops to the unprivileged user first. Empty when that is not possible.
std::optional<long> withoutPrivileges(const std::function<long()>& body) {
    int channel[2];
    if (::pipe(channel) != 0) return std::nullopt;
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(channel[0]);
        constexpr uid_t kNobody = 65534;
        const bool dropped = ::geteuid() != 0 || (::setgroups(0, nullptr) == 0 &&
                                                  ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
        long result = dropped ? body() : 0;
        const char answer[1] = {dropped ? 'y' : 'n'};
        if (::write(channel[1], answer, 1) != 1 || ::write(channel[1], &result, sizeof result) < 0)
            _exit(2);
        _exit(0);
    }
    ::close(channel[1]);
    char answer = 'n';
    long result = 0;
    const bool read = child > 0 && ::read(channel[0], &answer, 1) == 1 &&
                      ::read(channel[0], &result, sizeof result) == sizeof result;
    ::close(channel[0]);
    if (child > 0) ::waitpid(child, nullptr, 0);
    if (!read || answer != 'y') return std::nullopt;
    return result;
}

// Each case runs without root's exemption from permission bits.
TEST_F(OpenFaultTest, WhatIsWrongWithAPathIsReportedAsSuch) {
    const std::string writable = file("rw") + "/";
    const std::string locked = file("ro") + "/";
    fs::create_directory(writable);
    fs::create_directory(locked);
    fs::create_directory(writable + "folder.Prj");
    for (const char* name : {"open", "readonly", "unreadable"})
        makeDatabase<CDbProject>(writable, name);
    makeDatabase<CDbProject>(locked, "inside");
    ::chmod(tmp_.path().c_str(), 0755);
    ::chmod(writable.c_str(), 0777);
    ::chmod((writable + "open.Prj").c_str(), 0666);
    ::chmod((writable + "readonly.Prj").c_str(), 0444);
    ::chmod((writable + "unreadable.Prj").c_str(), 0);
    ::chmod((locked + "inside.Prj").c_str(), 0666);
    ::chmod(locked.c_str(), 0555);

    const struct {
        std::string directory;
        const char* name;
        bool create;
        long error;
    } cases[] = {
        {writable, "open", false, 0},
        {writable, "readonly", false, isam::ISAM_READ_ONLY},
        {writable, "unreadable", false, isam::ISAM_ACCESS_DENIED},
        {locked, "inside", false, isam::ISAM_ACCESS_DENIED},  // no room for the log
        {locked, "new", true, isam::ISAM_ACCESS_DENIED},
        {writable, "folder", false, isam::ISAM_IS_DIRECTORY},
        {writable, "folder", true, isam::ISAM_IS_DIRECTORY},
        {writable + "missing/", "new", true, isam::ISAM_FILE_NOT_FOUND},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.directory + c.name);
        const std::optional<long> error = withoutPrivileges([&] {
            CDbProject db;
            const int done = c.create ? db.CreateDb(c.directory.c_str(), c.name)
                                      : db.OpenDb(c.directory.c_str(), c.name, 0);
            return done ? 0L : db.GetError();
        });
        if (!error) GTEST_SKIP() << "cannot drop root's privileges here";
        EXPECT_EQ(c.error, *error);
    }
    ::chmod(locked.c_str(), 0755);
    EXPECT_FALSE(fs::exists(locked + "new.Prj"));
}

}  // namespace
}  // namespace dbtest
