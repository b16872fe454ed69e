// Times a project of many string-table entries through the public interface (the
// adds of phrases with their entries, the sorted and unsorted listings of every
// language module, both marker refreshes) against the best plain SQLite for the same
// result, in its own file with the engine's storage settings. An add takes the
// library's steps (next id, insert, count the phrase up); a listing is one indexed
// query per module, sorted in memory by ResId for the sorted one; a refresh is one
// walk with prepared updates. The listings and refreshes start after both files were
// reopened, so that no side pays for the log checkpoints of the adds.
//
//   string_tables [--modules N] [--entries N] [--dir DIR]
//
// --modules  modules, each with one language module in the one pair (default 10)
// --entries  string-table entries per module, each with its own phrase (default 10000)
// --dir      where the scratch directory is made (default /tmp); it is removed at the end
//
// The first module's entries are added call by call, each call committing on its own;
// the other modules' inside one application transaction.
#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <random>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "bench/BenchSupport.h"
#include "bench/SideBySide.h"
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

using Ids = std::vector<std::uint32_t>;

constexpr DWORD kPLangId = 1033;
constexpr DWORD kSLangId = 1031;
constexpr std::uint32_t kNotTranslatedMarker = 1;
constexpr std::uint32_t kUserFilterMarker = 2;
// The find text of the user filter: no word of the vocabulary contains it, and
// kFindWord is put into about kFindShare of the source texts.
constexpr const char* kFindText = "SPELL";
constexpr const char* kFindWord = "spelling";
constexpr double kFindShare = 0.05;
constexpr double kTranslatedShare = 0.5;

// ---- Entries ---------------------------------------------------------------------------

// Source words and their stand-in translations, by the same index.
constexpr const char* kWords[] = {"open",   "save",    "close",  "file",  "folder",  "project",
                                  "cannot", "find",    "name",   "new",   "window",  "settings",
                                  "export", "import",  "column", "text",  "menu",    "dialog",
                                  "value",  "invalid", "format", "print", "preview", "delete"};
constexpr const char* kTranslations[] = {
    "oeffnen",     "speichern",   "schliessen", "Datei",   "Ordner",   "Projekt",
    "kann",        "finden",      "Name",       "neu",     "Fenster",  "Optionen",
    "exportieren", "importieren", "Spalte",     "Text",    "Menue",    "Dialog",
    "Wert",        "ungueltig",   "Format",     "drucken", "Vorschau", "loeschen"};
static_assert(sizeof kWords == sizeof kTranslations, "one translation per word");
constexpr std::size_t kWordCount = sizeof kWords / sizeof kWords[0];

struct Entry {
    CString sText;
    CString sTextFiltered;  // without the hot-key mark
    CString tText;          // empty when not translated
    CString resNetId;
    WORD resId = 0;
    bool translated = false;
    bool withFindWord = false;
};

struct Dataset {
    std::size_t modules = 0;
    std::size_t perModule = 0;
    std::vector<Entry> entries;  // module by module; StringId and TextId = index + 1
    std::size_t translated = 0;
    std::size_t withFindWord = 0;

    std::size_t total() const { return entries.size(); }
};

// A UI string of two to eight vocabulary words, a hot key on the first letter of
// one in five, with the words' stand-ins as its translation.
std::pair<std::string, std::string> makeText(std::mt19937& random, bool withFindWord) {
    const std::size_t words = 2 + random() % 7;
    const std::size_t findAt = withFindWord ? random() % words : words;
    std::string source;
    std::string translation;
    for (std::size_t n = 0; n < words; ++n) {
        const std::size_t word = random() % kWordCount;
        if (n) {
            source += ' ';
            translation += ' ';
        }
        source += n == findAt ? kFindWord : kWords[word];
        translation += n == findAt ? "Rechtschreibung" : kTranslations[word];
    }
    source[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(source[0])));
    return {random() % 5 == 0 ? "&" + source : source, translation};
}

std::string withoutHotKeys(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '&'), text.end());
    return text;
}

// The ResIds of each module are 1 to perModule in a shuffled order, so that the
// sorted listing has sorting to do.
Dataset makeDataset(std::size_t modules, std::size_t perModule, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> share(0.0, 1.0);
    Dataset data;
    data.modules = modules;
    data.perModule = perModule;
    data.entries.reserve(modules * perModule);
    std::vector<WORD> resIds(perModule);
    for (std::size_t m = 0; m < modules; ++m) {
        for (std::size_t i = 0; i < perModule; ++i) resIds[i] = static_cast<WORD>(i + 1);
        std::shuffle(resIds.begin(), resIds.end(), random);
        for (const WORD resId : resIds) {
            Entry entry;
            entry.withFindWord = share(random) < kFindShare;
            entry.translated = share(random) < kTranslatedShare;
            const auto text = makeText(random, entry.withFindWord);
            entry.sText = CString(text.first.c_str());
            entry.sTextFiltered = CString(withoutHotKeys(text.first).c_str());
            if (entry.translated) entry.tText = CString(text.second.c_str());
            entry.resNetId = CString(("IDS_STRING" + std::to_string(resId)).c_str());
            entry.resId = resId;
            data.translated += entry.translated ? 1 : 0;
            data.withFindWord += entry.withFindWord ? 1 : 0;
            data.entries.push_back(std::move(entry));
        }
    }
    return data;
}

// ---- The library side ------------------------------------------------------------------

Ids toIds(const CDWordArray& ids) {
    return Ids(ids.GetData(), ids.GetData() + ids.GetSize());
}

USERFILTER userFilter() {
    USERFILTER filter;
    std::strncpy(filter.FindText, kFindText, sizeof filter.FindText - 1);
    filter.InSource = 1;
    filter.InStringTables = 1;
    filter.StateTranslated = filter.StateUsed = filter.StateReadOnly = filter.StateStandard =
        filter.StateLimited = filter.StateNotice = 2;
    return filter;
}

class LibrarySide {
public:
    ~LibrarySide() {
        if (open_) db_.CloseDb();
    }

    void create(const std::string& directory, std::size_t modules) {
        directory_ = directory;
        check(qvb::createForUse(db_, directory.c_str(), "strings"), db_, "createForUse");
        open_ = true;
        check(db_.AddSLang(&pair_, kPLangId, kSLangId, "MS Shell Dlg", 0), db_, "AddSLang");
        for (std::size_t m = 0; m < modules; ++m) {
            const CString name(("module" + std::to_string(m + 1) + ".dll").c_str());
            DWORD modul = 0;
            DWORD langModul = 0;
            check(db_.AddModul(&modul, name, 1, 0), db_, "AddModul");
            check(db_.AddLangModul(&langModul, pair_, modul, 0), db_, "AddLangModul");
            langModuls_.push_back(langModul);
        }
    }

    void close() {
        open_ = false;
        check(db_.CloseDb(), db_, "CloseDb");
    }

    // Closing checkpoints the log into the file.
    void reopen() {
        close();
        check(db_.OpenDb(directory_.c_str(), "strings", 0), db_, "OpenDb");
        open_ = true;
    }

    void begin() { check(db_.BeginTransaction(), db_, "BeginTransaction"); }
    void commit() { check(db_.CommitTransaction(), db_, "CommitTransaction"); }

    // The entry's phrase, then the entry: two calls, as an application makes them.
    void add(Entry& entry, DWORD langModul, DWORD expectedId) {
        DWORD textId = 0;
        check(db_.AddDictionary(&textId, pair_, entry.sText, entry.sTextFiltered, entry.tText, 0, 0,
                                entry.translated ? 1 : 0, 0, 0),
              db_, "AddDictionary");
        DWORD stringId = 0;
        check(db_.AddStringTable(&stringId, langModul, textId, entry.resId, 0, 0, entry.resNetId),
              db_, "AddStringTable");
        if (textId != expectedId || stringId != expectedId) {
            fail("the adds gave TextId " + std::to_string(textId) + " and StringId " +
                 std::to_string(stringId) + " for entry " + std::to_string(expectedId));
        }
    }

    void list(DWORD langModul, bool sorted, CDWordArray& ids) {
        check(db_.EnumStringTable(ids, langModul, sorted ? 1 : 0), db_, "EnumStringTable");
    }

    void refreshNotTranslated() {
        check(db_.RefreshNotTranslatedFilter(pair_), db_, "RefreshNotTranslatedFilter");
    }
    void refreshUserFilter(const USERFILTER& filter) {
        check(db_.RefreshUserFilter(pair_, filter), db_, "RefreshUserFilter");
    }

    // The phrases and the entries whose marker `filter` selects by is set, in id
    // order (not timed).
    std::pair<Ids, Ids> marked(FILTER filter) {
        db_.SetFilter(filter);
        CDWordArray phrases;
        check(db_.EnumDictionary(phrases, pair_), db_, "EnumDictionary");
        CDWordArray entries;
        for (const DWORD langModul : langModuls_) list(langModul, false, entries);
        db_.SetFilter(FilterNone);
        std::pair<Ids, Ids> out{toIds(phrases), toIds(entries)};
        std::sort(out.first.begin(), out.first.end());
        std::sort(out.second.begin(), out.second.end());
        return out;
    }

    DWORD pair() const { return pair_; }
    const std::vector<DWORD>& langModuls() const { return langModuls_; }

private:
    CDbProject db_;
    std::string directory_;
    DWORD pair_ = 0;
    std::vector<DWORD> langModuls_;
    bool open_ = false;
};

// ---- The hand-written side -------------------------------------------------------------

bool passes(FILTER filter, std::uint32_t flags) {
    switch (filter) {
        case FilterNone:
            return true;
        case FilterUser:
            return (flags & kUserFilterMarker) != 0;
        case FilterNotTranslated:
            return (flags & kNotTranslatedMarker) != 0;
    }
    return false;
}

// The same three tables with the columns and indexes of Dic, LModul and STable, and
// the same steps the library takes, each statement prepared once.
class RawSide {
public:
    ~RawSide() { close(); }

    void create(const std::string& path, std::uint32_t pair, const std::vector<DWORD>& langModuls) {
        path_ = path;
        db_.open(path, true);
        db_.exec(
            "BEGIN;"
            "CREATE TABLE Dic(TextId INTEGER NOT NULL, PairLangId INTEGER NOT NULL,"
            " MaxNrOfChar INTEGER NOT NULL, ReadOnly INTEGER NOT NULL, Count INTEGER NOT NULL,"
            " Translated INTEGER NOT NULL, Standard INTEGER NOT NULL, Flags INTEGER NOT NULL,"
            " SText TEXT NOT NULL, STextFiltered TEXT NOT NULL, TText TEXT NOT NULL,"
            " SKey BLOB NOT NULL, SFilteredKey BLOB NOT NULL);"
            "CREATE UNIQUE INDEX DicI1 ON Dic(TextId);"
            "CREATE INDEX DicI2 ON Dic(PairLangId);"
            "CREATE INDEX DicI3 ON Dic(SKey);"
            "CREATE INDEX DicI4 ON Dic(SFilteredKey);"
            "CREATE TABLE LModul(LangModulId INTEGER NOT NULL, PairLangId INTEGER NOT NULL,"
            " ModulId INTEGER NOT NULL, Flags INTEGER NOT NULL);"
            "CREATE UNIQUE INDEX LModulI1 ON LModul(LangModulId);"
            "CREATE INDEX LModulI2 ON LModul(PairLangId);"
            "CREATE INDEX LModulI3 ON LModul(ModulId);"
            "CREATE TABLE STable(StringId INTEGER NOT NULL, LangModulId INTEGER NOT NULL,"
            " TextId INTEGER NOT NULL, ResId INTEGER NOT NULL, Flags INTEGER NOT NULL,"
            " NoticeId INTEGER NOT NULL, ResNetId TEXT NOT NULL);"
            "CREATE UNIQUE INDEX STableI1 ON STable(StringId);"
            "CREATE INDEX STableI2 ON STable(LangModulId);"
            "CREATE INDEX STableI3 ON STable(TextId);"
            "COMMIT");
        prepare();
        begin();
        Stmt addLangModul = db_.prepare("INSERT INTO LModul VALUES(?1, ?2, ?1, 0)");
        for (const DWORD langModul : langModuls) {
            addLangModul.integer(1, langModul);
            addLangModul.integer(2, pair);
            addLangModul.step();
            addLangModul.reset();
        }
        commit();
    }

    void close() {
        for (Stmt* stmt :
             {&lastTextId_, &addPhrase_, &phraseCount_, &setCount_, &lastStringId_, &addEntry_,
              &entries_, &langModuls_, &walkPhrases_, &setPhraseFlags_, &walkEntries_,
              &setEntryFlags_, &markedPhrases_, &markedEntries_}) {
            *stmt = Stmt();
        }
        db_.close();
    }

    // A fresh connection that has read the file whole, as the library's reopen.
    void reopen() {
        close();
        db_.open(path_, false);
        db_.readWhole();
        prepare();
    }

    void begin() { db_.exec("BEGIN"); }
    void commit() { db_.exec("COMMIT"); }

    // The phrase (find the last TextId, insert), then the entry (count the phrase up,
    // find the last StringId, insert); `perCall` commits each as the library commits
    // each call outside a transaction. Gives the new StringId.
    std::uint32_t add(const Entry& entry, std::uint32_t pair, std::uint32_t langModul,
                      bool perCall) {
        if (perCall) begin();
        const std::uint32_t textId = lastId(lastTextId_) + 1;
        insertPhrase(entry, textId, pair);
        if (perCall) {
            commit();
            begin();
        }
        countUp(textId);
        const std::uint32_t stringId = lastId(lastStringId_) + 1;
        insertEntry(entry, stringId, langModul, textId);
        if (perCall) commit();
        return stringId;
    }

    // One indexed query for the module's entries, keeping those that pass; sorted,
    // ordered by ResId in memory (the index is on the module alone).
    void list(std::uint32_t langModul, FILTER filter, bool sorted, Ids* ids) {
        std::vector<std::pair<std::uint32_t, std::uint32_t>> byResId;  // (ResId, StringId)
        entries_.integer(1, langModul);
        while (entries_.step()) {
            if (!passes(filter, static_cast<std::uint32_t>(entries_.integer(1)))) continue;
            const auto stringId = static_cast<std::uint32_t>(entries_.integer(0));
            if (sorted) {
                byResId.emplace_back(static_cast<std::uint32_t>(entries_.integer(2)), stringId);
            } else {
                ids->push_back(stringId);
            }
        }
        entries_.reset();
        if (!sorted) return;
        std::sort(byResId.begin(), byResId.end());
        for (const auto& entry : byResId) ids->push_back(entry.second);
    }

    // Walks the pair's phrases, sets `marker` in those `phraseIn(translated, sText)`
    // accepts and clears it in the others; then walks the entries of each of the
    // pair's language modules and marks those whose phrase was marked. Only changed
    // Flags are rewritten. Gives the number of records changed.
    template <typename PhraseIn>
    std::size_t mark(std::uint32_t pair, std::uint32_t marker, PhraseIn phraseIn) {
        std::unordered_set<std::uint32_t> markedPhrases;
        std::size_t changed = 0;
        begin();
        walkPhrases_.integer(1, pair);
        while (walkPhrases_.step()) {
            const bool in = phraseIn(walkPhrases_.integer(2) != 0, walkPhrases_.text(4));
            if (in) markedPhrases.insert(static_cast<std::uint32_t>(walkPhrases_.integer(1)));
            changed += setMarker(setPhraseFlags_, walkPhrases_, 3, marker, in);
        }
        walkPhrases_.reset();
        for (const std::uint32_t langModul : langModulsOf(pair)) {
            walkEntries_.integer(1, langModul);
            while (walkEntries_.step()) {
                const auto textId = static_cast<std::uint32_t>(walkEntries_.integer(1));
                changed += setMarker(setEntryFlags_, walkEntries_, 2, marker,
                                     markedPhrases.count(textId) != 0);
            }
            walkEntries_.reset();
        }
        commit();
        return changed;
    }

    // The phrases and the entries with `marker` set, in id order (not timed).
    std::pair<Ids, Ids> marked(std::uint32_t marker) {
        return {idsWith(markedPhrases_, marker), idsWith(markedEntries_, marker)};
    }

private:
    void prepare() {
        lastTextId_ = db_.prepareIndexed("SELECT TextId FROM Dic ORDER BY TextId DESC LIMIT 1");
        addPhrase_ = db_.prepare(
            "INSERT INTO Dic(TextId, PairLangId, MaxNrOfChar, ReadOnly, Count, Translated,"
            " Standard, Flags, SText, STextFiltered, TText, SKey, SFilteredKey)"
            " VALUES(?1, ?2, 0, 0, 0, ?3, 0, 0, ?4, ?5, ?6, ?7, ?8)");
        phraseCount_ = db_.prepareIndexed("SELECT rowid, Count FROM Dic WHERE TextId = ?1");
        setCount_ = db_.prepareIndexed("UPDATE Dic SET Count = ?1 WHERE rowid = ?2");
        lastStringId_ =
            db_.prepareIndexed("SELECT StringId FROM STable ORDER BY StringId DESC LIMIT 1");
        addEntry_ = db_.prepare(
            "INSERT INTO STable(StringId, LangModulId, TextId, ResId, Flags, NoticeId, ResNetId)"
            " VALUES(?1, ?2, ?3, ?4, 0, 0, ?5)");
        entries_ = db_.prepareIndexed(
            "SELECT StringId, Flags, ResId FROM STable WHERE LangModulId = ?1"
            " ORDER BY LangModulId, rowid");
        langModuls_ = db_.prepareIndexed(
            "SELECT LangModulId FROM LModul WHERE PairLangId = ?1 ORDER BY PairLangId, rowid");
        walkPhrases_ = db_.prepareIndexed(
            "SELECT rowid, TextId, Translated, Flags, SText FROM Dic"
            " WHERE PairLangId = ?1 ORDER BY PairLangId, rowid");
        setPhraseFlags_ = db_.prepareIndexed("UPDATE Dic SET Flags = ?1 WHERE rowid = ?2");
        walkEntries_ = db_.prepareIndexed(
            "SELECT rowid, TextId, Flags FROM STable"
            " WHERE LangModulId = ?1 ORDER BY LangModulId, rowid");
        setEntryFlags_ = db_.prepareIndexed("UPDATE STable SET Flags = ?1 WHERE rowid = ?2");
        markedPhrases_ = db_.prepare("SELECT TextId FROM Dic WHERE Flags & ?1 ORDER BY TextId");
        markedEntries_ =
            db_.prepare("SELECT StringId FROM STable WHERE Flags & ?1 ORDER BY StringId");
    }

    // 0 in an empty table.
    static std::uint32_t lastId(Stmt& last) {
        const std::uint32_t id = last.step() ? static_cast<std::uint32_t>(last.integer(0)) : 0;
        last.reset();
        return id;
    }

    void insertPhrase(const Entry& entry, std::uint32_t textId, std::uint32_t pair) {
        bench::insertPhrase(addPhrase_, textId, pair, entry.translated, entry.sText, entry.sTextFiltered,
                            entry.tText);
    }

    void countUp(std::uint32_t textId) {
        phraseCount_.integer(1, textId);
        if (!phraseCount_.step()) fail("no phrase " + std::to_string(textId) + " to count up");
        setCount_.integer(1, phraseCount_.integer(1) + 1);
        setCount_.integer(2, phraseCount_.integer(0));
        phraseCount_.reset();
        setCount_.step();
        setCount_.reset();
    }

    void insertEntry(const Entry& entry, std::uint32_t stringId, std::uint32_t langModul,
                     std::uint32_t textId) {
        addEntry_.integer(1, stringId);
        addEntry_.integer(2, langModul);
        addEntry_.integer(3, textId);
        addEntry_.integer(4, entry.resId);
        addEntry_.text(5, entry.resNetId.GetString(), entry.resNetId.GetLength());
        addEntry_.step();
        addEntry_.reset();
    }

    Ids langModulsOf(std::uint32_t pair) {
        Ids ids;
        langModuls_.integer(1, pair);
        while (langModuls_.step()) {
            ids.push_back(static_cast<std::uint32_t>(langModuls_.integer(0)));
        }
        langModuls_.reset();
        return ids;
    }

    // Sets or clears `marker` in the Flags of the walk's current row (column 0 its
    // rowid); 1 when that changed it.
    static std::size_t setMarker(Stmt& update, const Stmt& walk, int flagsColumn,
                                 std::uint32_t marker, bool in) {
        const auto flags = static_cast<std::uint32_t>(walk.integer(flagsColumn));
        const std::uint32_t wanted = in ? flags | marker : flags & ~marker;
        if (wanted == flags) return 0;
        update.integer(1, wanted);
        update.integer(2, walk.integer(0));
        update.step();
        update.reset();
        return 1;
    }

    static Ids idsWith(Stmt& query, std::uint32_t marker) {
        Ids ids;
        query.integer(1, marker);
        while (query.step()) ids.push_back(static_cast<std::uint32_t>(query.integer(0)));
        query.reset();
        return ids;
    }

    std::string path_;
    bench::Connection db_;
    Stmt lastTextId_, addPhrase_, phraseCount_, setCount_, lastStringId_, addEntry_;
    Stmt entries_, langModuls_;
    Stmt walkPhrases_, setPhraseFlags_, walkEntries_, setEntryFlags_;
    Stmt markedPhrases_, markedEntries_;
};

// ---- Phases ----------------------------------------------------------------------------

using bench::Row;

// Times per record; an add is one entry with its phrase, a refresh walks every phrase
// and every entry.
Row perRecord(const std::string& name, std::size_t records) {
    return Row{name, "us/record", 1e6 / static_cast<double>(records)};
}

constexpr std::size_t kSlices = 20;
// Listings and refreshes that change nothing are repeated this many times.
constexpr std::size_t kRounds = 5;

using bench::raceTimed;

class Benchmark {
public:
    Benchmark(Dataset& data, const std::string& directory) : data_(data) {
        library_.create(directory, data.modules);
        pair_ = library_.pair();
        raw_.create(directory + "raw.db", pair_, library_.langModuls());
    }

    void run() {
        addEntries("add, each call committing", 0, data_.perModule, false);
        addEntries("add, in one transaction", data_.perModule, data_.total(), true);
        list("listing, unsorted", false);
        list("listing, sorted by ResId", true);
        refresh("not-translated refresh, 1st", 1, kNotTranslatedMarker, FilterNotTranslated);
        refresh("not-translated refresh, again", kRounds, kNotTranslatedMarker,
                FilterNotTranslated);
        refresh("user-filter refresh, 1st", 1, kUserFilterMarker, FilterUser);
        refresh("user-filter refresh, again", kRounds, kUserFilterMarker, FilterUser);
        library_.close();
        raw_.close();
    }

    const std::vector<Row>& rows() const { return rows_; }
    bool same() const { return same_; }

private:
    void reopenBoth() {
        library_.reopen();
        raw_.reopen();
    }

    DWORD langModulOf(std::size_t entry) const {
        return library_.langModuls()[entry / data_.perModule];
    }

    // Entries [begin, end), each with its phrase; in one transaction or each call
    // committing on its own.
    void addEntries(const std::string& name, std::size_t begin, std::size_t end, bool batched) {
        Row row = perRecord(name, end - begin);
        raceTimed(
            &row, end - begin, kSlices,
            [&](const Slice& slice) {
                if (batched && slice.first) library_.begin();
                for (std::size_t i = begin + slice.begin; i < begin + slice.end; ++i) {
                    library_.add(data_.entries[i], langModulOf(i), static_cast<DWORD>(i + 1));
                }
                if (batched && slice.last) library_.commit();
            },
            [&](const Slice& slice) {
                if (batched && slice.first) raw_.begin();
                for (std::size_t i = begin + slice.begin; i < begin + slice.end; ++i) {
                    const std::uint32_t id =
                        raw_.add(data_.entries[i], pair_, langModulOf(i), !batched);
                    if (id != i + 1) {
                        fail("the hand-written add gave StringId " + std::to_string(id));
                    }
                }
                if (batched && slice.last) raw_.commit();
            });
        rows_.push_back(row);
    }

    // Every language module, kRounds times over, the sides alternating module by
    // module; the last round's lists are compared.
    void list(const std::string& name, bool sorted) {
        const std::vector<DWORD>& langModuls = library_.langModuls();
        const std::size_t count = langModuls.size() * kRounds;
        Row row = perRecord(name, data_.total() * kRounds);
        std::vector<Ids> libraryLists(langModuls.size());
        std::vector<Ids> rawLists(langModuls.size());
        reopenBoth();
        raceTimed(
            &row, count, count,
            [&](const Slice& slice) {
                for (std::size_t i = slice.begin; i < slice.end; ++i) {
                    CDWordArray ids;
                    library_.list(langModuls[i % langModuls.size()], sorted, ids);
                    libraryLists[i % langModuls.size()] = toIds(ids);
                }
            },
            [&](const Slice& slice) {
                raw_.begin();
                for (std::size_t i = slice.begin; i < slice.end; ++i) {
                    Ids& ids = rawLists[i % langModuls.size()];
                    ids.clear();
                    raw_.list(langModuls[i % langModuls.size()], FilterNone, sorted, &ids);
                }
                raw_.commit();
            });
        for (std::size_t m = 0; m < langModuls.size(); ++m) {
            same_ =
                same_ && libraryLists[m] == rawLists[m] && rawLists[m].size() == data_.perModule;
            if (sorted) same_ = same_ && inResIdOrder(rawLists[m]);
        }
        rows_.push_back(row);
    }

    bool inResIdOrder(const Ids& ids) const {
        for (std::size_t i = 1; i < ids.size(); ++i) {
            if (data_.entries[ids[i - 1] - 1].resId > data_.entries[ids[i] - 1].resId) return false;
        }
        return true;
    }

    // `rounds` refreshes on each side, then a comparison of the marked records (not
    // timed). A refresh walks every phrase and every entry.
    void refresh(const std::string& name, std::size_t rounds, std::uint32_t marker, FILTER filter) {
        const bool notTranslated = marker == kNotTranslatedMarker;
        const USERFILTER user = userFilter();
        Row row = perRecord(name, 2 * data_.total() * rounds);
        std::size_t changed = 0;
        reopenBoth();
        raceTimed(
            &row, rounds, rounds,
            [&](const Slice&) {
                notTranslated ? library_.refreshNotTranslated() : library_.refreshUserFilter(user);
            },
            [&](const Slice&) {
                changed = raw_.mark(pair_, marker, [&](bool translated, const char* text) {
                    return notTranslated ? !translated : strcasestr(text, kFindText) != nullptr;
                });
            });
        if (rounds == 1) row.changed = changed;
        if (rounds > 1) row.name += " (" + std::to_string(rounds) + "x)";
        same_ = same_ && library_.marked(filter) == raw_.marked(marker);
        rows_.push_back(row);
    }

    Dataset& data_;
    LibrarySide library_;
    RawSide raw_;
    DWORD pair_ = 0;
    std::vector<Row> rows_;
    bool same_ = true;
};

// ---- Report ----------------------------------------------------------------------------

void describe(const Dataset& data) {
    const isam::StorageTuning& t = isam::storageTuning();
    std::printf(
        "String tables of a project vs the best plain SQLite, one language pair (%lu to %lu)\n",
        static_cast<unsigned long>(kPLangId), static_cast<unsigned long>(kSLangId));
    std::printf(
        "  %zu modules x %zu entries = %zu entries, each with its own phrase; %.1f%% translated,"
        " %.1f%% containing \"%s\"\n",
        data.modules, data.perModule, data.total(), percent(data.translated, data.total()),
        percent(data.withFindWord, data.total()), kFindWord);
    std::printf(
        "  adds: AddDictionary + AddStringTable per entry; the first module's call by call,"
        " the others in one transaction\n");
    std::printf(
        "  both files: page %d B, cache %d KiB, WAL, synchronous=NORMAL, exclusive locking,"
        " checkpoint every %d pages; SQLite %s\n",
        t.pageSize, t.cacheKiB, t.checkpointPages, sqlite3_libversion());
    std::printf(
        "  user filter: find \"%s\" in the source text, case ignored, in string tables, all states"
        " 2; the library\n  matches under the pair's locale, the SQLite side with strcasestr"
        " (ASCII folding only, so cheaper)\n  records: an add is one entry with its phrase; a"
        " refresh walks every phrase and every entry\n  SQLite side: one indexed query per"
        " listed module (sorted in memory); listings and\n  refreshes after a reopen of both"
        " files (log checkpointed, file read whole once)\n\n",
        kFindText);
}

void report(const std::vector<Row>& rows, bool same) {
    bench::printRows(rows);
    std::printf("results: %s\n", same ? "the same lists and marked records on both sides"
                                      : "RESULTS DIFFER between the sides");
}

struct Options {
    std::size_t modules = 10;
    std::size_t entries = 10000;
    std::string dir = "/tmp";
};

// At least two modules: one for the adds call by call, the rest for the batched ones.
// ResIds are 16-bit, and every entry of a module has its own.
bool parse(int argc, char** argv, Options* options) {
    return bench::parseNamedValues(argc, argv, [&](const std::string& name, const char* value) {
        if (name == "--modules") return bench::parseCount(value, 2, 1000, &options->modules);
        if (name == "--entries") return bench::parseCount(value, kSlices, 65535, &options->entries);
        if (name != "--dir") return false;
        options->dir = value;
        return true;
    });
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, &options)) {
        std::fprintf(
            stderr,
            "usage: %s [--modules N (2 to 1000)] [--entries N (%zu to 65535)] [--dir DIR]\n",
            argv[0], kSlices);
        return 2;
    }
    try {
        bench::ScratchDir scratch(options.dir, "string_tables");
        Dataset data = makeDataset(options.modules, options.entries, 20240611);
        describe(data);
        Benchmark benchmark(data, scratch.path());
        benchmark.run();
        report(benchmark.rows(), benchmark.same());
        return benchmark.same() ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "string_tables: %s\n", error.what());
        return 1;
    }
}
