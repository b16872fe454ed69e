// The scalar types of the exported interface. `LONG` is 32 bits on every target
// so that record structures keep their layout.
#pragma once

#include <cstdint>

typedef std::uint8_t BYTE;
typedef std::uint16_t WORD;
typedef std::uint32_t DWORD;
typedef int BOOL;
typedef std::int32_t LONG;
typedef DWORD LCID;
typedef unsigned int UINT;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif
