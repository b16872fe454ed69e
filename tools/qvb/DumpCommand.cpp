// qvb dump FILE TABLE [--json]: every record of one table in index 1 order.
#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "core/DbInternals.h"
#include "core/RecordAccess.h"
#include "tools/qvb/Commands.h"
#include "tools/qvb/FieldText.h"

namespace qvbtool {

namespace {

using namespace qvb::catalogue;

constexpr const char* kUsage =
    "usage: qvb dump FILE TABLE [--json]\n"
    "\n"
    "Prints every record of TABLE of the project or dictionary FILE (NAME.Prj or\n"
    "NAME.Dic) in the order of its first index, field by field. TABLE is a table\n"
    "name (SLang, Dic, Modul, ...; any case) or its list index (0 to 31).\n"
    "\n"
    "Texts are shown quoted, binary fields as their length and their first 16\n"
    "bytes in hex.\n"
    "\n"
    "  --json   a JSON array with one object per record, field name to value;\n"
    "           binary fields as {\"length\": N, \"hex\": first 16 bytes}, and text\n"
    "           bytes of 0x80 and above as \\u0080 to \\u00ff\n";

// The list index named by a table name or a decimal index; -1 for neither.
int tableIndexOf(const std::string& table) {
    if (!table.empty() && table.size() <= 2 &&
        table.find_first_not_of("0123456789") == std::string::npos) {
        const int index = std::stoi(table);
        return index < kTableCount ? index : -1;
    }
    for (int i = 0; i < kTableCount; ++i) {
        if (!strcasecmp(table.c_str(), currentTable(i)->name)) return i;
    }
    return -1;
}

// The output of one walk: a record at a time, so that a large table is not held.
class RecordPrinter {
public:
    RecordPrinter(const CIsamTable& table, bool json) : table_(table), json_(json) {
        for (std::size_t i = 0; i < table.FieldCount(); ++i) {
            nameWidth_ = std::max(nameWidth_, std::string(table.FieldAt(i).name).size());
        }
    }

    void begin() {
        if (json_) std::fputs("[", stdout);
    }

    int record() {
        std::string out;
        if (json_) {
            out += count_ ? ",\n  {" : "\n  {";
        } else {
            appendf(out, "%srecord %u\n", count_ ? "\n" : "", count_ + 1);
        }
        for (std::size_t i = 0; i < table_.FieldCount(); ++i) {
            const FieldDef& field = table_.FieldAt(i);
            std::string value;
            if (const int rc = table_.GetTextAt(i, &value)) return rc;
            const ValueKind kind = valueKindOf(field.type);
            if (json_) {
                if (i) out += ", ";
                appendJsonString(out, field.name);
                out += ": ";
                appendJson(out, kind, value);
            } else {
                appendf(out, "  %s:%*s", field.name,
                        static_cast<int>(nameWidth_ - std::string(field.name).size() + 1), "");
                appendReadable(out, kind, value);
                out += '\n';
            }
        }
        if (json_) out += '}';
        std::fwrite(out.data(), 1, out.size(), stdout);
        ++count_;
        return 0;
    }

    void end(const char* tableName) {
        if (json_) {
            std::fputs(count_ ? "\n]\n" : "]\n", stdout);
        } else {
            std::printf("%s%s: %u record%s\n", count_ ? "\n" : "", tableName, count_,
                        count_ == 1 ? "" : "s");
        }
    }

private:
    const CIsamTable& table_;
    const bool json_;
    std::size_t nameWidth_ = 0;
    std::uint32_t count_ = 0;
};

}  // namespace

int runDump(const Args& args) {
    if (wantsHelp(args)) return printHelp(kUsage);
    const SplitArgs split = splitArgs(args);
    bool json = false;
    for (const std::string& option : split.options) {
        if (option != "--json") return usageError("dump", "unknown option " + option, kUsage);
        json = true;
    }
    if (split.operands.size() != 2) return usageError("dump", "expected FILE and TABLE", kUsage);
    DatabaseFile file;
    std::string problem;
    if (!parseDatabaseFile(split.operands[0], &file, &problem)) {
        return usageError("dump", problem, kUsage);
    }
    const int index = tableIndexOf(split.operands[1]);
    if (index < 0) {
        return usageError("dump", "unknown table '" + split.operands[1] + "'", kUsage);
    }

    const auto db = newDatabase(file.kind);
    if (const int rc = openDatabase(*db, file, "dump")) return rc;
    const int tables = CDbInternals::TablesAtStoredVersion(*db);
    CIsamTable& table = CDbInternals::Table(*db, index);
    if (index >= tables || !table.IsOpen()) {
        (void)closeDatabase(*db, file, "dump");
        return failed("dump", file.path + " has no table " + currentTable(index)->name +
                                  " (list index " + std::to_string(index) + "); this " +
                                  kindName(file.kind) + " has tables 0 to " +
                                  std::to_string(tables - 1));
    }

    // The bound layout may be an earlier one than the current table's.
    const char* name = table.Table()->name;
    RecordPrinter printer(table, json);
    printer.begin();
    const bool walked = CDbInternals::Run(
        *db, [&] { return qvb::forEachRecord(table, 1, [&] { return printer.record(); }); });
    std::fflush(stdout);
    if (!walked) {
        const LONG error = db->GetError();
        (void)closeDatabase(*db, file, "dump");
        return operationFailed("dump", std::string("cannot read ") + name + " of " + file.path,
                               error);
    }
    printer.end(name);
    return closeDatabase(*db, file, "dump");
}

}  // namespace qvbtool
