// Every table definition of both database kinds as constant data: the current
// layouts in table-list order, the earlier layouts that migration and old phrase
// tables still bind, and the stand-alone module file.
#include <cstddef>
#include <cstring>

#include "core/Catalogue.h"

namespace qvb::catalogue {
namespace {

// An earlier layout reuses the leading indexes of the current table unchanged.
template <std::size_t Count, std::size_t N>
constexpr Span<IndexDef> firstIndexes(const IndexDef (&indexes)[N]) {
    static_assert(Count <= N, "more indexes than the current table has");
    Span<IndexDef> span(indexes);
    span.count = Count;
    return span;
}

// One entry per line reads like the schema tables it mirrors.
// clang-format off

// ---- Current layouts ---------------------------------------------------------------

// 0: SLang
constexpr FieldDef kSLangFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"PLangId", FT_INT4U, 4, 4},
    {"SLangId", FT_INT4U, 4, 8},
    {"FontName", FT_FSTRING, 200, 12},
    {"Flags", FT_INT4U, 4, 212},
    {"Font", FT_4STRING, 4, 0},
};
constexpr SegmentDef kSLangI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kSLangIndexes[] = {
    {"%s%s%cSLangI1.Qvi", 4, false, kSLangI1},
};
constexpr TableDef kSLang = {"SLang", "%s%s%cSLang", 216, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kSLangIndexes, kSLangFields};

// 1: Dic
constexpr FieldDef kDicFields[] = {
    {"TextId", FT_INT4U, 4, 0},
    {"PairLangId", FT_INT4U, 4, 4},
    {"MaxNrOfChar", FT_INT2U, 2, 8},
    {"ReadOnly", FT_BOOL, 1, 10},
    {"Count", FT_INT4U, 4, 11},
    {"Translated", FT_BOOL, 1, 15},
    {"Standard", FT_BOOL, 1, 16},
    {"Flags", FT_INT4U, 4, 17},
    {"SText", FT_STRING, 32768, 0},
    {"STextFiltered", FT_STRING, 32768, 1},
    {"TText", FT_STRING, 32768, 2},
};
constexpr SegmentDef kDicI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kDicI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kDicI3[] = {{0, 125, SEG_VARIABLE_TEXT}};
constexpr SegmentDef kDicI4[] = {{1, 125, SEG_VARIABLE_TEXT}};
constexpr IndexDef kDicIndexes[] = {
    {"%s%s%cDicI1.Qvi", 4, false, kDicI1},
    {"%s%s%cDicI2.Qvi", 8, true, kDicI2},
    {"%s%s%cDicI3.Qvi", 129, true, kDicI3},
    {"%s%s%cDicI4.Qvi", 129, true, kDicI4},
};
constexpr TableDef kDic = {"Dic", "%s%s%cDic", 21, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kDicIndexes, kDicFields};

// 2: DicT
constexpr FieldDef kDicTFields[] = {
    {"TextId", FT_INT4U, 4, 0},
    {"PairLangId", FT_INT4U, 4, 4},
    {"MaxNrOfChar", FT_INT2U, 2, 8},
    {"ReadOnly", FT_BOOL, 1, 10},
    {"Count", FT_INT4U, 4, 11},
    {"Translated", FT_BOOL, 1, 15},
    {"Standard", FT_BOOL, 1, 16},
    {"Flags", FT_INT4U, 4, 17},
    {"SText", FT_STRING, 32768, 0},
    {"STextFiltered", FT_STRING, 32768, 1},
    {"TText", FT_STRING, 32768, 2},
};
constexpr SegmentDef kDicTI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kDicTIndexes[] = {
    {"%s%s%cDicTI1.Qvi", 4, false, kDicTI1},
};
constexpr TableDef kDicT = {"DicT", "%s%s%cDicT", 21, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kDicTIndexes, kDicTFields};

// 3: Excep
constexpr FieldDef kExcepFields[] = {
    {"ExceptionId", FT_INT4U, 4, 0},
    {"TextId", FT_INT4U, 4, 4},
    {"ElementTyp", FT_INT4U, 4, 8},
    {"ElementId", FT_INT4U, 4, 12},
    {"Flags", FT_INT4U, 4, 16},
};
constexpr SegmentDef kExcepI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kExcepI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kExcepIndexes[] = {
    {"%s%s%cExcepI1.Qvi", 4, false, kExcepI1},
    {"%s%s%cExcepI2.Qvi", 8, true, kExcepI2},
};
constexpr TableDef kExcep = {"Excep", "%s%s%cExcep", 20, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kExcepIndexes, kExcepFields};

// 4: Modul
constexpr FieldDef kModulFields[] = {
    {"ModulId", FT_INT4U, 4, 0},
    {"ModulType", FT_INT2U, 2, 4},
    {"Flags", FT_INT4U, 4, 6},
    {"BinaryDataId", FT_INT4U, 4, 10},
    {"ModulName", FT_STRING, 4000, 0},
};
constexpr SegmentDef kModulI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kModulIndexes[] = {
    {"%s%s%cModulI1.Qvi", 4, false, kModulI1},
};
constexpr TableDef kModul = {"Modul", "%s%s%cModul", 14, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kModulIndexes, kModulFields};

// 5: LModul
constexpr FieldDef kLModulFields[] = {
    {"LangModulId", FT_INT4U, 4, 0},
    {"PairLangId", FT_INT4U, 4, 4},
    {"ModulId", FT_INT4U, 4, 8},
    {"Flags", FT_INT4U, 4, 12},
};
constexpr SegmentDef kLModulI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kLModulI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kLModulI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kLModulIndexes[] = {
    {"%s%s%cLModulI1.Qvi", 4, false, kLModulI1},
    {"%s%s%cLModulI2.Qvi", 8, true, kLModulI2},
    {"%s%s%cLModulI3.Qvi", 8, true, kLModulI3},
};
constexpr TableDef kLModul = {"LModul", "%s%s%cLModul", 16, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kLModulIndexes, kLModulFields};

// 6: STable
constexpr FieldDef kSTableFields[] = {
    {"StringId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResId", FT_INT2U, 2, 12},
    {"Flags", FT_INT4U, 4, 14},
    {"NoticeId", FT_INT4U, 4, 18},
    {"ResNetId", FT_STRING, 200, 0},
};
constexpr SegmentDef kSTableI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kSTableI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kSTableI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kSTableIndexes[] = {
    {"%s%s%cSTableI1.Qvi", 4, false, kSTableI1},
    {"%s%s%cSTableI2.Qvi", 8, true, kSTableI2},
    {"%s%s%cSTableI3.Qvi", 8, true, kSTableI3},
};
constexpr TableDef kSTable = {"STable", "%s%s%cSTable", 22, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kSTableIndexes, kSTableFields};

// 7: MTable
constexpr FieldDef kMTableFields[] = {
    {"MessageTable", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"Id", FT_INT4U, 4, 12},
    {"MessageFlags", FT_INT2U, 2, 16},
    {"Flags", FT_INT4U, 4, 18},
    {"NoticeId", FT_INT4U, 4, 22},
    {"ResNetId", FT_STRING, 200, 0},
    {"Key", FT_STRING, 200, 1},
};
constexpr SegmentDef kMTableI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kMTableI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kMTableI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kMTableIndexes[] = {
    {"%s%s%cMTableI1.Qvi", 4, false, kMTableI1},
    {"%s%s%cMTableI2.Qvi", 8, true, kMTableI2},
    {"%s%s%cMTableI3.Qvi", 8, true, kMTableI3},
};
constexpr TableDef kMTable = {"MTable", "%s%s%cMTable", 26, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kMTableIndexes, kMTableFields};

// 8: Menu
constexpr FieldDef kMenuFields[] = {
    {"MenuId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"ResId", FT_INT2U, 2, 8},
    {"Version", FT_INT2U, 2, 10},
    {"HelpId", FT_INT4U, 4, 12},
    {"Flags", FT_INT4U, 4, 16},
    {"NoticeId", FT_INT4U, 4, 20},
    {"ResStrId", FT_STRING, 200, 0},
    {"ResNetId", FT_STRING, 200, 1},
};
constexpr SegmentDef kMenuI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kMenuI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kMenuIndexes[] = {
    {"%s%s%cMenuI1.Qvi", 4, false, kMenuI1},
    {"%s%s%cMenuI2.Qvi", 8, true, kMenuI2},
};
constexpr TableDef kMenu = {"Menu", "%s%s%cMenu", 24, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kMenuIndexes, kMenuFields};

// 9: MItem
constexpr FieldDef kMItemFields[] = {
    {"MenuItemId", FT_INT4U, 4, 0},
    {"MenuId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResId", FT_INT2U, 2, 12},
    {"Style", FT_INT2U, 2, 14},
    {"Order", FT_INT2U, 2, 16},
    {"Type", FT_INT4U, 4, 18},
    {"State", FT_INT4U, 4, 22},
    {"ResInfo", FT_INT2U, 2, 26},
    {"HelpId", FT_INT4U, 4, 28},
    {"Flags", FT_INT4U, 4, 32},
    {"NoticeId", FT_INT4U, 4, 36},
    {"ResNetId", FT_STRING, 200, 0},
};
constexpr SegmentDef kMItemI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kMItemI2[] = {{4, 4, SEG_FIXED_UNSIGNED}, {16, 2, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kMItemI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kMItemIndexes[] = {
    {"%s%s%cMItemI1.Qvi", 4, false, kMItemI1},
    {"%s%s%cMItemI2.Qvi", 6, false, kMItemI2},
    {"%s%s%cMItemI3.Qvi", 8, true, kMItemI3},
};
constexpr TableDef kMItem = {"MItem", "%s%s%cMItem", 40, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kMItemIndexes, kMItemFields};

// 10: Dialog
constexpr FieldDef kDialogFields[] = {
    {"DialogId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"MenuId", FT_INT4U, 4, 8},
    {"TextId", FT_INT4U, 4, 12},
    {"ResId", FT_INT2U, 2, 16},
    {"FontSize", FT_INT2U, 2, 18},
    {"Style", FT_INT4U, 4, 20},
    {"ExStyle", FT_INT4U, 4, 24},
    {"Weight", FT_INT2U, 2, 28},
    {"Italic", FT_INT2U, 2, 30},
    {"Version", FT_INT2U, 2, 32},
    {"Signature", FT_INT2U, 2, 34},
    {"HelpId", FT_INT4U, 4, 36},
    {"X", FT_INT4U, 4, 40},
    {"Y", FT_INT4U, 4, 44},
    {"CX", FT_INT4U, 4, 48},
    {"CY", FT_INT4U, 4, 52},
    {"Flags", FT_INT4U, 4, 56},
    {"NoticeId", FT_INT4U, 4, 60},
    {"ResStrId", FT_STRING, 200, 0},
    {"FontName", FT_STRING, 200, 1},
    {"ClassName", FT_STRING, 200, 2},
    {"ResNetId", FT_STRING, 200, 3},
    {"BackColor", FT_INT4U, 4, 64},
    {"ForeColor", FT_INT4U, 4, 68},
};
constexpr SegmentDef kDialogI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kDialogI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kDialogI3[] = {{12, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kDialogIndexes[] = {
    {"%s%s%cDialogI1.Qvi", 4, false, kDialogI1},
    {"%s%s%cDialogI2.Qvi", 8, true, kDialogI2},
    {"%s%s%cDialogI3.Qvi", 8, true, kDialogI3},
};
constexpr TableDef kDialog = {"Dialog", "%s%s%cDialog", 72, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kDialogIndexes, kDialogFields};

// 11: SDialog
constexpr FieldDef kSDialogFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"DialogId", FT_INT4U, 4, 4},
    {"X", FT_INT4U, 4, 8},
    {"Y", FT_INT4U, 4, 12},
    {"CX", FT_INT4U, 4, 16},
    {"CY", FT_INT4U, 4, 20},
    {"Style", FT_INT4U, 4, 24},
    {"ExStyle", FT_INT4U, 4, 28},
    {"FontSize", FT_INT2U, 2, 32},
    {"Weight", FT_INT2U, 2, 34},
    {"Italic", FT_INT2U, 2, 36},
    {"FontName", FT_STRING, 200, 0},
};
constexpr SegmentDef kSDialogI1[] = {{0, 4, SEG_FIXED_UNSIGNED}, {4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kSDialogI2[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kSDialogIndexes[] = {
    {"%s%s%cSDialogI1.Qvi", 8, false, kSDialogI1},
    {"%s%s%cSDialogI2.Qvi", 8, true, kSDialogI2},
};
constexpr TableDef kSDialog = {"SDialog", "%s%s%cSDialog", 38, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kSDialogIndexes, kSDialogFields};

// 12: Control
constexpr FieldDef kControlFields[] = {
    {"ControlId", FT_INT4U, 4, 0},
    {"DialogId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResId", FT_INT2U, 2, 12},
    {"TabOrder", FT_INT2U, 2, 14},
    {"Style", FT_INT4U, 4, 16},
    {"ExStyle", FT_INT4U, 4, 20},
    {"IntRes", FT_INT2U, 2, 24},
    {"HelpId", FT_INT4U, 4, 26},
    {"ExtraCount", FT_INT4U, 4, 30},
    {"X", FT_INT4U, 4, 34},
    {"Y", FT_INT4U, 4, 38},
    {"CX", FT_INT4U, 4, 42},
    {"CY", FT_INT4U, 4, 46},
    {"Flags", FT_INT4U, 4, 50},
    {"NoticeId", FT_INT4U, 4, 54},
    {"Italic", FT_INT2U, 2, 58},
    {"Weight", FT_INT2U, 2, 60},
    {"FontSize", FT_INT2U, 2, 62},
    {"lTextAlignment", FT_INT4U, 4, 64},
    {"lFlatAlignment", FT_INT4U, 4, 68},
    {"BackColor", FT_INT4U, 4, 72},
    {"ForeColor", FT_INT4U, 4, 76},
    {"FontUnit", FT_INT2U, 2, 80},
    {"Anchor", FT_INT2U, 2, 82},
    {"Dock", FT_INT2U, 2, 84},
    {"Active", FT_INT2U, 2, 86},
    {"ResNetId", FT_STRING, 200, 0},
    {"StrParentID", FT_STRING, 200, 1},
    {"ClassName", FT_STRING, 200, 2},
    {"FontName", FT_STRING, 200, 3},
};
constexpr SegmentDef kControlI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kControlI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kControlI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kControlIndexes[] = {
    {"%s%s%cControlI1.Qvi", 4, false, kControlI1},
    {"%s%s%cControlI2.Qvi", 8, true, kControlI2},
    {"%s%s%cControlI3.Qvi", 8, true, kControlI3},
};
constexpr TableDef kControl = {"Control", "%s%s%cControl", 88, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kControlIndexes, kControlFields};

// 13: SControl
constexpr FieldDef kSControlFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"ControlId", FT_INT4U, 4, 4},
    {"Style", FT_INT4U, 4, 8},
    {"ExStyle", FT_INT4U, 4, 12},
    {"X", FT_INT4U, 4, 16},
    {"Y", FT_INT4U, 4, 20},
    {"CX", FT_INT4U, 4, 24},
    {"CY", FT_INT4U, 4, 28},
    {"lTextAlignment", FT_INT4U, 4, 32},
    {"lFlatAlignment", FT_INT4U, 4, 36},
    {"FontSize", FT_INT2U, 2, 40},
    {"Italic", FT_INT2U, 2, 42},
    {"Weight", FT_INT2U, 2, 44},
    {"Anchor", FT_INT2U, 2, 46},
    {"Active", FT_INT2U, 2, 48},
    {"Dock", FT_INT2U, 2, 50},
    {"FontName", FT_STRING, 200, 0},
};
constexpr SegmentDef kSControlI1[] = {{0, 4, SEG_FIXED_UNSIGNED}, {4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kSControlI2[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kSControlIndexes[] = {
    {"%s%s%cSControlI1.Qvi", 8, false, kSControlI1},
    {"%s%s%cSControlI2.Qvi", 8, true, kSControlI2},
};
constexpr TableDef kSControl = {"SControl", "%s%s%cSControl", 52, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kSControlIndexes, kSControlFields};

// 14: DICtrl
constexpr FieldDef kDICtrlFields[] = {
    {"DlgInitId", FT_INT4U, 4, 0},
    {"ControlId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"OrderId", FT_INT2U, 2, 12},
    {"Message", FT_INT2U, 2, 14},
    {"Flags", FT_INT4U, 4, 16},
    {"NoticeId", FT_INT4U, 4, 20},
    {"ResHolderIndex", FT_INT2U, 2, 24},
    {"ParentId", FT_INT4U, 4, 26},
    {"ResNetId", FT_STRING, 800, 0},
};
constexpr SegmentDef kDICtrlI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kDICtrlI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kDICtrlI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kDICtrlIndexes[] = {
    {"%s%s%cDICtrlI1.Qvi", 4, false, kDICtrlI1},
    {"%s%s%cDICtrlI2.Qvi", 8, true, kDICtrlI2},
    {"%s%s%cDICtrlI3.Qvi", 8, true, kDICtrlI3},
};
constexpr TableDef kDICtrl = {"DICtrl", "%s%s%cDICtrl", 30, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kDICtrlIndexes, kDICtrlFields};

// 15: Notice
constexpr FieldDef kNoticeFields[] = {
    {"NoticeId", FT_INT4U, 4, 0},
    {"NoticeText", FT_STRING, 32768, 0},
};
constexpr SegmentDef kNoticeI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kNoticeIndexes[] = {
    {"%s%s%cNoticeI1.Qvi", 4, false, kNoticeI1},
};
constexpr TableDef kNotice = {"Notice", "%s%s%cNotice", 4, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kNoticeIndexes, kNoticeFields};

// 16: VersInfo
constexpr FieldDef kVersInfoFields[] = {
    {"VersionId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"Flags", FT_INT4U, 4, 12},
    {"NoticeId", FT_INT4U, 4, 16},
    {"ResStrId", FT_STRING, 200, 0},
};
constexpr SegmentDef kVersInfoI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kVersInfoI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kVersInfoI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kVersInfoIndexes[] = {
    {"%s%s%cVersInfoI1.Qvi", 4, false, kVersInfoI1},
    {"%s%s%cVersInfoI2.Qvi", 8, true, kVersInfoI2},
    {"%s%s%cVersInfoI3.Qvi", 8, true, kVersInfoI3},
};
constexpr TableDef kVersInfo = {"VersInfo", "%s%s%cVersInfo", 20, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kVersInfoIndexes, kVersInfoFields};

// 17: SMenuItem
constexpr FieldDef kSMenuItemFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"MenuItemId", FT_INT4U, 4, 4},
    {"Type", FT_INT4U, 4, 8},
    {"Dummy1", FT_INT4U, 4, 12},
    {"Dummy2", FT_INT4U, 4, 16},
};
constexpr SegmentDef kSMenuItemI1[] = {{0, 4, SEG_FIXED_UNSIGNED}, {4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kSMenuItemI2[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kSMenuItemIndexes[] = {
    {"%s%s%cSMenuItemI1.Qvi", 8, false, kSMenuItemI1},
    {"%s%s%cSMenuItemI2.Qvi", 8, true, kSMenuItemI2},
};
constexpr TableDef kSMenuItem = {"SMenuItem", "%s%s%cSMenuItem", 20, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kSMenuItemIndexes, kSMenuItemFields};

// 18: XMLNODESR
constexpr FieldDef kXMLNODESRFields[] = {
    {"XMLId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"NoticeId", FT_INT4U, 4, 12},
    {"Flags", FT_INT4U, 4, 16},
    {"CountNo", FT_INT4U, 4, 20},
    {"Dummy2", FT_INT4U, 4, 24},
    {"NodePath", FT_STRING, 32768, 0},
};
constexpr SegmentDef kXMLNODESRI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kXMLNODESRI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kXMLNODESRI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kXMLNODESRIndexes[] = {
    {"%s%s%cXMLNODESRI1.Qvi", 4, false, kXMLNODESRI1},
    {"%s%s%cXMLNODESRI2.Qvi", 8, true, kXMLNODESRI2},
    {"%s%s%cXMLNODESRI3.Qvi", 8, true, kXMLNODESRI3},
};
constexpr TableDef kXMLNODESR = {"XMLNODESR", "%s%s%cXMLNODESR", 28, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kXMLNODESRIndexes, kXMLNODESRFields};

// 19: XSLCompR
constexpr FieldDef kXSLCompRFields[] = {
    {"XSLCompId", FT_INT4U, 4, 0},
    {"XMLId", FT_INT4U, 4, 4},
    {"XSLId", FT_INT4U, 4, 8},
    {"Dummy1", FT_INT4U, 4, 12},
    {"Dummy2", FT_INT4U, 4, 16},
};
constexpr SegmentDef kXSLCompRI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kXSLCompRI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kXSLCompRIndexes[] = {
    {"%s%s%cXSLCompRI1.Qvi", 4, false, kXSLCompRI1},
    {"%s%s%cXSLCompRI2.Qvi", 8, true, kXSLCompRI2},
};
constexpr TableDef kXSLCompR = {"XSLCompR", "%s%s%cXSLCompR", 20, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kXSLCompRIndexes, kXSLCompRFields};

// 20: TableR
constexpr FieldDef kTableRFields[] = {
    {"TableId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"Schema", FT_INT2U, 2, 8},
    {"NoticeId", FT_INT4U, 4, 10},
    {"Flags", FT_INT4U, 4, 14},
    {"SourceLangIdType", FT_INT4U, 4, 18},
    {"SourceLangIdAttribute", FT_INT4U, 4, 22},
    {"SourceLangIdSize", FT_INT4U, 4, 26},
    {"SourceLangIdValueType", FT_INT4U, 4, 30},
    {"SourceColumnType", FT_INT4U, 4, 34},
    {"SourceColumnAttribute", FT_INT4U, 4, 38},
    {"SourceColumnSize", FT_INT4U, 4, 42},
    {"SourceTable", FT_STRING, 32768, 0},
    {"PrimaryKey", FT_STRING, 32768, 1},
    {"PrimaryKeyType", FT_STRING, 32768, 2},
    {"PrimaryKeyAttribute", FT_STRING, 32768, 3},
    {"PrimaryKeySize", FT_STRING, 32768, 4},
    {"SourceLangId", FT_STRING, 32768, 5},
    {"SourceLangIdValue", FT_STRING, 32768, 6},
    {"SourceColumn", FT_STRING, 32768, 7},
};
constexpr SegmentDef kTableRI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kTableRI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kTableRIndexes[] = {
    {"%s%s%cTableRI1.Qvi", 4, false, kTableRI1},
    {"%s%s%cTableRI2.Qvi", 8, true, kTableRI2},
};
constexpr TableDef kTableR = {"TableR", "%s%s%cTableR", 46, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kTableRIndexes, kTableRFields};

// 21: STableR
constexpr FieldDef kSTableRFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"TableId", FT_INT4U, 4, 4},
    {"TargetTableIdType", FT_INT4U, 4, 8},
    {"TargetTableIdAttribute", FT_INT4U, 4, 12},
    {"TargetTableIdSize", FT_INT4U, 4, 16},
    {"TargetTableIdValueType", FT_INT4U, 4, 20},
    {"TargetColumnType", FT_INT4U, 4, 24},
    {"TargetColumnAttribute", FT_INT4U, 4, 28},
    {"TargetColumnSize", FT_INT4U, 4, 32},
    {"TargetTable", FT_STRING, 32768, 0},
    {"TargetLangId", FT_STRING, 32768, 1},
    {"TargetTableIdValue", FT_STRING, 32768, 2},
    {"TargetColumn", FT_STRING, 32768, 3},
};
constexpr SegmentDef kSTableRI1[] = {{0, 4, SEG_FIXED_UNSIGNED}, {4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kSTableRI2[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kSTableRIndexes[] = {
    {"%s%s%cSTableRI1.Qvi", 8, false, kSTableRI1},
    {"%s%s%cSTableRI2.Qvi", 8, true, kSTableRI2},
};
constexpr TableDef kSTableR = {"STableR", "%s%s%cSTableR", 36, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kSTableRIndexes, kSTableRFields};

// 22: RecordR
constexpr FieldDef kRecordRFields[] = {
    {"RecordId", FT_INT4U, 4, 0},
    {"TableId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"NoticeId", FT_INT4U, 4, 12},
    {"Flags", FT_INT4U, 4, 16},
    {"SourceColumnValueType", FT_INT4U, 4, 20},
    {"PrimaryKeyValue", FT_STRING, 32768, 0},
    {"PrimaryKeyValueType", FT_STRING, 32768, 1},
};
constexpr SegmentDef kRecordRI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kRecordRI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kRecordRI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kRecordRIndexes[] = {
    {"%s%s%cRecordRI1.Qvi", 4, false, kRecordRI1},
    {"%s%s%cRecordRI2.Qvi", 8, true, kRecordRI2},
    {"%s%s%cRecordRI3.Qvi", 8, true, kRecordRI3},
};
constexpr TableDef kRecordR = {"RecordR", "%s%s%cRecordR", 24, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kRecordRIndexes, kRecordRFields};

// 23: SRecordR
constexpr FieldDef kSRecordRFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"RecordId", FT_INT4U, 4, 4},
    {"TargetColumnValueType", FT_INT4U, 4, 8},
};
constexpr SegmentDef kSRecordRI1[] = {{0, 4, SEG_FIXED_UNSIGNED}, {4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kSRecordRI2[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kSRecordRIndexes[] = {
    {"%s%s%cSRecordRI1.Qvi", 8, false, kSRecordRI1},
    {"%s%s%cSRecordRI2.Qvi", 8, true, kSRecordRI2},
};
constexpr TableDef kSRecordR = {"SRecordR", "%s%s%cSRecordR", 12, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kSRecordRIndexes, kSRecordRFields};

// 24: TargetPaths
constexpr FieldDef kTargetPathsFields[] = {
    {"TargetPathModulId", FT_INT4U, 4, 0},
    {"MainTargetPath", FT_STRING, 4000, 0},
    {"SatelliteDllTargetPath1", FT_STRING, 4000, 1},
    {"SatelliteDllTargetPath2", FT_STRING, 4000, 2},
};
constexpr SegmentDef kTargetPathsI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kTargetPathsIndexes[] = {
    {"%s%s%cTargetPathsI1.Qvi", 4, false, kTargetPathsI1},
};
constexpr TableDef kTargetPaths = {"TargetPaths", "%s%s%cTargetPaths", 4, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kTargetPathsIndexes, kTargetPathsFields};

// 25: ModulExtra
constexpr FieldDef kModulExtraFields[] = {
    {"ModulExtraModulId", FT_INT4U, 4, 0},
    {"ModulFormat", FT_STRING, 4000, 0},
};
constexpr SegmentDef kModulExtraI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kModulExtraIndexes[] = {
    {"%s%s%cModulExtraI1.Qvi", 4, false, kModulExtraI1},
};
constexpr TableDef kModulExtra = {"ModulExtra", "%s%s%cModulExtra", 4, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kModulExtraIndexes, kModulExtraFields};

// 26: Bitmap
constexpr FieldDef kBitmapFields[] = {
    {"BitmapId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"ResId", FT_INT2U, 2, 8},
    {"Width", FT_INT2U, 2, 10},
    {"Height", FT_INT2U, 2, 12},
    {"BitmapFormat", FT_INT2U, 2, 14},
    {"ColorDepth", FT_INT2U, 2, 16},
    {"Compression", FT_INT2U, 2, 18},
    {"Flags", FT_INT4U, 4, 20},
    {"NoticeId", FT_INT4U, 4, 24},
    {"BinaryDataId", FT_INT4U, 4, 28},
    {"ResStrId", FT_STRING, 4000, 0},
};
constexpr SegmentDef kBitmapI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kBitmapI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kBitmapIndexes[] = {
    {"%s%s%cBitmapI1.Qvi", 4, false, kBitmapI1},
    {"%s%s%cBitmapI2.Qvi", 8, true, kBitmapI2},
};
constexpr TableDef kBitmap = {"Bitmap", "%s%s%cBitmap", 32, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kBitmapIndexes, kBitmapFields};

// 27: SBitmap
constexpr FieldDef kSBitmapFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"BitmapId", FT_INT4U, 4, 4},
    {"Width", FT_INT2U, 2, 8},
    {"Height", FT_INT2U, 2, 10},
    {"BitmapFormat", FT_INT2U, 2, 12},
    {"ColorDepth", FT_INT2U, 2, 14},
    {"Compression", FT_INT2U, 2, 16},
    {"BinaryDataId", FT_INT4U, 4, 18},
};
constexpr SegmentDef kSBitmapI1[] = {{0, 4, SEG_FIXED_UNSIGNED}, {4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kSBitmapI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kSBitmapIndexes[] = {
    {"%s%s%cSBitmapI1.Qvi", 8, false, kSBitmapI1},
    {"%s%s%cSBitmapI2.Qvi", 8, true, kSBitmapI2},
};
constexpr TableDef kSBitmap = {"SBitmap", "%s%s%cSBitmap", 22, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kSBitmapIndexes, kSBitmapFields};

// 28: CTooltip
constexpr FieldDef kCTooltipFields[] = {
    {"TooltipId", FT_INT4U, 4, 0},
    {"ControlId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResHolderIndex", FT_INT2U, 2, 12},
    {"Flags", FT_INT4U, 4, 14},
    {"NoticeId", FT_INT4U, 4, 18},
    {"ResNetId", FT_STRING, 800, 0},
};
constexpr SegmentDef kCTooltipI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kCTooltipI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kCTooltipI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kCTooltipIndexes[] = {
    {"%s%s%cCTooltipI1.Qvi", 4, false, kCTooltipI1},
    {"%s%s%cCTooltipI2.Qvi", 8, true, kCTooltipI2},
    {"%s%s%cCTooltipI3.Qvi", 8, true, kCTooltipI3},
};
constexpr TableDef kCTooltip = {"CTooltip", "%s%s%cCTooltip", 22, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kCTooltipIndexes, kCTooltipFields};

// 29: DlgTooltip
constexpr FieldDef kDlgTooltipFields[] = {
    {"TooltipId", FT_INT4U, 4, 0},
    {"DlgId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResHolderIndex", FT_INT2U, 2, 12},
    {"Flags", FT_INT4U, 4, 14},
    {"NoticeId", FT_INT4U, 4, 18},
    {"ResNetId", FT_STRING, 800, 0},
};
constexpr SegmentDef kDlgTooltipI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kDlgTooltipI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kDlgTooltipI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kDlgTooltipIndexes[] = {
    {"%s%s%cDlgTooltipI1.Qvi", 4, false, kDlgTooltipI1},
    {"%s%s%cDlgTooltipI2.Qvi", 8, true, kDlgTooltipI2},
    {"%s%s%cDlgTooltipI3.Qvi", 8, true, kDlgTooltipI3},
};
constexpr TableDef kDlgTooltip = {"DlgTooltip", "%s%s%cDlgTooltip", 22, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kDlgTooltipIndexes, kDlgTooltipFields};

// 30: BinaryData
constexpr FieldDef kBinaryDataFields[] = {
    {"BinaryDataId", FT_INT4U, 4, 0},
    {"Flags", FT_INT4U, 4, 4},
    {"BinaryData", FT_4STRING, 4, 0},
};
constexpr SegmentDef kBinaryDataI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kBinaryDataIndexes[] = {
    {"%s%s%cBinaryDataI1.Qvi", 4, false, kBinaryDataI1},
};
constexpr TableDef kBinaryData = {"BinaryData", "%s%s%cBinaryData", 8, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kBinaryDataIndexes, kBinaryDataFields};

// 31: History
constexpr FieldDef kHistoryFields[] = {
    {"HistoryId", FT_INT4U, 4, 0},
    {"TimeStamp", FT_INT4U, 4, 4},
    {"HistoryType", FT_INT4U, 4, 8},
    {"HistoryData1", FT_STRING, 32768, 0},
    {"HistoryData2", FT_STRING, 32768, 1},
};
constexpr SegmentDef kHistoryI1[] = {{0, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kHistoryI2[] = {{4, 4, SEG_FIXED_UNSIGNED}};
constexpr SegmentDef kHistoryI3[] = {{8, 4, SEG_FIXED_UNSIGNED}};
constexpr IndexDef kHistoryIndexes[] = {
    {"%s%s%cHistoryI1.Qvi", 4, false, kHistoryI1},
    {"%s%s%cHistoryI2.Qvi", 8, true, kHistoryI2},
    {"%s%s%cHistoryI3.Qvi", 8, true, kHistoryI3},
};
constexpr TableDef kHistory = {"History", "%s%s%cHistory", 12, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kHistoryIndexes, kHistoryFields};

constexpr const TableDef* kCurrentTables[] = {
    &kSLang,
    &kDic,
    &kDicT,
    &kExcep,
    &kModul,
    &kLModul,
    &kSTable,
    &kMTable,
    &kMenu,
    &kMItem,
    &kDialog,
    &kSDialog,
    &kControl,
    &kSControl,
    &kDICtrl,
    &kNotice,
    &kVersInfo,
    &kSMenuItem,
    &kXMLNODESR,
    &kXSLCompR,
    &kTableR,
    &kSTableR,
    &kRecordR,
    &kSRecordR,
    &kTargetPaths,
    &kModulExtra,
    &kBitmap,
    &kSBitmap,
    &kCTooltip,
    &kDlgTooltip,
    &kBinaryData,
    &kHistory,
};
static_assert(sizeof(kCurrentTables) / sizeof(kCurrentTables[0]) == kTableCount,
              "the table list has one entry per table number");

// ---- Earlier layouts ---------------------------------------------------------------

// STable, generation A
constexpr FieldDef kSTableAFields[] = {
    {"StringId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResId", FT_INT2U, 2, 12},
    {"Flags", FT_INT4U, 4, 14},
};
constexpr TableDef kSTableA = {"STable", "%s%s%cSTable", 18, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kSTableIndexes), kSTableAFields};

// MTable, generation A
constexpr FieldDef kMTableAFields[] = {
    {"MessageTable", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"Id", FT_INT4U, 4, 12},
    {"MessageFlags", FT_INT2U, 2, 16},
    {"Flags", FT_INT4U, 4, 18},
};
constexpr TableDef kMTableA = {"MTable", "%s%s%cMTable", 22, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kMTableIndexes), kMTableAFields};

// Menu, generation A
constexpr FieldDef kMenuAFields[] = {
    {"MenuId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"ResId", FT_INT2U, 2, 8},
    {"Version", FT_INT2U, 2, 10},
    {"HelpId", FT_INT4U, 4, 12},
    {"Flags", FT_INT4U, 4, 16},
    {"ResStrId", FT_STRING, 200, 0},
};
constexpr TableDef kMenuA = {"Menu", "%s%s%cMenu", 20, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<2>(kMenuIndexes), kMenuAFields};

// MItem, generation A
constexpr FieldDef kMItemAFields[] = {
    {"MenuItemId", FT_INT4U, 4, 0},
    {"MenuId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResId", FT_INT2U, 2, 12},
    {"Style", FT_INT2U, 2, 14},
    {"Order", FT_INT2U, 2, 16},
    {"Type", FT_INT4U, 4, 18},
    {"State", FT_INT4U, 4, 22},
    {"ResInfo", FT_INT2U, 2, 26},
    {"HelpId", FT_INT4U, 4, 28},
    {"Flags", FT_INT4U, 4, 32},
};
constexpr TableDef kMItemA = {"MItem", "%s%s%cMItem", 36, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kMItemIndexes), kMItemAFields};

// Dialog, generation A
constexpr FieldDef kDialogAFields[] = {
    {"DialogId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"MenuId", FT_INT4U, 4, 8},
    {"TextId", FT_INT4U, 4, 12},
    {"ResId", FT_INT2U, 2, 16},
    {"FontSize", FT_INT2U, 2, 18},
    {"Style", FT_INT4U, 4, 20},
    {"ExStyle", FT_INT4U, 4, 24},
    {"Weight", FT_INT2U, 2, 28},
    {"Italic", FT_INT2U, 2, 30},
    {"Version", FT_INT2U, 2, 32},
    {"Signature", FT_INT2U, 2, 34},
    {"HelpId", FT_INT4U, 4, 36},
    {"X", FT_INT4U, 4, 40},
    {"Y", FT_INT4U, 4, 44},
    {"CX", FT_INT4U, 4, 48},
    {"CY", FT_INT4U, 4, 52},
    {"Flags", FT_INT4U, 4, 56},
    {"ResStrId", FT_STRING, 200, 0},
    {"FontName", FT_STRING, 200, 1},
    {"ClassName", FT_STRING, 200, 2},
};
constexpr TableDef kDialogA = {"Dialog", "%s%s%cDialog", 60, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kDialogIndexes), kDialogAFields};

// SDialog, generation A
constexpr FieldDef kSDialogAFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"DialogId", FT_INT4U, 4, 4},
    {"X", FT_INT4U, 4, 8},
    {"Y", FT_INT4U, 4, 12},
    {"CX", FT_INT4U, 4, 16},
    {"CY", FT_INT4U, 4, 20},
    {"Style", FT_INT4U, 4, 24},
    {"FontSize", FT_INT2U, 2, 28},
    {"Weight", FT_INT2U, 2, 30},
    {"Italic", FT_INT2U, 2, 32},
    {"FontName", FT_STRING, 200, 0},
};
constexpr TableDef kSDialogA = {"SDialog", "%s%s%cSDialog", 34, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<2>(kSDialogIndexes), kSDialogAFields};

// Control, generation A
constexpr FieldDef kControlAFields[] = {
    {"ControlId", FT_INT4U, 4, 0},
    {"DialogId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResId", FT_INT2U, 2, 12},
    {"TabOrder", FT_INT2U, 2, 14},
    {"Style", FT_INT4U, 4, 16},
    {"ExStyle", FT_INT4U, 4, 20},
    {"IntRes", FT_INT2U, 2, 24},
    {"HelpId", FT_INT4U, 4, 26},
    {"ExtraCount", FT_INT4U, 4, 30},
    {"X", FT_INT4U, 4, 34},
    {"Y", FT_INT4U, 4, 38},
    {"CX", FT_INT4U, 4, 42},
    {"CY", FT_INT4U, 4, 46},
    {"Flags", FT_INT4U, 4, 50},
    {"ClassName", FT_STRING, 200, 0},
};
constexpr TableDef kControlA = {"Control", "%s%s%cControl", 54, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kControlIndexes), kControlAFields};

// SControl, generation A. The stored fixed length of 16 is short of its six words;
// it is kept as written because only migration reads these files.
constexpr FieldDef kSControlAFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"ControlId", FT_INT4U, 4, 4},
    {"X", FT_INT4U, 4, 8},
    {"Y", FT_INT4U, 4, 12},
    {"CX", FT_INT4U, 4, 16},
    {"CY", FT_INT4U, 4, 20},
};
constexpr TableDef kSControlA = {"SControl", "%s%s%cSControl", 16, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<2>(kSControlIndexes), kSControlAFields};

// DICtrl, generation A
constexpr FieldDef kDICtrlAFields[] = {
    {"DlgInitId", FT_INT4U, 4, 0},
    {"ControlId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"OrderId", FT_INT2U, 2, 12},
    {"Message", FT_INT2U, 2, 14},
    {"Flags", FT_INT4U, 4, 16},
};
constexpr TableDef kDICtrlA = {"DICtrl", "%s%s%cDICtrl", 20, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kDICtrlIndexes), kDICtrlAFields};

// STable, generation B
constexpr FieldDef kSTableBFields[] = {
    {"StringId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResId", FT_INT2U, 2, 12},
    {"Flags", FT_INT4U, 4, 14},
    {"NoticeId", FT_INT4U, 4, 18},
};
constexpr TableDef kSTableB = {"STable", "%s%s%cSTable", 22, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kSTableIndexes), kSTableBFields};

// MTable, generation B
constexpr FieldDef kMTableBFields[] = {
    {"MessageTable", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"Id", FT_INT4U, 4, 12},
    {"MessageFlags", FT_INT2U, 2, 16},
    {"Flags", FT_INT4U, 4, 18},
    {"NoticeId", FT_INT4U, 4, 22},
};
constexpr TableDef kMTableB = {"MTable", "%s%s%cMTable", 26, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kMTableIndexes), kMTableBFields};

// Menu, generation B
constexpr FieldDef kMenuBFields[] = {
    {"MenuId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"ResId", FT_INT2U, 2, 8},
    {"Version", FT_INT2U, 2, 10},
    {"HelpId", FT_INT4U, 4, 12},
    {"Flags", FT_INT4U, 4, 16},
    {"NoticeId", FT_INT4U, 4, 20},
    {"ResStrId", FT_STRING, 200, 0},
};
constexpr TableDef kMenuB = {"Menu", "%s%s%cMenu", 24, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<2>(kMenuIndexes), kMenuBFields};

// MItem, generation B
constexpr FieldDef kMItemBFields[] = {
    {"MenuItemId", FT_INT4U, 4, 0},
    {"MenuId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResId", FT_INT2U, 2, 12},
    {"Style", FT_INT2U, 2, 14},
    {"Order", FT_INT2U, 2, 16},
    {"Type", FT_INT4U, 4, 18},
    {"State", FT_INT4U, 4, 22},
    {"ResInfo", FT_INT2U, 2, 26},
    {"HelpId", FT_INT4U, 4, 28},
    {"Flags", FT_INT4U, 4, 32},
    {"NoticeId", FT_INT4U, 4, 36},
};
constexpr TableDef kMItemB = {"MItem", "%s%s%cMItem", 40, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kMItemIndexes), kMItemBFields};

// Dialog, generation B
constexpr FieldDef kDialogBFields[] = {
    {"DialogId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"MenuId", FT_INT4U, 4, 8},
    {"TextId", FT_INT4U, 4, 12},
    {"ResId", FT_INT2U, 2, 16},
    {"FontSize", FT_INT2U, 2, 18},
    {"Style", FT_INT4U, 4, 20},
    {"ExStyle", FT_INT4U, 4, 24},
    {"Weight", FT_INT2U, 2, 28},
    {"Italic", FT_INT2U, 2, 30},
    {"Version", FT_INT2U, 2, 32},
    {"Signature", FT_INT2U, 2, 34},
    {"HelpId", FT_INT4U, 4, 36},
    {"X", FT_INT4U, 4, 40},
    {"Y", FT_INT4U, 4, 44},
    {"CX", FT_INT4U, 4, 48},
    {"CY", FT_INT4U, 4, 52},
    {"Flags", FT_INT4U, 4, 56},
    {"NoticeId", FT_INT4U, 4, 60},
    {"ResStrId", FT_STRING, 200, 0},
    {"FontName", FT_STRING, 200, 1},
    {"ClassName", FT_STRING, 200, 2},
};
constexpr TableDef kDialogB = {"Dialog", "%s%s%cDialog", 64, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kDialogIndexes), kDialogBFields};

// Control, generation B
constexpr FieldDef kControlBFields[] = {
    {"ControlId", FT_INT4U, 4, 0},
    {"DialogId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"ResId", FT_INT2U, 2, 12},
    {"TabOrder", FT_INT2U, 2, 14},
    {"Style", FT_INT4U, 4, 16},
    {"ExStyle", FT_INT4U, 4, 20},
    {"IntRes", FT_INT2U, 2, 24},
    {"HelpId", FT_INT4U, 4, 26},
    {"ExtraCount", FT_INT4U, 4, 30},
    {"X", FT_INT4U, 4, 34},
    {"Y", FT_INT4U, 4, 38},
    {"CX", FT_INT4U, 4, 42},
    {"CY", FT_INT4U, 4, 46},
    {"Flags", FT_INT4U, 4, 50},
    {"NoticeId", FT_INT4U, 4, 54},
    {"ClassName", FT_STRING, 200, 0},
};
constexpr TableDef kControlB = {"Control", "%s%s%cControl", 58, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kControlIndexes), kControlBFields};

// SControl, generation B
constexpr FieldDef kSControlBFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"ControlId", FT_INT4U, 4, 4},
    {"Style", FT_INT4U, 4, 8},
    {"ExStyle", FT_INT4U, 4, 12},
    {"X", FT_INT4U, 4, 16},
    {"Y", FT_INT4U, 4, 20},
    {"CX", FT_INT4U, 4, 24},
    {"CY", FT_INT4U, 4, 28},
};
constexpr TableDef kSControlB = {"SControl", "%s%s%cSControl", 32, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<2>(kSControlIndexes), kSControlBFields};

// MTable, generation C
constexpr FieldDef kMTableCFields[] = {
    {"MessageTable", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"Id", FT_INT4U, 4, 12},
    {"MessageFlags", FT_INT2U, 2, 16},
    {"Flags", FT_INT4U, 4, 18},
    {"NoticeId", FT_INT4U, 4, 22},
    {"ResNetId", FT_STRING, 200, 0},
};
constexpr TableDef kMTableC = {"MTable", "%s%s%cMTable", 26, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kMTableIndexes), kMTableCFields};

// Dic, generation D. Its indexes are its own: no I4, and the source text keyed by
// 250 bytes so that the key (254 with the position) is ordered by the sort locale.
constexpr SegmentDef kDicDI3[] = {{0, 250, SEG_VARIABLE_TEXT}};
constexpr IndexDef kDicDIndexes[] = {
    {"%s%s%cDicI1.Qvi", 4, false, kDicI1},
    {"%s%s%cDicI2.Qvi", 8, true, kDicI2},
    {"%s%s%cDicI3.Qvi", 254, true, kDicDI3},
};
constexpr FieldDef kDicDFields[] = {
    {"TextId", FT_INT4U, 4, 0},
    {"PairLangId", FT_INT4U, 4, 4},
    {"MaxNrOfChar", FT_INT2U, 2, 8},
    {"ReadOnly", FT_BOOL, 1, 10},
    {"Count", FT_INT4U, 4, 11},
    {"Translated", FT_BOOL, 1, 15},
    {"Standard", FT_BOOL, 1, 16},
    {"Flags", FT_INT4U, 4, 17},
    {"SText", FT_STRING, 32768, 0},
    {"TText", FT_STRING, 32768, 1},
};
constexpr TableDef kDicD = {"Dic", "%s%s%cDic", 21, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, kDicDIndexes, kDicDFields};

// DicT, generation D
constexpr FieldDef kDicTDFields[] = {
    {"TextId", FT_INT4U, 4, 0},
    {"PairLangId", FT_INT4U, 4, 4},
    {"MaxNrOfChar", FT_INT2U, 2, 8},
    {"ReadOnly", FT_BOOL, 1, 10},
    {"Count", FT_INT4U, 4, 11},
    {"Translated", FT_BOOL, 1, 15},
    {"Standard", FT_BOOL, 1, 16},
    {"Flags", FT_INT4U, 4, 17},
    {"SText", FT_STRING, 32768, 0},
    {"TText", FT_STRING, 32768, 1},
};
constexpr TableDef kDicTD = {"DicT", "%s%s%cDicT", 21, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<1>(kDicTIndexes), kDicTDFields};

// Bitmap, generation E
constexpr FieldDef kBitmapEFields[] = {
    {"BitmapId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"ResId", FT_INT2U, 2, 8},
    {"Width", FT_INT2U, 2, 10},
    {"Height", FT_INT2U, 2, 12},
    {"Flags", FT_INT4U, 4, 14},
    {"NoticeId", FT_INT4U, 4, 18},
    {"ResStrId", FT_STRING, 200, 0},
    {"BitmapData", FT_4STRING, 4, 1},
};
constexpr TableDef kBitmapE = {"Bitmap", "%s%s%cBitmap", 22, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<2>(kBitmapIndexes), kBitmapEFields};

// SBitmap, generation E
constexpr FieldDef kSBitmapEFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"BitmapId", FT_INT4U, 4, 4},
    {"Width", FT_INT2U, 2, 8},
    {"Height", FT_INT2U, 2, 10},
    {"BitmapData", FT_4STRING, 4, 0},
};
constexpr TableDef kSBitmapE = {"SBitmap", "%s%s%cSBitmap", 12, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<2>(kSBitmapIndexes), kSBitmapEFields};

// DICtrl, generation F
constexpr FieldDef kDICtrlFFields[] = {
    {"DlgInitId", FT_INT4U, 4, 0},
    {"ControlId", FT_INT4U, 4, 4},
    {"TextId", FT_INT4U, 4, 8},
    {"OrderId", FT_INT2U, 2, 12},
    {"Message", FT_INT2U, 2, 14},
    {"Flags", FT_INT4U, 4, 16},
    {"NoticeId", FT_INT4U, 4, 20},
};
constexpr TableDef kDICtrlF = {"DICtrl", "%s%s%cDICtrl", 24, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<3>(kDICtrlIndexes), kDICtrlFFields};

// Modul, generation G
constexpr FieldDef kModulGFields[] = {
    {"ModulId", FT_INT4U, 4, 0},
    {"ModulName", FT_FSTRING, 200, 4},
    {"ModulType", FT_INT2U, 2, 204},
    {"Flags", FT_INT4U, 4, 206},
    {"File", FT_4STRING, 4, 0},
};
constexpr TableDef kModulG = {"Modul", "%s%s%cModul", 210, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<1>(kModulIndexes), kModulGFields};

// TargetPaths, generation G
constexpr FieldDef kTargetPathsGFields[] = {
    {"TargetPathModulId", FT_INT4U, 4, 0},
    {"MainTargetPath", FT_FSTRING, 200, 4},
    {"SatelliteDllTargetPath1", FT_FSTRING, 200, 204},
    {"SatelliteDllTargetPath2", FT_FSTRING, 200, 404},
};
constexpr TableDef kTargetPathsG = {"TargetPaths", "%s%s%cTargetPaths", 604, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<1>(kTargetPathsIndexes), kTargetPathsGFields};

// ModulExtra, generation G
constexpr FieldDef kModulExtraGFields[] = {
    {"ModulExtraModulId", FT_INT4U, 4, 0},
    {"ModulFormat", FT_FSTRING, 200, 4},
};
constexpr TableDef kModulExtraG = {"ModulExtra", "%s%s%cModulExtra", 204, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<1>(kModulExtraIndexes), kModulExtraGFields};

// Bitmap, generation G
constexpr FieldDef kBitmapGFields[] = {
    {"BitmapId", FT_INT4U, 4, 0},
    {"LangModulId", FT_INT4U, 4, 4},
    {"ResId", FT_INT2U, 2, 8},
    {"ResStrId", FT_FSTRING, 200, 10},
    {"Width", FT_INT2U, 2, 210},
    {"Height", FT_INT2U, 2, 212},
    {"BitmapFormat", FT_INT2U, 2, 214},
    {"ColorDepth", FT_INT2U, 2, 216},
    {"Compression", FT_INT2U, 2, 218},
    {"Flags", FT_INT4U, 4, 220},
    {"NoticeId", FT_INT4U, 4, 224},
    {"BitmapData", FT_4STRING, 4, 0},
};
constexpr TableDef kBitmapG = {"Bitmap", "%s%s%cBitmap", 228, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<2>(kBitmapIndexes), kBitmapGFields};

// SBitmap, generation G
constexpr FieldDef kSBitmapGFields[] = {
    {"PairLangId", FT_INT4U, 4, 0},
    {"BitmapId", FT_INT4U, 4, 4},
    {"Width", FT_INT2U, 2, 8},
    {"Height", FT_INT2U, 2, 10},
    {"BitmapFormat", FT_INT2U, 2, 12},
    {"ColorDepth", FT_INT2U, 2, 14},
    {"Compression", FT_INT2U, 2, 16},
    {"BitmapData", FT_4STRING, 4, 0},
};
constexpr TableDef kSBitmapG = {"SBitmap", "%s%s%cSBitmap", 18, kDataFileMode, kExtent,
    kIndexFileMode, kExtent, firstIndexes<2>(kSBitmapIndexes), kSBitmapGFields};

struct EarlierLayout {
    char generation;
    int table;
    const TableDef* definition;
};

constexpr EarlierLayout kEarlierLayouts[] = {
    {'A', TAB_STABLE, &kSTableA},
    {'A', TAB_MTABLE, &kMTableA},
    {'A', TAB_MENU, &kMenuA},
    {'A', TAB_MITEM, &kMItemA},
    {'A', TAB_DIALOG, &kDialogA},
    {'A', TAB_SDIALOG, &kSDialogA},
    {'A', TAB_CONTROL, &kControlA},
    {'A', TAB_SCONTROL, &kSControlA},
    {'A', TAB_DICTRL, &kDICtrlA},
    {'B', TAB_STABLE, &kSTableB},
    {'B', TAB_MTABLE, &kMTableB},
    {'B', TAB_MENU, &kMenuB},
    {'B', TAB_MITEM, &kMItemB},
    {'B', TAB_DIALOG, &kDialogB},
    {'B', TAB_CONTROL, &kControlB},
    {'B', TAB_SCONTROL, &kSControlB},
    {'C', TAB_MTABLE, &kMTableC},
    {'D', TAB_DIC, &kDicD},
    {'D', TAB_DICT, &kDicTD},
    {'E', TAB_BITMAP, &kBitmapE},
    {'E', TAB_SBITMAP, &kSBitmapE},
    {'F', TAB_DICTRL, &kDICtrlF},
    {'G', TAB_MODUL, &kModulG},
    {'G', TAB_TARGETPATHS, &kTargetPathsG},
    {'G', TAB_MODULEXTRA, &kModulExtraG},
    {'G', TAB_BITMAP, &kBitmapG},
    {'G', TAB_SBITMAP, &kSBitmapG},
};

constexpr const TableDef* kEarlierTables[] = {
    &kSTableA,
    &kMTableA,
    &kMenuA,
    &kMItemA,
    &kDialogA,
    &kSDialogA,
    &kControlA,
    &kSControlA,
    &kDICtrlA,
    &kSTableB,
    &kMTableB,
    &kMenuB,
    &kMItemB,
    &kDialogB,
    &kControlB,
    &kSControlB,
    &kMTableC,
    &kDicD,
    &kDicTD,
    &kBitmapE,
    &kSBitmapE,
    &kDICtrlF,
    &kModulG,
    &kTargetPathsG,
    &kModulExtraG,
    &kBitmapG,
    &kSBitmapG,
};
static_assert(sizeof(kEarlierTables) / sizeof(kEarlierTables[0]) ==
                  sizeof(kEarlierLayouts) / sizeof(kEarlierLayouts[0]),
              "one definition per earlier layout");

// ---- Module file -------------------------------------------------------------------

// A stand-alone file outside the container: no separator, no table name, no index.
constexpr FieldDef kModuleFileFields[] = {
    {"ModulId", FT_INT4U, 4, 0},
};
constexpr TableDef kModuleFile = {"ModuleFile", "%s%s", 0, kModuleFileMode, kModuleFileExtent,
    kModuleFileMode, kModuleFileExtent, Span<IndexDef>(), kModuleFileFields};

// clang-format on

}  // namespace

const TableDef* currentTable(int index) {
    if (index < 0 || index >= kTableCount) {
        return nullptr;
    }
    return kCurrentTables[index];
}

const TableDef* earlierTable(char generation, int index) {
    for (const EarlierLayout& layout : kEarlierLayouts) {
        if (layout.generation == generation && layout.table == index) {
            return layout.definition;
        }
    }
    return nullptr;
}

Span<const TableDef*> earlierTables() {
    return Span<const TableDef*>(kEarlierTables);
}

const TableDef& moduleFileTable() {
    return kModuleFile;
}

const FieldDef* findField(const TableDef& table, const char* name) {
    if (name == nullptr) {
        return nullptr;
    }
    for (const FieldDef& field : table.fields) {
        if (std::strcmp(field.name, name) == 0) {
            return &field;
        }
    }
    return nullptr;
}

}  // namespace qvb::catalogue
