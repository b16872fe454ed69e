#include "tools/qvb/EngineDemo.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "core/Catalogue.h"
#include "isam/Isam.h"

namespace {

using qvb::catalogue::TableDef;

struct Opened {
    const TableDef* table;
    isam::FileNumber file;
};

void putU32(std::vector<unsigned char>& record, std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) record[at + i] = static_cast<unsigned char>(v >> (8 * i));
}

// A module record: ModulId, ModulType, Flags, BinaryDataId, then the name.
std::vector<unsigned char> moduleRecord(std::uint32_t id, const char* name) {
    std::vector<unsigned char> record(14, 0);
    putU32(record, 0, id);
    record[4] = 1;
    record.insert(record.end(), name, name + std::strlen(name) + 1);
    return record;
}

// A language-module record: LangModulId, PairLangId, ModulId, Flags.
std::vector<unsigned char> languageModuleRecord(std::uint32_t id, std::uint32_t pair, std::uint32_t modul) {
    std::vector<unsigned char> record(16, 0);
    putU32(record, 0, id);
    putU32(record, 4, pair);
    putU32(record, 8, modul);
    return record;
}

std::uint32_t readU32(const unsigned char* p) {
    return p[0] | p[1] << 8 | p[2] << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

int fail(const char* step, int rc) {
    std::fprintf(stderr, "qvb demo: %s failed: engine error %d (%s)\n", step, rc, isam::errorText(rc));
    return 1;
}

}  // namespace

int runEngineDemo(const std::string& directory) {
    const std::string path = directory + "/demo.Prj";
    std::remove(path.c_str());
    const char* instance = "IsamInstance0";
    int rc = isam::registerInstance(instance);
    if (!rc) rc = isam::selectInstance(instance);
    if (!rc) rc = isam::initialiseInstance(12, 140, 48, 12, 64, 0, 0, 0);
    if (rc) return fail("instance set-up", rc);

    isam::FileNumber container = isam::kNoFile;
    if ((rc = isam::createContainer(path.c_str(), qvb::catalogue::kContainerMode, qvb::catalogue::kExtent,
                                    &container))) {
        return fail("create container", rc);
    }
    std::vector<Opened> opened;
    isam::beginBatch();
    for (int i = 0; i < qvb::catalogue::kTableCount; ++i) {
        const TableDef* table = qvb::catalogue::currentTable(i);
        isam::FileNumber file = isam::kNoFile;
        if ((rc = isam::createFile(qvb::catalogue::makeFileDefinition(*table, "demo.Prj"), &file))) {
            return fail(table->name, rc);
        }
        opened.push_back({table, file});
    }
    const std::uint32_t version = 21;
    rc = isam::addResource(opened[0].file, 17, 0, &version, sizeof version);
    const isam::FileNumber modul = opened[qvb::catalogue::TAB_MODUL].file;
    const isam::FileNumber lmodul = opened[qvb::catalogue::TAB_LMODUL].file;
    const char* names[] = {"editor.exe", "viewer.dll", "setup.exe"};
    for (std::uint32_t id = 1; id <= 3 && !rc; ++id) {
        auto record = moduleRecord(id, names[id - 1]);
        rc = isam::addRecord(modul, record.data(), record.size(), nullptr);
        for (std::uint32_t pair = 1; pair <= 2 && !rc; ++pair) {
            auto lm = languageModuleRecord(id * 10 + pair, pair, id);
            rc = isam::addRecord(lmodul, lm.data(), lm.size(), nullptr);
        }
    }
    isam::endBatch();
    if (rc) return fail("adding records", rc);
    std::printf("created %s with %zu tables, stored version %u\n", path.c_str(), opened.size(), version);

    std::printf("modules in ModulId order:\n");
    isam::Position position = 0;
    unsigned char buffer[4096];
    for (rc = isam::firstRecord(modul + 1, &position); rc == 0; rc = isam::nextRecord(modul + 1, &position)) {
        std::size_t length = 0;
        if ((rc = isam::readRecord(modul, position, buffer, sizeof buffer, &length))) break;
        std::printf("  %u  %s\n", readU32(buffer), reinterpret_cast<const char*>(buffer + 14));
    }
    if (rc != isam::ISAM_NO_RECORD) return fail("walk", rc);

    // Language modules of pair 2, by the PairLangId index (I2).
    const std::uint32_t pair = 2;
    std::uint32_t count = 0, fetched = 0;
    if ((rc = isam::countByPrefix(lmodul + 2, &pair, 4, &count))) return fail("count", rc);
    std::vector<isam::Position> positions(count);
    if ((rc = isam::fetchByPrefix(lmodul + 2, &pair, 4, count, positions.data(), &fetched))) {
        return fail("fetch", rc);
    }
    std::printf("language modules of pair %u: %u\n", pair, fetched);
    for (isam::Position p : positions) {
        std::size_t length = 0;
        if ((rc = isam::readRecord(lmodul, p, buffer, sizeof buffer, &length))) return fail("read", rc);
        std::printf("  LangModulId %u -> ModulId %u\n", readU32(buffer), readU32(buffer + 8));
    }
    if ((rc = isam::closeContainer())) return fail("close", rc);
    isam::unregisterInstance(instance);
    return 0;
}
