// The places of the virtual operations are compiled into clients. Each operation below is held to
// its place, counted as a client's compiler counts: the two places of the destructor come first.

#include <cstring>

#include <gtest/gtest.h>

#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;
using Text = const std::string&;
using Texts = const std::vector<std::string>&;
using Events = const std::vector<std::uint32_t>&;
using Id = std::uint32_t;

/// The place in the table of virtual operations that a call through `operation` takes (by the C++
/// ABI a pointer to a virtual member is 1 plus the byte offset of its place).
template <typename Operation> std::size_t place(Operation operation) {
    std::size_t pointer = 0;
    static_assert(sizeof(operation) >= sizeof(pointer));
    std::memcpy(&pointer, &operation, sizeof(pointer));
    return (pointer - 1) / sizeof(void*);
}

template <typename... Parameters> using Fmi = void (FaultManagementI::*)(Parameters...);

TEST(VirtualOrder, FaultManagementI) {
    using F = FaultManagementI;
    EXPECT_EQ(place(Fmi<Text, Id, Text, Text, Texts, Id, Id, Events>(&F::raiseAlarm)), 2U);
    EXPECT_EQ(place(&F::ceaseAlarm), 3U);
    EXPECT_EQ(place(Fmi<Text, Id, Text, Text, Texts, Id, Id, Text, Text>(&F::raisePrimaryAlarm)),
              4U);
    EXPECT_EQ(
        place(Fmi<Text, Id, Text, Text, Texts, Id, Id, Text, Text, Id>(&F::raisePrimaryAlarm)), 5U);
    EXPECT_EQ(place(Fmi<Text, Id, Text, Text, Texts, Id, Text, Text, Text>(&F::raisePrimaryAlarm)),
              6U);
    EXPECT_EQ(
        place(Fmi<Text, Id, Text, Text, Texts, Id, Text, Text, Text, Id>(&F::raisePrimaryAlarm)),
        7U);
    EXPECT_EQ(
        place(Fmi<Text, Id, Text, Text, Texts, Id, Text, Text, Events>(&F::raiseSecondaryAlarm)),
        8U);
    EXPECT_EQ(place(Fmi<Text, Id, Text, Text, Texts, Id, Text, Text, Events, Id>(
                  &F::raiseSecondaryAlarm)),
              9U);
    EXPECT_EQ(
        place(Fmi<Text, Id, Text, Text, Texts, Id, Text, Text, Texts>(&F::raiseSecondaryAlarm)),
        10U);
    EXPECT_EQ(place(Fmi<Text, Id, Text, Text, Texts, Id, Id, Events, Id>(&F::raiseAlarm)), 11U);
    EXPECT_EQ(
        place(Fmi<Text, Id, Text, Text, Texts, Id, Text, Text, Texts, Id>(&F::raiseSecondaryAlarm)),
        12U);
}

TEST(VirtualOrder, FactoriesAndConfiguration) {
    using Configuration = ruxa::fm::dolq::v1::ConfigurationI;
    EXPECT_EQ(place(&ruxa::fm::dolq::v1::FmiFactory::createFaultManagement), 2U);
    EXPECT_EQ(place(&ruxa::fm::dolq::v1::FmiFactory::getConfiguration), 3U);
    EXPECT_EQ(place(&ruxa::fm::dolq::v2::FmiFactory::createFaultManagement), 2U);
    EXPECT_EQ(place<void (Configuration::*)(Id, Id)>(&Configuration::setMapping), 2U);
    EXPECT_EQ(place<void (Configuration::*)(Id, Id, Text)>(&Configuration::setMapping), 3U);
    EXPECT_EQ(place(&Configuration::configurationFile), 4U);
}

} // namespace
