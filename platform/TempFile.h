// A temporary file in the system's temporary directory, made under a name prefix
// and removed when the object goes, whatever happened in between.
#pragma once

#include <string>

namespace platform {

class TempFile {
public:
    // Creates the empty file "<temporary directory>/<prefix>XXXXXX" under a name
    // no other file has; created() tells whether that worked.
    explicit TempFile(const char* prefix);
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    bool created() const { return !path_.empty(); }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace platform
