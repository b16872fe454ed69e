// qvb demo DIR: a small project made through the public interface.
#include "core/NewDatabase.h"
#include "tools/qvb/Commands.h"

namespace qvbtool {

namespace {

constexpr const char* kUsage =
    "usage: qvb demo DIR\n"
    "\n"
    "Creates the project DIR/demo.Prj with two language pairs, English to German\n"
    "and English to French, and shows it as qvb info does.\n";

constexpr DWORD kEnglish = 1033;
constexpr DWORD kGerman = 1031;
constexpr DWORD kFrench = 1036;

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
        if (!db.AddSLang(&pair, kEnglish, target, "MS Shell Dlg", 0)) {
            const LONG error = db.GetError();
            (void)db.CloseDb();
            return operationFailed("demo", "cannot add a language pair", error);
        }
    }
    if (const int rc = closeDatabase(db, file, "demo")) return rc;
    return showInfo(file, "demo");
}

}  // namespace qvbtool
