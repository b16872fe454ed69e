// The refreshes of a project: the dictionary pass over the pair's phrases, then the
// passes over the resource records of the pair's language modules, which read the
// phrase lists the dictionary pass leaves. The table passes run in a fixed order
// and stop at the first failure.
#include "dictionary/Refresh.h"
#include "qvb/CDbProject.h"

using namespace qvb;

int CDbProject::RefreshNotTranslatedFilter(DWORD PairLangId) {
    return RefreshMarkers(kNotTranslatedStale, [&] {
        CDWordArray modules;
        return SetNotTranslatedFlagInDictionary(PairLangId) && EnumLangModul(modules, PairLangId) &&
               SetNotTranslatedFlagInMessageTable(modules) && SetNotTranslatedFlagInStringTable(modules);
    });
}

int CDbProject::RefreshUserFilter(DWORD PairLangId, const USERFILTER& filter) {
    // A project's filter keeps every condition it was given.
    AdoptUserFilter(filter, false);
    DWORD source = 0;
    DWORD target = 0;
    if (!UserFilterLanguages(PairLangId, &source, &target)) return 0;
    return RefreshMarkers(kUserFilterStale, [&] {
        CDWordArray modules;
        return SetUserFilterFlagInDictionary(PairLangId, source, target) &&
               EnumLangModul(modules, PairLangId) && SetUserFilterFlagInMessageTable(modules) &&
               SetUserFilterFlagInStringTable(modules);
    });
}
