#include "tools/qvb/CommandLine.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <utility>

#include "core/LibraryErrors.h"

namespace qvbtool {

SplitArgs splitArgs(const Args& args) {
    SplitArgs split;
    for (const std::string& arg : args) {
        const bool option = arg.size() > 2 && arg.compare(0, 2, "--") == 0;
        (option || arg == "-h" ? split.options : split.operands).push_back(arg);
    }
    return split;
}

bool takeOptionValue(Args& args, const std::string& option, std::optional<std::string>* value,
                     std::string* problem) {
    const std::string joined = option + "=";
    Args rest;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool separate = arg == option;
        if (!separate && arg.compare(0, joined.size(), joined) != 0) {
            rest.push_back(arg);
            continue;
        }
        if (value->has_value()) {
            *problem = option + " given twice";
            return false;
        }
        if (separate && i + 1 == args.size()) {
            *problem = option + " needs a value";
            return false;
        }
        *value = separate ? args[++i] : arg.substr(joined.size());
    }
    args = std::move(rest);
    return true;
}

bool parseUnsigned32(const std::string& text, std::uint32_t* value) {
    if (text.empty() || text.size() > 10 || text.find_first_not_of("0123456789") != text.npos) {
        return false;
    }
    const unsigned long long number = std::stoull(text);
    if (number > UINT32_MAX) return false;
    *value = static_cast<std::uint32_t>(number);
    return true;
}

bool wantsHelp(const Args& args) {
    for (const std::string& arg : args) {
        if (arg == "--help" || arg == "-h") return true;
    }
    return false;
}

int printHelp(const char* usage) {
    std::fputs(usage, stdout);
    return kExitOk;
}

int usageError(const char* command, const std::string& message, const char* usage) {
    // The synopsis only; --help has the rest.
    const char* end = std::strchr(usage, '\n');
    const int synopsis = end ? static_cast<int>(end - usage) : static_cast<int>(std::strlen(usage));
    std::fprintf(stderr, "qvb %s: %s\n%.*s\n", command, message.c_str(), synopsis, usage);
    return kExitUsage;
}

int operationFailed(const char* command, const std::string& what, long error) {
    std::fprintf(stderr, "qvb %s: %s: error %ld (%s)\n", command, what.c_str(), error,
                 qvbErrorText(static_cast<int>(error)));
    return kExitFailed;
}

int failed(const char* command, const std::string& message) {
    std::fprintf(stderr, "qvb %s: %s\n", command, message.c_str());
    return kExitFailed;
}

void appendf(std::string& text, const char* format, ...) {
    char small[256];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(small, sizeof small, format, args);
    va_end(args);
    if (length < 0) return;
    if (static_cast<std::size_t>(length) < sizeof small) {
        text.append(small, static_cast<std::size_t>(length));
        return;
    }
    std::string large(static_cast<std::size_t>(length) + 1, '\0');
    va_start(args, format);
    std::vsnprintf(large.data(), large.size(), format, args);
    va_end(args);
    text.append(large.data(), static_cast<std::size_t>(length));
}

std::string withTrailingSlash(const std::string& directory) {
    return !directory.empty() && directory.back() == '/' ? directory : directory + "/";
}

}  // namespace qvbtool
