// Message tables: one record per message of a module's message-table resources.
#include "project/ResourceFamily.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

constexpr int kByLangModul = 2;
constexpr int kByTextId = 3;
const ResourceFamily kMessages = {TAB_MTABLE, "MessageTable", RES_MESSAGETABLE, kByLangModul, kByTextId};

ResourceFamilyOps messages(CDbProject& db) { return ResourceFamilyOps(db, kMessages); }

// The fields every overload sets beside the identifier and the TextId.
auto messageFields(DWORD LangModulId, DWORD Id, WORD MessageFlags, DWORD Flags, DWORD NoticeId) {
    return [=](RecordWriter& r) {
        r.Long("LangModulId", LangModulId)
            .Long("Id", Id)
            .Short("MessageFlags", MessageFlags)
            .Long("Flags", Flags)
            .Long("NoticeId", NoticeId);
    };
}

// The same and the two texts.
auto messageFields(DWORD LangModulId, DWORD Id, WORD MessageFlags, DWORD Flags, DWORD NoticeId,
                   const CString& ResNetId, const CString& Key) {
    return [=, &ResNetId, &Key](RecordWriter& r) {
        messageFields(LangModulId, Id, MessageFlags, Flags, NoticeId)(r);
        r.Text("ResNetId", ResNetId).Text("Key", Key);
    };
}

// The same and ResNetId; Key is kept.
auto messageFields(DWORD LangModulId, DWORD Id, WORD MessageFlags, DWORD Flags, DWORD NoticeId,
                   const CString& ResNetId) {
    return [=, &ResNetId](RecordWriter& r) {
        messageFields(LangModulId, Id, MessageFlags, Flags, NoticeId)(r);
        r.Text("ResNetId", ResNetId);
    };
}

}  // namespace

int CDbProject::AddMessageTable(DWORD* pId, DWORD LangModulId, DWORD TextId, DWORD Id,
                                WORD MessageFlags, DWORD Flags, DWORD NoticeId, CString& ResNetId) {
    return AddMessageTable(pId, LangModulId, TextId, Id, MessageFlags, Flags, NoticeId,
                           static_cast<const CString&>(ResNetId), CString());
}

int CDbProject::AddMessageTable(DWORD* pId, DWORD LangModulId, DWORD TextId, DWORD Id,
                                WORD MessageFlags, DWORD Flags, DWORD NoticeId) {
    return AddMessageTable(pId, LangModulId, TextId, Id, MessageFlags, Flags, NoticeId, CString(),
                           CString());
}

int CDbProject::AddMessageTable(DWORD* pId, DWORD LangModulId, DWORD TextId, DWORD Id,
                                WORD MessageFlags, DWORD Flags, DWORD NoticeId,
                                const CString& ResNetId, const CString& Key) {
    return Run([&] {
        return Result(messages(*this).addNew(
            pId, TextId, messageFields(LangModulId, Id, MessageFlags, Flags, NoticeId, ResNetId, Key)));
    });
}

int CDbProject::AddMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                                WORD MessageFlags, DWORD Flags, DWORD NoticeId) {
    return Run([&] {
        return Result(messages(*this).addWithCallersId(
            RecordId, TextId, Counting::None,
            messageFields(LangModulId, Id, MessageFlags, Flags, NoticeId, CString(), CString())));
    });
}

int CDbProject::AddMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                                WORD MessageFlags, DWORD Flags, DWORD NoticeId,
                                const CString& ResNetId, const CString& Key) {
    return Run([&] {
        return Result(messages(*this).addWithCallersId(
            RecordId, TextId, Counting::PhraseUp,
            messageFields(LangModulId, Id, MessageFlags, Flags, NoticeId, ResNetId, Key)));
    });
}

int CDbProject::GetMessageTable(DWORD RecordId, DWORD* pLangModulId, DWORD* pTextId, DWORD* pId,
                                WORD* pMessageFlags, DWORD* pFlags, DWORD* pNoticeId,
                                CString& ResNetId, CString& Key) {
    return Run([&] {
        // ResNetId receives the notice's number as text: the stored ResNetId is
        // reached through the record layer only.
        return Result(readFieldsById(Table(TAB_MTABLE), RecordId, [&](RecordReader& r) {
            r.Long("LangModulId", pLangModulId)
                .Long("TextId", pTextId)
                .Long("Id", pId)
                .Short("MessageFlags", pMessageFlags)
                .Long("Flags", pFlags)
                .Long("NoticeId", pNoticeId)
                .Text("NoticeId", ResNetId)
                .Text("Key", Key);
        }));
    });
}

int CDbProject::GetMessageTable(DWORD RecordId, DWORD* pLangModulId, DWORD* pTextId, DWORD* pId,
                                WORD* pMessageFlags, DWORD* pFlags, DWORD* pNoticeId,
                                CString& ResNetId) {
    CString key;
    return GetMessageTable(RecordId, pLangModulId, pTextId, pId, pMessageFlags, pFlags, pNoticeId,
                           ResNetId, key);
}

int CDbProject::GetMessageTable(DWORD RecordId, DWORD* pLangModulId, DWORD* pTextId, DWORD* pId,
                                WORD* pMessageFlags, DWORD* pFlags, DWORD* pNoticeId) {
    CString resNetId;
    return GetMessageTable(RecordId, pLangModulId, pTextId, pId, pMessageFlags, pFlags, pNoticeId,
                           resNetId);
}

int CDbProject::GetMessageTable(DWORD RecordId, DWORD* pLangModulId, DWORD* pTextId, DWORD* pId,
                                WORD* pMessageFlags, DWORD* pFlags) {
    return GetMessageTable(RecordId, pLangModulId, pTextId, pId, pMessageFlags, pFlags, nullptr);
}

int CDbProject::UpdateMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                                   WORD MessageFlags, DWORD Flags, DWORD NoticeId) {
    return Run([&] {
        return Result(messages(*this).update(RecordId, TextId, Loading::Whole,
                                             messageFields(LangModulId, Id, MessageFlags, Flags, NoticeId)));
    });
}

int CDbProject::UpdateMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                                   WORD MessageFlags, DWORD Flags, DWORD NoticeId, CString& ResNetId) {
    return Run([&] {
        return Result(messages(*this).update(
            RecordId, TextId, Loading::Whole,
            messageFields(LangModulId, Id, MessageFlags, Flags, NoticeId, static_cast<const CString&>(ResNetId))));
    });
}

int CDbProject::UpdateMessageTable(DWORD RecordId, DWORD LangModulId, DWORD TextId, DWORD Id,
                                   WORD MessageFlags, DWORD Flags, DWORD NoticeId,
                                   const CString& ResNetId, const CString& Key) {
    return Run([&] {
        return Result(messages(*this).update(
            RecordId, TextId, Loading::Whole,
            messageFields(LangModulId, Id, MessageFlags, Flags, NoticeId, ResNetId, Key)));
    });
}

int CDbProject::DeleteMessageTable(DWORD RecordId) {
    return Run([&] { return Result(messages(*this).remove(RecordId, Loading::Whole)); });
}

int CDbProject::DeleteMessageTableOnly(DWORD RecordId) {
    return Run([&] { return Result(messages(*this).removeOnly(RecordId)); });
}

int CDbProject::EnumMessageTable(CDWordArray& ids, DWORD LangModulId) {
    return Run([&] { return Result(messages(*this).enumerate(ids, kByLangModul, LangModulId)); });
}

int CDbProject::GetMessageTableCount(DWORD* pCount, DWORD LangModulId) {
    return Run([&] { return Result(messages(*this).count(pCount, kByLangModul, LangModulId)); });
}

int CDbProject::EnumMessageTableTextId(CDWordArray& ids, DWORD TextId) {
    return Run([&] { return Result(messages(*this).enumerate(ids, kByTextId, TextId)); });
}

int CDbProject::GetMessageTableTextIdCount(DWORD* pCount, DWORD TextId) {
    return Run([&] { return Result(messages(*this).count(pCount, kByTextId, TextId)); });
}

int CDbProject::SetNotTranslatedFlagInMessageTable(const CDWordArray& LangModulIds) {
    return Run([&] { return Result(messages(*this).markNotTranslated(LangModulIds)); });
}

int CDbProject::SetUserFilterFlagInMessageTable(const CDWordArray& LangModulIds) {
    return Run([&] {
        return Result(messages(*this).markUserFilter(LangModulIds, m_UserFilter.InMessageTables != 0));
    });
}
