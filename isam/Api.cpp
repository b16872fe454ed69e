// The engine's entry points: each resolves the selected instance and the file
// number, keeps the connection inside its transaction, and commits a write that
// is not part of a batch. No exception leaves the engine.
#include <new>
#include <utility>

#include "isam/FaultInjection.h"
#include "isam/Isam.h"
#include "isam/Registry.h"

namespace isam {

namespace {

template <typename Body>
int guarded(Body body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return ISAM_OUT_OF_MEMORY;
    } catch (...) {
        return ISAM_INTERNAL;
    }
}

int instanceOf(Instance** out) {
    Instance* instance = selectedInstance();
    if (!instance) return ISAM_NO_INSTANCE;
    if (!instance->initialised()) return ISAM_NOT_INITIALISED;
    *out = instance;
    return ISAM_OK;
}

// Runs a body on the selected, initialised instance.
template <typename Body>
int onInstance(Body body) {
    return guarded([&] {
        Instance* instance = nullptr;
        int rc = instanceOf(&instance);
        return rc ? rc : body(*instance);
    });
}

// After a failed read or write SQLite may have rolled the transaction back, or
// kept part of a call's changes: neither may be committed as if it were whole.
bool isStorageFailure(int rc) {
    return rc == ISAM_IO_ERROR || rc == ISAM_DISK_FULL || rc == ISAM_OUT_OF_MEMORY;
}

// Discards the transaction; inside a batch, the whole batch has failed.
int failTransaction(Instance& instance, Container& container, int rc) {
    container.rollback();
    if (instance.batchDepth() > 0) instance.batchFailure() = rc;
    return rc;
}

// Runs a body on the open container, inside its transaction; a write is
// committed unless a batch is open.
template <typename Body>
int onContainer(bool write, Body body) {
    return onInstance([&](Instance& instance) {
        Container* container = instance.container();
        if (!container) return ISAM_NOT_OPEN;
        if (instance.batchFailure()) return instance.batchFailure();
        int rc = container->ensureTransaction();
        if (rc) return rc;
        rc = guarded([&] { return body(instance, *container); });
        if (!rc && container->transactionLost()) rc = ISAM_IO_ERROR;
        if (isStorageFailure(rc)) return failTransaction(instance, *container, rc);
        if (write && instance.batchDepth() == 0 && instance.container()) {
            const int committed = container->commit();
            if (!rc) rc = committed;
        }
        return rc;
    });
}

template <typename Body>
int onIndex(FileNumber file, Body body) {
    return onContainer(false, [&](Instance& instance, Container&) {
        Member* member = nullptr;
        std::size_t index = 0;
        int rc = instance.indexFile(file, &member, &index);
        if (rc) return rc;
        return member->stale() ? ISAM_NOT_OPEN : body(*member, index);
    });
}

template <typename Body>
int onData(FileNumber file, bool write, Body body) {
    return onContainer(write, [&](Instance& instance, Container&) {
        Member* member = nullptr;
        int rc = instance.dataFile(file, &member);
        if (rc) return rc;
        return member->stale() ? ISAM_NOT_OPEN : body(*member);
    });
}

}  // namespace

// ---- Instances ---------------------------------------------------------------------

int registerInstance(const char* name) {
    return guarded([&] { return registryAdd(name); });
}

int unregisterInstance(const char* name) {
    return guarded([&] { return registryRemove(name); });
}

int selectInstance(const char* name) {
    return guarded([&] { return registrySelect(name); });
}

int initialiseInstance(int /*buffers*/, int files, int /*sectors*/, int /*dataBuffers*/,
                       int /*userProfile*/, int, int, int) {
    return guarded([&] {
        Instance* instance = selectedInstance();
        if (!instance) return ISAM_NO_INSTANCE;
        return instance->initialise(files);
    });
}

// ---- Container -----------------------------------------------------------------------

namespace {
constexpr std::uint16_t kContainerMode = 582;
}  // namespace

int createContainer(const char* path, std::uint16_t mode, std::uint32_t /*extent*/, FileNumber* file) {
    if (!path || mode != kContainerMode) return ISAM_BAD_PARAMETER;
    return onInstance([&](Instance& instance) { return instance.attachContainer(path, true, file); });
}

int openContainer(const char* path, std::uint16_t mode, FileNumber* file) {
    if (!path || mode != kContainerMode) return ISAM_BAD_PARAMETER;
    return onInstance([&](Instance& instance) { return instance.attachContainer(path, false, file); });
}

int closeContainer() {
    return onInstance([&](Instance& instance) { return instance.closeContainer(); });
}

int rebuildContainer(const char* path, const char* parameters) {
    if (!path || (parameters && *parameters)) return ISAM_BAD_PARAMETER;
    return onInstance([&](Instance&) { return Container::rebuild(path); });
}

// ---- Members ---------------------------------------------------------------------------

int createFile(const FileDefinition& definition, FileNumber* dataFile) {
    return onContainer(true, [&](Instance& instance, Container&) {
        return instance.createMember(definition, dataFile);
    });
}

int openFile(const FileDefinition& definition, FileNumber* dataFile) {
    return onContainer(false, [&](Instance& instance, Container&) {
        return instance.openMember(definition, dataFile);
    });
}

int holdsMember(const char* name, bool* held) {
    if (!name || !held) return ISAM_BAD_PARAMETER;
    return onContainer(false, [&](Instance&, Container& container) {
        return container.holdsMember(localName(name), held);
    });
}

int closeFile(FileNumber dataFile) {
    return onContainer(false, [&](Instance& instance, Container&) {
        return instance.closeMember(dataFile);
    });
}

int deleteFile(const FileDefinition& definition) {
    return onContainer(true, [&](Instance&, Container& container) {
        return container.deleteMember(definition);
    });
}

int rebuildFile(const FileDefinition& definition) {
    return onContainer(true, [&](Instance&, Container& container) {
        return container.rebuildMember(definition);
    });
}

int setFileLocale(FileNumber file, std::uint32_t lcid) {
    return onContainer(true, [&](Instance& instance, Container& container) {
        Member* member = nullptr;
        std::size_t ordinal = 0;
        int rc = instance.memberFile(file, &member, &ordinal);
        return rc ? rc : container.setLocale(member, ordinal, lcid);
    });
}

int getFileLocale(FileNumber file, std::uint32_t* lcid) {
    return onContainer(false, [&](Instance& instance, Container&) {
        Member* member = nullptr;
        std::size_t ordinal = 0;
        int rc = instance.memberFile(file, &member, &ordinal);
        if (rc) return rc;
        *lcid = ordinal == 0 ? member->dataLocale() : member->indexLocale(ordinal - 1);
        return ISAM_OK;
    });
}

// ---- Positioning and key prefixes -------------------------------------------------------

int firstRecord(FileNumber index, Position* position) {
    return onIndex(index, [&](Member& m, std::size_t i) { return m.first(i, position); });
}

int nextRecord(FileNumber index, Position* position) {
    return onIndex(index, [&](Member& m, std::size_t i) { return m.next(i, position); });
}

int lastRecord(FileNumber index, Position* position) {
    return onIndex(index, [&](Member& m, std::size_t i) { return m.last(i, position); });
}

int findEqual(FileNumber index, const void* key, std::size_t length, Position* position) {
    if (!key && length) return ISAM_BAD_PARAMETER;
    return onIndex(index, [&](Member& m, std::size_t i) { return m.findEqual(i, key, length, position); });
}

int findKey(FileNumber index, const void* key, std::size_t length, SearchMode mode,
            Position* position) {
    if (!key && length) return ISAM_BAD_PARAMETER;
    return onIndex(index,
                   [&](Member& m, std::size_t i) { return m.findKey(i, key, length, mode, position); });
}

int findText(FileNumber index, const char* text, SearchMode mode, Position* position) {
    return onIndex(index, [&](Member& m, std::size_t i) { return m.findText(i, text, mode, position); });
}

int countByPrefix(FileNumber index, const void* prefix, std::size_t length, std::uint32_t* count) {
    if (!prefix && length) return ISAM_BAD_PARAMETER;
    return onIndex(index, [&](Member& m, std::size_t i) {
        const int rc = m.countByPrefix(i, prefix, length, count);
        if (rc == ISAM_OK) *count += fault::takePrefixCountSkew();
        return rc;
    });
}

int fetchByPrefix(FileNumber index, const void* prefix, std::size_t length, std::uint32_t wanted,
                  Position* positions, std::uint32_t* fetched) {
    if (!prefix && length) return ISAM_BAD_PARAMETER;
    return onIndex(index, [&](Member& m, std::size_t i) {
        return m.fetchByPrefix(i, prefix, length, wanted, positions, fetched);
    });
}

int scanByPrefix(FileNumber index, const void* prefix, std::size_t length, std::uint32_t* count,
                 std::vector<Position>* positions) {
    if (!prefix && length) return ISAM_BAD_PARAMETER;
    return onIndex(index, [&](Member& m, std::size_t i) {
        const int rc = m.scanByPrefix(i, prefix, length, positions);
        *count = static_cast<std::uint32_t>(positions->size());
        if (rc == ISAM_OK && *count) *count += fault::takePrefixCountSkew();
        return rc;
    });
}

// ---- Records and resources -----------------------------------------------------------------

int readRecord(FileNumber dataFile, Position position, void* buffer, std::size_t capacity,
               std::size_t* length) {
    if (!buffer && capacity) return ISAM_BAD_PARAMETER;
    return onData(dataFile, false, [&](Member& m) { return m.read(position, buffer, capacity, length); });
}

int addRecord(FileNumber dataFile, const void* record, std::size_t length, Position* position) {
    return onData(dataFile, true, [&](Member& m) { return m.add(record, length, position); });
}

int rewriteRecord(FileNumber dataFile, const void* record, std::size_t length) {
    return onData(dataFile, true, [&](Member& m) { return m.rewrite(record, length); });
}

int deleteRecord(FileNumber dataFile) {
    return onData(dataFile, true, [&](Member& m) { return m.remove(); });
}

int currentPosition(FileNumber dataFile, Position* position) {
    return onData(dataFile, false, [&](Member& m) { return m.current(position); });
}

int addResource(FileNumber dataFile, std::uint32_t type, std::uint32_t number, const void* data,
                std::size_t length) {
    return onData(dataFile, true,
                  [&](Member& m) { return m.addResource(type, number, data, length, false); });
}

int updateResource(FileNumber dataFile, std::uint32_t type, std::uint32_t number, const void* data,
                   std::size_t length) {
    return onData(dataFile, true,
                  [&](Member& m) { return m.addResource(type, number, data, length, true); });
}

int readResource(FileNumber dataFile, std::uint32_t type, std::uint32_t number, void* buffer,
                 std::size_t capacity, std::size_t* length) {
    if (!buffer && capacity) return ISAM_BAD_PARAMETER;
    return onData(dataFile, false,
                  [&](Member& m) { return m.readResource(type, number, buffer, capacity, length); });
}

int deleteResource(FileNumber dataFile, std::uint32_t type, std::uint32_t number) {
    return onData(dataFile, true, [&](Member& m) { return m.deleteResource(type, number); });
}

int listResources(FileNumber dataFile, std::uint32_t type, std::vector<std::uint32_t>* numbers) {
    if (!numbers) return ISAM_BAD_PARAMETER;
    return onData(dataFile, false, [&](Member& m) { return m.resourceNumbers(type, numbers); });
}

// ---- Batches ----------------------------------------------------------------------------------

int beginBatch() {
    return onInstance([&](Instance& instance) {
        ++instance.batchDepth();
        return ISAM_OK;
    });
}

int endBatch() {
    return onInstance([&](Instance& instance) {
        if (instance.batchDepth() == 0) return ISAM_NO_BATCH;
        if (--instance.batchDepth() > 0) return ISAM_OK;
        const int failure = std::exchange(instance.batchFailure(), 0);
        if (failure) return failure;
        return instance.container() ? instance.container()->commit() : ISAM_OK;
    });
}

int abortBatch() {
    return onInstance([&](Instance& instance) {
        if (instance.batchDepth() == 0) return ISAM_NO_BATCH;
        // Discarding is what a failed batch needed anyway: what follows may commit.
        instance.batchFailure() = 0;
        return instance.container() ? instance.container()->rollback() : ISAM_OK;
    });
}

int verifyContainer() {
    return onInstance([&](Instance& instance) {
        return instance.container() ? instance.container()->verify() : ISAM_NOT_OPEN;
    });
}

int settleForBulkWork() {
    return onInstance([&](Instance& instance) {
        return instance.container() ? instance.container()->settleForBulkWork() : ISAM_OK;
    });
}

int batchDepth() {
    Instance* instance = selectedInstance();
    return instance ? instance->batchDepth() : 0;
}

}  // namespace isam
