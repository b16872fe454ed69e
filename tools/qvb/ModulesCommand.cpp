// qvb modules FILE: the modules of a project with their stored files and their
// language modules.
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/qvb/Commands.h"
#include "tools/qvb/FieldText.h"

namespace qvbtool {

namespace {

constexpr const char* kCommand = "modules";

constexpr const char* kUsage =
    "usage: qvb modules FILE\n"
    "\n"
    "Lists the modules of the project FILE (NAME.Prj) in ModulId order, one a line:\n"
    "ModulId, type, flags in hex, the length of its stored file as the project keeps\n"
    "it (packed; 0 when none is stored), its name quoted as qvb dump quotes texts,\n"
    "and its language modules, each as its LangModulId with its language pair.\n"
    "The last line gives the number of modules. qvb extract writes a stored file\n"
    "out.\n";

// A language module as the listing shows it.
struct LangModul {
    DWORD id;
    DWORD pair;
};

using LangModulsByModul = std::map<DWORD, std::vector<LangModul>>;

// The language modules of every pair, by their module; kExitOk, or kExitFailed once
// reported.
int collectLangModuls(CDbProject& db, LangModulsByModul* found) {
    CDWordArray pairs;
    if (!db.EnumSLang(pairs)) {
        return operationFailed(kCommand, "cannot list the language pairs", db.GetError());
    }
    for (int p = 0; p < pairs.GetSize(); ++p) {
        CDWordArray ids;
        if (!db.EnumLangModul(ids, pairs[p])) {
            return operationFailed(
                kCommand, "cannot list the language modules of pair " + std::to_string(pairs[p]),
                db.GetError());
        }
        for (int i = 0; i < ids.GetSize(); ++i) {
            DWORD pair = 0;
            DWORD modul = 0;
            DWORD flags = 0;
            if (!db.GetLangModul(ids[i], &pair, &modul, &flags)) {
                return operationFailed(kCommand,
                                       "cannot read language module " + std::to_string(ids[i]),
                                       db.GetError());
            }
            (*found)[modul].push_back({ids[i], pair});
        }
    }
    return kExitOk;
}

void appendLangModuls(std::string& out, const std::vector<LangModul>& langModuls) {
    if (langModuls.empty()) {
        out += "no language modules";
        return;
    }
    for (std::size_t i = 0; i < langModuls.size(); ++i) {
        appendf(out, "%s%u (pair %u)", i ? ", " : "", static_cast<unsigned>(langModuls[i].id),
                static_cast<unsigned>(langModuls[i].pair));
    }
}

// Appends the line of one module; kExitOk, or kExitFailed once reported.
int appendModul(CDbProject& db, DWORD id, const LangModulsByModul& langModuls, std::string* text) {
    CString name;
    WORD type = 0;
    DWORD flags = 0;
    DWORD stored = 0;
    if (!db.GetModul(id, name, &type, &flags)) {
        return operationFailed(kCommand, "cannot read module " + std::to_string(id), db.GetError());
    }
    if (!db.GetModulFileLength(id, &stored)) {
        return operationFailed(
            kCommand, "cannot read the file length of module " + std::to_string(id), db.GetError());
    }
    appendf(*text, "%8u  %6u  0x%08x  %12u  ", static_cast<unsigned>(id),
            static_cast<unsigned>(type), static_cast<unsigned>(flags),
            static_cast<unsigned>(stored));
    appendQuoted(*text, std::string(name.GetString(), static_cast<std::size_t>(name.GetLength())));
    *text += "  ";
    const auto found = langModuls.find(id);
    appendLangModuls(*text, found == langModuls.end() ? std::vector<LangModul>{} : found->second);
    *text += '\n';
    return kExitOk;
}

// Appends the listing of an open project; kExitOk, or kExitFailed once reported.
int describeModuls(CDbProject& db, std::string* text) {
    LangModulsByModul langModuls;
    if (const int rc = collectLangModuls(db, &langModuls)) return rc;
    CDWordArray ids;
    if (!db.EnumModul(ids)) {
        return operationFailed(kCommand, "cannot list the modules", db.GetError());
    }
    appendf(*text, "%8s  %6s  %-10s  %12s  %s\n", "ModulId", "Type", "Flags", "Stored bytes",
            "Name, language modules");
    for (int i = 0; i < ids.GetSize(); ++i) {
        if (const int rc = appendModul(db, ids[i], langModuls, text)) return rc;
    }
    const int count = ids.GetSize();
    appendf(*text, "%d module%s\n", count, count == 1 ? "" : "s");
    return kExitOk;
}

}  // namespace

int runModules(const Args& args) {
    if (wantsHelp(args)) return printHelp(kUsage);
    Operands operands;
    const DBTYPEONE project = PROJECT;
    if (const int rc = parseFileOperands(args, 1, "expected one FILE", &project, kCommand, kUsage, &operands)) {
        return rc;
    }
    const DatabaseFile& file = operands.file;

    CDbProject db;
    if (const int rc = openDatabase(db, file, kCommand)) return rc;
    std::string text;
    const int described = describeModuls(db, &text);
    const int closed = closeDatabase(db, file, kCommand);
    if (described != kExitOk) return described;
    if (closed != kExitOk) return closed;
    std::fputs(text.c_str(), stdout);
    return kExitOk;
}

}  // namespace qvbtool
