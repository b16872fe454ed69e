// Tables one at a time, the resource records of table 0 with the stored version
// among them, and the application's own transactions.
#include <cstring>

#include "core/DbState.h"
#include "core/Operation.h"

using namespace qvb::catalogue;

namespace {

constexpr DWORD kVersionResource = 0;

// Runs a call on the database's engine instance object, which owns the resource
// buffer and the batches.
template <typename Call>
int onEngine(DbStateBlock* block, Call call) {
    if (!block || !block->engine) return QVB_NOT_REGISTERED;
    return call(*block->engine);
}

}  // namespace

// ---- Tables ---------------------------------------------------------------------------

int CDbObject::AddTable(LONG index) {
    return Run([&] {
        CIsamTable& table = Table(index);
        return Succeeded(table.Create()) && Succeeded(table.Close()) && Succeeded(table.Open());
    });
}

int CDbObject::OpenTable(LONG index) {
    return Run([&] { return Result(Table(index).Open()); });
}

int CDbObject::CloseTable(LONG index) {
    return Run([&] { return Result(Table(index).Close()); });
}

// ---- Resource records -------------------------------------------------------------------

namespace {

// The user filter's resource: the application's form is stored packed.
constexpr DWORD kUserFilterResource = 3;

bool isApplicationUserFilter(DWORD number, WORD length) {
    return number == kUserFilterResource && length == sizeof(USERFILTER);
}

}  // namespace

int CDbObject::AddResource(DWORD number, void* data, WORD length) {
    USERFILTER_IN_DB packed;
    if (isApplicationUserFilter(number, length)) {
        length = MakeUserFilterForDB(data, packed);
        data = &packed;
    }
    return Run([&] {
        return Result(onEngine(m_pStructs, [&](CTrovaDB& engine) {
            return engine.AddResource(Table(TAB_SLANG), number, data, length);
        }));
    });
}

int CDbObject::UpdateResourceA(DWORD number, void* data, WORD length) {
    USERFILTER_IN_DB packed;
    if (isApplicationUserFilter(number, length)) {
        length = MakeUserFilterForDB(data, packed);
        data = &packed;
    }
    return Run([&] {
        return Result(onEngine(m_pStructs, [&](CTrovaDB& engine) {
            return engine.UpdateResource(Table(TAB_SLANG), number, data, length);
        }));
    });
}

int CDbObject::GetResource(DWORD number, void* data, WORD* length) {
    return Run([&] {
        return Result(onEngine(m_pStructs, [&](CTrovaDB& engine) {
            const std::size_t room = length ? *length : 0;
            // Read into a buffer of our own: a stored user filter grows as it is
            // unpacked, and the caller's buffer is only written when all fits.
            alignas(USERFILTER) unsigned char own[CIsamResource::kMostData];
            std::size_t size = sizeof own;
            const int rc = engine.GetResource(Table(TAB_SLANG), number, own, &size);
            if (rc != isam::ISAM_OK) return rc;
            if (number == kUserFilterResource && size == sizeof(USERFILTER_IN_DB)) {
                size = ConvertUserFilterToApp(own, static_cast<WORD>(size));
            }
            if (size > room) return QVB_RESOURCE_BUFFER_SHORT;
            if (size && !data) return isam::ISAM_BAD_PARAMETER;
            if (size) std::memcpy(data, own, size);
            if (length) *length = static_cast<WORD>(size);
            return isam::ISAM_OK;
        }));
    });
}

int CDbObject::DeleteResource(DWORD number) {
    return Run([&] {
        return Result(onEngine(m_pStructs, [&](CTrovaDB& engine) {
            return engine.DeleteResource(Table(TAB_SLANG), number);
        }));
    });
}

int CDbObject::GetDBVersion() {
    // A missing or unreadable version reads as 0; GetError() tells why.
    std::int32_t version = 0;
    WORD length = sizeof version;
    (void)GetResource(kVersionResource, &version, &length);
    return version;
}

int CDbObject::SetDBVersion(int version) {
    std::int32_t stored = version;
    return UpdateResourceA(kVersionResource, &stored, sizeof stored);
}

// ---- Transactions ---------------------------------------------------------------------------

namespace {

// Runs a batch call on the database's engine instance.
template <typename Call>
int onInstance(DbStateBlock* block, Call call) {
    return onEngine(block, [&](CTrovaDB& engine) {
        const int rc = engine.SelectInstance();
        return rc != isam::ISAM_OK ? rc : call();
    });
}

bool isOpen(const DbStateBlock* block) { return block && block->state == DB_OPEN; }

}  // namespace

// A database that is not open has no transaction to begin or end. A batch that the
// application left open across a close is ended all the same, so that it does not
// hold back the commits of the next open.
// The application's own batch holds many writes until its commit: the connection
// settles for such bulk work (a larger page cache, fewer checkpoints).
int CDbObject::BeginTransaction() {
    if (!isOpen(m_pStructs)) return Result(isam::ISAM_NOT_OPEN);
    return Result(onInstance(m_pStructs, [] {
        const int rc = isam::beginBatch();
        if (rc == isam::ISAM_OK) (void)isam::settleForBulkWork();
        return rc;
    }));
}

int CDbObject::CommitTransaction() {
    const int rc = onInstance(m_pStructs, [] { return isam::endBatch(); });
    return Result(isOpen(m_pStructs) ? rc : isam::ISAM_NOT_OPEN);
}

int CDbObject::RollbackTransaction() {
    const int rc = onInstance(m_pStructs, [] {
        const int aborted = isam::abortBatch();
        return aborted != isam::ISAM_OK ? aborted : isam::endBatch();
    });
    return Result(isOpen(m_pStructs) ? rc : isam::ISAM_NOT_OPEN);
}
