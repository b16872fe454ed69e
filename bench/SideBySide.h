// A case timed on both sides, the library and the best plain SQLite for the same
// result, and the table the benchmarks print of such cases: wall and CPU time of
// each side and the ratio of each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchSupport.h"

namespace bench {

struct Row {
    Row(std::string name, std::string unit, double scale)
        : name(std::move(name)), unit(std::move(unit)), scale(scale) {}

    std::string name;
    std::string unit;
    double scale;                    // seconds to unit
    std::size_t changed = SIZE_MAX;  // records a refresh rewrote; SIZE_MAX: not a refresh
    Timing library;
    Timing raw;
};

// Both sides work `count` items in `slices` alternating slices; see race.
template <typename LibrarySlice, typename RawSlice>
void raceTimed(Row* row, std::size_t count, std::size_t slices, LibrarySlice librarySlice,
               RawSlice rawSlice) {
    race(
        count, slices, [](auto body) { return timed(body); }, &row->library, librarySlice,
        &row->raw, rawSlice);
}

// Runs each side `rounds` times, the side that goes first alternating, and keeps the
// median of each side.
template <typename LibraryRun, typename RawRun>
void alternate(Row* row, int rounds, bool libraryFirst, LibraryRun libraryRun, RawRun rawRun) {
    std::vector<Timing> library;
    std::vector<Timing> raw;
    for (int r = 0; r < rounds; ++r) {
        const bool libraryNow = (r % 2 == 0) == libraryFirst;
        if (libraryNow) library.push_back(timed(libraryRun));
        raw.push_back(timed(rawRun));
        if (!libraryNow) library.push_back(timed(libraryRun));
    }
    row->library = median(library);
    row->raw = median(raw);
}

// The rows with both times in their units, then the ratios of wall and CPU time.
void printRows(const std::vector<Row>& rows);

}  // namespace bench
