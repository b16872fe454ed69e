// Notices: free texts that records of the project refer to by NoticeId.
#include <cstdint>

#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "qvb/CDbProject.h"

using namespace qvb;
using namespace qvb::catalogue;

int CDbProject::AddNotice(DWORD* pNoticeId, const CString& Text) {
    return Run([&] {
        return Result(addWithNewId(Table(TAB_NOTICE), "NoticeId", pNoticeId,
                                   [&](RecordWriter& r) { r.Text("NoticeText", Text); }));
    });
}

int CDbProject::AddNotice(DWORD NoticeId, const CString& Text) {
    return Run([&] {
        return Result(addWithId(Table(TAB_NOTICE), "NoticeId", NoticeId,
                                [&](RecordWriter& r) { r.Text("NoticeText", Text); }));
    });
}

int CDbProject::GetNotice(DWORD NoticeId, CString& Text) {
    return Run([&] {
        return Result(readFieldsById(Table(TAB_NOTICE), NoticeId, [&](RecordReader& r) {
            r.Text("NoticeText", Text);
        }));
    });
}

int CDbProject::UpdateNotice(DWORD NoticeId, const CString& Text) {
    return Run([&] {
        return Result(updateById(Table(TAB_NOTICE), NoticeId,
                                 [&](RecordWriter& r) { r.Text("NoticeText", Text); }));
    });
}

int CDbProject::DeleteNotice(DWORD NoticeId) {
    return Run([&] { return Result(deleteById(Table(TAB_NOTICE), NoticeId)); });
}

int CDbProject::EnumNotice(CDWordArray& ids) {
    return Run([&] { return Result(appendAll(Table(TAB_NOTICE), 1, "NoticeId", ids)); });
}

int CDbProject::GetNoticeCount(DWORD* count) {
    return Run([&] {
        return Result(countRecords(Table(TAB_NOTICE), 1, count));
    });
}
