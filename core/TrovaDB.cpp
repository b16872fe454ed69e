#include "core/TrovaDB.h"

#include <string>

#include "isam/IsamErrors.h"

IMPLEMENT_DYNAMIC(CTrovaDB, CIsamDb)

CTrovaDB::CTrovaDB() {
    // The outcome is deliberately not kept: without an instance the name stays
    // empty, and every engine call of this database fails on selecting it.
    (void)SetUp(12, 140, 48, 6, 64, 0, 0, 0);
}

CTrovaDB::~CTrovaDB() {
    if (!m_instanceName.empty()) isam::unregisterInstance(m_instanceName.c_str());
}

int CTrovaDB::RegisterFreeName() {
    for (int number = 0; number < kMostInstances; ++number) {
        const std::string name = "IsamInstance" + std::to_string(number);
        const int rc = isam::registerInstance(name.c_str());
        if (rc == isam::ISAM_OK) {
            m_instanceName = name;
            return isam::ISAM_OK;
        }
        if (rc != isam::ISAM_INSTANCE_TAKEN) break;
    }
    return QVB_NO_INSTANCE;
}

int CTrovaDB::SetUp(int buffers, int files, int sectors, int /*dataBuffers*/, int userProfile,
                    int reserved1, int reserved2, int reserved3) {
    int rc = RegisterFreeName();
    if (rc == isam::ISAM_OK) rc = SelectInstance();
    if (rc == isam::ISAM_OK) {
        rc = isam::initialiseInstance(buffers, files, sectors, buffers, userProfile, reserved1,
                                      reserved2, reserved3);
    }
    return rc;
}
