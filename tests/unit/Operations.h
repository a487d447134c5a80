#pragma once

#include "LibraryTest.h"

// Every raise of the client interface, in the order of its declaration, and what it traces and
// sends. The texts are so long that each copy of them takes memory.

inline const std::string kUnitObject = "ManagedElement=1,EquipmentSupportUnit=3";
inline const std::string kClass = "EquipmentSupportUnit";
inline const std::string kName = "the fault's own name, for traces";
inline const std::string kText = "an additional text of some length";
inline const Texts kInfo{"the client's first entry of information", "", "second"};

struct Operation {
    const char* name;
    void (*call)(FaultManagementI&);
    const char* begin; // of the entry trace, whose middle every operation has in common
    const char* end;
    const char* correlationInfo;
    const char* programGroup; // null: the operation has none
};

#define COMMON kUnitObject, 7, kName, kText, kInfo, 3
#define GIVEN "a given system UUID", "a given compute name"
#define GIVEN_TRACE "systemUUID:a given system UUID, computeName:a given compute name"
#define GIVEN_INFO R"(CI={"C": [{"I": "a given system UUID","n": "a given compute name"}],)"
#define EMPTY_TRACE "systemUUID:, computeName:"
#define OWN_INFO                                                                                   \
    R"(CI={"C": [{"I": "the environment's system UUID","n": "the environment's compute name"}],)"
#define LONG_UUID "e7a6d7a4-1f0e-4c43-9c9c-3f8e2a1b0c4d"

inline const Operation kOperations[] = {
    {"Combined",
     [](auto& a) {
         a.raiseAlarm(COMMON, 9, Events{1, 0, 6});
     },
     " Raise Alarm initiated: ", "eventId:9, correlatedEvents:1, 0, 6, programGroup:nonePgGrp",
     OWN_INFO R"("S": ["uuid-1","uuid-6"]})", nullptr},
    {"CombinedWithoutEvents", [](auto& a) { a.raiseAlarm(COMMON, 9, Events{}); },
     " Raise Alarm initiated: ", "eventId:9, correlatedEvents:Empty, programGroup:nonePgGrp",
     OWN_INFO R"("P": "uuid-9"})", nullptr},
    {"Primary32", [](auto& a) { a.raisePrimaryAlarm(COMMON, 4294967295U, GIVEN); },
     "Raise Primary Alarm Initiated: ", "eventId:4294967295, " GIVEN_TRACE,
     GIVEN_INFO R"("P": "uuid-4294967295"})", nullptr},
    {"Primary32Group", [](auto& a) { a.raisePrimaryAlarm(COMMON, 1, "", "", 0U); },
     "Raise Primary Alarm Initiated: ", "eventId:1, " EMPTY_TRACE ", programGroup:gratPgGrp",
     OWN_INFO R"("P": "uuid-1"})", "gratPgGrp"},
    {"Primary128",
     [](auto& a) { a.raisePrimaryAlarm(COMMON, std::string("u\"" LONG_UUID), GIVEN); },
     "Raise Primary Alarm initiated: ", "correlatedEvent128Bit:u\"" LONG_UUID ", " GIVEN_TRACE,
     GIVEN_INFO "\"P\": \"u\"" LONG_UUID "\"}", nullptr},
    {"Primary128Group", [](auto& a) { a.raisePrimaryAlarm(COMMON, std::string("u1"), "", "", 1U); },
     "Raise Primary Alarm initiated: ",
     "correlatedEvent128Bit:u1, " EMPTY_TRACE ", programGroup:wratPgGrp", OWN_INFO R"("P": "u1"})",
     "wratPgGrp"},
    {"Secondary32", [](auto& a) { a.raiseSecondaryAlarm(COMMON, GIVEN, Events{7}); },
     "Raise Secondary Alarm Initiated: ", GIVEN_TRACE ", correlatedEvents32Bit:7",
     GIVEN_INFO R"("S": ["uuid-7"]})", nullptr},
    {"Secondary32Group",
     [](auto& a) {
         a.raiseSecondaryAlarm(COMMON, "", "", Events{7, 42}, 2U);
     },
     "Raise Secondary Alarm Initiated: ",
     EMPTY_TRACE ", correlatedEvents32Bit:7, 42, programGroup:lratPgGrp",
     OWN_INFO R"("S": ["uuid-7","uuid-42"]})", "lratPgGrp"},
    {"Secondary128",
     [](auto& a) {
         a.raiseSecondaryAlarm(COMMON, GIVEN, Texts{LONG_UUID, ""});
     },
     "Raise Secondary Alarm Initiated: ",
     GIVEN_TRACE ", correlatedEvents128Bit:" LONG_UUID ", <empty string>",
     GIVEN_INFO R"("S": [")" LONG_UUID R"(",""]})", nullptr},
    {"CombinedGroup",
     [](auto& a) {
         a.raiseAlarm(COMMON, 9, Events{0, 5}, 3U);
     },
     " Raise Alarm initiated: ", "eventId:9, correlatedEvents:0, 5, programGroup:nrPgGrp",
     OWN_INFO R"("P": "uuid-9"})", "nrPgGrp"},
    {"Secondary128Group", [](auto& a) { a.raiseSecondaryAlarm(COMMON, GIVEN, Texts{"u1"}, 4U); },
     "Raise Secondary Alarm Initiated: ",
     GIVEN_TRACE ", correlatedEvents128Bit:u1, programGroup:nonePgGrp",
     GIVEN_INFO R"("S": ["u1"]})", "nonePgGrp"},
};

#undef COMMON
#undef GIVEN
#undef GIVEN_TRACE
#undef GIVEN_INFO
#undef EMPTY_TRACE
#undef OWN_INFO
#undef LONG_UUID
