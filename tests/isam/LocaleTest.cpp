// Locale order of 254-byte text keys, and the locale services behind it.
#include "platform/LocaleCollation.h"
#include "tests/isam/TestSupport.h"

namespace isamtest {
namespace {

using namespace isam;

// Words in windows-1252: Ä is 0xC4, ä is 0xE4.
const std::vector<std::string> kWords = {"zebra", "\xC4pfel", "apple", "Zoo", "\xE4hnlich", "banana"};

class LocaleTest : public ::testing::Test {
protected:
    // Id, then a text of up to 300 bytes keyed twice: by 250 bytes with the
    // position (locale order) and by 20 bytes (always byte order).
    static FileDefinition definition() {
        FileDefinition def;
        def.name = "l.Dic!Words";
        def.recordLength = 4;
        def.variableFields = {{false, 300}};
        def.indexes = {
            {"l.Dic!WordsI1.Qvi", 4, false, 64, 1024, {{0, 4, kSegmentFixed}}},
            {"l.Dic!WordsI2.Qvi", 254, true, 64, 1024, {{0, 250, kSegmentVariableText}}},
            {"l.Dic!WordsI3.Qvi", 24, true, 64, 1024, {{0, 20, kSegmentVariableText}}},
        };
        return def;
    }

    void SetUp() override {
        path_ = dir_.file("l.Dic");
        ASSERT_EQ(ISAM_OK, createContainer(path_.c_str(), 582, 1024, nullptr));
        ASSERT_EQ(ISAM_OK, createFile(definition(), &data_));
        std::uint32_t id = 0;
        for (const std::string& word : kWords) {
            Record r(4);
            r.u32(0, ++id).text(word);
            ASSERT_EQ(ISAM_OK, addRecord(data_, r.data(), r.size(), nullptr));
        }
    }
    void TearDown() override {
        instance_.select();
        closeContainer();
    }

    std::vector<std::string> wordsBy(int index) {
        std::vector<std::string> words;
        for (Position p : walk(data_ + index)) words.push_back(textAt(readAt(data_, p), 4, 0));
        return words;
    }
    void reopen() {
        ASSERT_EQ(ISAM_OK, closeContainer());
        ASSERT_EQ(ISAM_OK, openContainer(path_.c_str(), 582, nullptr));
        ASSERT_EQ(ISAM_OK, openFile(definition(), &data_));
    }

    TempDir dir_;
    ScopedInstance instance_;
    std::string path_;
    FileNumber data_ = kNoFile;
};

const std::vector<std::string> kByteOrder = {"Zoo", "apple", "banana", "zebra", "\xC4pfel", "\xE4hnlich"};
const std::vector<std::string> kGermanOrder = {"\xE4hnlich", "\xC4pfel", "apple", "banana", "zebra", "Zoo"};
const std::vector<std::string> kSwedishOrder = {"apple", "banana", "zebra", "Zoo", "\xE4hnlich", "\xC4pfel"};

TEST_F(LocaleTest, LocaleZeroOrdersByBytes) {
    EXPECT_EQ(kByteOrder, wordsBy(2));
    EXPECT_EQ(kByteOrder, wordsBy(3));
}

TEST_F(LocaleTest, ALocaleReordersOnlyThe254ByteTextKeys) {
    ASSERT_EQ(ISAM_OK, setFileLocale(data_ + 2, 1031));
    ASSERT_EQ(ISAM_OK, setFileLocale(data_ + 3, 1031));
    EXPECT_EQ(kGermanOrder, wordsBy(2));
    EXPECT_EQ(kByteOrder, wordsBy(3));

    // Records added under the locale take their place in its order.
    Record r(4);
    r.u32(0, 99).text("Apfelbaum");
    ASSERT_EQ(ISAM_OK, addRecord(data_, r.data(), r.size(), nullptr));
    std::vector<std::string> expected = kGermanOrder;
    expected.insert(expected.begin() + 2, "Apfelbaum");
    EXPECT_EQ(expected, wordsBy(2));

    // Finds compare under the locale too.
    Position p = 0;
    ASSERT_EQ(ISAM_OK, findText(data_ + 2, "banana", SearchMode::Equal, &p));
    EXPECT_EQ("banana", textAt(readAt(data_, p), 4, 0));
    ASSERT_EQ(ISAM_OK, findText(data_ + 2, "b", SearchMode::Greater, &p));
    EXPECT_EQ("banana", textAt(readAt(data_, p), 4, 0));
}

TEST_F(LocaleTest, RebuildUnderAnotherLocaleReordersAndTheLocaleIsKept) {
    ASSERT_EQ(ISAM_OK, setFileLocale(data_ + 2, 1031));
    ASSERT_EQ(ISAM_OK, closeFile(data_));
    ASSERT_EQ(ISAM_OK, rebuildFile(definition()));
    reopen();
    std::uint32_t lcid = 0;
    ASSERT_EQ(ISAM_OK, getFileLocale(data_ + 2, &lcid));
    EXPECT_EQ(1031u, lcid);
    EXPECT_EQ(kGermanOrder, wordsBy(2));

    ASSERT_EQ(ISAM_OK, setFileLocale(data_ + 2, 1053));
    ASSERT_EQ(ISAM_OK, closeFile(data_));
    ASSERT_EQ(ISAM_OK, rebuildFile(definition()));
    reopen();
    EXPECT_EQ(kSwedishOrder, wordsBy(2));
    EXPECT_EQ(kByteOrder, wordsBy(3));

    // Back to 0: byte order again.
    ASSERT_EQ(ISAM_OK, setFileLocale(data_ + 2, 0));
    EXPECT_EQ(kByteOrder, wordsBy(2));
}

TEST(LocaleServicesTest, CodePagesAndLocaleNames) {
    EXPECT_EQ(1252u, platform::ansiCodePage(1033));
    EXPECT_EQ(1252u, platform::ansiCodePage(1031));
    EXPECT_EQ(1251u, platform::ansiCodePage(1049));
    EXPECT_EQ(1250u, platform::ansiCodePage(1045));
    EXPECT_EQ(932u, platform::ansiCodePage(1041));
    EXPECT_EQ(936u, platform::ansiCodePage(2052));
    EXPECT_EQ(950u, platform::ansiCodePage(1028));
    EXPECT_EQ(1251u, platform::ansiCodePage(0x0C1A));  // Serbian, Cyrillic
    EXPECT_EQ(1250u, platform::ansiCodePage(0x041A));  // Croatian
    EXPECT_EQ("de_DE", platform::localeName(1031));
    EXPECT_EQ("ru_RU", platform::localeName(1049));
}

TEST(LocaleServicesTest, ComparisonFollowsTheLocaleAndItsCodePage) {
    using platform::compareText;
    // Russian in windows-1251: "б" (0xE1) sorts before "в" (0xE2) and after "а"
    // (0xE0), and upper case differs from lower case only at a lower strength.
    EXPECT_LT(compareText(1049, 0, "\xE0", 1, "\xE1", 1), 0);
    EXPECT_LT(compareText(1049, 0, "\xE1", 1, "\xE2", 1), 0);
    EXPECT_NE(0, compareText(1049, 0, "\xC1", 1, "\xE1", 1));
    EXPECT_EQ(0, compareText(1049, platform::kIgnoreCase, "\xC1", 1, "\xE1", 1));
    // Full-width letters in code page 936 equal their narrow forms when width is
    // ignored, and only then; case still counts.
    const char wide[] = "\xA3\xC1\xA3\xC2";  // "ＡＢ"
    EXPECT_NE(0, compareText(2052, 0, wide, 4, "AB", 2));
    EXPECT_EQ(0, compareText(2052, platform::kIgnoreWidth, wide, 4, "AB", 2));
    EXPECT_NE(0, compareText(2052, platform::kIgnoreWidth, wide, 4, "ab", 2));
    const char wideJapanese[] = "\x82\x60\x82\x61";  // "ＡＢ" in code page 932
    EXPECT_EQ(0, compareText(1041, platform::kIgnoreWidth, wideJapanese, 4, "AB", 2));
}

}  // namespace
}  // namespace isamtest
