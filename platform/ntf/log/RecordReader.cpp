#include "platform/ntf/log/RecordReader.h"

#include <charconv>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

namespace platform::ntf {

namespace {

using Scalar = RecordReader::Scalar;

template <typename Number> bool toNumber(const Scalar& value, Number& number) {
    using Limits = std::numeric_limits<Number>;
    if (const auto* const positive = std::get_if<std::uint64_t>(&value)) {
        number = static_cast<Number>(*positive);
        return *positive <= std::uint64_t{Limits::max()};
    }
    const auto* const negative = std::get_if<std::int64_t>(&value);
    if (negative == nullptr || *negative < Limits::min()) {
        return false;
    }
    number = static_cast<Number>(*negative);
    return true;
}

bool toText(Scalar& value, std::string& text) {
    auto* const given = std::get_if<std::string>(&value);
    if (given == nullptr) {
        return false;
    }
    text = std::move(*given);
    return true;
}

bool toBytes(const Scalar& value, std::string& bytes) {
    const auto* const hex = std::get_if<std::string>(&value);
    if (hex == nullptr || hex->size() % 2 != 0) {
        return false;
    }
    bytes.clear();
    for (const char* digits = hex->data(); digits != hex->data() + hex->size(); digits += 2) {
        unsigned char byte = 0;
        if (std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) {
            return false;
        }
        bytes += static_cast<char>(byte);
    }
    return true;
}

template <auto Member>
constexpr auto kNumber = [](auto& owner, Scalar& value) { return toNumber(value, owner.*Member); };
template <auto Member>
constexpr auto kText = [](auto& owner, Scalar& value) { return toText(value, owner.*Member); };
template <auto Member>
constexpr auto kBytes = [](auto& owner, Scalar& value) { return toBytes(value, owner.*Member); };

bool storeId(AlarmRecord& record, Scalar& value) {
    const auto* const digits = std::get_if<std::string>(&value);
    if (digits == nullptr) {
        return false;
    }
    const char* const end = digits->data() + digits->size();
    const auto result = std::from_chars(digits->data(), end, record.notificationId);
    return result.ec == std::errc{} && result.ptr == end;
}

bool isAlarm(AlarmRecord& /*record*/, Scalar& value) {
    const auto* const type = std::get_if<std::string>(&value);
    return type != nullptr && *type == "alarm";
}

bool storeValue(Element& element, Scalar& value) {
    if (std::holds_alternative<bool>(value)) {
        return false;
    }
    std::visit(
        [&element](auto& given) {
            if constexpr (!std::is_same_v<std::decay_t<decltype(given)>, bool>) {
                element.value = std::move(given);
            }
        },
        value);
    return true;
}

bool storeValueBytes(Element& element, Scalar& value) {
    return toBytes(value, element.value.emplace<std::string>());
}

/// A text that is not UTF-8 is followed by its bytes, which replace it.
enum class Presence { Required, Optional };

template <typename Owner> struct Field {
    std::string_view key;
    bool (*store)(Owner& owner, Scalar& value);
    Presence presence = Presence::Required;
};

constexpr Field<AlarmRecord> kRecordFields[] = {
    {"notificationId", storeId},
    {"eventTimeNs", kNumber<&AlarmRecord::eventTimeNs>},
    {"notificationType", isAlarm},
    {"eventTypeCode", kNumber<&AlarmRecord::eventType>},
    {"notificationObject", kText<&AlarmRecord::notificationObject>},
    {"notificationObjectHex", kBytes<&AlarmRecord::notificationObject>, Presence::Optional},
    {"notifyingObject", kText<&AlarmRecord::notifyingObject>},
    {"notifyingObjectHex", kBytes<&AlarmRecord::notifyingObject>, Presence::Optional},
    {"perceivedSeverityCode", kNumber<&AlarmRecord::perceivedSeverity>},
    {"probableCause", kNumber<&AlarmRecord::probableCause>},
    {"trend", kNumber<&AlarmRecord::trend>},
    {"thresholdId", kNumber<&AlarmRecord::thresholdId>},
    {"additionalText", kText<&AlarmRecord::additionalText>},
    {"additionalTextHex", kBytes<&AlarmRecord::additionalText>, Presence::Optional},
    {"processId", kNumber<&AlarmRecord::processId>},
    {"threadId", kNumber<&AlarmRecord::threadId>},
    // Seen when they begin: what is inside has fields of its own.
    {"classId", nullptr},
    {"additionalInfo", nullptr},
    {"proposedRepairActions", nullptr}};

constexpr Field<AlarmRecord> kClassFields[] = {{"vendorId", kNumber<&AlarmRecord::vendorId>},
                                               {"majorId", kNumber<&AlarmRecord::majorId>},
                                               {"minorId", kNumber<&AlarmRecord::minorId>}};

constexpr Field<Element> kInfoFields[] = {{"infoId", kNumber<&Element::id>},
                                          {"infoType", kNumber<&Element::type>},
                                          {"value", storeValue},
                                          {"valueHex", storeValueBytes, Presence::Optional}};

constexpr Field<Element> kActionFields[] = {{"actionId", kNumber<&Element::id>},
                                            {"actionValueType", kNumber<&Element::type>},
                                            {"value", storeValue},
                                            {"valueHex", storeValueBytes, Presence::Optional}};

template <typename Fields> std::size_t indexOf(const Fields& fields, std::string_view key) {
    std::size_t index = 0;
    while (index < std::size(fields) && fields[index].key != key) {
        ++index;
    }
    return index;
}

} // namespace

template <typename Owner, typename Fields>
void RecordReader::store(Owner& owner, const Fields& fields, Scalar& value) {
    const std::size_t index = indexOf(fields, m_key);
    if (index == std::size(fields)) {
        return;
    }
    std::uint32_t& seen = m_place == Place::Record ? m_seenInRecord : m_seen;
    seen |= 1U << index;
    if (fields[index].store == nullptr || !fields[index].store(owner, value)) {
        complain(m_key + " is not what an alarm notification has");
    }
}

template <typename Fields> void RecordReader::expectAll(const Fields& fields) {
    const std::uint32_t seen = m_place == Place::Record ? m_seenInRecord : m_seen;
    for (std::size_t i = 0; i < std::size(fields); ++i) {
        if (fields[i].presence == Presence::Required && ((seen >> i) & 1U) == 0) {
            complain(std::string(fields[i].key) + " is missing");
        }
    }
}

bool RecordReader::scalar(Scalar value) {
    if (m_ignored != 0) {
        return true;
    }
    switch (m_place) {
    case Place::Record:
        store(m_record, kRecordFields, value);
        break;
    case Place::ClassId:
        store(m_record, kClassFields, value);
        break;
    case Place::Info:
        store(m_record.additionalInfo.back(), kInfoFields, value);
        break;
    case Place::Action:
        store(m_record.proposedRepairActions.back(), kActionFields, value);
        break;
    default:
        complain("an object is expected");
    }
    return true;
}

bool RecordReader::start_object(std::size_t /*size*/) {
    if (m_ignored != 0) {
        return ignore();
    }
    if (m_place == Place::Outside) {
        m_place = Place::Record;
        return true;
    }
    m_seen = 0;
    if (m_place == Place::Record && m_key == "classId") {
        m_seenInRecord |= 1U << indexOf(kRecordFields, m_key);
        m_place = Place::ClassId;
    } else if (m_place == Place::InfoList) {
        m_record.additionalInfo.emplace_back();
        m_place = Place::Info;
    } else if (m_place == Place::ActionList) {
        m_record.proposedRepairActions.emplace_back();
        m_place = Place::Action;
    } else {
        return ignore();
    }
    return true;
}

bool RecordReader::end_object() {
    if (m_ignored != 0) {
        --m_ignored;
        return true;
    }
    switch (m_place) {
    case Place::Record:
        expectAll(kRecordFields);
        m_place = Place::Outside;
        break;
    case Place::ClassId:
        expectAll(kClassFields);
        m_place = Place::Record;
        break;
    case Place::Info:
        expectAll(kInfoFields);
        m_place = Place::InfoList;
        break;
    default:
        expectAll(kActionFields);
        m_place = Place::ActionList;
    }
    return true;
}

bool RecordReader::start_array(std::size_t /*size*/) {
    const bool isInfo = m_key == "additionalInfo";
    if (m_ignored != 0 || m_place != Place::Record ||
        (!isInfo && m_key != "proposedRepairActions")) {
        return ignore();
    }
    m_seenInRecord |= 1U << indexOf(kRecordFields, m_key);
    m_place = isInfo ? Place::InfoList : Place::ActionList;
    return true;
}

bool RecordReader::end_array() {
    if (m_ignored != 0) {
        --m_ignored;
    } else {
        m_place = Place::Record;
    }
    return true;
}

/// Enters a level of which nothing is read. Where a known field should be, that is an error.
bool RecordReader::ignore() {
    if (m_ignored == 0) {
        Scalar nothing = false;
        scalar(nothing);
    }
    ++m_ignored;
    return true;
}

bool RecordReader::key(std::string& value) {
    if (m_ignored == 0) {
        m_key = std::move(value);
    }
    return true;
}

bool RecordReader::null() { return scalar(std::monostate{}); }
bool RecordReader::boolean(bool value) { return scalar(value); }
bool RecordReader::number_integer(std::int64_t value) { return scalar(value); }
bool RecordReader::number_unsigned(std::uint64_t value) { return scalar(value); }
bool RecordReader::number_float(double value, const std::string& /*text*/) { return scalar(value); }
bool RecordReader::string(std::string& value) { return scalar(std::move(value)); }
bool RecordReader::binary(binary_t& /*value*/) { return scalar(false); } // never in text

bool RecordReader::parse_error(std::size_t /*position*/, const std::string& /*token*/,
                               const nlohmann::detail::exception& error) {
    m_isTorn = true;
    m_reason = error.what();
    return false;
}

void RecordReader::complain(const std::string& reason) {
    if (m_reason.empty()) {
        m_reason = reason;
    }
}

} // namespace platform::ntf
