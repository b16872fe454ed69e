#include "qvb/QvbVersion.h"

extern "C" QVB_API const char* QvbLibraryVersion() { return "1.0.0"; }
