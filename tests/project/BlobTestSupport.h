// Shared pieces of the binary-data and module-file tests: a project with a scratch
// directory for disk files, a temporary directory of the test's own (TMPDIR), and
// files of pseudo-random but compressible bytes.
#pragma once

#include <stdio.h>
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/db/DbTestSupport.h"

namespace blobtest {

// Bytes that look like text: words of a small random vocabulary, so that deflate
// finds something to do without the data being trivial.
class SampleBytes {
public:
    explicit SampleBytes(std::uint32_t seed) : state_(seed | 1) {
        for (std::string& word : words_) {
            word.resize(3 + next() % 10);
            for (char& c : word) c = static_cast<char>(next());
        }
    }
    std::string take(std::size_t length) {
        std::string out;
        out.reserve(length + 16);
        while (out.size() < length) out += words_[next() % words_.size()];
        out.resize(length);
        return out;
    }

private:
    std::uint32_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 17;
        state_ ^= state_ << 5;
        return state_;
    }
    std::uint32_t state_;
    std::vector<std::string> words_ = std::vector<std::string>(64);
};

inline std::string sampleBytes(std::size_t length, std::uint32_t seed = 7) {
    return SampleBytes(seed).take(length);
}

inline void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(out.good()) << path;
}

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

inline bool exists(const std::string& path) {
    return std::filesystem::exists(path);
}

// The names in a directory that start with "ZIP", the prefix of packing's temporary files.
inline std::vector<std::string> zipLeftovers(const std::string& directory) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("ZIP", 0) == 0) names.push_back(name);
    }
    return names;
}

// What a shell command prints.
inline std::string commandOutput(const std::string& command) {
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return out;
    char chunk[4096];
    for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, pipe)) > 0;) out.append(chunk, n);
    ::pclose(pipe);
    return out;
}

// Points TMPDIR at a directory for the life of the object.
class TmpDirOverride {
public:
    explicit TmpDirOverride(const std::string& directory) {
        if (const char* old = ::getenv("TMPDIR")) {
            had_ = true;
            old_ = old;
        }
        ::setenv("TMPDIR", directory.c_str(), 1);
    }
    ~TmpDirOverride() {
        if (had_) {
            ::setenv("TMPDIR", old_.c_str(), 1);
        } else {
            ::unsetenv("TMPDIR");
        }
    }
    TmpDirOverride(const TmpDirOverride&) = delete;
    TmpDirOverride& operator=(const TmpDirOverride&) = delete;

private:
    bool had_ = false;
    std::string old_;
};

// A project, a directory for the files going in and out, and a temporary
// directory that nothing else uses, so that leftovers can be counted.
class BlobTest : public dbtest::DbTest<CDbProject> {
protected:
    std::string path(const std::string& name) const { return files_.file(name); }
    // A file of the scratch directory with these bytes; its path.
    std::string fileWith(const std::string& name, const std::string& bytes) const {
        writeFile(path(name), bytes);
        return path(name);
    }
    std::vector<std::string> leftovers() const { return zipLeftovers(temp_.path()); }

    // The blob as stored.
    std::string storedBlob(DWORD id) {
        BYTE* data = nullptr;
        DWORD length = 0;
        EXPECT_EQ(1, db_.GetBinaryData(id, &data, &length)) << db_.GetError();
        const std::string blob(reinterpret_cast<const char*>(data), data ? length : 0);
        delete[] data;
        return blob;
    }
    // The stored blob written to a file, for programs that read archives.
    std::string storedBlobFile(DWORD id, const std::string& name) {
        return fileWith(name, storedBlob(id));
    }

    isamtest::TempDir files_;
    isamtest::TempDir temp_;
    TmpDirOverride tmpdir_{temp_.path()};
};

}  // namespace blobtest
