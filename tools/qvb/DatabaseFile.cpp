#include "tools/qvb/DatabaseFile.h"

#include "tools/qvb/CommandLine.h"

namespace qvbtool {

namespace {

struct Kind {
    DBTYPEONE kind;
    const char* extension;
    const char* name;
};

// The extensions the library gives the files.
constexpr Kind kKinds[] = {
    {PROJECT, ".Prj", "project"},
    {DICTINARY, ".Dic", "dictionary"},
};

const Kind& kindOf(DBTYPEONE kind) {
    return kind == DICTINARY ? kKinds[1] : kKinds[0];
}

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

const char* kindName(DBTYPEONE kind) {
    return kindOf(kind).name;
}

DatabaseFile databaseIn(const std::string& directory, const std::string& name, DBTYPEONE kind) {
    DatabaseFile file;
    file.directory = withTrailingSlash(directory);
    file.name = name;
    file.kind = kind;
    file.path = file.directory + name + kindOf(kind).extension;
    return file;
}

bool parseDatabaseFile(const std::string& path, DatabaseFile* file, std::string* problem) {
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "./" : path.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    for (const Kind& kind : kKinds) {
        if (!endsWith(base, kind.extension)) continue;
        const std::string name = base.substr(0, base.size() - std::string(kind.extension).size());
        if (name.empty()) {
            *problem = "'" + path + "' has no database name before " + kind.extension;
            return false;
        }
        *file = databaseIn(directory, name, kind.kind);
        file->path = path;
        return true;
    }
    *problem = "'" + path + "' is neither a project (.Prj) nor a dictionary (.Dic)";
    return false;
}

std::unique_ptr<CDbObject> newDatabase(DBTYPEONE kind) {
    if (kind == DICTINARY) return std::make_unique<CDbDictionary>();
    return std::make_unique<CDbProject>();
}

int openDatabase(CDbObject& db, const DatabaseFile& file, const char* command) {
    if (db.OpenDb(file.directory.c_str(), file.name.c_str(), 0)) return kExitOk;
    return operationFailed(command, "cannot open " + file.path, db.GetError());
}

int closeDatabase(CDbObject& db, const DatabaseFile& file, const char* command) {
    if (db.CloseDb()) return kExitOk;
    return operationFailed(command, "cannot close " + file.path, db.GetError());
}

int parseFileOperands(const std::vector<std::string>& args, std::size_t count, const char* expected,
                      const DBTYPEONE* kind, const char* command, const char* usage,
                      Operands* operands) {
    const SplitArgs split = splitArgs(args);
    if (!split.options.empty()) return usageError(command, "unknown option " + split.options[0], usage);
    if (split.operands.size() != count) return usageError(command, expected, usage);
    std::string problem;
    if (!parseDatabaseFile(split.operands[0], &operands->file, &problem)) {
        return usageError(command, problem, usage);
    }
    if (kind && operands->file.kind != *kind) {
        return usageError(command, "'" + operands->file.path + "' is not a " + kindName(*kind), usage);
    }
    operands->rest.assign(split.operands.begin() + 1, split.operands.end());
    return kExitOk;
}

}  // namespace qvbtool
