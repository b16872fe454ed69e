// The phrase cases that change no data or only the markers, each timed on the library
// and on the best plain SQLite after both files were reopened (so that neither side
// pays for log checkpoints of earlier phases), with a check that both gave the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/LibraryPhrases.h"
#include "bench/RawPhrases.h"
#include "bench/SideBySide.h"

namespace bench {

class PhraseCases {
public:
    PhraseCases(LibraryPhrases& library, RawPhrases& raw, int rounds)
        : library_(library), raw_(raw), rounds_(rounds) {}

    // The not-translated refresh, then the user-filter one, each first and again
    // (median of the rounds).
    void refreshes();
    void listPair(std::size_t phrases);
    void listFamilies(const std::vector<CString>& texts);

    const std::vector<Row>& rows() const { return rows_; }
    bool same() const { return same_; }

private:
    void refresh(const std::string& name, int rounds, std::uint32_t marker, FILTER filter);
    void reopenBoth();

    LibraryPhrases& library_;
    RawPhrases& raw_;
    int rounds_;
    std::vector<Row> rows_;
    bool same_ = true;
};

}  // namespace bench
