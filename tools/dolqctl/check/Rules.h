#pragma once

#include "MappingFiles.h"

// The rules: enumerator, name, severity and sentence, in which $1 and so on are the texts of a
// finding and $@ is the position of the other mapping or class. Rules of one name are allowed
// together.
#define DOLQCTL_RULES(X)                                                                           \
    X(NotLoaded, "not-loaded", Error, "the file is not read: $1")                                  \
    X(NoMapping, "no-mapping", Error, "the file maps nothing: it has no 'mapping' that is used")   \
    X(UnmappedFault, "unmapped-fault", Error, R"(fault $1 on "$2" has no mapping)")                \
    X(NotWellFormed, "not-well-formed", Error, "$1")                                               \
    X(RootName, "root-name", Warning, R"(the root "$1" is read, but its name is 'alarmMappings')") \
    X(UnreadText, "unread-text", Warning, R"(text is not read: "$1")")                             \
    X(UnreadElement, "unread-text", Error, R"(text is not read: "$1"; is a '<' missing?)")         \
    X(UnknownElement, "unknown-element", Warning, R"(the element "$1" is not read)")               \
    X(LostElement, "unknown-element", Error, R"(the element "$1" is not read: $2)")                \
    X(UnknownAttribute, "unknown-attribute", Warning, R"(the attribute "$1" is ignored)")          \
    X(LostAttribute, "unknown-attribute", Error,                                                   \
      R"(the attribute "$1" is ignored: did you mean '$2'?)")                                      \
    X(MissingAttribute, "missing-attribute", Error, "no '$1': the element is skipped")             \
    X(MissingClass, "missing-class", Warning,                                                      \
      "no 'managed_object_class': only an object without a class gets this alarm")                 \
    X(NotAnInteger, "not-an-integer", Error, R"($1="$2" is no integer: the element is skipped)")   \
    X(TextAfterNumber, "text-after-number", Error,                                                 \
      R"($1="$2" is read as $3: what follows is ignored)")                                         \
    X(OtherNumber, "beyond-32-bits", Error,                                                        \
      R"($1="$2" does not fit 32 bits with a sign: it is read as $3)")                             \
    X(Beyond32Bits, "beyond-32-bits", Warning,                                                     \
      R"($1="$2" does not fit 32 bits with a sign: write $4)")                                     \
    X(NegativeNumber, "negative-number", Warning, R"($1="$2" stands for $3: is that meant?)")      \
    X(NoMajorId, "no-major-id", Warning,                                                           \
      R"(minor_type_id="$1" is the alarm 0/$1; for 2/$1 write "$2")")                              \
    X(NoMinorId, "no-minor-id", Warning, R"(minor_type_id="$1" is the alarm $2: is that meant?)")  \
    X(SwappedIds, "swapped-ids", Warning,                                                          \
      R"(minor_type_id="$1" is alarm 0/$1, and faultid="$2" would be $3: exchanged?)")             \
    X(NoClass, "no-class", Error,                                                                  \
      R"(managed_object_class="$1" holds no class: the element maps nothing)")                     \
    X(EmptyClass, "empty-class", Warning,                                                          \
      "an empty piece of the class list is an entry without a class")                              \
    X(BlankInClass, "blank-in-class", Error,                                                       \
      R"(managed_object_class="$1" is read without its blanks: is a comma missing?)")              \
    X(ClassNeverMatches, "class-never-matches", Error,                                             \
      R"(the class "$1" never matches: that of an object has no white space and no '=')")          \
    X(ClassCharacter, "class-character", Error,                                                    \
      R"(the class "$1" is one: only commas separate, and nothing is a pattern or quoted)")        \
    X(ClassPunctuation, "class-character", Warning,                                                \
      R"(the class "$1" holds a character that classes hardly have: is it meant?)")                \
    X(BeyondAscii, "beyond-ascii", Warning,                                                        \
      R"(the class "$1" holds $2: objects must be named with the very same)")                      \
    X(Misleading, "beyond-ascii", Error,                                                           \
      R"(the class "$1" holds $2, which looks like another character or like nothing)")            \
    X(NotUtf8, "not-utf-8", Error,                                                                 \
      R"(the class "$1" is not UTF-8: save the file so, and declare encoding="UTF-8")")            \
    X(ClassCase, "class-case", Warning,                                                            \
      R"(the class "$1" is not "$2" at $@: letter case and accents count)")                        \
    X(SimilarClass, "similar-class", Warning,                                                      \
      R"(the class "$1" occurs once, and "$2" $3 times: is that meant?)")                          \
    X(Repeated, "duplicate", Warning, R"(fault $1 on "$2" is mapped to $3 already at $@)")         \
    X(Duplicate, "duplicate", Error, R"(fault $1 on "$2" gets $3 in place of $4 at $@)")           \
    X(Override, "override", Warning, R"(fault $1 on "$2" gets $3 in place of $4 at $@)")           \
    X(LostTag, "misspelt-tag", Error, R"(tag="$1" is not 'alarm_mapping': nobody reads the file)") \
    X(OtherTag, "misspelt-tag", Warning,                                                           \
      R"(tag="$1" is not 'alarm_mapping': nobody reads the file)")                                 \
    X(MissingFile, "missing-file", Warning,                                                        \
      R"(path="$1", from the folder of the manifest, is no regular file or the manifest)")         \
    X(NoLoadModule, "no-load-module", Warning, "the manifest names no load module")                \
    X(OddNumber, "odd-number", Warning,                                                            \
      R"($1="$2" is empty, or holds a blank or what is not ASCII: is that meant?)")

namespace dolqctl {

#define DOLQCTL_ENUMERATOR(rule, name, severity, sentence) rule,
enum class Rule : int { DOLQCTL_RULES(DOLQCTL_ENUMERATOR) };
#undef DOLQCTL_ENUMERATOR

} // namespace dolqctl
