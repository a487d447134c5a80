#include "Diagnosis.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

#include <nlohmann/json.hpp>

#include "Output.h"

namespace dolqctl {

namespace {

using Status = Observation::Status;

constexpr const char* kNames[] = {"ok", "note", "warning", "failed"}; // of each status

const char* nameOf(Status status) { return kNames[static_cast<std::size_t>(status)]; }

void print(const Observation& observation) {
    const auto& [check, status, finding, meaning, advice] = observation;
    std::cout << std::left << std::setw(9) << nameOf(status);
    printLine(check + ": " + finding + (meaning.empty() ? "" : ": " + meaning));
    if (!advice.empty()) {
        printLine("         -> " + advice);
    }
}

} // namespace

void Diagnosis::add(Observation observation) {
    const auto place = std::upper_bound(
        m_observations.begin(), m_observations.end(), observation,
        [](const auto& one, const auto& other) { return one.status < other.status; });
    m_observations.insert(place, std::move(observation));
}

void Diagnosis::print(const Arguments& arguments, const std::string& verdict) const {
    if (arguments.json) {
        nlohmann::ordered_json document = {
            {"source", arguments.source}, {"verdict", verdict}, {"failures", failures()}};
        for (const Observation& each : m_observations) {
            document["checks"].push_back({{"check", each.check},
                                          {"status", nameOf(each.status)},
                                          {"finding", each.finding},
                                          {"meaning", each.meaning},
                                          {"advice", each.advice}});
        }
        printJson(document);
        return;
    }
    if (!arguments.source.empty()) {
        printLine(arguments.source);
    }
    std::vector<std::string> inOrder;
    for (const Observation& each : m_observations) {
        if (each.status == Status::Ok) {
            inOrder.push_back(each.check);
        }
    }
    if (!arguments.all && !inOrder.empty()) {
        printLine(counted(inOrder.size(), "check") + " in order: " + joined(inOrder));
    }
    for (const Observation& each : m_observations) {
        if (arguments.all || each.status != Status::Ok) {
            dolqctl::print(each);
        }
    }
    printLine();
    printLine(verdict);
}

} // namespace dolqctl
