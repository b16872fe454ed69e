// The phrase table hand-written on SQLite: the library's phrase columns and its four
// indexes (TextId, pair, and the 125-byte keys of the source text and its filtered
// form), with the statements the best plain SQL for each phrase case uses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/BenchSupport.h"
#include "bench/PhraseData.h"

namespace bench {

class RawPhrases {
public:
    ~RawPhrases() { close(); }

    void create(const std::string& path);
    // Opens an existing file and reads it whole, as the library's open does.
    void open(const std::string& path);
    void close();
    // A fresh connection (the log checkpointed into the file), as a reopen of the
    // library's database.
    void reopen();

    void begin() { db_.exec("BEGIN"); }
    void commit() { db_.exec("COMMIT"); }

    void add(const PhraseText& phrase, std::uint32_t textId, std::uint32_t pair) {
        insertPhrase(insert_, textId, pair, phrase.translated, phrase.sText, phrase.sTextFiltered,
                     phrase.tText);
    }

    // One walk over the pair's phrases in one transaction: sets `marker` where `in`
    // says so and clears it elsewhere, rewriting only the Flags that change, and
    // collects the marked TextIds as the library's refresh does. Gives the number of
    // phrases changed.
    template <typename In>
    std::size_t mark(std::uint32_t pair, std::uint32_t marker, std::vector<std::uint32_t>* ids,
                     In in);

    // One indexed query.
    void listPair(std::uint32_t pair, std::vector<std::uint32_t>* ids);
    // One indexed query on the text key; the whole text decides.
    void listFamily(std::uint32_t pair, const CString& text, std::vector<std::uint32_t>* ids);

    // The TextIds with `marker` set, ascending (a check, not timed).
    std::vector<std::uint32_t> marked(std::uint32_t marker);

private:
    void prepare();

    std::string path_;
    Connection db_;
    Stmt insert_, walk_, list_, family_, setFlags_, marked_;
};

template <typename In>
std::size_t RawPhrases::mark(std::uint32_t pair, std::uint32_t marker,
                             std::vector<std::uint32_t>* ids, In in) {
    ids->clear();
    std::size_t changed = 0;
    begin();
    walk_.integer(1, pair);
    while (walk_.step()) {
        const bool marked = in(walk_.integer(2) != 0, walk_.text(4));
        if (marked) ids->push_back(static_cast<std::uint32_t>(walk_.integer(1)));
        const auto flags = static_cast<std::uint32_t>(walk_.integer(3));
        const std::uint32_t wanted = marked ? flags | marker : flags & ~marker;
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

}  // namespace bench
