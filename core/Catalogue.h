// The table catalogue: every table of both database kinds, current and earlier
// record layouts, as constant data. Nothing here touches a file; the record layer
// binds these definitions to table objects and the engine gets them through
// makeFileDefinition().
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "isam/Isam.h"

namespace qvb::catalogue {

// A view of a constant array; the catalogue is built from static tables only.
template <typename T>
struct Span {
    const T* items = nullptr;
    std::size_t count = 0;

    constexpr Span() = default;
    template <std::size_t N>
    constexpr Span(const T (&array)[N]) : items(array), count(N) {}

    constexpr const T* begin() const { return items; }
    constexpr const T* end() const { return items + count; }
    constexpr const T& operator[](std::size_t i) const { return items[i]; }
    constexpr std::size_t size() const { return count; }
};

// Numeric codes of the field-type vocabulary.
enum FieldType : std::uint16_t {
    FT_BOOL = 8,
    FT_CHAR = 16,
    FT_CHARU = 24,
    FT_INT2 = 33,
    FT_INT2U = 41,
    FT_INT4 = 51,
    FT_INT4U = 59,
    FT_MONEY = 67,
    FT_DATE = 75,
    FT_TIME = 83,
    FT_SFLOAT = 91,
    FT_DFLOAT = 103,
    FT_SQLBCD = 108,
    FT_EFLOAT = 119,
    FT_TIMES = 124,
    FT_ARRAY = 128,
    FT_FSTRING = 144,
    FT_STRING = 146,
    FT_FPSTRING = 152,
    FT_PSTRING = 154,
    FT_F2STRING = 160,
    FT_2STRING = 162,
    FT_F4STRING = 168,
    FT_4STRING = 170,
    FT_ERROR = 65535,
};

// Vocabulary lookups. An unknown code has the name "FT_ERROR"; an unknown name
// has the code FT_ERROR.
const char* fieldTypeName(std::uint16_t code);
std::uint16_t fieldTypeCode(const char* name);

// True for the types stored in the fixed part of a record.
bool isFixedWidth(std::uint16_t type);

// A field descriptor word: type code in the low 16 bits, length in the high 16.
constexpr std::uint32_t fieldDescriptor(std::uint16_t type, std::uint16_t length) {
    return static_cast<std::uint32_t>(type) | (static_cast<std::uint32_t>(length) << 16);
}

struct FieldDef {
    const char* name;
    std::uint16_t type;    // FieldType code
    std::uint16_t length;  // width (fixed types), text limit (FT_STRING), prefix width (FT_4STRING)
    std::uint16_t position;  // byte offset in the fixed part, or the ordinal in the variable part
};

enum SegmentMode : std::uint16_t {
    SEG_FIXED_UNSIGNED = 1,  // bytes of the fixed part, an unsigned little-endian integer
    SEG_VARIABLE_TEXT = 4,   // leading bytes of the n-th variable field
};

struct SegmentDef {
    std::uint16_t position;  // fixed-part offset (mode 1) or variable-field ordinal (mode 4)
    std::uint16_t length;
    std::uint16_t mode;
};

struct IndexDef {
    const char* filePattern;  // e.g. "%s%s%cDialogI1.Qvi"
    std::uint16_t keyLength;  // includes the 4-byte position suffix when duplicates are allowed
    bool duplicates;
    Span<SegmentDef> segments;
};

constexpr std::uint16_t kDataFileMode = 68;
constexpr std::uint16_t kIndexFileMode = 64;
constexpr std::uint16_t kContainerMode = 582;
constexpr std::uint16_t kModuleFileMode = 518;
constexpr std::uint32_t kExtent = 1024;
constexpr std::uint32_t kModuleFileExtent = 32768;
constexpr char kMemberSeparator = '!';

struct TableDef {
    const char* name;         // the table's name in the table list, e.g. "Dialog"
    const char* filePattern;  // e.g. "%s%s%cDialog"
    std::uint32_t recordLength;  // stored fixed-part length
    std::uint16_t dataMode;
    std::uint32_t dataExtent;
    std::uint16_t indexMode;
    std::uint32_t indexExtent;
    Span<IndexDef> indexes;
    Span<FieldDef> fields;
};

// Table numbers of the one table list.
enum TableIndex : int {
    TAB_SLANG = 0,
    TAB_DIC = 1,
    TAB_DICT = 2,
    TAB_EXCEP = 3,
    TAB_MODUL = 4,
    TAB_LMODUL = 5,
    TAB_STABLE = 6,
    TAB_MTABLE = 7,
    TAB_MENU = 8,
    TAB_MITEM = 9,
    TAB_DIALOG = 10,
    TAB_SDIALOG = 11,
    TAB_CONTROL = 12,
    TAB_SCONTROL = 13,
    TAB_DICTRL = 14,
    TAB_NOTICE = 15,
    TAB_VERSINFO = 16,
    TAB_SMENUITEM = 17,
    TAB_XMLNODESR = 18,
    TAB_XSLCOMPR = 19,
    TAB_TABLER = 20,
    TAB_STABLER = 21,
    TAB_RECORDR = 22,
    TAB_SRECORDR = 23,
    TAB_TARGETPATHS = 24,
    TAB_MODULEXTRA = 25,
    TAB_BITMAP = 26,
    TAB_SBITMAP = 27,
    TAB_CTOOLTIP = 28,
    TAB_DLGTOOLTIP = 29,
    TAB_BINARYDATA = 30,
    TAB_HISTORY = 31,
};

constexpr int kTableCount = 32;
constexpr int kDictionaryTableCount = 3;

// The current definition of table list entry `index` (0..31); null outside.
const TableDef* currentTable(int index);

// Earlier layouts, by generation letter 'A'..'G' and table list index; null when
// that table has no layout of that generation.
const TableDef* earlierTable(char generation, int index);

// Every earlier layout, for walking them all.
Span<const TableDef*> earlierTables();

// The stand-alone module-file definition.
const TableDef& moduleFileTable();

// Field lookup by name; null when the table has no such field.
const FieldDef* findField(const TableDef& table, const char* name);

// Fills a file-name pattern ("%s%s%cDialog") with two texts and a separator.
std::string formatMemberName(const char* pattern, const std::string& first,
                             const std::string& second, char separator);

// The engine's view of a table: member names formatted from the patterns with the
// container's file name, an empty string and the separator.
isam::FileDefinition makeFileDefinition(const TableDef& table, const std::string& containerName);

}  // namespace qvb::catalogue
