// qvb phrases FILE [--pair N] [--filter none|user|untranslated]: the phrases in
// TextId order, as the database object's filter selects them.
#include <cstdint>
#include <cstdio>
#include <optional>

#include "core/DbInternals.h"
#include "core/RecordAccess.h"
#include "tools/qvb/Commands.h"
#include "tools/qvb/FieldText.h"

namespace qvbtool {

namespace {

constexpr const char* kCommand = "phrases";

constexpr const char* kUsage =
    "usage: qvb phrases FILE [--pair N] [--filter none|user|untranslated]\n"
    "\n"
    "Lists the phrases of the project or dictionary FILE (NAME.Prj or NAME.Dic) in\n"
    "TextId order, one a line: TextId, language pair, use count, flags in hex, and\n"
    "the source text and its translation quoted as qvb dump quotes texts. The last\n"
    "line gives the number listed.\n"
    "\n"
    "  --pair N     only the phrases of language pair N (none for a pair that does\n"
    "               not exist); without it the phrases of every pair\n"
    "  --filter F   only the phrases the filter F selects: none (every phrase), user\n"
    "               (marked as in the user filter) or untranslated (marked as not\n"
    "               translated). The markers are read as they were last refreshed;\n"
    "               this command only reads and does not refresh them.\n";

struct FilterName {
    const char* name;
    FILTER filter;
};

constexpr FilterName kFilters[] = {
    {"none", FilterNone},
    {"user", FilterUser},
    {"untranslated", FilterNotTranslated},
};

bool parseFilter(const std::string& name, FILTER* filter) {
    for (const FilterName& known : kFilters) {
        if (name == known.name) {
            *filter = known.filter;
            return true;
        }
    }
    return false;
}

struct Selection {
    std::optional<std::uint32_t> pair;
    FILTER filter = FilterNone;
};

// kExitOk with the file and the selection, or the usage error once reported.
int parseArguments(Args args, DatabaseFile* file, Selection* selection) {
    std::optional<std::string> pair;
    std::optional<std::string> filter;
    std::string problem;
    if (!takeOptionValue(args, "--pair", &pair, &problem) ||
        !takeOptionValue(args, "--filter", &filter, &problem)) {
        return usageError(kCommand, problem, kUsage);
    }
    Operands operands;
    if (const int rc = parseFileOperands(args, 1, "expected one FILE", nullptr, kCommand, kUsage, &operands)) {
        return rc;
    }
    *file = operands.file;
    if (pair) {
        std::uint32_t id = 0;
        if (!parseUnsigned32(*pair, &id)) {
            return usageError(kCommand, "--pair takes a pair number, not '" + *pair + "'", kUsage);
        }
        selection->pair = id;
    }
    if (filter && !parseFilter(*filter, &selection->filter)) {
        return usageError(kCommand, "unknown filter '" + *filter + "' (none, user, untranslated)",
                          kUsage);
    }
    return kExitOk;
}

// What a line shows of a phrase: fields that the current and the earlier phrase
// layout both have.
struct PhraseLine {
    std::uint32_t textId = 0;
    std::uint32_t pairLangId = 0;
    std::uint32_t count = 0;
    std::uint32_t flags = 0;
    CString sText;
    CString tText;
};

int readPhraseLine(const CIsamTable& phrases, PhraseLine* line) {
    return qvb::RecordReader(phrases)
        .Long("TextId", &line->textId)
        .Long("PairLangId", &line->pairLangId)
        .Long("Count", &line->count)
        .Long("Flags", &line->flags)
        .Text("SText", line->sText)
        .Text("TText", line->tText)
        .error();
}

std::string bytesOf(const CString& text) {
    return std::string(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

void printHeader() {
    std::printf("%8s %8s %8s  %-10s  %s\n", "TextId", "Pair", "Count", "Flags",
                "Source, translation");
}

void printPhrase(const PhraseLine& line) {
    std::string out;
    appendf(out, "%8u %8u %8u  0x%08x  ", line.textId, line.pairLangId, line.count, line.flags);
    appendQuoted(out, bytesOf(line.sText));
    out += "  ";
    appendQuoted(out, bytesOf(line.tText));
    out += '\n';
    std::fwrite(out.data(), 1, out.size(), stdout);
}

// Walks every phrase by TextId and prints those of the selected pair that pass the
// database's filter; false with the error in the database.
bool printSelected(CDbObject& db, const Selection& selection, std::uint32_t* listed) {
    CIsamTable& phrases = CDbInternals::Table(db, qvb::catalogue::TAB_DIC);
    return CDbInternals::Run(db, [&] {
        return qvb::forEachRecord(phrases, 1, [&] {
            PhraseLine line;
            const int rc = readPhraseLine(phrases, &line);
            if (rc != isam::ISAM_OK) return rc;
            const bool inPair = !selection.pair || *selection.pair == line.pairLangId;
            if (inPair && db.IsFiltered(line.flags)) {
                printPhrase(line);
                ++*listed;
            }
            return isam::ISAM_OK;
        });
    });
}

}  // namespace

int runPhrases(const Args& args) {
    if (wantsHelp(args)) return printHelp(kUsage);
    DatabaseFile file;
    Selection selection;
    if (const int rc = parseArguments(args, &file, &selection)) return rc;

    const auto db = newDatabase(file.kind);
    if (const int rc = openDatabase(*db, file, kCommand)) return rc;
    db->SetFilter(selection.filter);
    printHeader();
    std::uint32_t listed = 0;
    const bool walked = printSelected(*db, selection, &listed);
    std::fflush(stdout);
    if (!walked) {
        const LONG error = db->GetError();
        (void)closeDatabase(*db, file, kCommand);
        return operationFailed(kCommand, "cannot read the phrases of " + file.path, error);
    }
    std::printf("%u phrase%s\n", listed, listed == 1 ? "" : "s");
    return closeDatabase(*db, file, kCommand);
}

}  // namespace qvbtool
