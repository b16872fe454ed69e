// Listing a collator's mappings with ICU, cached per set of tailoring rules.
#include "platform/CollatorMappings.h"

#include <unicode/ucol.h>
#include <unicode/uset.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

namespace platform::detail {

namespace {

// The strings of a set.
std::vector<std::u16string> stringsOf(const USet* set) {
    std::vector<std::u16string> strings;
    std::vector<UChar> text(64);
    const int32_t items = uset_getItemCount(set);
    for (int32_t i = 0; i < items; ++i) {
        UChar32 first = 0;
        UChar32 last = 0;
        UErrorCode status = U_ZERO_ERROR;
        int32_t length = uset_getItem(set, i, &first, &last, text.data(),
                                      static_cast<int32_t>(text.size()), &status);
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            text.resize(static_cast<std::size_t>(length));
            status = U_ZERO_ERROR;
            length = uset_getItem(set, i, &first, &last, text.data(), length, &status);
        }
        if (U_SUCCESS(status) && length > 0) {
            strings.emplace_back(reinterpret_cast<const char16_t*>(text.data()),
                                 static_cast<std::size_t>(length));
        }
    }
    return strings;
}

}  // namespace

void CollatorMappings::SetCloser::operator()(USet* set) const {
    uset_close(set);
}

const CollatorMappings& CollatorMappings::of(const UCollator* collator) {
    static std::mutex lock;
    static std::map<std::u16string, std::unique_ptr<CollatorMappings>> byRules;
    int32_t length = 0;
    const UChar* rules = ucol_getRules(collator, &length);
    std::u16string key(reinterpret_cast<const char16_t*>(rules),
                       static_cast<std::size_t>(std::max(length, 0)));
    std::lock_guard<std::mutex> guard(lock);
    std::unique_ptr<CollatorMappings>& mappings = byRules[key];
    if (!mappings) mappings = std::make_unique<CollatorMappings>(collator);
    return *mappings;
}

CollatorMappings::CollatorMappings(const UCollator* collator) : expansions_(uset_openEmpty()) {
    SetHandle contractionSet(uset_openEmpty());
    SetHandle withPreContexts(uset_openEmpty());
    UErrorCode status = U_ZERO_ERROR;
    ucol_getContractionsAndExpansions(collator, contractionSet.get(), expansions_.get(), false,
                                      &status);
    ucol_getContractionsAndExpansions(collator, withPreContexts.get(), nullptr, true, &status);
    complete_ = U_SUCCESS(status);
    if (!complete_) return;
    contractions_ = stringsOf(contractionSet.get());
    for (std::u16string& expansion : stringsOf(expansions_.get())) {
        contractions_.push_back(std::move(expansion));
    }
    std::sort(contractions_.begin(), contractions_.end());
    for (std::u16string& mapping : stringsOf(withPreContexts.get())) {
        if (!std::binary_search(contractions_.begin(), contractions_.end(), mapping)) {
            preContexts_.push_back(std::move(mapping));
        }
    }
    uset_freeze(expansions_.get());
}

bool CollatorMappings::expands(char16_t unit) const {
    return uset_contains(expansions_.get(), unit);
}

std::vector<bool> CollatorMappings::unitsWithContext(const std::vector<bool>& occurring) const {
    std::vector<bool> excluded(kUnitCount, !complete_);
    const auto exclude = [&](const std::u16string& units, std::size_t from) {
        const auto occurs = [&occurring](char16_t u) { return occurring[u]; };
        if (!std::all_of(units.begin(), units.end(), occurs)) return;
        for (std::size_t i = from; i < units.size(); ++i) excluded[units[i]] = true;
    };
    for (const std::u16string& contraction : contractions_) exclude(contraction, 0);
    for (const std::u16string& preContext : preContexts_) exclude(preContext, 1);
    return excluded;
}

}  // namespace platform::detail
