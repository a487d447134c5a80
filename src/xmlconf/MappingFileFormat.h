#pragma once

namespace dolq::xmlconf {

// The names in an alarm mapping file, whose root element may have any name:
//
//   <alarmMappings>
//     <mapping faultid="100" minor_type_id="65537" managed_object_class="Port, Link"/>
//   </alarmMappings>
inline constexpr char kMapping[] = "mapping";
inline constexpr char kFaultId[] = "faultid";
inline constexpr char kMinorType[] = "minor_type_id";
inline constexpr char kMoClass[] = "managed_object_class";

} // namespace dolq::xmlconf
