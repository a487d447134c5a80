// Compiled against the header that dolqctl makes of the example's mapping files.
#include "Alarms.h"

using namespace site::alarms;

static_assert(kPort_4102.faultId == 4102 && kPort_4102.minorType == 131089);
static_assert(kPort_4102.majorId() == 2 && kPort_4102.minorId() == 17);
static_assert(kNoClass_5102.managedObjectClass[0] == '\0');

const char* nameOfClass() { return kCabinet_4103.managedObjectClass; }
