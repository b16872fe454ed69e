#include "core/Markers.h"

namespace qvb {

PhraseIdList& untranslatedPhrases() {
    static PhraseIdList list;
    return list;
}

PhraseIdList& userFilterPhrases() {
    static PhraseIdList list;
    return list;
}

}  // namespace qvb
