#include "Diagnosis.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

#include <nlohmann/json.hpp>

#include "Output.h"

namespace dolqctl {

namespace {

constexpr const char* kNames[] = {"ok", "note", "warning", "failed"}; // of each status

const char* nameOf(const Observation& each) { return kNames[static_cast<int>(each.status)]; }

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
                                          {"status", nameOf(each)},
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
        if (each.status == Observation::Status::Ok) {
            inOrder.push_back(each.check);
        }
    }
    if (!arguments.all && !inOrder.empty()) {
        printLine(counted(inOrder.size(), "check") + " in order: " + joined(inOrder));
    }
    for (const Observation& each : m_observations) {
        if (arguments.all || each.status != Observation::Status::Ok) {
            std::cout << std::left << std::setw(9) << nameOf(each);
            printLine(each.check + ": " + each.finding + (each.meaning.empty() ? "" : ": ") +
                      each.meaning);
            if (!each.advice.empty()) {
                printLine("         -> " + each.advice);
            }
        }
    }
    printLine();
    printLine(verdict);
}

} // namespace dolqctl
