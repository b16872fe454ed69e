// Field-type vocabulary and the translation of a table definition into the engine's
// file definition.
#include "core/Catalogue.h"

#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace qvb::catalogue {
namespace {

struct TypeInfo {
    std::uint16_t code;
    const char* name;
    bool fixed;  // stored in the fixed part; texts and binaries of their own length are not
};

constexpr TypeInfo kTypes[] = {
    {FT_BOOL, "FT_BOOL", true},         {FT_CHAR, "FT_CHAR", true},
    {FT_CHARU, "FT_CHARU", true},       {FT_INT2, "FT_INT2", true},
    {FT_INT2U, "FT_INT2U", true},       {FT_INT4, "FT_INT4", true},
    {FT_INT4U, "FT_INT4U", true},       {FT_MONEY, "FT_MONEY", true},
    {FT_DATE, "FT_DATE", true},         {FT_TIME, "FT_TIME", true},
    {FT_SFLOAT, "FT_SFLOAT", true},     {FT_DFLOAT, "FT_DFLOAT", true},
    {FT_SQLBCD, "FT_SQLBCD", true},     {FT_EFLOAT, "FT_EFLOAT", true},
    {FT_TIMES, "FT_TIMES", true},       {FT_ARRAY, "FT_ARRAY", true},
    {FT_FSTRING, "FT_FSTRING", true},   {FT_STRING, "FT_STRING", false},
    {FT_FPSTRING, "FT_FPSTRING", true}, {FT_PSTRING, "FT_PSTRING", false},
    {FT_F2STRING, "FT_F2STRING", true}, {FT_2STRING, "FT_2STRING", false},
    {FT_F4STRING, "FT_F4STRING", true}, {FT_4STRING, "FT_4STRING", false},
};

const TypeInfo* findType(std::uint16_t code) {
    for (const TypeInfo& type : kTypes) {
        if (type.code == code) {
            return &type;
        }
    }
    return nullptr;
}

}  // namespace

std::string formatMemberName(const char* pattern, const std::string& first,
                             const std::string& second, char separator) {
    const int length =
        std::snprintf(nullptr, 0, pattern, first.c_str(), second.c_str(), separator);
    if (length <= 0) {
        return std::string();
    }
    std::vector<char> buffer(static_cast<std::size_t>(length) + 1);
    std::snprintf(buffer.data(), buffer.size(), pattern, first.c_str(), second.c_str(), separator);
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

const char* fieldTypeName(std::uint16_t code) {
    const TypeInfo* type = findType(code);
    return type != nullptr ? type->name : "FT_ERROR";
}

std::uint16_t fieldTypeCode(const char* name) {
    if (name != nullptr) {
        for (const TypeInfo& type : kTypes) {
            if (std::strcmp(type.name, name) == 0) {
                return type.code;
            }
        }
    }
    return FT_ERROR;
}

bool isFixedWidth(std::uint16_t type) {
    const TypeInfo* info = findType(type);
    return info != nullptr && info->fixed;
}

isam::FileDefinition makeFileDefinition(const TableDef& table, const std::string& containerName) {
    isam::FileDefinition definition;
    definition.name = formatMemberName(table.filePattern, containerName, "", kMemberSeparator);
    definition.recordLength = table.recordLength;
    definition.mode = table.dataMode;
    definition.extent = table.dataExtent;

    for (const FieldDef& field : table.fields) {
        if (isFixedWidth(field.type)) {
            continue;
        }
        isam::VariableField variable;
        // A length-prefixed field holds binary data of any size; its length is only
        // the width of the prefix.
        variable.binary = field.type == FT_4STRING;
        variable.limit = variable.binary ? 0 : field.length;
        definition.variableFields.push_back(variable);
    }

    for (const IndexDef& index : table.indexes) {
        isam::IndexDefinition target;
        target.name = formatMemberName(index.filePattern, containerName, "", kMemberSeparator);
        target.keyLength = index.keyLength;
        target.duplicates = index.duplicates;
        target.mode = table.indexMode;
        target.extent = table.indexExtent;
        for (const SegmentDef& segment : index.segments) {
            isam::Segment part;
            part.position = segment.position;
            part.length = segment.length;
            part.mode = segment.mode;
            target.segments.push_back(part);
        }
        definition.indexes.push_back(std::move(target));
    }
    return definition;
}

}  // namespace qvb::catalogue
