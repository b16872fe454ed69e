// Resources: records outside every index, by type and number.
#include "tests/isam/TestSupport.h"

namespace isamtest {
namespace {

using namespace isam;

class ResourceTest : public EngineTest {
protected:
    std::string read(std::uint32_t type, std::uint32_t number, int* rc) {
        char buffer[2048];
        std::size_t length = 0;
        *rc = readResource(data_, type, number, buffer, sizeof buffer, &length);
        return *rc ? std::string() : std::string(buffer, length);
    }
};

TEST_F(ResourceTest, ResourcesSurviveCloseAndReopen) {
    const std::uint32_t version = 21;
    ASSERT_EQ(ISAM_OK, addResource(data_, 17, 0, &version, 4));
    ASSERT_EQ(ISAM_OK, addResource(data_, 17, 3, "filter", 6));
    reopen();
    int rc = 0;
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&version), 4), read(17, 0, &rc));
    EXPECT_EQ("filter", read(17, 3, &rc));
    // Resources are no records: the indexes stay empty.
    EXPECT_TRUE(walk(indexOf(data_, 1)).empty());
}

TEST_F(ResourceTest, AddUpdateDeleteAndTheirFailures) {
    int rc = 0;
    read(17, 0, &rc);
    EXPECT_EQ(ISAM_NO_RECORD, rc);
    ASSERT_EQ(ISAM_OK, addResource(data_, 17, 0, "one", 3));
    EXPECT_EQ(ISAM_RESOURCE_EXISTS, addResource(data_, 17, 0, "two", 3));
    EXPECT_EQ("one", read(17, 0, &rc));
    ASSERT_EQ(ISAM_OK, updateResource(data_, 17, 0, "three", 5));
    EXPECT_EQ("three", read(17, 0, &rc));
    // Update adds a missing resource; types keep numbers apart.
    ASSERT_EQ(ISAM_OK, updateResource(data_, 18, 0, "other", 5));
    EXPECT_EQ("three", read(17, 0, &rc));

    char small[4];
    std::size_t length = 0;
    EXPECT_EQ(ISAM_BUFFER_TOO_SHORT, readResource(data_, 17, 0, small, sizeof small, &length));
    EXPECT_EQ(5u, length);

    ASSERT_EQ(ISAM_OK, deleteResource(data_, 17, 0));
    EXPECT_EQ(ISAM_NO_RECORD, deleteResource(data_, 17, 0));
    read(17, 0, &rc);
    EXPECT_EQ(ISAM_NO_RECORD, rc);
    EXPECT_EQ("other", read(18, 0, &rc));
}

}  // namespace
}  // namespace isamtest
