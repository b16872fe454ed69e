// Error numbers of the ISAM engine. Every engine call returns one of these; the
// database layer passes them up unchanged, so they are part of the library's
// interface. The storage backend's own result codes never leave the engine.
#pragma once

namespace isam {

constexpr int ISAM_OK = 0;

// Positioning found no (further) record; also a missing resource.
constexpr int ISAM_NO_RECORD = 101;
// An instance of that name is already registered in this process.
constexpr int ISAM_INSTANCE_TAKEN = 518;

// Instances.
constexpr int ISAM_NO_INSTANCE = 601;      // none selected, or the name is not registered
constexpr int ISAM_NOT_INITIALISED = 602;  // the selected instance has not been initialised
constexpr int ISAM_BAD_PARAMETER = 603;    // an argument is out of range or malformed

// Files.
constexpr int ISAM_FILE_NOT_FOUND = 611;       // the container or member does not exist
constexpr int ISAM_FILE_EXISTS = 612;          // create found the container or member there
constexpr int ISAM_NOT_OPEN = 613;             // no container open, or the file number is free
constexpr int ISAM_BAD_FILE_NUMBER = 614;      // the file number is of the wrong kind
constexpr int ISAM_TOO_MANY_FILES = 615;       // the instance's file numbers are used up
constexpr int ISAM_ALREADY_OPEN = 616;         // the container or member is open already
constexpr int ISAM_FILE_BUSY = 617;            // another process holds the container
constexpr int ISAM_IS_DIRECTORY = 618;         // the path names a directory
constexpr int ISAM_NOT_CONTAINER = 619;        // a sound file, but no container of this engine

// Damage and the operating system.
constexpr int ISAM_DAMAGED = 621;        // a container, or what may be one, that is damaged
constexpr int ISAM_IO_ERROR = 622;       // reading or writing the file failed
constexpr int ISAM_DISK_FULL = 623;      // no space left for the file
constexpr int ISAM_OUT_OF_MEMORY = 624;  // an allocation failed
constexpr int ISAM_READ_ONLY = 625;      // the file cannot be written
constexpr int ISAM_ACCESS_DENIED = 626;  // no permission for the file or its directory

// Records and keys.
constexpr int ISAM_DUPLICATE_KEY = 631;      // would duplicate a key of a unique index
constexpr int ISAM_NO_CURRENT_RECORD = 632;  // rewrite, delete or next without a current record
constexpr int ISAM_RECORD_TOO_LONG = 633;    // a text or the record exceeds its definition
constexpr int ISAM_RECORD_TOO_SHORT = 634;   // shorter than its fixed part, or malformed
constexpr int ISAM_KEY_TOO_LONG = 635;       // a key value longer than the index's key
constexpr int ISAM_BAD_KEY = 636;            // a key value cuts an integer segment or the position
constexpr int ISAM_BUFFER_TOO_SHORT = 637;   // the caller's buffer cannot hold the data
constexpr int ISAM_FILE_FULL = 638;          // record positions (32 bits) are exhausted
constexpr int ISAM_RESOURCE_EXISTS = 639;    // a resource of that type and number exists

// Batches.
constexpr int ISAM_NO_BATCH = 641;  // end or abort of a batch that was never begun

constexpr int ISAM_INTERNAL = 699;  // an engine invariant failed

// A short English description of an engine error number.
const char* errorText(int error);

}  // namespace isam
