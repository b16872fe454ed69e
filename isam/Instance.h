// One engine instance: its container, its file numbers and its batch depth.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "isam/Container.h"
#include "isam/Isam.h"

namespace isam {

class Instance {
public:
    explicit Instance(std::string name) : name_(std::move(name)) {}
    ~Instance();

    const std::string& name() const { return name_; }
    bool initialised() const { return !slots_.empty(); }
    int initialise(int files);

    Container* container() const { return container_.get(); }
    // Creates or opens the instance's one container.
    int attachContainer(const std::string& path, bool create, FileNumber* file);
    int closeContainer();

    int createMember(const FileDefinition& definition, FileNumber* dataFile);
    int openMember(const FileDefinition& definition, FileNumber* dataFile);
    int closeMember(FileNumber dataFile);

    // Resolve a file number: the member and, for an index, its 0-based number.
    int dataFile(FileNumber file, Member** member) const;
    int indexFile(FileNumber file, Member** member, std::size_t* index) const;
    // Any member file: ordinal 0 for the data file, 1..n for its indexes.
    int memberFile(FileNumber file, Member** member, std::size_t* ordinal) const;

    int& batchDepth() { return batchDepth_; }
    // The storage failure that lost the open batch's work (0 while none): the batch
    // runs nothing more and answers it at its end.
    int& batchFailure() { return batchFailure_; }

    // Set when the registry forgets the instance; a thread that still has it
    // selected must select again.
    bool removed() const { return removed_.load(); }
    void markRemoved() { removed_.store(true); }

private:
    struct Slot {
        bool used = false;
        Member* member = nullptr;  // null for the container itself
        std::size_t ordinal = 0;   // 0 data file, 1..n index files
    };

    int allocate(std::size_t count, FileNumber* first) const;
    int adopt(Member* member, std::size_t requestedIndexes, FileNumber* dataFile);
    void releaseAll();

    std::string name_;
    std::vector<Slot> slots_;
    std::unique_ptr<Container> container_;
    int batchDepth_ = 0;
    int batchFailure_ = 0;
    std::atomic<bool> removed_{false};
};

}  // namespace isam
