// The qvb tool as a user runs it: the built binary, its output and exit codes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "core/DbInternals.h"
#include "core/LibraryErrors.h"
#include "core/NewDatabase.h"
#include "core/RecordAccess.h"
#include "qvb/qvb.h"
#include "tests/db/RawFile.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using qvb::catalogue::currentTable;

class TempDir {
public:
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "qvb-tool-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();
        path_ = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

struct ToolRun {
    int code = -1;
    std::string out;
    std::string err;
};

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Runs the built tool with its output in files, so that no pipe can fill up.
ToolRun qvb(const std::vector<std::string>& args) {
    const char* binaryDir = std::getenv("QVB_TEST_BINARY_DIR");
    const std::string binary = std::string(binaryDir ? binaryDir : ".") + "/qvb";
    TempDir scratch;
    const std::string outPath = scratch.file("out");
    const std::string errPath = scratch.file("err");

    std::vector<char*> argv{const_cast<char*>(binary.c_str())};
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_addopen(&files, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, binary.c_str(), &files, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    ToolRun run;
    if (spawned != 0) {
        ADD_FAILURE() << "cannot run " << binary;
        return run;
    }
    int status = 0;
    waitpid(pid, &status, 0);
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    run.out = readFile(outPath);
    run.err = readFile(errPath);
    return run;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> found;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) found.push_back(line);
    return found;
}

std::vector<std::string> words(const std::string& line) {
    std::vector<std::string> found;
    std::istringstream in(line);
    for (std::string word; in >> word;) found.push_back(word);
    return found;
}

bool isNumber(const std::string& word) {
    return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
}

// The value of a "label   value" line of qvb info.
std::string infoValue(const std::string& info, const std::string& label) {
    for (const std::string& line : lines(info)) {
        const auto w = words(line);
        if (w.size() == 2 && line.compare(0, label.size() + 1, label + " ") == 0) return w[1];
    }
    return "";
}

// The rows of qvb info's table list (index, name, records) or resource list
// (number, bytes): the indented lines of `columns` words starting with a number,
// after the line that starts with `section`.
std::vector<std::vector<std::string>> rows(const std::string& info, const std::string& section,
                                           std::size_t columns) {
    std::vector<std::vector<std::string>> found;
    bool inSection = false;
    for (const std::string& line : lines(info)) {
        if (!line.empty() && line[0] != ' ') {
            inSection = line.compare(0, section.size() + 1, section + " ") == 0;
            continue;
        }
        const auto w = words(line);
        if (inSection && w.size() == columns && isNumber(w.front()) && isNumber(w.back())) {
            found.push_back(w);
        }
    }
    return found;
}

std::vector<std::vector<std::string>> tableRows(const std::string& info) {
    return rows(info, "tables", 3);
}

// ---- A small strict JSON reader ----------------------------------------------------------

struct Json {
    enum Type { Null, Bool, Number, String, Array, Object } type = Null;
    std::string text;  // a string's bytes (\u00XX as the byte XX), or a number's spelling
    std::vector<Json> items;
    std::vector<std::pair<std::string, Json>> members;  // in order

    const Json& operator[](const std::string& key) const {
        static const Json missing;
        for (const auto& member : members) {
            if (member.first == key) return member.second;
        }
        return missing;
    }
};

// Reads exactly one JSON value; false for anything else.
class JsonReader {
public:
    explicit JsonReader(const std::string& text) : p_(text.c_str()), end_(p_ + text.size()) {}
    bool read(Json* value) { return parse(value) && (space(), p_ == end_); }

private:
    void space() {
        while (p_ < end_ && std::strchr(" \t\r\n", *p_)) ++p_;
    }
    bool take(char c) { return space(), p_ < end_ && *p_ == c ? (++p_, true) : false; }
    bool word(const char* w) {
        const std::size_t n = std::strlen(w);
        return static_cast<std::size_t>(end_ - p_) >= n && !std::strncmp(p_, w, n) ? (p_ += n, true)
                                                                                   : false;
    }
    bool digits() {
        const char* from = p_;
        while (p_ < end_ && std::isdigit(static_cast<unsigned char>(*p_))) ++p_;
        return p_ > from;
    }

    bool parse(Json* v) {
        if (take('[')) {
            v->type = Json::Array;
            if (take(']')) return true;
            do {
                v->items.emplace_back();
                if (!parse(&v->items.back())) return false;
            } while (take(','));
            return take(']');
        }
        if (take('{')) {
            v->type = Json::Object;
            if (take('}')) return true;
            do {
                v->members.emplace_back();
                if (!take('"') || !string(&v->members.back().first) || !take(':') ||
                    !parse(&v->members.back().second)) {
                    return false;
                }
            } while (take(','));
            return take('}');
        }
        if (take('"')) return v->type = Json::String, string(&v->text);
        if (word("true") || word("false")) return v->type = Json::Bool, true;
        if (word("null")) return true;
        const char* start = p_;
        if (p_ < end_ && *p_ == '-') ++p_;
        if (!(word("0") || digits())) return false;
        if (word(".") && !digits()) return false;
        if (word("e") || word("E")) {
            if (!word("+")) word("-");
            if (!digits()) return false;
        }
        v->type = Json::Number;
        v->text.assign(start, p_);
        return true;
    }

    // After the opening quote.
    bool string(std::string* out) {
        while (p_ < end_) {
            const char c = *p_++;
            if (c == '"') return true;
            if (static_cast<unsigned char>(c) < 0x20) return false;
            if (c != '\\') {
                *out += c;
                continue;
            }
            const char e = p_ < end_ ? *p_++ : '\0';
            static const std::string kNamed = "\"\\/bfnrt", kMeant = "\"\\/\b\f\n\r\t";
            if (const std::size_t at = kNamed.find(e); e && at != std::string::npos) {
                *out += kMeant[at];
                continue;
            }
            if (e != 'u' || end_ - p_ < 4) return false;
            const std::string hex(p_, 4);
            if (hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) return false;
            const unsigned long code = std::stoul(hex, nullptr, 16);
            if (code > 0xff) return false;  // the tool writes single bytes only
            *out += static_cast<char>(code);
            p_ += 4;
        }
        return false;
    }

    const char* p_;
    const char* end_;
};

// ---- Databases made through the library ---------------------------------------------------

constexpr int kFontNameWidth = 199;  // how the library pads a pair's font name

std::string padded(const std::string& fontName) {
    return fontName + std::string(kFontNameWidth - fontName.size(), ' ');
}

// A project with one language pair whose font name needs escaping, and a second pair
// with a 20-byte Font binary, written through the record layer.
const std::string kAwkwardName = "Say \"hi\" caf\xe9 \\ \x01 end";

void makeAwkwardProject(const std::string& dir) {
    CDbProject db;
    ASSERT_EQ(1, qvb::createForUse(db, (dir + "/").c_str(), "awk")) << db.GetError();
    DWORD id = 0;
    ASSERT_EQ(1, db.AddSLang(&id, 1033, 1031, kAwkwardName.c_str(), 7)) << db.GetError();
    ASSERT_EQ(1, db.AddSLang(&id, 1033, 1036, "Arial", 0)) << db.GetError();
    std::string font;
    for (int i = 0; i < 20; ++i) font += static_cast<char>(i * 13);
    CIsamTable& pairs = CDbInternals::Table(db, 0);
    const auto setFont = [&] {
        int rc = qvb::readById(pairs, id);
        if (rc == 0) rc = pairs.SetBinary("Font", font.data(), font.size());
        return rc == 0 ? pairs.Rewrite() : rc;
    };
    ASSERT_EQ(1, CDbInternals::Run(db, setFont)) << db.GetError();
    ASSERT_EQ(1, db.CloseDb()) << db.GetError();
}

// ---- create and info ----------------------------------------------------------------------

TEST(ToolCreateInfo, NewDatabasesShowKindVersionEveryTableAndTheVersionResource) {
    struct Case {
        const char* option;
        const char* directorySuffix;  // either way the library gets one separator
        const char* file;
        const char* kind;
        int version;
        int tables;
    };
    for (const Case& c : {Case{"--project", "/", "p.Prj", "project", 21, 32},
                          Case{"--dictionary", "", "d.Dic", "dictionary", 2, 3}}) {
        SCOPED_TRACE(c.file);
        TempDir dir;
        const std::string name = std::string(c.file).substr(0, 1);
        const ToolRun created = qvb({"create", dir.path() + c.directorySuffix, name, c.option});
        ASSERT_EQ(0, created.code) << created.err;
        EXPECT_EQ(dir.file(c.file) + "\n", created.out);
        EXPECT_TRUE(fs::exists(dir.file(c.file)));

        const ToolRun info = qvb({"info", dir.file(c.file)});
        ASSERT_EQ(0, info.code) << info.err;
        EXPECT_EQ("", info.err);
        EXPECT_EQ(c.kind, infoValue(info.out, "kind"));
        EXPECT_EQ(std::to_string(c.version), infoValue(info.out, "version"));
        EXPECT_EQ(std::to_string(c.tables), infoValue(info.out, "tables"));
        const auto tables = tableRows(info.out);
        ASSERT_EQ(static_cast<std::size_t>(c.tables), tables.size()) << info.out;
        for (int i = 0; i < c.tables; ++i) {
            const std::vector<std::string> expected{std::to_string(i), currentTable(i)->name, "0"};
            EXPECT_EQ(expected, tables[static_cast<std::size_t>(i)]);
        }
        EXPECT_EQ("1", infoValue(info.out, "resources"));
        const std::vector<std::vector<std::string>> resources{{"0", "4"}};
        EXPECT_EQ(resources, rows(info.out, "resources", 2));
    }
}

TEST(ToolCreateInfo, InfoCountsRecordsAndShowsAnOlderStoredVersion) {
    TempDir dir;
    {
        CDbProject db;
        ASSERT_EQ(1, qvb::createForUse(db, (dir.path() + "/").c_str(), "old")) << db.GetError();
        DWORD id = 0;
        for (DWORD lang : {1031u, 1036u, 1040u})
            ASSERT_EQ(1, db.AddSLang(&id, 1033, lang, "Arial", 0));
        // Version 20 predates the History table.
        ASSERT_EQ(1, db.SetDBVersion(20)) << db.GetError();
        ASSERT_EQ(1, db.CloseDb());
    }
    const ToolRun info = qvb({"info", dir.file("old.Prj")});
    ASSERT_EQ(0, info.code) << info.err;
    EXPECT_EQ("20", infoValue(info.out, "version"));
    EXPECT_EQ("31", infoValue(info.out, "tables"));
    const auto tables = tableRows(info.out);
    ASSERT_EQ(31u, tables.size());
    EXPECT_EQ((std::vector<std::string>{"0", "SLang", "3"}), tables[0]);
    EXPECT_EQ("BinaryData", tables[30][1]);

    const ToolRun missing = qvb({"dump", dir.file("old.Prj"), "History"});
    EXPECT_EQ(1, missing.code);
    EXPECT_NE(std::string::npos, missing.err.find("no table History")) << missing.err;
    const ToolRun present = qvb({"dump", dir.file("old.Prj"), "30"});
    EXPECT_EQ(0, present.code) << present.err;
    EXPECT_EQ("BinaryData: 0 records\n", present.out);
}

TEST(ToolCreateInfo, DatabaseWithoutStoredVersionIsShownAsSuch) {
    TempDir dir;
    {
        CDbProject db;
        ASSERT_EQ(1, db.CreateDb((dir.path() + "/").c_str(), "bare")) << db.GetError();
    }
    const ToolRun info = qvb({"info", dir.file("bare.Prj")});
    ASSERT_EQ(0, info.code) << info.err;
    EXPECT_EQ("none", infoValue(info.out, "version"));
    EXPECT_EQ("32", infoValue(info.out, "tables"));  // what an unversioned project opens
    EXPECT_EQ("0", infoValue(info.out, "resources"));
}

TEST(ToolCreateInfo, CheckVerifiesTheWholeFileAndFindsADamagedRecord) {
    TempDir dir;
    ASSERT_EQ(0, qvb({"demo", dir.path()}).code);
    const std::string file = dir.file("demo.Prj");
    const ToolRun sound = qvb({"info", file, "--check"});
    ASSERT_EQ(0, sound.code) << sound.err;
    EXPECT_EQ("ok", infoValue(sound.out, "check"));

    // One byte of a stored text changed behind the library's back.
    std::string stored = dbtest::storedRecord(file, "Dic", 1);
    ASSERT_GT(stored.size(), 30u);
    stored[stored.size() / 2] ^= 0x20;
    ASSERT_TRUE(dbtest::forgeRecord(file, "Dic", 1, stored));
    const ToolRun damaged = qvb({"info", file, "--check"});
    EXPECT_EQ(1, damaged.code);
    EXPECT_NE(std::string::npos, damaged.err.find("621")) << damaged.err;
}

// ---- demo and dump --------------------------------------------------------------------------

TEST(ToolDemoDump, DemoShowsItsInfoAndDumpShowsBothPairs) {
    TempDir dir;
    const ToolRun demo = qvb({"demo", dir.path()});
    ASSERT_EQ(0, demo.code) << demo.err;
    const std::string file = dir.file("demo.Prj");
    const ToolRun info = qvb({"info", file});
    EXPECT_EQ(info.out, demo.out);
    EXPECT_EQ((std::vector<std::string>{"0", "SLang", "2"}), tableRows(info.out).at(0));

    const ToolRun dump = qvb({"dump", file, "SLang"});
    ASSERT_EQ(0, dump.code) << dump.err;
    const std::string expected =
        "record 1\n"
        "  PairLangId: 1\n"
        "  PLangId:    1033\n"
        "  SLangId:    1031\n"
        "  FontName:   \"MS Shell Dlg\" + 187 spaces\n"
        "  Flags:      0\n"
        "  Font:       0 bytes\n"
        "\n"
        "record 2\n"
        "  PairLangId: 2\n"
        "  PLangId:    1033\n"
        "  SLangId:    1036\n"
        "  FontName:   \"MS Shell Dlg\" + 187 spaces\n"
        "  Flags:      0\n"
        "  Font:       0 bytes\n"
        "\n"
        "SLang: 2 records\n";
    EXPECT_EQ(expected, dump.out);
    // A table by list index or in any case is the same table.
    EXPECT_EQ(expected, qvb({"dump", file, "0"}).out);
    EXPECT_EQ(expected, qvb({"dump", file, "slang"}).out);
    EXPECT_EQ("XMLNODESR: 0 records\n", qvb({"dump", file, "xmlnodesr"}).out);

    // A second demo in the same place finds its project there.
    const ToolRun again = qvb({"demo", dir.path()});
    EXPECT_EQ(1, again.code);
    EXPECT_NE(std::string::npos, again.err.find("error 612")) << again.err;
}

TEST(ToolDemoDump, TextsAreEscapedAndBinariesShownByPrefixInBothForms) {
    TempDir dir;
    ASSERT_NO_FATAL_FAILURE(makeAwkwardProject(dir.path()));
    const ToolRun text = qvb({"dump", dir.file("awk.Prj"), "SLang"});
    ASSERT_EQ(0, text.code) << text.err;
    EXPECT_NE(std::string::npos,
              text.out.find("  FontName:   \"Say \\\"hi\\\" caf\\xe9 \\\\ \\x01 end\" + " +
                            std::to_string(kFontNameWidth - kAwkwardName.size()) + " spaces\n"))
        << text.out;
    EXPECT_NE(std::string::npos,
              text.out.find("  Font:       20 bytes 000d1a2734414e5b6875828f9ca9b6c3...\n"))
        << text.out;

    const ToolRun dump = qvb({"dump", dir.file("awk.Prj"), "SLang", "--json"});
    ASSERT_EQ(0, dump.code) << dump.err;
    for (const char c : dump.out) {
        const auto byte = static_cast<unsigned char>(c);
        ASSERT_TRUE(byte == '\n' || (byte >= 0x20 && byte < 0x80)) << "raw byte " << int(byte);
    }
    EXPECT_NE(std::string::npos, dump.out.find(R"(Say \"hi\" caf\u00e9 \\ \u0001 end)"))
        << dump.out;

    Json records;
    ASSERT_TRUE(JsonReader(dump.out).read(&records)) << dump.out;
    ASSERT_EQ(Json::Array, records.type);
    ASSERT_EQ(2u, records.items.size());
    const Json& first = records.items[0];
    std::vector<std::string> names;
    for (const auto& member : first.members) names.push_back(member.first);
    EXPECT_EQ(
        (std::vector<std::string>{"PairLangId", "PLangId", "SLangId", "FontName", "Flags", "Font"}),
        names);
    EXPECT_EQ(Json::Number, first["PairLangId"].type);
    EXPECT_EQ("1", first["PairLangId"].text);
    EXPECT_EQ("1031", first["SLangId"].text);
    EXPECT_EQ("7", first["Flags"].text);
    EXPECT_EQ(Json::String, first["FontName"].type);
    EXPECT_EQ(padded(kAwkwardName), first["FontName"].text);
    EXPECT_EQ("0", first["Font"]["length"].text);
    EXPECT_EQ("", first["Font"]["hex"].text);

    const Json& second = records.items[1];
    EXPECT_EQ(padded("Arial"), second["FontName"].text);
    EXPECT_EQ(Json::Object, second["Font"].type);
    EXPECT_EQ("20", second["Font"]["length"].text);
    EXPECT_EQ("000d1a2734414e5b6875828f9ca9b6c3", second["Font"]["hex"].text);

    const ToolRun empty = qvb({"dump", dir.file("awk.Prj"), "Dic", "--json"});
    ASSERT_EQ(0, empty.code) << empty.err;
    Json none;
    ASSERT_TRUE(JsonReader(empty.out).read(&none)) << empty.out;
    EXPECT_EQ(Json::Array, none.type);
    EXPECT_TRUE(none.items.empty());
}

// ---- phrases and languages ----------------------------------------------------------------

// A phrase as the test adds it; ids are given so that the insertion order differs
// from TextId order.
struct PhraseSpec {
    DWORD textId;
    DWORD pair;
    std::string source;
    std::string translation;
    int translated;
    DWORD count;
    DWORD flags;
};

void addPhrases(CDbObject& db, const std::vector<PhraseSpec>& phrases) {
    for (const PhraseSpec& p : phrases) {
        const CString source(p.source.data(), static_cast<int>(p.source.size()));
        const CString translation(p.translation.data(), static_cast<int>(p.translation.size()));
        ASSERT_EQ(1, db.AddDictionary(p.textId, p.pair, source, source, translation, WORD{0}, 0,
                                      p.count, p.translated, 0, p.flags))
            << p.textId << ": " << db.GetError();
    }
}

// Two pairs, a phrase of a pair that does not exist, and the not-translated markers
// refreshed for pair 1 only: phrase 3 is marked, phrase 2 (untranslated, pair 2)
// is not. Flags 2 is the user-filter marker.
void makePhraseProject(const std::string& dir) {
    CDbProject db;
    ASSERT_EQ(1, qvb::createForUse(db, (dir + "/").c_str(), "ph")) << db.GetError();
    DWORD id = 0;
    ASSERT_EQ(1, db.AddSLang(&id, 1033, 1031, "MS Shell Dlg", 0)) << db.GetError();
    ASSERT_EQ(1, db.AddSLang(&id, 1033, 1036, kAwkwardName.c_str(), 0x2a)) << db.GetError();
    ASSERT_NO_FATAL_FAILURE(addPhrases(
        db, {
                {5, 1, "Open", "\xd6" "ffnen", 1, 2, 0},
                {2, 2, "Say \"hi\"\nnow\t\\", "", 0, 0, 2},
                {7, 9, "Orphan", "Waise", 1, 0, 2},
                {3, 1, "Close", "", 0, 0, 0x100},
                {1, 2, "Save", "Enregistrer", 1, 0, 0},
            }));
    ASSERT_EQ(1, db.RefreshNotTranslatedFilter(1)) << db.GetError();
    ASSERT_EQ(1, db.CloseDb()) << db.GetError();
}

// The TextIds of a phrases listing, in the order listed.
std::vector<std::string> listedIds(const std::string& out) {
    std::vector<std::string> ids;
    for (const std::string& line : lines(out)) {
        const auto w = words(line);
        if (w.size() >= 5 && isNumber(w[0])) ids.push_back(w[0]);
    }
    return ids;
}

std::string lastLine(const std::string& out) {
    const auto all = lines(out);
    return all.empty() ? "" : all.back();
}

TEST(ToolPhrases, EveryPhraseInIdOrderWithTextsEscaped) {
    TempDir dir;
    ASSERT_NO_FATAL_FAILURE(makePhraseProject(dir.path()));
    const ToolRun run = qvb({"phrases", dir.file("ph.Prj")});
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ("", run.err);
    EXPECT_EQ(
        "  TextId     Pair    Count  Flags       Source, translation\n"
        "       1        2        0  0x00000000  \"Save\"  \"Enregistrer\"\n"
        "       2        2        0  0x00000002  \"Say \\\"hi\\\"\\nnow\\t\\\\\"  \"\"\n"
        "       3        1        0  0x00000101  \"Close\"  \"\"\n"
        "       5        1        2  0x00000000  \"Open\"  \"\\xd6ffnen\"\n"
        "       7        9        0  0x00000002  \"Orphan\"  \"Waise\"\n"
        "5 phrases\n",
        run.out);
    EXPECT_EQ(run.out, qvb({"phrases", dir.file("ph.Prj"), "--filter", "none"}).out);
}

TEST(ToolPhrases, PairAndFilterSelectByTheStoredMarkers) {
    TempDir dir;
    ASSERT_NO_FATAL_FAILURE(makePhraseProject(dir.path()));
    const std::string file = dir.file("ph.Prj");
    struct Case {
        std::vector<std::string> options;
        std::vector<std::string> ids;
    };
    for (const Case& c : std::vector<Case>{
             {{"--pair", "1"}, {"3", "5"}},
             {{"--pair=2"}, {"1", "2"}},
             {{"--pair", "9"}, {"7"}},
             {{"--pair", "4"}, {}},
             {{"--pair", "4294967295"}, {}},
             {{"--filter", "untranslated"}, {"3"}},
             {{"--filter=user"}, {"2", "7"}},
             {{"--filter", "user", "--pair", "2"}, {"2"}},
             {{"--pair", "2", "--filter", "untranslated"}, {}},
         }) {
        std::vector<std::string> args{"phrases", file};
        args.insert(args.end(), c.options.begin(), c.options.end());
        SCOPED_TRACE(c.options[0] + " " + (c.options.size() > 1 ? c.options[1] : ""));
        const ToolRun run = qvb(args);
        ASSERT_EQ(0, run.code) << run.err;
        EXPECT_EQ(c.ids, listedIds(run.out)) << run.out;
        const std::size_t n = c.ids.size();
        EXPECT_EQ(std::to_string(n) + (n == 1 ? " phrase" : " phrases"), lastLine(run.out));
    }
}

TEST(ToolPhrases, LanguagesShowLocalesTrimmedFontsAndPhraseCounts) {
    TempDir dir;
    ASSERT_NO_FATAL_FAILURE(makePhraseProject(dir.path()));
    const ToolRun run = qvb({"languages", dir.file("ph.Prj")});
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ(
        "PairLangId  PLangId       SLangId       FontName                          "
        "Flags       Phrases\n"
        "         1  1033 (en_US)  1031 (de_DE)  \"MS Shell Dlg\"                    "
        "0x00000000        2\n"
        "         2  1033 (en_US)  1036 (fr_FR)  \"Say \\\"hi\\\" caf\\xe9 \\\\ \\x01 end\"  "
        "0x0000002a        2\n"
        "2 language pairs\n",
        run.out);
}

TEST(ToolPhrases, DictionaryListsItsPhrasesAndAnUnknownLocaleHasNoName) {
    TempDir dir;
    {
        CDbDictionary db;
        ASSERT_EQ(1, qvb::createForUse(db, (dir.path() + "/").c_str(), "d")) << db.GetError();
        DWORD id = 0;
        // 4660 (0x1234) is no locale ICU knows.
        ASSERT_EQ(1, db.AddSLang(&id, 1033, 4660, "Arial   ", 0)) << db.GetError();
        ASSERT_NO_FATAL_FAILURE(addPhrases(db, {{4, 1, "Yes", "Ja", 1, 0, 0},
                                                {2, 1, "No", "Nein", 1, 0, 0}}));
        ASSERT_EQ(1, db.CloseDb()) << db.GetError();
    }
    const ToolRun phrases = qvb({"phrases", dir.file("d.Dic"), "--pair", "1"});
    ASSERT_EQ(0, phrases.code) << phrases.err;
    EXPECT_EQ((std::vector<std::string>{"2", "4"}), listedIds(phrases.out));
    EXPECT_NE(std::string::npos, phrases.out.find("\"No\"  \"Nein\"\n")) << phrases.out;

    const ToolRun languages = qvb({"languages", dir.file("d.Dic")});
    ASSERT_EQ(0, languages.code) << languages.err;
    EXPECT_EQ((std::vector<std::string>{"1", "1033", "(en_US)", "4660", "\"Arial\"", "0x00000000",
                                        "2"}),
              words(lines(languages.out).at(1)));
    EXPECT_EQ("1 language pair", lastLine(languages.out));
}

TEST(ToolPhrases, DemoPairsCountWhatPhrasesListsForThem) {
    TempDir dir;
    ASSERT_EQ(0, qvb({"demo", dir.path()}).code);
    const std::string file = dir.file("demo.Prj");
    const ToolRun languages = qvb({"languages", file});
    ASSERT_EQ(0, languages.code) << languages.err;
    const auto pairLines = lines(languages.out);
    ASSERT_EQ(4u, pairLines.size()) << languages.out;
    EXPECT_NE(std::string::npos, pairLines[1].find("1033 (en_US)  1031 (de_DE)"));
    EXPECT_NE(std::string::npos, pairLines[2].find("1033 (en_US)  1036 (fr_FR)"));
    std::size_t total = 0;
    for (const std::string pair : {"1", "2"}) {
        const ToolRun listed = qvb({"phrases", file, "--pair", pair});
        ASSERT_EQ(0, listed.code) << listed.err;
        const std::size_t n = listedIds(listed.out).size();
        EXPECT_EQ(std::to_string(n), words(pairLines[std::stoul(pair)]).back());
        total += n;
    }
    const ToolRun all = qvb({"phrases", file});
    ASSERT_EQ(0, all.code) << all.err;
    EXPECT_EQ(total, listedIds(all.out).size());
}

TEST(ToolPhrases, NonDatabaseFileExitsOne) {
    TempDir dir;
    const std::string junk = dir.file("junk.Prj");
    std::ofstream(junk) << "not a database, just some text that is long enough to matter\n";
    for (const std::string command : {"phrases", "languages"}) {
        SCOPED_TRACE(command);
        const ToolRun run = qvb({command, junk});
        EXPECT_EQ(1, run.code);
        EXPECT_EQ("", run.out);
        EXPECT_EQ(0u, run.err.find("qvb " + command + ": cannot open " + junk)) << run.err;
    }
}

// ---- the demo project, modules and extract ------------------------------------------------

// The greeter.res file of the demo, as its help describes it.
std::string demoResourceBytes() {
    std::string bytes(4096, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>((i * 37 + 11) % 256);
    }
    return bytes;
}

// The record count qvb info shows for a table.
std::string infoRecords(const std::string& info, const std::string& table) {
    for (const auto& row : tableRows(info)) {
        if (row[1] == table) return row[2];
    }
    return "";
}

TEST(ToolDemoProject, HoldsModulesEntriesANoticeAndBothMarkersRefreshed) {
    TempDir dir;
    const ToolRun demo = qvb({"demo", dir.path()});
    ASSERT_EQ(0, demo.code) << demo.err;
    const std::vector<std::pair<std::string, std::string>> counts{
        {"Modul", "2"},  {"LModul", "4"},      {"STable", "8"},     {"MTable", "4"},
        {"Notice", "1"}, {"TargetPaths", "2"}, {"ModulExtra", "2"}, {"BinaryData", "2"}};
    for (const auto& [table, records] : counts) {
        EXPECT_EQ(records, infoRecords(demo.out, table)) << table;
    }
    // Nothing of the sample files is left behind in the demo's directory.
    EXPECT_EQ(1, std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()));

    const std::string file = dir.file("demo.Prj");
    // "E&xit" (TextIds 4 and 9) is the phrase of two entries in each pair.
    const ToolRun phrases = qvb({"phrases", file});
    ASSERT_EQ(0, phrases.code) << phrases.err;
    for (const std::string& line : lines(phrases.out)) {
        const auto w = words(line);
        if (w.size() < 5 || !isNumber(w[0])) continue;
        EXPECT_EQ(w[0] == "4" || w[0] == "9" ? "2" : "1", w[2]) << line;
    }
    // Both pairs refreshed: the untranslated phrases, and those whose source text
    // holds "file".
    EXPECT_EQ((std::vector<std::string>{"3", "5", "9", "10"}),
              listedIds(qvb({"phrases", file, "--filter", "untranslated"}).out));
    EXPECT_EQ((std::vector<std::string>{"1", "5", "6", "10"}),
              listedIds(qvb({"phrases", file, "--filter", "user"}).out));
}

// The module lines of qvb modules: the words of each line between the header and
// the count.
std::vector<std::vector<std::string>> modulRows(const std::string& out) {
    std::vector<std::vector<std::string>> found;
    const auto all = lines(out);
    for (std::size_t i = 1; i + 1 < all.size(); ++i) found.push_back(words(all[i]));
    return found;
}

// What follows the quoted name on a module line.
std::string langModulsOf(const std::vector<std::string>& row) {
    std::string joined;
    for (std::size_t i = 5; i < row.size(); ++i) joined += (i > 5 ? " " : "") + row[i];
    return joined;
}

TEST(ToolModules, DemoModulesHaveStoredFilesAndALanguageModuleInEachPair) {
    TempDir dir;
    ASSERT_EQ(0, qvb({"demo", dir.path()}).code);
    const ToolRun run = qvb({"modules", dir.file("demo.Prj")});
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ("", run.err);
    EXPECT_EQ("2 modules", lastLine(run.out));
    const auto rows = modulRows(run.out);
    ASSERT_EQ(2u, rows.size()) << run.out;
    struct Expected {
        const char* id;
        const char* type;
        const char* name;
        const char* langModuls;
    };
    const Expected expected[] = {{"1", "1", "\"greeter.sh\"", "1 (pair 1), 3 (pair 2)"},
                                 {"2", "2", "\"greeter.res\"", "2 (pair 1), 4 (pair 2)"}};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(expected[i].name);
        ASSERT_GE(rows[i].size(), 6u);
        EXPECT_EQ(expected[i].id, rows[i][0]);
        EXPECT_EQ(expected[i].type, rows[i][1]);
        EXPECT_EQ("0x00000000", rows[i][2]);
        ASSERT_TRUE(isNumber(rows[i][3]));
        EXPECT_GT(std::stoul(rows[i][3]), 0u);
        EXPECT_EQ(expected[i].name, rows[i][4]);
        EXPECT_EQ(expected[i].langModuls, langModulsOf(rows[i]));
    }
}

// Modules without stored files: one with a language module under a chosen id, one
// in two pairs, one in none, in ModulId order whatever the order of adding.
void makeModuleProject(const std::string& dir) {
    CDbProject db;
    ASSERT_EQ(1, qvb::createForUse(db, (dir + "/").c_str(), "mods")) << db.GetError();
    DWORD id = 0;
    for (const DWORD target : {1031u, 1036u, 1040u}) {
        ASSERT_EQ(1, db.AddSLang(&id, 1033, target, "Arial", 0)) << db.GetError();
    }
    ASSERT_EQ(1, db.AddModul(DWORD{5}, "two \"pairs\".dll", 65535, 0xffffffff)) << db.GetError();
    ASSERT_EQ(1, db.AddModul(DWORD{1}, "one.exe", 7, 0x10)) << db.GetError();
    ASSERT_EQ(1, db.AddModul(DWORD{9}, "none", 0, 0)) << db.GetError();
    ASSERT_EQ(1, db.AddLangModul(&id, 3, 5, 0)) << db.GetError();
    ASSERT_EQ(1, db.AddLangModul(&id, 2, 5, 0)) << db.GetError();
    ASSERT_EQ(1, db.AddLangModul(DWORD{40}, 1, 1, 0)) << db.GetError();
    ASSERT_EQ(1, db.CloseDb()) << db.GetError();
}

TEST(ToolModules, ListsEveryModuleWithItsLanguageModulesPairByPair) {
    TempDir dir;
    ASSERT_NO_FATAL_FAILURE(makeModuleProject(dir.path()));
    const ToolRun run = qvb({"modules", dir.file("mods.Prj")});
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ(
        " ModulId    Type  Flags       Stored bytes  Name, language modules\n"
        "       1       7  0x00000010             0  \"one.exe\"  40 (pair 1)\n"
        "       5   65535  0xffffffff             0  \"two \\\"pairs\\\".dll\"  "
        "2 (pair 2), 1 (pair 3)\n"
        "       9       0  0x00000000             0  \"none\"  no language modules\n"
        "3 modules\n",
        run.out);

    TempDir empty;
    ASSERT_EQ(0, qvb({"create", empty.path(), "e", "--project"}).code);
    const ToolRun none = qvb({"modules", empty.file("e.Prj")});
    ASSERT_EQ(0, none.code) << none.err;
    EXPECT_EQ(" ModulId    Type  Flags       Stored bytes  Name, language modules\n0 modules\n",
              none.out);
}

TEST(ToolExtract, WritesTheFilesTheDemoStoredReplacingWhatOutHeld) {
    TempDir dir;
    ASSERT_EQ(0, qvb({"demo", dir.path()}).code);
    const std::string file = dir.file("demo.Prj");
    const std::string resource = dir.file("greeter.res");
    // A longer file at OUT must not leave a tail behind.
    std::ofstream(resource, std::ios::binary) << std::string(10000, 'x');
    const ToolRun bytes = qvb({"extract", file, "2", resource});
    ASSERT_EQ(0, bytes.code) << bytes.err;
    EXPECT_EQ("wrote 4096 bytes to " + resource + "\n", bytes.out);
    EXPECT_TRUE(readFile(resource) == demoResourceBytes());

    const std::string program = dir.file("greeter.sh");
    const ToolRun text = qvb({"extract", file, "1", program});
    ASSERT_EQ(0, text.code) << text.err;
    const std::string written = readFile(program);
    EXPECT_EQ(0u, written.find("#!/bin/sh\n")) << written;
    EXPECT_EQ('\n', written.back());
    EXPECT_EQ("wrote " + std::to_string(written.size()) + " bytes to " + program + "\n", text.out);
}

TEST(ToolExtract, ModuleWithoutStoredFileWritesNothing) {
    TempDir dir;
    ASSERT_NO_FATAL_FAILURE(makeModuleProject(dir.path()));
    const std::string out = dir.file("out");
    const ToolRun absent = qvb({"extract", dir.file("mods.Prj"), "5", out});
    ASSERT_EQ(0, absent.code) << absent.err;
    EXPECT_EQ("module 5 has no stored file; nothing written\n", absent.out);
    EXPECT_FALSE(fs::exists(out));

    std::ofstream(out) << "kept";
    ASSERT_EQ(0, qvb({"extract", dir.file("mods.Prj"), "1", out}).code);
    EXPECT_EQ("kept", readFile(out));
}

TEST(ToolExtract, MissingModuleExitsOneWithError101) {
    TempDir dir;
    ASSERT_EQ(0, qvb({"demo", dir.path()}).code);
    const std::string out = dir.file("out");
    const ToolRun run = qvb({"extract", dir.file("demo.Prj"), "3", out});
    EXPECT_EQ(1, run.code);
    EXPECT_EQ("", run.out);
    const std::string meaning = qvbErrorText(101);
    EXPECT_EQ("qvb extract: cannot read module 3: error 101 (" + meaning + ")\n", run.err);
    EXPECT_FALSE(fs::exists(out));
}

// ---- usage and failures -------------------------------------------------------------------

TEST(ToolUsage, HelpGoesToStdoutWithExitZero) {
    for (const std::vector<std::string>& args :
         std::vector<std::vector<std::string>>{{"--help"},
                                               {"help"},
                                               {"create", "--help"},
                                               {"info", "-h"},
                                               {"dump", "x.Prj", "SLang", "--help"},
                                               {"demo", "--help"},
                                               {"phrases", "x.Prj", "--pair", "--help"},
                                               {"languages", "-h"},
                                               {"modules", "--help"},
                                               {"extract", "x.Prj", "-h"}}) {
        SCOPED_TRACE(args[0]);
        const ToolRun run = qvb(args);
        EXPECT_EQ(0, run.code);
        EXPECT_EQ(0u, run.out.find("usage: qvb")) << run.out;
        EXPECT_EQ("", run.err);
    }
    EXPECT_NE(std::string::npos,
              qvb({"phrases", "--help"}).out.find("as they were last refreshed"));
}

TEST(ToolUsage, WrongCallsExitTwoAndTouchNothing) {
    TempDir dir;
    ASSERT_EQ(0, qvb({"create", dir.path(), "p", "--project"}).code);
    const std::string project = dir.file("p.Prj");
    const std::string out = dir.file("out");
    const std::vector<std::vector<std::string>> calls{
        {},
        {"frobnicate"},
        {"create", dir.path(), "x"},
        {"create", dir.path(), "x", "--project", "--dictionary"},
        {"create", dir.path(), "--project"},
        {"create", dir.path(), "x", "--proj"},
        {"create", dir.path(), "sub/x", "--project"},
        {"info"},
        {"info", project, project},
        {"info", dir.file("x.txt")},
        {"info", dir.file(".Prj")},
        {"info", dir.file("x.prj")},
        {"info", project, "--verbose"},
        {"dump", project},
        {"dump", project, "NoSuchTable"},
        {"dump", project, "32"},
        {"dump", project, "-1"},
        {"dump", project, "SLang", "--xml"},
        {"demo"},
        {"demo", dir.path(), dir.path()},
        {"phrases"},
        {"phrases", project, project},
        {"phrases", project, "--json"},
        {"phrases", project, "--filter", "translated"},
        {"phrases", project, "--filter"},
        {"phrases", project, "--filter", "user", "--filter", "none"},
        {"phrases", project, "--pair", "x"},
        {"phrases", project, "--pair", "-1"},
        {"phrases", project, "--pair", "4294967296"},
        {"phrases", project, "--pair="},
        {"languages"},
        {"languages", project, "--pair", "1"},
        {"modules"},
        {"modules", project, project},
        {"modules", project, "--json"},
        {"modules", dir.file("d.Dic")},
        {"extract"},
        {"extract", project, "1"},
        {"extract", project, "1", out, out},
        {"extract", project, "x", out},
        {"extract", project, "-1", out},
        {"extract", project, "4294967296", out},
        {"extract", project, "1", ""},
        {"extract", project, "1", out, "--force"},
        {"extract", dir.file("d.Dic"), "1", out},
    };
    for (const auto& args : calls) {
        std::string joined;
        for (const auto& arg : args) joined += arg + " ";
        SCOPED_TRACE(joined);
        const ToolRun run = qvb(args);
        EXPECT_EQ(2, run.code);
        EXPECT_EQ("", run.out);
        EXPECT_NE(std::string::npos, run.err.find("usage: qvb")) << run.err;
    }
    EXPECT_EQ(1, std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()));
}

TEST(ToolFailures, MissingFileExitsOneWithTheErrorAndCreatesNothing) {
    TempDir dir;
    const std::string missing = dir.file("missing.Prj");
    for (const std::vector<std::string>& args :
         std::vector<std::vector<std::string>>{{"info", missing},
                                               {"dump", missing, "SLang"},
                                               {"phrases", missing},
                                               {"languages", missing},
                                               {"modules", missing},
                                               {"extract", missing, "1", dir.file("out")}}) {
        SCOPED_TRACE(args[0]);
        const ToolRun run = qvb(args);
        EXPECT_EQ(1, run.code);
        EXPECT_EQ("", run.out);
        const std::string expected = "qvb " + args[0] + ": cannot open " + missing +
                                     ": error 611 (" + qvbErrorText(611) + ")\n";
        EXPECT_EQ(expected, run.err);
    }
    EXPECT_TRUE(fs::is_empty(dir.path()));

    const ToolRun nowhere = qvb({"create", dir.file("no/such/dir"), "x", "--project"});
    EXPECT_EQ(1, nowhere.code);
    EXPECT_NE(std::string::npos, nowhere.err.find("error 611")) << nowhere.err;
}

TEST(ToolFailures, TableTheDictionaryLacksExitsOne) {
    TempDir dir;
    ASSERT_EQ(0, qvb({"create", dir.path(), "d", "--dictionary"}).code);
    for (const std::string table : {"Modul", "modul", "4", "History"}) {
        SCOPED_TRACE(table);
        const ToolRun run = qvb({"dump", dir.file("d.Dic"), table});
        EXPECT_EQ(1, run.code);
        EXPECT_EQ("", run.out);
        EXPECT_NE(std::string::npos, run.err.find("has no table")) << run.err;
    }
    EXPECT_EQ(0, qvb({"dump", dir.file("d.Dic"), "DicT"}).code);
    // Creating it again is refused, and the first one is left alone.
    const ToolRun again = qvb({"create", dir.path(), "d", "--dictionary"});
    EXPECT_EQ(1, again.code);
    EXPECT_NE(std::string::npos, again.err.find("error 612")) << again.err;
    EXPECT_EQ(0, qvb({"info", dir.file("d.Dic")}).code);
}

}  // namespace
