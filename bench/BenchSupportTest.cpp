// The benchmarks' own machinery: a fault here would make a side do other work than
// the other, or a figure measure something else than it says.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/BenchSupport.h"
#include "bench/PhraseData.h"
#include "bench/ProcessStats.h"
#include "bench/RawPhrases.h"
#include "bench/SideBySide.h"

namespace {

using namespace bench;

TEST(Race, EachSideWorksEveryItemOnceInAlternatingSlices) {
    std::vector<int> left(10, 0);
    std::vector<int> right(10, 0);
    std::string order;
    int leftTime = 0;
    int rightTime = 0;
    auto run = [](std::vector<int>& seen, std::string& order, char side) {
        return [&seen, &order, side](const Slice& slice) {
            order += side;
            for (std::size_t i = slice.begin; i < slice.end; ++i) ++seen[i];
        };
    };
    race(
        10, 3, [](auto body) { body(); return 1; }, &leftTime, run(left, order, 'L'), &rightTime,
        run(right, order, 'R'));
    EXPECT_EQ(std::vector<int>(10, 1), left);
    EXPECT_EQ(std::vector<int>(10, 1), right);
    EXPECT_EQ("LRRLLR", order);
    EXPECT_EQ(3, leftTime);
    EXPECT_EQ(3, rightTime);
}

TEST(Alternate, RunsEachSideEveryRoundTheFirstSideAlternating) {
    std::string order;
    Row row{"case", "ms", 1e3};
    alternate(&row, 3, false, [&] { order += 'L'; }, [&] { order += 'R'; });
    EXPECT_EQ("RLLRRL", order);
}

TEST(ParseCount, TakesAWholeNumberInRangeOnly) {
    const struct {
        const char* text;
        bool good;
    } cases[] = {{"10", true},  {"1", true},  {"100", true},  {"0", false},
                 {"101", false}, {"", false},  {"12x", false}, {"-1", false},
                 {"99999999999999999999999", false}};
    for (const auto& c : cases) {
        std::size_t n = 7;
        EXPECT_EQ(c.good, parseCount(c.text, 1, 100, &n)) << c.text;
        if (!c.good) {
            EXPECT_EQ(7u, n) << c.text;
        }
    }
}

TEST(PhraseStream, GivesTheSamePhrasesForTheSameSeedInTheDocumentedShares) {
    PhraseStream a(5);
    PhraseStream b(5);
    std::size_t repeated = 0, translated = 0, found = 0;
    constexpr std::size_t kCount = 20000;
    for (std::size_t i = 0; i < kCount; ++i) {
        const PhraseText p = a.next();
        const PhraseText q = b.next();
        ASSERT_STREQ(p.sText.GetString(), q.sText.GetString());
        ASSERT_EQ(p.translated, q.translated);
        const std::string filteredText = p.sTextFiltered.GetString();
        ASSERT_EQ(std::string::npos, filteredText.find('&')) << filteredText;
        ASSERT_EQ(filtered(p.sText.GetString()), filteredText);
        ASSERT_EQ(p.translated, p.tText.GetLength() > 0);
        repeated += a.lastRepeated() ? 1 : 0;
        translated += p.translated ? 1 : 0;
        found += inUserFilter(p.sText.GetString()) ? 1 : 0;
    }
    EXPECT_NEAR(kRepeatShare, static_cast<double>(repeated) / kCount, 0.01);
    EXPECT_NEAR(0.5, static_cast<double>(translated) / kCount, 0.02);
    EXPECT_NEAR(kFindShare, static_cast<double>(found) / kCount, 0.01);
}

TEST(Filtered, DropsHotKeyMarksAndTrailingPunctuation) {
    EXPECT_EQ("Save all", filtered("&Save all..."));
    EXPECT_EQ("Name", filtered("Name:"));
    EXPECT_EQ("Why", filtered("Why?"));
    EXPECT_EQ("", filtered("..."));
}

TEST(ProcessStats, FileSizesBytesWrittenAndPageCache) {
    ScratchDir dir("/tmp", "bench_test");
    const std::string path = dir.file("data");
    EXPECT_EQ(-1, fileBytes(path));
    EXPECT_THROW(dropFromPageCache(path), std::runtime_error);

    const std::int64_t before = bytesWritten();
    const std::vector<char> block(1 << 20, 'x');
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(static_cast<ssize_t>(block.size()), ::write(fd, block.data(), block.size()));
    ::close(fd);
    EXPECT_EQ(static_cast<std::int64_t>(block.size()), fileBytes(path));
    dropFromPageCache(path);
    // Memory file systems write nothing to storage.
    struct statfs fs;
    const bool onStorage = ::statfs(path.c_str(), &fs) == 0 && fs.f_type != TMPFS_MAGIC;
    if (before >= 0 && onStorage) {
        EXPECT_GE(bytesWritten() - before, static_cast<std::int64_t>(block.size()));
    }
}

TEST(ProcessStats, PeakResidentFollowsMemoryTouchedAfterAReset) {
    if (!resetPeakResident()) GTEST_SKIP() << "the kernel refuses to reset the mark";
    const std::int64_t start = peakResidentKiB();
    ASSERT_GT(start, 0);
    {
        std::vector<char> touched(64 << 20);
        for (std::size_t i = 0; i < touched.size(); i += 4096) touched[i] = 1;
        EXPECT_GE(peakResidentKiB() - start, 60 * 1024);
    }
    ASSERT_TRUE(resetPeakResident());
    EXPECT_LT(peakResidentKiB() - residentKiB(), 4 * 1024);
}

class RawPhrasesTest : public ::testing::Test {
protected:
    void SetUp() override { raw_.create(dir_.file("raw.db")); }

    void add(const char* text, std::uint32_t id, std::uint32_t pair, bool translated) {
        PhraseText phrase;
        phrase.sText = phrase.sTextFiltered = CString(text);
        phrase.translated = translated;
        if (translated) phrase.tText = CString("T");
        raw_.add(phrase, id, pair);
    }

    ScratchDir dir_{"/tmp", "bench_test"};
    RawPhrases raw_;
};

TEST_F(RawPhrasesTest, MarkRewritesOnlyChangedFlagsAndListsThePairsMarkedPhrases) {
    add("one", 1, 7, false);
    add("two", 2, 7, true);
    add("three", 3, 8, false);  // another pair
    auto notTranslated = [](bool translated, const char*) { return !translated; };
    std::vector<std::uint32_t> ids;
    EXPECT_EQ(1u, raw_.mark(7, kNotTranslatedMarker, &ids, notTranslated));
    EXPECT_EQ(std::vector<std::uint32_t>{1}, ids);
    EXPECT_EQ(0u, raw_.mark(7, kNotTranslatedMarker, &ids, notTranslated));
    EXPECT_EQ(std::vector<std::uint32_t>{1}, raw_.marked(kNotTranslatedMarker));
    // Clearing: nothing belongs any more.
    EXPECT_EQ(1u, raw_.mark(7, kNotTranslatedMarker, &ids, [](bool, const char*) { return false; }));
    EXPECT_TRUE(raw_.marked(kNotTranslatedMarker).empty());
}

TEST_F(RawPhrasesTest, FamilyIsTheWholeTextInThePairNotTheKeyPrefix) {
    const std::string common(130, 'a');  // longer than the 125-byte key
    add((common + "x").c_str(), 1, 7, false);
    add((common + "y").c_str(), 2, 7, false);
    add((common + "x").c_str(), 3, 8, false);
    add((common + "x").c_str(), 4, 7, true);
    std::vector<std::uint32_t> ids;
    raw_.listFamily(7, CString((common + "x").c_str()), &ids);
    EXPECT_EQ((std::vector<std::uint32_t>{1, 4}), ids);
    ids.clear();
    raw_.listPair(7, &ids);
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2, 4}), ids);
}

}  // namespace
