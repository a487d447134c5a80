#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include <nlohmann/json.hpp>

#include "platform/ntf/log/AlarmRecord.h"

namespace platform::ntf {

/// Takes a record out of a line while that is parsed: building the document first, as a tree, takes
/// more than twice the time, and logs grow to millions of lines. Goes on after what is wrong, since
/// the parser alone can tell whether the line is a JSON document at all.
class RecordReader final : public nlohmann::json_sax<nlohmann::ordered_json> {
public:
    explicit RecordReader(AlarmRecord& record) : m_record(record) {}

    /// After the parsing. Whether the line was a document, and whether all of a record was in it;
    /// the reason when not.
    bool isDocument() const { return !m_isTorn; }
    bool isRecord() const { return m_reason.empty(); }
    const std::string& reason() const { return m_reason; }

    bool null() override;
    bool boolean(bool value) override;
    bool number_integer(std::int64_t value) override;
    bool number_unsigned(std::uint64_t value) override;
    bool number_float(double value, const std::string& text) override;
    bool string(std::string& value) override;
    bool binary(binary_t& value) override;
    bool start_object(std::size_t size) override;
    bool key(std::string& value) override;
    bool end_object() override;
    bool start_array(std::size_t size) override;
    bool end_array() override;
    bool parse_error(std::size_t position, const std::string& token,
                     const nlohmann::detail::exception& error) override;

    using Scalar =
        std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string>;

private:
    /// Where in the document the parser is.
    enum class Place { Outside, Record, ClassId, InfoList, Info, ActionList, Action };

    template <typename Owner, typename Fields>
    void store(Owner& owner, const Fields& fields, Scalar& value);
    template <typename Fields> void expectAll(const Fields& fields);
    bool scalar(Scalar value);
    bool ignore();
    void complain(const std::string& reason);

    AlarmRecord& m_record;
    Place m_place = Place::Outside;
    unsigned m_ignored = 0; ///< levels that are open below something unknown
    std::string m_key;
    std::uint32_t m_seenInRecord = 0; ///< a bit for each field
    std::uint32_t m_seen = 0;         ///< the same of the object inside the record
    bool m_isTorn = false;
    std::string m_reason;
};

} // namespace platform::ntf
