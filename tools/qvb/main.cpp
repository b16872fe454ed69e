// qvb: the command-line tool over Qvb databases.
#include <cstdio>
#include <cstring>
#include <string>

#include "tools/qvb/EngineDemo.h"

namespace {

void usage(FILE* out) {
    std::fputs(
        "usage: qvb <command> [arguments]\n"
        "\n"
        "commands:\n"
        "  demo DIR    build a sample database in DIR and show what it holds\n"
        "\n"
        "Every command takes --help. Exit codes: 0 success, 1 the operation failed,\n"
        "2 wrong usage.\n",
        out);
}

bool wantsHelp(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) return true;
    }
    return false;
}

int demo(int argc, char** argv) {
    if (wantsHelp(argc, argv)) {
        std::puts("usage: qvb demo DIR\n\nCreates DIR/demo.Prj with every project table, adds sample\n"
                  "records and lists them by key.");
        return 0;
    }
    if (argc != 2) {
        std::fputs("qvb demo: expected one directory\n", stderr);
        return 2;
    }
    return runEngineDemo(argv[1]);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        usage(stderr);
        return 2;
    }
    const std::string command = argv[1];
    if (command == "--help" || command == "-h" || command == "help") {
        usage(stdout);
        return 0;
    }
    if (command == "demo") return demo(argc - 1, argv + 1);
    std::fprintf(stderr, "qvb: unknown command '%s'\n", command.c_str());
    usage(stderr);
    return 2;
}
