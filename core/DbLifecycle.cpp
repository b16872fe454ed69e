// Creating, opening, rebuilding, repairing and closing a database.
#include <cstdint>
#include <cstring>
#include <string>

#include "core/DbState.h"
#include "core/LibraryErrors.h"
#include "core/Markers.h"
#include "core/Operation.h"
#include "core/RecordAccess.h"

using namespace qvb::catalogue;

namespace {

// Below these stored versions the phrase tables still have their old layout.
constexpr int kFirstProjectWithCurrentPhrases = 16;
constexpr int kFirstDictionaryWithCurrentPhrases = 2;

// How many tables (list indices 0 .. n-1) a project of a stored version has.
int projectTablesAt(int version) {
    if (version < 4) return 15;
    if (version < 5) return 18;
    if (version < 7) return 24;
    if (version < 8) return 25;
    if (version < 15) return 26;
    if (version < 19) return 28;
    if (version < 20) return 30;
    if (version < 21) return 31;
    return kTableCount;
}

bool phrasesInOldLayout(DBTYPEONE kind, int version) {
    if (kind == PROJECT) return version < kFirstProjectWithCurrentPhrases;
    return kind == DICTINARY && version < kFirstDictionaryWithCurrentPhrases;
}

// The stored version (resource 0). ISAM_NO_RECORD when there is none: only this
// library makes such a database, always with the current layouts and every table.
int readStoredVersion(DbStateBlock& block, CIsamTable& first, int* version) {
    std::uint8_t bytes[CIsamResource::kMostData];
    std::size_t length = sizeof bytes;
    const int rc = block.engine->GetResource(first, 0, bytes, &length);
    if (rc != isam::ISAM_OK) return rc;
    std::int32_t stored = 0;
    if (length != sizeof stored) return isam::ISAM_DAMAGED;
    std::memcpy(&stored, bytes, sizeof stored);
    *version = stored;
    return isam::ISAM_OK;
}

// A project's container holds tables that a dictionary's never has. Asked of the
// container's catalogue, so that the answer needs no table opened.
int checkKind(CIsamContainer& container, DBTYPEONE kind) {
    if (kind != PROJECT && kind != DICTINARY) return isam::ISAM_OK;
    bool project = false;
    for (int i = kDictionaryTableCount; i < kTableCount && !project; ++i) {
        const int rc = container.HoldsMember(currentTable(i)->name, &project);
        if (rc != isam::ISAM_OK) return rc;
    }
    return project == (kind == PROJECT) ? isam::ISAM_OK : QVB_OTHER_KIND;
}

// A rebuild writes to the file, so the kind is checked before it. A file that does
// not open is left to the rebuild to report.
int checkKindBeforeRebuild(CIsamContainer& container, DBTYPEONE kind) {
    if (container.Open() != isam::ISAM_OK) return isam::ISAM_OK;
    const int rc = checkKind(container, kind);
    (void)container.Close();
    return rc;
}

// A table the container does not have, although its kind and version have it.
int asMissingTable(int rc) { return rc == isam::ISAM_FILE_NOT_FOUND ? isam::ISAM_DAMAGED : rc; }

// Lets go of whatever a failed open had opened, as a close would.
void releaseFiles(DbStateBlock& block) {
    for (auto& table : block.tables) {
        if (table && table->IsOpen()) (void)table->Close();
    }
    (void)block.container->Close();
    for (auto& table : block.tables) {
        if (table) table->Forget();
    }
}

}  // namespace

int CDbObject::TablesAtStoredVersion() {
    if (m_DbTyp != PROJECT || !m_pStructs) return GetTopTableIndex();
    int version = 0;
    const int rc = readStoredVersion(*m_pStructs, Table(TAB_SLANG), &version);
    return rc == isam::ISAM_OK ? projectTablesAt(version) : GetTopTableIndex();
}

void CDbObject::BindOldPhraseLayout() {
    CIsamTable& phrases = Table(TAB_DIC);
    (void)phrases.Close();
    phrases.ReleaseDefinition();
    phrases.Define(*earlierTable('D', TAB_DIC));
}

// ---- Create ---------------------------------------------------------------------------

int CDbObject::CreateDb(const char* directory, const char* name) {
    return Run([&] {
        // Only a create that succeeds marks the next open as that of a new database.
        m_NewDb = 0;
        if (!AllocStructs()) return 0;
        m_FilePath = directory;
        m_FileName = name;
        m_pStructs->engine->SetDirectory(static_cast<const char*>(m_FilePath));
        if (m_pStructs->state == DB_ALLOCATED && !RegisterTables()) return 0;

        CIsamContainer& container = *m_pStructs->container;
        container.SetFileName(std::string(m_FileName) + "." + GetDbExtension());
        if (!Succeeded(container.Create())) {
            (void)container.Close();
            return 0;
        }
        for (int i = 0; i < GetTopTableIndex(); ++i) {
            CIsamTable& table = Table(i);
            if (!Succeeded(table.Create())) {
                (void)table.Close();
                (void)container.Close();
                return 0;
            }
            (void)table.Close();
        }
        if (!Succeeded(container.Close())) return 0;
        m_NewDb = 1;
        return 1;
    });
}

// ---- Open -----------------------------------------------------------------------------

int CDbObject::OpenDb(const char* directory, const char* name, int rebuild) {
    return Run([&] { return OpenDatabase(directory, name, rebuild, false); });
}

int CDbObject::RepairOpenDb(const char* directory, const char* name, int rebuild) {
    return Run([&] { return OpenDatabase(directory, name, rebuild, true); });
}

// The rebuild of one table during a rebuilding open: its indexes are rebuilt in the
// engine's plain order, the locale coming back when the table is opened.
int CDbObject::RebuildTable(int index, bool repair) {
    CIsamTable& table = Table(index);
    int rc = table.Open();
    if (rc == isam::ISAM_OK) rc = table.SetLocale(0);
    const int closed = table.Close();
    if (rc == isam::ISAM_OK) rc = closed;
    if (rc == isam::ISAM_OK) {
        table.Define(*table.Table());
        rc = table.Rebuild();
    }
    if (repair) return 1;
    return Succeeded(asMissingTable(rc)) ? 1 : 0;
}

int CDbObject::OpenDatabase(const char* directory, const char* name, int rebuild, bool repair) {
    if (!m_pStructs && !AllocStructs()) return 0;
    if (m_pStructs->state == DB_OPEN && !CloseDb()) return 0;
    if (m_pStructs->state == DB_REGISTERED) {
        if (!UnRegisterTables() || m_pStructs->state != DB_ALLOCATED) return 0;
    }
    if (m_pStructs->state != DB_ALLOCATED) return 0;

    m_FilterValid = qvb::kBothFiltersStale;
    m_FilePath = directory;
    m_FileName = name;
    m_pStructs->engine->SetDirectory(static_cast<const char*>(m_FilePath));
    if (!RegisterTables()) return 0;

    // A failed open leaves the database registered with nothing open, as a close
    // would, so that the object opens or creates again.
    const auto fail = [&] {
        releaseFiles(*m_pStructs);
        m_NewDb = 0;
        return 0;
    };
    CIsamContainer& container = *m_pStructs->container;
    container.SetFileName(std::string(m_FileName) + "." + GetDbExtension());
    if (rebuild) {
        if (!Succeeded(checkKindBeforeRebuild(container, m_DbTyp))) return fail();
        const int rc = m_pStructs->engine->RebuildNamedFile(container.FullName());
        if (!repair && !Succeeded(rc)) return fail();
    }
    const bool containerOpen = Succeeded(container.Open());
    if (!containerOpen && !repair) return fail();
    if (containerOpen && !Succeeded(checkKind(container, m_DbTyp))) return fail();

    int count = GetTopTableIndex();
    for (int i = 0; i < count; ++i) {
        if (rebuild && !RebuildTable(i, repair)) return fail();
        if (!Succeeded(asMissingTable(Table(i).Open()))) {
            if (repair) continue;
            return fail();
        }
        // Table 0 holds the stored version, which decides the rest.
        if (i == 0 && !m_NewDb && !repair) {
            int version = 0;
            const int rc = readStoredVersion(*m_pStructs, Table(0), &version);
            if (rc == isam::ISAM_NO_RECORD) {
                SetError(isam::ISAM_OK);
                continue;
            }
            if (!Succeeded(rc)) return fail();
            if (phrasesInOldLayout(m_DbTyp, version)) BindOldPhraseLayout();
            if (m_DbTyp == PROJECT) count = projectTablesAt(version);
        }
    }
    m_NewDb = 0;

    // Every text key is ordered under the database's sort locale.
    for (int i = 0; i < count; ++i) {
        if (Table(i).IsOpen()) (void)Table(i).SetLocale(m_SortLCID);
    }
    if (rebuild) {
        const bool updated = UpdateDictionaryAfterRebuild() != 0;
        if (!updated && !repair) return fail();
    }
    m_pStructs->state = DB_OPEN;
    return 1;
}

int CDbObject::SafeOpenDb(const char* directory, const char* name) {
    // Copies: tearing the state block down must not take the caller's texts along.
    const std::string path = directory ? directory : "";
    const std::string file = name ? name : "";
    (void)DeAllocStructs();
    if (!OpenDb(path.c_str(), file.c_str(), 1)) return 0;

    CDWordArray pairs;
    if (!EnumSLang(pairs) || pairs.GetSize() == 0) return 0;
    DWORD sourceLanguage = 0;
    DWORD otherLanguage = 0;
    DWORD flags = 0;
    CString font;
    if (!GetSLang(pairs[0], &sourceLanguage, &otherLanguage, font, &flags)) return 0;
    (void)SetSortLCID(sourceLanguage, 0);
    return CloseDb() && OpenDb(path.c_str(), file.c_str(), 1) ? 1 : 0;
}

// ---- Close ----------------------------------------------------------------------------

int CDbObject::CloseDb() {
    if (!m_pStructs || m_pStructs->state != DB_OPEN) return 1;
    return Run([&] {
        const int count = TablesAtStoredVersion();
        for (int i = 0; i < count; ++i) {
            CIsamTable& table = Table(i);
            if (table.IsOpen() && !Succeeded(table.Close())) return 0;
        }
        const int closed = m_pStructs->container->Close();
        // Closing the container lets go of every member, the ones a stored version
        // does not count among its tables included.
        for (int i = 0; i < GetTopTableIndex(); ++i) Table(i).Forget();
        if (!Succeeded(closed)) return 0;
        m_pStructs->state = DB_REGISTERED;
        return 1;
    });
}
