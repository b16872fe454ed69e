// Locale-aware comparison of texts held in a Windows locale's ANSI code page.
// Collators are costly to open, so one is kept per locale and option set for the
// life of the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

struct UCollator;
struct UConverter;

namespace platform {

enum CompareFlags : unsigned {
    kCompareDefault = 0,
    kIgnoreCase = 1,
    kIgnoreWidth = 2,
};

// The ANSI code page of a Windows locale identifier; 1252 for locales not listed.
unsigned ansiCodePage(std::uint32_t lcid);

// The ICU converter name of an ANSI code page.
const char* codePageConverterName(unsigned codePage);

// The locale name of a Windows locale identifier ("de_DE"); "" when unknown.
std::string localeName(std::uint32_t lcid);

// Compares two texts as the locale orders them: <0, 0 or >0. Equal strings under
// the options compare 0. Bytes that are not valid in the code page still compare
// consistently (as substitution characters).
int compareText(std::uint32_t lcid, unsigned flags, const char* a, std::size_t aLength,
                const char* b, std::size_t bLength);

// Building blocks shared by the locale services of this directory.
struct IcuCloser {
    void operator()(UCollator* collator) const;
    void operator()(UConverter* converter) const;
};
using CollatorHandle = std::unique_ptr<UCollator, IcuCloser>;
using ConverterHandle = std::unique_ptr<UConverter, IcuCloser>;

// A converter for the code page, windows-1252 when that one cannot be opened; null
// only when neither opens.
ConverterHandle openCodePageConverter(unsigned codePage);

// The collator of the locale with its default options, the root collation when the
// locale is unknown; null only when ICU has no collation data at all.
CollatorHandle openLocaleCollator(std::uint32_t lcid);

// Appends a UTF-16 code unit with width folded: full-width ASCII and the ideographic
// space become their narrow forms; half-width katakana and symbols take their
// compatibility decomposition.
void appendWidthFolded(char16_t c, std::u16string& out);

}  // namespace platform
