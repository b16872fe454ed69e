// Database objects used by different threads at once: refreshes running side by side
// give what one thread alone gives, and a refresh's phrase lists stay with its thread.
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "core/Markers.h"
#include "tests/project/ResourceSupport.h"

namespace {

using resourcetest::anyState;

constexpr DWORD kPair = 1;
constexpr DWORD kModule = 10;
constexpr int kPhrases = 24;
constexpr int kRounds = 30;
constexpr DWORD kUnreadable = 0xFFFFFFFF;

// A project whose test can ask what the table passes ask.
class InspectableProject : public CDbProject {
public:
    using CDbProject::IsPhraseInUserFilter;
    using CDbProject::SetNotTranslatedFlagInStringTable;
};

// A project with one pair and one language module; each phrase is used by a
// string-table and a message-table entry. The seed decides which phrases are
// translated and which texts the filters find, so that two seeds disagree on the
// same phrase identifiers.
class SampleProject {
public:
    explicit SampleProject(int seed) {
        EXPECT_EQ(1, qvb::createForUse(db_, dbtest::dirOf(dir_).c_str(), "sample")) << db_.GetError();
        // Two locales, so that two matchers are built while both threads search.
        EXPECT_EQ(1, db_.AddSLang(kPair, seed % 2 ? 1031 : 1033, 1036, "Arial", 0)) << db_.GetError();
        EXPECT_EQ(1, db_.AddLangModul(kModule, kPair, 1, 0)) << db_.GetError();
        for (int i = 0; i < kPhrases; ++i) add(seed, i);
    }

    InspectableProject& db() { return db_; }
    const std::vector<DWORD>& phrases() const { return phrases_; }
    const std::vector<DWORD>& strings() const { return strings_; }

    // `marker` in the Flags of every phrase and entry, in a fixed order.
    std::vector<DWORD> markers(std::uint32_t marker) {
        std::vector<DWORD> out;
        DWORD flags = 0;
        auto take = [&](int read) { out.push_back(read ? flags & marker : kUnreadable); };
        for (DWORD id : phrases_) {
            take(db_.GetDictionary(id, nullptr, static_cast<CString*>(nullptr), nullptr, nullptr, nullptr,
                                   static_cast<int*>(nullptr), nullptr, nullptr, &flags));
        }
        for (DWORD id : strings_) take(db_.GetStringTable(id, nullptr, nullptr, nullptr, &flags));
        for (DWORD id : messages_) {
            take(db_.GetMessageTable(id, nullptr, nullptr, nullptr, nullptr, &flags));
        }
        return out;
    }

private:
    void add(int seed, int i) {
        const bool translated = (i + seed) % 2 == 0;
        const std::string text = ((i + seed) % 3 == 0 ? "Open item " : "Close item ") + std::to_string(i);
        DWORD textId = 0, stringId = 0, messageId = 0;
        EXPECT_EQ(1, db_.AddDictionary(&textId, kPair, text.c_str(), text.c_str(),
                                       translated ? text.c_str() : "", 0, 0, translated ? 1 : 0, 0, 0))
            << db_.GetError();
        EXPECT_EQ(1, db_.AddStringTable(&stringId, kModule, textId, 1, 0, 0)) << db_.GetError();
        EXPECT_EQ(1, db_.AddMessageTable(&messageId, kModule, textId, 1, 0, 0, 0)) << db_.GetError();
        phrases_.push_back(textId);
        strings_.push_back(stringId);
        messages_.push_back(messageId);
    }

    dbtest::TempDir dir_;
    InspectableProject db_;
    std::vector<DWORD> phrases_, strings_, messages_;
};

// A filter on the text of either side that takes string and message tables.
USERFILTER textFilter(const char* text) {
    USERFILTER filter = anyState(text);
    filter.InSource = filter.InTranslation = 1;
    filter.InStringTables = filter.InMessageTables = 1;
    return filter;
}

// The two user filters the rounds alternate between.
const USERFILTER kFilters[] = {textFilter("Open"), textFilter("close")};

// What one project's refreshes left after each step, and the steps that failed.
struct RefreshLog {
    std::vector<std::vector<DWORD>> notTranslated;
    std::vector<std::vector<DWORD>> userFilter;
    int failures = 0;
};

RefreshLog refreshRounds(SampleProject& project) {
    RefreshLog log;
    CDbProject& db = project.db();
    for (int round = 0; round < kRounds; ++round) {
        if (!db.RefreshNotTranslatedFilter(kPair)) ++log.failures;
        log.notTranslated.push_back(project.markers(qvb::kNotTranslatedMarker));
        if (!db.RefreshUserFilter(kPair, kFilters[round % 2])) ++log.failures;
        log.userFilter.push_back(project.markers(qvb::kUserFilterMarker));
    }
    return log;
}

// Checks a log taken while another thread worked against what the same refreshes
// give on this thread alone.
void expectSingleThreadedResults(SampleProject& project, const RefreshLog& log) {
    EXPECT_EQ(0, log.failures);
    CDbProject& db = project.db();
    ASSERT_EQ(1, db.RefreshNotTranslatedFilter(kPair)) << db.GetError();
    const std::vector<DWORD> notTranslated = project.markers(qvb::kNotTranslatedMarker);
    std::vector<DWORD> userFilter[2];
    for (int f = 0; f < 2; ++f) {
        ASSERT_EQ(1, db.RefreshUserFilter(kPair, kFilters[f])) << db.GetError();
        userFilter[f] = project.markers(qvb::kUserFilterMarker);
    }
    ASSERT_EQ(static_cast<size_t>(kRounds), log.userFilter.size());
    for (int round = 0; round < kRounds; ++round) {
        EXPECT_EQ(notTranslated, log.notTranslated[round]) << "round " << round;
        EXPECT_EQ(userFilter[round % 2], log.userFilter[round]) << "round " << round;
    }
}

// Runs both on threads of their own, started together.
template <typename First, typename Second>
void runTogether(First first, Second second) {
    std::atomic<int> ready{0};
    auto startTogether = [&ready] {
        ready.fetch_add(1);
        while (ready.load() < 2) std::this_thread::yield();
    };
    std::thread a([&] { startTogether(); first(); });
    std::thread b([&] { startTogether(); second(); });
    a.join();
    b.join();
}

TEST(ThreadTest, TwoProjectsRefreshedAtOnceGetTheSingleThreadedMarkers) {
    SampleProject first(0), second(1);
    RefreshLog firstLog, secondLog;
    runTogether([&] { firstLog = refreshRounds(first); }, [&] { secondLog = refreshRounds(second); });
    expectSingleThreadedResults(first, firstLog);
    expectSingleThreadedResults(second, secondLog);
    // The seeds disagree on every phrase, so a pass that read the other thread's
    // lists could not have matched.
    EXPECT_NE(firstLog.notTranslated.back(), secondLog.notTranslated.back());
    EXPECT_NE(firstLog.userFilter[0], secondLog.userFilter[0]);
    EXPECT_NE(firstLog.userFilter[0], firstLog.userFilter[1]);
}

TEST(ThreadTest, AProjectMadeFilledAndReadWhileAnotherRefreshes) {
    SampleProject refreshed(0);
    RefreshLog log;
    int readBackFailures = 0;
    DWORD stringCount = 0;
    // Made and dropped on its thread: the engine registers and removes its instance
    // while the other thread selects its own.
    auto makeFillAndRead = [&] {
        SampleProject written(1);
        CDbProject& db = written.db();
        for (int i = 0; i < kRounds * 2; ++i) {
            const std::string text = "Added " + std::to_string(i);
            DWORD textId = 0, stringId = 0, readTextId = 0;
            CString source, target;
            const bool ok = db.AddDictionary(&textId, kPair, text.c_str(), text.c_str(), "", 0, 0, 0, 0, 0) &&
                            db.AddStringTable(&stringId, kModule, textId, 2, 0, 0) &&
                            db.GetStringTable(stringId, nullptr, &readTextId, nullptr, nullptr) &&
                            db.GetDictionary(textId, nullptr, source, target, nullptr, nullptr, nullptr,
                                             nullptr, nullptr, nullptr);
            if (!ok || readTextId != textId || std::string(source) != text) ++readBackFailures;
        }
        db.GetStringTableCount(&stringCount, kModule);
    };
    runTogether([&] { log = refreshRounds(refreshed); }, makeFillAndRead);
    expectSingleThreadedResults(refreshed, log);
    EXPECT_EQ(0, readBackFailures);
    EXPECT_EQ(static_cast<DWORD>(kPhrases + kRounds * 2), stringCount);
}

TEST(ThreadTest, ARefreshOnAnotherThreadLeavesThisThreadsPhraseListsAlone) {
    SampleProject mine(0), theirs(1);
    InspectableProject& db = mine.db();
    ASSERT_EQ(1, db.RefreshNotTranslatedFilter(kPair)) << db.GetError();
    ASSERT_EQ(1, db.RefreshUserFilter(kPair, textFilter("Open"))) << db.GetError();
    const std::vector<DWORD> notTranslated = mine.markers(qvb::kNotTranslatedMarker);

    std::thread([&] {
        // The other seed's untranslated phrases are exactly this one's translated
        // ones, and no phrase matches the filter.
        theirs.db().RefreshNotTranslatedFilter(kPair);
        theirs.db().RefreshUserFilter(kPair, textFilter("no such text"));
    }).join();

    // The passes that read the lists after a refresh still see this thread's:
    // "Open item 0" is in the user filter, and a table pass changes nothing.
    int in = 0;
    ASSERT_EQ(1, db.GetStringTable(mine.strings()[0], nullptr, nullptr, nullptr, nullptr));
    ASSERT_EQ(1, db.IsPhraseInUserFilter(RES_STRINGTABLE, mine.phrases()[0], &in)) << db.GetError();
    EXPECT_EQ(1, in);
    ASSERT_EQ(1, db.SetNotTranslatedFlagInStringTable(resourcetest::list({kModule}))) << db.GetError();
    EXPECT_EQ(notTranslated, mine.markers(qvb::kNotTranslatedMarker));
}

}  // namespace
