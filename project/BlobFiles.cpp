#include "project/BlobFiles.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "core/LibraryErrors.h"
#include "isam/IsamErrors.h"
#include "platform/TempFile.h"
#include "platform/ZipArchive.h"

namespace qvb {

namespace {

// A regular file's size, as a first guess at how much there is to read.
std::size_t sizeHint(int descriptor) {
    struct stat info {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size < 0) return 0;
    return static_cast<std::size_t>(info.st_size);
}

// Reads a descriptor to its end.
bool readToEnd(int descriptor, std::string* bytes) {
    std::string data;
    // One byte more than expected, so that a file that has grown is noticed.
    data.resize(sizeHint(descriptor) + 1);
    std::size_t filled = 0;
    for (;;) {
        if (filled == data.size()) data.resize(data.size() * 2);
        const ssize_t n = ::read(descriptor, &data[filled], data.size() - filled);
        if (n == 0) break;
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        filled += static_cast<std::size_t>(n);
    }
    data.resize(filled);
    *bytes = std::move(data);
    return true;
}

// A whole file; false when it cannot be opened or read (a directory, say).
bool readWholeFile(const char* path, std::string* bytes) {
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool read = readToEnd(descriptor, bytes);
    ::close(descriptor);
    return read;
}

bool writeAll(int descriptor, const std::uint8_t* data, std::size_t length) {
    for (std::size_t done = 0; done < length;) {
        const ssize_t n = ::write(descriptor, data + done, length - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

// Creates (or truncates) the file at `path` and writes the bytes to it.
int writeNewFile(const char* path, const void* data, std::size_t length) {
    const int descriptor = path ? ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666) : -1;
    if (descriptor < 0) return QVB_OUTPUT_CREATE_FAILED;
    if (!writeAll(descriptor, static_cast<const std::uint8_t*>(data), length)) {
        ::close(descriptor);
        return QVB_OUTPUT_WRITE_FAILED;
    }
    return ::close(descriptor) == 0 ? isam::ISAM_OK : QVB_OUTPUT_CLOSE_FAILED;
}

// The file at `path` as the field's new value: a one-entry archive of its bytes,
// built in a temporary file and read back.
int packFile(const char* path, EmptyInput empty, std::string* archive) {
    std::string contents;
    if (!readWholeFile(path, &contents)) return QVB_INPUT_OPEN_FAILED;
    if (contents.empty() && empty == EmptyInput::StoredEmpty) {
        archive->clear();
        return isam::ISAM_OK;
    }
    const platform::TempFile temporary("ZIP");
    if (!temporary.created()) return QVB_ARCHIVE_FAILED;
    if (!platform::writeSingleEntryArchive(temporary.path(), contents.data(), contents.size())) {
        return QVB_ARCHIVE_FAILED;
    }
    // The bytes are in the archive now; a big file should not be held twice.
    std::string().swap(contents);
    return readWholeFile(temporary.path().c_str(), archive) ? isam::ISAM_OK : QVB_INPUT_OPEN_FAILED;
}

}  // namespace

int storedLength(const CIsamTable& table, const char* field, std::uint32_t* length) {
    std::string blob;
    const int rc = table.GetBinary(field, &blob);
    // A stored field is never longer than 32 bits can count.
    if (rc == isam::ISAM_OK && length) *length = static_cast<std::uint32_t>(blob.size());
    return rc;
}

int packFileIntoRecord(CIsamTable& table, const char* field, const char* path, EmptyInput empty) {
    std::string value;
    if (path) {
        const int packed = packFile(path, empty, &value);
        if (packed != isam::ISAM_OK) return packed;
    }
    const int set = table.SetBinary(field, value.data(), value.size());
    std::string().swap(value);
    return set != isam::ISAM_OK ? set : table.Rewrite();
}

int unpackRecordToFile(const CIsamTable& table, const char* field, const char* path) {
    std::string blob;
    const int rc = table.GetBinary(field, &blob);
    if (rc != isam::ISAM_OK) return rc;
    // Nothing stored: no file is made, and one already there is left alone.
    if (blob.empty()) return isam::ISAM_OK;
    std::vector<std::uint8_t> entry;
    bool extracted = false;
    {
        platform::MemoryArchive archive(blob.data(), blob.size());
        extracted = archive.isOpen() && archive.extractFirstEntry(&entry);
    }
    // Raw bytes, and archives whose entry cannot be extracted, go out as stored.
    if (!extracted) return writeNewFile(path, blob.data(), blob.size());
    std::string().swap(blob);
    return writeNewFile(path, entry.data(), entry.size());
}

}  // namespace qvb
