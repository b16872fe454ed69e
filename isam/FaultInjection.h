// A test seam for storage faults. Installed, it wraps the real file system layer
// under every connection opened afterwards: it counts the reads, writes, syncs and
// truncations of the container files and can fail the n-th of them. Never
// installed, nothing in the engine changes.
#pragma once

#include <cstdint>

namespace isam::fault {

enum class Kind { Read, Write, Sync, Truncate, Any };

struct Counts {
    std::uint64_t reads = 0;
    std::uint64_t writes = 0;
    std::uint64_t syncs = 0;
    std::uint64_t truncates = 0;

    std::uint64_t of(Kind kind) const;
};

// How an armed fault fails: as a failing device, or as a full disk (writes answer
// "full"; the other kinds fail as a device would).
enum class Failure { IoError, DiskFull };

struct Fault {
    Kind kind = Kind::Any;
    std::uint64_t nth = 1;  // 1-based, counted from arming
    Failure failure = Failure::IoError;
    bool sticky = false;    // every later operation of the kind fails too
};

// Makes the shim the default file system layer (once per process; later calls do
// nothing). Connections opened before keep the layer they were opened with.
bool install();

// The operations counted since the last reset or arming.
Counts counts();
void resetCounts();

// Resets the counts and arms the fault; disarm() lifts it.
void arm(const Fault& fault);
void disarm();
// Whether the armed fault has failed an operation since it was armed.
bool fired();

// A key-prefix count answers `extra` more records than a fetch of the same prefix
// finds, once, for testing how callers handle that disagreement.
void skewNextPrefixCount(std::uint32_t extra);
// What the engine adds to the next count (0 when nothing is armed); consumes it.
std::uint32_t takePrefixCountSkew();

}  // namespace isam::fault
