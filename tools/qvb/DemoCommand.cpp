// qvb demo DIR: a small project made through the public interface.
#include "core/NewDatabase.h"
#include "tools/qvb/Commands.h"

namespace qvbtool {

namespace {

constexpr const char* kUsage =
    "usage: qvb demo DIR\n"
    "\n"
    "Creates the project DIR/demo.Prj with two language pairs, English to German\n"
    "and English to French, a few phrases in each, partly translated and with their\n"
    "not-translated markers refreshed, and shows it as qvb info does.\n";

constexpr DWORD kEnglish = 1033;
constexpr DWORD kGerman = 1031;
constexpr DWORD kFrench = 1036;

// Source texts with their German and French translations (windows-1252); an empty
// translation is still to be done.
struct DemoPhrase {
    const char* source;
    const char* german;
    const char* french;
};
constexpr DemoPhrase kPhrases[] = {
    {"&File", "&Datei", "&Fichier"},
    {"&Open...", "\xD6&ffnen...", "&Ouvrir..."},
    {"Save &As...", "", "Enregistrer &sous..."},
    {"E&xit", "&Beenden", ""},
    {"The file \"%s\" could not be opened.", "", ""},
};

// Adds the phrases of one pair and marks the untranslated ones.
bool addPhrases(CDbProject& db, DWORD pair, bool german) {
    for (const DemoPhrase& phrase : kPhrases) {
        const char* translation = german ? phrase.german : phrase.french;
        const int translated = *translation ? 1 : 0;
        DWORD id = 0;
        if (!db.AddDictionary(&id, pair, phrase.source, "", translation, 0, 0, translated, 0, 0)) {
            return false;
        }
    }
    return db.RefreshNotTranslatedFilter(pair) != 0;
}

}  // namespace

int runDemo(const Args& args) {
    if (wantsHelp(args)) return printHelp(kUsage);
    const SplitArgs split = splitArgs(args);
    if (!split.options.empty()) {
        return usageError("demo", "unknown option " + split.options[0], kUsage);
    }
    if (split.operands.size() != 1 || split.operands[0].empty()) {
        return usageError("demo", "expected one directory", kUsage);
    }

    const DatabaseFile file = databaseIn(split.operands[0], "demo", PROJECT);
    CDbProject db;
    if (!qvb::createForUse(db, file.directory.c_str(), file.name.c_str())) {
        return operationFailed("demo", "cannot create " + file.path, db.GetError());
    }
    for (const DWORD target : {kGerman, kFrench}) {
        DWORD pair = 0;
        if (!db.AddSLang(&pair, kEnglish, target, "MS Shell Dlg", 0) ||
            !addPhrases(db, pair, target == kGerman)) {
            const LONG error = db.GetError();
            (void)db.CloseDb();
            return operationFailed("demo", "cannot fill the language pairs", error);
        }
    }
    if (const int rc = closeDatabase(db, file, "demo")) return rc;
    return showInfo(file, "demo");
}

}  // namespace qvbtool
