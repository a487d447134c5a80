#pragma once

/// The load-module handler: which load modules a node has, and which files they tag.
/// May be called from any thread. All texts are NUL-terminated and owned by the handler.

#ifdef __cplusplus
extern "C" {
#endif

/// One tagged file of a load module.
typedef struct Velk_lm_file {
    const char* tag;
    const char* path;
} Velk_lm_file;

/// One load module.
typedef struct Velk_lm {
    const char* name;
    const char* productNumber;
    const char* revision;
    unsigned long fileCount;
    const Velk_lm_file* files; ///< `fileCount` entries laid end to end
} Velk_lm;

typedef struct Velk_lm_list {
    unsigned long count;
    const Velk_lm* lms; ///< `count` records laid end to end
} Velk_lm_list;

/// Fills `list` with the load modules of `category` ("central", "local" or "dynamic"). `context` is
/// reserved and null. Returns 0, after which `list` must be given to `Velk_free_buffers`, or an
/// error code, after which `list` holds nothing to release.
int Velk_get_lms(void* context, char* category, Velk_lm_list* list);

/// Releases what one successful query put into `list`.
void Velk_free_buffers(Velk_lm_list* list);

#ifdef __cplusplus
}
#endif
