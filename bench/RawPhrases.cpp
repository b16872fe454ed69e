#include "bench/RawPhrases.h"

namespace bench {

void RawPhrases::create(const std::string& path) {
    path_ = path;
    db_.open(path, true);
    db_.exec(
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
    prepare();
}

void RawPhrases::open(const std::string& path) {
    path_ = path;
    db_.open(path, false);
    db_.readWhole();
    prepare();
}

void RawPhrases::close() {
    for (Stmt* stmt : {&insert_, &walk_, &list_, &family_, &setFlags_, &marked_}) *stmt = Stmt();
    db_.close();
}

void RawPhrases::reopen() {
    close();
    open(path_);
}

void RawPhrases::prepare() {
    insert_ = db_.prepare(
        "INSERT INTO Phrases(TextId, PairLangId, Count, Translated, Flags, SText,"
        " STextFiltered, TText, SKey, SFilteredKey)"
        " VALUES(?1, ?2, 0, ?3, 0, ?4, ?5, ?6, ?7, ?8)");
    walk_ = db_.prepareIndexed(
        "SELECT rowid, TextId, Translated, Flags, SText FROM Phrases"
        " WHERE PairLangId = ?1 ORDER BY PairLangId, rowid");
    list_ = db_.prepareIndexed(
        "SELECT TextId FROM Phrases WHERE PairLangId = ?1 ORDER BY PairLangId, rowid");
    // The pair is no index term here: the text key is the narrower one.
    family_ = db_.prepareIndexed(
        "SELECT TextId FROM Phrases WHERE SKey = ?1 AND +PairLangId = ?2 AND SText = ?3"
        " ORDER BY SKey, rowid");
    setFlags_ = db_.prepareIndexed("UPDATE Phrases SET Flags = ?1 WHERE rowid = ?2");
    marked_ = db_.prepare("SELECT TextId FROM Phrases WHERE Flags & ?1 ORDER BY TextId");
}

void RawPhrases::listPair(std::uint32_t pair, std::vector<std::uint32_t>* ids) {
    list_.integer(1, pair);
    while (list_.step()) ids->push_back(static_cast<std::uint32_t>(list_.integer(0)));
    list_.reset();
}

void RawPhrases::listFamily(std::uint32_t pair, const CString& text,
                            std::vector<std::uint32_t>* ids) {
    const std::string key = textKey(text);
    family_.blob(1, key.data(), key.size());
    family_.integer(2, pair);
    family_.text(3, text.GetString(), text.GetLength());
    while (family_.step()) ids->push_back(static_cast<std::uint32_t>(family_.integer(0)));
    family_.reset();
}

std::vector<std::uint32_t> RawPhrases::marked(std::uint32_t marker) {
    std::vector<std::uint32_t> out;
    marked_.integer(1, marker);
    while (marked_.step()) out.push_back(static_cast<std::uint32_t>(marked_.integer(0)));
    marked_.reset();
    return out;
}

}  // namespace bench
