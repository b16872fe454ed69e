// The current filter and whether the markers it selects by are up to date.
#include "core/Markers.h"
#include "core/Operation.h"

using namespace qvb;

int CDbObject::IsFilterValid(FILTER filter) {
    switch (filter) {
        case FilterNone: return 1;
        case FilterUser: return (m_FilterValid & kUserFilterStale) ? 0 : 1;
        case FilterNotTranslated: return (m_FilterValid & kNotTranslatedStale) ? 0 : 1;
    }
    return 0;
}

int CDbObject::IsFiltered(DWORD Flags) {
    switch (m_Filter) {
        case FilterNone: return 1;
        case FilterUser: return (Flags & kUserFilterMarker) ? 1 : 0;
        case FilterNotTranslated: return (Flags & kNotTranslatedMarker) ? 1 : 0;
    }
    return 0;
}

void CDbObject::MarkFiltersStale() { m_FilterValid = kBothFiltersStale; }

void CDbObject::AdoptUserFilter(const USERFILTER& filter, bool dictionaryRules) {
    m_UserFilter = filter;
    if (dictionaryRules) {
        // A dictionary's phrases are neither used by resources, nor read-only, nor
        // limited in length: those conditions cannot apply.
        m_UserFilter.StateUsed = 2;
        m_UserFilter.StateReadOnly = 2;
        m_UserFilter.StateLimited = 2;
    }
}

int CDbObject::UserFilterLanguages(DWORD PairLangId, DWORD* PLangId, DWORD* SLangId) {
    CString font;
    DWORD flags = 0;
    if (GetSLang(PairLangId, PLangId, SLangId, font, &flags)) return 1;
    // The refresh has switched the filter off before it looks the pair up.
    m_Filter = FilterNone;
    return 0;
}
