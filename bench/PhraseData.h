// The phrases the phrase benchmarks add: UI strings of 10 to 60 bytes made of a
// small vocabulary, a tenth of them repeating one of the first texts (so that
// families of several members come about), half translated, about one in twenty
// holding the word the user filter finds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "qvb/qvb.h"

namespace bench {

constexpr DWORD kPLangId = 1033;
constexpr DWORD kSLangId = 1031;
constexpr std::uint32_t kNotTranslatedMarker = 1;
constexpr std::uint32_t kUserFilterMarker = 2;
// The find text of the user filter; no word of the vocabulary contains it, and
// kFindWord is put into about kFindShare of the source texts.
constexpr const char* kFindText = "SPELL";
constexpr const char* kFindWord = "spelling";
constexpr double kFindShare = 0.05;
constexpr double kRepeatShare = 0.10;
// Repeats are drawn from this many of the first texts.
constexpr std::size_t kCommonTexts = 2000;

struct PhraseText {
    CString sText;
    CString sTextFiltered;
    CString tText;  // empty when not translated
    bool translated = false;
};

// What the phrase list shows of a text: no hot-key marks and no trailing punctuation.
std::string filtered(const std::string& text);

// A source text and its stand-in translation; `withFindWord` puts the find word
// among its first four words.
std::pair<std::string, std::string> makeText(std::mt19937& random, bool withFindWord);

// The user filter the benchmarks refresh with: the find text in the source text,
// every state switch at "either".
USERFILTER userFilter();
// The hand-written side's test for that filter: ASCII case folding only, so it is
// cheaper per phrase than the library's match under the pair's locale.
bool inUserFilter(const char* sText);

// The same phrases, one at a time, for a given seed; holds only the common texts,
// so that a load of millions needs no memory of its own.
class PhraseStream {
public:
    explicit PhraseStream(std::uint32_t seed) : random_(seed) {}

    PhraseText next();
    bool lastRepeated() const { return lastRepeated_; }

private:
    std::mt19937 random_;
    std::uniform_real_distribution<double> share_{0.0, 1.0};
    std::vector<std::pair<std::string, std::string>> common_;
    bool lastRepeated_ = false;
};

}  // namespace bench
