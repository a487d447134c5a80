// Compiles only against NTF headers whose names are what the library writes.

#if defined(SA_EXTENDED_NAME_SOURCE)
#error "SA_EXTENDED_NAME_SOURCE is defined: names are in extended-name mode"
#endif

#include <cstddef>

#include <saNtf.h>

#if !defined(SA_MAX_NAME_LENGTH)
#error "SA_MAX_NAME_LENGTH is not defined: names are in extended-name mode"
#endif

static_assert(SA_MAX_NAME_LENGTH == 600, "SA_MAX_NAME_LENGTH is not 600");
static_assert(sizeof(SaNameT) == 602 && offsetof(SaNameT, length) == 0 &&
                  offsetof(SaNameT, value) == 2,
              "SaNameT is not a 16-bit length and 600 bytes");
