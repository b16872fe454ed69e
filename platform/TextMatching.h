// Pattern search in texts held in a Windows locale's ANSI code page, comparing the
// way the locale's users expect. Used by the user filter over the phrase texts.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

class MatchingLocale;

class TextMatcher {
public:
    // matchCase false: case is ignored. Width (full/half-width forms) and kana type
    // (hiragana or katakana) are always ignored. The locale's collator and tables are
    // built on first use and kept for the life of the process; a matcher is a cheap
    // handle to them, and matchers may be used from several threads at once.
    TextMatcher(std::uint32_t lcid, bool matchCase);

    // The text with every '&' character removed; a '&' byte that is the trail byte of
    // a double-byte character stays.
    std::string withoutHotKeys(const std::string& text) const;

    // Whether the pattern occurs in the text: some window of the text starting at a
    // character and as many bytes long as the pattern compares equal to it. With
    // wholeWord, only a window whose neighbouring characters are neither alphanumeric
    // nor '&' counts. An empty pattern occurs in every text.
    bool contains(const std::string& text, const std::string& pattern, bool wholeWord) const;

private:
    const MatchingLocale* locale_;
};

}  // namespace platform
