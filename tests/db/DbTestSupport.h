// Shared pieces of the database tests: databases created for use in a directory
// of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "core/DbInternals.h"
#include "core/NewDatabase.h"
#include "qvb/qvb.h"
#include "tests/isam/TestSupport.h"

namespace dbtest {

using isamtest::TempDir;

// The directory as the library wants it: with a trailing separator.
inline std::string dirOf(const TempDir& dir) { return dir.path() + "/"; }

// The number of tables a database object has open in the engine.
int openTableCount(CDbObject& db);

// A fresh project or dictionary, created for use and open.
template <typename Db>
class DbTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(1, qvb::createForUse(db_, dir().c_str(), "test")) << db_.GetError();
    }
    std::string dir() const { return dirOf(tmp_); }
    void reopen() {
        ASSERT_EQ(1, db_.CloseDb()) << db_.GetError();
        ASSERT_EQ(1, db_.OpenDb(dir().c_str(), "test", 0)) << db_.GetError();
    }

    TempDir tmp_;
    Db db_;
};

}  // namespace dbtest
