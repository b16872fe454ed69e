// Checks the records of the public interface against their binding layouts: byte
// images of the packed structures, member order and widths of the others, zeroed
// defaults, and the values of the enumerations. The word positions of the user
// filter are asserted in the header itself.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "qvb/Records.h"

namespace {

// A default-constructed record over storage that held 0xFF bytes, so that a member
// without an initialiser shows up as nonzero.
template <typename Record>
class Fresh {
public:
    Fresh() {
        std::memset(storage_, 0xFF, sizeof storage_);
        record_ = new (storage_) Record;
    }
    ~Fresh() { record_->~Record(); }
    Fresh(const Fresh&) = delete;
    Fresh& operator=(const Fresh&) = delete;

    const Record& get() const { return *record_; }

private:
    alignas(Record) unsigned char storage_[sizeof(Record)];
    Record* record_;
};

// A member as found in a record, and the width the interface gives it.
struct Member {
    const char* name;
    std::size_t offset;
    std::size_t size;
    std::size_t align;
    std::size_t width;
};

template <typename Record, typename Field>
Member member(const char* name, const Record& record, const Field& field, std::size_t width) {
    const auto offset =
        reinterpret_cast<const char*>(&field) - reinterpret_cast<const char*>(&record);
    return {name, static_cast<std::size_t>(offset), sizeof(Field), alignof(Field), width};
}

#define MEMBER(record, m, width) member(#m, record, (record).m, width)

constexpr std::size_t S = sizeof(CString);

// Each member must have its width, follow the previous one at the next position its
// alignment allows (so one out of order, too wide or missing shows up), and start
// out zero unless it is a string.
template <typename Record>
void expectLayout(const Record& record, const std::vector<Member>& members) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&record);
    std::size_t next = 0;
    for (const Member& m : members) {
        EXPECT_EQ(m.size, m.width) << m.name;
        EXPECT_EQ(m.offset, (next + m.align - 1) / m.align * m.align) << m.name;
        next = m.offset + m.size;
        if (m.width != S) {
            for (std::size_t i = 0; i < m.size; ++i) {
                EXPECT_EQ(bytes[m.offset + i], 0) << m.name << " is not zeroed";
            }
        }
    }
    EXPECT_LT(sizeof(Record) - next, alignof(Record)) << "members missing at the end";
}

TEST(RecordEnumerations, ValuesAndWidths) {
    EXPECT_EQ(PROJECT, 0);
    EXPECT_EQ(DICTINARY, 1);
    EXPECT_EQ(FilterNone, 0);
    EXPECT_EQ(FilterUser, 1);
    EXPECT_EQ(FilterNotTranslated, 2);

    const RESTABLE codes[] = {
        RES_STRINGTABLE,    RES_MESSAGETABLE,  RES_DIALOG,         RES_MENUITEM,  RES_CONTROL,
        RES_DLGINITCONTROL, RES_DICTIONARY,    RES_MENU,           RES_VERSINFO,  RES_XML,
        RES_DBTRANSTABLE,   RES_DBTRANSRECORD, RES_CONTROLTOOLTIP, RES_DLGTOOLTIP};
    const int values[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 14, 15};
    for (std::size_t i = 0; i < sizeof values / sizeof values[0]; ++i) {
        EXPECT_EQ(static_cast<int>(codes[i]), values[i]) << "code " << i;
    }

    // Passed and stored as 32-bit values; an unnamed code from a caller survives.
    EXPECT_EQ(sizeof(DBTYPEONE), 4u);
    EXPECT_EQ(sizeof(FILTER), 4u);
    EXPECT_EQ(sizeof(RESTABLE), 4u);
    volatile int unnamed = 13;
    EXPECT_EQ(static_cast<int>(static_cast<RESTABLE>(unnamed)), 13);
    EXPECT_EQ(static_cast<int>(static_cast<FILTER>(unnamed + 100)), 113);
}

TEST(PackedRecords, MenuItemByteImage) {
    const Fresh<MENUITEM> fresh;
    const std::vector<unsigned char> zeros(sizeof(MENUITEM), 0);
    EXPECT_EQ(std::memcmp(&fresh.get(), zeros.data(), zeros.size()), 0);

    MENUITEM item;
    item.Type = 0x11121314;
    item.MenuId = 0x21222324;
    item.TextId = 0x31323334;
    item.ResId = 0x4142;
    item.Style = 0x5152;
    item.Order = 0x6162;
    item.State = 0x71727374;
    item.ResInfo = 0x8182;
    item.HelpId = 0x91929394;
    item.Flags = 0xA1A2A3A4;
    item.NoticeId = 0xB1B2B3B4;

    // Stated order and widths, no padding, little-endian.
    const std::pair<std::uint32_t, int> stated[] = {
        {0x11121314, 4}, {0x21222324, 4}, {0x31323334, 4}, {0x4142, 2},
        {0x5152, 2},     {0x6162, 2},     {0x71727374, 4}, {0x8182, 2},
        {0x91929394, 4}, {0xA1A2A3A4, 4}, {0xB1B2B3B4, 4}};
    std::vector<unsigned char> expected;
    for (const auto& field : stated) {
        for (int i = 0; i < field.second; ++i) {
            expected.push_back(static_cast<unsigned char>(field.first >> (8 * i)));
        }
    }
    ASSERT_EQ(sizeof item, expected.size());
    std::vector<unsigned char> actual(sizeof item);
    std::memcpy(actual.data(), &item, sizeof item);
    EXPECT_EQ(actual, expected);
}

TEST(PackedRecords, UserFilterAndStoredFormShareTheirLeadingWords) {
    // Words 0-59 are copied between the two forms as one block.
    EXPECT_EQ(sizeof(USERFILTER_IN_DB::FindText), 200u);
    EXPECT_EQ(sizeof(USERFILTER::FindText), 200u);
    EXPECT_EQ(offsetof(USERFILTER_IN_DB, InTranslation), offsetof(USERFILTER, InTranslation));
    EXPECT_EQ(offsetof(USERFILTER_IN_DB, IgnoreHotKeys), offsetof(USERFILTER, IgnoreHotKeys));
    EXPECT_EQ(offsetof(USERFILTER_IN_DB, MatchCase), offsetof(USERFILTER, MatchCase));
    EXPECT_EQ(offsetof(USERFILTER_IN_DB, WholeWord), offsetof(USERFILTER, WholeWord));
    EXPECT_EQ(offsetof(USERFILTER_IN_DB, StateTranslated), offsetof(USERFILTER, StateTranslated));
    EXPECT_EQ(offsetof(USERFILTER_IN_DB, StateUsed), offsetof(USERFILTER, StateUsed));
    EXPECT_EQ(offsetof(USERFILTER_IN_DB, StateReadOnly), offsetof(USERFILTER, StateReadOnly));
    EXPECT_EQ(offsetof(USERFILTER_IN_DB, StateStandard), offsetof(USERFILTER, StateStandard));

    const Fresh<USERFILTER> filter;
    const Fresh<USERFILTER_IN_DB> stored;
    const std::vector<unsigned char> zeros(sizeof(USERFILTER), 0);
    EXPECT_EQ(std::memcmp(&filter.get(), zeros.data(), sizeof(USERFILTER)), 0);
    EXPECT_EQ(std::memcmp(&stored.get(), zeros.data(), sizeof(USERFILTER_IN_DB)), 0);
}

// The members that the old dialog structures share with the current one.
#define DIALOG_V3_MEMBERS(r)                                                                     \
    MEMBER(r, Reserved, 4), MEMBER(r, Style, 4), MEMBER(r, FontName, S), MEMBER(r, FontSize, 2), \
        MEMBER(r, Weight, 2), MEMBER(r, Italic, 2), MEMBER(r, X, 4), MEMBER(r, Y, 4),            \
        MEMBER(r, CX, 4), MEMBER(r, CY, 4), MEMBER(r, ResId, 2), MEMBER(r, ResStrId, S),         \
        MEMBER(r, ClassName, S), MEMBER(r, MenuId, 4), MEMBER(r, TextId, 4),                     \
        MEMBER(r, ExStyle, 4), MEMBER(r, Version, 2), MEMBER(r, Signature, 2),                   \
        MEMBER(r, HelpId, 4), MEMBER(r, Flags, 4)

TEST(StringRecords, DialogLayouts) {
    const Fresh<DIALOG> fresh;
    const DIALOG& d = fresh.get();
    expectLayout(d, {DIALOG_V3_MEMBERS(d), MEMBER(d, NoticeId, 4), MEMBER(d, ResNetId, S),
                     MEMBER(d, BackColor, 4), MEMBER(d, ForeColor, 4)});
    EXPECT_TRUE(d.FontName.IsEmpty() && d.ResStrId.IsEmpty() && d.ClassName.IsEmpty() &&
                d.ResNetId.IsEmpty());

    const Fresh<DIALOG_DB_V5> v5;
    expectLayout(v5.get(), {DIALOG_V3_MEMBERS(v5.get()), MEMBER(v5.get(), NoticeId, 4)});
    const Fresh<DIALOG_DB_V3> v3;
    expectLayout(v3.get(), {DIALOG_V3_MEMBERS(v3.get())});
}

TEST(StringRecords, ControlLayouts) {
    const Fresh<CONTROL> fresh;
    const CONTROL& c = fresh.get();
    expectLayout(c, {MEMBER(c, Reserved, 4),
                     MEMBER(c, Style, 4),
                     MEMBER(c, ExStyle, 4),
                     MEMBER(c, X, 4),
                     MEMBER(c, Y, 4),
                     MEMBER(c, CX, 4),
                     MEMBER(c, CY, 4),
                     MEMBER(c, FontName, S),
                     MEMBER(c, StrParentID, S),
                     MEMBER(c, FontSize, 2),
                     MEMBER(c, Italic, 2),
                     MEMBER(c, Weight, 2),
                     MEMBER(c, lTextAlignment, 4),
                     MEMBER(c, lFlatAlignment, 4),
                     MEMBER(c, Anchor, 2),
                     MEMBER(c, Dock, 2),
                     MEMBER(c, Active, 2),
                     MEMBER(c, DialogId, 4),
                     MEMBER(c, TextId, 4),
                     MEMBER(c, ResId, 2),
                     MEMBER(c, TabOrder, 2),
                     MEMBER(c, ClassName, S),
                     MEMBER(c, IntRes, 2),
                     MEMBER(c, HelpId, 4),
                     MEMBER(c, ExtraCount, 4),
                     MEMBER(c, Flags, 4),
                     MEMBER(c, NoticeId, 4),
                     MEMBER(c, ResNetId, S),
                     MEMBER(c, BackColor, 4),
                     MEMBER(c, ForeColor, 4),
                     MEMBER(c, FontUnit, 2)});

    const Fresh<CONTROL_DB_V3> fresh3;
    const CONTROL_DB_V3& v3 = fresh3.get();
    expectLayout(v3, {MEMBER(v3, Reserved, 4), MEMBER(v3, Style, 4), MEMBER(v3, ExStyle, 4),
                      MEMBER(v3, X, 4), MEMBER(v3, Y, 4), MEMBER(v3, CX, 4), MEMBER(v3, CY, 4),
                      MEMBER(v3, DialogId, 4), MEMBER(v3, TextId, 4), MEMBER(v3, ResId, 2),
                      MEMBER(v3, TabOrder, 2), MEMBER(v3, ClassName, S), MEMBER(v3, IntRes, 2),
                      MEMBER(v3, HelpId, 4), MEMBER(v3, ExtraCount, 4), MEMBER(v3, Flags, 4)});
}

TEST(StringRecords, DataTranslationAndHistoryLayouts) {
    const Fresh<DBTRANSTABLE> freshTable;
    const DBTRANSTABLE& t = freshTable.get();
    expectLayout(t, {MEMBER(t, SourceTable, S), MEMBER(t, Schema, 2), MEMBER(t, PrimaryKey, S),
                     MEMBER(t, PrimaryKeyType, S), MEMBER(t, PrimaryKeyAttribute, S),
                     MEMBER(t, PrimaryKeySize, S), MEMBER(t, SourceLangId, S),
                     MEMBER(t, SourceLangIdType, 4), MEMBER(t, SourceLangIdAttribute, 4),
                     MEMBER(t, SourceLangIdSize, 4), MEMBER(t, SourceLangIdValue, S),
                     MEMBER(t, SourceLangIdValueType, 4), MEMBER(t, SourceColumn, S),
                     MEMBER(t, SourceColumnType, 4), MEMBER(t, SourceColumnAttribute, 4),
                     MEMBER(t, SourceColumnSize, 4), MEMBER(t, NoticeId, 4), MEMBER(t, Flags, 4)});

    const Fresh<DBTRANSRECORD> freshRecord;
    const DBTRANSRECORD& r = freshRecord.get();
    expectLayout(r, {MEMBER(r, TableId, 4), MEMBER(r, TextId, 4), MEMBER(r, PrimaryKeyValue, S),
                     MEMBER(r, PrimaryKeyValueType, S), MEMBER(r, SourceColumnValueType, 4),
                     MEMBER(r, NoticeId, 4), MEMBER(r, Flags, 4)});

    const Fresh<HISTORYLOG> freshLog;
    const HISTORYLOG& h = freshLog.get();
    expectLayout(h, {MEMBER(h, HistoryId, 4), MEMBER(h, TimeStamp, 4), MEMBER(h, HistoryType, 4),
                     MEMBER(h, HistoryData1, S), MEMBER(h, HistoryData2, S)});
    // A time before 1970 stays negative.
    EXPECT_TRUE(std::is_signed<decltype(h.TimeStamp)>::value);
}

}  // namespace
