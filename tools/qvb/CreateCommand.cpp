// qvb create DIR NAME --project|--dictionary
#include <cstdio>

#include "core/NewDatabase.h"
#include "tools/qvb/Commands.h"

namespace qvbtool {

namespace {

constexpr const char* kUsage =
    "usage: qvb create DIR NAME --project|--dictionary\n"
    "\n"
    "Creates the project DIR/NAME.Prj or the dictionary DIR/NAME.Dic with every\n"
    "table of its kind and the current version stored, and prints its path.\n";

}  // namespace

int runCreate(const Args& args) {
    if (wantsHelp(args)) return printHelp(kUsage);
    const SplitArgs split = splitArgs(args);
    int kinds = 0;
    DBTYPEONE kind = PROJECT;
    for (const std::string& option : split.options) {
        if (option == "--project") {
            kind = PROJECT;
        } else if (option == "--dictionary") {
            kind = DICTINARY;
        } else {
            return usageError("create", "unknown option " + option, kUsage);
        }
        ++kinds;
    }
    if (split.operands.size() != 2) return usageError("create", "expected DIR and NAME", kUsage);
    if (kinds != 1) {
        return usageError("create", "expected one of --project and --dictionary", kUsage);
    }
    const std::string& directory = split.operands[0];
    const std::string& name = split.operands[1];
    if (directory.empty()) return usageError("create", "empty directory", kUsage);
    if (name.empty() || name.find('/') != std::string::npos) {
        return usageError("create", "NAME must be a file name without a directory", kUsage);
    }

    const DatabaseFile file = databaseIn(directory, name, kind);
    const auto db = newDatabase(kind);
    if (!qvb::createForUse(*db, file.directory.c_str(), file.name.c_str())) {
        return operationFailed("create", "cannot create " + file.path, db->GetError());
    }
    if (const int rc = closeDatabase(*db, file, "create")) return rc;
    std::printf("%s\n", file.path.c_str());
    return kExitOk;
}

}  // namespace qvbtool
