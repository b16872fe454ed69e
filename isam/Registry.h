// The process-wide registry of named engine instances. The selected instance is
// kept per thread, so two threads may each work on their own database.
#pragma once

#include <memory>

#include "isam/Instance.h"

namespace isam {

int registryAdd(const char* name);
int registryRemove(const char* name);
int registrySelect(const char* name);
// The selected instance, or null.
Instance* selectedInstance();

}  // namespace isam
