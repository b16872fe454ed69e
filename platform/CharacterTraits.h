// What the pattern search knows of each character of a code page under one collator:
// the class of equal characters it belongs to, and how the sort key of a text that
// starts with it can start. These let most windows of a text be told apart from the
// pattern without the collator.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/CodePageTable.h"

struct UCollator;

namespace platform::detail {

constexpr std::uint16_t kNoClass = 0;

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

class CharacterTraits {
public:
    // Without a collator every unit is a class of its own.
    CharacterTraits(const UCollator* collator, const CodePageTable& codePage);

    const UnitTraits& of(const unsigned char* at, std::size_t length) const {
        return traits_.at(at, length);
    }

private:
    CharacterMap<UnitTraits> traits_;
};

}  // namespace platform::detail
