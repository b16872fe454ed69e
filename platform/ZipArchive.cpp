#include "platform/ZipArchive.h"

#include <unzip.h>
#include <zip.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace platform {

namespace {

// The zip calls take 32-bit lengths, so big buffers go through in slices.
constexpr std::size_t kSlice = std::size_t{1} << 30;

// 1980-01-01 00:00 in DOS form: a fixed time stamp keeps equal files equal
// archives, and the program reads no time from them.
constexpr uLong kDosEpoch = (1u << 21) | (1u << 16);

// Packing runs on every file stored; the fastest level packs executables about
// three times faster than the default one for a tenth more room.
constexpr int kLevel = Z_BEST_SPEED;

// Deflate cannot expand data by more than this factor, so an entry that claims to
// be larger than this many times its whole archive is damaged or forged; it is
// not given the memory it asks for.
constexpr std::uint64_t kMostInflation = 1032;

bool writeEntry(zipFile archive, const void* data, std::size_t length) {
    const char* at = static_cast<const char*>(data);
    for (std::size_t done = 0; done < length;) {
        const std::size_t slice = std::min(length - done, kSlice);
        if (zipWriteInFileInZip(archive, at + done, static_cast<unsigned>(slice)) != ZIP_OK) {
            return false;
        }
        done += slice;
    }
    return true;
}

// ---- Reading from memory: the file functions of the archive reader ---------------------

using Stream = MemoryArchive::Stream;

voidpf ZCALLBACK openStream(voidpf opaque, const char*, int mode) {
    const bool readOnly = (mode & ZLIB_FILEFUNC_MODE_READWRITEFILTER) == ZLIB_FILEFUNC_MODE_READ;
    return readOnly ? opaque : nullptr;
}

uLong ZCALLBACK readStream(voidpf, voidpf stream, void* buffer, uLong size) {
    Stream& s = *static_cast<Stream*>(stream);
    const std::size_t n = std::min<std::size_t>(size, s.length - s.position);
    if (n) std::memcpy(buffer, s.data + s.position, n);
    s.position += n;
    return static_cast<uLong>(n);
}

uLong ZCALLBACK writeStream(voidpf, voidpf, const void*, uLong) {
    return 0;
}

long ZCALLBACK tellStream(voidpf, voidpf stream) {
    return static_cast<long>(static_cast<Stream*>(stream)->position);
}

long ZCALLBACK seekStream(voidpf, voidpf stream, uLong offset, int origin) {
    Stream& s = *static_cast<Stream*>(stream);
    std::size_t base = 0;
    switch (origin) {
        case ZLIB_FILEFUNC_SEEK_SET:
            base = 0;
            break;
        case ZLIB_FILEFUNC_SEEK_CUR:
            base = s.position;
            break;
        case ZLIB_FILEFUNC_SEEK_END:
            base = s.length;
            break;
        default:
            return -1;
    }
    // Nothing lies beyond the end of the bytes.
    if (offset > s.length - base) return -1;
    s.position = base + offset;
    return 0;
}

int ZCALLBACK closeStream(voidpf, voidpf) {
    return 0;
}

int ZCALLBACK streamError(voidpf, voidpf) {
    return 0;
}

}  // namespace

bool writeSingleEntryArchive(const std::string& path, const void* data, std::size_t length) {
    if (!data && length) return false;
    zipFile archive = zipOpen64(path.c_str(), APPEND_STATUS_CREATE);
    if (!archive) return false;
    zip_fileinfo info{};
    info.dosDate = kDosEpoch;
    const int zip64 = length >= std::numeric_limits<std::uint32_t>::max() ? 1 : 0;
    bool written = zipOpenNewFileInZip64(archive, kArchiveEntryName, &info, nullptr, 0, nullptr, 0,
                                         nullptr, Z_DEFLATED, kLevel, zip64) == ZIP_OK;
    written = written && writeEntry(archive, data, length);
    written = written && zipCloseFileInZip(archive) == ZIP_OK;
    // Closing writes the central directory; without it there is no archive.
    const bool closed = zipClose(archive, nullptr) == ZIP_OK;
    return written && closed;
}

MemoryArchive::MemoryArchive(const void* data, std::size_t length)
    : stream_{static_cast<const std::uint8_t*>(data), data ? length : 0, 0} {
    zlib_filefunc_def functions{};
    functions.zopen_file = openStream;
    functions.zread_file = readStream;
    functions.zwrite_file = writeStream;
    functions.ztell_file = tellStream;
    functions.zseek_file = seekStream;
    functions.zclose_file = closeStream;
    functions.zerror_file = streamError;
    functions.opaque = &stream_;
    handle_ = unzOpen2("", &functions);
}

MemoryArchive::~MemoryArchive() {
    if (handle_) unzClose(handle_);
}

bool MemoryArchive::firstEntrySize(std::uint64_t* size) {
    unz_file_info64 info{};
    if (!handle_ || unzGoToFirstFile(handle_) != UNZ_OK ||
        unzGetCurrentFileInfo64(handle_, &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK) {
        return false;
    }
    *size = info.uncompressed_size;
    return true;
}

bool MemoryArchive::extractFirstEntry(std::vector<std::uint8_t>* entry) {
    std::uint64_t size = 0;
    if (!firstEntrySize(&size) || size / kMostInflation > stream_.length) return false;
    if (size > std::numeric_limits<std::size_t>::max()) return false;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    if (unzOpenCurrentFile(handle_) != UNZ_OK) return false;
    bool whole = true;
    for (std::size_t done = 0; whole && done < bytes.size();) {
        const std::size_t slice = std::min(bytes.size() - done, kSlice);
        const int n =
            unzReadCurrentFile(handle_, bytes.data() + done, static_cast<unsigned>(slice));
        whole = n > 0;
        if (whole) done += static_cast<std::size_t>(n);
    }
    // Closing after the last byte checks the entry against its checksum.
    const bool intact = unzCloseCurrentFile(handle_) == UNZ_OK;
    if (!whole || !intact) return false;
    *entry = std::move(bytes);
    return true;
}

}  // namespace platform
