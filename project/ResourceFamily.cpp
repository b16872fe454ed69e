#include "project/ResourceFamily.h"

#include <vector>

namespace qvb {

int ResourceFamilyOps::find(DWORD id, Loading loading) {
    const int rc = table_.FindId(id);
    if (rc != isam::ISAM_OK) return rc;
    return loading == Loading::Whole ? table_.ReadCurrent() : table_.ReadCurrentFixedPart();
}

int ResourceFamilyOps::failure() const {
    const LONG error = db_.m_Error;
    return error != 0 ? static_cast<int>(error) : isam::ISAM_INTERNAL;
}

int ResourceFamilyOps::remove(DWORD id, Loading loading) {
    db_.MarkFiltersStale();
    std::uint32_t textId = 0;
    std::uint32_t noticeId = 0;
    int rc = find(id, loading);
    if (rc == isam::ISAM_OK) {
        rc = RecordReader(table_).Long("TextId", &textId).Long("NoticeId", &noticeId).error();
    }
    if (rc != isam::ISAM_OK) return rc;
    if (!db_.DeleteBoundException(textId, family_.kind, id)) return failure();
    if (!db_.ChangeCountInDictionary(textId, FALSE)) return failure();
    // A notice that is gone already does not keep the record.
    if (noticeId != 0) (void)db_.DeleteNotice(noticeId);
    return table_.Delete();
}

int ResourceFamilyOps::enumerate(CDWordArray& ids, int index, DWORD key) {
    return enumerate(ids, index, key, nullptr);
}

int ResourceFamilyOps::enumerate(CDWordArray& ids, int index, DWORD key,
                                 const std::function<void(const CIsamTable&)>& listed) {
    return forEachWithId(table_, index, key, [&] {
        std::uint32_t flags = 0;
        std::uint32_t id = 0;
        const int rc = RecordReader(table_).Long("Flags", &flags).Long(family_.idField, &id).error();
        if (rc != isam::ISAM_OK || !db_.IsFiltered(flags)) return rc;
        ids.Add(id);
        if (listed) listed(table_);
        return rc;
    });
}

int ResourceFamilyOps::count(DWORD* pCount, int index, DWORD key) {
    return countByEnumerating(pCount, [&](CDWordArray& ids) { return enumerate(ids, index, key); });
}

template <typename Belongs>
int ResourceFamilyOps::markRecords(const CDWordArray& owners, std::uint32_t marker, Belongs belongs) {
    bool rewritten = false;
    int rc = isam::ISAM_OK;
    for (int i = 0; rc == isam::ISAM_OK && i < owners.GetSize(); ++i) {
        rc = forEachWithId(table_, family_.ownerIndex, owners[i], [&] {
            std::uint32_t textId = 0;
            std::uint32_t flags = 0;
            bool in = false;
            int step = RecordReader(table_).Long("TextId", &textId).Long("Flags", &flags).error();
            if (step != isam::ISAM_OK || !db_.IsFiltered(flags)) return step;
            step = belongs(textId, &in);
            const std::uint32_t marked = withMarker(flags, marker, in);
            if (step != isam::ISAM_OK || marked == flags) return step;
            rewritten = true;
            step = RecordWriter(table_).Long("Flags", marked).error();
            return step != isam::ISAM_OK ? step : table_.Rewrite();
        });
    }
    if (rewritten) db_.MarkFiltersStale();
    return rc;
}

int ResourceFamilyOps::markNotTranslated(const CDWordArray& owners) {
    const PhraseIdList& untranslated = untranslatedPhrases();
    return markRecords(owners, kNotTranslatedMarker, [&](std::uint32_t textId, bool* in) {
        *in = untranslated.contains(textId);
        return isam::ISAM_OK;
    });
}

int ResourceFamilyOps::markUserFilter(const CDWordArray& owners, bool included) {
    return markRecords(owners, kUserFilterMarker, [&](std::uint32_t textId, bool* in) {
        int inFilter = 0;
        if (included && !db_.IsPhraseInUserFilter(family_.kind, textId, &inFilter)) return failure();
        *in = included && inFilter != 0;
        return isam::ISAM_OK;
    });
}

}  // namespace qvb
