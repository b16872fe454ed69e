// qvb info FILE: kind, stored version, tables with their record counts, resources.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "core/DbInternals.h"
#include "core/RecordAccess.h"
#include "isam/Isam.h"
#include "tools/qvb/Commands.h"

namespace qvbtool {

namespace {

constexpr const char* kUsage =
    "usage: qvb info FILE [--check]\n"
    "\n"
    "Shows the kind and stored version of the project or dictionary FILE (NAME.Prj\n"
    "or NAME.Dic), every table it has with its record count, and its resource\n"
    "records with their lengths.\n"
    "\n"
    "  --check  also verifies the whole file (every page, every index against its\n"
    "           table, every record against its checksum); a damaged file fails.\n";

// Resources are read into a buffer of this size; a longer one is reported as such.
constexpr WORD kResourceRoom = 1024;

int describeResources(CDbObject& db, const std::vector<std::uint32_t>& numbers, const char* command,
                      std::string* text);

// Appends the description of an open database; kExitOk, or kExitFailed once reported.
int describe(CDbObject& db, const DatabaseFile& file, bool check, const char* command, std::string* text) {
    const int version = db.GetDBVersion();
    // A database made by CreateDb alone has no version stored.
    const bool noVersion = db.GetError() == isam::ISAM_NO_RECORD;
    if (db.GetError() != 0 && !noVersion) {
        return operationFailed(command, "cannot read the stored version", db.GetError());
    }
    const int tables = CDbInternals::TablesAtStoredVersion(db);

    appendf(*text, "file      %s\n", file.path.c_str());
    appendf(*text, "kind      %s\n", kindName(file.kind));
    appendf(*text, "version   %s\n", noVersion ? "none" : std::to_string(version).c_str());
    appendf(*text, "tables    %d\n", tables);
    appendf(*text, "  %5s  %-12s %9s\n", "index", "name", "records");
    for (int i = 0; i < tables; ++i) {
        CIsamTable& table = CDbInternals::Table(db, i);
        const char* name = table.Table() ? table.Table()->name : "?";
        std::uint32_t records = 0;
        if (!CDbInternals::Run(db, [&] { return qvb::countRecords(table, 1, &records); })) {
            return operationFailed(command, std::string("cannot count the records of ") + name,
                                   db.GetError());
        }
        appendf(*text, "  %5d  %-12s %9u\n", i, name, records);
    }

    std::vector<std::uint32_t> numbers;
    if (!CDbInternals::Run(db, [&] {
            return CDbInternals::State(db)->engine->ResourceNumbers(CDbInternals::Table(db, 0),
                                                                    &numbers);
        })) {
        return operationFailed(command, "cannot list the resource records", db.GetError());
    }
    appendf(*text, "resources %zu\n", numbers.size());
    if (!numbers.empty()) {
        if (const int rc = describeResources(db, numbers, command, text)) return rc;
    }
    if (!check) return kExitOk;
    if (!CDbInternals::Run(db, [] { return isam::verifyContainer(); })) {
        return operationFailed(command, "the file failed its check", db.GetError());
    }
    appendf(*text, "check     ok\n");
    return kExitOk;
}

int describeResources(CDbObject& db, const std::vector<std::uint32_t>& numbers, const char* command,
                      std::string* text) {
    appendf(*text, "  %10s  %9s\n", "number", "bytes");
    std::vector<unsigned char> data(kResourceRoom);
    for (const std::uint32_t number : numbers) {
        WORD length = kResourceRoom;
        if (db.GetResource(number, data.data(), &length)) {
            appendf(*text, "  %10u  %9u\n", number, static_cast<unsigned>(length));
        } else if (db.GetError() == QVB_RESOURCE_BUFFER_SHORT) {
            appendf(*text, "  %10u  %9s\n", number, ("> " + std::to_string(kResourceRoom)).c_str());
        } else {
            return operationFailed(command, "cannot read resource " + std::to_string(number),
                                   db.GetError());
        }
    }
    return kExitOk;
}

}  // namespace

int showInfo(const DatabaseFile& file, const char* command, bool check) {
    const auto db = newDatabase(file.kind);
    if (const int rc = openDatabase(*db, file, command)) return rc;
    std::string text;
    const int described = describe(*db, file, check, command, &text);
    const int closed = closeDatabase(*db, file, command);
    if (described != kExitOk) return described;
    if (closed != kExitOk) return closed;
    std::fputs(text.c_str(), stdout);
    return kExitOk;
}

int runInfo(const Args& args) {
    if (wantsHelp(args)) return printHelp(kUsage);
    Args rest = args;
    const auto checkAt = std::find(rest.begin(), rest.end(), "--check");
    const bool check = checkAt != rest.end();
    if (check) rest.erase(checkAt);
    Operands operands;
    if (const int rc = parseFileOperands(rest, 1, "expected one FILE", nullptr, "info", kUsage, &operands)) {
        return rc;
    }
    return showInfo(operands.file, "info", check);
}

}  // namespace qvbtool
