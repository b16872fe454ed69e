// The engine instance of one database. Construction registers the first free
// name "IsamInstance0" .. "IsamInstance99" and sizes the instance; a database
// whose registration failed finds out at its first engine call.
#pragma once

#include "core/IsamDb.h"

class CTrovaDB : public CIsamDb {
    DECLARE_DYNAMIC(CTrovaDB)

public:
    static constexpr int kMostInstances = 100;

    CTrovaDB();
    ~CTrovaDB() override;
    CTrovaDB(const CTrovaDB&) = delete;
    CTrovaDB& operator=(const CTrovaDB&) = delete;

private:
    // Registers the instance and initialises it. The fourth number is not used:
    // the first is passed again in its place, the way the engine has always been set up.
    int SetUp(int buffers, int files, int sectors, int dataBuffers, int userProfile, int reserved1,
              int reserved2, int reserved3);
    int RegisterFreeName();
};
