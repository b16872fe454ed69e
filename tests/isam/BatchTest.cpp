// Batches: nesting, the commit at the outermost end, and discarding.
#include "tests/isam/TestSupport.h"

namespace isamtest {
namespace {

using namespace isam;

class BatchTest : public EngineTest {};

TEST_F(BatchTest, OnlyTheOutermostEndCommits) {
    ASSERT_EQ(ISAM_OK, beginBatch());
    add(1, 0, 0);
    ASSERT_EQ(ISAM_OK, beginBatch());
    add(2, 0, 0);
    ASSERT_EQ(ISAM_OK, endBatch());
    EXPECT_EQ(1, batchDepth());
    // Still inside the outer batch: discarding takes the inner batch's work too.
    ASSERT_EQ(ISAM_OK, abortBatch());
    EXPECT_TRUE(walk(indexOf(data_, 1)).empty());
    add(3, 0, 0);
    ASSERT_EQ(ISAM_OK, endBatch());
    EXPECT_EQ(0, batchDepth());
    EXPECT_EQ(ISAM_NO_BATCH, endBatch());
    EXPECT_EQ(ISAM_NO_BATCH, abortBatch());
    reopen();
    EXPECT_EQ((std::vector<std::uint32_t>{3}), walkIds(data_, indexOf(data_, 1)));
}

TEST_F(BatchTest, AFailedCallInsideABatchUndoesNothingElse) {
    ASSERT_EQ(ISAM_OK, beginBatch());
    add(1, 0, 0);
    Record clash = sampleRecord(1, 0, 0);
    EXPECT_EQ(ISAM_DUPLICATE_KEY, addRecord(data_, clash.data(), clash.size(), nullptr));
    add(2, 0, 0);
    ASSERT_EQ(ISAM_OK, endBatch());
    reopen();
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2}), walkIds(data_, indexOf(data_, 1)));
}

TEST_F(BatchTest, ClosingInsideABatchCommitsItsWorkAndTheBatchGoesOn) {
    ASSERT_EQ(ISAM_OK, beginBatch());
    add(1, 0, 0);
    ASSERT_EQ(ISAM_OK, closeContainer());
    EXPECT_EQ(1, batchDepth());
    ASSERT_EQ(ISAM_OK, openContainer(path_.c_str(), 582, nullptr));
    ASSERT_EQ(ISAM_OK, openFile(sampleDefinition(), &data_));
    EXPECT_EQ((std::vector<std::uint32_t>{1}), walkIds(data_, indexOf(data_, 1)));
    // What follows the reopen belongs to the same batch and can still be discarded.
    add(2, 0, 0);
    ASSERT_EQ(ISAM_OK, abortBatch());
    ASSERT_EQ(ISAM_OK, endBatch());
    EXPECT_EQ((std::vector<std::uint32_t>{1}), walkIds(data_, indexOf(data_, 1)));
}

TEST_F(BatchTest, DiscardingUndoesMembersAndLocalesMadeInTheBatch) {
    FileDefinition other = sampleDefinition();
    other.name = "test.Prj!Other";
    for (auto& index : other.indexes) index.name.replace(index.name.find("Sample"), 6, "Other");
    ASSERT_EQ(ISAM_OK, beginBatch());
    FileNumber created = kNoFile;
    ASSERT_EQ(ISAM_OK, createFile(other, &created));
    ASSERT_EQ(ISAM_OK, setFileLocale(indexOf(data_, 3), 1031));
    ASSERT_EQ(ISAM_OK, abortBatch());
    ASSERT_EQ(ISAM_OK, endBatch());

    Position p = 0;
    EXPECT_EQ(ISAM_NOT_OPEN, firstRecord(indexOf(created, 1), &p));
    std::uint32_t lcid = 1;
    ASSERT_EQ(ISAM_OK, getFileLocale(indexOf(data_, 3), &lcid));
    EXPECT_EQ(0u, lcid);
    ASSERT_EQ(ISAM_OK, closeFile(created));
    EXPECT_EQ(ISAM_FILE_NOT_FOUND, openFile(other, &created));
    // The sample member is unharmed.
    add(1, 0, 0);
    EXPECT_EQ(1u, walk(indexOf(data_, 1)).size());
}

}  // namespace
}  // namespace isamtest
