// The project's history log: dated entries of a type with two texts each.
#include <cstdint>
#include <ctime>
#include <memory>

#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// The stamp field holds 32 bits: a time is stored as the bits of its signed
// 32-bit value, so times before 1970 come back as they went in.
std::uint32_t storedStamp(LONG TimeStamp) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(TimeStamp));
}

LONG stampOf(std::uint32_t stored) { return static_cast<std::int32_t>(stored); }

void writeEntry(RecordWriter& record, LONG TimeStamp, DWORD HistoryType, const CString& Data1,
                const CString& Data2) {
    record.Long("TimeStamp", storedStamp(TimeStamp))
        .Long("HistoryType", HistoryType)
        .Text("HistoryData1", Data1)
        .Text("HistoryData2", Data2);
}

int readEntry(const CIsamTable& history, HISTORYLOG* entry) {
    std::uint32_t stamp = 0;
    const int rc = RecordReader(history)
                       .Long("HistoryId", &entry->HistoryId)
                       .Long("TimeStamp", &stamp)
                       .Long("HistoryType", &entry->HistoryType)
                       .Text("HistoryData1", entry->HistoryData1)
                       .Text("HistoryData2", entry->HistoryData2)
                       .error();
    entry->TimeStamp = stampOf(stamp);
    return rc;
}

}  // namespace

int CDbProject::AddHistory(DWORD* pHistoryId, LONG TimeStamp, DWORD HistoryType, CString Data1,
                           CString Data2) {
    return Run([&] {
        return Result(addWithNewId(Table(TAB_HISTORY), "HistoryId", pHistoryId, [&](RecordWriter& r) {
            writeEntry(r, TimeStamp, HistoryType, Data1, Data2);
        }));
    });
}

int CDbProject::AddHistory(DWORD HistoryId, LONG TimeStamp, DWORD HistoryType, CString Data1,
                           CString Data2) {
    return Run([&] {
        return Result(addWithId(Table(TAB_HISTORY), "HistoryId", HistoryId, [&](RecordWriter& r) {
            writeEntry(r, TimeStamp, HistoryType, Data1, Data2);
        }));
    });
}

int CDbProject::AddHistory(DWORD HistoryType, CString Data1, CString Data2) {
    return AddHistory(static_cast<DWORD*>(nullptr), static_cast<long>(std::time(nullptr)), HistoryType,
                      Data1, Data2);
}

int CDbProject::GetHistory(DWORD HistoryId, LONG* TimeStamp, DWORD* HistoryType, CString& Data1,
                           CString& Data2) {
    return Run([&] {
        CIsamTable& history = Table(TAB_HISTORY);
        HISTORYLOG entry;
        if (!Succeeded(readById(history, HistoryId)) || !Succeeded(readEntry(history, &entry))) return 0;
        if (TimeStamp) *TimeStamp = entry.TimeStamp;
        if (HistoryType) *HistoryType = entry.HistoryType;
        Data1 = entry.HistoryData1;
        Data2 = entry.HistoryData2;
        return 1;
    });
}

int CDbProject::UpdateHistory(DWORD HistoryId, LONG TimeStamp, DWORD HistoryType, CString Data1,
                              CString Data2) {
    return Run([&] {
        return Result(updateById(Table(TAB_HISTORY), HistoryId, [&](RecordWriter& r) {
            writeEntry(r, TimeStamp, HistoryType, Data1, Data2);
        }));
    });
}

int CDbProject::DeleteHistory(DWORD HistoryId) {
    return Run([&] { return Result(deleteById(Table(TAB_HISTORY), HistoryId)); });
}

int CDbProject::EnumHistory(CDWordArray& ids) {
    return Run([&] { return Result(appendAll(Table(TAB_HISTORY), 1, "HistoryId", ids)); });
}

int CDbProject::EnumHistory(CArray<HISTORYLOG*, HISTORYLOG*>* list) {
    return Run([&] {
        if (!list) return Result(isam::ISAM_BAD_PARAMETER);
        // What the list held belongs to the caller, who may still be using it.
        list->SetSize(0);
        CIsamTable& history = Table(TAB_HISTORY);
        return Result(forEachRecord(history, 1, [&] {
            auto entry = std::make_unique<HISTORYLOG>();
            const int rc = readEntry(history, entry.get());
            if (rc != isam::ISAM_OK) return rc;
            list->Add(entry.get());
            (void)entry.release();  // only once the list holds it, so a failed Add frees it
            return rc;
        }));
    });
}

int CDbProject::GetHistoryCount(DWORD* count) {
    return Run([&] {
        return Result(countRecords(Table(TAB_HISTORY), 1, count));
    });
}
