#include "platform/ntf/log/AlarmRecord.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "common/AlarmNames.h"
#include "common/Escape.h"

namespace platform::ntf {

namespace {

using Json = nlohmann::json;

constexpr std::string_view kFirstKey = R"({"notificationId":)";
constexpr char kNotificationType[] = "alarm";
constexpr std::uint32_t kFirstEventType = 0x4000;

struct ElementKeys {
    const char* id;
    const char* type;
};
constexpr ElementKeys kInfoKeys = {"infoId", "infoType"};
constexpr ElementKeys kActionKeys = {"actionId", "actionValueType"};

std::string member(const char* key, const std::string& json) {
    return '"' + std::string(key) + "\":" + json;
}

std::string member(const char* key, std::int64_t number) {
    return member(key, std::to_string(number));
}

std::string elementsText(const std::vector<Element>& elements, const ElementKeys& keys) {
    std::string list;
    for (const Element& element : elements) {
        list += (list.empty() ? "{" : ",{") + member(keys.id, element.id) + ',' +
                member(keys.type, element.type) + ',' +
                member("value", element.value ? common::jsonString(*element.value) : "null") + '}';
    }
    return '[' + list + ']';
}

/// An id is a text: many JSON readers keep only 53 bits of a number.
std::string idText(std::uint64_t id) { return common::jsonString(std::to_string(id)); }

std::string idsText(const std::vector<std::uint64_t>& ids) {
    std::string list;
    for (const std::uint64_t id : ids) {
        list += (list.empty() ? "" : ",") + idText(id);
    }
    return '[' + list + ']';
}

std::uint64_t readId(const Json& json) {
    const auto& text = json.get_ref<const std::string&>();
    std::uint64_t id = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), id);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) {
        throw std::invalid_argument("no notification id");
    }
    return id;
}

/// Throws what is no number, or one that `Number` does not hold.
template <typename Number> void read(const Json& object, const char* key, Number& number) {
    const Json& value = object.at(key);
    if (!value.is_number_integer() || value != Json(value.get<Number>())) {
        throw std::out_of_range(key);
    }
    value.get_to(number);
}

void read(const Json& object, const char* key, std::string& text) { object.at(key).get_to(text); }

std::vector<Element> readElements(const Json& list, const ElementKeys& keys) {
    std::vector<Element> elements;
    for (const Json& json : list.get_ref<const Json::array_t&>()) {
        Element& element = elements.emplace_back();
        read(json, keys.id, element.id);
        read(json, keys.type, element.type);
        if (json.at("value").is_string()) {
            read(json, "value", element.value.emplace());
        }
    }
    return elements;
}

/// A parsed document. The destructor of one that is not empty allocates, and ends the process where
/// it cannot; from the inside out, none needs to.
struct Document {
    Document() = default;
    ~Document() { clear(json); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    static void clear(Json& json) {
        if (json.is_structured()) {
            std::for_each(json.begin(), json.end(), clear);
            json.clear();
        }
    }

    Json json;
};

AlarmRecord readRecord(const Json& json) {
    AlarmRecord record;
    record.notificationId = readId(json.at("notificationId"));
    if (json.at("notificationType").get_ref<const std::string&>() != kNotificationType) {
        throw std::invalid_argument("no alarm notification");
    }
    read(json, "eventTimeNs", record.eventTimeNs);
    read(json, "eventTypeCode", record.eventType);
    read(json, "notificationObject", record.notificationObject);
    read(json, "notifyingObject", record.notifyingObject);
    read(json.at("classId"), "vendorId", record.vendorId);
    read(json.at("classId"), "majorId", record.majorId);
    read(json.at("classId"), "minorId", record.minorId);
    read(json, "perceivedSeverityCode", record.perceivedSeverity);
    read(json, "probableCause", record.probableCause);
    read(json, "trend", record.trend);
    read(json, "thresholdId", record.thresholdId);
    for (const Json& id : json.value("correlatedNotifications", Json::array())) {
        record.correlatedNotifications.push_back(readId(id));
    }
    read(json, "additionalText", record.additionalText);
    record.additionalInfo = readElements(json.at("additionalInfo"), kInfoKeys);
    record.proposedRepairActions = readElements(json.at("proposedRepairActions"), kActionKeys);
    read(json, "processId", record.processId);
    read(json, "threadId", record.threadId);
    return record;
}

} // namespace

std::string toLine(const AlarmRecord& record) {
    using common::jsonString;
    using common::nameOf;
    std::string line(kFirstKey);
    line += idText(record.notificationId);
    const auto put = [&line](const char* key, const auto& value) {
        line += ',' + member(key, value);
    };
    put("eventTime", jsonString(formatTime(record.eventTimeNs)));
    put("eventTimeNs", record.eventTimeNs);
    put("notificationType", jsonString(kNotificationType));
    put("eventType",
        jsonString(nameOf(record.eventType - kFirstEventType, common::kEventTypeNames)));
    put("eventTypeCode", record.eventType);
    put("notificationObject", jsonString(record.notificationObject));
    put("notifyingObject", jsonString(record.notifyingObject));
    put("classId", '{' + member("vendorId", record.vendorId) + ',' +
                       member("majorId", record.majorId) + ',' + member("minorId", record.minorId) +
                       '}');
    put("perceivedSeverity", jsonString(nameOf(record.perceivedSeverity, common::kSeverityNames)));
    put("perceivedSeverityCode", record.perceivedSeverity);
    put("probableCause", record.probableCause);
    put("trend", record.trend);
    put("thresholdId", record.thresholdId);
    put("correlatedNotifications", idsText(record.correlatedNotifications));
    put("additionalText", jsonString(record.additionalText));
    put("additionalInfo", elementsText(record.additionalInfo, kInfoKeys));
    put("proposedRepairActions", elementsText(record.proposedRepairActions, kActionKeys));
    put("processId", record.processId);
    put("threadId", record.threadId);
    return line += "}\n";
}

std::optional<AlarmRecord> parseLine(std::string_view line) {
    // A process that was killed while another one was about to write leaves half a line in front of
    // a whole one. Inside a text the key's quotes would be escaped.
    line.remove_prefix(std::min(line.rfind(kFirstKey), line.size()));
    try {
        Document document;
        std::istringstream text{std::string(line)};
        text >> document.json >> std::ws; // the document has what was parsed, also when that fails
        return text.eof() ? std::optional(readRecord(document.json)) : std::nullopt;
    } catch (const Json::exception&) {
    } catch (const std::logic_error&) { // a value is not what an alarm notification has
    }
    return std::nullopt;
}

} // namespace platform::ntf
