#include "core/LibraryErrors.h"

#include "isam/IsamErrors.h"

const char* qvbErrorText(int error) {
    switch (error) {
        case QVB_NO_SUCH_FIELD: return "no field of that name, or its type does not fit";
        case QVB_NO_SCHEMA: return "the table has no record schema, or the record cannot be packed";
        case QVB_TABLE_NOT_OPEN: return "the table is not open";
        case QVB_NO_INSTANCE: return "no engine instance could be registered";
        case QVB_EMPTY_FILE_NAME: return "empty file name";
        case QVB_RESOURCE_BUFFER_SHORT: return "the buffer is shorter than the stored resource";
        case QVB_NOT_REGISTERED: return "the table is not registered with this database";
        case QVB_FETCH_MISMATCH: return "a keyed fetch returned another number of records than counted";
        case QVB_REGISTRATION_FAILED: return "the container or a table could not be registered";
        case QVB_OUTPUT_CREATE_FAILED: return "the output file could not be created";
        case QVB_OUTPUT_WRITE_FAILED: return "writing the output file failed";
        case QVB_OUTPUT_CLOSE_FAILED: return "closing the output file failed";
        case QVB_INPUT_OPEN_FAILED: return "the input file or the packed archive could not be opened";
        case QVB_ARCHIVE_FAILED: return "no temporary file could be made, or the archive could not be written";
        case QVB_UNKNOWN_KIND: return "no resource table has that element kind";
        case QVB_OTHER_KIND: return "the file is a database of the other kind";
    }
    return error >= 0 ? isam::errorText(error) : "unknown library error";
}
