// Exceptions, their binding to resource elements, and the language modules of a
// pair.
#include <array>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "core/LibraryErrors.h"
#include "core/RecordAccess.h"
#include "tests/db/DbTestSupport.h"

namespace dbtest {
namespace {

using namespace qvb;
using namespace qvb::catalogue;

// TextId, ElementTyp, ElementId, Flags.
using Exception = std::array<DWORD, 4>;

std::vector<DWORD> toVector(const CDWordArray& ids) {
    std::vector<DWORD> out;
    for (int i = 0; i < ids.GetSize(); ++i) out.push_back(ids[i]);
    return out;
}

CDWordArray list(std::initializer_list<DWORD> values) {
    CDWordArray ids;
    for (DWORD v : values) ids.Add(v);
    return ids;
}

class ExceptionTest : public DbTest<CDbProject> {
protected:
    DWORD add(DWORD text, DWORD kind, DWORD element, DWORD flags = 0) {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddException(&id, text, kind, element, flags)) << db_.GetError();
        return id;
    }

    Exception get(DWORD id) {
        Exception e{};
        EXPECT_EQ(1, db_.GetException(id, &e[0], &e[1], &e[2], &e[3])) << db_.GetError();
        return e;
    }

    // Every exception, in identifier order.
    std::vector<Exception> all() {
        CDWordArray ids;
        EXPECT_EQ(1, db_.EnumExceptions(ids)) << db_.GetError();
        std::vector<Exception> out;
        for (DWORD id : toVector(ids)) out.push_back(get(id));
        return out;
    }

    std::vector<DWORD> ofPhrase(DWORD text) {
        CDWordArray ids;
        EXPECT_EQ(1, db_.EnumExceptions(ids, text)) << db_.GetError();
        return toVector(ids);
    }

    DWORD countOfPhrase(DWORD text) {
        DWORD count = 99;
        EXPECT_EQ(1, db_.GetExceptionsCount(&count, text)) << db_.GetError();
        return count;
    }

    // A record written straight into a table: the identifier and two 32-bit fields.
    void write(int table, const char* idField, DWORD id, const char* field, DWORD value,
               const char* otherField, DWORD other) {
        ASSERT_EQ(1, CDbInternals::Run(db_, [&] {
            return addWithId(CDbInternals::Table(db_, table), idField, id,
                             [&](RecordWriter& r) { r.Long(field, value).Long(otherField, other); });
        })) << db_.GetError();
    }
    void addString(DWORD id, DWORD text) { write(TAB_STABLE, "StringId", id, "TextId", text, "LangModulId", 1); }
};

// ---- The exception records ------------------------------------------------------------

TEST_F(ExceptionTest, NewIdentifiersFollowTheHighestAndCallersIdentifiersAreKept) {
    EXPECT_EQ(1u, add(5, RES_STRINGTABLE, 10));
    EXPECT_EQ(2u, add(5, RES_DIALOG, 11));
    ASSERT_EQ(1, db_.AddException(DWORD{40}, 6, RES_CONTROL, 12, 3));
    EXPECT_EQ(0, db_.AddException(DWORD{40}, 7, RES_CONTROL, 13, 0));
    EXPECT_EQ(isam::ISAM_DUPLICATE_KEY, db_.GetError());
    EXPECT_EQ(41u, add(8, RES_MENU, 14));
    EXPECT_EQ((Exception{6, RES_CONTROL, 12, 3}), get(40));
    DWORD count = 0;
    ASSERT_EQ(1, db_.GetExceptionsCount(&count));
    EXPECT_EQ(4u, count);
    EXPECT_EQ(0, db_.GetError());
}

TEST_F(ExceptionTest, UpdateRewritesEveryFieldAndDeleteRemovesOnlyTheOne) {
    const DWORD first = add(5, RES_STRINGTABLE, 10, 1);
    const DWORD second = add(5, RES_STRINGTABLE, 11, 2);
    ASSERT_EQ(1, db_.UpdateExceptions(first, 9, RES_XML, 20, 7));
    DWORD element = 0;
    ASSERT_EQ(1, db_.GetException(first, nullptr, nullptr, &element, nullptr));
    EXPECT_EQ(20u, element);
    // The phrase index follows the new TextId.
    EXPECT_EQ(std::vector<DWORD>{second}, ofPhrase(5));
    EXPECT_EQ(std::vector<DWORD>{first}, ofPhrase(9));

    ASSERT_EQ(1, db_.DeleteExceptions(first));
    EXPECT_EQ((std::vector<Exception>{{5, RES_STRINGTABLE, 11, 2}}), all());
}

TEST_F(ExceptionTest, UnknownIdentifiersLeaveNotFoundAndChangeNothing) {
    add(5, RES_DIALOG, 10);
    DWORD text = 77;
    EXPECT_EQ(0, db_.GetException(9, &text, nullptr, nullptr, nullptr));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(77u, text);
    EXPECT_EQ(0, db_.UpdateExceptions(9, 1, 1, 1, 1));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(0, db_.DeleteExceptions(9));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ((std::vector<Exception>{{5, RES_DIALOG, 10, 0}}), all());
    EXPECT_EQ(0, db_.GetError());
}

TEST_F(ExceptionTest, ThePhraseListAndCountSeeOnlyThatPhrase) {
    const DWORD a = add(5, RES_STRINGTABLE, 10);
    add(6, RES_STRINGTABLE, 11);
    const DWORD c = add(5, RES_DIALOG, 12);
    EXPECT_EQ((std::vector<DWORD>{a, c}), ofPhrase(5));
    EXPECT_EQ(2u, countOfPhrase(5));
    EXPECT_EQ(1u, countOfPhrase(6));

    // A phrase without exceptions: success, a count of 0, nothing appended.
    EXPECT_EQ(0u, countOfPhrase(7));
    EXPECT_EQ(0, db_.GetError());
    CDWordArray ids = list({123});
    ASSERT_EQ(1, db_.EnumExceptions(ids, 7));
    EXPECT_EQ(std::vector<DWORD>{123}, toVector(ids));
}

// ---- Resource elements ----------------------------------------------------------------

TEST_F(ExceptionTest, ThePhraseOfAnElementDependsOnItsKind) {
    addString(10, 50);
    DWORD text = 0;
    ASSERT_EQ(1, db_.GetRecordTextID(RES_STRINGTABLE, 10, text));
    EXPECT_EQ(50u, text);
    // The phrase itself, read from nowhere: no such phrase exists.
    ASSERT_EQ(1, db_.GetRecordTextID(RES_DICTIONARY, 42, text));
    EXPECT_EQ(42u, text);
    for (RESTABLE none : {RES_MENU, RES_DBTRANSTABLE}) {
        text = 9;
        ASSERT_EQ(1, db_.GetRecordTextID(none, 3, text));
        EXPECT_EQ(0u, text);
    }

    // A missing element or an unknown kind leaves the caller's variable alone.
    text = 77;
    EXPECT_EQ(0, db_.GetRecordTextID(RES_STRINGTABLE, 11, text));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(0, db_.GetRecordTextID(static_cast<RESTABLE>(13), 10, text));
    EXPECT_EQ(QVB_UNKNOWN_KIND, db_.GetError());
    EXPECT_EQ(77u, text);
}

TEST_F(ExceptionTest, AddingBindsEachElementToItsOwnPhrase) {
    addString(10, 50);
    addString(11, 51);
    ASSERT_EQ(1, db_.AddExceptions(RES_STRINGTABLE, list({11, 10})));
    ASSERT_EQ(1, db_.AddExceptions(RES_DICTIONARY, list({42})));
    ASSERT_EQ(1, db_.AddExceptions(RES_MENU, list({3})));
    EXPECT_EQ((std::vector<Exception>{{51, RES_STRINGTABLE, 11, 0},
                                      {50, RES_STRINGTABLE, 10, 0},
                                      {42, RES_DICTIONARY, 42, 0},
                                      {0, RES_MENU, 3, 0}}),
              all());
}

TEST_F(ExceptionTest, AddingStopsAtTheFirstFailureKeepingTheEarlierOnes) {
    addString(10, 50);
    addString(11, 51);
    EXPECT_EQ(0, db_.AddExceptions(RES_STRINGTABLE, list({10, 99, 11})));
    EXPECT_EQ(isam::ISAM_NO_RECORD, db_.GetError());
    EXPECT_EQ(0, db_.AddExceptions(static_cast<RESTABLE>(99), list({10})));
    EXPECT_EQ(QVB_UNKNOWN_KIND, db_.GetError());
    ASSERT_EQ(1, db_.AddExceptions(RES_STRINGTABLE, CDWordArray()));
    EXPECT_EQ(0, db_.GetError());
    EXPECT_EQ((std::vector<Exception>{{50, RES_STRINGTABLE, 10, 0}}), all());
}

TEST_F(ExceptionTest, DeletingABindingRemovesOneMatchingExceptionPerCall) {
    const DWORD first = add(50, RES_STRINGTABLE, 10);
    const DWORD otherElement = add(50, RES_STRINGTABLE, 11);
    const DWORD otherKind = add(50, RES_DIALOG, 10);
    const DWORD second = add(50, RES_STRINGTABLE, 10);
    const DWORD otherPhrase = add(51, RES_STRINGTABLE, 10);
    ASSERT_EQ((std::vector<DWORD>{first, otherElement, otherKind, second}), ofPhrase(50));

    ASSERT_EQ(1, db_.DeleteBoundException(50, RES_STRINGTABLE, 10));
    EXPECT_EQ((std::vector<DWORD>{otherElement, otherKind, second}), ofPhrase(50));
    ASSERT_EQ(1, db_.DeleteBoundException(50, RES_STRINGTABLE, 10));
    EXPECT_EQ((std::vector<DWORD>{otherElement, otherKind}), ofPhrase(50));

    // Nothing left to match: success, nothing deleted.
    ASSERT_EQ(1, db_.DeleteBoundException(50, RES_STRINGTABLE, 10));
    EXPECT_EQ(0, db_.GetError());
    ASSERT_EQ(1, db_.DeleteBoundException(52, RES_STRINGTABLE, 10));
    EXPECT_EQ((std::vector<DWORD>{otherElement, otherKind}), ofPhrase(50));
    EXPECT_EQ(std::vector<DWORD>{otherPhrase}, ofPhrase(51));
}

TEST_F(ExceptionTest, BindingLeavesThePhraseCountAlone) {
    write(TAB_DIC, "TextId", 50, "PairLangId", 1, "Count", 2);
    addString(10, 50);
    ASSERT_EQ(1, db_.AddExceptions(RES_STRINGTABLE, list({10})));
    ASSERT_EQ(1, db_.DeleteBoundException(50, RES_STRINGTABLE, 10));
    CIsamTable& phrases = CDbInternals::Table(db_, TAB_DIC);
    std::uint32_t count = 0;
    ASSERT_EQ(1, CDbInternals::Run(db_, [&] {
        const int rc = readById(phrases, 50);
        return rc != isam::ISAM_OK ? rc : phrases.GetLong("Count", &count);
    }));
    EXPECT_EQ(2u, count);
}

// ---- Language modules -------------------------------------------------------------------

TEST_F(ExceptionTest, TheModulesOfAPairComeInKeyOrder) {
    // Within one pair the key order is the order the records were written in.
    for (auto [id, pair] : {std::array<DWORD, 2>{7, 2}, {2, 1}, {3, 2}, {4, 3}}) {
        write(TAB_LMODUL, "LangModulId", id, "PairLangId", pair, "ModulId", 1);
    }
    CDWordArray ids;
    ASSERT_EQ(1, db_.EnumLangModul(ids, 2));
    EXPECT_EQ((std::vector<DWORD>{7, 3}), toVector(ids));
    ASSERT_EQ(1, db_.EnumLangModul(ids, 9));
    EXPECT_EQ((std::vector<DWORD>{7, 3}), toVector(ids));
    EXPECT_EQ(0, db_.GetError());
}

// ---- A dictionary ----------------------------------------------------------------------

using DictionaryExceptionTest = DbTest<CDbDictionary>;

// A dictionary's table list ends before the exception table.
TEST_F(DictionaryExceptionTest, HasNoExceptionTable) {
    DWORD id = 0;
    EXPECT_EQ(0, db_.AddException(&id, 5, RES_DIALOG, 10, 0));
    EXPECT_EQ(QVB_NO_SCHEMA, db_.GetError());
    CDWordArray ids;
    EXPECT_EQ(0, db_.EnumExceptions(ids, 5));
    EXPECT_EQ(QVB_NO_SCHEMA, db_.GetError());
    EXPECT_EQ(0, ids.GetSize());
}

}  // namespace
}  // namespace dbtest
