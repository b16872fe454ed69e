// Classifying the compared units of a code page's characters with ICU.
#include "platform/CharacterTraits.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/unorm2.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "platform/CollatorMappings.h"

namespace platform::detail {

namespace {

constexpr std::uint8_t kNoPrimary = 1;  // a sort key starting with the level separator

// Works out the traits of units under one collator, each on first request.
class UnitClassifier {
public:
    UnitClassifier(const UCollator* collator, const std::vector<bool>& occurring)
        : collator_(collator), traits_(kUnitCount), known_(kUnitCount, false) {
        if (!collator_) return;
        mappings_ = &CollatorMappings::of(collator_);
        excluded_ = mappings_->unitsWithContext(occurring);
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
            traits.cls = classWithKey(
                std::string{static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)});
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
        const std::vector<std::u16string>& contractions = mappings_->contractions();
        for (char16_t start : starts) {
            for (auto it = std::lower_bound(contractions.begin(), contractions.end(),
                                            std::u16string(1, start));
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
        int32_t length =
            ucol_getSortKey(collator_, source, sourceLength, reinterpret_cast<uint8_t*>(&key[0]),
                            static_cast<int32_t>(key.size()));
        if (length > static_cast<int32_t>(key.size())) {
            key.resize(static_cast<std::size_t>(length));
            length = ucol_getSortKey(collator_, source, sourceLength,
                                     reinterpret_cast<uint8_t*>(&key[0]), length);
        }
        if (length < 2 || key[0] == 0) return std::string();
        key.resize(static_cast<std::size_t>(length));
        return key;
    }

    static bool hasPrimary(const std::string& key) {
        return static_cast<unsigned char>(key[0]) > kNoPrimary;
    }

    std::u16string decomposition(char16_t unit) const {
        UChar buffer[32];
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length = unorm2_getDecomposition(nfd_, unit, buffer, 32, &status);
        if (U_FAILURE(status) || length <= 0) return std::u16string();
        return std::u16string(reinterpret_cast<const char16_t*>(buffer),
                              static_cast<std::size_t>(length));
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
        return hasPrimary(key) && !mappings_->expands(unit) && u_getCombiningClass(unit) == 0 &&
               decomposition(unit).empty();
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

std::u16string comparedForm(const CodePageTable& codePage, const unsigned char* bytes,
                            std::size_t length) {
    std::u16string form;
    codePage.appendCompared(bytes, length, form);
    return form;
}

}  // namespace

CharacterTraits::CharacterTraits(const UCollator* collator, const CodePageTable& codePage)
    : traits_(codePage.doubleByte(), UnitTraits()) {
    std::vector<bool> occurring(kUnitCount, false);
    codePage.forEachCharacter([&](const unsigned char* bytes, std::size_t length) {
        for (char16_t unit : comparedForm(codePage, bytes, length)) occurring[unit] = true;
    });
    UnitClassifier classifier(collator, occurring);
    codePage.forEachCharacter([&](const unsigned char* bytes, std::size_t length) {
        const std::u16string form = comparedForm(codePage, bytes, length);
        traits_.at(bytes, length) = form.size() == 1 ? classifier.traitsOf(form[0]) : UnitTraits();
    });
}

}  // namespace platform::detail
