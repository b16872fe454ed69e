// Construction, copying and the state block of a database object: allocating it,
// registering the tables with the engine instance, and taking both apart again.
#include <cstring>

#include "core/DbState.h"
#include "core/Markers.h"
#include "core/Operation.h"
#include "qvb/CDbDictionary.h"
#include "qvb/CDbProject.h"

using namespace qvb::catalogue;

namespace {

constexpr DWORD kDefaultSortLocale = 1033;

}  // namespace

CDbObject::CDbObject(DBTYPEONE kind)
    : m_pStructs(nullptr),
      m_Error(0),
      m_SortLCID(kDefaultSortLocale),
      m_NewDb(0),
      m_DbTyp(kind),
      m_FilterValid(qvb::kBothFiltersStale),
      m_Reserved(0),
      m_Filter(FilterNone),
      m_UserFilter() {
    (void)AllocStructs();
}

CDbObject::CDbObject(const CDbObject& other)
    : m_FilePath(other.m_FilePath),
      m_FileName(other.m_FileName),
      m_pStructs(other.m_pStructs),
      m_Error(other.m_Error),
      m_SortLCID(other.m_SortLCID),
      m_NewDb(other.m_NewDb),
      m_DbTyp(other.m_DbTyp),
      m_FilterValid(other.m_FilterValid),
      m_Reserved(other.m_Reserved),
      m_Filter(other.m_Filter),
      m_UserFilter(other.m_UserFilter) {
    if (m_pStructs) ++m_pStructs->owners;
}

CDbObject& CDbObject::operator=(const CDbObject& other) {
    if (this == &other) return *this;
    // Member by member, the state block included: both objects then share it.
    if (other.m_pStructs) ++other.m_pStructs->owners;
    (void)DeAllocStructs();
    m_FilePath = other.m_FilePath;
    m_FileName = other.m_FileName;
    m_pStructs = other.m_pStructs;
    m_Error = other.m_Error;
    m_SortLCID = other.m_SortLCID;
    m_NewDb = other.m_NewDb;
    m_DbTyp = other.m_DbTyp;
    m_FilterValid = other.m_FilterValid;
    m_Reserved = other.m_Reserved;
    m_Filter = other.m_Filter;
    std::memcpy(&m_UserFilter, &other.m_UserFilter, sizeof m_UserFilter);
    return *this;
}

CDbObject::~CDbObject() { (void)DeAllocStructs(); }

// ---- State block --------------------------------------------------------------------------

int CDbObject::AllocStructs() {
    if (m_pStructs) {
        // Bring the existing block back to its first state.
        if (m_pStructs->state == DB_OPEN && !CloseDb()) return 0;
        if (m_pStructs->state == DB_REGISTERED) UnRegisterTables();
        return 1;
    }
    try {
        auto block = std::make_unique<DbStateBlock>();
        block->engine = std::make_unique<CTrovaDB>();
        block->container = std::make_unique<CIsamContainer>();
        for (int i = 0; i < GetTopTableIndex(); ++i) {
            block->tables[static_cast<std::size_t>(i)] = std::make_unique<CIsamTable>();
        }
        m_pStructs = block.release();
    } catch (const std::bad_alloc&) {
        SetError(isam::ISAM_OUT_OF_MEMORY);
        return 0;
    }
    return 1;
}

int CDbObject::DeAllocStructs() {
    if (!m_pStructs) return 1;
    if (--m_pStructs->owners > 0) {
        // A copy still works on the database; this object only lets go of it.
        m_pStructs = nullptr;
        return 1;
    }
    if (m_pStructs->state == DB_OPEN) (void)CloseDb();
    if (m_pStructs->state == DB_REGISTERED) (void)UnRegisterTables();
    // Whatever could not be closed goes with the engine instance, which commits
    // and closes its container when it is unregistered.
    delete m_pStructs;
    m_pStructs = nullptr;
    return 1;
}

int CDbObject::RegisterTables() {
    if (!m_pStructs) return 0;
    if (m_pStructs->state == DB_OPEN && !CloseDb()) return 0;
    if (m_pStructs->state == DB_REGISTERED) UnRegisterTables();

    CTrovaDB& engine = *m_pStructs->engine;
    CIsamContainer& container = *m_pStructs->container;
    if (engine.RegisterContainer(&container) != isam::ISAM_OK) {
        SetError(QVB_REGISTRATION_FAILED);
        return 0;
    }
    for (int i = 0; i < GetTopTableIndex(); ++i) {
        CIsamTable* table = m_pStructs->tables[static_cast<std::size_t>(i)].get();
        if (!table || engine.RegisterTable(table) != isam::ISAM_OK) {
            SetError(QVB_REGISTRATION_FAILED);
            return 0;
        }
        table->SetOwner(&container);
        table->Define(*currentTable(i));
    }
    m_pStructs->state = DB_REGISTERED;
    return 1;
}

int CDbObject::UnRegisterTables() {
    if (!m_pStructs) return 0;
    CTrovaDB& engine = *m_pStructs->engine;
    for (int i = GetTopTableIndex() - 1; i >= 0; --i) {
        CIsamTable* table = m_pStructs->tables[static_cast<std::size_t>(i)].get();
        if (!table) continue;
        (void)engine.UnregisterTable(table);
        table->ReleaseDefinition();
        table->SetOwner(nullptr);
    }
    (void)engine.UnregisterContainer(m_pStructs->container.get());
    m_pStructs->state = DB_ALLOCATED;
    return 1;
}

const char* CDbObject::GetDbExtension() {
    switch (m_DbTyp) {
        case PROJECT: return "Prj";
        case DICTINARY: return "Dic";
    }
    return "___";
}

int CDbObject::GetTopTableIndex() {
    switch (m_DbTyp) {
        case PROJECT: return kTableCount;
        case DICTINARY: return kDictionaryTableCount;
    }
    return 0;
}

CIsamTable& CDbObject::Table(int index) {
    if (m_pStructs && index >= 0 && index < GetTopTableIndex()) {
        if (CIsamTable* table = m_pStructs->tables[static_cast<std::size_t>(index)].get()) return *table;
    }
    static thread_local CIsamTable absent;
    return m_pStructs ? m_pStructs->absent : absent;
}

// ---- Error code and accessors ------------------------------------------------------------

void CDbObject::SetError(LONG error) { m_Error = error; }

void CDbObject::ClearError() { m_Error = 0; }

bool CDbObject::Succeeded(int result) {
    SetError(result);
    return result == isam::ISAM_OK;
}

LONG CDbObject::GetError() { return m_Error; }

DBTYPEONE CDbObject::GetDbTyp() { return m_DbTyp; }

CString CDbObject::GetFileName() { return m_FileName; }

CString CDbObject::GetFilePath() { return m_FilePath; }

FILTER CDbObject::GetFilter() { return m_Filter; }

void CDbObject::SetFilter(FILTER filter) { m_Filter = filter; }

// ---- The two kinds ----------------------------------------------------------------------

CDbProject::CDbProject() : CDbObject(PROJECT) {}
CDbProject::CDbProject(const CDbProject& other) : CDbObject(other) {}
CDbProject& CDbProject::operator=(const CDbProject& other) {
    CDbObject::operator=(other);
    return *this;
}
CDbProject::~CDbProject() = default;

CDbDictionary::CDbDictionary() : CDbObject(DICTINARY) {}
CDbDictionary::CDbDictionary(const CDbDictionary& other) : CDbObject(other) {}
CDbDictionary& CDbDictionary::operator=(const CDbDictionary& other) {
    CDbObject::operator=(other);
    return *this;
}
CDbDictionary::~CDbDictionary() = default;
