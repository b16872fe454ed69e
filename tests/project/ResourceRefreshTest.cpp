// The refreshes of a project carry the phrases' markers into the string and message
// tables of the pair's language modules.
#include "tests/project/ResourceSupport.h"

namespace resourcetest {
namespace {

class ResourceRefreshTest : public ResourceTest {
protected:
    void SetUp() override {
        ResourceTest::SetUp();
        ASSERT_EQ(1, db_.AddSLang(kOtherPair, 1036, 1033, "Arial", 0)) << db_.GetError();
        ASSERT_EQ(1, db_.AddLangModul(kModule, kPair, 1, 0)) << db_.GetError();
        ASSERT_EQ(1, db_.AddLangModul(kOtherModule, kOtherPair, 1, 0)) << db_.GetError();
    }

    static constexpr DWORD kOtherPair = 2;
    static constexpr DWORD kModule = 10;
    static constexpr DWORD kOtherModule = 20;

    DWORD addString(DWORD langModul, DWORD textId, DWORD flags = 0, DWORD noticeId = 0) {
        DWORD id = 0;
        CString net;
        EXPECT_EQ(1, db_.AddStringTable(&id, langModul, textId, 1, flags, noticeId, net)) << db_.GetError();
        return id;
    }

    DWORD addMessage(DWORD langModul, DWORD textId, DWORD flags = 0) {
        DWORD id = 0;
        EXPECT_EQ(1, db_.AddMessageTable(&id, langModul, textId, 1, 0, flags, 0)) << db_.GetError();
        return id;
    }

    DWORD stringFlags(DWORD id) {
        DWORD flags = 0;
        EXPECT_EQ(1, db_.GetStringTable(id, nullptr, nullptr, nullptr, &flags));
        return flags;
    }

    DWORD messageFlags(DWORD id) {
        DWORD flags = 0;
        EXPECT_EQ(1, db_.GetMessageTable(id, nullptr, nullptr, nullptr, nullptr, &flags));
        return flags;
    }

    std::vector<DWORD> strings(FILTER filter, DWORD langModul = kModule) {
        return listedUnder(filter, [&](CDWordArray& ids) { return db_.DoEnumStringTable(ids, langModul); });
    }
};

TEST_F(ResourceRefreshTest, TheNotTranslatedMarkerFollowsThePhrasesOfThePair) {
    const DWORD done = phrase("Done", true);
    const DWORD open = phrase("Open");
    const DWORD other = phrase("Autre", false, kOtherPair);
    const DWORD s1 = addString(kModule, done, 0x100 | 1);  // a stale marker to be cleared
    const DWORD s2 = addString(kModule, open, 0x200);
    const DWORD m1 = addMessage(kModule, open);
    const DWORD foreign = addString(kOtherModule, other);

    ASSERT_EQ(1, db_.RefreshNotTranslatedFilter(kPair)) << db_.GetError();
    EXPECT_EQ(1, db_.IsFilterValid(FilterNotTranslated));
    EXPECT_EQ(0x100u, stringFlags(s1));
    EXPECT_EQ(0x201u, stringFlags(s2));
    EXPECT_EQ(1u, messageFlags(m1));
    EXPECT_EQ(0u, stringFlags(foreign));  // another pair's module is not visited
    EXPECT_EQ(std::vector<DWORD>{s2}, strings(FilterNotTranslated));

    // Translating the phrase and refreshing again clears the marker.
    ASSERT_EQ(1, db_.UpdateDictionary(open, kPair, "Open", "Offnen", 0, 0, 1, 0, 0, 0));
    ASSERT_EQ(1, db_.RefreshNotTranslatedFilter(kPair));
    EXPECT_EQ(0x200u, stringFlags(s2));
    EXPECT_EQ(0u, messageFlags(m1));
    EXPECT_EQ(std::vector<DWORD>{}, strings(FilterNotTranslated));
}

TEST_F(ResourceRefreshTest, TheUserFilterTakesTheTablesItsSwitchesNameAndHonoursTheNoticeCondition) {
    const DWORD open = phrase("Open file");
    const DWORD close = phrase("Close");
    const DWORD note = notice("n");
    const DWORD plain = addString(kModule, open);
    const DWORD noted = addString(kModule, open, 0, note);
    const DWORD unmatched = addString(kModule, close);
    const DWORD message = addMessage(kModule, open);

    USERFILTER filter = anyState("Open");
    filter.InSource = 1;
    filter.InStringTables = 1;
    ASSERT_EQ(1, db_.RefreshUserFilter(kPair, filter)) << db_.GetError();
    EXPECT_EQ(1, db_.IsFilterValid(FilterUser));
    EXPECT_EQ((std::vector<DWORD>{plain, noted}), strings(FilterUser));
    EXPECT_EQ(0u, stringFlags(unmatched));
    EXPECT_EQ(0u, messageFlags(message));  // message tables are switched off

    filter.InStringTables = 0;
    filter.InMessageTables = 1;
    filter.StateNotice = 0;  // only records without a notice
    ASSERT_EQ(1, db_.RefreshUserFilter(kPair, filter));
    EXPECT_EQ(std::vector<DWORD>{}, strings(FilterUser));
    EXPECT_EQ(2u, messageFlags(message));

    filter.InStringTables = 1;
    filter.StateNotice = 1;  // only records with one
    ASSERT_EQ(1, db_.RefreshUserFilter(kPair, filter));
    EXPECT_EQ(std::vector<DWORD>{noted}, strings(FilterUser));
    EXPECT_EQ(0u, messageFlags(message));
}

TEST_F(ResourceRefreshTest, EachRefreshKeepsTheOtherMarkersValidity) {
    const DWORD open = phrase("Open");
    addString(kModule, open);
    ASSERT_EQ(1, db_.RefreshNotTranslatedFilter(kPair));
    USERFILTER filter = anyState();
    filter.InStringTables = 1;
    ASSERT_EQ(1, db_.RefreshUserFilter(kPair, filter));
    EXPECT_EQ(1, db_.IsFilterValid(FilterNotTranslated));
    EXPECT_EQ(1, db_.IsFilterValid(FilterUser));
    EXPECT_EQ(3u, stringFlags(1));

    // Any change to a resource record makes both stale again.
    addString(kModule, open);
    EXPECT_EQ(0, db_.IsFilterValid(FilterNotTranslated));
    EXPECT_EQ(0, db_.IsFilterValid(FilterUser));
}

}  // namespace
}  // namespace resourcetest
