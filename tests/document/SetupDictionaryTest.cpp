#include "document/setup/SetupDictionary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orrery {
namespace {

using testing::ElementsAre;

TEST(SetupObservers, AreToldOfEverySetAndRemovalOfTheirKeyOnly) {
    SetupDictionary setup = defaultSetup();
    std::vector<std::string> told;
    const auto observer = [&told](std::string_view key) { told.emplace_back(key); };
    for (const auto key : {setup_key::runLength, setup_key::startDay, setup_key::outputs}) {
        setup.addObserver(key, observer);
    }
    setup.setText(setup_key::runLength, "100"); // the value that it holds already
    setup.setStartDay(std::nullopt);
    setup.setText(setup_key::gcd, "1");
    setup.mutableList(setup_key::outputs).emplace_back();
    setup.setList(setup_key::outputs, {});
    setup.remove(setup_key::runLength);
    EXPECT_THAT(told, ElementsAre("runLength", "startDay", "outputs", "runLength"));
}

TEST(SetupObservers, MaySetKeysAndAddObservers) {
    SetupDictionary setup;
    int lengthChanges = 0;
    setup.addObserver(setup_key::runLength, [&](std::string_view key) {
        ++lengthChanges;
        for (int count = 0; count < 100; ++count) {
            setup.addObserver(key, [](std::string_view) {});
        }
        setup.setText(setup_key::reportStep, std::string(setup.textOrEmpty(key)));
    });
    setup.addObserver(setup_key::reportStep, [&](std::string_view) {
        if (setup.textOrEmpty(setup_key::runLength) != "2") setup.setText(setup_key::runLength, "2");
    });
    setup.setText(setup_key::runLength, "1");
    EXPECT_EQ(lengthChanges, 2);
    EXPECT_EQ(setup.textOrEmpty(setup_key::reportStep), "2");
}

TEST(SetupObservers, StayBehindWhenTheDictionaryIsReplaced) {
    SetupDictionary setup = defaultSetup();
    setup.addObserver(setup_key::runLength, [](std::string_view) { ADD_FAILURE(); });
    setup = defaultSetup();
    setup.setText(setup_key::runLength, "1");
}

} // namespace
} // namespace orrery
