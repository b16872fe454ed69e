// How a phrase dictionary behaves as it grows: for each size, the bulk load through
// the public interface in application transactions (rate over the first and the last
// tenth and overall, bytes written, file size), the open warm and cold, the peak
// memory of each refresh, and the listings and refreshes against the best plain
// SQLite on a file of the same phrases with the engine's storage settings.
//
//   scale [--phrases N[,N...]] [--batch N] [--families N] [--dir DIR]
//
// --phrases   dictionary sizes, each from an empty file (default 10000,100000)
// --batch     adds per application transaction (default 10000)
// --families  source texts listed by family (default 1000)
// --dir       where the scratch directory is made (default /tmp); it is removed at the end
//
// A cold open is an open after the file's pages were written out and dropped from the
// page cache (fsync, then posix_fadvise DONTNEED on the file). Peak memory is the
// resident high-water mark of a fresh process that opens a copy of the freshly loaded
// file and runs one refresh, the mark reset after the open where the kernel allows.
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "bench/BenchSupport.h"
#include "bench/LibraryPhrases.h"
#include "bench/PhraseCases.h"
#include "bench/PhraseData.h"
#include "bench/ProcessStats.h"
#include "bench/RawPhrases.h"
#include "bench/SideBySide.h"
#include "isam/Container.h"
#include "qvb/qvb.h"

namespace {

using namespace bench;

constexpr std::uint32_t kSeed = 20240701;
constexpr const char* kName = "scale";
constexpr int kWarmOpens = 5;
constexpr int kColdOpens = 3;
constexpr int kRounds = 3;
constexpr const char* kPeakOption = "--peak-of";

double mebibytes(std::int64_t bytes) {
    return bytes < 0 ? -1 : static_cast<double>(bytes) / 1048576.0;
}

// ---- Loading -----------------------------------------------------------------------------

struct LoadFigures {
    double firstRate = 0;    // phrases per second over the first tenth
    double lastRate = 0;     // over the last tenth
    double overallRate = 0;  // over the whole load, the last commit included
    double closeSeconds = 0;
    std::int64_t written = -1;  // bytes, the close included
    std::int64_t fileSize = -1;
};

// The adds in chunks that both the tenths and the transactions are made of; each
// chunk's phrases are made before its time starts.
class Loader {
public:
    Loader(std::size_t phrases, std::size_t batch, std::size_t families)
        : phrases_(phrases),
          batch_(batch),
          tenth_(std::max<std::size_t>(1, phrases / 10)),
          chunk_(std::gcd(std::gcd(batch, tenth_), phrases)),
          familyEvery_(std::max<std::size_t>(1, phrases / std::max<std::size_t>(1, families / 2))),
          families_(families) {}

    // `begin()`, `add(phrase, textId)` and `commit()` on one side; `close()` ends the
    // load and gives back nothing. The family texts are collected on the first load.
    template <typename Side>
    LoadFigures load(Side& side, const std::string& file) {
        const std::int64_t writtenBefore = bytesWritten();
        PhraseStream stream(kSeed);
        double first = 0;
        double last = 0;
        double total = 0;
        std::vector<PhraseText> chunk;
        for (std::size_t done = 0; done < phrases_; done += chunk.size()) {
            chunk.clear();
            for (std::size_t i = 0; i < std::min(chunk_, phrases_ - done); ++i) {
                chunk.push_back(stream.next());
                collectFamily(done + i, chunk.back(), stream.lastRepeated());
            }
            const double seconds = secondsOf([&] {
                if (done % batch_ == 0) side.begin();
                for (std::size_t i = 0; i < chunk.size(); ++i) {
                    side.add(chunk[i], static_cast<std::uint32_t>(done + i + 1));
                }
                const std::size_t end = done + chunk.size();
                if (end % batch_ == 0 || end == phrases_) side.commit();
            });
            total += seconds;
            if (done < tenth_) first += seconds;
            if (done >= phrases_ - tenth_) last += seconds;
        }
        LoadFigures figures;
        figures.closeSeconds = secondsOf([&] { side.close(); });
        figures.written = writtenBefore < 0 ? -1 : bytesWritten() - writtenBefore;
        figures.fileSize = fileBytes(file);
        figures.firstRate = static_cast<double>(tenth_) / first;
        figures.lastRate = static_cast<double>(tenth_) / last;
        figures.overallRate = static_cast<double>(phrases_) / total;
        familiesDone_ = true;
        return figures;
    }

    const std::vector<CString>& familyTexts() const { return familyTexts_; }

private:
    // The first new texts (the common ones, the largest families), then texts spread
    // over the whole load.
    void collectFamily(std::size_t index, const PhraseText& phrase, bool repeated) {
        if (familiesDone_ || familyTexts_.size() >= families_) return;
        const bool early = familyTexts_.size() < families_ / 2 && !repeated;
        if (early || index % familyEvery_ == 0) familyTexts_.push_back(phrase.sText);
    }

    std::size_t phrases_, batch_, tenth_, chunk_, familyEvery_, families_;
    std::vector<CString> familyTexts_;
    bool familiesDone_ = false;
};

// The library as a loading side: a new dictionary with one pair.
struct LibraryLoad {
    LibraryPhrases& phrases;
    void begin() { phrases.begin(); }
    void add(const PhraseText& phrase, std::uint32_t id) { phrases.add(phrase, id); }
    void commit() { phrases.commit(); }
    void close() { phrases.close(); }
};

struct RawLoad {
    RawPhrases& phrases;
    std::uint32_t pair;
    void begin() { phrases.begin(); }
    void add(const PhraseText& phrase, std::uint32_t id) { phrases.add(phrase, id, pair); }
    void commit() { phrases.commit(); }
    void close() { phrases.close(); }
};

// ---- Opening -----------------------------------------------------------------------------

struct OpenFigures {
    double warm = 0;  // seconds, median
    double cold = 0;
};

OpenFigures timeOpens(LibraryPhrases& library, const std::string& directory,
                      const std::string& file) {
    std::vector<double> warm;
    std::vector<double> cold;
    for (int i = 0; i < kWarmOpens; ++i) {
        warm.push_back(secondsOf([&] { library.open(directory, kName); }));
        library.close();
    }
    for (int i = 0; i < kColdOpens; ++i) {
        dropFromPageCache(file);
        cold.push_back(secondsOf([&] { library.open(directory, kName); }));
        library.close();
    }
    return {median(warm), median(cold)};
}

// ---- Peak memory -------------------------------------------------------------------------

struct Peak {
    std::int64_t beforeKiB = -1;  // resident after the open
    std::int64_t peakKiB = -1;    // high-water mark during the refresh (or the process)
    bool reset = false;           // whether the mark was reset after the open
};

// In the child: opens the dictionary, runs one refresh, prints what it measured.
int peakChild(const char* refresh, const char* directory) {
    try {
        CDbDictionary db;
        LibraryPhrases library(db);
        library.open(directory, kName);
        Peak peak;
        peak.beforeKiB = residentKiB();
        peak.reset = resetPeakResident();
        if (std::strcmp(refresh, "user") == 0) {
            library.refreshUserFilter(userFilter());
        } else {
            library.refreshNotTranslated();
        }
        peak.peakKiB = peakResidentKiB();
        library.close();
        std::printf("%lld %lld %d\n", static_cast<long long>(peak.beforeKiB),
                    static_cast<long long>(peak.peakKiB), peak.reset ? 1 : 0);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "scale: %s\n", error.what());
        return 1;
    }
}

// Runs a refresh in a fresh process of this program and reads its figures.
Peak measurePeak(const char* refresh, const std::string& directory) {
    int out[2];
    if (::pipe(out) != 0) fail("pipe");
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child < 0) fail("fork");
    if (child == 0) {
        ::dup2(out[1], STDOUT_FILENO);
        ::close(out[0]);
        ::close(out[1]);
        const char* const args[] = {"scale", kPeakOption, refresh, directory.c_str(), nullptr};
        ::execv("/proc/self/exe", const_cast<char* const*>(args));
        ::_exit(127);
    }
    ::close(out[1]);
    std::string text;
    char buffer[256];
    for (ssize_t n; (n = ::read(out[0], buffer, sizeof buffer)) > 0;) text.append(buffer, n);
    ::close(out[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) fail("the peak-memory process failed");
    Peak peak;
    int reset = 0;
    std::istringstream in(text);
    long long before = -1;
    long long high = -1;
    if (!(in >> before >> high >> reset)) fail("the peak-memory process printed " + text);
    peak.beforeKiB = before;
    peak.peakKiB = high;
    peak.reset = reset != 0;
    return peak;
}

// ---- One size ----------------------------------------------------------------------------

struct SizeResult {
    std::size_t phrases = 0;
    LoadFigures library;
    LoadFigures raw;
    OpenFigures open;
    Peak notTranslated;
    Peak user;
    std::vector<Row> rows;
    bool same = false;
};

SizeResult runSize(std::size_t phrases, std::size_t batch, std::size_t families,
                   const std::string& parent) {
    ScratchDir scratch(parent, "scale");
    const std::string peakDirectory = scratch.file("peak/");
    std::filesystem::create_directory(peakDirectory);
    const std::string rawFile = scratch.file("raw.db");
    SizeResult result;
    result.phrases = phrases;

    CDbDictionary db;
    LibraryPhrases library(db);
    RawPhrases raw;
    Loader loader(phrases, batch, families);
    library.create(scratch.path(), kName);
    // The container file of a dictionary.
    const std::string file = scratch.file(std::string(kName) + ".Dic");
    LibraryLoad libraryLoad{library};
    result.library = loader.load(libraryLoad, file);
    raw.create(rawFile);
    RawLoad rawLoad{raw, library.pair()};
    result.raw = loader.load(rawLoad, rawFile);

    std::filesystem::copy_file(file, peakDirectory + std::filesystem::path(file).filename().string());
    result.open = timeOpens(library, scratch.path(), file);

    library.open(scratch.path(), kName);
    raw.open(rawFile);
    PhraseCases cases(library, raw, kRounds);
    cases.refreshes();
    cases.listPair(phrases);
    cases.listFamilies(loader.familyTexts());
    library.close();
    raw.close();
    result.rows = cases.rows();
    result.same = cases.same();

    result.notTranslated = measurePeak("not-translated", peakDirectory);
    result.user = measurePeak("user", peakDirectory);
    return result;
}

// ---- Report ------------------------------------------------------------------------------

void describe(std::size_t batch) {
    const isam::StorageTuning& t = isam::storageTuning();
    std::printf("Phrase dictionary at scale: one language pair, loaded through AddDictionary in"
                " transactions of %zu\n",
                batch);
    std::printf(
        "  SQLite side: a plain table of the same phrases and indexes; page %d B, cache %d KiB,"
        " WAL,\n  synchronous=NORMAL, exclusive locking, checkpoint every %d pages; SQLite %s\n",
        t.pageSize, t.cacheKiB, t.checkpointPages, sqlite3_libversion());
    std::printf(
        "  cold open: fsync + posix_fadvise(DONTNEED) on the file first; peak memory: VmHWM of a"
        " fresh\n  process (open, one refresh on a copy of the new file), reset after the open"
        " where allowed\n\n");
}

void printSize(const SizeResult& r) {
    std::printf("== %zu phrases ==\n", r.phrases);
    std::printf("%-8s %11s %11s %11s %10s %10s %9s\n", "load", "first 10%", "last 10%", "overall",
                "close s", "written", "file");
    for (const auto& [name, f] : {std::pair<const char*, const LoadFigures&>{"library", r.library},
                                  std::pair<const char*, const LoadFigures&>{"SQLite", r.raw}}) {
        std::printf("%-8s %9.0f/s %9.0f/s %9.0f/s %10.3f %6.0f MiB %5.1f MiB\n", name, f.firstRate,
                    f.lastRate, f.overallRate, f.closeSeconds, mebibytes(f.written),
                    mebibytes(f.fileSize));
    }
    std::printf("OpenDb: warm %.2f ms (median of %d), cold %.2f ms (median of %d)\n",
                r.open.warm * 1e3, kWarmOpens, r.open.cold * 1e3, kColdOpens);
    for (const auto& [name, p] : {std::pair<const char*, const Peak&>{"not-translated", r.notTranslated},
                                  std::pair<const char*, const Peak&>{"user-filter", r.user}}) {
        std::printf("peak memory, 1st %s refresh: %.1f MiB (%.1f MiB after the open%s)\n", name,
                    static_cast<double>(p.peakKiB) / 1024, static_cast<double>(p.beforeKiB) / 1024,
                    p.reset ? "" : "; mark not reset, so the open's peak counts");
    }
    printRows(r.rows);
    std::printf("results: %s\n\n", r.same ? "the same marked phrases and lists on both sides"
                                          : "RESULTS DIFFER between the sides");
}

void printSummary(const std::vector<SizeResult>& results) {
    std::printf("Summary (library; ratios library/SQLite as CPU time, wall in brackets)\n");
    std::printf("%9s %9s %9s %9s %8s %8s %9s %9s %7s %7s", "phrases", "load/s", "last10%/s",
                "written", "file", "raw file", "open ms", "cold ms", "peakNT", "peakUF");
    std::printf("  %s\n", "list/refresh ratios (NT 1st, NT again, UF 1st, UF again, pair, family)");
    for (const SizeResult& r : results) {
        std::printf("%9zu %9.0f %9.0f %5.0f MiB %4.0f MiB %4.0f MiB %9.2f %9.2f %5.1f M %5.1f M ",
                    r.phrases, r.library.overallRate, r.library.lastRate,
                    mebibytes(r.library.written), mebibytes(r.library.fileSize),
                    mebibytes(r.raw.fileSize), r.open.warm * 1e3, r.open.cold * 1e3,
                    static_cast<double>(r.notTranslated.peakKiB) / 1024,
                    static_cast<double>(r.user.peakKiB) / 1024);
        for (const Row& row : r.rows) {
            std::printf(" %.2f(%.2f)", ratio(row.library.cpu, row.raw.cpu),
                        ratio(row.library.wall, row.raw.wall));
        }
        std::printf("%s\n", r.same ? "" : "  RESULTS DIFFER");
    }
}

// ---- Options -----------------------------------------------------------------------------

struct Options {
    std::vector<std::size_t> sizes{10000, 100000};
    std::size_t batch = 10000;
    std::size_t families = 1000;
    std::string dir = "/tmp";
};

bool parseSizes(const char* value, std::vector<std::size_t>* sizes) {
    sizes->clear();
    std::stringstream list(value);
    std::string item;
    while (std::getline(list, item, ',')) {
        std::size_t n = 0;
        if (!parseCount(item.c_str(), 100, 10000000, &n)) return false;
        sizes->push_back(n);
    }
    return !sizes->empty();
}

bool parse(int argc, char** argv, Options* options) {
    return parseNamedValues(argc, argv, [&](const std::string& name, const char* value) {
        if (name == "--phrases") return parseSizes(value, &options->sizes);
        if (name == "--batch") return parseCount(value, 1, 10000000, &options->batch);
        if (name == "--families") return parseCount(value, 2, 100000, &options->families);
        if (name != "--dir") return false;
        options->dir = value;
        return true;
    });
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 4 && std::strcmp(argv[1], kPeakOption) == 0) return peakChild(argv[2], argv[3]);
    Options options;
    if (!parse(argc, argv, &options)) {
        std::fprintf(stderr,
                     "usage: %s [--phrases N[,N...] (each >= 100)] [--batch N] [--families N]"
                     " [--dir DIR]\n",
                     argv[0]);
        return 2;
    }
    try {
        describe(options.batch);
        std::vector<SizeResult> results;
        for (const std::size_t phrases : options.sizes) {
            results.push_back(runSize(phrases, options.batch, options.families, options.dir));
            printSize(results.back());
            std::fflush(stdout);
        }
        printSummary(results);
        const bool same = std::all_of(results.begin(), results.end(),
                                      [](const SizeResult& r) { return r.same; });
        return same ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "scale: %s\n", error.what());
        return 1;
    }
}
