#include "core/IsamContainer.h"

#include "core/Catalogue.h"

IMPLEMENT_DYNAMIC(CIsamContainer, CIsamFile)

int CIsamContainer::Create() {
    int rc = SelectInstance();
    if (rc == isam::ISAM_OK) {
        rc = isam::createContainer(FullName().c_str(), qvb::catalogue::kContainerMode,
                                   qvb::catalogue::kExtent, &m_fileNumber);
    }
    return rc;
}

int CIsamContainer::Open() {
    int rc = SelectInstance();
    if (rc == isam::ISAM_OK) {
        rc = isam::openContainer(FullName().c_str(), qvb::catalogue::kContainerMode, &m_fileNumber);
    }
    return rc;
}

int CIsamContainer::Close() {
    int rc = SelectInstance();
    if (rc == isam::ISAM_OK) rc = isam::closeContainer();
    // Whatever the outcome, the engine has let go of the container.
    m_fileNumber = isam::kNoFile;
    return rc;
}

int CIsamContainer::HoldsMember(const char* table, bool* held) {
    const int rc = SelectInstance();
    return rc == isam::ISAM_OK ? isam::holdsMember(table, held) : rc;
}
