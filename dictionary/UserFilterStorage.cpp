// The user filter as it is stored (resource 3 of the first table): the words that
// hold switches and the notice condition are kept two to a word, 16 bits each.
#include <cstring>

#include "qvb/CDbObject.h"

namespace {

DWORD packed(DWORD high, DWORD low) { return (high & 0xFFFFu) << 16 | (low & 0xFFFFu); }
DWORD highHalf(DWORD word) { return word >> 16; }
DWORD lowHalf(DWORD word) { return word & 0xFFFFu; }

}  // namespace

WORD CDbObject::MakeUserFilterForDB(void* filter, USERFILTER_IN_DB& out) {
    USERFILTER in;
    std::memcpy(&in, filter, sizeof in);
    out = USERFILTER_IN_DB();
    const std::size_t textLength = strnlen(in.FindText, sizeof in.FindText);
    std::memcpy(out.FindText, in.FindText, std::min(textLength + 1, sizeof out.FindText));
    out.InSource = in.InSource;
    out.InTranslation = in.InTranslation;
    out.IgnoreHotKeys = in.IgnoreHotKeys;
    out.MatchCase = in.MatchCase;
    out.WholeWord = in.WholeWord;
    out.StateTranslated = in.StateTranslated;
    out.StateUsed = in.StateUsed;
    out.StateReadOnly = in.StateReadOnly;
    out.StateStandard = in.StateStandard;
    out.StateLimited = in.StateLimited;
    out.NoticeDialogs = packed(static_cast<DWORD>(in.StateNotice), static_cast<DWORD>(in.InDialogs));
    out.MenusStringTables = packed(static_cast<DWORD>(in.InMenus), static_cast<DWORD>(in.InStringTables));
    out.MessageTablesVersionInfo =
        packed(static_cast<DWORD>(in.InMessageTables), static_cast<DWORD>(in.InVersionInfo));
    out.XmlDbTranslation = packed(static_cast<DWORD>(in.InXml), static_cast<DWORD>(in.InDbTranslation));
    out.BitmapsReserved69 = packed(static_cast<DWORD>(in.InBitmaps), in.Reserved69);
    out.Reserved70 = in.Reserved70;
    return static_cast<WORD>(sizeof out);
}

WORD CDbObject::ConvertUserFilterToApp(void* record, WORD size) {
    USERFILTER_IN_DB stored;
    std::memcpy(&stored, record, sizeof stored);
    USERFILTER out;
    std::memcpy(out.FindText, stored.FindText, sizeof out.FindText);
    out.InSource = stored.InSource;
    out.InTranslation = stored.InTranslation;
    out.IgnoreHotKeys = stored.IgnoreHotKeys;
    out.MatchCase = stored.MatchCase;
    out.WholeWord = stored.WholeWord;
    out.StateTranslated = stored.StateTranslated;
    out.StateUsed = stored.StateUsed;
    out.StateReadOnly = stored.StateReadOnly;
    out.StateStandard = stored.StateStandard;
    out.StateLimited = stored.StateLimited;
    out.StateNotice = static_cast<int>(highHalf(stored.NoticeDialogs));
    out.InDialogs = static_cast<BOOL>(lowHalf(stored.NoticeDialogs));
    out.InMenus = static_cast<BOOL>(highHalf(stored.MenusStringTables));
    out.InStringTables = static_cast<BOOL>(lowHalf(stored.MenusStringTables));
    out.InMessageTables = static_cast<BOOL>(highHalf(stored.MessageTablesVersionInfo));
    out.InVersionInfo = static_cast<BOOL>(lowHalf(stored.MessageTablesVersionInfo));
    out.InXml = static_cast<BOOL>(highHalf(stored.XmlDbTranslation));
    out.InDbTranslation = static_cast<BOOL>(lowHalf(stored.XmlDbTranslation));
    out.InBitmaps = static_cast<BOOL>(highHalf(stored.BitmapsReserved69));
    out.Reserved69 = lowHalf(stored.BitmapsReserved69);
    out.Reserved70 = stored.Reserved70;
    std::memcpy(record, &out, sizeof out);
    return static_cast<WORD>(size + (sizeof(USERFILTER) - sizeof(USERFILTER_IN_DB)));
}
