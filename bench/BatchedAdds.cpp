// Times language-pair adds through the public interface: each committing on its own,
// and all of them inside one application transaction. Every add outside a
// transaction is a commit of its own, so the gap between the two is what a loader
// saves by batching.
//
//   batched_adds [--adds N] [--dir DIR]
//
// --adds  adds per case (default 10000); each case starts from a fresh project
// --dir   where the scratch directory is made (default /tmp); it is removed at the end
#include <cstdio>
#include <stdexcept>
#include <string>

#include "bench/BenchSupport.h"
#include "core/NewDatabase.h"
#include "qvb/qvb.h"

namespace {

using bench::check;

struct Options {
    std::size_t adds = 10000;
    std::string dir = "/tmp";
};

bool parse(int argc, char** argv, Options* options) {
    return bench::parseNamedValues(argc, argv, [&](const std::string& name, const char* value) {
        if (name == "--adds") return bench::parseCount(value, 1, 10000000, &options->adds);
        if (name != "--dir") return false;
        options->dir = value;
        return true;
    });
}

// Adds `adds` language pairs to a fresh project, inside one transaction or not, and
// gives the seconds the adds took (the commit of the transaction included).
double timeAdds(const bench::ScratchDir& scratch, const char* name, std::size_t adds,
                bool batched) {
    CDbProject db;
    check(qvb::createForUse(db, scratch.path().c_str(), name), db,
          (std::string("create ") + name).c_str());
    const double seconds = bench::secondsOf([&] {
        if (batched) check(db.BeginTransaction(), db, "BeginTransaction");
        for (std::size_t i = 0; i < adds; ++i) {
            DWORD id = 0;
            check(db.AddSLang(&id, 1033, 1031 + static_cast<DWORD>(i % 64), "MS Shell Dlg", 0), db,
                  "AddSLang");
        }
        if (batched) check(db.CommitTransaction(), db, "CommitTransaction");
    });

    DWORD count = 0;
    check(db.GetSLangCount(&count), db, "GetSLangCount");
    if (count != adds) {
        bench::fail(std::string(name) + ": " + std::to_string(count) + " pairs after " +
                    std::to_string(adds) + " adds");
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
        bench::ScratchDir scratch(options.dir, "batched_adds");
        const double separate = timeAdds(scratch, "separate", options.adds, false);
        const double batched = timeAdds(scratch, "batched", options.adds, true);
        const double perAdd = 1e6 / static_cast<double>(options.adds);
        std::printf("%zu AddSLang calls on a fresh project each, in %s\n", options.adds,
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
