// qvb extract FILE MODULE-ID OUT: writes a module's stored file out, unpacked.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "tools/qvb/Commands.h"

namespace qvbtool {

namespace {

constexpr const char* kCommand = "extract";

constexpr const char* kUsage =
    "usage: qvb extract FILE MODULE-ID OUT\n"
    "\n"
    "Writes the stored file of module MODULE-ID (its ModulId, as qvb modules lists\n"
    "it) of the project FILE (NAME.Prj) to OUT, unpacked, replacing what OUT held,\n"
    "and prints how many bytes it wrote. A module without a stored file writes\n"
    "nothing and leaves OUT as it was.\n";

struct Request {
    DatabaseFile file;
    std::uint32_t modul = 0;
    std::string out;
};

// kExitOk with the request, or the usage error once reported.
int parseArguments(const Args& args, Request* request) {
    Operands operands;
    const DBTYPEONE project = PROJECT;
    if (const int rc = parseFileOperands(args, 3, "expected FILE, MODULE-ID and OUT", &project, kCommand,
                                         kUsage, &operands)) {
        return rc;
    }
    request->file = operands.file;
    if (!parseUnsigned32(operands.rest[0], &request->modul)) {
        return usageError(kCommand, "MODULE-ID is a ModulId, not '" + operands.rest[0] + "'", kUsage);
    }
    request->out = operands.rest[1];
    if (request->out.empty()) return usageError(kCommand, "empty OUT", kUsage);
    return kExitOk;
}

// Writes the file of an open project and says what it did; kExitOk, or kExitFailed
// once reported.
int extract(CDbProject& db, const Request& request, std::string* text) {
    const std::string modul = "module " + std::to_string(request.modul);
    DWORD stored = 0;
    if (!db.GetModulFileLength(request.modul, &stored)) {
        return operationFailed(kCommand, "cannot read " + modul, db.GetError());
    }
    // The library writes nothing for an empty stored file; say so rather than
    // report an OUT that may not exist or may be an older file.
    if (stored == 0) {
        appendf(*text, "%s has no stored file; nothing written\n", modul.c_str());
        return kExitOk;
    }
    if (!db.WriteModulFile(request.modul, request.out.c_str())) {
        return operationFailed(kCommand, "cannot write " + modul + " to " + request.out,
                               db.GetError());
    }
    std::error_code error;
    const std::uintmax_t written = std::filesystem::file_size(request.out, error);
    if (error) return failed(kCommand, "cannot read back " + request.out + ": " + error.message());
    appendf(*text, "wrote %ju bytes to %s\n", written, request.out.c_str());
    return kExitOk;
}

}  // namespace

int runExtract(const Args& args) {
    if (wantsHelp(args)) return printHelp(kUsage);
    Request request;
    if (const int rc = parseArguments(args, &request)) return rc;

    CDbProject db;
    if (const int rc = openDatabase(db, request.file, kCommand)) return rc;
    std::string text;
    const int extracted = extract(db, request, &text);
    const int closed = closeDatabase(db, request.file, kCommand);
    if (extracted != kExitOk) return extracted;
    if (closed != kExitOk) return closed;
    std::fputs(text.c_str(), stdout);
    return kExitOk;
}

}  // namespace qvbtool
