// The enumerations and record structures that cross the library's interface.
//
// Structures of scalars only (MENUITEM, USERFILTER, USERFILTER_IN_DB) have a fixed
// byte image: callers copy them whole, and the user filter is stored as raw bytes.
// Structures that hold CString members keep their member order and scalar widths
// but use natural alignment, since a string object cannot sit at an odd address.
#pragma once

#include <cstddef>
#include <type_traits>

#include "qvb/CString.h"
#include "qvb/WinTypes.h"

// Enumerations are int-sized, as at the interface; the fixed underlying type makes
// every int a valid value, since callers may pass codes outside the named ones.

// Kind of a database.
enum DBTYPEONE : int {
    PROJECT = 0,
    DICTINARY = 1,  // the interface's own spelling
};

// The filter that enumerations select records by.
enum FILTER : int {
    FilterNone = 0,
    FilterUser = 1,
    FilterNotTranslated = 2,
};

// Kinds of resource elements that an exception can be bound to (the ElementTyp of
// an exception). The numbering is not the table list's.
enum RESTABLE : int {
    RES_STRINGTABLE = 1,
    RES_MESSAGETABLE = 2,
    RES_DIALOG = 3,
    RES_MENUITEM = 4,
    RES_CONTROL = 5,
    RES_DLGINITCONTROL = 6,
    RES_DICTIONARY = 7,  // the phrase itself: the element id is the TextId
    RES_MENU = 8,        // menus have no phrase of their own
    RES_VERSINFO = 9,
    RES_XML = 10,
    RES_DBTRANSTABLE = 11,  // no phrase of its own either
    RES_DBTRANSRECORD = 12,
    RES_CONTROLTOOLTIP = 14,
    RES_DLGTOOLTIP = 15,
};

// User filter

// Three-state conditions (the State* members) hold 0 = the property must be false,
// 1 = it must be true, 2 = either.
struct USERFILTER {
    char FindText[200] = {};  // zero-terminated
    BOOL InSource = 0;
    BOOL InTranslation = 0;
    BOOL IgnoreHotKeys = 0;
    BOOL MatchCase = 0;
    BOOL WholeWord = 0;
    int StateTranslated = 0;
    int StateUsed = 0;
    int StateReadOnly = 0;
    int StateStandard = 0;
    int StateLimited = 0;
    int StateNotice = 0;
    BOOL InDialogs = 0;
    BOOL InMenus = 0;
    BOOL InMessageTables = 0;
    BOOL InXml = 0;
    BOOL InStringTables = 0;
    BOOL InVersionInfo = 0;
    BOOL InDbTranslation = 0;
    BOOL InBitmaps = 0;
    DWORD Reserved69 = 0;
    DWORD Reserved70 = 0;
};

// The stored form: words 60 to 69 are kept as 16-bit halves, two to a word, high
// half first as named.
struct USERFILTER_IN_DB {
    char FindText[200] = {};
    BOOL InSource = 0;
    BOOL InTranslation = 0;
    BOOL IgnoreHotKeys = 0;
    BOOL MatchCase = 0;
    BOOL WholeWord = 0;
    int StateTranslated = 0;
    int StateUsed = 0;
    int StateReadOnly = 0;
    int StateStandard = 0;
    int StateLimited = 0;
    DWORD NoticeDialogs = 0;             // StateNotice | InDialogs
    DWORD MenusStringTables = 0;         // InMenus | InStringTables
    DWORD MessageTablesVersionInfo = 0;  // InMessageTables | InVersionInfo
    DWORD XmlDbTranslation = 0;          // InXml | InDbTranslation
    DWORD BitmapsReserved69 = 0;         // InBitmaps | Reserved69
    DWORD Reserved70 = 0;                // whole word
};

// Position of a member in 32-bit words from the start of the structure.
#define QVB_WORD_AT(type, member, word) \
    static_assert(offsetof(type, member) == (word)*4, #type "::" #member " is not at word " #word)

static_assert(sizeof(USERFILTER) == 284, "USERFILTER must be 284 bytes");
static_assert(std::is_standard_layout<USERFILTER>::value &&
                  std::is_trivially_copyable<USERFILTER>::value,
              "USERFILTER is copied as bytes");
QVB_WORD_AT(USERFILTER, FindText, 0);
QVB_WORD_AT(USERFILTER, InSource, 50);
QVB_WORD_AT(USERFILTER, InTranslation, 51);
QVB_WORD_AT(USERFILTER, IgnoreHotKeys, 52);
QVB_WORD_AT(USERFILTER, MatchCase, 53);
QVB_WORD_AT(USERFILTER, WholeWord, 54);
QVB_WORD_AT(USERFILTER, StateTranslated, 55);
QVB_WORD_AT(USERFILTER, StateUsed, 56);
QVB_WORD_AT(USERFILTER, StateReadOnly, 57);
QVB_WORD_AT(USERFILTER, StateStandard, 58);
QVB_WORD_AT(USERFILTER, StateLimited, 59);
QVB_WORD_AT(USERFILTER, StateNotice, 60);
QVB_WORD_AT(USERFILTER, InDialogs, 61);
QVB_WORD_AT(USERFILTER, InMenus, 62);
QVB_WORD_AT(USERFILTER, InMessageTables, 63);
QVB_WORD_AT(USERFILTER, InXml, 64);
QVB_WORD_AT(USERFILTER, InStringTables, 65);
QVB_WORD_AT(USERFILTER, InVersionInfo, 66);
QVB_WORD_AT(USERFILTER, InDbTranslation, 67);
QVB_WORD_AT(USERFILTER, InBitmaps, 68);
QVB_WORD_AT(USERFILTER, Reserved69, 69);
QVB_WORD_AT(USERFILTER, Reserved70, 70);

static_assert(sizeof(USERFILTER_IN_DB) == 264, "USERFILTER_IN_DB must be 264 bytes");
static_assert(std::is_standard_layout<USERFILTER_IN_DB>::value &&
                  std::is_trivially_copyable<USERFILTER_IN_DB>::value,
              "USERFILTER_IN_DB is stored as bytes");
QVB_WORD_AT(USERFILTER_IN_DB, InSource, 50);
QVB_WORD_AT(USERFILTER_IN_DB, StateLimited, 59);
QVB_WORD_AT(USERFILTER_IN_DB, NoticeDialogs, 60);
QVB_WORD_AT(USERFILTER_IN_DB, MenusStringTables, 61);
QVB_WORD_AT(USERFILTER_IN_DB, MessageTablesVersionInfo, 62);
QVB_WORD_AT(USERFILTER_IN_DB, XmlDbTranslation, 63);
QVB_WORD_AT(USERFILTER_IN_DB, BitmapsReserved69, 64);
QVB_WORD_AT(USERFILTER_IN_DB, Reserved70, 65);

#undef QVB_WORD_AT

// History

struct HISTORYLOG {
    DWORD HistoryId = 0;
    LONG TimeStamp = 0;  // seconds since 1970, as time() gives them
    DWORD HistoryType = 0;
    CString HistoryData1;
    CString HistoryData2;
};

// Menus

// Byte-packed: State follows three 16-bit members and sits at byte 18. Take members
// by value; a pointer to one of them may be misaligned.
#pragma pack(push, 1)
struct MENUITEM {
    DWORD Type = 0;
    DWORD MenuId = 0;
    DWORD TextId = 0;
    WORD ResId = 0;
    WORD Style = 0;
    WORD Order = 0;
    DWORD State = 0;
    WORD ResInfo = 0;
    DWORD HelpId = 0;
    DWORD Flags = 0;
    DWORD NoticeId = 0;
};
#pragma pack(pop)

static_assert(sizeof(MENUITEM) == 36, "MENUITEM must be packed without padding");
static_assert(offsetof(MENUITEM, State) == 18 && offsetof(MENUITEM, ResInfo) == 22 &&
                  offsetof(MENUITEM, NoticeId) == 32,
              "MENUITEM must be packed without padding");

// Dialogs and controls

// One member per Dialog field but DialogId and LangModulId, which travel beside it.
// Style to CY, with ExStyle, is what a language pair keeps of its own.
struct DIALOG {
    DWORD Reserved = 0;  // not used by the dialog operations
    DWORD Style = 0;
    CString FontName;
    WORD FontSize = 0;
    WORD Weight = 0;
    WORD Italic = 0;
    DWORD X = 0;
    DWORD Y = 0;
    DWORD CX = 0;
    DWORD CY = 0;
    WORD ResId = 0;
    CString ResStrId;
    CString ClassName;
    DWORD MenuId = 0;
    DWORD TextId = 0;
    DWORD ExStyle = 0;
    WORD Version = 0;
    WORD Signature = 0;
    DWORD HelpId = 0;
    DWORD Flags = 0;
    DWORD NoticeId = 0;
    CString ResNetId;
    DWORD BackColor = 0;
    DWORD ForeColor = 0;
};

// One member per Control field but ControlId. Style to Active, less StrParentID, is
// the per-language part.
struct CONTROL {
    DWORD Reserved = 0;  // not read by the add operations
    DWORD Style = 0;
    DWORD ExStyle = 0;
    DWORD X = 0;
    DWORD Y = 0;
    DWORD CX = 0;
    DWORD CY = 0;
    CString FontName;
    CString StrParentID;
    WORD FontSize = 0;
    WORD Italic = 0;
    WORD Weight = 0;
    DWORD lTextAlignment = 0;
    DWORD lFlatAlignment = 0;
    WORD Anchor = 0;
    WORD Dock = 0;
    WORD Active = 0;
    DWORD DialogId = 0;
    DWORD TextId = 0;
    WORD ResId = 0;
    WORD TabOrder = 0;
    CString ClassName;
    WORD IntRes = 0;
    DWORD HelpId = 0;
    DWORD ExtraCount = 0;
    DWORD Flags = 0;
    DWORD NoticeId = 0;
    CString ResNetId;
    DWORD BackColor = 0;
    DWORD ForeColor = 0;
    WORD FontUnit = 0;
};

// The old structures are the current ones cut down to the fields that schema
// versions 3 and 5 stored, in the same order, so that migration copies member by
// member. Version 3 had no NoticeId, ResNetId or colours, and its controls no font,
// alignment, docking or parent; its per-language dialog had no ExStyle, and its
// per-language control only the position and size.
struct DIALOG_DB_V3 {
    DWORD Reserved = 0;
    DWORD Style = 0;
    CString FontName;
    WORD FontSize = 0;
    WORD Weight = 0;
    WORD Italic = 0;
    DWORD X = 0;
    DWORD Y = 0;
    DWORD CX = 0;
    DWORD CY = 0;
    WORD ResId = 0;
    CString ResStrId;
    CString ClassName;
    DWORD MenuId = 0;
    DWORD TextId = 0;
    DWORD ExStyle = 0;
    WORD Version = 0;
    WORD Signature = 0;
    DWORD HelpId = 0;
    DWORD Flags = 0;
};

// Version 5 (second layouts): version 3 plus NoticeId.
struct DIALOG_DB_V5 {
    DWORD Reserved = 0;
    DWORD Style = 0;
    CString FontName;
    WORD FontSize = 0;
    WORD Weight = 0;
    WORD Italic = 0;
    DWORD X = 0;
    DWORD Y = 0;
    DWORD CX = 0;
    DWORD CY = 0;
    WORD ResId = 0;
    CString ResStrId;
    CString ClassName;
    DWORD MenuId = 0;
    DWORD TextId = 0;
    DWORD ExStyle = 0;
    WORD Version = 0;
    WORD Signature = 0;
    DWORD HelpId = 0;
    DWORD Flags = 0;
    DWORD NoticeId = 0;
};

struct CONTROL_DB_V3 {
    DWORD Reserved = 0;
    DWORD Style = 0;
    DWORD ExStyle = 0;
    DWORD X = 0;
    DWORD Y = 0;
    DWORD CX = 0;
    DWORD CY = 0;
    DWORD DialogId = 0;
    DWORD TextId = 0;
    WORD ResId = 0;
    WORD TabOrder = 0;
    CString ClassName;
    WORD IntRes = 0;
    DWORD HelpId = 0;
    DWORD ExtraCount = 0;
    DWORD Flags = 0;
};

// Database translation

// A source table as TableR describes it, or, through the S operations, its target
// in one language pair (then the Source* members name the target and Schema,
// PrimaryKey*, NoticeId and Flags are unused). The primary key's type, attribute
// and size are texts because a key may span several columns.
struct DBTRANSTABLE {
    CString SourceTable;
    WORD Schema = 0;
    CString PrimaryKey;
    CString PrimaryKeyType;
    CString PrimaryKeyAttribute;
    CString PrimaryKeySize;
    CString SourceLangId;
    DWORD SourceLangIdType = 0;
    DWORD SourceLangIdAttribute = 0;
    DWORD SourceLangIdSize = 0;
    CString SourceLangIdValue;
    DWORD SourceLangIdValueType = 0;
    CString SourceColumn;
    DWORD SourceColumnType = 0;
    DWORD SourceColumnAttribute = 0;
    DWORD SourceColumnSize = 0;
    DWORD NoticeId = 0;
    DWORD Flags = 0;
};

// One translatable cell; the S operations use only SourceColumnValueType.
struct DBTRANSRECORD {
    DWORD TableId = 0;
    DWORD TextId = 0;
    CString PrimaryKeyValue;
    CString PrimaryKeyValueType;
    DWORD SourceColumnValueType = 0;
    DWORD NoticeId = 0;
    DWORD Flags = 0;
};
