// What the kernel tells about this process and its files: bytes written, resident
// memory and its high-water mark, file sizes, and dropping a file from the page
// cache so that the next open reads it from the disk.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

// Bytes this process has caused to be written to storage (/proc/self/io); -1 when
// the kernel does not account them.
std::int64_t bytesWritten();

// VmRSS and VmHWM of /proc/self/status in KiB; -1 when missing.
std::int64_t residentKiB();
std::int64_t peakResidentKiB();
// Sets the high-water mark back to the present resident size; false when refused.
bool resetPeakResident();

// -1 when the file does not exist.
std::int64_t fileBytes(const std::string& path);

// Writes the file's dirty pages out and asks the kernel to forget its cached pages
// (posix_fadvise DONTNEED), so that the next read comes from the disk; the page
// cache of other files stays as it is. Throws when the file cannot be opened.
void dropFromPageCache(const std::string& path);

}  // namespace bench
