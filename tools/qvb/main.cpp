// qvb: the command-line tool over Qvb databases.
#include <cstdio>
#include <exception>
#include <string>

#include "tools/qvb/Commands.h"

namespace {

using namespace qvbtool;

struct Command {
    const char* name;
    int (*run)(const Args&);
};

constexpr Command kCommands[] = {
    {"create", runCreate},
    {"info", runInfo},
    {"dump", runDump},
    {"demo", runDemo},
    {"phrases", runPhrases},
    {"languages", runLanguages},
    {"modules", runModules},
    {"extract", runExtract},
};

constexpr const char* kUsage =
    "usage: qvb <command> [arguments]\n"
    "\n"
    "commands:\n"
    "  create DIR NAME --project|--dictionary   create DIR/NAME.Prj or DIR/NAME.Dic\n"
    "  info FILE [--check]                      kind, version, tables, resources; --check verifies\n"
    "  dump FILE TABLE [--json]                 every record of one table\n"
    "  demo DIR                                 create and show a sample project\n"
    "  phrases FILE [--pair N] [--filter F]     the phrases in TextId order\n"
    "  languages FILE                           the language pairs\n"
    "  modules FILE                             the modules and their language modules\n"
    "  extract FILE MODULE-ID OUT               write a module's stored file to OUT\n"
    "\n"
    "FILE is a project (NAME.Prj) or a dictionary (NAME.Dic); modules and extract\n"
    "take a project. Every command takes --help. Exit codes: 0 success, 1 the\n"
    "operation failed, 2 wrong usage.\n";

int run(int argc, char** argv) {
    if (argc < 2) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    const std::string name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") return printHelp(kUsage);
    for (const Command& command : kCommands) {
        if (name == command.name) return command.run(Args(argv + 2, argv + argc));
    }
    std::fprintf(stderr, "qvb: unknown command '%s'\n\n", name.c_str());
    std::fputs(kUsage, stderr);
    return kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "qvb: %s\n", e.what());
    } catch (...) {
        std::fputs("qvb: unexpected failure\n", stderr);
    }
    return kExitFailed;
}
