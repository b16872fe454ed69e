// Times the phrase dictionary of a project through the public interface (adds, the
// two marker refreshes, the pair and family listings) against the best plain SQLite
// for the same result, in its own file with the engine's storage settings: one
// indexed query per listing, one walk with prepared updates per refresh. Every phase
// starts after both files were reopened, so that no side pays for the other phases'
// log checkpoints.
//
//   phrase_refresh [--phrases N] [--families N] [--dir DIR]
//
// --phrases   phrases added to the one language pair (default 100000)
// --families  source texts listed by family (default 1000)
// --dir       where the scratch directory is made (default /tmp); it is removed at the end
#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <random>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "bench/BenchSupport.h"
#include "bench/LibraryPhrases.h"
#include "bench/PhraseCases.h"
#include "bench/PhraseData.h"
#include "bench/RawPhrases.h"
#include "bench/SideBySide.h"
#include "isam/Container.h"
#include "qvb/qvb.h"

namespace {

using namespace bench;

// ---- Phrases ---------------------------------------------------------------------------

struct Dataset {
    std::vector<PhraseText> phrases;   // in the order of adding; TextId = index + 1
    std::vector<CString> familyTexts;  // distinct source texts to list by family
    std::size_t distinctTexts = 0;
    std::size_t repeats = 0;
    std::size_t withFindWord = 0;  // phrases whose source text holds the find word
    std::size_t translated = 0;
};

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
        data.withFindWord += inUserFilter(source.c_str()) ? 1 : 0;
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

// ---- Cases -----------------------------------------------------------------------------

constexpr std::size_t kSlices = 20;
// Work that changes nothing is repeated this many times, each side's median kept.
constexpr int kRounds = 5;

class Benchmark {
public:
    Benchmark(const Dataset& data, const std::string& directory) : data_(data), library_(db_) {
        library_.create(directory, "phrases");
        raw_.create(directory + "raw.db");
        pair_ = library_.pair();
    }

    void run() {
        addAll();
        PhraseCases cases(library_, raw_, kRounds);
        cases.refreshes();
        cases.listPair(data_.phrases.size());
        cases.listFamilies(data_.familyTexts);
        rows_.insert(rows_.end(), cases.rows().begin(), cases.rows().end());
        same_ = cases.same();
        library_.close();
        raw_.close();
    }

    const std::vector<Row>& rows() const { return rows_; }
    bool same() const { return same_; }

private:
    void addAll() {
        Row row{"add, one transaction (commit incl.)", "us/add",
                1e6 / static_cast<double>(data_.phrases.size())};
        raceTimed(
            &row, data_.phrases.size(), kSlices,
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

    const Dataset& data_;
    CDbProject db_;
    LibraryPhrases library_;
    RawPhrases raw_;
    DWORD pair_ = 0;
    std::vector<Row> rows_;
    bool same_ = true;
};

// ---- Report ----------------------------------------------------------------------------

void describe(const Dataset& data) {
    const isam::StorageTuning& t = isam::storageTuning();
    const std::size_t n = data.phrases.size();
    std::printf(
        "Phrase dictionary of a project vs the best plain SQLite, one language pair (PLangId %lu)\n",
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
        "  every phase after a reopen of both files (log checkpointed, file read whole once)\n");
    std::printf(
        "  user filter: find \"%s\" in the source text, case ignored, all states 2; the library"
        " matches under the\n  pair's locale, the SQLite side with strcasestr (ASCII"
        " folding only, so cheaper per phrase)\n\n",
        kFindText);
}

struct Options {
    std::size_t phrases = 100000;
    std::size_t families = 1000;
    std::string dir = "/tmp";
};

bool parse(int argc, char** argv, Options* options) {
    return parseNamedValues(argc, argv, [&](const std::string& name, const char* value) {
        if (name == "--phrases") return parseCount(value, 1000, 10000000, &options->phrases);
        if (name == "--families") return parseCount(value, kSlices, 100000, &options->families);
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
        ScratchDir scratch(options.dir, "phrase_refresh");
        const Dataset data = makeDataset(options.phrases, options.families, 20240607);
        describe(data);
        Benchmark benchmark(data, scratch.path());
        benchmark.run();
        printRows(benchmark.rows());
        std::printf("\nresults: %s\n", benchmark.same()
                                            ? "the same marked phrases and lists on both sides"
                                            : "RESULTS DIFFER between the sides");
        return benchmark.same() ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "phrase_refresh: %s\n", error.what());
        return 1;
    }
}
