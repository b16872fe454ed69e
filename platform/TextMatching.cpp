// The matcher: one cached locale state per locale and case option, and the search
// that slides the pattern over a text.
#include "platform/TextMatching.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/CharacterTraits.h"
#include "platform/CodePageTable.h"
#include "platform/LocaleCollation.h"

namespace platform {

using detail::CharacterTraits;
using detail::CodePageTable;
using detail::kNoClass;
using detail::UnitTraits;

namespace {

constexpr std::size_t kNoPosition = static_cast<std::size_t>(-1);

// The locale's collator at the strength that the case option asks for.
CollatorHandle openMatchingCollator(std::uint32_t lcid, bool matchCase) {
    CollatorHandle collator = openLocaleCollator(lcid);
    if (collator) ucol_setStrength(collator.get(), matchCase ? UCOL_TERTIARY : UCOL_SECONDARY);
    return collator;
}

}  // namespace

// One locale with one case option: its collator and what the search knows of every
// character of its code page.
class MatchingLocale {
public:
    MatchingLocale(std::uint32_t lcid, bool matchCase, const CodePageTable& codePage)
        : codePage_(codePage),
          collator_(openMatchingCollator(lcid, matchCase)),
          characters_(collator_.get(), codePage) {}

    const CodePageTable& codePage() const { return codePage_; }

    const UnitTraits& traitsOf(const unsigned char* at, std::size_t length) const {
        return characters_.of(at, length);
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
    const CodePageTable& codePage_;
    CollatorHandle collator_;
    CharacterTraits characters_;
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
        patternLeads_ =
            locale_.traitsOf(pattern_, codePage_.charLength(pattern_, pattern_ + length_));
    }

    bool found() {
        std::size_t previous = kNoPosition;
        for (std::size_t p = 0; p + length_ <= size_;
             p += codePage_.charLength(text_ + p, textEnd_)) {
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
        const UnitTraits& window =
            locale_.traitsOf(text_ + p, codePage_.charLength(text_ + p, text_ + p + length_));
        return window.leadMax < patternLeads_.leadMin || patternLeads_.leadMax < window.leadMin;
    }

    Verdict compareClasses(std::size_t p) const {
        const std::vector<std::uint16_t>& pattern = scratch_.patternClasses;
        const unsigned char* const end = text_ + p + length_;
        std::size_t k = 0;
        for (const unsigned char* at = text_ + p; at < end; ++k) {
            const std::size_t length = codePage_.charLength(at, end);
            const std::uint16_t cls = locale_.traitsOf(at, length).cls;
            if (cls == kNoClass || (k == pattern.size() && !patternClassified_)) {
                return Verdict::kUndecided;
            }
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
            appendCompared(pattern_, scratch_.pattern);
            patternDecoded_ = true;
        }
        scratch_.window.clear();
        appendCompared(text_ + p, scratch_.window);
        return locale_.equal(scratch_.pattern, scratch_.window.data(), scratch_.window.size());
    }

    // Appends as many bytes from `bytes` as the pattern is long, in compared form.
    void appendCompared(const unsigned char* bytes, std::u16string& out) const {
        const unsigned char* const end = bytes + length_;
        for (const unsigned char* at = bytes; at < end;) {
            const std::size_t length = codePage_.charLength(at, end);
            codePage_.appendCompared(at, length, out);
            at += length;
        }
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

TextMatcher::TextMatcher(std::uint32_t lcid, bool matchCase)
    : locale_(&cachedMatchingLocale(lcid, matchCase)) {}

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

bool TextMatcher::contains(const std::string& text, const std::string& pattern,
                           bool wholeWord) const {
    if (pattern.empty()) return true;
    if (pattern.size() > text.size()) return false;
    return PatternSearch(*locale_, text, pattern, wholeWord).found();
}

}  // namespace platform
