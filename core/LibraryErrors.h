// The library's own error codes. They are negative; a positive error code is the
// engine's number passed through unchanged.
#pragma once

constexpr int QVB_NO_SUCH_FIELD = -1;         // no field of that name, or its type does not fit
constexpr int QVB_NO_SCHEMA = -4;             // no schema bound, or the record could not be packed
constexpr int QVB_TABLE_NOT_OPEN = -5;        // a table that is not open is closed or reopened
constexpr int QVB_NO_INSTANCE = -9;           // no engine instance could be registered
constexpr int QVB_EMPTY_FILE_NAME = -10;      // an engine-instance operation got an empty name
constexpr int QVB_RESOURCE_BUFFER_SHORT = -11;  // the caller's buffer is shorter than the data
constexpr int QVB_NOT_REGISTERED = -12;       // the table is not registered with the instance
constexpr int QVB_FETCH_MISMATCH = -13;       // a prefix fetch returned another number than its count
constexpr int QVB_REGISTRATION_FAILED = -14;  // the container or a table could not be registered
constexpr int QVB_OUTPUT_CREATE_FAILED = -15;  // the output file could not be created
constexpr int QVB_OUTPUT_WRITE_FAILED = -16;   // writing the output file failed
constexpr int QVB_OUTPUT_CLOSE_FAILED = -17;   // closing the output file failed
constexpr int QVB_INPUT_OPEN_FAILED = -18;     // the input file or the packed archive could not be opened
constexpr int QVB_ARCHIVE_FAILED = -20;        // no temporary file, or the archive could not be made
constexpr int QVB_UNKNOWN_KIND = -21;         // a resource-element kind that names no table
constexpr int QVB_OTHER_KIND = -22;           // the file is a database of the other kind

// A short English description of an error code of either kind.
const char* qvbErrorText(int error);
