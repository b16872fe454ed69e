// Which table each kind of resource element lives in, and how its phrase is found:
// the mapping behind exceptions and the notice test of the user filter.
#pragma once

#include "qvb/Records.h"

namespace qvb {

enum class PhraseOf {
    TextIdField,  // the record's TextId
    ElementId,    // the element is the phrase: its identifier is the TextId
    None,         // the element has no phrase of its own
};

struct ResourceKind {
    RESTABLE kind;
    int table;  // table list index; every element is found by its identifier in I1
    PhraseOf phrase;
};

// Null for a value that names no table.
const ResourceKind* resourceKind(RESTABLE kind);

}  // namespace qvb
