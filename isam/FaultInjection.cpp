#include "isam/FaultInjection.h"

#include <sqlite3.h>

#include <atomic>
#include <cerrno>
#include <mutex>

namespace isam::fault {

namespace {

// ---- What is counted and armed --------------------------------------------------------

struct State {
    std::mutex mutex;
    Counts counts;
    Fault fault;
    bool armed = false;
    bool fired = false;
};

State& state() {
    static State s;
    return s;
}

std::atomic<std::uint32_t> prefixSkew{0};

std::uint64_t& counter(Counts& counts, Kind kind) {
    switch (kind) {
        case Kind::Read: return counts.reads;
        case Kind::Write: return counts.writes;
        case Kind::Sync: return counts.syncs;
        default: return counts.truncates;
    }
}

int failureCode(Kind kind, Failure failure) {
    switch (kind) {
        case Kind::Read: return SQLITE_IOERR_READ;
        case Kind::Write: return failure == Failure::DiskFull ? SQLITE_FULL : SQLITE_IOERR_WRITE;
        case Kind::Sync: return SQLITE_IOERR_FSYNC;
        default: return SQLITE_IOERR_TRUNCATE;
    }
}

// Counts one operation; SQLITE_OK, or the code it is to fail with.
int countOperation(Kind kind) {
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    const std::uint64_t ofKind = ++counter(s.counts, kind);
    if (!s.armed || (s.fault.kind != Kind::Any && s.fault.kind != kind)) return SQLITE_OK;
    const std::uint64_t seen = s.fault.kind == Kind::Any ? s.counts.of(Kind::Any) : ofKind;
    if (seen < s.fault.nth || (seen > s.fault.nth && !s.fault.sticky)) return SQLITE_OK;
    s.fired = true;
    // As a failing system call leaves it, for callers that ask SQLite for it.
    errno = kind == Kind::Write && s.fault.failure == Failure::DiskFull ? ENOSPC : EIO;
    return failureCode(kind, s.fault.failure);
}

// ---- The file wrapper ---------------------------------------------------------------------

// The real file follows the wrapper in the same allocation.
struct ShimFile {
    sqlite3_file base;
    sqlite3_file* real;
};

sqlite3_file* realOf(sqlite3_file* file) { return reinterpret_cast<ShimFile*>(file)->real; }

int shimClose(sqlite3_file* f) {
    sqlite3_file* real = realOf(f);
    return real->pMethods ? real->pMethods->xClose(real) : SQLITE_OK;
}

int shimRead(sqlite3_file* f, void* buffer, int amount, sqlite3_int64 offset) {
    const int rc = countOperation(Kind::Read);
    if (rc != SQLITE_OK) return rc;
    sqlite3_file* real = realOf(f);
    return real->pMethods->xRead(real, buffer, amount, offset);
}

int shimWrite(sqlite3_file* f, const void* buffer, int amount, sqlite3_int64 offset) {
    const int rc = countOperation(Kind::Write);
    if (rc != SQLITE_OK) return rc;
    sqlite3_file* real = realOf(f);
    return real->pMethods->xWrite(real, buffer, amount, offset);
}

int shimTruncate(sqlite3_file* f, sqlite3_int64 size) {
    const int rc = countOperation(Kind::Truncate);
    if (rc != SQLITE_OK) return rc;
    sqlite3_file* real = realOf(f);
    return real->pMethods->xTruncate(real, size);
}

int shimSync(sqlite3_file* f, int flags) {
    const int rc = countOperation(Kind::Sync);
    if (rc != SQLITE_OK) return rc;
    sqlite3_file* real = realOf(f);
    return real->pMethods->xSync(real, flags);
}

int shimFileSize(sqlite3_file* f, sqlite3_int64* size) {
    sqlite3_file* real = realOf(f);
    return real->pMethods->xFileSize(real, size);
}

int shimLock(sqlite3_file* f, int level) {
    sqlite3_file* real = realOf(f);
    return real->pMethods->xLock(real, level);
}

int shimUnlock(sqlite3_file* f, int level) {
    sqlite3_file* real = realOf(f);
    return real->pMethods->xUnlock(real, level);
}

int shimCheckReservedLock(sqlite3_file* f, int* out) {
    sqlite3_file* real = realOf(f);
    return real->pMethods->xCheckReservedLock(real, out);
}

int shimFileControl(sqlite3_file* f, int op, void* arg) {
    sqlite3_file* real = realOf(f);
    return real->pMethods->xFileControl(real, op, arg);
}

int shimSectorSize(sqlite3_file* f) {
    sqlite3_file* real = realOf(f);
    return real->pMethods->xSectorSize(real);
}

int shimDeviceCharacteristics(sqlite3_file* f) {
    sqlite3_file* real = realOf(f);
    return real->pMethods->xDeviceCharacteristics(real);
}

int shimShmMap(sqlite3_file* f, int region, int size, int extend, void volatile** out) {
    sqlite3_file* real = realOf(f);
    if (real->pMethods->iVersion < 2 || !real->pMethods->xShmMap) return SQLITE_IOERR_SHMMAP;
    return real->pMethods->xShmMap(real, region, size, extend, out);
}

int shimShmLock(sqlite3_file* f, int offset, int n, int flags) {
    sqlite3_file* real = realOf(f);
    if (real->pMethods->iVersion < 2 || !real->pMethods->xShmLock) return SQLITE_IOERR_SHMLOCK;
    return real->pMethods->xShmLock(real, offset, n, flags);
}

void shimShmBarrier(sqlite3_file* f) {
    sqlite3_file* real = realOf(f);
    if (real->pMethods->iVersion >= 2 && real->pMethods->xShmBarrier) real->pMethods->xShmBarrier(real);
}

int shimShmUnmap(sqlite3_file* f, int deleteFlag) {
    sqlite3_file* real = realOf(f);
    if (real->pMethods->iVersion < 2 || !real->pMethods->xShmUnmap) return SQLITE_OK;
    return real->pMethods->xShmUnmap(real, deleteFlag);
}

// Memory-mapped reads would bypass the counted reads: the shim offers none.
int shimFetch(sqlite3_file*, sqlite3_int64, int, void** out) {
    *out = nullptr;
    return SQLITE_OK;
}

int shimUnfetch(sqlite3_file*, sqlite3_int64, void*) { return SQLITE_OK; }

const sqlite3_io_methods kShimMethods = {
    3,
    shimClose,
    shimRead,
    shimWrite,
    shimTruncate,
    shimSync,
    shimFileSize,
    shimLock,
    shimUnlock,
    shimCheckReservedLock,
    shimFileControl,
    shimSectorSize,
    shimDeviceCharacteristics,
    shimShmMap,
    shimShmLock,
    shimShmBarrier,
    shimShmUnmap,
    shimFetch,
    shimUnfetch,
};

// ---- The file system layer ----------------------------------------------------------------

sqlite3_vfs shimVfs;

sqlite3_vfs* realVfs() { return static_cast<sqlite3_vfs*>(shimVfs.pAppData); }

int shimOpen(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags) {
    auto* shim = reinterpret_cast<ShimFile*>(file);
    shim->real = reinterpret_cast<sqlite3_file*>(shim + 1);
    shim->real->pMethods = nullptr;
    const int rc = realVfs()->xOpen(realVfs(), name, shim->real, flags, outFlags);
    // SQLite closes a file whose methods are set, even when the open failed.
    shim->base.pMethods = shim->real->pMethods ? &kShimMethods : nullptr;
    return rc;
}

int shimDelete(sqlite3_vfs*, const char* name, int syncDir) {
    return realVfs()->xDelete(realVfs(), name, syncDir);
}

int shimAccess(sqlite3_vfs*, const char* name, int flags, int* out) {
    return realVfs()->xAccess(realVfs(), name, flags, out);
}

int shimFullPathname(sqlite3_vfs*, const char* name, int size, char* out) {
    return realVfs()->xFullPathname(realVfs(), name, size, out);
}

void* shimDlOpen(sqlite3_vfs*, const char* name) { return realVfs()->xDlOpen(realVfs(), name); }

void shimDlError(sqlite3_vfs*, int size, char* out) { realVfs()->xDlError(realVfs(), size, out); }

void (*shimDlSym(sqlite3_vfs*, void* handle, const char* symbol))(void) {
    return realVfs()->xDlSym(realVfs(), handle, symbol);
}

void shimDlClose(sqlite3_vfs*, void* handle) { realVfs()->xDlClose(realVfs(), handle); }

int shimRandomness(sqlite3_vfs*, int size, char* out) {
    return realVfs()->xRandomness(realVfs(), size, out);
}

int shimSleep(sqlite3_vfs*, int microseconds) { return realVfs()->xSleep(realVfs(), microseconds); }

int shimCurrentTime(sqlite3_vfs*, double* out) { return realVfs()->xCurrentTime(realVfs(), out); }

int shimGetLastError(sqlite3_vfs*, int size, char* out) {
    return realVfs()->xGetLastError ? realVfs()->xGetLastError(realVfs(), size, out) : 0;
}

int shimCurrentTimeInt64(sqlite3_vfs*, sqlite3_int64* out) {
    return realVfs()->xCurrentTimeInt64(realVfs(), out);
}

bool makeShim() {
    if (sqlite3_initialize() != SQLITE_OK) return false;
    sqlite3_vfs* real = sqlite3_vfs_find(nullptr);
    if (!real) return false;
    shimVfs = sqlite3_vfs{};
    // Version 2: the system-call overrides of later versions are the real layer's own.
    shimVfs.iVersion = 2;
    shimVfs.szOsFile = static_cast<int>(sizeof(ShimFile)) + real->szOsFile;
    shimVfs.mxPathname = real->mxPathname;
    shimVfs.zName = "qvb_fault";
    shimVfs.pAppData = real;
    shimVfs.xOpen = shimOpen;
    shimVfs.xDelete = shimDelete;
    shimVfs.xAccess = shimAccess;
    shimVfs.xFullPathname = shimFullPathname;
    shimVfs.xDlOpen = shimDlOpen;
    shimVfs.xDlError = shimDlError;
    shimVfs.xDlSym = shimDlSym;
    shimVfs.xDlClose = shimDlClose;
    shimVfs.xRandomness = shimRandomness;
    shimVfs.xSleep = shimSleep;
    shimVfs.xCurrentTime = shimCurrentTime;
    shimVfs.xGetLastError = shimGetLastError;
    shimVfs.xCurrentTimeInt64 = real->iVersion >= 2 ? shimCurrentTimeInt64 : nullptr;
    return sqlite3_vfs_register(&shimVfs, 1) == SQLITE_OK;
}

}  // namespace

std::uint64_t Counts::of(Kind kind) const {
    switch (kind) {
        case Kind::Read: return reads;
        case Kind::Write: return writes;
        case Kind::Sync: return syncs;
        case Kind::Truncate: return truncates;
        default: return reads + writes + syncs + truncates;
    }
}

bool install() {
    static const bool done = makeShim();
    return done;
}

Counts counts() {
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.counts;
}

void resetCounts() {
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.counts = Counts{};
}

void arm(const Fault& fault) {
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.counts = Counts{};
    s.fault = fault;
    s.armed = fault.nth > 0;
    s.fired = false;
}

void disarm() {
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.armed = false;
}

bool fired() {
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.fired;
}

void skewNextPrefixCount(std::uint32_t extra) { prefixSkew.store(extra); }

std::uint32_t takePrefixCountSkew() {
    // Cheap when nothing is armed: a load, and no write.
    return prefixSkew.load(std::memory_order_relaxed) ? prefixSkew.exchange(0) : 0;
}

}  // namespace isam::fault
