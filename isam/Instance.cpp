#include "isam/Instance.h"

#include <algorithm>

namespace isam {

namespace {
// File numbers are 16-bit and 65535 means "not open".
constexpr int kMostFiles = 65535;
}  // namespace

Instance::~Instance() { closeContainer(); }

int Instance::initialise(int files) {
    if (files <= 0 || files > kMostFiles) return ISAM_BAD_PARAMETER;
    if (container_) return ISAM_ALREADY_OPEN;
    slots_.assign(static_cast<std::size_t>(files), Slot{});
    return ISAM_OK;
}

int Instance::allocate(std::size_t count, FileNumber* first) const {
    std::size_t run = 0;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        run = slots_[i].used ? 0 : run + 1;
        if (run == count) {
            *first = static_cast<FileNumber>(i + 1 - count);
            return ISAM_OK;
        }
    }
    return ISAM_TOO_MANY_FILES;
}

void Instance::releaseAll() {
    for (Slot& slot : slots_) slot = Slot{};
}

int Instance::attachContainer(const std::string& path, bool create, FileNumber* file) {
    if (container_) return ISAM_ALREADY_OPEN;
    FileNumber number = 0;
    int rc = allocate(1, &number);
    if (rc) return rc;
    rc = create ? Container::create(path, &container_) : Container::open(path, &container_);
    if (rc) return rc;
    slots_[number].used = true;
    if (file) *file = number;
    return ISAM_OK;
}

int Instance::closeContainer() {
    if (!container_) return ISAM_NOT_OPEN;
    int rc = container_->close();
    container_.reset();
    releaseAll();
    return rc;
}

int Instance::adopt(Member* member, std::size_t requestedIndexes, FileNumber* dataFile) {
    // The caller numbers the indexes of the definition it passed; a member with
    // fewer of its own answers for the others that they do not exist.
    const std::size_t count = 1 + std::max(member->indexCount(), requestedIndexes);
    FileNumber first = 0;
    int rc = allocate(count, &first);
    if (rc) {
        container_->closeMember(member);
        return rc;
    }
    for (std::size_t i = 0; i < count; ++i) slots_[first + i] = Slot{true, member, i};
    *dataFile = first;
    return ISAM_OK;
}

int Instance::createMember(const FileDefinition& definition, FileNumber* dataFile) {
    if (!container_) return ISAM_NOT_OPEN;
    FileNumber probe = 0;
    int rc = allocate(1 + definition.indexes.size(), &probe);
    if (rc) return rc;
    Member* member = nullptr;
    if ((rc = container_->createMember(definition, &member))) return rc;
    return adopt(member, definition.indexes.size(), dataFile);
}

int Instance::openMember(const FileDefinition& definition, FileNumber* dataFile) {
    if (!container_) return ISAM_NOT_OPEN;
    Member* member = nullptr;
    int rc = container_->openMember(definition, &member);
    if (rc) return rc;
    return adopt(member, definition.indexes.size(), dataFile);
}

int Instance::closeMember(FileNumber dataFile) {
    Member* member = nullptr;
    int rc = this->dataFile(dataFile, &member);
    if (rc) return rc;
    for (std::size_t i = dataFile; i < slots_.size() && slots_[i].member == member; ++i) {
        slots_[i] = Slot{};
    }
    return container_->closeMember(member);
}

int Instance::memberFile(FileNumber file, Member** member, std::size_t* ordinal) const {
    if (file >= slots_.size() || !slots_[file].used) return ISAM_NOT_OPEN;
    if (!slots_[file].member || slots_[file].ordinal > slots_[file].member->indexCount()) {
        return ISAM_BAD_FILE_NUMBER;
    }
    *member = slots_[file].member;
    *ordinal = slots_[file].ordinal;
    return ISAM_OK;
}

int Instance::dataFile(FileNumber file, Member** member) const {
    std::size_t ordinal = 0;
    int rc = memberFile(file, member, &ordinal);
    if (rc) return rc;
    return ordinal == 0 ? ISAM_OK : ISAM_BAD_FILE_NUMBER;
}

int Instance::indexFile(FileNumber file, Member** member, std::size_t* index) const {
    std::size_t ordinal = 0;
    int rc = memberFile(file, member, &ordinal);
    if (rc) return rc;
    if (ordinal == 0) return ISAM_BAD_FILE_NUMBER;
    *index = ordinal - 1;
    return ISAM_OK;
}

}  // namespace isam
