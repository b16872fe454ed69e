#include "isam/Keys.h"

#include <algorithm>
#include <cstring>

namespace isam {

namespace {

constexpr std::size_t kSuffixBytes = 4;
constexpr std::uint16_t kLocaleTextLength = 250;
constexpr std::uint16_t kLocaleKeyLength = 254;

std::uint32_t readLittleEndian32(const unsigned char* p) {
    return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8 |
           static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

void appendReversed(std::string* out, const unsigned char* p, std::size_t n) {
    for (std::size_t i = n; i > 0; --i) out->push_back(static_cast<char>(p[i - 1]));
}

}  // namespace

int parseRecord(const FileDefinition& definition, const unsigned char* record, std::size_t length,
                std::vector<FieldSpan>* fields) {
    if (length < definition.recordLength) return ISAM_RECORD_TOO_SHORT;
    fields->assign(definition.variableFields.size(), FieldSpan{length, 0});
    std::size_t at = definition.recordLength;
    for (std::size_t i = 0; i < definition.variableFields.size() && at < length; ++i) {
        const VariableField& field = definition.variableFields[i];
        const std::size_t rest = length - at;
        if (field.binary) {
            if (rest < kSuffixBytes) return ISAM_RECORD_TOO_SHORT;
            const std::size_t n = readLittleEndian32(record + at);
            if (n > rest - kSuffixBytes) return ISAM_RECORD_TOO_SHORT;
            (*fields)[i] = FieldSpan{at + kSuffixBytes, n};
            at += kSuffixBytes + n;
            continue;
        }
        const void* end = std::memchr(record + at, 0, rest);
        const std::size_t n = end ? static_cast<const unsigned char*>(end) - (record + at) : rest;
        if (n > field.limit) return ISAM_RECORD_TOO_LONG;
        (*fields)[i] = FieldSpan{at, n};
        at += end ? n + 1 : n;
    }
    return at < length ? ISAM_RECORD_TOO_LONG : ISAM_OK;
}

bool isLocaleOrdered(const IndexDefinition& index) {
    return index.keyLength == kLocaleKeyLength && index.duplicates && index.segments.size() == 1 &&
           index.segments[0].mode == kSegmentVariableText &&
           index.segments[0].length == kLocaleTextLength;
}

std::size_t segmentBytes(const IndexDefinition& index) {
    std::size_t n = 0;
    for (const Segment& s : index.segments) n += s.length;
    return n;
}

bool isValidIndex(const FileDefinition& file, const IndexDefinition& index) {
    if (index.segments.empty() || index.name.empty()) return false;
    for (const Segment& s : index.segments) {
        if (s.length == 0) return false;
        if (s.mode == kSegmentFixed) {
            if (std::size_t(s.position) + s.length > file.recordLength) return false;
        } else if (s.mode == kSegmentVariableText) {
            if (s.position >= file.variableFields.size()) return false;
        } else {
            return false;
        }
    }
    return segmentBytes(index) + (index.duplicates ? kSuffixBytes : 0) == index.keyLength;
}

// ---- Compact text segments -------------------------------------------------------------
//
// A padded text compares as if it went on with spaces for ever. Cut into tokens,
// each a run of k spaces and the byte c that ends it (the end of the text is an
// endless run), two texts compare by their first differing tokens: with equal k
// by c, otherwise by whether the shorter run's c lies below or above a space. So
// tokens with c below a space order first (by k, then c), then the end, then
// tokens with c above a space (by k descending, then c). A token is written as
//   c                  c above a space, k = 0: the common case, one byte
//   0x01 k c           c below a space
//   0x02               the end of the text
//   0x03 (255 - k) c   c above a space, k > 0
// which bytes order exactly so (k stays below the longest segment, 250), and
// which no token is a prefix of another: keys compare byte by byte as before.

namespace {

constexpr char kBelowSpace = 0x01;
constexpr char kTextEnd = 0x02;
constexpr char kAfterSpaces = 0x03;

std::size_t withoutTrailingSpaces(const unsigned char* text, std::size_t n) {
    while (n > 0 && text[n - 1] == ' ') --n;
    return n;
}

// The tokens of a text that has no trailing spaces, without the end token.
void appendTokens(std::string* key, const unsigned char* text, std::size_t n) {
    std::size_t spaces = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const unsigned char c = text[i];
        if (c == ' ') {
            ++spaces;
        } else if (c < ' ') {
            key->push_back(kBelowSpace);
            key->push_back(static_cast<char>(spaces));
            key->push_back(static_cast<char>(c));
            spaces = 0;
        } else if (spaces == 0) {
            key->push_back(static_cast<char>(c));
        } else {
            key->push_back(kAfterSpaces);
            key->push_back(static_cast<char>(255 - spaces));
            key->push_back(static_cast<char>(c));
            spaces = 0;
        }
    }
}

void appendCompactText(std::string* key, const unsigned char* text, std::size_t n) {
    appendTokens(key, text, withoutTrailingSpaces(text, n));
    key->push_back(kTextEnd);
}

// The keys whose text begins with the first n bytes of a text segment: those
// that begin with its tokens when it ends in no space; otherwise those whose next
// token's run is at least as long as the trailing spaces (below-space tokens with
// k >= j, the end, above-space tokens with k >= j).
void compactTextPrefix(const unsigned char* text, std::size_t n, SearchKey* out) {
    const std::size_t kept = withoutTrailingSpaces(text, n);
    appendTokens(&out->bytes, text, kept);
    const std::size_t spaces = n - kept;
    if (spaces == 0) return;
    out->hasUpper = true;
    out->upper = out->bytes;
    out->bytes.push_back(kBelowSpace);
    out->bytes.push_back(static_cast<char>(spaces));
    out->upper.push_back(kAfterSpaces);
    out->upper.push_back(static_cast<char>(256 - spaces));
}

bool isCompact(const IndexDefinition& index, KeyForm form) {
    return form == KeyForm::Compact && !isLocaleOrdered(index);
}

}  // namespace

std::string buildKey(const IndexDefinition& index, const unsigned char* record,
                     const std::vector<FieldSpan>& fields, KeyForm form) {
    const bool compact = isCompact(index, form);
    std::string key;
    key.reserve(compact ? 16 : segmentBytes(index));
    for (const Segment& s : index.segments) {
        if (s.mode == kSegmentFixed) {
            appendReversed(&key, record + s.position, s.length);
            continue;
        }
        const FieldSpan& f = fields[s.position];
        const std::size_t n = f.length < s.length ? f.length : s.length;
        if (compact) {
            appendCompactText(&key, record + f.offset, n);
            continue;
        }
        key.append(reinterpret_cast<const char*>(record + f.offset), n);
        key.append(s.length - n, ' ');
    }
    return key;
}

int parseSearchKey(const IndexDefinition& index, const void* value, std::size_t length,
                   bool wholeWhenZero, KeyForm form, SearchKey* out) {
    const std::size_t segmentLength = segmentBytes(index);
    if (length == 0 && wholeWhenZero) length = index.keyLength;
    if (length > index.keyLength) return ISAM_KEY_TOO_LONG;
    const bool compact = isCompact(index, form);
    const unsigned char* p = static_cast<const unsigned char*>(value);
    out->bytes.clear();
    out->hasPosition = false;
    out->hasUpper = false;
    out->upper.clear();
    std::size_t at = 0;
    for (const Segment& s : index.segments) {
        if (at >= length) break;
        const std::size_t n = length - at < s.length ? length - at : s.length;
        if (s.mode == kSegmentFixed) {
            if (n != s.length) return ISAM_BAD_KEY;
            appendReversed(&out->bytes, p + at, n);
        } else if (compact && n == s.length) {
            appendCompactText(&out->bytes, p + at, n);
        } else if (compact) {
            compactTextPrefix(p + at, n, out);
        } else {
            out->bytes.append(reinterpret_cast<const char*>(p + at), n);
            // A locale-ordered text has no byte prefixes: it is always compared whole.
            if (isLocaleOrdered(index)) out->bytes.append(s.length - n, ' ');
        }
        at += n;
    }
    // A compact text's bytes say nothing of its width: what was given decides.
    out->complete = (compact ? std::min(length, segmentLength) : out->bytes.size()) == segmentLength;
    if (length > segmentLength) {
        if (length - segmentLength != kSuffixBytes) return ISAM_BAD_KEY;
        out->hasPosition = true;
        out->position = readLittleEndian32(p + segmentLength);
    }
    return ISAM_OK;
}

bool prefixSuccessor(const std::string& prefix, std::string* successor) {
    *successor = prefix;
    while (!successor->empty()) {
        unsigned char last = static_cast<unsigned char>(successor->back());
        if (last != 0xFF) {
            successor->back() = static_cast<char>(last + 1);
            return true;
        }
        successor->pop_back();
    }
    return false;
}

std::string definitionSignature(const FileDefinition& definition) {
    std::string s = "R" + std::to_string(definition.recordLength);
    for (const VariableField& f : definition.variableFields) {
        s += f.binary ? " B" : " T" + std::to_string(f.limit);
    }
    for (const IndexDefinition& index : definition.indexes) {
        s += " I" + std::to_string(index.keyLength) + (index.duplicates ? "d" : "u");
        for (const Segment& seg : index.segments) {
            s += "(" + std::to_string(seg.mode) + ":" + std::to_string(seg.position) + ":" +
                 std::to_string(seg.length) + ")";
        }
    }
    return s;
}

namespace {

bool readNumber(const char*& p, std::uint32_t* value) {
    if (*p < '0' || *p > '9') return false;
    std::uint64_t n = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        n = n * 10 + static_cast<std::uint64_t>(*p - '0');
        if (n > UINT32_MAX) return false;
    }
    *value = static_cast<std::uint32_t>(n);
    return true;
}

bool readSegment(const char*& p, Segment* segment) {
    std::uint32_t mode = 0, position = 0, length = 0;
    if (*p++ != '(' || !readNumber(p, &mode) || *p++ != ':' || !readNumber(p, &position) ||
        *p++ != ':' || !readNumber(p, &length) || *p++ != ')' || mode > 0xFFFF ||
        position > 0xFFFF || length > 0xFFFF) {
        return false;
    }
    *segment = Segment{static_cast<std::uint16_t>(position), static_cast<std::uint16_t>(length),
                       static_cast<std::uint16_t>(mode)};
    return true;
}

}  // namespace

bool definitionFromSignature(const std::string& signature, FileDefinition* definition) {
    const char* p = signature.c_str();
    FileDefinition parsed;
    if (*p++ != 'R' || !readNumber(p, &parsed.recordLength)) return false;
    while (*p == ' ') {
        ++p;
        if (*p == 'B') {
            ++p;
            parsed.variableFields.push_back(VariableField{true, 0});
        } else if (*p == 'T') {
            ++p;
            VariableField field;
            if (!readNumber(p, &field.limit)) return false;
            parsed.variableFields.push_back(field);
        } else if (*p == 'I') {
            ++p;
            IndexDefinition index;
            std::uint32_t keyLength = 0;
            if (!readNumber(p, &keyLength) || keyLength > 0xFFFF || (*p != 'u' && *p != 'd')) {
                return false;
            }
            index.keyLength = static_cast<std::uint16_t>(keyLength);
            index.duplicates = *p++ == 'd';
            while (*p == '(') {
                Segment segment;
                if (!readSegment(p, &segment)) return false;
                index.segments.push_back(segment);
            }
            parsed.indexes.push_back(std::move(index));
        } else {
            return false;
        }
    }
    if (*p != '\0') return false;
    definition->recordLength = parsed.recordLength;
    definition->variableFields = std::move(parsed.variableFields);
    definition->indexes.resize(parsed.indexes.size());
    for (std::size_t i = 0; i < parsed.indexes.size(); ++i) {
        IndexDefinition& target = definition->indexes[i];
        target.keyLength = parsed.indexes[i].keyLength;
        target.duplicates = parsed.indexes[i].duplicates;
        target.segments = std::move(parsed.indexes[i].segments);
    }
    return true;
}

}  // namespace isam
