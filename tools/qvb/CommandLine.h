// What every command of the tool shares: its arguments, --help, exit codes and the
// way a failure or a wrong call is reported.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qvbtool {

enum ExitCode : int {
    kExitOk = 0,
    kExitFailed = 1,  // the operation failed; the message names the error code
    kExitUsage = 2,   // wrong arguments; nothing was done
};

// A command's arguments, the command name not among them.
using Args = std::vector<std::string>;

// Arguments split into options ("--json") and the rest, each in the order given.
struct SplitArgs {
    std::vector<std::string> options;
    std::vector<std::string> operands;
};
SplitArgs splitArgs(const Args& args);

// Takes "--NAME VALUE" or "--NAME=VALUE" (`option` is "--NAME") out of `args`,
// leaving the rest for splitArgs. False, with the reason, when the value is
// missing or the option is given twice.
bool takeOptionValue(Args& args, const std::string& option, std::optional<std::string>* value,
                     std::string* problem);

// A decimal number of 0 to 2^32-1, digits only.
bool parseUnsigned32(const std::string& text, std::uint32_t* value);

bool wantsHelp(const Args& args);

// Prints `usage` to stdout; kExitOk.
int printHelp(const char* usage);
// "qvb COMMAND: message" and the first line of the usage to stderr; kExitUsage.
int usageError(const char* command, const std::string& message, const char* usage);
// "qvb COMMAND: what: error N (meaning)" to stderr; kExitFailed.
int operationFailed(const char* command, const std::string& what, long error);
// "qvb COMMAND: message" to stderr; kExitFailed.
int failed(const char* command, const std::string& message);

// printf into the end of a text.
void appendf(std::string& text, const char* format, ...) __attribute__((format(printf, 2, 3)));

// The library joins directory and name as they are, so a directory needs its
// trailing separator.
std::string withTrailingSlash(const std::string& directory);

}  // namespace qvbtool
