#include "bench/ProcessStats.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "bench/BenchSupport.h"

namespace bench {

namespace {

// The number after `field` in a "name: value" file of /proc; -1 when missing.
std::int64_t procField(const char* file, const std::string& field) {
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        if (line.compare(0, field.size(), field) != 0) continue;
        std::istringstream value(line.substr(field.size()));
        std::int64_t n = -1;
        value >> n;
        return value ? n : -1;
    }
    return -1;
}

}  // namespace

std::int64_t bytesWritten() {
    return procField("/proc/self/io", "write_bytes:");
}

std::int64_t residentKiB() {
    return procField("/proc/self/status", "VmRSS:");
}

std::int64_t peakResidentKiB() {
    return procField("/proc/self/status", "VmHWM:");
}

bool resetPeakResident() {
    std::ofstream out("/proc/self/clear_refs");
    out << "5";
    out.flush();
    return static_cast<bool>(out);
}

std::int64_t fileBytes(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? static_cast<std::int64_t>(st.st_size) : -1;
}

void dropFromPageCache(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) fail("cannot open " + path);
    // Dirty pages cannot be dropped: write them out first.
    ::fsync(fd);
    const int rc = ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    ::close(fd);
    if (rc != 0) fail("posix_fadvise refused on " + path);
}

}  // namespace bench
