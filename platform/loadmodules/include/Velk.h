#pragma once

/// The load-module handler: which load modules a node has, and which files they tag.
/// Both calls may be made from any thread at any time; a list belongs to one thread at a time.
/// C linkage, 64-bit layouts: the records below are part of the binary interface.

#ifdef __cplusplus
extern "C" {
#endif

/// What `Velk_get_lms` returns.
enum Velk_result {
    VELK_OK = 0,
    VELK_BAD_ARGUMENT = 1,        ///< no category or no list was given
    VELK_UNKNOWN_CATEGORY = 2,    ///< not "central", "local" or "dynamic"
    VELK_UNREADABLE_MANIFEST = 3, ///< it exists, but is no readable regular file
    VELK_MALFORMED_MANIFEST = 4,  ///< it was read, but is not what the format asks for
    VELK_NO_MEMORY = 5
};

/// One tagged file of a load module. Both texts are NUL-terminated and never null.
typedef struct Velk_lm_file {
    const char* tag;  ///< what the file is for, e.g. "alarm_mapping"
    const char* path; ///< opens the file as it stands
} Velk_lm_file;

/// One load module. All texts are NUL-terminated and never null.
typedef struct Velk_lm {
    const char* name; ///< for people; may be empty
    const char* productNumber;
    const char* revision;
    unsigned long fileCount;
    const Velk_lm_file* files; ///< `fileCount` entries laid end to end; null when there are none
} Velk_lm;

typedef struct Velk_lm_list {
    unsigned long count;
    const Velk_lm* lms; ///< `count` records laid end to end; null when there are none
} Velk_lm_list;

/// Fills `list` with the load modules of `category` ("central", "local" or "dynamic"; not
/// written to). `context` is reserved and null. Everything reachable from the list is owned by it
/// and stays valid until `Velk_free_buffers`. Returns `VELK_OK`, or the `Velk_result` that
/// tells why not; the list, whatever it held, is then empty with nothing to release.
int Velk_get_lms(void* context, char* category, Velk_lm_list* list);

/// Releases what one query put into `list` and leaves it empty. Null and empty lists are fine.
void Velk_free_buffers(Velk_lm_list* list);

#ifdef __cplusplus
}
#endif
