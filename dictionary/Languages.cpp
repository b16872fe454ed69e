// Language pairs: the SLang table, whose records every phrase and every
// per-language record belong to.
#include "core/Operation.h"
#include "core/RecordAccess.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// Font names are stored padded on the right with spaces to this many characters.
constexpr int kFontNameWidth = 199;

void writePair(RecordWriter& record, DWORD PLangId, DWORD SLangId, const CString& FontName,
               DWORD Flags) {
    record.Long("PLangId", PLangId)
        .Long("SLangId", SLangId)
        .Text("FontName", paddedWithBlanks(FontName, kFontNameWidth))
        .ClearBinary("Font")
        .Long("Flags", Flags);
}

}  // namespace

int CDbObject::AddSLang(DWORD* pPairLangId, DWORD PLangId, DWORD SLangId, const CString& FontName,
                        DWORD Flags) {
    return Run([&] {
        return Result(addWithNewId(Table(TAB_SLANG), "PairLangId", pPairLangId,
                                   [&](RecordWriter& r) { writePair(r, PLangId, SLangId, FontName, Flags); }));
    });
}

int CDbObject::AddSLang(DWORD PairLangId, DWORD PLangId, DWORD SLangId, const CString& FontName,
                        DWORD Flags) {
    return Run([&] {
        return Result(addWithId(Table(TAB_SLANG), "PairLangId", PairLangId,
                                [&](RecordWriter& r) { writePair(r, PLangId, SLangId, FontName, Flags); }));
    });
}

int CDbObject::GetSLang(DWORD PairLangId, DWORD* PLangId, DWORD* SLangId, CString& FontName,
                        DWORD* Flags) {
    return Run([&] {
        return Result(readFieldsById(Table(TAB_SLANG), PairLangId, [&](RecordReader& r) {
            r.Long("PLangId", PLangId)
                .Long("SLangId", SLangId)
                .Text("FontName", FontName)
                .Long("Flags", Flags);
        }));
    });
}

int CDbObject::UpdateSLang(DWORD PairLangId, DWORD PLangId, DWORD SLangId, const CString& FontName,
                           DWORD Flags) {
    return Run([&] {
        CIsamTable& pairs = Table(TAB_SLANG);
        if (!Succeeded(readById(pairs, PairLangId))) return 0;
        RecordWriter record(pairs);
        writePair(record, PLangId, SLangId, FontName, Flags);
        // Once the pair was found the update counts as done: the rewrite's own
        // outcome is not part of the answer.
        if (record.error() == isam::ISAM_OK) (void)pairs.Rewrite();
        return 1;
    });
}

int CDbObject::DeleteSLang(DWORD PairLangId) {
    return Run([&] { return Result(deleteById(Table(TAB_SLANG), PairLangId)); });
}

int CDbObject::EnumSLang(CDWordArray& ids) {
    return Run([&] { return Result(appendAll(Table(TAB_SLANG), 1, "PairLangId", ids)); });
}

int CDbObject::GetSLangCount(DWORD* count) {
    return Run([&] {
        return Result(countRecords(Table(TAB_SLANG), 1, count));
    });
}
