#include "platform/LocaleCollation.h"

#include <unicode/ucnv.h>
#include <unicode/ucol.h>
#include <unicode/uloc.h>
#include <unicode/unorm2.h>

#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace platform {

namespace {

// Primary language (low 10 bits of the LCID) to ANSI code page.
struct LanguageCodePage {
    std::uint16_t language;
    unsigned codePage;
};

constexpr LanguageCodePage kLanguageCodePages[] = {
    {0x01, 1256}, {0x02, 1251}, {0x05, 1250}, {0x08, 1253}, {0x0D, 1255}, {0x0E, 1250},
    {0x11, 932},  {0x12, 949},  {0x15, 1250}, {0x18, 1250}, {0x19, 1251}, {0x1B, 1250},
    {0x1C, 1250}, {0x1E, 874},  {0x1F, 1254}, {0x20, 1256}, {0x22, 1251}, {0x23, 1251},
    {0x24, 1250}, {0x25, 1257}, {0x26, 1257}, {0x27, 1257}, {0x29, 1256}, {0x2A, 1258},
    {0x2C, 1254}, {0x2F, 1251}, {0x3F, 1251}, {0x40, 1251}, {0x43, 1254}, {0x44, 1251},
    {0x50, 1251},
};

unsigned chineseCodePage(std::uint32_t lcid) {
    switch (lcid & 0xFFFF) {
        case 0x0804:  // PRC
        case 0x1004:  // Singapore
            return 936;
        default:  // Taiwan, Hong Kong, Macao
            return 950;
    }
}

unsigned serbianCroatianCodePage(std::uint32_t lcid) {
    // Shared primary language: the Cyrillic sub-languages use 1251.
    switch (lcid & 0xFFFF) {
        case 0x0C1A:
        case 0x1C1A:
        case 0x281A:
        case 0x201A:
            return 1251;
        default:
            return 1250;
    }
}

std::u16string foldWidth(const std::u16string& text) {
    std::u16string out;
    out.reserve(text.size());
    for (char16_t c : text) appendWidthFolded(c, out);
    return out;
}

// One locale with one option set: its converter and collator.
class LocaleComparer {
public:
    LocaleComparer(std::uint32_t lcid, unsigned flags)
        : flags_(flags),
          converter_(openCodePageConverter(ansiCodePage(lcid))),
          collator_(openLocaleCollator(lcid)) {
        if (collator_ && (flags & kIgnoreCase)) {
            ucol_setStrength(collator_.get(), UCOL_SECONDARY);
        }
    }

    int compare(const char* a, std::size_t aLength, const char* b, std::size_t bLength) {
        std::u16string ua = toUnicode(a, aLength);
        std::u16string ub = toUnicode(b, bLength);
        if (flags_ & kIgnoreWidth) {
            ua = foldWidth(ua);
            ub = foldWidth(ub);
        }
        if (!collator_) return ua.compare(ub);
        UCollationResult r = ucol_strcoll(collator_.get(), reinterpret_cast<const UChar*>(ua.data()),
                                          static_cast<int32_t>(ua.size()),
                                          reinterpret_cast<const UChar*>(ub.data()),
                                          static_cast<int32_t>(ub.size()));
        return r == UCOL_LESS ? -1 : r == UCOL_GREATER ? 1 : 0;
    }

private:
    std::u16string toUnicode(const char* text, std::size_t length) {
        std::u16string out;
        if (!converter_ || length == 0) {
            out.assign(text, text + length);
            return out;
        }
        out.resize(length * 2 + 2);
        UErrorCode status = U_ZERO_ERROR;
        int32_t n = ucnv_toUChars(converter_.get(), reinterpret_cast<UChar*>(&out[0]),
                                  static_cast<int32_t>(out.size()), text,
                                  static_cast<int32_t>(length), &status);
        if (U_FAILURE(status)) {
            out.assign(text, text + length);
            return out;
        }
        out.resize(static_cast<std::size_t>(n));
        return out;
    }

    unsigned flags_;
    ConverterHandle converter_;
    CollatorHandle collator_;
};

std::mutex gComparersLock;
std::map<std::pair<std::uint32_t, unsigned>, std::unique_ptr<LocaleComparer>> gComparers;

}  // namespace

unsigned ansiCodePage(std::uint32_t lcid) {
    const std::uint16_t language = lcid & 0x3FF;
    if (language == 0x04) return chineseCodePage(lcid);
    if (language == 0x1A) return serbianCroatianCodePage(lcid);
    for (const LanguageCodePage& entry : kLanguageCodePages) {
        if (entry.language == language) return entry.codePage;
    }
    return 1252;
}

const char* codePageConverterName(unsigned codePage) {
    switch (codePage) {
        case 874: return "windows-874";
        case 932: return "ibm-943_P15A-2003";
        case 936: return "windows-936";
        case 949: return "windows-949";
        case 950: return "windows-950";
        case 1250: return "windows-1250";
        case 1251: return "windows-1251";
        case 1253: return "windows-1253";
        case 1254: return "windows-1254";
        case 1255: return "windows-1255";
        case 1256: return "windows-1256";
        case 1257: return "windows-1257";
        case 1258: return "windows-1258";
        default: return "windows-1252";
    }
}

std::string localeName(std::uint32_t lcid) {
    char name[ULOC_FULLNAME_CAPACITY] = {};
    UErrorCode status = U_ZERO_ERROR;
    int32_t n = uloc_getLocaleForLCID(lcid, name, sizeof name, &status);
    if (U_FAILURE(status) || n <= 0) return std::string();
    std::string found(name, static_cast<std::size_t>(n));
    // ICU answers the root locale for identifiers it cannot place.
    return found == "root" ? std::string() : found;
}

void IcuCloser::operator()(UCollator* collator) const { ucol_close(collator); }

void IcuCloser::operator()(UConverter* converter) const { ucnv_close(converter); }

ConverterHandle openCodePageConverter(unsigned codePage) {
    UErrorCode status = U_ZERO_ERROR;
    ConverterHandle converter(ucnv_open(codePageConverterName(codePage), &status));
    if (U_FAILURE(status)) {
        status = U_ZERO_ERROR;
        converter.reset(ucnv_open("windows-1252", &status));
    }
    return converter;
}

CollatorHandle openLocaleCollator(std::uint32_t lcid) {
    UErrorCode status = U_ZERO_ERROR;
    CollatorHandle collator(ucol_open(localeName(lcid).c_str(), &status));
    if (U_FAILURE(status)) {
        status = U_ZERO_ERROR;
        collator.reset(ucol_open("", &status));
    }
    return collator;
}

void appendWidthFolded(char16_t c, std::u16string& out) {
    if (c >= 0xFF01 && c <= 0xFF5E) {
        out.push_back(static_cast<char16_t>(c - 0xFEE0));
    } else if (c == 0x3000) {
        out.push_back(u' ');
    } else if (c >= 0xFF61 && c <= 0xFFEE) {
        UErrorCode status = U_ZERO_ERROR;
        const UNormalizer2* nfkc = unorm2_getNFKCInstance(&status);
        UChar buffer[8];
        const int32_t n = U_SUCCESS(status) ? unorm2_getDecomposition(nfkc, c, buffer, 8, &status) : -1;
        if (U_SUCCESS(status) && n > 0) {
            out.append(reinterpret_cast<const char16_t*>(buffer), static_cast<std::size_t>(n));
        } else {
            out.push_back(c);
        }
    } else {
        out.push_back(c);
    }
}

int compareText(std::uint32_t lcid, unsigned flags, const char* a, std::size_t aLength,
                const char* b, std::size_t bLength) {
    std::lock_guard<std::mutex> guard(gComparersLock);
    auto& comparer = gComparers[{lcid, flags}];
    if (!comparer) comparer = std::make_unique<LocaleComparer>(lcid, flags);
    return comparer->compare(a, aLength, b, bLength);
}

}  // namespace platform
