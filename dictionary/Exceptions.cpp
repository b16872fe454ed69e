// Exceptions: a phrase bound to one resource element, so that the element keeps
// its own translation of the phrase.
#include "core/Operation.h"
#include "core/RecordAccess.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

// I2 holds the TextId, duplicates allowed: the exceptions of one phrase.
constexpr int kByPhrase = 2;

void writeException(RecordWriter& record, DWORD TextId, DWORD ElementTyp, DWORD ElementId,
                    DWORD Flags) {
    record.Long("TextId", TextId)
        .Long("ElementTyp", ElementTyp)
        .Long("ElementId", ElementId)
        .Long("Flags", Flags);
}

}  // namespace

int CDbObject::AddException(DWORD* pExceptionId, DWORD TextId, DWORD ElementTyp, DWORD ElementId,
                            DWORD Flags) {
    return Run([&] {
        return Result(addWithNewId(Table(TAB_EXCEP), "ExceptionId", pExceptionId, [&](RecordWriter& r) {
            writeException(r, TextId, ElementTyp, ElementId, Flags);
        }));
    });
}

int CDbObject::AddException(DWORD ExceptionId, DWORD TextId, DWORD ElementTyp, DWORD ElementId,
                            DWORD Flags) {
    return Run([&] {
        return Result(addWithId(Table(TAB_EXCEP), "ExceptionId", ExceptionId, [&](RecordWriter& r) {
            writeException(r, TextId, ElementTyp, ElementId, Flags);
        }));
    });
}

int CDbObject::GetException(DWORD ExceptionId, DWORD* TextId, DWORD* ElementTyp, DWORD* ElementId,
                            DWORD* Flags) {
    return Run([&] {
        return Result(readFieldsById(Table(TAB_EXCEP), ExceptionId, [&](RecordReader& r) {
            r.Long("TextId", TextId)
                .Long("ElementTyp", ElementTyp)
                .Long("ElementId", ElementId)
                .Long("Flags", Flags);
        }));
    });
}

int CDbObject::UpdateExceptions(DWORD ExceptionId, DWORD TextId, DWORD ElementTyp, DWORD ElementId,
                                DWORD Flags) {
    return Run([&] {
        return Result(updateById(Table(TAB_EXCEP), ExceptionId, [&](RecordWriter& r) {
            writeException(r, TextId, ElementTyp, ElementId, Flags);
        }));
    });
}

int CDbObject::DeleteExceptions(DWORD ExceptionId) {
    return Run([&] { return Result(deleteById(Table(TAB_EXCEP), ExceptionId)); });
}

int CDbObject::EnumExceptions(CDWordArray& ids) {
    return Run([&] { return Result(appendAll(Table(TAB_EXCEP), 1, "ExceptionId", ids)); });
}

int CDbObject::EnumExceptions(CDWordArray& ids, DWORD TextId) {
    return Run([&] {
        return Result(appendAllWithId(Table(TAB_EXCEP), kByPhrase, TextId, "ExceptionId", ids));
    });
}

int CDbObject::GetExceptionsCount(DWORD* count) {
    return Run([&] {
        return Result(countRecords(Table(TAB_EXCEP), 1, count));
    });
}

int CDbObject::GetExceptionsCount(DWORD* count, DWORD TextId) {
    return Run([&] {
        return Result(countWithId(Table(TAB_EXCEP), kByPhrase, TextId, count));
    });
}
