// The tool's commands. Each takes its own arguments and gives the exit code.
#pragma once

#include "tools/qvb/CommandLine.h"
#include "tools/qvb/DatabaseFile.h"

namespace qvbtool {

int runCreate(const Args& args);
int runInfo(const Args& args);
int runDump(const Args& args);
int runDemo(const Args& args);
int runPhrases(const Args& args);
int runLanguages(const Args& args);
int runModules(const Args& args);
int runExtract(const Args& args);

// Opens the database, prints what `qvb info` shows of it and closes it; failures
// are reported under `command`.
int showInfo(const DatabaseFile& file, const char* command, bool check = false);

}  // namespace qvbtool
