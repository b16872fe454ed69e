#include "platform/TextMatching.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/uset.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/LocaleCollation.h"

namespace platform {

namespace {

constexpr char16_t kSubstitute = 0xFFFD;
constexpr std::size_t kNoPosition = static_cast<std::size_t>(-1);
constexpr std::size_t kUnitCount = 0x10000;

// The lead bytes of the double-byte code pages: a lead byte and the byte after it are
// one character, whatever that byte is.
bool isLeadByte(unsigned codePage, unsigned char b) {
    switch (codePage) {
        case 932: return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
        case 936:
        case 949:
        case 950: return b >= 0x81 && b <= 0xFE;
        default: return false;
    }
}

// One character of the code page in UTF-16. Anything that does not decode to exactly
// one code unit, and ICU's substitution byte standing for an invalid one, becomes
// U+FFFD, which the collators do not ignore.
char16_t decodeCharacter(UConverter* converter, const char* bytes, std::size_t length) {
    if (!converter) return length == 1 ? static_cast<unsigned char>(bytes[0]) : kSubstitute;
    UChar out[4];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t n = ucnv_toUChars(converter, out, 4, bytes, static_cast<int32_t>(length), &status);
    if (U_FAILURE(status) || n != 1) return kSubstitute;
    if (out[0] == 0x1A && !(length == 1 && bytes[0] == 0x1A)) return kSubstitute;
    return static_cast<char16_t>(out[0]);
}

// Appends a character in the form that is compared: width folded, katakana as
// hiragana, so that neither counts even when case does.
void appendComparedForm(char16_t c, std::u16string& out) {
    const std::size_t start = out.size();
    appendWidthFolded(c, out);
    for (std::size_t i = start; i < out.size(); ++i) {
        if (out[i] >= 0x30A1 && out[i] <= 0x30F6) out[i] = static_cast<char16_t>(out[i] - 0x60);
    }
}

// How the characters of one code page decode, worked out once with ICU so that
// decoding later needs no converter (a converter keeps state) and no lock.
class CodePageTable {
public:
    explicit CodePageTable(unsigned codePage) {
        ConverterHandle converter = openCodePageConverter(codePage);
        for (unsigned b = 0; b < 256; ++b) {
            const char byte = static_cast<char>(b);
            lead_[b] = isLeadByte(codePage, static_cast<unsigned char>(b));
            singles_[b] = lead_[b] ? kSubstitute : decodeCharacter(converter.get(), &byte, 1);
            comparedSingles_[b] = comparedUnit(singles_[b]);
            doubleByte_ = doubleByte_ || lead_[b];
        }
        if (doubleByte_) decodePairs(converter.get());
    }

    bool doubleByte() const { return doubleByte_; }
    bool isLead(unsigned char b) const { return lead_[b]; }

    // Length in bytes of the character at `at`; a lead byte at the end stands alone.
    std::size_t charLength(const unsigned char* at, const unsigned char* end) const {
        return lead_[*at] && end - at >= 2 ? 2 : 1;
    }

    char16_t decode(const unsigned char* at, std::size_t length) const {
        return length == 2 ? pairs_[pairIndex(at[0], at[1])] : singles_[*at];
    }

    // Appends the character in compared form.
    void appendCompared(const unsigned char* at, std::size_t length, std::u16string& out) const {
        const char16_t unit = length == 2 ? comparedPairs_[pairIndex(at[0], at[1])] : comparedSingles_[*at];
        if (unit != kSeveralUnits) {
            out.push_back(unit);
        } else {
            appendComparedForm(decode(at, length), out);
        }
    }

    // Appends a byte string in compared form, character by character.
    void appendComparedText(const unsigned char* bytes, std::size_t size, std::u16string& out) const {
        const unsigned char* const end = bytes + size;
        for (const unsigned char* at = bytes; at < end;) {
            const std::size_t length = charLength(at, end);
            appendCompared(at, length, out);
            at += length;
        }
    }

    // Where a double-byte character is kept in tables laid out like this one's; lead
    // bytes are all 0x80 or above.
    static std::size_t pairIndex(unsigned char lead, unsigned char trail) {
        return static_cast<std::size_t>(lead - 0x80) * 256 + trail;
    }
    static constexpr std::size_t kPairTableSize = 128 * 256;

private:
    // Stands for a compared form of more than one unit, which is rare enough to be
    // worked out each time (U+FFFF is not a character).
    static constexpr char16_t kSeveralUnits = 0xFFFF;

    static char16_t comparedUnit(char16_t decoded) {
        std::u16string form;
        appendComparedForm(decoded, form);
        return form.size() == 1 ? form[0] : kSeveralUnits;
    }

    void decodePairs(UConverter* converter) {
        pairs_.assign(kPairTableSize, kSubstitute);
        comparedPairs_.assign(kPairTableSize, comparedUnit(kSubstitute));
        for (unsigned lead = 0x80; lead < 256; ++lead) {
            if (!lead_[lead]) continue;
            for (unsigned trail = 0; trail < 256; ++trail) {
                const char pair[2] = {static_cast<char>(lead), static_cast<char>(trail)};
                const std::size_t index = pairIndex(static_cast<unsigned char>(lead), static_cast<unsigned char>(trail));
                pairs_[index] = decodeCharacter(converter, pair, 2);
                comparedPairs_[index] = comparedUnit(pairs_[index]);
            }
        }
    }

    bool doubleByte_ = false;
    std::array<bool, 256> lead_{};
    std::array<char16_t, 256> singles_{};
    std::vector<char16_t> pairs_;
    std::array<char16_t, 256> comparedSingles_{};
    std::vector<char16_t> comparedPairs_;
};

struct SetCloser {
    void operator()(USet* set) const { uset_close(set); }
};
using SetHandle = std::unique_ptr<USet, SetCloser>;

// The strings of a set.
std::vector<std::u16string> stringsOf(const USet* set) {
    std::vector<std::u16string> strings;
    std::vector<UChar> text(64);
    const int32_t items = uset_getItemCount(set);
    for (int32_t i = 0; i < items; ++i) {
        UChar32 first = 0;
        UChar32 last = 0;
        UErrorCode status = U_ZERO_ERROR;
        int32_t length = uset_getItem(set, i, &first, &last, text.data(), static_cast<int32_t>(text.size()), &status);
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            text.resize(static_cast<std::size_t>(length));
            status = U_ZERO_ERROR;
            length = uset_getItem(set, i, &first, &last, text.data(), length, &status);
        }
        if (U_SUCCESS(status) && length > 0) {
            strings.emplace_back(reinterpret_cast<const char16_t*>(text.data()), static_cast<std::size_t>(length));
        }
    }
    return strings;
}

// What a collator maps beyond single code points. It does not depend on the
// strength, and ICU takes long to list it, so it is kept per set of tailoring rules.
struct CollatorMappings {
    std::vector<std::u16string> contractions;  // expansions of several code points too
    std::vector<std::u16string> preContexts;   // the context, then the code point it changes
    SetHandle expansions{uset_openEmpty()};
    bool complete = false;

    explicit CollatorMappings(const UCollator* collator) {
        SetHandle contractionSet(uset_openEmpty());
        SetHandle withPreContexts(uset_openEmpty());
        UErrorCode status = U_ZERO_ERROR;
        ucol_getContractionsAndExpansions(collator, contractionSet.get(), expansions.get(), false, &status);
        ucol_getContractionsAndExpansions(collator, withPreContexts.get(), nullptr, true, &status);
        complete = U_SUCCESS(status);
        if (!complete) return;
        contractions = stringsOf(contractionSet.get());
        for (std::u16string& expansion : stringsOf(expansions.get())) contractions.push_back(std::move(expansion));
        std::sort(contractions.begin(), contractions.end());
        for (std::u16string& mapping : stringsOf(withPreContexts.get())) {
            if (!std::binary_search(contractions.begin(), contractions.end(), mapping)) {
                preContexts.push_back(std::move(mapping));
            }
        }
        uset_freeze(expansions.get());
    }
};

const CollatorMappings& collatorMappings(const UCollator* collator) {
    static std::mutex lock;
    static std::map<std::u16string, std::unique_ptr<CollatorMappings>> byRules;
    int32_t length = 0;
    const UChar* rules = ucol_getRules(collator, &length);
    std::u16string key(reinterpret_cast<const char16_t*>(rules), static_cast<std::size_t>(std::max(length, 0)));
    std::lock_guard<std::mutex> guard(lock);
    std::unique_ptr<CollatorMappings>& mappings = byRules[key];
    if (!mappings) mappings = std::make_unique<CollatorMappings>(collator);
    return *mappings;
}

// The units whose collation elements depend on their neighbours, as far as the
// neighbours can occur in compared text: every unit of a contraction, and every unit
// after the first of a mapping that depends on what precedes it (the first unit of
// such a pre-context keeps its own elements). All units when ICU cannot tell.
std::vector<bool> unitsWithContext(const CollatorMappings& mappings, const std::vector<bool>& occurring) {
    std::vector<bool> excluded(kUnitCount, !mappings.complete);
    const auto exclude = [&](const std::u16string& units, std::size_t from) {
        if (!std::all_of(units.begin(), units.end(), [&occurring](char16_t u) { return occurring[u]; })) return;
        for (std::size_t i = from; i < units.size(); ++i) excluded[units[i]] = true;
    };
    for (const std::u16string& contraction : mappings.contractions) exclude(contraction, 0);
    for (const std::u16string& preContext : mappings.preContexts) exclude(preContext, 1);
    return excluded;
}

constexpr std::uint16_t kNoClass = 0;
constexpr std::uint8_t kNoPrimary = 1;  // a sort key starting with the level separator

// What the search knows of a compared unit, or of a character whose compared form is
// one unit.
//
// `cls` is its class of equal units, kNoClass unless the unit has exactly one
// collation element of its own: no contraction, expansion or context, no combining
// class, no canonical decomposition, a primary weight. Two strings of such units are
// equal exactly when their units are pairwise of the same class, and where their
// classes first differ, the strings differ.
//
// [leadMin, leadMax] holds the first byte of the sort key of every string that starts
// with the unit, whatever follows; all bytes when that is not known.
struct UnitTraits {
    std::uint16_t cls = kNoClass;
    std::uint8_t leadMin = 0;
    std::uint8_t leadMax = 0xFF;
};

class UnitClassifier {
public:
    UnitClassifier(const UCollator* collator, const std::vector<bool>& occurring)
        : collator_(collator), traits_(kUnitCount), known_(kUnitCount, false) {
        if (!collator_) return;
        mappings_ = &collatorMappings(collator_);
        excluded_ = unitsWithContext(*mappings_, occurring);
        UErrorCode status = U_ZERO_ERROR;
        numeric_ = ucol_getAttribute(collator_, UCOL_NUMERIC_COLLATION, &status) == UCOL_ON;
        status = U_ZERO_ERROR;
        nfd_ = unorm2_getNFDInstance(&status);
        if (U_FAILURE(status)) nfd_ = nullptr;
    }

    UnitTraits traitsOf(char16_t unit) {
        if (!known_[unit]) {
            traits_[unit] = describe(unit);
            known_[unit] = true;
        }
        return traits_[unit];
    }

private:
    UnitTraits describe(char16_t unit) {
        UnitTraits traits;
        if (!collator_) {
            // Without collation data units are equal only to themselves.
            traits.cls = classWithKey(std::string{static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)});
            return traits;
        }
        if (!nfd_ || U16_IS_SURROGATE(unit) || (numeric_ && u_isdigit(unit))) return traits;
        const std::u16string alone(1, unit);
        const std::string key = sortKey(alone);
        if (key.empty()) return traits;
        if (keepsItsPlace(unit, key)) setLeads(unit, key, traits);
        if (!excluded_[unit] && standsAlone(unit, key)) traits.cls = classWithKey(key);
        return traits;
    }

    // The unit's own lead and those of the contractions that can start with it, also
    // through its canonical decomposition; unknown if any of them has no primary
    // weight, since then the units after it decide.
    void setLeads(char16_t unit, const std::string& key, UnitTraits& traits) const {
        std::uint8_t low = static_cast<std::uint8_t>(key[0]);
        std::uint8_t high = low;
        bool known = hasPrimary(key);
        std::u16string starts(1, unit);
        const std::u16string parts = decomposition(unit);
        if (!parts.empty() && parts[0] != unit) starts.push_back(parts[0]);
        const std::vector<std::u16string>& contractions = mappings_->contractions;
        for (char16_t start : starts) {
            for (auto it = std::lower_bound(contractions.begin(), contractions.end(), std::u16string(1, start));
                 known && it != contractions.end() && (*it)[0] == start; ++it) {
                const std::string contractionKey = sortKey(*it);
                known = !contractionKey.empty() && hasPrimary(contractionKey);
                if (!known) break;
                low = std::min(low, static_cast<std::uint8_t>(contractionKey[0]));
                high = std::max(high, static_cast<std::uint8_t>(contractionKey[0]));
            }
        }
        if (!known) return;
        traits.leadMin = low;
        traits.leadMax = high;
    }

    std::string sortKey(const std::u16string& text) const {
        std::string key(32, '\0');
        const UChar* source = reinterpret_cast<const UChar*>(text.data());
        const int32_t sourceLength = static_cast<int32_t>(text.size());
        int32_t length = ucol_getSortKey(collator_, source, sourceLength, reinterpret_cast<uint8_t*>(&key[0]),
                                         static_cast<int32_t>(key.size()));
        if (length > static_cast<int32_t>(key.size())) {
            key.resize(static_cast<std::size_t>(length));
            length = ucol_getSortKey(collator_, source, sourceLength, reinterpret_cast<uint8_t*>(&key[0]), length);
        }
        if (length < 2 || key[0] == 0) return std::string();
        key.resize(static_cast<std::size_t>(length));
        return key;
    }

    static bool hasPrimary(const std::string& key) { return static_cast<unsigned char>(key[0]) > kNoPrimary; }

    std::u16string decomposition(char16_t unit) const {
        UChar buffer[32];
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length = unorm2_getDecomposition(nfd_, unit, buffer, 32, &status);
        if (U_FAILURE(status) || length <= 0) return std::u16string();
        return std::u16string(reinterpret_cast<const char16_t*>(buffer), static_cast<std::size_t>(length));
    }

    // Canonical reordering moves only combining marks, among themselves: a unit stays
    // in front unless it or its decomposition holds a mark with a primary weight.
    bool keepsItsPlace(char16_t unit, const std::string& key) const {
        if (!hasPrimary(key)) return true;
        if (u_getCombiningClass(unit) != 0) return false;
        for (char16_t part : decomposition(unit)) {
            if (u_getCombiningClass(part) != 0) {
                const std::string partKey = sortKey(std::u16string(1, part));
                if (partKey.empty() || hasPrimary(partKey)) return false;
            }
        }
        return true;
    }

    bool standsAlone(char16_t unit, const std::string& key) const {
        return hasPrimary(key) && !uset_contains(mappings_->expansions.get(), unit) &&
               u_getCombiningClass(unit) == 0 && decomposition(unit).empty();
    }

    std::uint16_t classWithKey(const std::string& key) {
        auto inserted = keys_.emplace(key, static_cast<std::uint16_t>(keys_.size() + 1));
        return inserted.first->second;
    }

    const UCollator* collator_;
    std::vector<UnitTraits> traits_;
    std::vector<bool> known_;
    const CollatorMappings* mappings_ = nullptr;
    std::vector<bool> excluded_;
    bool numeric_ = false;
    const UNormalizer2* nfd_ = nullptr;
    std::map<std::string, std::uint16_t> keys_;
};

}  // namespace

// One locale with one case option: its collator and what the search knows of every
// character of its code page.
class MatchingLocale {
public:
    MatchingLocale(std::uint32_t lcid, bool matchCase, const CodePageTable& codePage)
        : codePage_(codePage), collator_(openLocaleCollator(lcid)) {
        if (collator_) ucol_setStrength(collator_.get(), matchCase ? UCOL_TERTIARY : UCOL_SECONDARY);
        describeCharacters();
    }

    const CodePageTable& codePage() const { return codePage_; }

    const UnitTraits& traitsOf(const unsigned char* at, std::size_t length) const {
        return length == 2 ? pairTraits_[CodePageTable::pairIndex(at[0], at[1])] : singleTraits_[*at];
    }

    bool equal(const std::u16string& a, const char16_t* b, std::size_t bLength) const {
        if (!collator_ || a.size() > INT32_MAX || bLength > INT32_MAX) {
            return a.size() == bLength && std::equal(a.begin(), a.end(), b);
        }
        return ucol_strcoll(collator_.get(), reinterpret_cast<const UChar*>(a.data()),
                            static_cast<int32_t>(a.size()), reinterpret_cast<const UChar*>(b),
                            static_cast<int32_t>(bLength)) == UCOL_EQUAL;
    }

private:
    // Calls f(bytes, length) for every character of the code page, a lone lead byte
    // included.
    template <typename F>
    void forEachCharacter(F f) const {
        for (unsigned b = 0; b < 256; ++b) {
            const unsigned char single = static_cast<unsigned char>(b);
            f(&single, 1);
            if (!codePage_.isLead(single)) continue;
            for (unsigned trail = 0; trail < 256; ++trail) {
                const unsigned char pair[2] = {single, static_cast<unsigned char>(trail)};
                f(pair, 2);
            }
        }
    }

    std::u16string comparedForm(const unsigned char* bytes, std::size_t length) const {
        std::u16string form;
        codePage_.appendCompared(bytes, length, form);
        return form;
    }

    void describeCharacters() {
        std::vector<bool> occurring(kUnitCount, false);
        forEachCharacter([&](const unsigned char* bytes, std::size_t length) {
            for (char16_t unit : comparedForm(bytes, length)) occurring[unit] = true;
        });
        UnitClassifier classifier(collator_.get(), occurring);
        if (codePage_.doubleByte()) pairTraits_.assign(CodePageTable::kPairTableSize, UnitTraits());
        forEachCharacter([&](const unsigned char* bytes, std::size_t length) {
            const std::u16string form = comparedForm(bytes, length);
            const UnitTraits traits = form.size() == 1 ? classifier.traitsOf(form[0]) : UnitTraits();
            if (length == 1) {
                singleTraits_[bytes[0]] = traits;
            } else {
                pairTraits_[CodePageTable::pairIndex(bytes[0], bytes[1])] = traits;
            }
        });
    }

    const CodePageTable& codePage_;
    CollatorHandle collator_;
    std::array<UnitTraits, 256> singleTraits_{};
    std::vector<UnitTraits> pairTraits_;
};

namespace {

struct MatchingCache {
    std::mutex lock;
    std::map<unsigned, std::unique_ptr<CodePageTable>> codePages;
    std::map<std::pair<std::uint32_t, bool>, std::unique_ptr<MatchingLocale>> locales;
};

const MatchingLocale& cachedMatchingLocale(std::uint32_t lcid, bool matchCase) {
    static MatchingCache cache;
    std::lock_guard<std::mutex> guard(cache.lock);
    std::unique_ptr<MatchingLocale>& locale = cache.locales[{lcid, matchCase}];
    if (!locale) {
        const unsigned codePage = ansiCodePage(lcid);
        std::unique_ptr<CodePageTable>& table = cache.codePages[codePage];
        if (!table) table = std::make_unique<CodePageTable>(codePage);
        locale = std::make_unique<MatchingLocale>(lcid, matchCase, *table);
    }
    return *locale;
}

// Working storage of a search, kept per thread so that searching allocates nothing
// once it has run a few times.
struct SearchScratch {
    std::vector<std::uint16_t> patternClasses;
    std::u16string pattern;
    std::u16string window;
};

SearchScratch& searchScratch() {
    thread_local SearchScratch scratch;
    return scratch;
}

enum class Verdict { kEqual, kUnequal, kUndecided };

// Slides a window as long as the pattern over the text one character at a time.
// Windows are told apart by the classes of their characters where those decide, and
// by the collator otherwise.
class PatternSearch {
public:
    PatternSearch(const MatchingLocale& locale, const std::string& text, const std::string& pattern,
                  bool wholeWord)
        : locale_(locale),
          codePage_(locale.codePage()),
          scratch_(searchScratch()),
          text_(reinterpret_cast<const unsigned char*>(text.data())),
          textEnd_(text_ + text.size()),
          size_(text.size()),
          pattern_(reinterpret_cast<const unsigned char*>(pattern.data())),
          length_(pattern.size()),
          wholeWord_(wholeWord) {
        classifyPattern();
        patternLeads_ = locale_.traitsOf(pattern_, codePage_.charLength(pattern_, pattern_ + length_));
    }

    bool found() {
        std::size_t previous = kNoPosition;
        for (std::size_t p = 0; p + length_ <= size_; p += codePage_.charLength(text_ + p, textEnd_)) {
            if (windowEqual(p) && (!wholeWord_ || bounded(previous, p))) return true;
            previous = p;
        }
        return false;
    }

private:
    // The classes of the pattern's characters up to the first one without a class.
    void classifyPattern() {
        scratch_.patternClasses.clear();
        const unsigned char* const end = pattern_ + length_;
        for (const unsigned char* at = pattern_; at < end;) {
            const std::size_t length = codePage_.charLength(at, end);
            const std::uint16_t cls = locale_.traitsOf(at, length).cls;
            if (cls == kNoClass) return;
            scratch_.patternClasses.push_back(cls);
            at += length;
        }
        patternClassified_ = true;
    }

    bool windowEqual(std::size_t p) {
        const Verdict verdict = compareClasses(p);
        if (verdict != Verdict::kUndecided) return verdict == Verdict::kEqual;
        if (leadsDiffer(p)) return false;
        return collatorEqual(p);
    }

    // Equal strings have equal sort keys, so a window whose sort key cannot start
    // the way the pattern's does differs from it.
    bool leadsDiffer(std::size_t p) const {
        const UnitTraits& window = locale_.traitsOf(text_ + p, codePage_.charLength(text_ + p, text_ + p + length_));
        return window.leadMax < patternLeads_.leadMin || patternLeads_.leadMax < window.leadMin;
    }

    Verdict compareClasses(std::size_t p) const {
        const std::vector<std::uint16_t>& pattern = scratch_.patternClasses;
        const unsigned char* const end = text_ + p + length_;
        std::size_t k = 0;
        for (const unsigned char* at = text_ + p; at < end; ++k) {
            const std::size_t length = codePage_.charLength(at, end);
            const std::uint16_t cls = locale_.traitsOf(at, length).cls;
            if (cls == kNoClass || (k == pattern.size() && !patternClassified_)) return Verdict::kUndecided;
            if (k == pattern.size() || cls != pattern[k]) return Verdict::kUnequal;
            at += length;
        }
        if (k < pattern.size()) return Verdict::kUnequal;
        return patternClassified_ ? Verdict::kEqual : Verdict::kUndecided;
    }

    // A window starts at a character; one that ends inside a double-byte character
    // ends with its lead byte standing alone.
    bool collatorEqual(std::size_t p) {
        if (!patternDecoded_) {
            scratch_.pattern.clear();
            codePage_.appendComparedText(pattern_, length_, scratch_.pattern);
            patternDecoded_ = true;
        }
        scratch_.window.clear();
        codePage_.appendComparedText(text_ + p, length_, scratch_.window);
        return locale_.equal(scratch_.pattern, scratch_.window.data(), scratch_.window.size());
    }

    // Whether neither the character before the window nor the one after it is a word
    // character; the ends of the text bound a word.
    bool bounded(std::size_t previous, std::size_t p) const {
        const std::size_t after = p + length_;
        return (previous == kNoPosition || !isWordCharacter(previous)) &&
               (after >= size_ || !isWordCharacter(after));
    }

    bool isWordCharacter(std::size_t at) const {
        const std::size_t length = codePage_.charLength(text_ + at, textEnd_);
        if (length == 1 && text_[at] == '&') return true;
        return u_isalnum(codePage_.decode(text_ + at, length));
    }

    const MatchingLocale& locale_;
    const CodePageTable& codePage_;
    SearchScratch& scratch_;
    const unsigned char* text_;
    const unsigned char* textEnd_;
    std::size_t size_;
    const unsigned char* pattern_;
    std::size_t length_;
    bool wholeWord_;
    bool patternClassified_ = false;
    UnitTraits patternLeads_;
    bool patternDecoded_ = false;
};

}  // namespace

TextMatcher::TextMatcher(std::uint32_t lcid, bool matchCase) : locale_(&cachedMatchingLocale(lcid, matchCase)) {}

std::string TextMatcher::withoutHotKeys(const std::string& text) const {
    const CodePageTable& codePage = locale_->codePage();
    const unsigned char* const begin = reinterpret_cast<const unsigned char*>(text.data());
    const unsigned char* const end = begin + text.size();
    std::string out;
    out.reserve(text.size());
    for (const unsigned char* at = begin; at < end;) {
        const std::size_t length = codePage.charLength(at, end);
        if (length != 1 || *at != '&') out.append(reinterpret_cast<const char*>(at), length);
        at += length;
    }
    return out;
}

bool TextMatcher::contains(const std::string& text, const std::string& pattern, bool wholeWord) const {
    if (pattern.empty()) return true;
    if (pattern.size() > text.size()) return false;
    return PatternSearch(*locale_, text, pattern, wholeWord).found();
}

}  // namespace platform
