// The frame every refresh runs its passes in.
#pragma once

#include "core/Markers.h"
#include "core/Operation.h"

template <typename Passes>
int CDbObject::RefreshMarkers(WORD refreshed, Passes passes) {
    return Run([&] {
        // The passes rewrite records, which marks both markers stale; the other
        // marker is not touched by them, so its validity is put back afterwards.
        const WORD other = qvb::kBothFiltersStale & ~refreshed;
        const bool otherWasValid = (m_FilterValid & other) == 0;
        const FILTER saved = m_Filter;
        m_Filter = FilterNone;
        const int done = passes();
        m_Filter = saved;
        if (done) m_FilterValid &= static_cast<WORD>(~refreshed);
        if (otherWasValid) m_FilterValid &= static_cast<WORD>(~other);
        return done;
    });
}
