#include "bench/LibraryPhrases.h"

#include <algorithm>

#include "core/NewDatabase.h"

namespace bench {

std::vector<std::uint32_t> toVector(const CDWordArray& ids) {
    return std::vector<std::uint32_t>(ids.GetData(), ids.GetData() + ids.GetSize());
}

void LibraryPhrases::create(const std::string& directory, const std::string& name) {
    directory_ = directory;
    name_ = name;
    check(qvb::createForUse(db_, directory.c_str(), name.c_str()), db_, "createForUse");
    open_ = true;
    check(db_.AddSLang(&pair_, kPLangId, kSLangId, "MS Shell Dlg", 0), db_, "AddSLang");
}

void LibraryPhrases::open(const std::string& directory, const std::string& name) {
    directory_ = directory;
    name_ = name;
    check(db_.OpenDb(directory.c_str(), name.c_str(), 0), db_, "OpenDb");
    open_ = true;
    CDWordArray pairs;
    check(db_.EnumSLang(pairs), db_, "EnumSLang");
    if (pairs.GetSize() != 1) fail("expected one language pair");
    pair_ = pairs[0];
}

void LibraryPhrases::close() {
    open_ = false;
    check(db_.CloseDb(), db_, "CloseDb");
}

void LibraryPhrases::reopen() {
    close();
    open(directory_, name_);
}

void LibraryPhrases::add(const PhraseText& phrase, DWORD expectedId) {
    DWORD id = 0;
    check(db_.AddDictionary(&id, pair_, phrase.sText, phrase.sTextFiltered, phrase.tText, 0, 0,
                            phrase.translated ? 1 : 0, 0, 0),
          db_, "AddDictionary");
    if (id != expectedId) fail("AddDictionary gave TextId " + std::to_string(id));
}

std::vector<std::uint32_t> LibraryPhrases::marked(FILTER filter) {
    db_.SetFilter(filter);
    CDWordArray ids;
    listPair(ids);
    db_.SetFilter(FilterNone);
    std::vector<std::uint32_t> out = toVector(ids);
    std::sort(out.begin(), out.end());
    return out;
}

}  // namespace bench
