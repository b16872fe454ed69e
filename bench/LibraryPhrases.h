// The phrase cases through the public interface, on a database of either kind.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/BenchSupport.h"
#include "bench/PhraseData.h"
#include "qvb/qvb.h"

namespace bench {

std::vector<std::uint32_t> toVector(const CDWordArray& ids);

class LibraryPhrases {
public:
    explicit LibraryPhrases(CDbObject& db) : db_(db) {}
    ~LibraryPhrases() {
        if (open_) db_.CloseDb();
    }
    LibraryPhrases(const LibraryPhrases&) = delete;
    LibraryPhrases& operator=(const LibraryPhrases&) = delete;

    // A new database with one language pair.
    void create(const std::string& directory, const std::string& name);
    void open(const std::string& directory, const std::string& name);
    void close();
    // Closing checkpoints the log into the file, so a phase that starts after a
    // reopen pays for no earlier phase's writes.
    void reopen();

    void begin() { check(db_.BeginTransaction(), db_, "BeginTransaction"); }
    void commit() { check(db_.CommitTransaction(), db_, "CommitTransaction"); }

    void add(const PhraseText& phrase, DWORD expectedId);

    void refreshNotTranslated() {
        check(db_.RefreshNotTranslatedFilter(pair_), db_, "RefreshNotTranslatedFilter");
    }
    void refreshUserFilter(const USERFILTER& filter) {
        check(db_.RefreshUserFilter(pair_, filter), db_, "RefreshUserFilter");
    }

    void listPair(CDWordArray& ids) { check(db_.EnumDictionary(ids, pair_), db_, "EnumDictionary"); }
    void listFamily(CDWordArray& ids, const CString& text) {
        check(db_.EnumDictionary(ids, pair_, text), db_, "EnumDictionary(SText)");
    }

    // The phrases whose marker `filter` selects by is set, ascending (not timed).
    std::vector<std::uint32_t> marked(FILTER filter);

    DWORD pair() const { return pair_; }

private:
    CDbObject& db_;
    std::string directory_;
    std::string name_;
    DWORD pair_ = 0;
    bool open_ = false;
};

}  // namespace bench
