// qvb languages FILE: the language pairs with their locales, font, flags and
// number of phrases.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "core/DbInternals.h"
#include "core/RecordAccess.h"
#include "platform/LocaleCollation.h"
#include "tools/qvb/Commands.h"
#include "tools/qvb/FieldText.h"

namespace qvbtool {

namespace {

constexpr const char* kCommand = "languages";

constexpr const char* kUsage =
    "usage: qvb languages FILE\n"
    "\n"
    "Lists the language pairs of the project or dictionary FILE (NAME.Prj or\n"
    "NAME.Dic) in PairLangId order: the pair, its PLangId and SLangId (locale\n"
    "identifiers, each with its locale name in brackets when known), its font name\n"
    "(quoted, without the padding it is stored with), its flags in hex and the\n"
    "number of its phrases. The last line gives the number of pairs.\n";

// Dic's index by PairLangId.
constexpr int kPhrasesByPair = 2;

using Row = std::vector<std::string>;

const Row kHeader{"PairLangId", "PLangId", "SLangId", "FontName", "Flags", "Phrases"};
// The columns aligned on the right: the numbers.
constexpr bool kRightAligned[] = {true, false, false, false, false, true};

std::string withLocaleName(DWORD lcid) {
    const std::string name = platform::localeName(lcid);
    return std::to_string(lcid) + (name.empty() ? "" : " (" + name + ")");
}

std::string quotedFontName(const CString& padded) {
    std::string name(padded.GetString(), static_cast<std::size_t>(padded.GetLength()));
    name.erase(name.find_last_not_of(' ') + 1);
    std::string quoted;
    appendQuoted(quoted, name);
    return quoted;
}

int countPhrases(CDbObject& db, DWORD pair, std::uint32_t* count) {
    std::vector<isam::Position> positions;
    CIsamTable& phrases = CDbInternals::Table(db, qvb::catalogue::TAB_DIC);
    const int rc =
        qvb::positionsWithPrefix(phrases, kPhrasesByPair, &pair, sizeof pair, &positions);
    *count = static_cast<std::uint32_t>(positions.size());
    return rc;
}

// The row of one pair; kExitOk, or kExitFailed once reported.
int pairRow(CDbObject& db, DWORD pair, Row* row) {
    DWORD primary = 0;
    DWORD second = 0;
    DWORD flags = 0;
    CString font;
    if (!db.GetSLang(pair, &primary, &second, font, &flags)) {
        return operationFailed(kCommand, "cannot read pair " + std::to_string(pair), db.GetError());
    }
    std::uint32_t phrases = 0;
    if (!CDbInternals::Run(db, [&] { return countPhrases(db, pair, &phrases); })) {
        return operationFailed(kCommand, "cannot count the phrases of pair " + std::to_string(pair),
                               db.GetError());
    }
    std::string hexFlags;
    appendf(hexFlags, "0x%08x", static_cast<unsigned>(flags));
    *row = {std::to_string(pair), withLocaleName(primary), withLocaleName(second),
            quotedFontName(font), hexFlags, std::to_string(phrases)};
    return kExitOk;
}

// The rows in columns as wide as their widest cell, two spaces apart.
void appendColumns(std::string& out, const std::vector<Row>& rows) {
    std::vector<std::size_t> widths(kHeader.size(), 0);
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - row[i].size(), ' ');
            if (i) line += "  ";
            line += kRightAligned[i] ? padding + row[i] : row[i] + padding;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out += line + '\n';
    }
}

// Appends the listing of an open database; kExitOk, or kExitFailed once reported.
int describePairs(CDbObject& db, std::string* text) {
    CDWordArray pairs;
    if (!db.EnumSLang(pairs)) {
        return operationFailed(kCommand, "cannot list the language pairs", db.GetError());
    }
    std::vector<Row> rows{kHeader};
    for (int i = 0; i < pairs.GetSize(); ++i) {
        rows.emplace_back();
        if (const int rc = pairRow(db, pairs[i], &rows.back())) return rc;
    }
    appendColumns(*text, rows);
    const int count = pairs.GetSize();
    appendf(*text, "%d language pair%s\n", count, count == 1 ? "" : "s");
    return kExitOk;
}

}  // namespace

int runLanguages(const Args& args) {
    if (wantsHelp(args)) return printHelp(kUsage);
    Operands operands;
    if (const int rc = parseFileOperands(args, 1, "expected one FILE", nullptr, kCommand, kUsage, &operands)) {
        return rc;
    }
    const DatabaseFile& file = operands.file;

    const auto db = newDatabase(file.kind);
    if (const int rc = openDatabase(*db, file, kCommand)) return rc;
    std::string text;
    const int described = describePairs(*db, &text);
    const int closed = closeDatabase(*db, file, kCommand);
    if (described != kExitOk) return described;
    if (closed != kExitOk) return closed;
    std::fputs(text.c_str(), stdout);
    return kExitOk;
}

}  // namespace qvbtool
