#include "isam/Registry.h"

#include <cstring>
#include <map>
#include <mutex>
#include <string>

namespace isam {

namespace {

std::mutex gLock;
std::map<std::string, std::shared_ptr<Instance>>& instances() {
    static std::map<std::string, std::shared_ptr<Instance>> all;
    return all;
}
thread_local std::shared_ptr<Instance> tSelected;

}  // namespace

int registryAdd(const char* name) {
    if (!name || !*name) return ISAM_BAD_PARAMETER;
    std::lock_guard<std::mutex> guard(gLock);
    auto& all = instances();
    if (all.count(name)) return ISAM_INSTANCE_TAKEN;
    all.emplace(name, std::make_shared<Instance>(name));
    return ISAM_OK;
}

int registryRemove(const char* name) {
    if (!name) return ISAM_BAD_PARAMETER;
    std::shared_ptr<Instance> instance;
    {
        std::lock_guard<std::mutex> guard(gLock);
        auto& all = instances();
        auto it = all.find(name);
        if (it == all.end()) return ISAM_NO_INSTANCE;
        instance = std::move(it->second);
        all.erase(it);
        instance->markRemoved();
    }
    if (tSelected == instance) tSelected.reset();
    int rc = instance->container() ? instance->closeContainer() : ISAM_OK;
    return rc;
}

int registrySelect(const char* name) {
    if (!name) return ISAM_BAD_PARAMETER;
    // Selecting the instance already selected is the common case and takes no lock.
    if (tSelected && !tSelected->removed() && tSelected->name() == name) return ISAM_OK;
    std::lock_guard<std::mutex> guard(gLock);
    auto& all = instances();
    auto it = all.find(name);
    if (it == all.end()) return ISAM_NO_INSTANCE;
    tSelected = it->second;
    return ISAM_OK;
}

Instance* selectedInstance() {
    return tSelected && !tSelected->removed() ? tSelected.get() : nullptr;
}

}  // namespace isam
