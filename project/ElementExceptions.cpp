// Exceptions seen from the resource elements: binding elements to their own
// phrases, and undoing one such binding. Built on the shared exception operations,
// run inside this operation's batch.
#include "core/LibraryErrors.h"
#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "dictionary/ResourceKinds.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// The phrase of one element of a known kind, read from `elements` only when the
// element carries it.
int phraseOfElement(const ResourceKind& kind, CIsamTable& elements, DWORD ElementId,
                    std::uint32_t* TextId) {
    switch (kind.phrase) {
        case PhraseOf::ElementId:
            *TextId = ElementId;
            return isam::ISAM_OK;
        case PhraseOf::None:
            *TextId = 0;
            return isam::ISAM_OK;
        case PhraseOf::TextIdField:
            break;
    }
    const int rc = readById(elements, ElementId);
    return rc != isam::ISAM_OK ? rc : elements.GetLong("TextId", TextId);
}

}  // namespace

int CDbProject::GetRecordTextID(RESTABLE kind, DWORD ElementId, DWORD& TextId) {
    return Run([&] {
        const ResourceKind* known = resourceKind(kind);
        if (!known) return Result(QVB_UNKNOWN_KIND);
        std::uint32_t phrase = 0;
        if (!Succeeded(phraseOfElement(*known, Table(known->table), ElementId, &phrase))) return 0;
        TextId = phrase;
        return 1;
    });
}

int CDbProject::AddExceptions(RESTABLE kind, const CDWordArray& elementIds) {
    return Run([&] {
        for (int i = 0; i < elementIds.GetSize(); ++i) {
            DWORD textId = 0;
            DWORD exceptionId = 0;
            if (!GetRecordTextID(kind, elementIds[i], textId)) return 0;
            if (!AddException(&exceptionId, textId, static_cast<DWORD>(kind), elementIds[i], 0)) return 0;
        }
        return Result(isam::ISAM_OK);
    });
}

int CDbProject::DeleteBoundException(DWORD TextId, RESTABLE kind, DWORD ElementId) {
    return Run([&] {
        CDWordArray ids;
        if (!EnumExceptions(ids, TextId)) return 0;
        for (int i = 0; i < ids.GetSize(); ++i) {
            DWORD boundText = 0, boundKind = 0, boundElement = 0;
            if (!GetException(ids[i], &boundText, &boundKind, &boundElement, nullptr)) return 0;
            if (boundText == TextId && boundKind == static_cast<DWORD>(kind) && boundElement == ElementId) {
                return DeleteExceptions(ids[i]);
            }
        }
        return Result(isam::ISAM_OK);
    });
}
