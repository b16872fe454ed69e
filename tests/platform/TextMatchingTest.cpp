// Pattern search in code-page texts, compared the way the locale's users expect.
#include "platform/TextMatching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/LocaleCollation.h"

namespace platform {
namespace {

constexpr std::uint32_t kEnglish = 1033;
constexpr std::uint32_t kGerman = 1031;
constexpr std::uint32_t kRussian = 1049;
constexpr std::uint32_t kJapanese = 1041;
constexpr std::uint32_t kTurkish = 1055;
constexpr std::uint32_t kHungarian = 1038;
constexpr std::uint32_t kDanish = 1030;
constexpr std::uint32_t kThai = 1054;
constexpr std::uint32_t kChinese = 2052;
constexpr std::uint32_t kKorean = 1042;

constexpr bool kIgnoringCase = false;
constexpr bool kMatchingCase = true;

bool found(std::uint32_t lcid, bool matchCase, const std::string& text, const std::string& pattern) {
    return TextMatcher(lcid, matchCase).contains(text, pattern, false);
}

bool foundWord(std::uint32_t lcid, const std::string& text, const std::string& pattern) {
    return TextMatcher(lcid, kIgnoringCase).contains(text, pattern, true);
}

// windows-1251
const std::string kFileUpper = "\xD4\xC0\xC9\xCB";  // ФАЙЛ
const std::string kFileLower = "\xF4\xE0\xE9\xEB";  // файл
// cp932
const std::string kKatakanaKana = "\x83\x4A\x83\x69";  // カナ
const std::string kHiraganaKana = "\x82\xA9\x82\xC8";  // かな
const std::string kWideA = "\x82\x60";                // Ａ
const std::string kWideB = "\x82\x61";                // Ｂ

TEST(TextMatcherCase, LatinLettersMatchInEitherCaseUnlessCaseCounts) {
    EXPECT_TRUE(found(kEnglish, kIgnoringCase, "Open the File", "file"));
    EXPECT_TRUE(found(kEnglish, kIgnoringCase, "OPEN THE FILE", "the f"));
    EXPECT_FALSE(found(kEnglish, kMatchingCase, "Open the File", "file"));
    EXPECT_TRUE(found(kEnglish, kMatchingCase, "Open the File", "File"));
    EXPECT_FALSE(found(kEnglish, kIgnoringCase, "Open the File", "files"));
}

TEST(TextMatcherCase, GermanUmlautsFoldCaseButKeepTheirAccent) {
    EXPECT_TRUE(found(kGerman, kIgnoringCase, "Datei \xC4NDERN", "\xE4ndern"));
    EXPECT_FALSE(found(kGerman, kMatchingCase, "Datei \xC4NDERN", "\xE4ndern"));
    EXPECT_TRUE(found(kGerman, kMatchingCase, "Datei \xC4NDERN", "\xC4NDERN"));
    EXPECT_FALSE(found(kGerman, kIgnoringCase, "Datei \xC4NDERN", "andern"));
}

TEST(TextMatcherCase, CyrillicLettersFoldCase) {
    const std::string text = "\xCE\xF2\xEA\xF0\xFB\xF2\xFC " + kFileUpper;  // Открыть ФАЙЛ
    EXPECT_TRUE(found(kRussian, kIgnoringCase, text, kFileLower));
    EXPECT_FALSE(found(kRussian, kMatchingCase, text, kFileLower));
    EXPECT_TRUE(found(kRussian, kMatchingCase, text, kFileUpper));
}

TEST(TextMatcherCase, TurkishDottedAndDotlessIAreDifferentLetters) {
    EXPECT_TRUE(found(kEnglish, kIgnoringCase, "FILE", "file"));
    EXPECT_FALSE(found(kTurkish, kIgnoringCase, "FILE", "file"));
    EXPECT_TRUE(found(kTurkish, kIgnoringCase, "F\xDDLE", "file"));  // İ
    EXPECT_TRUE(found(kTurkish, kIgnoringCase, "FILE", "f\xFDle"));  // ı
    EXPECT_TRUE(found(kTurkish, kIgnoringCase, "OPEN", "open"));
}

TEST(TextMatcherCollation, LetterPairsThatAreOneLetterInTheLocale) {
    // Danish "aa" and "Aa" are one letter, "aA" is two.
    EXPECT_TRUE(found(kDanish, kIgnoringCase, "xAa", "aa"));
    EXPECT_FALSE(found(kDanish, kIgnoringCase, "xaA", "aa"));
    EXPECT_TRUE(found(kEnglish, kIgnoringCase, "xaA", "aa"));
    // So are Hungarian "cs" and "Cs", but not "cS".
    EXPECT_TRUE(found(kHungarian, kIgnoringCase, "Csak", "cs"));
    EXPECT_FALSE(found(kHungarian, kIgnoringCase, "cSak", "cs"));
    // Danish "aa" is å; with a soft hyphen, which is ignored, both take two bytes.
    EXPECT_TRUE(found(kDanish, kIgnoringCase, "Haag", "\xE5\xAD"));
}

TEST(TextMatcherCollation, CharactersThatExpandOrRepeatTheirNeighbour) {
    // ™ collates as "TM".
    EXPECT_TRUE(found(kEnglish, kIgnoringCase, "Brand\x99\xAD", "tm"));
    // The iteration mark and the prolonged sound mark repeat the kana before them:
    // かゝ is かか, かー is かあ, with a difference in the third level only.
    EXPECT_TRUE(found(kJapanese, kIgnoringCase, "\x82\xA9\x81\x54", "\x82\xA9\x82\xA9"));
    EXPECT_TRUE(found(kJapanese, kIgnoringCase, "\x82\xA9\x81\x5B", "\x82\xA9\x82\xA0"));
    EXPECT_FALSE(found(kJapanese, kMatchingCase, "\x82\xA9\x81\x5B", "\x82\xA9\x82\xA0"));
}

TEST(TextMatcherCollation, CombiningMarksInEitherCanonicalOrder) {
    // Thai sara u and phinthu are canonically reordered, so either order is equal.
    EXPECT_TRUE(found(kThai, kMatchingCase, "\xA1\xD8\xDA", "\xDA\xD8"));
    EXPECT_TRUE(found(kThai, kMatchingCase, "\xA1\xDA\xD8", "\xD8\xDA"));
}

TEST(TextMatcherWidthAndKana, WidthIsIgnoredEvenWhenCaseCounts) {
    const std::string text = "x" + kWideA + "B";  // xＡB
    EXPECT_TRUE(found(kJapanese, kMatchingCase, text, "A" + kWideB));
    EXPECT_TRUE(found(kJapanese, kIgnoringCase, text, "a" + kWideB));
    EXPECT_FALSE(found(kJapanese, kMatchingCase, text, "a" + kWideB));
}

TEST(TextMatcherWidthAndKana, WidthIsIgnoredWhereTheCollationCountsIt) {
    // Ａ and Ｂ in GBK, whose collation tells widths apart at the third level.
    EXPECT_TRUE(found(kChinese, kMatchingCase, "x\xA3\xC1" "B", "A\xA3\xC2"));
    EXPECT_FALSE(found(kChinese, kMatchingCase, "x\xA3\xC1" "B", "a\xA3\xC2"));
}

TEST(TextMatcherWidthAndKana, KatakanaAndHiraganaAreEqual) {
    EXPECT_TRUE(found(kJapanese, kMatchingCase, "1 " + kKatakanaKana, kHiraganaKana));
    EXPECT_TRUE(found(kJapanese, kIgnoringCase, kHiraganaKana + " 2", kKatakanaKana));
    // Half-width katakana ｶ (one byte) with Ａ against カ and A.
    EXPECT_TRUE(found(kJapanese, kMatchingCase, "\x83\x4A" "A", "\xB6" + kWideA));
    EXPECT_FALSE(found(kJapanese, kMatchingCase, "\x83\x4A" "A", "\xB6" + kWideB));
    // Collations that tell kana types apart at the level of case too: カナ and かな in GBK.
    EXPECT_TRUE(found(kChinese, kMatchingCase, "\xA5\xAB\xA5\xCA", "\xA4\xAB\xA4\xCA"));
}

TEST(TextMatcherWholeWord, NeighboursMustNotBeWordCharacters) {
    EXPECT_TRUE(foundWord(kEnglish, "the cat sat", "cat"));
    EXPECT_TRUE(foundWord(kEnglish, "the cat.", "cat"));
    EXPECT_TRUE(foundWord(kEnglish, "cat", "cat"));
    EXPECT_TRUE(foundWord(kEnglish, "cat sat", "CAT"));
    EXPECT_TRUE(foundWord(kEnglish, "sat (cat)", "cat"));
    EXPECT_FALSE(foundWord(kEnglish, "concatenate", "cat"));
    EXPECT_FALSE(foundWord(kEnglish, "cat5", "cat"));
    EXPECT_FALSE(foundWord(kEnglish, "5cat", "cat"));
}

TEST(TextMatcherWholeWord, AnEqualWindowThatIsNoWordLetsTheSearchGoOn) {
    EXPECT_TRUE(foundWord(kEnglish, "catalog cat", "cat"));
    EXPECT_TRUE(foundWord(kEnglish, "bobcat, cat", "cat"));
    EXPECT_FALSE(foundWord(kEnglish, "catalog bobcat", "cat"));
}

TEST(TextMatcherWholeWord, AmpersandCountsAsAWordCharacter) {
    EXPECT_FALSE(foundWord(kEnglish, "&cat", "cat"));
    EXPECT_FALSE(foundWord(kEnglish, "cat&", "cat"));
    EXPECT_TRUE(foundWord(kEnglish, "&cat", "&cat"));
}

TEST(TextMatcherWholeWord, LettersOfTheCodePageAreWordCharacters) {
    EXPECT_FALSE(foundWord(kEnglish, "caf\xE9", "caf"));   // café
    EXPECT_FALSE(foundWord(kEnglish, "\xE9t\xE9", "t"));
    EXPECT_FALSE(foundWord(kRussian, kFileUpper + "\xDB", kFileLower));  // ФАЙЛЫ
    EXPECT_TRUE(foundWord(kRussian, kFileUpper + " \xDB", kFileLower));
    EXPECT_FALSE(foundWord(kJapanese, kKatakanaKana + "\x83\x69", kHiraganaKana));
    EXPECT_TRUE(foundWord(kJapanese, kKatakanaKana + "\x81\x42", kHiraganaKana));  // followed by 。
}

TEST(TextMatcherCharacters, WindowsStartOnlyAtCharacterBoundaries) {
    // In cp932 0x60 and 0x5C are trail bytes here (Ａ, 表), never characters of their own.
    EXPECT_FALSE(found(kJapanese, kMatchingCase, kWideA, "`"));
    EXPECT_FALSE(found(kJapanese, kMatchingCase, "\x95\x5C", "\\"));
    EXPECT_TRUE(found(kJapanese, kMatchingCase, "\x95\x5C\\", "\\"));
    // The same bytes in windows-1252 are two characters.
    EXPECT_TRUE(found(kEnglish, kMatchingCase, "\x82\x60", "`"));
}

TEST(TextMatcherCharacters, HotKeyAmpersandsAreRemoved) {
    const TextMatcher english(kEnglish, kIgnoringCase);
    EXPECT_EQ("Open", english.withoutHotKeys("&Open"));
    EXPECT_EQ("Save As...", english.withoutHotKeys("Save &As..."));
    EXPECT_EQ("", english.withoutHotKeys("&&"));
    EXPECT_EQ("\x82", english.withoutHotKeys("\x82&"));
    EXPECT_EQ("", english.withoutHotKeys(""));
}

TEST(TextMatcherCharacters, AnAmpersandTrailByteStays) {
    const TextMatcher japanese(kJapanese, kIgnoringCase);
    EXPECT_EQ("\x82\x26" "A", japanese.withoutHotKeys("\x82\x26&A"));
    EXPECT_EQ("A\x82", japanese.withoutHotKeys("&A&\x82"));
    const TextMatcher chinese(kChinese, kIgnoringCase);
    EXPECT_EQ("\xFE\x26", chinese.withoutHotKeys("&\xFE\x26"));
}

TEST(TextMatcherEdges, EmptyAndOverlongPatterns) {
    EXPECT_TRUE(found(kEnglish, kIgnoringCase, "", ""));
    EXPECT_TRUE(found(kEnglish, kIgnoringCase, "abc", ""));
    EXPECT_TRUE(foundWord(kEnglish, "abc", ""));
    EXPECT_FALSE(found(kEnglish, kIgnoringCase, "ab", "abc"));
    EXPECT_FALSE(found(kEnglish, kIgnoringCase, "", "a"));
    EXPECT_TRUE(found(kEnglish, kIgnoringCase, "abc", "ABC"));
}

TEST(TextMatcherEdges, InvalidBytesAreComparedNotIgnored) {
    // 0x80 and 0xA0 are not characters of cp932; they must not vanish from a window.
    EXPECT_FALSE(found(kJapanese, kIgnoringCase, "xA\x80", "\x80" "A"));
    EXPECT_TRUE(found(kJapanese, kIgnoringCase, "xA\x80", "a\x80"));
    // A lead byte at the end of the text or of the window stands alone.
    EXPECT_TRUE(found(kJapanese, kIgnoringCase, "ab\x82", "B\x82"));
    EXPECT_TRUE(found(kJapanese, kIgnoringCase, "ab\x82\x60", "b\x82"));
    EXPECT_FALSE(foundWord(kJapanese, "ab\x82\x60", "b\x82"));
}

TEST(TextMatcherEdges, ArbitraryBytesNeverBreakTheSearch) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<std::size_t> length(0, 12);
    for (std::uint32_t lcid : {kEnglish, kJapanese, kChinese, kKorean, 1028u, kRussian, kThai, 1066u}) {
        for (bool matchCase : {false, true}) {
            const TextMatcher matcher(lcid, matchCase);
            for (int round = 0; round < 200; ++round) {
                std::string text(length(random), '\0');
                for (char& c : text) c = static_cast<char>(byte(random));
                const std::string prefix = text.substr(0, length(random));
                // A prefix is the first window itself.
                EXPECT_TRUE(matcher.contains(text, prefix, false)) << lcid;
                std::string pattern(length(random) % 4 + 1, '\0');
                for (char& c : pattern) c = static_cast<char>(byte(random));
                const bool first = matcher.contains(text, pattern, round % 2 == 0);
                EXPECT_EQ(first, matcher.contains(text, pattern, round % 2 == 0));
                EXPECT_LE(matcher.withoutHotKeys(text).size(), text.size());
            }
        }
    }
}

// Characters that the locales' collations treat specially: case pairs, Turkish i,
// Hungarian and Danish contractions, expansions (ä ß æ), a soft hyphen that is
// ignored, Thai vowels written before their consonant and tone marks, Vietnamese
// combining accents, Japanese width forms, voiced marks, the prolonged sound mark and
// the iteration mark whose weights depend on the kana before them. Few characters
// each, so that windows often nearly match.
struct Alphabet {
    std::uint32_t lcid;
    std::vector<std::string> characters;
};

std::vector<std::string> singleBytes(const std::string& bytes) {
    std::vector<std::string> characters;
    for (char c : bytes) characters.emplace_back(1, c);
    return characters;
}

const std::vector<Alphabet>& alphabets() {
    static const std::string latin = "aAiIcCsSzZyYdD .-'1\xE4\xC4\xDF\xE6\xAD\xE5\xC5";
    static const std::vector<Alphabet> all = {
        {kEnglish, singleBytes(latin)},
        {kGerman, singleBytes("aAsSuU\xE4\xC4\xDF\xFC\xDC")},
        {kTurkish, singleBytes("iI\xFD\xDD\xE7\xC7 ")},
        {kHungarian, singleBytes("cCsSzZyYgGdD")},
        {kDanish, singleBytes("aAbB\xE5\xC5\xE6\xAD")},
        {kRussian, singleBytes("\xE0\xC0\xE5\xC5\xB8\xA8\xE9\xC9 -")},
        {kThai, singleBytes("\xA1\xA2\xE0\xE4\xD4\xE8 .")},
        {1066, singleBytes("aAe\xE2\xC3\xEC\xCC\xD2\xF2")},
        {kJapanese,
         {"a", "A", " ", "\x82\x60", "\x82\x81", "\x82\xA0", "\x82\xA9", "\x82\xAA", "\x81\x5B", "\x81\x54", "\x81\x4A",
          "\xB6", "\xDE", "\x88\x9F", "\x81\x42"}},
        {kChinese, {"a", "A", " ", "\xA3\xC1", "\xA3\xE1", "\xB0\xA1", "\xA4\xAB", "\xA9\x60"}},
    };
    return all;
}

// Some characters of the alphabet and where each starts.
struct CharacterText {
    std::string bytes;
    std::vector<std::size_t> starts;
};

CharacterText randomText(std::mt19937& random, const std::vector<std::string>& characters, std::size_t length) {
    std::uniform_int_distribution<std::size_t> pick(0, characters.size() - 1);
    CharacterText text;
    for (std::size_t i = 0; i < length; ++i) {
        text.starts.push_back(text.bytes.size());
        text.bytes += characters[pick(random)];
    }
    return text;
}

// Whether a window starting at a character and ending at one equals the pattern by
// the locale's collation, asked one window at a time. A window that ends inside a
// character ends in a lone lead byte, which no pattern made of whole characters
// equals.
bool foundByCollation(std::uint32_t lcid, bool matchCase, const CharacterText& text, const std::string& pattern) {
    const unsigned flags = kIgnoreWidth | (matchCase ? 0u : unsigned{kIgnoreCase});
    for (std::size_t p : text.starts) {
        const std::size_t end = p + pattern.size();
        if (end > text.bytes.size()) break;
        const bool endsAtCharacter =
            end == text.bytes.size() || std::find(text.starts.begin(), text.starts.end(), end) != text.starts.end();
        if (endsAtCharacter && compareText(lcid, flags, text.bytes.data() + p, pattern.size(), pattern.data(),
                                           pattern.size()) == 0) {
            return true;
        }
    }
    return false;
}

TEST(TextMatcherAgreesWithCollation, OnRandomTexts) {
    std::mt19937 random(11);
    std::uniform_int_distribution<std::size_t> textLength(0, 8);
    std::uniform_int_distribution<std::size_t> patternLength(1, 3);
    for (const Alphabet& alphabet : alphabets()) {
        for (bool matchCase : {false, true}) {
            const TextMatcher matcher(alphabet.lcid, matchCase);
            for (int round = 0; round < 500; ++round) {
                const CharacterText text = randomText(random, alphabet.characters, textLength(random));
                const std::string pattern = randomText(random, alphabet.characters, patternLength(random)).bytes;
                EXPECT_EQ(foundByCollation(alphabet.lcid, matchCase, text, pattern),
                          matcher.contains(text.bytes, pattern, false))
                    << "locale " << alphabet.lcid << " matchCase " << matchCase << " text '" << text.bytes
                    << "' pattern '" << pattern << "'";
            }
        }
    }
}

TEST(TextMatcherThreads, MatchersOfDifferentLocalesRunTogether) {
    std::atomic<int> failures{0};
    const auto search = [&failures](std::uint32_t lcid, const std::string& text, const std::string& pattern) {
        for (int i = 0; i < 2000; ++i) {
            const TextMatcher matcher(lcid, i % 2 == 0);
            if (!matcher.contains(text, pattern, true) || matcher.contains(text, pattern + "x", false)) ++failures;
        }
    };
    std::vector<std::thread> threads;
    threads.emplace_back(search, kRussian, "\xCE\xF2 " + kFileUpper, kFileUpper);
    threads.emplace_back(search, kJapanese, "A " + kKatakanaKana, kHiraganaKana);
    threads.emplace_back(search, kGerman, "Datei \xE4ndern", "\xE4ndern");
    threads.emplace_back(search, kEnglish, "Datei \xE4ndern", "Datei");
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(0, failures.load());
}

}  // namespace
}  // namespace platform
