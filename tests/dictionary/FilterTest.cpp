// The filter an enumeration selects by, whether the markers are up to date, and the
// user filter as the database stores it.
#include <cstring>

#include "tests/db/DbTestSupport.h"
#include "tests/dictionary/PhraseSupport.h"

using namespace phrasetest;

namespace {

using FilterTest = dbtest::DbTest<CDbProject>;

TEST_F(FilterTest, EachFilterSelectsByItsOwnMarker) {
    db_.SetFilter(FilterNone);
    EXPECT_TRUE(db_.IsFiltered(0));
    db_.SetFilter(FilterUser);
    EXPECT_TRUE(db_.IsFiltered(2));
    EXPECT_TRUE(db_.IsFiltered(0xFF));
    EXPECT_FALSE(db_.IsFiltered(1));
    db_.SetFilter(FilterNotTranslated);
    EXPECT_TRUE(db_.IsFiltered(1));
    EXPECT_FALSE(db_.IsFiltered(2));
    db_.SetFilter(static_cast<FILTER>(3));
    EXPECT_FALSE(db_.IsFiltered(0xFFFFFFFF));
}

TEST_F(FilterTest, MarkersAreStaleUntilRefreshedAndAgainAfterAChange) {
    EXPECT_EQ(1, db_.IsFilterValid(FilterNone));
    EXPECT_EQ(0, db_.IsFilterValid(FilterUser));
    EXPECT_EQ(0, db_.IsFilterValid(FilterNotTranslated));
    EXPECT_EQ(0, db_.IsFilterValid(static_cast<FILTER>(3)));
    DWORD pair = 0;
    ASSERT_EQ(1, db_.AddSLang(&pair, 1033, 1031, "Arial", 0));

    ASSERT_EQ(1, db_.RefreshNotTranslatedFilter(pair));
    EXPECT_EQ(1, db_.IsFilterValid(FilterNotTranslated));
    EXPECT_EQ(0, db_.IsFilterValid(FilterUser));
    USERFILTER filter;
    filter.StateTranslated = filter.StateUsed = filter.StateReadOnly = 2;
    filter.StateStandard = filter.StateLimited = filter.StateNotice = 2;
    ASSERT_EQ(1, db_.RefreshUserFilter(pair, filter));
    EXPECT_EQ(1, db_.IsFilterValid(FilterUser));
    EXPECT_EQ(1, db_.IsFilterValid(FilterNotTranslated)) << "the other marker stays valid";

    add(db_, {pair, "New"});
    EXPECT_EQ(0, db_.IsFilterValid(FilterUser));
    EXPECT_EQ(0, db_.IsFilterValid(FilterNotTranslated));
    ASSERT_EQ(1, db_.RefreshUserFilter(pair, filter));
    EXPECT_EQ(0, db_.IsFilterValid(FilterNotTranslated)) << "what was stale stays stale";

    reopen();
    EXPECT_EQ(0, db_.IsFilterValid(FilterUser));
}

USERFILTER sampleFilter() {
    USERFILTER f;
    std::strcpy(f.FindText, "needle");
    f.InSource = 1;
    f.WholeWord = 1;
    f.StateTranslated = 2;
    f.StateLimited = 1;
    f.StateNotice = 0x12345;  // wider than the stored half
    f.InDialogs = 1;
    f.InMenus = 0;
    f.InMessageTables = 1;
    f.InXml = 0x10001;
    f.InStringTables = 1;
    f.InVersionInfo = 0;
    f.InDbTranslation = 1;
    f.InBitmaps = 1;
    f.Reserved69 = 0xABCD1234;
    f.Reserved70 = 0xDEADBEEF;
    return f;
}

TEST_F(FilterTest, AStoredUserFilterComesBackWithItsSwitchesCutTo16Bits) {
    USERFILTER filter = sampleFilter();
    ASSERT_EQ(1, db_.AddResource(3, &filter, sizeof filter)) << db_.GetError();
    reopen();

    USERFILTER back;
    std::memset(static_cast<void*>(&back), 0x5A, sizeof back);
    WORD length = sizeof back;
    ASSERT_EQ(1, db_.GetResource(3, &back, &length)) << db_.GetError();
    EXPECT_EQ(sizeof(USERFILTER), length);
    EXPECT_STREQ("needle", back.FindText);
    EXPECT_EQ(0, back.FindText[7]) << "the text's tail is not carried";
    EXPECT_EQ(1, back.InSource);
    EXPECT_EQ(1, back.WholeWord);
    EXPECT_EQ(1, back.StateLimited);
    EXPECT_EQ(0x2345, back.StateNotice);
    EXPECT_EQ(1, back.InDialogs);
    EXPECT_EQ(1, back.InMessageTables);
    EXPECT_EQ(1, back.InXml);
    EXPECT_EQ(1, back.InStringTables);
    EXPECT_EQ(1, back.InDbTranslation);
    EXPECT_EQ(1, back.InBitmaps);
    EXPECT_EQ(0x1234u, back.Reserved69);
    EXPECT_EQ(0xDEADBEEFu, back.Reserved70) << "the last word is kept whole";

    // Updating stores the packed form too.
    filter.InMenus = 1;
    ASSERT_EQ(1, db_.UpdateResourceA(3, &filter, sizeof filter));
    length = sizeof back;
    ASSERT_EQ(1, db_.GetResource(3, &back, &length));
    EXPECT_EQ(1, back.InMenus);
}

TEST_F(FilterTest, AUserFilterNeedsRoomForItsUnpackedForm) {
    USERFILTER filter = sampleFilter();
    ASSERT_EQ(1, db_.AddResource(3, &filter, sizeof filter));
    unsigned char room[sizeof(USERFILTER) - 1];
    std::memset(room, 0x77, sizeof room);
    WORD length = sizeof room;
    EXPECT_EQ(0, db_.GetResource(3, room, &length));
    EXPECT_EQ(-11, db_.GetError());
    EXPECT_EQ(0x77, room[0]) << "nothing is copied";
}

TEST_F(FilterTest, OtherResourcesAndOtherLengthsPassUnchanged) {
    unsigned char bytes[sizeof(USERFILTER)];
    for (std::size_t i = 0; i < sizeof bytes; ++i) bytes[i] = static_cast<unsigned char>(i);
    ASSERT_EQ(1, db_.AddResource(4, bytes, sizeof bytes));
    ASSERT_EQ(1, db_.AddResource(3, bytes, 100));
    unsigned char back[sizeof bytes] = {};
    WORD length = sizeof back;
    ASSERT_EQ(1, db_.GetResource(4, back, &length));
    EXPECT_EQ(sizeof bytes, length);
    EXPECT_EQ(0, std::memcmp(bytes, back, sizeof bytes));
    length = sizeof back;
    ASSERT_EQ(1, db_.GetResource(3, back, &length));
    EXPECT_EQ(100, length);
    EXPECT_EQ(0, std::memcmp(bytes, back, 100));
}

}  // namespace
