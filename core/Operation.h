// How every public operation runs: as one engine batch, so that all it writes is
// committed together when it ends, and with no exception leaving the library.
#pragma once

#include <new>
#include <stdexcept>
#include <string>

#include "core/DbState.h"
#include "isam/IsamErrors.h"
#include "qvb/CDbObject.h"

template <typename Body>
int CDbObject::Run(Body body) {
    // The instance is named, not held: an operation may tear the state block down.
    std::string instance;
    if (m_pStructs && m_pStructs->engine) instance = m_pStructs->engine->InstanceName();
    const bool batched = !instance.empty() && isam::selectInstance(instance.c_str()) == isam::ISAM_OK &&
                         isam::beginBatch() == isam::ISAM_OK;
    const WORD staleBefore = m_FilterValid;
    int result = 0;
    try {
        result = body();
    } catch (const std::bad_alloc&) {
        SetError(isam::ISAM_OUT_OF_MEMORY);
        result = 0;
    } catch (const std::exception&) {
        SetError(isam::ISAM_INTERNAL);
        result = 0;
    }
    if (batched && isam::selectInstance(instance.c_str()) == isam::ISAM_OK) {
        // A work that cannot be committed has not happened.
        const int committed = isam::endBatch();
        if (committed != isam::ISAM_OK && committed != isam::ISAM_NO_BATCH) {
            // Nor has a refresh whose markers were not committed.
            m_FilterValid |= staleBefore;
            if (result) SetError(committed);
            result = 0;
        }
    }
    return result;
}
