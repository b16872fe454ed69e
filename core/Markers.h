// The two translation-state markers every phrase and resource record carries in its
// Flags, the object's bits that tell which markers are stale, and the phrase lists
// a dictionary pass leaves for the table passes that follow it.
#pragma once

#include <cstdint>
#include <unordered_set>

namespace qvb {

// Bits of a record's Flags; the other bits belong to the record's own table.
constexpr std::uint32_t kNotTranslatedMarker = 1;
constexpr std::uint32_t kUserFilterMarker = 2;

// Bits of the object's filter-validity word: set = those markers are stale.
constexpr std::uint16_t kNotTranslatedStale = 1;
constexpr std::uint16_t kUserFilterStale = 2;
constexpr std::uint16_t kBothFiltersStale = kNotTranslatedStale | kUserFilterStale;

// Flags with `marker` set or cleared.
inline std::uint32_t withMarker(std::uint32_t flags, std::uint32_t marker, bool set) {
    return set ? flags | marker : flags & ~marker;
}

// A set of phrase identifiers. Each thread has its own pair of lists, shared by the
// database objects it uses: a refresh runs all its passes on one thread, so the
// table passes read what its own dictionary pass left, even while another thread
// refreshes another database.
class PhraseIdList {
public:
    void clear() { ids_.clear(); }
    void add(std::uint32_t id) { ids_.insert(id); }
    bool contains(std::uint32_t id) const { return ids_.count(id) != 0; }

private:
    std::unordered_set<std::uint32_t> ids_;
};

// Phrases the calling thread's last not-translated pass found untranslated.
PhraseIdList& untranslatedPhrases();
// Phrases the calling thread's last user-filter pass found in the filter.
PhraseIdList& userFilterPhrases();

}  // namespace qvb
