// Decoding tables of a code page, built with ICU.
#include "platform/CodePageTable.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <cstdint>

#include "platform/LocaleCollation.h"

namespace platform::detail {

namespace {

constexpr char16_t kSubstitute = 0xFFFD;

// The lead bytes of the double-byte code pages: a lead byte and the byte after it are
// one character, whatever that byte is.
bool isLeadByte(unsigned codePage, unsigned char b) {
    switch (codePage) {
        case 932:
            return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
        case 936:
        case 949:
        case 950:
            return b >= 0x81 && b <= 0xFE;
        default:
            return false;
    }
}

std::array<bool, 256> leadBytesOf(unsigned codePage) {
    std::array<bool, 256> lead{};
    for (unsigned b = 0; b < 256; ++b)
        lead[b] = isLeadByte(codePage, static_cast<unsigned char>(b));
    return lead;
}

// One character of the code page in UTF-16. Anything that does not decode to exactly
// one code unit, and ICU's substitution byte standing for an invalid one, becomes
// U+FFFD, which the collators do not ignore.
char16_t decodeCharacter(UConverter* converter, const char* bytes, std::size_t length) {
    if (!converter) return length == 1 ? static_cast<unsigned char>(bytes[0]) : kSubstitute;
    UChar out[4];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t n =
        ucnv_toUChars(converter, out, 4, bytes, static_cast<int32_t>(length), &status);
    if (U_FAILURE(status) || n != 1) return kSubstitute;
    if (out[0] == 0x1A && !(length == 1 && bytes[0] == 0x1A)) return kSubstitute;
    return static_cast<char16_t>(out[0]);
}

}  // namespace

CodePageTable::CodePageTable(unsigned codePage)
    : lead_(leadBytesOf(codePage)),
      doubleByte_(std::find(lead_.begin(), lead_.end(), true) != lead_.end()),
      decoded_(doubleByte_, kSubstitute),
      compared_(doubleByte_, comparedUnit(kSubstitute)) {
    const ConverterHandle converter = openCodePageConverter(codePage);
    forEachCharacter([&](const unsigned char* bytes, std::size_t length) {
        const bool loneLead = length == 1 && lead_[bytes[0]];
        const char16_t unit =
            loneLead
                ? kSubstitute
                : decodeCharacter(converter.get(), reinterpret_cast<const char*>(bytes), length);
        decoded_.at(bytes, length) = unit;
        compared_.at(bytes, length) = comparedUnit(unit);
    });
}

void CodePageTable::appendComparedForm(char16_t decoded, std::u16string& out) {
    const std::size_t start = out.size();
    appendWidthFolded(decoded, out);
    for (std::size_t i = start; i < out.size(); ++i) {
        if (out[i] >= 0x30A1 && out[i] <= 0x30F6) out[i] = static_cast<char16_t>(out[i] - 0x60);
    }
}

char16_t CodePageTable::comparedUnit(char16_t decoded) {
    std::u16string form;
    appendComparedForm(decoded, form);
    return form.size() == 1 ? form[0] : kSeveralUnits;
}

}  // namespace platform::detail
