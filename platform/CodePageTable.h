// How the characters of a Windows ANSI code page decode, and the form in which the
// pattern search compares them. Worked out once with ICU so that decoding later needs
// no converter (a converter keeps state) and no lock.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace platform::detail {

// A value for every character of a code page: each single byte, and each pair of a
// lead byte (always 0x80 or above) and any trail byte.
template <typename T>
class CharacterMap {
public:
    CharacterMap(bool doubleByte, const T& initial) {
        singles_.fill(initial);
        if (doubleByte) pairs_.assign(kPairCount, initial);
    }

    // `length` is 2 for a double-byte character, 1 otherwise.
    const T& at(const unsigned char* bytes, std::size_t length) const {
        return length == 2 ? pairs_[pairIndex(bytes)] : singles_[bytes[0]];
    }
    T& at(const unsigned char* bytes, std::size_t length) {
        return length == 2 ? pairs_[pairIndex(bytes)] : singles_[bytes[0]];
    }

private:
    static constexpr std::size_t kPairCount = 128 * 256;

    static std::size_t pairIndex(const unsigned char* bytes) {
        return static_cast<std::size_t>(bytes[0] - 0x80) * 256 + bytes[1];
    }

    std::array<T, 256> singles_;
    std::vector<T> pairs_;
};

class CodePageTable {
public:
    explicit CodePageTable(unsigned codePage);

    bool doubleByte() const { return doubleByte_; }

    // Length in bytes of the character at `at`; a lead byte at the end stands alone.
    std::size_t charLength(const unsigned char* at, const unsigned char* end) const {
        return lead_[*at] && end - at >= 2 ? 2 : 1;
    }

    char16_t decode(const unsigned char* at, std::size_t length) const {
        return decoded_.at(at, length);
    }

    // Appends the character in compared form: width folded, katakana as hiragana, so
    // that neither counts even when case does.
    void appendCompared(const unsigned char* at, std::size_t length, std::u16string& out) const {
        const char16_t unit = compared_.at(at, length);
        if (unit != kSeveralUnits) {
            out.push_back(unit);
        } else {
            appendComparedForm(decode(at, length), out);
        }
    }

    // Calls f(bytes, length) for every character of the code page, a lone lead byte
    // included.
    template <typename F>
    void forEachCharacter(F f) const {
        for (unsigned b = 0; b < 256; ++b) {
            const unsigned char single = static_cast<unsigned char>(b);
            f(&single, 1);
            if (!lead_[single]) continue;
            for (unsigned trail = 0; trail < 256; ++trail) {
                const unsigned char pair[2] = {single, static_cast<unsigned char>(trail)};
                f(pair, 2);
            }
        }
    }

private:
    // Stands for a compared form of more than one unit, which is rare enough to be
    // worked out each time (U+FFFF is not a character).
    static constexpr char16_t kSeveralUnits = 0xFFFF;

    static void appendComparedForm(char16_t decoded, std::u16string& out);
    static char16_t comparedUnit(char16_t decoded);

    // In this order: each member is built from the ones before it.
    std::array<bool, 256> lead_;
    bool doubleByte_;
    CharacterMap<char16_t> decoded_;
    CharacterMap<char16_t> compared_;
};

}  // namespace platform::detail
