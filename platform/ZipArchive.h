// Zip archives of one entry: the form in which a disk file is kept inside a blob.
// Archives are written to a file and read from memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace platform {

// The name of the one entry of every archive the library makes.
constexpr const char* kArchiveEntryName = "zipfile.tmp";

// Writes to `path` (replacing what is there) a complete zip archive whose one
// entry, kArchiveEntryName, holds the `length` bytes at `data`, deflated. False
// when the archive could not be created, the entry not added or the archive not
// finished.
bool writeSingleEntryArchive(const std::string& path, const void* data, std::size_t length);

// A zip archive held in memory, open for reading from construction to
// destruction. The bytes must stay in place for as long as the reader lives.
class MemoryArchive {
public:
    MemoryArchive(const void* data, std::size_t length);
    ~MemoryArchive();
    MemoryArchive(const MemoryArchive&) = delete;
    MemoryArchive& operator=(const MemoryArchive&) = delete;

    // Whether the bytes were accepted as a zip archive.
    bool isOpen() const { return handle_ != nullptr; }
    // The uncompressed size of entry 0; false when its information cannot be read.
    bool firstEntrySize(std::uint64_t* size);
    // Entry 0 uncompressed, in a buffer of exactly its size; false unless the whole
    // entry could be extracted and matches its checksum.
    bool extractFirstEntry(std::vector<std::uint8_t>* entry);

    // Where the archive's reader stands in the bytes.
    struct Stream {
        const std::uint8_t* data = nullptr;
        std::size_t length = 0;
        std::size_t position = 0;
    };

private:
    Stream stream_;
    void* handle_ = nullptr;
};

}  // namespace platform
