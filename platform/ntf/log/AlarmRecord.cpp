#include "platform/ntf/log/AlarmRecord.h"

#include <type_traits>

#include <nlohmann/json.hpp>

#include "common/AlarmNames.h"
#include "platform/ntf/log/RecordReader.h"

namespace platform::ntf {

namespace {

using Json = nlohmann::ordered_json;

constexpr char kNotificationType[] = "alarm";
constexpr std::uint32_t kFirstEventType = 0x4000;
// Follows the key of a text that is not UTF-8, which JSON cannot hold.
constexpr char kBytesSuffix[] = "Hex";

bool isUtf8(const std::string& text) {
    try {
        static_cast<void>(Json(text).dump());
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

std::string toHex(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        hex += kDigits[static_cast<unsigned char>(byte) >> 4];
        hex += kDigits[static_cast<unsigned char>(byte) & 0xf];
    }
    return hex;
}

void putText(Json& json, const std::string& key, const std::string& text) {
    json[key] = text;
    if (!isUtf8(text)) {
        json[key + kBytesSuffix] = toHex(text);
    }
}

struct ElementKeys {
    const char* id;
    const char* type;
};
constexpr ElementKeys kInfoKeys = {"infoId", "infoType"};
constexpr ElementKeys kActionKeys = {"actionId", "actionValueType"};

Json toJson(const std::vector<Element>& elements, const ElementKeys& keys) {
    Json list = Json::array();
    for (const Element& element : elements) {
        Json json = {{keys.id, element.id}, {keys.type, element.type}, {"value", nullptr}};
        std::visit(
            [&json](const auto& value) {
                using Value = std::decay_t<decltype(value)>;
                if constexpr (std::is_same_v<Value, std::string>) {
                    putText(json, "value", value);
                } else if constexpr (std::is_arithmetic_v<Value>) {
                    json["value"] = value;
                }
            },
            element.value);
        list.push_back(std::move(json));
    }
    return list;
}

} // namespace

std::string toLine(const AlarmRecord& record) {
    Json json;
    // Text: many JSON readers keep only 53 bits of a number.
    json["notificationId"] = std::to_string(record.notificationId);
    json["eventTime"] = formatTime(record.eventTimeNs);
    json["eventTimeNs"] = record.eventTimeNs;
    json["notificationType"] = kNotificationType;
    json["eventType"] = common::nameOf(record.eventType - kFirstEventType, common::kEventTypeNames);
    json["eventTypeCode"] = record.eventType;
    putText(json, "notificationObject", record.notificationObject);
    putText(json, "notifyingObject", record.notifyingObject);
    json["classId"] = {
        {"vendorId", record.vendorId}, {"majorId", record.majorId}, {"minorId", record.minorId}};
    json["perceivedSeverity"] = common::nameOf(record.perceivedSeverity, common::kSeverityNames);
    json["perceivedSeverityCode"] = record.perceivedSeverity;
    json["probableCause"] = record.probableCause;
    json["trend"] = record.trend;
    json["thresholdId"] = record.thresholdId;
    putText(json, "additionalText", record.additionalText);
    json["additionalInfo"] = toJson(record.additionalInfo, kInfoKeys);
    json["proposedRepairActions"] = toJson(record.proposedRepairActions, kActionKeys);
    json["processId"] = record.processId;
    json["threadId"] = record.threadId;
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

ParsedLine parseLine(std::string_view line) {
    ParsedLine parsed;
    if (line.find_first_not_of(" \n") == line.npos) {
        parsed.kind = ParsedLine::Kind::Blank;
        parsed.reason = "the line is blank";
        return parsed;
    }
    RecordReader reader(parsed.record);
    Json::sax_parse(line.begin(), line.end(), &reader);
    if (reader.isRecord()) {
        parsed.kind = ParsedLine::Kind::Notification;
    } else if (reader.isDocument()) {
        parsed.kind = ParsedLine::Kind::Foreign;
    }
    parsed.reason = reader.reason();
    return parsed;
}

} // namespace platform::ntf
