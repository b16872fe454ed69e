#include "bench/PhraseCases.h"

#include <algorithm>

namespace bench {

namespace {

constexpr std::size_t kSlices = 20;

}  // namespace

void PhraseCases::reopenBoth() {
    library_.reopen();
    raw_.reopen();
}

void PhraseCases::refreshes() {
    const std::string again = ", again (median of " + std::to_string(rounds_) + ")";
    refresh("not-translated refresh, 1st", 1, kNotTranslatedMarker, FilterNotTranslated);
    refresh("not-translated refresh" + again, rounds_, kNotTranslatedMarker, FilterNotTranslated);
    refresh("user-filter refresh, 1st", 1, kUserFilterMarker, FilterUser);
    refresh("user-filter refresh" + again, rounds_, kUserFilterMarker, FilterUser);
}

// The marked phrases are compared afterwards (not timed).
void PhraseCases::refresh(const std::string& name, int rounds, std::uint32_t marker,
                          FILTER filter) {
    Row row{name, "ms", 1e3};
    const bool notTranslated = marker == kNotTranslatedMarker;
    const USERFILTER user = userFilter();
    const DWORD pair = library_.pair();
    std::vector<std::uint32_t> rawIds;
    std::size_t changed = 0;
    reopenBoth();
    alternate(
        &row, rounds, rows_.size() % 2 == 0,
        [&] { notTranslated ? library_.refreshNotTranslated() : library_.refreshUserFilter(user); },
        [&] {
            const std::size_t n =
                raw_.mark(pair, marker, &rawIds, [&](bool translated, const char* text) {
                    return notTranslated ? !translated : inUserFilter(text);
                });
            changed = std::max(changed, n);
        });
    row.changed = changed;
    std::sort(rawIds.begin(), rawIds.end());
    same_ = same_ && library_.marked(filter) == rawIds && raw_.marked(marker) == rawIds;
    rows_.push_back(row);
}

void PhraseCases::listPair(std::size_t phrases) {
    Row row{"pair listing (median of " + std::to_string(rounds_) + ")", "ms", 1e3};
    CDWordArray libraryIds;
    std::vector<std::uint32_t> rawIds;
    reopenBoth();
    alternate(
        &row, rounds_, rows_.size() % 2 == 0,
        [&] {
            libraryIds.RemoveAll();
            library_.listPair(libraryIds);
        },
        [&] {
            rawIds.clear();
            raw_.listPair(library_.pair(), &rawIds);
        });
    same_ = same_ && toVector(libraryIds) == rawIds && rawIds.size() == phrases;
    rows_.push_back(row);
}

void PhraseCases::listFamilies(const std::vector<CString>& texts) {
    Row row{"family listing", "us/family", 1e6 / static_cast<double>(texts.size())};
    std::vector<std::vector<std::uint32_t>> libraryFamilies(texts.size());
    std::vector<std::vector<std::uint32_t>> rawFamilies(texts.size());
    reopenBoth();
    raceTimed(
        &row, texts.size(), std::min(kSlices, texts.size()),
        [&](const Slice& slice) {
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                CDWordArray ids;
                library_.listFamily(ids, texts[i]);
                libraryFamilies[i] = toVector(ids);
            }
        },
        [&](const Slice& slice) {
            // Many reads in one read transaction, as the library keeps one open.
            raw_.begin();
            for (std::size_t i = slice.begin; i < slice.end; ++i) {
                rawFamilies[i].clear();
                raw_.listFamily(library_.pair(), texts[i], &rawFamilies[i]);
            }
            raw_.commit();
        });
    // The library lists non-standard members newest first: compare as sets.
    std::size_t members = 0;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        std::sort(libraryFamilies[i].begin(), libraryFamilies[i].end());
        std::sort(rawFamilies[i].begin(), rawFamilies[i].end());
        members += rawFamilies[i].size();
        same_ = same_ && !rawFamilies[i].empty() && libraryFamilies[i] == rawFamilies[i];
    }
    row.name += ", " + std::to_string(members) + " members";
    rows_.push_back(row);
}

}  // namespace bench
