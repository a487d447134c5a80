// A line of the notification log, of which README.md describes the layout: how a notification
// becomes one, and how one is read.

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "common/AlarmNames.h"
#include "common/Escape.h"
#include "common/FormatTime.h"
#include "platform/ntf/AlarmNotification.h"
#include "platform/ntf/Fields.h"

namespace platform::ntf {

namespace {

using common::jsonString;
using common::nameOf;
using Json = nlohmann::json;

constexpr std::string_view kFirstKey = R"({"notificationId":)";
constexpr char kNotificationType[] = "alarm";
constexpr SaUint16T kLargestCount = 65535;

/// Of an entry of the additional information, or a proposed repair action.
template <typename T> struct ElementFields {
    const char* idKey;
    const char* typeKey;
    SaNtfElementIdT T::*id;
    SaNtfValueTypeT T::*type;
    SaNtfValueT T::*value;
};
constexpr ElementFields<SaNtfAdditionalInfoT> kInfoFields = {
    "infoId", "infoType", &SaNtfAdditionalInfoT::infoId, &SaNtfAdditionalInfoT::infoType,
    &SaNtfAdditionalInfoT::infoValue};
constexpr ElementFields<SaNtfProposedRepairActionT> kActionFields = {
    "actionId", "actionValueType", &SaNtfProposedRepairActionT::actionId,
    &SaNtfProposedRepairActionT::actionValueType, &SaNtfProposedRepairActionT::actionValue};

std::string member(const char* key, const std::string& json) {
    return '"' + std::string(key) + "\":" + json;
}

std::string member(const char* key, std::int64_t number) {
    return member(key, std::to_string(number));
}

/// An id is a text: many JSON readers keep only 53 bits of a number.
std::string idText(SaNtfIdentifierT id) { return jsonString(std::to_string(id)); }

std::string idsText(const std::vector<SaNtfIdentifierT>& ids) {
    std::string list;
    for (const SaNtfIdentifierT id : ids) {
        list += (list.empty() ? "" : ",") + idText(id);
    }
    return '[' + list + ']';
}

/// A value as JSON: null unless it is a text that was allocated.
std::string valueText(const SaNtfValueTypeT& type, const SaNtfValueT& value,
                      const ValueBlocks& blocks) {
    const auto* const text = static_cast<const char*>(blocks.find(value));
    return codeOf(type) != SA_NTF_VALUE_STRING || text == nullptr
               ? "null"
               : jsonString({text, ::strnlen(text, value.ptrVal.dataSize)});
}

template <typename T>
std::string elementsText(const std::vector<T>& elements, const ElementFields<T>& fields,
                         const ValueBlocks& blocks) {
    std::string list;
    for (const T& element : elements) {
        list += (list.empty() ? "{" : ",{") + member(fields.idKey, element.*fields.id) + ',' +
                member(fields.typeKey, codeOf(element.*fields.type)) + ',' +
                member("value", valueText(element.*fields.type, element.*fields.value, blocks)) +
                '}';
    }
    return '[' + list + ']';
}

SaTimeT currentTime() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count();
}

/// A parsed document. The destructor of one that is not empty allocates, and ends the process where
/// it cannot; from the inside out, none needs to.
struct Document {
    // NOLINTBEGIN(bugprone-exception-escape): an empty one throws nothing, nor does clearing
    Document() = default;
    ~Document() { clear(json); }
    // NOLINTEND(bugprone-exception-escape)
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

const std::string& textIn(const Json& object, const char* key) {
    return object.at(key).get_ref<const std::string&>();
}

SaUint16T countOf(const Json& list) {
    const std::size_t count = list.get_ref<const Json::array_t&>().size();
    return static_cast<SaUint16T>(std::min<std::size_t>(count, kLargestCount));
}

/// Throws what is no number, or one that `Number` does not hold.
template <typename Number> void read(const Json& object, const char* key, Number& number) {
    const Json& value = object.at(key);
    if (!value.is_number_integer() || value != Json(value.get<Number>())) {
        throw std::out_of_range(key);
    }
    value.get_to(number);
}

template <typename Enumeration>
void readCode(const Json& object, const char* key, Enumeration& field) {
    std::uint32_t code = 0;
    read(object, key, code);
    setCode(field, code);
}

SaNtfIdentifierT readId(const std::string& text) {
    SaNtfIdentifierT id = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), id);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) {
        throw std::invalid_argument("no notification id");
    }
    return id;
}

template <typename T>
void readElements(const Json& list, const ElementFields<T>& fields, std::vector<T>& elements,
                  ValueBlocks& blocks) {
    for (std::size_t index = 0; index < elements.size(); ++index) {
        T& element = elements[index];
        read(list[index], fields.idKey, element.*fields.id);
        readCode(list[index], fields.typeKey, element.*fields.type);
        const Json& value = list[index].at("value");
        if (value.is_string()) {
            const auto& text = value.get_ref<const std::string&>();
            const std::size_t size = std::min<std::size_t>(text.size() + 1, kLargestCount);
            if (void* const block =
                    blocks.allocate(static_cast<SaUint16T>(size), element.*fields.value)) {
                std::memcpy(block, text.c_str(), size - 1);
            }
        }
    }
}

} // namespace

std::string AlarmNotification::toLine() const {
    const SaTimeT time = m_eventTime[0] == SA_TIME_UNKNOWN ? currentTime() : m_eventTime[0];
    const std::uint32_t eventType = codeOf(m_eventType[0]);
    const std::uint32_t severity = codeOf(m_perceivedSeverity[0]);
    const SaNameT& notifier =
        m_notifyingObject[0].length == 0 ? m_notificationObject[0] : m_notifyingObject[0];
    std::string line = std::string(kFirstKey) + idText(m_notificationId[0]);
    const auto put = [&line](const char* key, const auto& value) {
        line += ',' + member(key, value);
    };
    put("eventTime", jsonString(common::formatTime(time)));
    put("eventTimeNs", time);
    put("notificationType", jsonString(kNotificationType));
    put("eventType",
        jsonString(nameOf(eventType - SA_NTF_ALARM_NOTIFICATIONS_START, common::kEventTypeNames)));
    put("eventTypeCode", eventType);
    put("notificationObject", jsonString(toText(m_notificationObject[0])));
    put("notifyingObject", jsonString(toText(notifier)));
    put("classId", '{' + member("vendorId", m_classId[0].vendorId) + ',' +
                       member("majorId", m_classId[0].majorId) + ',' +
                       member("minorId", m_classId[0].minorId) + '}');
    put("perceivedSeverity", jsonString(nameOf(severity, common::kSeverityNames)));
    put("perceivedSeverityCode", severity);
    put("probableCause", codeOf(m_probableCause[0]));
    put("trend", codeOf(m_trend[0]));
    put("thresholdId", m_thresholdInformation[0].thresholdId);
    put("correlatedNotifications", idsText(m_correlatedNotifications));
    put("additionalText", jsonString(m_additionalText.empty() ? "" : m_additionalText.data()));
    put("additionalInfo", elementsText(m_additionalInfo, kInfoFields, m_values));
    put("proposedRepairActions", elementsText(m_proposedRepairActions, kActionFields, m_values));
    put("processId", ::getpid());
    put("threadId", ::gettid());
    return line += "}\n";
}

std::shared_ptr<AlarmNotification> AlarmNotification::ofLine(std::string_view line) {
    // A process that was killed while another one was about to write leaves half a line in front of
    // a whole one. Inside a text the key's quotes would be escaped.
    line.remove_prefix(std::min(line.rfind(kFirstKey), line.size()));
    try {
        Document document;
        std::istringstream text{std::string(line)};
        text >> document.json >> std::ws; // the document has what was parsed, also when that fails
        const Json& json = document.json;
        if (!text.eof() || textIn(json, "notificationType") != kNotificationType) {
            return nullptr;
        }
        const Json none = Json::array(); // logs of early versions have no such field
        const auto found = json.find("correlatedNotifications");
        const Json& correlated = found != json.end() ? *found : none;
        const std::string& additionalText = textIn(json, "additionalText");
        const std::size_t length = additionalText.empty() ? 0 : additionalText.size() + 1;
        const AlarmCounts counts = {
            countOf(correlated),
            static_cast<SaUint16T>(std::min<std::size_t>(length, kLargestCount)),
            countOf(json.at("additionalInfo")),
            0,
            0,
            countOf(json.at("proposedRepairActions"))};
        auto alarm = std::make_shared<AlarmNotification>(counts, kLargestCount);
        alarm->m_notificationId[0] = readId(textIn(json, "notificationId"));
        read(json, "eventTimeNs", alarm->m_eventTime[0]);
        readCode(json, "eventTypeCode", alarm->m_eventType[0]);
        setName(alarm->m_notificationObject[0], textIn(json, "notificationObject"));
        setName(alarm->m_notifyingObject[0], textIn(json, "notifyingObject"));
        read(json.at("classId"), "vendorId", alarm->m_classId[0].vendorId);
        read(json.at("classId"), "majorId", alarm->m_classId[0].majorId);
        read(json.at("classId"), "minorId", alarm->m_classId[0].minorId);
        readCode(json, "perceivedSeverityCode", alarm->m_perceivedSeverity[0]);
        readCode(json, "probableCause", alarm->m_probableCause[0]);
        readCode(json, "trend", alarm->m_trend[0]);
        read(json, "thresholdId", alarm->m_thresholdInformation[0].thresholdId);
        for (std::size_t index = 0; index < counts.correlatedNotifications; ++index) {
            alarm->m_correlatedNotifications[index] =
                readId(correlated[index].get_ref<const std::string&>());
        }
        std::copy_n(additionalText.begin(), std::max<int>(counts.lengthAdditionalText, 1) - 1,
                    alarm->m_additionalText.begin());
        readElements(json.at("additionalInfo"), kInfoFields, alarm->m_additionalInfo,
                     alarm->m_values);
        readElements(json.at("proposedRepairActions"), kActionFields,
                     alarm->m_proposedRepairActions, alarm->m_values);
        alarm->m_values.close();
        return alarm->isValid() ? alarm : nullptr;
    } catch (const Json::exception&) {
    } catch (const std::logic_error&) { // a value is not what an alarm notification has
    }
    return nullptr;
}

} // namespace platform::ntf
