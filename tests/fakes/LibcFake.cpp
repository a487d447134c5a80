#include <unistd.h>

#include "FakePlatform.h"

// Takes the place of the C library's: no test waits.
extern "C" int usleep(useconds_t microseconds) {
    platform().record("usleep " + std::to_string(microseconds));
    platform().called("usleep");
    return 0;
}
