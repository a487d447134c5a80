#pragma once

namespace dolq::xmlconf {

// The names in an alarm mapping file. The root element may have any name.
inline constexpr char kMapping[] = "mapping";
inline constexpr char kFaultId[] = "faultid";
inline constexpr char kMinorType[] = "minor_type_id";
inline constexpr char kMoClass[] = "managed_object_class";

} // namespace dolq::xmlconf
