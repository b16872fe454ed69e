// Times language-pair adds through the public interface: each committing on its own,
// and all of them inside one application transaction. Every add outside a
// transaction is a commit of its own, so the gap between the two is what a loader
// saves by batching.
//
//   batched_adds [--adds N] [--dir DIR]
//
// --adds  adds per case (default 10000); each case starts from a fresh project
// --dir   where the scratch directory is made (default /tmp); it is removed at the end
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "core/LibraryErrors.h"
#include "core/NewDatabase.h"
#include "qvb/qvb.h"

namespace {

struct Options {
    unsigned long adds = 10000;
    std::string dir = "/tmp";
};

bool parse(int argc, char** argv, Options* options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (i + 1 >= argc) return false;
        const char* value = argv[++i];
        if (arg == "--adds") {
            char* end = nullptr;
            options->adds = std::strtoul(value, &end, 10);
            if (*end || options->adds == 0 || options->adds > 10000000) return false;
        } else if (arg == "--dir") {
            options->dir = value;
        } else {
            return false;
        }
    }
    return true;
}

void check(int ok, CDbObject& db, const std::string& what) {
    if (ok) return;
    const int error = db.GetError();
    throw std::runtime_error(what + ": error " + std::to_string(error) + " (" +
                             qvbErrorText(error) + ")");
}

class ScratchDir {
public:
    explicit ScratchDir(const std::string& parent) {
        std::string pattern = parent + "/batched_adds.XXXXXX";
        if (!::mkdtemp(pattern.data())) {
            throw std::runtime_error("cannot create a directory under " + parent);
        }
        path_ = pattern;
    }
    ~ScratchDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    std::string path() const { return path_ + "/"; }

private:
    std::string path_;
};

// Adds `adds` language pairs to a fresh project, inside one transaction or not, and
// gives the seconds the adds took (the commit of the transaction included).
double timeAdds(const ScratchDir& scratch, const char* name, unsigned long adds, bool batched) {
    CDbProject db;
    check(qvb::createForUse(db, scratch.path().c_str(), name), db, std::string("create ") + name);
    const auto start = std::chrono::steady_clock::now();
    if (batched) check(db.BeginTransaction(), db, "BeginTransaction");
    for (unsigned long i = 0; i < adds; ++i) {
        DWORD id = 0;
        check(db.AddSLang(&id, 1033, 1031 + static_cast<DWORD>(i % 64), "MS Shell Dlg", 0), db,
              "AddSLang");
    }
    if (batched) check(db.CommitTransaction(), db, "CommitTransaction");
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    DWORD count = 0;
    check(db.GetSLangCount(&count), db, "GetSLangCount");
    if (count != adds) {
        throw std::runtime_error(std::string(name) + ": " + std::to_string(count) +
                                 " pairs after " + std::to_string(adds) + " adds");
    }
    check(db.CloseDb(), db, "CloseDb");
    return seconds;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, &options)) {
        std::fprintf(stderr, "usage: %s [--adds N] [--dir DIR]\n", argv[0]);
        return 2;
    }
    try {
        ScratchDir scratch(options.dir);
        const double separate = timeAdds(scratch, "separate", options.adds, false);
        const double batched = timeAdds(scratch, "batched", options.adds, true);
        const double perAdd = 1e6 / static_cast<double>(options.adds);
        std::printf("%lu AddSLang calls on a fresh project each, in %s\n", options.adds,
                    options.dir.c_str());
        std::printf("  each committing on its own   %9.2f us per add  (%.3f s)\n",
                    separate * perAdd, separate);
        std::printf("  in one transaction           %9.2f us per add  (%.3f s)\n", batched * perAdd,
                    batched);
        std::printf("  separate / batched           %9.1f x\n", separate / batched);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "batched_adds: %s\n", error.what());
        return 1;
    }
    return 0;
}
