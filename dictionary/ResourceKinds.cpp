#include "dictionary/ResourceKinds.h"

#include "core/Catalogue.h"

namespace qvb {

namespace {

using namespace catalogue;

constexpr ResourceKind kKinds[] = {
    {RES_STRINGTABLE, TAB_STABLE, PhraseOf::TextIdField},
    {RES_MESSAGETABLE, TAB_MTABLE, PhraseOf::TextIdField},
    {RES_DIALOG, TAB_DIALOG, PhraseOf::TextIdField},
    {RES_MENUITEM, TAB_MITEM, PhraseOf::TextIdField},
    {RES_CONTROL, TAB_CONTROL, PhraseOf::TextIdField},
    {RES_DLGINITCONTROL, TAB_DICTRL, PhraseOf::TextIdField},
    {RES_DICTIONARY, TAB_DIC, PhraseOf::ElementId},
    {RES_MENU, TAB_MENU, PhraseOf::None},
    {RES_VERSINFO, TAB_VERSINFO, PhraseOf::TextIdField},
    {RES_XML, TAB_XMLNODESR, PhraseOf::TextIdField},
    {RES_DBTRANSTABLE, TAB_TABLER, PhraseOf::None},
    {RES_DBTRANSRECORD, TAB_RECORDR, PhraseOf::TextIdField},
    {RES_CONTROLTOOLTIP, TAB_CTOOLTIP, PhraseOf::TextIdField},
    {RES_DLGTOOLTIP, TAB_DLGTOOLTIP, PhraseOf::TextIdField},
};

}  // namespace

const ResourceKind* resourceKind(RESTABLE kind) {
    for (const ResourceKind& entry : kKinds) {
        if (entry.kind == kind) return &entry;
    }
    return nullptr;
}

}  // namespace qvb
