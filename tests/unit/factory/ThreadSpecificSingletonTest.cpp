#include "threadSpecificSingleton"

#include <stdexcept>

#include <gtest/gtest.h>

namespace {

struct Counted {
    Counted() {
        if (refuse) {
            throw std::runtime_error("refused");
        }
    }
    ~Counted() { slotAtDestruction = Slot::getPtr(); }
    using Slot = cxxutils::threadspecific::v1::ThreadSpecificSingleton<Counted>;
    static bool refuse;
    static Counted* slotAtDestruction;
};
bool Counted::refuse = false;
Counted* Counted::slotAtDestruction = nullptr;
using Slot = Counted::Slot;

TEST(ThreadSpecificSingleton, IsEmptyWhileItsInstanceIsMadeOrDestroyed) {
    Counted::refuse = true;
    EXPECT_THROW(Slot::getInstance(), std::runtime_error);
    Counted::refuse = false;
    EXPECT_EQ(Slot::getPtr(), nullptr);
    Counted::slotAtDestruction = Slot::getInstance();
    Slot::reset();
    EXPECT_EQ(Counted::slotAtDestruction, nullptr); // emptied before the destructor ran
    Slot::reset();                                  // nothing to do
    EXPECT_EQ(Slot::getPtr(), nullptr);
}

TEST(ThreadSpecificSingletonDeathTest, RefusesASecondInstanceInEveryBuild) {
    Counted other;
    Counted* const mine = Slot::getInstance();
    EXPECT_DEATH(Slot::setPtr(&other),
                 "threadSpecificSingleton:[0-9]+: .*ThreadSpecificSingleton<.*>::setPtr.*Counted.*"
                 "Setting a new pointer when the pointer is already set should be avoided");
    Slot::setPtr(nullptr); // empties the slot and deletes nothing
    EXPECT_EQ(Slot::getPtr(), nullptr);
    delete mine;
}

} // namespace
