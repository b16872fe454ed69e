#include "bench/PhraseData.h"

#include <strings.h>

#include <cctype>
#include <cstring>

namespace bench {

namespace {

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

std::string capitalised(std::string word) {
    word[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(word[0])));
    return word;
}

}  // namespace

std::string filtered(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c != '&') out += c;
    }
    while (!out.empty() && std::strchr(".:?", out.back())) out.pop_back();
    return out;
}

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

USERFILTER userFilter() {
    USERFILTER filter;
    std::strncpy(filter.FindText, kFindText, sizeof filter.FindText - 1);
    filter.InSource = 1;
    filter.StateTranslated = filter.StateUsed = filter.StateReadOnly = filter.StateStandard =
        filter.StateLimited = filter.StateNotice = 2;
    return filter;
}

bool inUserFilter(const char* sText) {
    return strcasestr(sText, kFindText) != nullptr;
}

PhraseText PhraseStream::next() {
    lastRepeated_ = !common_.empty() && share_(random_) < kRepeatShare;
    std::pair<std::string, std::string> text;
    if (lastRepeated_) {
        text = common_[random_() % common_.size()];
    } else {
        text = makeText(random_, share_(random_) < kFindShare);
        if (common_.size() < kCommonTexts) common_.push_back(text);
    }
    PhraseText phrase;
    phrase.sText = CString(text.first.c_str());
    phrase.sTextFiltered = CString(filtered(text.first).c_str());
    phrase.translated = random_() % 2 == 0;
    if (phrase.translated) phrase.tText = CString(text.second.c_str());
    return phrase;
}

}  // namespace bench
