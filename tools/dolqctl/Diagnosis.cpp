#include "Diagnosis.h"

#include <algorithm>
#include <cstring>
#include <iostream>

#include <nlohmann/json.hpp>

#include "Output.h"

namespace dolqctl {

namespace {

constexpr char kNotTried[] =
    "Not tried: whether the service accepts an alarm and delivers it ('dolqctl raise' sends one). "
    "Not known: what a program maps or changes in its surroundings itself, and with --pid its "
    "limits (ulimit). A program that has run "
    "since before a restart of the service can hang where this one does not: --pid shows its "
    "surroundings, and the library's probes what it waits for.";

constexpr const char* kNames[] = {"ok", "warning", "failed"}; // of each status

const char* nameOf(Observation::Status status) { return kNames[static_cast<std::size_t>(status)]; }

} // namespace

std::string Observation::text() const { return check + ": " + finding; }

void Diagnosis::add(Observation observation) {
    const auto place = std::upper_bound(
        m_observations.begin(), m_observations.end(), observation,
        [](const auto& one, const auto& other) { return one.status > other.status; });
    m_observations.insert(place, std::move(observation));
}

void Diagnosis::print(const std::string& conclusion) const {
    const std::string indent(9, ' ');
    for (const Observation& each : m_observations) {
        const char* const name = nameOf(each.status);
        std::cout << name << indent.substr(std::strlen(name));
        printWrapped(each.text(), indent);
        if (!each.advice.empty()) {
            std::cout << indent;
            printWrapped("-> " + each.advice, indent);
        }
    }
    printLine();
    printWrapped(conclusion);
    printWrapped(kNotTried);
}

void to_json(nlohmann::ordered_json& json, const Diagnosis& diagnosis) {
    json = {{"failures", diagnosis.failures()}, {"checks", nlohmann::ordered_json::array()}};
    for (const Observation& each : diagnosis.observations()) {
        json["checks"].push_back({{"check", each.check},
                                  {"status", nameOf(each.status)},
                                  {"finding", each.finding},
                                  {"advice", each.advice}});
    }
}

} // namespace dolqctl
