// What a collator maps beyond single code points: contractions, expansions and
// mappings that depend on what precedes. They do not depend on the strength, and ICU
// takes long to list them, so they are listed once per set of tailoring rules.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

struct UCollator;
struct USet;

namespace platform::detail {

// The number of UTF-16 code units, the size of a table indexed by unit.
constexpr std::size_t kUnitCount = 0x10000;

class CollatorMappings {
public:
    // The mappings of the collator's rules, listed on first use and kept for the life of
    // the process.
    static const CollatorMappings& of(const UCollator* collator);

    explicit CollatorMappings(const UCollator* collator);

    // The contractions, and the expansions of several code points, in sorted order.
    const std::vector<std::u16string>& contractions() const { return contractions_; }

    // Whether the unit expands to several collation elements.
    bool expands(char16_t unit) const;

    // The units whose collation elements depend on their neighbours, as far as the
    // neighbours can occur: every unit of a contraction, and every unit after the
    // first of a mapping that depends on what precedes it (the first unit of such a
    // pre-context keeps its own elements). All units when ICU cannot tell. Both are
    // indexed by unit.
    std::vector<bool> unitsWithContext(const std::vector<bool>& occurring) const;

private:
    struct SetCloser {
        void operator()(USet* set) const;
    };
    using SetHandle = std::unique_ptr<USet, SetCloser>;

    std::vector<std::u16string> contractions_;
    std::vector<std::u16string> preContexts_;  // the context, then the code point it changes
    SetHandle expansions_;
    bool complete_ = false;
};

}  // namespace platform::detail
