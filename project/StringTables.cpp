// String tables: one record per string of a module's string-table resources.
#include <algorithm>
#include <utility>
#include <vector>

#include "project/ResourceFamily.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

constexpr int kByLangModul = 2;
constexpr int kByTextId = 3;
const ResourceFamily kStrings = {TAB_STABLE, "StringId", RES_STRINGTABLE, kByLangModul, kByTextId};

ResourceFamilyOps strings(CDbProject& db) { return ResourceFamilyOps(db, kStrings); }

// The fields every overload sets beside the identifier and the TextId.
auto stringFields(DWORD LangModulId, WORD ResId, DWORD Flags, DWORD NoticeId) {
    return [=](RecordWriter& r) {
        r.Long("LangModulId", LangModulId).Short("ResId", ResId).Long("Flags", Flags).Long("NoticeId", NoticeId);
    };
}

// The same and ResNetId.
auto stringFields(DWORD LangModulId, WORD ResId, DWORD Flags, DWORD NoticeId, const CString& ResNetId) {
    return [=, &ResNetId](RecordWriter& r) {
        stringFields(LangModulId, ResId, Flags, NoticeId)(r);
        r.Text("ResNetId", ResNetId);
    };
}

}  // namespace

int CDbProject::AddStringTable(DWORD* pStringId, DWORD LangModulId, DWORD TextId, WORD ResId,
                               DWORD Flags, DWORD NoticeId, CString& ResNetId) {
    return Run([&] {
        return Result(strings(*this)
                          .addNew(pStringId, TextId, stringFields(LangModulId, ResId, Flags, NoticeId, ResNetId)));
    });
}

int CDbProject::AddStringTable(DWORD* pStringId, DWORD LangModulId, DWORD TextId, WORD ResId,
                               DWORD Flags, DWORD NoticeId) {
    return Run([&] {
        return Result(strings(*this)
                          .addNew(pStringId, TextId, stringFields(LangModulId, ResId, Flags, NoticeId)));
    });
}

int CDbProject::AddStringTable(DWORD StringId, DWORD LangModulId, DWORD TextId, WORD ResId,
                               DWORD Flags, DWORD NoticeId) {
    return Run([&] {
        return Result(strings(*this)
                          .addWithCallersId(StringId, TextId, Counting::None,
                                            stringFields(LangModulId, ResId, Flags, NoticeId, CString())));
    });
}

int CDbProject::RepairAddStringTable(DWORD StringId, DWORD LangModulId, DWORD TextId, WORD ResId,
                                     DWORD Flags, DWORD NoticeId) {
    return Run([&] {
        return Result(strings(*this)
                          .addWithCallersId(StringId, TextId, Counting::PhraseUp,
                                            stringFields(LangModulId, ResId, Flags, NoticeId, CString())));
    });
}

int CDbProject::GetStringTable(DWORD StringId, DWORD* pLangModulId, DWORD* pTextId, WORD* pResId,
                               DWORD* pFlags, DWORD* pNoticeId, CString& ResNetId) {
    return Run([&] {
        return Result(readFieldsById(Table(TAB_STABLE), StringId, [&](RecordReader& r) {
            r.Long("LangModulId", pLangModulId)
                .Long("TextId", pTextId)
                .Short("ResId", pResId)
                .Long("Flags", pFlags)
                .Long("NoticeId", pNoticeId)
                .Text("ResNetId", ResNetId);
        }));
    });
}

int CDbProject::GetStringTable(DWORD StringId, DWORD* pLangModulId, DWORD* pTextId, WORD* pResId,
                               DWORD* pFlags, DWORD* pNoticeId) {
    CString ignored;
    return GetStringTable(StringId, pLangModulId, pTextId, pResId, pFlags, pNoticeId, ignored);
}

int CDbProject::GetStringTable(DWORD StringId, DWORD* pLangModulId, DWORD* pTextId, WORD* pResId,
                               DWORD* pFlags) {
    return GetStringTable(StringId, pLangModulId, pTextId, pResId, pFlags, nullptr);
}

int CDbProject::UpdateStringTable(DWORD StringId, DWORD LangModulId, DWORD TextId, WORD ResId,
                                  DWORD Flags, DWORD NoticeId) {
    // The find alone: ResNetId is rewritten with what the table object holds.
    return Run([&] {
        return Result(strings(*this)
                          .update(StringId, TextId, Loading::FixedPart,
                                  stringFields(LangModulId, ResId, Flags, NoticeId)));
    });
}

int CDbProject::UpdateStringTable(DWORD StringId, DWORD LangModulId, DWORD TextId, WORD ResId,
                                  DWORD Flags, DWORD NoticeId, CString& ResNetId) {
    return Run([&] {
        return Result(strings(*this)
                          .update(StringId, TextId, Loading::Whole,
                                  stringFields(LangModulId, ResId, Flags, NoticeId, ResNetId)));
    });
}

int CDbProject::DeleteStringTable(DWORD StringId) {
    return Run([&] { return Result(strings(*this).remove(StringId, Loading::FixedPart)); });
}

int CDbProject::DeleteStringTableOnly(DWORD StringId) {
    return Run([&] { return Result(strings(*this).removeOnly(StringId)); });
}

int CDbProject::DoEnumStringTable(CDWordArray& ids, DWORD LangModulId) {
    return Run([&] { return Result(strings(*this).enumerate(ids, kByLangModul, LangModulId)); });
}

int CDbProject::EnumStringTable(CDWordArray& ids, DWORD LangModulId, int bSort) {
    if (!bSort) return DoEnumStringTable(ids, LangModulId);
    // The walk hands over the ResId of each entry it lists, so that only the ids
    // the array held before are read again for the sort.
    const int before = ids.GetSize();
    std::vector<WORD> listedResIds;
    const int listed = Run([&] {
        return Result(strings(*this).enumerate(ids, kByLangModul, LangModulId, [&](const CIsamTable& entry) {
            WORD resId = 0;
            (void)entry.GetShort("ResId", &resId);
            listedResIds.push_back(resId);
        }));
    });
    SortByResId(ids, before, listedResIds);
    return listed;
}

int CDbProject::GetStringTableCount(DWORD* pCount, DWORD LangModulId) {
    return Run([&] { return Result(strings(*this).count(pCount, kByLangModul, LangModulId)); });
}

int CDbProject::EnumStringTableTextId(CDWordArray& ids, DWORD TextId) {
    return Run([&] { return Result(strings(*this).enumerate(ids, kByTextId, TextId)); });
}

int CDbProject::GetStringTableTextIdCount(DWORD* pCount, DWORD TextId) {
    return Run([&] { return Result(strings(*this).count(pCount, kByTextId, TextId)); });
}

void CDbProject::SortStringTableIDList(CDWordArray& ids) {
    SortByResId(ids, ids.GetSize(), {});
}

void CDbProject::SortByResId(CDWordArray& ids, int unknown, const std::vector<WORD>& knownResIds) {
    if (ids.GetSize() < 2) return;
    (void)Run([&] {
        CIsamTable& strings = Table(TAB_STABLE);
        std::vector<std::pair<WORD, DWORD>> byResId;
        byResId.reserve(static_cast<std::size_t>(ids.GetSize()));
        for (int i = 0; i < ids.GetSize(); ++i) {
            if (i >= unknown) {
                // Taken from the record as the walk read it, as a read by id would.
                SetError(isam::ISAM_OK);
                byResId.emplace_back(knownResIds[static_cast<std::size_t>(i - unknown)], ids[i]);
                continue;
            }
            // Each id is read as GetStringTable reads it, leaving its outcome in the
            // error code; an entry that cannot be read sorts as ResId 0.
            WORD resId = 0;
            int rc = readById(strings, ids[i]);
            if (rc == isam::ISAM_OK) rc = RecordReader(strings).Short("ResId", &resId).error();
            SetError(rc);
            byResId.emplace_back(rc == isam::ISAM_OK ? resId : WORD{0}, ids[i]);
        }
        std::sort(byResId.begin(), byResId.end(),
                  [](const auto& a, const auto& b) { return a.first < b.first; });
        for (int i = 0; i < ids.GetSize(); ++i) ids[i] = byResId[static_cast<std::size_t>(i)].second;
        return 1;
    });
}

int CDbProject::SetNotTranslatedFlagInStringTable(const CDWordArray& LangModulIds) {
    return Run([&] { return Result(strings(*this).markNotTranslated(LangModulIds)); });
}

int CDbProject::SetUserFilterFlagInStringTable(const CDWordArray& LangModulIds) {
    return Run([&] {
        return Result(strings(*this).markUserFilter(LangModulIds, m_UserFilter.InStringTables != 0));
    });
}
