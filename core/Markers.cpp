#include "core/Markers.h"

namespace qvb {

PhraseIdList& untranslatedPhrases() {
    thread_local PhraseIdList list;
    return list;
}

PhraseIdList& userFilterPhrases() {
    thread_local PhraseIdList list;
    return list;
}

}  // namespace qvb
