#include "tools/qvb/FieldText.h"

#include "core/Catalogue.h"

namespace qvbtool {

namespace {

using namespace qvb::catalogue;

constexpr char kHexDigits[] = "0123456789abcdef";

void appendHexByte(std::string& out, unsigned char byte) {
    out += kHexDigits[byte >> 4];
    out += kHexDigits[byte & 15];
}

std::string hexPrefix(const std::string& bytes) {
    std::string hex;
    for (std::size_t i = 0; i < bytes.size() && i < kHexPrefixBytes; ++i) {
        appendHexByte(hex, static_cast<unsigned char>(bytes[i]));
    }
    return hex;
}

// A text between quotes: the usual escapes for quote, backslash and control
// characters, and every other byte outside printable ASCII as `other` followed by
// its two hex digits.
void appendQuotedWith(std::string& out, const std::string& bytes, const char* other) {
    out += '"';
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        switch (byte) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\b': out += "\\b"; break;
            case '\f': out += "\\f"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            default:
                if (byte < 0x20 || byte >= 0x7f) {
                    out += other;
                    appendHexByte(out, byte);
                } else {
                    out += c;
                }
        }
    }
    out += '"';
}

}  // namespace

void appendQuoted(std::string& out, const std::string& bytes) {
    appendQuotedWith(out, bytes, "\\x");
}

ValueKind valueKindOf(std::uint16_t fieldType) {
    switch (fieldType) {
        case FT_4STRING:
            return ValueKind::Binary;
        case FT_STRING:
        case FT_FSTRING:
            return ValueKind::Text;
        default:
            return ValueKind::Number;
    }
}

void appendReadable(std::string& out, ValueKind kind, const std::string& value) {
    if (kind == ValueKind::Number) {
        out += value;
        return;
    }
    if (kind == ValueKind::Binary) {
        out += std::to_string(value.size()) + (value.size() == 1 ? " byte" : " bytes");
        if (!value.empty()) out += " " + hexPrefix(value);
        if (value.size() > kHexPrefixBytes) out += "...";
        return;
    }
    // Fixed-width names are stored padded with spaces; a count reads better.
    std::size_t end = value.size();
    while (end > 0 && value[end - 1] == ' ') --end;
    appendQuoted(out, value.substr(0, end));
    const std::size_t padding = value.size() - end;
    if (padding) out += " + " + std::to_string(padding) + (padding == 1 ? " space" : " spaces");
}

void appendJsonString(std::string& out, const std::string& bytes) {
    appendQuotedWith(out, bytes, "\\u00");
}

void appendJson(std::string& out, ValueKind kind, const std::string& value) {
    switch (kind) {
        case ValueKind::Number:
            out += value;
            return;
        case ValueKind::Text:
            appendJsonString(out, value);
            return;
        case ValueKind::Binary:
            out += "{\"length\": " + std::to_string(value.size()) + ", \"hex\": \"" +
                   hexPrefix(value) + "\"}";
            return;
    }
}

}  // namespace qvbtool
