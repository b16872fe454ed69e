// Checks the catalogue's constant data for transcription faults: every layout is
// re-derived from its field list and compared with what is stored, and the table
// and field counts are compared with an independent copy of the table list.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <string>

#include "core/Catalogue.h"

namespace qvb::catalogue {
namespace {

// Width in the fixed part of the types the schema stores there; 0 for the others.
std::uint32_t fixedWidth(const FieldDef& field) {
    switch (field.type) {
        case FT_BOOL:
            return 1;
        case FT_INT2U:
            return 2;
        case FT_INT4U:
            return 4;
        case FT_FSTRING:
            return field.length;
        default:
            return 0;
    }
}

bool isVariable(const FieldDef& field) {
    return field.type == FT_STRING || field.type == FT_4STRING;
}

// The field stored at a fixed offset, or at a variable ordinal; null when none is.
const FieldDef* fixedFieldAt(const TableDef& table, std::uint16_t position) {
    for (const FieldDef& field : table.fields) {
        if (!isVariable(field) && field.position == position) {
            return &field;
        }
    }
    return nullptr;
}

const FieldDef* variableFieldAt(const TableDef& table, std::uint16_t ordinal) {
    for (const FieldDef& field : table.fields) {
        if (isVariable(field) && field.position == ordinal) {
            return &field;
        }
    }
    return nullptr;
}

// Packs the fixed fields in order, numbers the variable ones, checks each field's
// type, length and position against that, and returns the derived fixed length.
std::uint32_t checkFieldLayout(const TableDef& table) {
    std::uint32_t offset = 0;
    std::uint16_t ordinal = 0;
    std::set<std::string> names;
    for (const FieldDef& field : table.fields) {
        SCOPED_TRACE(field.name);
        EXPECT_TRUE(names.insert(field.name).second) << "field name repeated";
        switch (field.type) {
            case FT_BOOL:
                EXPECT_EQ(field.length, 1);
                break;
            case FT_INT2U:
                EXPECT_EQ(field.length, 2);
                break;
            case FT_INT4U:
                EXPECT_EQ(field.length, 4);
                break;
            case FT_FSTRING:
                EXPECT_EQ(field.length, 200);
                break;
            case FT_STRING:
                EXPECT_TRUE(field.length == 200 || field.length == 800 || field.length == 4000 ||
                            field.length == 32768)
                    << "text limit " << field.length;
                break;
            case FT_4STRING:
                EXPECT_EQ(field.length, 4);
                break;
            default:
                ADD_FAILURE() << "type " << field.type << " is not used by this schema";
        }
        EXPECT_EQ(isFixedWidth(field.type), !isVariable(field));
        if (isVariable(field)) {
            EXPECT_EQ(field.position, ordinal) << "variable ordinal";
            ++ordinal;
        } else {
            EXPECT_EQ(field.position, offset) << "fixed position";
            offset += fixedWidth(field);
        }
    }
    return offset;
}

// Every key segment must name a field of the table: integers inside the fixed part,
// texts among the variable fields.
void checkIndexes(const TableDef& table) {
    const std::string name = table.name;
    ASSERT_GE(table.indexes.size(), 1u);
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        const IndexDef& index = table.indexes[i];
        SCOPED_TRACE(index.filePattern);
        ASSERT_GE(index.segments.size(), 1u);

        std::uint32_t segmentBytes = 0;
        for (const SegmentDef& segment : index.segments) {
            segmentBytes += segment.length;
            if (segment.mode == SEG_FIXED_UNSIGNED) {
                EXPECT_LE(segment.position + segment.length, table.recordLength);
                const FieldDef* field = fixedFieldAt(table, segment.position);
                ASSERT_NE(field, nullptr) << "no field at offset " << segment.position;
                EXPECT_EQ(fixedWidth(*field), segment.length) << field->name;
                // The item order inside a menu is the one 2-byte key segment.
                if (name == "MItem" && std::strcmp(field->name, "Order") == 0) {
                    EXPECT_EQ(field->type, FT_INT2U);
                } else {
                    EXPECT_EQ(field->type, FT_INT4U) << field->name;
                    EXPECT_EQ(segment.length, 4) << field->name;
                }
            } else if (segment.mode == SEG_VARIABLE_TEXT) {
                const FieldDef* field = variableFieldAt(table, segment.position);
                ASSERT_NE(field, nullptr) << "no variable field " << segment.position;
                EXPECT_EQ(field->type, FT_STRING) << field->name;
                EXPECT_LE(segment.length, field->length);
            } else {
                ADD_FAILURE() << "segment mode " << segment.mode;
            }
        }
        EXPECT_EQ(index.keyLength, segmentBytes + (index.duplicates ? 4 : 0));

        // I1 is the primary key; the menu-item order key is the one other unique index.
        const bool unique = i == 0 || (name == "MItem" && i == 1);
        EXPECT_EQ(index.duplicates, !unique);
        EXPECT_EQ(std::string(index.filePattern),
                  "%s%s%c" + name + "I" + std::to_string(i + 1) + ".Qvi");
    }

    // The table's identifier comes first and leads its primary key.
    ASSERT_GE(table.fields.size(), 1u);
    EXPECT_EQ(table.fields[0].type, FT_INT4U);
    EXPECT_EQ(table.fields[0].position, 0);
    EXPECT_EQ(table.indexes[0].segments[0].mode, SEG_FIXED_UNSIGNED);
    EXPECT_EQ(table.indexes[0].segments[0].position, 0);
}

void checkFileConventions(const TableDef& table) {
    EXPECT_EQ(std::string(table.filePattern), std::string("%s%s%c") + table.name);
    EXPECT_EQ(table.dataMode, 68);
    EXPECT_EQ(table.indexMode, 64);
    EXPECT_EQ(table.dataExtent, 1024u);
    EXPECT_EQ(table.indexExtent, 1024u);
}

struct ExpectedTable {
    const char* name;
    std::uint32_t fixedPart;
    std::size_t fields;
    std::size_t indexes;
};

// The table list as published, kept apart from the catalogue's own data.
constexpr ExpectedTable kExpectedTables[kTableCount] = {
    {"SLang", 216, 6, 1},     {"Dic", 21, 11, 4},      {"DicT", 21, 11, 1},
    {"Excep", 20, 5, 2},      {"Modul", 14, 5, 1},     {"LModul", 16, 4, 3},
    {"STable", 22, 7, 3},     {"MTable", 26, 9, 3},    {"Menu", 24, 9, 2},
    {"MItem", 40, 13, 3},     {"Dialog", 72, 25, 3},   {"SDialog", 38, 12, 2},
    {"Control", 88, 31, 3},   {"SControl", 52, 17, 2}, {"DICtrl", 30, 10, 3},
    {"Notice", 4, 2, 1},      {"VersInfo", 20, 6, 3},  {"SMenuItem", 20, 5, 2},
    {"XMLNODESR", 28, 8, 3},  {"XSLCompR", 20, 5, 2},  {"TableR", 46, 20, 2},
    {"STableR", 36, 13, 2},   {"RecordR", 24, 8, 3},   {"SRecordR", 12, 3, 2},
    {"TargetPaths", 4, 4, 1}, {"ModulExtra", 4, 2, 1}, {"Bitmap", 32, 12, 2},
    {"SBitmap", 22, 8, 2},    {"CTooltip", 22, 7, 3},  {"DlgTooltip", 22, 7, 3},
    {"BinaryData", 8, 3, 1},  {"History", 12, 5, 3},
};

struct ExpectedEarlier {
    char generation;
    int table;
    std::uint32_t fixedPart;
    std::size_t fields;
    std::size_t indexes;
};

constexpr ExpectedEarlier kExpectedEarlier[] = {
    {'A', TAB_STABLE, 18, 5, 3},      {'A', TAB_MTABLE, 22, 6, 3},
    {'A', TAB_MENU, 20, 7, 2},        {'A', TAB_MITEM, 36, 11, 3},
    {'A', TAB_DIALOG, 60, 21, 3},     {'A', TAB_SDIALOG, 34, 11, 2},
    {'A', TAB_CONTROL, 54, 16, 3},    {'A', TAB_SCONTROL, 16, 6, 2},
    {'A', TAB_DICTRL, 20, 6, 3},      {'B', TAB_STABLE, 22, 6, 3},
    {'B', TAB_MTABLE, 26, 7, 3},      {'B', TAB_MENU, 24, 8, 2},
    {'B', TAB_MITEM, 40, 12, 3},      {'B', TAB_DIALOG, 64, 22, 3},
    {'B', TAB_CONTROL, 58, 17, 3},    {'B', TAB_SCONTROL, 32, 8, 2},
    {'C', TAB_MTABLE, 26, 8, 3},      {'D', TAB_DIC, 21, 10, 3},
    {'D', TAB_DICT, 21, 10, 1},       {'E', TAB_BITMAP, 22, 9, 2},
    {'E', TAB_SBITMAP, 12, 5, 2},     {'F', TAB_DICTRL, 24, 7, 3},
    {'G', TAB_MODUL, 210, 5, 1},      {'G', TAB_TARGETPATHS, 604, 4, 1},
    {'G', TAB_MODULEXTRA, 204, 2, 1}, {'G', TAB_BITMAP, 228, 12, 2},
    {'G', TAB_SBITMAP, 18, 8, 2},
};

// ---- Current layouts ------------------------------------------------------------

TEST(CatalogueCurrentTables, MatchTheTableList) {
    for (int i = 0; i < kTableCount; ++i) {
        const ExpectedTable& expected = kExpectedTables[i];
        SCOPED_TRACE(expected.name);
        const TableDef* table = currentTable(i);
        ASSERT_NE(table, nullptr);
        EXPECT_STREQ(table->name, expected.name);
        EXPECT_EQ(table->recordLength, expected.fixedPart);
        EXPECT_EQ(table->fields.size(), expected.fields);
        EXPECT_EQ(table->indexes.size(), expected.indexes);
    }
    EXPECT_EQ(currentTable(-1), nullptr);
    EXPECT_EQ(currentTable(kTableCount), nullptr);
}

TEST(CatalogueCurrentTables, FieldPositionsAddUpToTheRecordLength) {
    for (int i = 0; i < kTableCount; ++i) {
        const TableDef& table = *currentTable(i);
        SCOPED_TRACE(table.name);
        EXPECT_EQ(checkFieldLayout(table), table.recordLength);
    }
}

TEST(CatalogueCurrentTables, IndexesNameTheirFields) {
    for (int i = 0; i < kTableCount; ++i) {
        const TableDef& table = *currentTable(i);
        SCOPED_TRACE(table.name);
        checkIndexes(table);
        checkFileConventions(table);
    }
}

TEST(CatalogueCurrentTables, TextKeysAreThePhraseSourceTexts) {
    for (int i = 0; i < kTableCount; ++i) {
        const TableDef& table = *currentTable(i);
        for (const IndexDef& index : table.indexes) {
            for (const SegmentDef& segment : index.segments) {
                if (segment.mode != SEG_VARIABLE_TEXT) {
                    continue;
                }
                EXPECT_STREQ(table.name, "Dic");
                EXPECT_EQ(segment.length, 125);
            }
        }
    }
    const TableDef& dic = *currentTable(TAB_DIC);
    EXPECT_STREQ(variableFieldAt(dic, dic.indexes[2].segments[0].position)->name, "SText");
    EXPECT_STREQ(variableFieldAt(dic, dic.indexes[3].segments[0].position)->name, "STextFiltered");
}

TEST(CatalogueCurrentTables, PhraseTablesShareOneLayout) {
    const TableDef& dic = *currentTable(TAB_DIC);
    const TableDef& dicT = *currentTable(TAB_DICT);
    ASSERT_EQ(dic.fields.size(), dicT.fields.size());
    for (std::size_t i = 0; i < dic.fields.size(); ++i) {
        EXPECT_STREQ(dic.fields[i].name, dicT.fields[i].name);
        EXPECT_EQ(dic.fields[i].type, dicT.fields[i].type);
        EXPECT_EQ(dic.fields[i].length, dicT.fields[i].length);
        EXPECT_EQ(dic.fields[i].position, dicT.fields[i].position);
    }
}

TEST(CatalogueCurrentTables, DictionaryTablesComeFirst) {
    ASSERT_EQ(kDictionaryTableCount, 3);
    EXPECT_STREQ(currentTable(0)->name, "SLang");
    EXPECT_STREQ(currentTable(1)->name, "Dic");
    EXPECT_STREQ(currentTable(2)->name, "DicT");
}

TEST(CatalogueCurrentTables, FindFieldByName) {
    const TableDef& dialog = *currentTable(TAB_DIALOG);
    const FieldDef* textId = findField(dialog, "TextId");
    ASSERT_NE(textId, nullptr);
    EXPECT_EQ(textId->position, 12);
    const FieldDef* backColor = findField(dialog, "BackColor");
    ASSERT_NE(backColor, nullptr);
    EXPECT_EQ(backColor->position, 64);  // fixed fields listed after the texts still pack on
    EXPECT_EQ(findField(dialog, "textid"), nullptr);
    EXPECT_EQ(findField(dialog, "SText"), nullptr);
}

// ---- Earlier layouts ------------------------------------------------------------

TEST(CatalogueEarlierTables, MatchTheLayoutList) {
    const Span<const TableDef*> all = earlierTables();
    ASSERT_EQ(all.size(), sizeof(kExpectedEarlier) / sizeof(kExpectedEarlier[0]));
    std::set<const TableDef*> seen;
    for (const ExpectedEarlier& expected : kExpectedEarlier) {
        const TableDef* table = earlierTable(expected.generation, expected.table);
        ASSERT_NE(table, nullptr) << expected.generation << " " << expected.table;
        SCOPED_TRACE(std::string(table->name) + " " + expected.generation);
        EXPECT_STREQ(table->name, currentTable(expected.table)->name);
        EXPECT_EQ(table->recordLength, expected.fixedPart);
        EXPECT_EQ(table->fields.size(), expected.fields);
        EXPECT_EQ(table->indexes.size(), expected.indexes);
        EXPECT_TRUE(seen.insert(table).second);
    }
    for (const TableDef* table : all) {
        EXPECT_EQ(seen.count(table), 1u) << table->name;
    }
    EXPECT_EQ(earlierTable('A', TAB_SLANG), nullptr);
    EXPECT_EQ(earlierTable('C', TAB_STABLE), nullptr);
    EXPECT_EQ(earlierTable('H', TAB_MTABLE), nullptr);
}

TEST(CatalogueEarlierTables, FieldPositionsAddUpToTheRecordLength) {
    for (const ExpectedEarlier& expected : kExpectedEarlier) {
        const TableDef& table = *earlierTable(expected.generation, expected.table);
        SCOPED_TRACE(std::string(table.name) + " " + expected.generation);
        const std::uint32_t derived = checkFieldLayout(table);
        if (expected.generation == 'A' && expected.table == TAB_SCONTROL) {
            // Stored short of its six words; only migration reads it, as written.
            EXPECT_EQ(derived, 24u);
            EXPECT_EQ(table.recordLength, 16u);
        } else {
            EXPECT_EQ(derived, table.recordLength);
        }
    }
}

TEST(CatalogueEarlierTables, IndexesNameTheSameFieldsAsToday) {
    for (const ExpectedEarlier& expected : kExpectedEarlier) {
        const TableDef& table = *earlierTable(expected.generation, expected.table);
        const TableDef& current = *currentTable(expected.table);
        SCOPED_TRACE(std::string(table.name) + " " + expected.generation);
        checkFileConventions(table);
        checkIndexes(table);
        if (expected.table == TAB_DIC) {
            continue;  // keyed differently, checked on its own
        }
        // Same index files keyed on the same fields as the current table.
        for (std::size_t i = 0; i < table.indexes.size(); ++i) {
            const IndexDef& old = table.indexes[i];
            const IndexDef& now = current.indexes[i];
            EXPECT_STREQ(old.filePattern, now.filePattern);
            EXPECT_EQ(old.keyLength, now.keyLength);
            ASSERT_EQ(old.segments.size(), now.segments.size());
            for (std::size_t s = 0; s < old.segments.size(); ++s) {
                ASSERT_EQ(old.segments[s].mode, SEG_FIXED_UNSIGNED);
                const FieldDef* oldField = fixedFieldAt(table, old.segments[s].position);
                const FieldDef* nowField = fixedFieldAt(current, now.segments[s].position);
                ASSERT_NE(oldField, nullptr);
                ASSERT_NE(nowField, nullptr);
                EXPECT_STREQ(oldField->name, nowField->name);
            }
        }
    }
}

TEST(CatalogueEarlierTables, OldPhraseTablesKeyTheSourceTextByLocale) {
    const TableDef& dic = *earlierTable('D', TAB_DIC);
    EXPECT_EQ(findField(dic, "STextFiltered"), nullptr);
    ASSERT_EQ(dic.indexes.size(), 3u);
    const IndexDef& text = dic.indexes[2];
    EXPECT_STREQ(text.filePattern, "%s%s%cDicI3.Qvi");
    EXPECT_EQ(text.keyLength, 254);  // the length that selects locale order
    EXPECT_TRUE(text.duplicates);
    ASSERT_EQ(text.segments.size(), 1u);
    EXPECT_EQ(text.segments[0].mode, SEG_VARIABLE_TEXT);
    EXPECT_EQ(text.segments[0].length, 250);
    EXPECT_STREQ(variableFieldAt(dic, text.segments[0].position)->name, "SText");
    EXPECT_STREQ(fixedFieldAt(dic, dic.indexes[1].segments[0].position)->name, "PairLangId");

    const TableDef& dicT = *earlierTable('D', TAB_DICT);
    ASSERT_EQ(dicT.indexes.size(), 1u);
    EXPECT_STREQ(dicT.indexes[0].filePattern, "%s%s%cDicTI1.Qvi");
}

TEST(CatalogueModuleFile, IsAStandAloneFileWithoutIndexes) {
    const TableDef& table = moduleFileTable();
    EXPECT_STREQ(table.filePattern, "%s%s");
    EXPECT_EQ(table.recordLength, 0u);
    EXPECT_EQ(table.dataMode, 518);
    EXPECT_EQ(table.indexMode, 518);
    EXPECT_EQ(table.dataExtent, 32768u);
    EXPECT_EQ(table.indexes.size(), 0u);
    ASSERT_EQ(table.fields.size(), 1u);
    EXPECT_STREQ(table.fields[0].name, "ModulId");
    EXPECT_EQ(table.fields[0].type, FT_INT4U);

    const isam::FileDefinition definition = makeFileDefinition(table, "/work/app.dll");
    EXPECT_EQ(definition.name, "/work/app.dll");
    EXPECT_EQ(definition.mode, 518);
    EXPECT_EQ(definition.extent, 32768u);
    EXPECT_TRUE(definition.indexes.empty());
    EXPECT_TRUE(definition.variableFields.empty());
}

// ---- Vocabulary -----------------------------------------------------------------

TEST(CatalogueFieldTypes, NamesAndCodesRoundTrip) {
    struct Entry {
        const char* name;
        std::uint16_t code;
    };
    const Entry vocabulary[] = {
        {"FT_BOOL", 8},       {"FT_CHAR", 16},     {"FT_CHARU", 24},     {"FT_INT2", 33},
        {"FT_INT2U", 41},     {"FT_INT4", 51},     {"FT_INT4U", 59},     {"FT_MONEY", 67},
        {"FT_DATE", 75},      {"FT_TIME", 83},     {"FT_SFLOAT", 91},    {"FT_DFLOAT", 103},
        {"FT_SQLBCD", 108},   {"FT_EFLOAT", 119},  {"FT_TIMES", 124},    {"FT_ARRAY", 128},
        {"FT_FSTRING", 144},  {"FT_STRING", 146},  {"FT_FPSTRING", 152}, {"FT_PSTRING", 154},
        {"FT_F2STRING", 160}, {"FT_2STRING", 162}, {"FT_F4STRING", 168}, {"FT_4STRING", 170},
    };
    for (const Entry& entry : vocabulary) {
        EXPECT_STREQ(fieldTypeName(entry.code), entry.name);
        EXPECT_EQ(fieldTypeCode(entry.name), entry.code) << entry.name;
    }

    EXPECT_STREQ(fieldTypeName(0), "FT_ERROR");
    EXPECT_STREQ(fieldTypeName(9), "FT_ERROR");
    EXPECT_STREQ(fieldTypeName(FT_ERROR), "FT_ERROR");
    EXPECT_EQ(fieldTypeCode("FT_INT8"), 65535);
    EXPECT_EQ(fieldTypeCode(""), 65535);
    EXPECT_EQ(fieldTypeCode("FT_ERROR"), 65535);
    EXPECT_EQ(fieldTypeCode(nullptr), 65535);
}

TEST(CatalogueFieldTypes, FixedAndVariableKinds) {
    EXPECT_TRUE(isFixedWidth(FT_BOOL));
    EXPECT_TRUE(isFixedWidth(FT_INT2U));
    EXPECT_TRUE(isFixedWidth(FT_INT4U));
    EXPECT_TRUE(isFixedWidth(FT_FSTRING));
    EXPECT_FALSE(isFixedWidth(FT_STRING));
    EXPECT_FALSE(isFixedWidth(FT_4STRING));
    EXPECT_FALSE(isFixedWidth(FT_ERROR));
}

TEST(CatalogueFieldTypes, DescriptorPacksTypeLowAndLengthHigh) {
    EXPECT_EQ(fieldDescriptor(FT_STRING, 32768), 0x80000092u);
    EXPECT_EQ(fieldDescriptor(FT_INT4U, 4), 0x0004003Bu);
    EXPECT_EQ(fieldDescriptor(FT_ERROR, 0xFFFF), 0xFFFFFFFFu);
}

// ---- Engine file definitions ----------------------------------------------------

TEST(CatalogueFileDefinition, DialogMembersAndKeys) {
    const isam::FileDefinition definition =
        makeFileDefinition(*currentTable(TAB_DIALOG), "demo.Prj");
    EXPECT_EQ(definition.name, "demo.Prj!Dialog");
    EXPECT_EQ(definition.recordLength, 72u);
    EXPECT_EQ(definition.mode, 68);
    EXPECT_EQ(definition.extent, 1024u);
    ASSERT_EQ(definition.indexes.size(), 3u);
    EXPECT_EQ(definition.indexes[0].name, "demo.Prj!DialogI1.Qvi");
    EXPECT_EQ(definition.indexes[1].name, "demo.Prj!DialogI2.Qvi");

    const isam::IndexDefinition& byText = definition.indexes[2];
    EXPECT_EQ(byText.name, "demo.Prj!DialogI3.Qvi");
    EXPECT_EQ(byText.keyLength, 8);
    EXPECT_TRUE(byText.duplicates);
    EXPECT_EQ(byText.mode, 64);
    EXPECT_EQ(byText.extent, 1024u);
    ASSERT_EQ(byText.segments.size(), 1u);
    EXPECT_EQ(byText.segments[0].position, 12);
    EXPECT_EQ(byText.segments[0].length, 4);
    EXPECT_EQ(byText.segments[0].mode, isam::kSegmentFixed);

    ASSERT_EQ(definition.variableFields.size(), 4u);
    for (const isam::VariableField& field : definition.variableFields) {
        EXPECT_FALSE(field.binary);
        EXPECT_EQ(field.limit, 200u);
    }
}

TEST(CatalogueFileDefinition, ContainerNameIsNotAFormat) {
    const isam::FileDefinition definition =
        makeFileDefinition(*currentTable(TAB_DIALOG), "/tmp/100%s.Prj");
    EXPECT_EQ(definition.name, "/tmp/100%s.Prj!Dialog");
    EXPECT_EQ(definition.indexes[1].name, "/tmp/100%s.Prj!DialogI2.Qvi");
}

TEST(CatalogueFileDefinition, VariableFieldsOfTextsAndBinaries) {
    const isam::FileDefinition dic = makeFileDefinition(*currentTable(TAB_DIC), "demo.Prj");
    ASSERT_EQ(dic.variableFields.size(), 3u);
    for (const isam::VariableField& field : dic.variableFields) {
        EXPECT_FALSE(field.binary);
        EXPECT_EQ(field.limit, 32768u);
    }
    ASSERT_EQ(dic.indexes.size(), 4u);
    ASSERT_EQ(dic.indexes[3].segments.size(), 1u);
    EXPECT_EQ(dic.indexes[3].segments[0].mode, isam::kSegmentVariableText);
    EXPECT_EQ(dic.indexes[3].segments[0].position, 1);
    EXPECT_EQ(dic.indexes[3].segments[0].length, 125);

    const isam::FileDefinition binary =
        makeFileDefinition(*currentTable(TAB_BINARYDATA), "demo.Prj");
    EXPECT_EQ(binary.name, "demo.Prj!BinaryData");
    ASSERT_EQ(binary.variableFields.size(), 1u);
    EXPECT_TRUE(binary.variableFields[0].binary);
    EXPECT_EQ(binary.variableFields[0].limit, 0u);

    const isam::FileDefinition excep = makeFileDefinition(*currentTable(TAB_EXCEP), "demo.Prj");
    EXPECT_TRUE(excep.variableFields.empty());
    EXPECT_EQ(excep.mode, 68);  // still a variable-length table
}

}  // namespace
}  // namespace qvb::catalogue
