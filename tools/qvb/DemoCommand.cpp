// qvb demo DIR: a small but complete project made through the public interface.
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "core/NewDatabase.h"
#include "tools/qvb/Commands.h"

namespace qvbtool {

namespace {

constexpr const char* kUsage =
    "usage: qvb demo DIR\n"
    "\n"
    "Creates the project DIR/demo.Prj through the library's interface and shows it\n"
    "as qvb info does. It holds:\n"
    "  - two language pairs, English to German and English to French, each with a\n"
    "    few phrases, partly translated;\n"
    "  - two modules with their files stored: greeter.sh (type 1), a short shell\n"
    "    script, and greeter.res (type 2), 4096 bytes of which byte i is\n"
    "    (i * 37 + 11) mod 256; each with a format text and target paths;\n"
    "  - in each pair one language module per module: string-table entries for\n"
    "    greeter.sh and message-table entries for greeter.res, two of them sharing\n"
    "    a phrase, and a notice on the first message of the German pair;\n"
    "  - both markers refreshed in each pair: not translated, and the user filter\n"
    "    that finds \"file\" in the source texts of string and message tables.\n"
    "qvb modules lists the modules, qvb extract writes their files out again.\n";

constexpr DWORD kEnglish = 1033;
constexpr DWORD kGerman = 1031;
constexpr DWORD kFrench = 1036;
constexpr DWORD kTargets[] = {kGerman, kFrench};

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

// ---- Modules and their files -----------------------------------------------------------

struct DemoModul {
    const char* name;
    WORD type;
    const char* format;
};
constexpr DemoModul kModuls[] = {
    {"greeter.sh", 1, "shell script"},
    {"greeter.res", 2, "message resources"},
};
constexpr std::size_t kModulCount = sizeof kModuls / sizeof kModuls[0];

constexpr const char kProgram[] =
    "#!/bin/sh\n"
    "# greeter: the sample program of the qvb demo project.\n"
    "echo \"Hello from the qvb demo.\"\n";
constexpr std::size_t kResourceBytes = 4096;

// What the file of each module holds: text, then bytes of every value.
std::string sampleContent(std::size_t modul) {
    if (modul == 0) return kProgram;
    std::string bytes(kResourceBytes, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>((i * 37 + 11) % 256);
    return bytes;
}

// The modules' files, written to a directory of their own for ReadModulFile to
// store, and removed with it.
class SampleFiles {
public:
    SampleFiles() = default;
    ~SampleFiles() { remove(); }
    SampleFiles(const SampleFiles&) = delete;
    SampleFiles& operator=(const SampleFiles&) = delete;

    // False with the reason.
    bool write(std::string* problem) {
        std::error_code error;
        std::string pattern =
            (std::filesystem::temp_directory_path(error) / "qvb-demo-XXXXXX").string();
        if (error || !::mkdtemp(pattern.data())) {
            *problem = "cannot make a directory for the sample files";
            return false;
        }
        directory_ = pattern;
        for (std::size_t m = 0; m < kModulCount; ++m) {
            const std::string content = sampleContent(m);
            std::ofstream out(path(m), std::ios::binary);
            out.write(content.data(), static_cast<std::streamsize>(content.size()));
            out.close();
            if (!out) {
                *problem = "cannot write the sample file " + path(m);
                return false;
            }
        }
        return true;
    }

    std::string path(std::size_t modul) const { return directory_ + "/" + kModuls[modul].name; }

    void remove() {
        if (directory_.empty()) return;
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
        directory_.clear();
    }

private:
    std::string directory_;
};

// ---- Resource entries ------------------------------------------------------------------

// An entry of a language module's string table or message table: its module, its
// resource id and its phrase (an index into kPhrases).
struct DemoEntry {
    std::size_t modul;
    bool message;
    DWORD resId;
    std::size_t phrase;
};
constexpr DemoEntry kEntries[] = {
    {0, false, 101, 0},    // &File
    {0, false, 102, 1},    // &Open...
    {0, false, 103, 2},    // Save &As...
    {0, false, 104, 3},    // E&xit
    {1, true, 0x1001, 4},  // The file "%s" could not be opened.
    {1, true, 0x1002, 3},  // E&xit again: one phrase, two entries
};
// The entry of the first pair that carries the notice.
constexpr std::size_t kEntryWithNotice = 4;
constexpr const char* kNotice = "%s is replaced by the file's name.";

USERFILTER demoUserFilter() {
    USERFILTER filter;
    std::strncpy(filter.FindText, "file", sizeof filter.FindText - 1);
    filter.InSource = 1;
    filter.InStringTables = 1;
    filter.InMessageTables = 1;
    filter.StateTranslated = filter.StateUsed = filter.StateReadOnly = filter.StateStandard =
        filter.StateLimited = filter.StateNotice = 2;
    return filter;
}

// Fills an open project step by step; a step that fails gives false, names itself
// in what() and leaves the error in the project.
class DemoBuilder {
public:
    explicit DemoBuilder(CDbProject& db) : db_(db) {}

    bool addPairs() {
        for (const DWORD target : kTargets) {
            DWORD pair = 0;
            if (!step(db_.AddSLang(&pair, kEnglish, target, "MS Shell Dlg", 0), "add a pair")) {
                return false;
            }
            pairs_.push_back(pair);
            phrases_.emplace_back();
            for (const DemoPhrase& phrase : kPhrases) {
                const char* translation = target == kGerman ? phrase.german : phrase.french;
                DWORD id = 0;
                if (!step(db_.AddDictionary(&id, pair, phrase.source, "", translation, 0, 0,
                                            *translation ? 1 : 0, 0, 0),
                          "add a phrase")) {
                    return false;
                }
                phrases_.back().push_back(id);
            }
        }
        return true;
    }

    bool addModuls(const SampleFiles& files) {
        for (std::size_t m = 0; m < kModulCount; ++m) {
            const DemoModul& modul = kModuls[m];
            const std::string name = modul.name;
            DWORD id = 0;
            if (!step(db_.AddModul(&id, modul.name, modul.type, 0), "add module " + name) ||
                !step(db_.ReadModulFile(id, files.path(m).c_str()), "store the file of " + name) ||
                !step(db_.AddModulExtra(id, modul.format), "add the format of " + name) ||
                !step(db_.AddTargetPaths(id, CString(("out/" + name).c_str()),
                                         CString(("out/de/" + name).c_str()),
                                         CString(("out/fr/" + name).c_str())),
                      "add the target paths of " + name)) {
                return false;
            }
            moduls_.push_back(id);
        }
        return true;
    }

    bool addEntries() {
        DWORD notice = 0;
        if (!step(db_.AddNotice(&notice, kNotice), "add a notice")) return false;
        for (std::size_t p = 0; p < pairs_.size(); ++p) {
            std::vector<DWORD> langModuls;
            for (const DWORD modul : moduls_) {
                DWORD langModul = 0;
                if (!step(db_.AddLangModul(&langModul, pairs_[p], modul, 0),
                          "add a language module")) {
                    return false;
                }
                langModuls.push_back(langModul);
            }
            for (std::size_t e = 0; e < sizeof kEntries / sizeof kEntries[0]; ++e) {
                const DWORD noticeId = p == 0 && e == kEntryWithNotice ? notice : 0;
                if (!addEntry(kEntries[e], langModuls[kEntries[e].modul], phrases_[p], noticeId)) {
                    return false;
                }
            }
        }
        return true;
    }

    bool refresh() {
        const USERFILTER filter = demoUserFilter();
        for (const DWORD pair : pairs_) {
            if (!step(db_.RefreshNotTranslatedFilter(pair), "refresh the not-translated markers") ||
                !step(db_.RefreshUserFilter(pair, filter), "refresh the user-filter markers")) {
                return false;
            }
        }
        return true;
    }

    const std::string& what() const { return what_; }

private:
    bool step(int ok, const std::string& what) {
        if (!ok) what_ = what;
        return ok != 0;
    }

    bool addEntry(const DemoEntry& entry, DWORD langModul, const std::vector<DWORD>& phrases,
                  DWORD noticeId) {
        const DWORD textId = phrases[entry.phrase];
        DWORD id = 0;
        if (entry.message) {
            return step(db_.AddMessageTable(&id, langModul, textId, entry.resId, 0, 0, noticeId),
                        "add a message-table entry");
        }
        CString resNetId;
        return step(db_.AddStringTable(&id, langModul, textId, static_cast<WORD>(entry.resId), 0,
                                       noticeId, resNetId),
                    "add a string-table entry");
    }

    CDbProject& db_;
    std::vector<DWORD> pairs_;
    std::vector<std::vector<DWORD>> phrases_;  // TextIds per pair, by kPhrases index
    std::vector<DWORD> moduls_;
    std::string what_;
};

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

    SampleFiles files;
    std::string problem;
    if (!files.write(&problem)) return failed("demo", problem);
    const DatabaseFile file = databaseIn(split.operands[0], "demo", PROJECT);
    CDbProject db;
    if (!qvb::createForUse(db, file.directory.c_str(), file.name.c_str())) {
        return operationFailed("demo", "cannot create " + file.path, db.GetError());
    }
    DemoBuilder build(db);
    const bool built =
        build.addPairs() && build.addModuls(files) && build.addEntries() && build.refresh();
    files.remove();  // the project holds them now
    if (!built) {
        const LONG error = db.GetError();
        (void)db.CloseDb();
        return operationFailed("demo", "cannot " + build.what(), error);
    }
    if (const int rc = closeDatabase(db, file, "demo")) return rc;
    return showInfo(file, "demo");
}

}  // namespace qvbtool
