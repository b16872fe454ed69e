// Times the phrase dictionary of a project through the public interface (adds, the
// two marker refreshes, the pair and family listings) against the same
// record-by-record work hand-written on SQLite, in its own file with the engine's
// storage settings. The hand-written side is the floor the library is measured
// against.
//
//   phrase_refresh [--phrases N] [--families N] [--dir DIR]
//
// --phrases   phrases added to the one language pair (default 100000)
// --families  source texts listed by family (default 1000)
// --dir       where the scratch directory is made (default /tmp); it is removed at the end
#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <random>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "bench/BenchSupport.h"
#include "core/NewDatabase.h"
#include "isam/Container.h"
#include "qvb/qvb.h"

namespace {

using bench::check;
using bench::percent;
using bench::textKey;
using bench::fail;
using bench::Slice;
using bench::Stmt;

// ---- Timing ----------------------------------------------------------------------------

// Wall-clock and process CPU seconds. The machine may be shared: the CPU time leaves
// out the waits for other processes (and for the disk).
struct Timing {
    double wall = 0;
    double cpu = 0;

    Timing& operator+=(const Timing& other) {
        wall += other.wall;
        cpu += other.cpu;
        return *this;
    }
};

double cpuSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename Body>
Timing timed(Body body) {
    const auto start = std::chrono::steady_clock::now();
    const double cpuStart = cpuSeconds();
    body();
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
            cpuSeconds() - cpuStart};
}

// The median wall and the median CPU time, each on its own.
Timing median(const std::vector<Timing>& timings) {
    std::vector<double> wall;
    std::vector<double> cpu;
    for (const Timing& t : timings) {
        wall.push_back(t.wall);
        cpu.push_back(t.cpu);
    }
    return {bench::median(std::move(wall)), bench::median(std::move(cpu))};
}

// ---- Phrases ---------------------------------------------------------------------------

constexpr DWORD kPLangId = 1033;
constexpr DWORD kSLangId = 1031;
constexpr std::uint32_t kNotTranslatedMarker = 1;
constexpr std::uint32_t kUserFilterMarker = 2;
// The find text of the user filter; no word of the vocabulary contains it, and
// kFindWord is put into about kFindShare of the source texts.
constexpr const char* kFindText = "SPELL";
constexpr const char* kFindWord = "spelling";
constexpr double kFindShare = 0.05;
constexpr double kRepeatShare = 0.10;
// Repeats are drawn from this many of the first texts, so that families of several
// members come about.
constexpr std::size_t kCommonTexts = 2000;

// Source words and their stand-in translations, by the same index.
constexpr const char* kWords[] = {
    "open",    "save",     "close",    "file",      "folder", "project", "changes",  "before",
    "the",     "selected", "all",      "items",     "cannot", "find",    "name",     "new",
    "window",  "settings", "export",   "import",    "column", "text",    "resource", "menu",
    "dialog",  "check",    "options",  "default",   "value",  "invalid", "format",   "print",
    "preview", "delete",   "copy",     "paste",     "undo",   "redo",    "help",     "about",
    "version", "update",   "language", "translate", "source", "target",  "error",    "warning"};
constexpr const char* kTranslations[] = {
    "oeffnen",      "speichern",   "schliessen",    "Datei",      "Ordner",    "Projekt",
    "Aenderungen",  "vor",         "die",           "gewaehlten", "alle",      "Elemente",
    "kann",         "finden",      "Name",          "neu",        "Fenster",   "Optionen",
    "exportieren",  "importieren", "Spalte",        "Text",       "Ressource", "Menue",
    "Dialog",       "pruefen",     "Einstellungen", "Standard",   "Wert",      "ungueltig",
    "Format",       "drucken",     "Vorschau",      "loeschen",   "kopieren",  "einfuegen",
    "rueckgaengig", "wiederholen", "Hilfe",         "Info",       "Version",   "aktualisieren",
    "Sprache",      "uebersetzen", "Quelle",        "Ziel",       "Fehler",    "Warnung"};
static_assert(sizeof kWords == sizeof kTranslations, "one translation per word");
constexpr std::size_t kWordCount = sizeof kWords / sizeof kWords[0];
constexpr const char* kEndings[] = {"", "", "", "...", ":", ".", "?"};

struct PhraseText {
    CString sText;
    CString sTextFiltered;
    CString tText;  // empty when not translated
    bool translated = false;
};

struct Dataset {
    std::vector<PhraseText> phrases;   // in the order of adding; TextId = index + 1
    std::vector<CString> familyTexts;  // distinct source texts to list by family
    std::size_t distinctTexts = 0;
    std::size_t repeats = 0;
    std::size_t withFindWord = 0;  // phrases whose source text holds the find word
    std::size_t translated = 0;
};

// What the phrase list shows of a text: no hot-key marks and no trailing punctuation.
std::string filtered(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c != '&') out += c;
    }
    while (!out.empty() && std::strchr(".:?", out.back())) out.pop_back();
    return out;
}

std::string capitalised(std::string word) {
    word[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(word[0])));
    return word;
}

// A UI string of 10 to 60 bytes made of vocabulary words, with the words' stand-ins
// as its translation; `withFindWord` puts the find word among its first four words.
std::pair<std::string, std::string> makeText(std::mt19937& random, bool withFindWord) {
    constexpr std::size_t kShortest = 10;
    constexpr std::size_t kLongest = 60;
    const std::size_t target = kShortest + random() % (kLongest - kShortest + 1);
    const std::string ending = kEndings[random() % (sizeof kEndings / sizeof kEndings[0])];
    std::string source = random() % 5 == 0 ? "&" : "";  // a hot key on the first letter
    std::string translation;
    const std::size_t findAt = withFindWord ? random() % 4 : SIZE_MAX;
    for (std::size_t n = 0;; ++n) {
        const bool findPlaced = n > findAt || findAt == SIZE_MAX;
        if (source.size() + ending.size() >= target && findPlaced) break;
        const std::size_t word = n == findAt ? kWordCount : random() % kWordCount;
        const std::string sourceWord = word == kWordCount ? kFindWord : kWords[word];
        const std::string translatedWord =
            word == kWordCount ? "Rechtschreibung" : kTranslations[word];
        const char* const separator = n == 0 ? "" : " ";
        if (source.size() + std::strlen(separator) + sourceWord.size() + ending.size() > kLongest)
            break;
        source += separator + (n == 0 ? capitalised(sourceWord) : sourceWord);
        translation += separator + (n == 0 ? capitalised(translatedWord) : translatedWord);
    }
    return {source + ending, translation + ending};
}

Dataset makeDataset(std::size_t count, std::size_t families, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> share(0.0, 1.0);
    Dataset data;
    std::vector<std::pair<std::string, std::string>> texts;  // distinct, source and translation
    std::unordered_set<std::string> seen;
    data.phrases.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t which = 0;
        if (!texts.empty() && share(random) < kRepeatShare) {
            which = random() % std::min(texts.size(), kCommonTexts);
            ++data.repeats;
        } else {
            const bool withFindWord = share(random) < kFindShare;
            std::pair<std::string, std::string> text;
            do {
                text = makeText(random, withFindWord);
            } while (!seen.insert(text.first).second);
            which = texts.size();
            texts.push_back(std::move(text));
        }
        const std::string& source = texts[which].first;
        PhraseText phrase;
        phrase.sText = CString(source.c_str());
        phrase.sTextFiltered = CString(filtered(source).c_str());
        phrase.translated = random() % 2 == 0;
        if (phrase.translated) phrase.tText = CString(texts[which].second.c_str());
        data.translated += phrase.translated ? 1 : 0;
        data.withFindWord += strcasestr(source.c_str(), kFindText) ? 1 : 0;
        data.phrases.push_back(std::move(phrase));
    }
    data.distinctTexts = texts.size();
    // The common texts (the largest families) first, then others spread over the rest.
    const std::size_t listed = std::min(families, texts.size());
    for (std::size_t i = 0; i < listed; ++i) {
        const std::size_t which = i < listed / 2 ? i : i * texts.size() / listed;
        data.familyTexts.emplace_back(texts[which].first.c_str());
    }
    return data;
}

// ---- The library side ------------------------------------------------------------------

std::vector<std::uint32_t> toVector(const CDWordArray& ids) {
    return std::vector<std::uint32_t>(ids.GetData(), ids.GetData() + ids.GetSize());
}

USERFILTER userFilter() {
    USERFILTER filter;
    std::strncpy(filter.FindText, kFindText, sizeof filter.FindText - 1);
    filter.InSource = 1;
    filter.StateTranslated = filter.StateUsed = filter.StateReadOnly = filter.StateStandard =
        filter.StateLimited = filter.StateNotice = 2;
    return filter;
}

class LibrarySide {
public:
    ~LibrarySide() {
        if (open_) db_.CloseDb();
    }

    void create(const std::string& directory) {
        check(qvb::createForUse(db_, directory.c_str(), "phrases"), db_, "createForUse");
        open_ = true;
        check(db_.AddSLang(&pair_, kPLangId, kSLangId, "MS Shell Dlg", 0), db_, "AddSLang");
    }

    void close() {
        open_ = false;
        check(db_.CloseDb(), db_, "CloseDb");
    }

    void begin() { check(db_.BeginTransaction(), db_, "BeginTransaction"); }
    void commit() { check(db_.CommitTransaction(), db_, "CommitTransaction"); }

    void add(const PhraseText& phrase, DWORD expectedId) {
        DWORD id = 0;
        check(db_.AddDictionary(&id, pair_, phrase.sText, phrase.sTextFiltered, phrase.tText, 0, 0,
                                phrase.translated ? 1 : 0, 0, 0),
              db_, "AddDictionary");
        if (id != expectedId) fail("AddDictionary gave TextId " + std::to_string(id));
    }

    void refreshNotTranslated() {
        check(db_.RefreshNotTranslatedFilter(pair_), db_, "RefreshNotTranslatedFilter");
    }
    void refreshUserFilter(const USERFILTER& filter) {
        check(db_.RefreshUserFilter(pair_, filter), db_, "RefreshUserFilter");
    }

    void listPair(CDWordArray& ids) {
        check(db_.EnumDictionary(ids, pair_), db_, "EnumDictionary");
    }
    void listFamily(CDWordArray& ids, const CString& text) {
        check(db_.EnumDictionary(ids, pair_, text), db_, "EnumDictionary(SText)");
    }

    // The phrases whose marker is set, in TextId order (not timed).
    std::vector<std::uint32_t> marked(FILTER filter) {
        db_.SetFilter(filter);
        CDWordArray ids;
        listPair(ids);
        db_.SetFilter(FilterNone);
        std::vector<std::uint32_t> out = toVector(ids);
        std::sort(out.begin(), out.end());
        return out;
    }

    DWORD pair() const { return pair_; }

private:
    CDbProject db_;
    DWORD pair_ = 0;
    bool open_ = false;
};

// ---- The hand-written side -------------------------------------------------------------

class RawSide {
public:
    ~RawSide() { close(); }

    void create(const std::string& path) {
        db_.open(path, true);
        exec(
            "BEGIN;"
            "CREATE TABLE Phrases(TextId INTEGER NOT NULL, PairLangId INTEGER NOT NULL,"
            " Count INTEGER NOT NULL, Translated INTEGER NOT NULL, Flags INTEGER NOT NULL,"
            " SText TEXT NOT NULL, STextFiltered TEXT NOT NULL, TText TEXT NOT NULL,"
            " SKey BLOB NOT NULL, SFilteredKey BLOB NOT NULL);"
            "CREATE UNIQUE INDEX PhrasesByTextId ON Phrases(TextId);"
            "CREATE INDEX PhrasesByPair ON Phrases(PairLangId);"
            "CREATE INDEX PhrasesBySText ON Phrases(SKey);"
            "CREATE INDEX PhrasesBySTextFiltered ON Phrases(SFilteredKey);"
            "COMMIT");
        insert_ = db_.prepare(
            "INSERT INTO Phrases(TextId, PairLangId, Count, Translated, Flags, SText,"
            " STextFiltered, TText, SKey, SFilteredKey)"
            " VALUES(?1, ?2, 0, ?3, 0, ?4, ?5, ?6, ?7, ?8)");
        walk_ = db_.prepareIndexed(
            "SELECT rowid, TextId, Translated, Flags, SText FROM Phrases"
            " WHERE PairLangId = ?1 ORDER BY PairLangId, rowid");
        list_ = db_.prepareIndexed(
            "SELECT TextId FROM Phrases WHERE PairLangId = ?1 ORDER BY PairLangId, rowid");
        family_ = db_.prepareIndexed(
            "SELECT TextId, PairLangId, SText FROM Phrases WHERE SKey = ?1 ORDER BY SKey, rowid");
        setFlags_ = db_.prepareIndexed("UPDATE Phrases SET Flags = ?1 WHERE rowid = ?2");
        marked_ = db_.prepare("SELECT TextId FROM Phrases WHERE Flags & ?1 ORDER BY TextId");
    }

    void close() {
        insert_ = Stmt();
        walk_ = Stmt();
        list_ = Stmt();
        family_ = Stmt();
        setFlags_ = Stmt();
        marked_ = Stmt();
        db_.close();
    }

    void exec(const char* sql) { db_.exec(sql); }
    void begin() { exec("BEGIN"); }
    void commit() { exec("COMMIT"); }

    void add(const PhraseText& phrase, std::uint32_t textId, std::uint32_t pair) {
        bench::insertPhrase(insert_, textId, pair, phrase.translated, phrase.sText, phrase.sTextFiltered,
                            phrase.tText);
    }

    // Walks the pair's phrases, sets `marker` in those `belongs(translated, sText)`
    // accepts and clears it in the others, rewriting only changed Flags; collects the
    // marked phrases as the library does. Gives the number of phrases changed.
    template <typename Belongs>
    std::size_t mark(std::uint32_t pair, std::uint32_t marker,
                     std::unordered_set<std::uint32_t>* ids, Belongs belongs) {
        ids->clear();
        std::size_t changed = 0;
        begin();
        walk_.integer(1, pair);
        while (walk_.step()) {
            const bool in = belongs(walk_.integer(2) != 0, walk_.text(4));
            if (in) ids->insert(static_cast<std::uint32_t>(walk_.integer(1)));
            const auto flags = static_cast<std::uint32_t>(walk_.integer(3));
            const std::uint32_t wanted = in ? flags | marker : flags & ~marker;
            if (wanted == flags) continue;
            setFlags_.integer(1, wanted);
            setFlags_.integer(2, walk_.integer(0));
            setFlags_.step();
            setFlags_.reset();
            ++changed;
        }
        walk_.reset();
        commit();
        return changed;
    }

    void listPair(std::uint32_t pair, std::vector<std::uint32_t>* ids) {
        list_.integer(1, pair);
        while (list_.step()) ids->push_back(static_cast<std::uint32_t>(list_.integer(0)));
        list_.reset();
    }

    // The key finds the candidates; the whole text decides.
    void listFamily(std::uint32_t pair, const CString& text, std::vector<std::uint32_t>* ids) {
        const std::string key = textKey(text);
        family_.blob(1, key.data(), key.size());
        while (family_.step()) {
            if (static_cast<std::uint32_t>(family_.integer(1)) == pair &&
                family_.bytes(2) == static_cast<std::size_t>(text.GetLength()) &&
                std::memcmp(family_.text(2), text.GetString(), text.GetLength()) == 0) {
                ids->push_back(static_cast<std::uint32_t>(family_.integer(0)));
            }
        }
        family_.reset();
    }

    std::vector<std::uint32_t> marked(std::uint32_t marker) {
        std::vector<std::uint32_t> out;
        marked_.integer(1, marker);
        while (marked_.step()) out.push_back(static_cast<std::uint32_t>(marked_.integer(0)));
        marked_.reset();
        return out;
    }

private:
    bench::Connection db_;
    Stmt insert_, walk_, list_, family_, setFlags_, marked_;
};

// ---- Cases -----------------------------------------------------------------------------

struct Row {
    Row(std::string name, std::string unit, double scale)
        : name(std::move(name)), unit(std::move(unit)), scale(scale) {}

    std::string name;
    std::string unit;
    double scale;                    // seconds to unit
    std::size_t changed = SIZE_MAX;  // phrases whose marker changed; SIZE_MAX: not a refresh
    Timing library;
    Timing raw;
};

constexpr std::size_t kSlices = 20;
// Work that changes nothing is repeated this many times, each side's median kept.
constexpr int kRounds = 5;

template <typename LibrarySlice, typename RawSlice>
void race(Row* row, std::size_t count, LibrarySlice librarySlice, RawSlice rawSlice) {
    bench::race(
        count, kSlices, [](auto body) { return timed(body); }, &row->library, librarySlice,
        &row->raw, rawSlice);
}

// Runs each side `rounds` times, the side that goes first alternating, and keeps the
// median of each side.
template <typename LibraryRun, typename RawRun>
void alternate(Row* row, int rounds, bool libraryFirst, LibraryRun libraryRun, RawRun rawRun) {
    std::vector<Timing> library;
    std::vector<Timing> raw;
    for (int r = 0; r < rounds; ++r) {
        const bool libraryNow = (r % 2 == 0) == libraryFirst;
        if (libraryNow) library.push_back(timed(libraryRun));
        raw.push_back(timed(rawRun));
        if (!libraryNow) library.push_back(timed(libraryRun));
    }
    row->library = median(library);
    row->raw = median(raw);
}

class Benchmark {
public:
    Benchmark(const Dataset& data, const std::string& directory) : data_(data) {
        library_.create(directory);
        raw_.create(directory + "raw.db");
        pair_ = library_.pair();
    }

    void run() {
        const std::string again = ", 2nd (median of " + std::to_string(kRounds) + ")";
        addAll();
        refresh("not-translated refresh, 1st", 1, kNotTranslatedMarker, FilterNotTranslated);
        refresh("not-translated refresh" + again, kRounds, kNotTranslatedMarker,
                FilterNotTranslated);
        refresh("user-filter refresh, 1st", 1, kUserFilterMarker, FilterUser);
        refresh("user-filter refresh" + again, kRounds, kUserFilterMarker, FilterUser);
        listPair();
        listFamilies();
        library_.close();
        raw_.close();
    }

    const std::vector<Row>& rows() const { return rows_; }
    bool same() const { return same_; }

private:
    void addAll() {
        Row row{"add, one transaction (commit incl.)", "us/add",
                1e6 / static_cast<double>(data_.phrases.size())};
        race(
            &row, data_.phrases.size(),
            [&](const Slice& slice) {
                if (slice.first) library_.begin();
                for (std::size_t i = slice.begin; i < slice.end; ++i) {
                    library_.add(data_.phrases[i], static_cast<DWORD>(i + 1));
                }
                if (slice.last) library_.commit();
            },
            [&](const Slice& slice) {
                if (slice.first) raw_.begin();
                for (std::size_t i = slice.begin; i < slice.end; ++i) {
                    raw_.add(data_.phrases[i], static_cast<std::uint32_t>(i + 1), pair_);
                }
                if (slice.last) raw_.commit();
            });
        rows_.push_back(row);
    }

    // Refreshes on each side, then a comparison of the marked phrases (not timed).
    void refresh(const std::string& name, int rounds, std::uint32_t marker, FILTER filter) {
        Row row{name, "ms", 1e3};
        const bool notTranslated = marker == kNotTranslatedMarker;
        const USERFILTER user = userFilter();
        std::unordered_set<std::uint32_t> rawIds;
        std::size_t changed = 0;
        alternate(
            &row, rounds, rows_.size() % 2 == 0,
            [&] {
                notTranslated ? library_.refreshNotTranslated() : library_.refreshUserFilter(user);
            },
            [&] {
                const std::size_t n =
                    raw_.mark(pair_, marker, &rawIds, [&](bool translated, const char* text) {
                        return notTranslated ? !translated : strcasestr(text, kFindText) != nullptr;
                    });
                changed = std::max(changed, n);
            });
        row.changed = changed;
        std::vector<std::uint32_t> rawMarked(rawIds.begin(), rawIds.end());
        std::sort(rawMarked.begin(), rawMarked.end());
        same_ = same_ && library_.marked(filter) == rawMarked && raw_.marked(marker) == rawMarked;
        rows_.push_back(row);
    }

    void listPair() {
        Row row{"pair listing (median of " + std::to_string(kRounds) + ")", "ms", 1e3};
        CDWordArray libraryIds;
        std::vector<std::uint32_t> rawIds;
        alternate(
            &row, kRounds, rows_.size() % 2 == 0,
            [&] {
                libraryIds.RemoveAll();
                library_.listPair(libraryIds);
            },
            [&] {
                rawIds.clear();
                raw_.begin();
                raw_.listPair(pair_, &rawIds);
                raw_.commit();
            });
        same_ = same_ && toVector(libraryIds) == rawIds && rawIds.size() == data_.phrases.size();
        rows_.push_back(row);
    }

    void listFamilies() {
        const std::vector<CString>& texts = data_.familyTexts;
        Row row{"family listing", "us/family", 1e6 / static_cast<double>(texts.size())};
        std::vector<std::vector<std::uint32_t>> libraryFamilies(texts.size());
        std::vector<std::vector<std::uint32_t>> rawFamilies(texts.size());
        race(
            &row, texts.size(),
            [&](const Slice& slice) {
                for (std::size_t i = slice.begin; i < slice.end; ++i) {
                    CDWordArray ids;
                    library_.listFamily(ids, texts[i]);
                    libraryFamilies[i] = toVector(ids);
                }
            },
            [&](const Slice& slice) {
                raw_.begin();
                for (std::size_t i = slice.begin; i < slice.end; ++i) {
                    raw_.listFamily(pair_, texts[i], &rawFamilies[i]);
                }
                raw_.commit();
            });
        // The library lists non-standard members newest first: compare as sets.
        std::size_t members = 0;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            std::sort(libraryFamilies[i].begin(), libraryFamilies[i].end());
            std::sort(rawFamilies[i].begin(), rawFamilies[i].end());
            members += rawFamilies[i].size();
            same_ = same_ && !rawFamilies[i].empty() && libraryFamilies[i] == rawFamilies[i];
        }
        row.name += ", " + std::to_string(members) + " members";
        rows_.push_back(row);
    }

    const Dataset& data_;
    LibrarySide library_;
    RawSide raw_;
    DWORD pair_ = 0;
    std::vector<Row> rows_;
    bool same_ = true;
};

// ---- Report ----------------------------------------------------------------------------

void describe(const Dataset& data) {
    const isam::StorageTuning& t = isam::storageTuning();
    const std::size_t n = data.phrases.size();
    std::printf(
        "Phrase dictionary of a project vs hand-written SQLite, one language pair (PLangId %lu)\n",
        static_cast<unsigned long>(kPLangId));
    std::printf(
        "  %zu phrases: %zu distinct source texts, %.1f%% repeating a common one, "
        "%.1f%% translated, %.1f%% containing \"%s\"\n",
        n, data.distinctTexts, percent(data.repeats, n), percent(data.translated, n),
        percent(data.withFindWord, n), kFindWord);
    std::printf(
        "  both files: page %d B, cache %d KiB, WAL, synchronous=NORMAL, exclusive locking,"
        " checkpoint every %d pages; SQLite %s\n",
        t.pageSize, t.cacheKiB, t.checkpointPages, sqlite3_libversion());
    std::printf(
        "  user filter: find \"%s\" in the source text, case ignored, all states 2; the library"
        " matches under the\n  pair's locale, the SQLite side with strcasestr (ASCII"
        " folding only, so cheaper per phrase)\n\n",
        kFindText);
}

double ratio(double library, double raw) {
    return raw > 0 ? library / raw : 0;
}

void report(const std::vector<Row>& rows, bool same) {
    std::printf("%-43s %7s %-9s %21s %21s\n", "", "", "", "wall time", "CPU time");
    std::printf("%-43s %7s %-9s %10s %10s %10s %10s\n", "case", "changed", "unit", "library",
                "SQLite", "library", "SQLite");
    for (const Row& row : rows) {
        char changed[24] = "";
        if (row.changed != SIZE_MAX) std::snprintf(changed, sizeof changed, "%zu", row.changed);
        std::printf("%-43s %7s %-9s %10.2f %10.2f %10.2f %10.2f\n", row.name.c_str(), changed,
                    row.unit.c_str(), row.library.wall * row.scale, row.raw.wall * row.scale,
                    row.library.cpu * row.scale, row.raw.cpu * row.scale);
    }
    std::printf(
        "\nlibrary / SQLite, the machine-independent figures (CPU time leaves out waiting for\n"
        "other processes and for the disk):\n");
    std::printf("  %6s %6s\n", "wall", "CPU");
    for (const Row& row : rows) {
        std::printf("  %6.2f %6.2f  %s\n", ratio(row.library.wall, row.raw.wall),
                    ratio(row.library.cpu, row.raw.cpu), row.name.c_str());
    }
    std::printf("\nresults: %s\n", same ? "the same marked phrases and lists on both sides"
                                        : "RESULTS DIFFER between the sides");
}

struct Options {
    std::size_t phrases = 100000;
    std::size_t families = 1000;
    std::string dir = "/tmp";
};

bool parse(int argc, char** argv, Options* options) {
    return bench::parseNamedValues(argc, argv, [&](const std::string& name, const char* value) {
        if (name == "--phrases") return bench::parseCount(value, 1000, 10000000, &options->phrases);
        if (name == "--families") {
            return bench::parseCount(value, kSlices, 100000, &options->families);
        }
        if (name != "--dir") return false;
        options->dir = value;
        return true;
    });
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, &options)) {
        std::fprintf(stderr,
                     "usage: %s [--phrases N (>= 1000)] [--families N (>= %zu)] [--dir DIR]\n",
                     argv[0], kSlices);
        return 2;
    }
    try {
        bench::ScratchDir scratch(options.dir, "phrase_refresh");
        const Dataset data = makeDataset(options.phrases, options.families, 20240607);
        describe(data);
        Benchmark benchmark(data, scratch.path());
        benchmark.run();
        report(benchmark.rows(), benchmark.same());
        return benchmark.same() ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "phrase_refresh: %s\n", error.what());
        return 1;
    }
}
