// Creating, opening, rebuilding, repairing and closing a database.
#include <string>

#include "core/DbState.h"
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

}  // namespace

int CDbObject::TablesAtStoredVersion() {
    return m_DbTyp == PROJECT ? projectTablesAt(GetDBVersion()) : GetTopTableIndex();
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
        if (!AllocStructs()) return 0;
        m_NewDb = 1;
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
        return Succeeded(container.Close()) ? 1 : 0;
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
    if (!Succeeded(rc)) {
        for (int i = 0; i < index; ++i) (void)Table(i).Close();
        (void)m_pStructs->container->Close();
        return 0;
    }
    return 1;
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

    CIsamContainer& container = *m_pStructs->container;
    container.SetFileName(std::string(m_FileName) + "." + GetDbExtension());
    if (rebuild) {
        const int rc = m_pStructs->engine->RebuildNamedFile(container.FullName());
        if (!repair && !Succeeded(rc)) return 0;
    }
    if (!Succeeded(container.Open()) && !repair) {
        (void)container.Close();
        return 0;
    }

    int count = GetTopTableIndex();
    for (int i = 0; i < count; ++i) {
        if (rebuild && !RebuildTable(i, repair)) return 0;
        if (!Succeeded(Table(i).Open())) {
            if (repair) continue;
            return 0;
        }
        // Table 0 holds the stored version, which decides the rest.
        if (i == 0 && !m_NewDb && !repair) {
            const int version = GetDBVersion();
            const int current = m_DbTyp == PROJECT ? kFirstProjectWithCurrentPhrases
                                                   : kFirstDictionaryWithCurrentPhrases;
            if ((m_DbTyp == PROJECT || m_DbTyp == DICTINARY) && version < current) {
                BindOldPhraseLayout();
            }
            if (m_DbTyp == PROJECT) count = projectTablesAt(version);
            SetError(isam::ISAM_OK);
        }
    }
    m_NewDb = 0;

    // Every text key is ordered under the database's sort locale.
    for (int i = 0; i < count; ++i) {
        if (Table(i).IsOpen()) (void)Table(i).SetLocale(m_SortLCID);
    }
    if (rebuild) {
        const bool updated = UpdateDictionaryAfterRebuild() != 0;
        if (!updated && !repair) return 0;
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
