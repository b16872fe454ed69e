#include "bench/SideBySide.h"

#include <cstdio>

namespace bench {

void printRows(const std::vector<Row>& rows) {
    std::printf("%-46s %7s %-9s %21s %21s %13s\n", "", "", "", "wall time", "CPU time",
                "library/SQLite");
    std::printf("%-46s %7s %-9s %10s %10s %10s %10s %6s %6s\n", "case", "changed", "unit",
                "library", "SQLite", "library", "SQLite", "wall", "CPU");
    for (const Row& row : rows) {
        char changed[24] = "";
        if (row.changed != SIZE_MAX) std::snprintf(changed, sizeof changed, "%zu", row.changed);
        std::printf("%-46s %7s %-9s %10.2f %10.2f %10.2f %10.2f %6.2f %6.2f\n", row.name.c_str(),
                    changed, row.unit.c_str(), row.library.wall * row.scale,
                    row.raw.wall * row.scale, row.library.cpu * row.scale, row.raw.cpu * row.scale,
                    ratio(row.library.wall, row.raw.wall), ratio(row.library.cpu, row.raw.cpu));
    }
    std::printf(
        "(CPU time leaves out waiting for other processes and for the disk: on a shared\n"
        " machine its ratio is the steadier figure)\n");
}

}  // namespace bench
