#include "platform/TempFile.h"

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace platform {

TempFile::TempFile(const char* prefix) {
    std::error_code error;
    const std::filesystem::path directory = std::filesystem::temp_directory_path(error);
    if (error) return;
    std::string pattern = (directory / (std::string(prefix ? prefix : "") + "XXXXXX")).string();
    const int descriptor = ::mkstemp(pattern.data());
    if (descriptor < 0) return;
    // Only the name is wanted: whoever fills the file opens it by that name.
    ::close(descriptor);
    path_ = std::move(pattern);
}

TempFile::~TempFile() {
    if (created()) ::unlink(path_.c_str());
}

}  // namespace platform
