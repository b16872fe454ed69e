// The library's version, and the export marker of its public interface.
#pragma once

#define QVB_API __attribute__((visibility("default")))

extern "C" QVB_API const char* QvbLibraryVersion();
