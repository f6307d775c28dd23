#include "model/PortLists.h"

#include "model/ListController.h"
#include "platform/Outlets.h"
#include "platform/values/OrreryError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace orrery {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

EntryList entriesNamed(const std::string& letters) {
    EntryList entries;
    for (const char letter : letters) {
        entries.push_back({{"portPath", std::string(1, letter)}, {"value", "1"}});
    }
    return entries;
}

std::string letters(const EntryList& entries) {
    std::string text;
    for (const Entry& entry : entries) {
        text += entry.text("portPath");
    }
    return text;
}

TEST(DropDecisions, LetOnlyFittingPortsAndOwnRowsIn) {
    const auto decide = [](PortList list, const std::vector<std::string>& types) {
        const DropDecision decision = validateDrop(list, types);
        EXPECT_EQ(decision.retargetAbove, decision.operation == DragOperation::Move);
        return decision.operation;
    };
    EXPECT_EQ(decide(PortList::Outputs, {"OutputPathPboardType"}), DragOperation::Copy);
    EXPECT_EQ(decide(PortList::Outputs, {"InputPathPboardType"}), DragOperation::None);
    EXPECT_EQ(decide(PortList::Steppers, {"InputPathPboardType", "StepperPboardType"}), DragOperation::Move);
    EXPECT_EQ(decide(PortList::Initializations, {"InputPathPboardType"}), DragOperation::Copy);
    EXPECT_EQ(decide(PortList::Initializations, {"StepperPboardType"}), DragOperation::None);
    EXPECT_EQ(decide(PortList::Steppers, {}), DragOperation::None);
}

TEST(PortDrops, ReplaceOnARowAndInsertAboveIt) {
    EntryList entries = entriesNamed("abc");
    dropPort(entries, "x", 1, DropOperation::On);
    EXPECT_TRUE(entries[1] == (Entry{{"portPath", "x"}, {"value", "1"}}));
    dropPort(entries, "y", 2, DropOperation::Above);
    dropPort(entries, "z", 4, DropOperation::Above);
    dropPort(entries, "z", 99, DropOperation::Above);
    EXPECT_EQ(letters(entries), "axyczz");
    EXPECT_TRUE(entries[2] == (Entry{{"coordinates", "{ 0, 0 }"}, {"portPath", "y"}}));
}

/// One dragged row after the other, each taken out and put in again.
std::string moveOneByOne(std::string all, const std::string& dragged, std::size_t row) {
    for (const char each : dragged) {
        const std::size_t position = all.find(each);
        all.erase(position, 1);
        if (position < row) --row;
        all.insert(std::min(row, all.size()), 1, each);
        ++row;
    }
    return all;
}

TEST(RowMoves, EqualMovingTheRowsOneByOne) {
    std::mt19937 random(1);
    for (int round = 0; round < 5000; ++round) {
        const std::string all = std::string("abcdefghij").substr(0, random() % 11);
        std::vector<std::size_t> rows;
        std::string dragged;
        for (std::size_t row = 0; row < all.size(); ++row) {
            if (random() % 3 != 0) continue;
            rows.push_back(row);
            dragged += all[row];
        }
        const std::size_t target = random() % (all.size() + 2);
        EntryList moved = entriesNamed(all);
        std::string found;
        for (const std::size_t row : moveRows(moved, rows, target)) {
            found += letters(moved).at(row);
        }
        ASSERT_EQ(letters(moved), moveOneByOne(all, dragged, target)) << all << ' ' << dragged << ' ' << target;
        ASSERT_EQ(found, dragged);
    }
}

TEST(Payloads, ComeBackOrAreRefused) {
    const std::vector<std::size_t> rows = {0, 7, 100'000};
    EXPECT_EQ(unarchiveRows(archiveRows(rows)), rows);
    EXPECT_EQ(unarchiveRows(archiveRows({})), std::vector<std::size_t>());
    for (const char* bad : {"", "rows", "1 2", "rows 1,2", "rows -1", "rows 2 1", "rows 1 1", "rows x", "rows  1",
                            "rows 99999999999999999999"}) {
        EXPECT_EQ(unarchiveRows(bad), std::nullopt) << bad;
    }
    const std::string path("/a\n\xFF\0\"b/", 8);
    EXPECT_EQ(unarchivePortPath(archivePortPath(path)), path);
    EXPECT_EQ(unarchivePortPath(""), std::nullopt);
}

class RecordingList : public ListView {
public:
    void reloadData() override { ++reloads; }
    void selectRows(const std::vector<std::size_t>& rows) override { selected = rows; }
    int reloads = 0;
    std::vector<std::size_t> selected;
};

TEST(ListController, EditsTheSetupsListAndKeepsTheSelectionWithItsEntries) {
    SetupDictionary setup;
    RecordingList view;
    ListController controller(PortList::Initializations, [&]() -> SetupDictionary& { return setup; });
    controller.setView(&view);
    controller.removeSelected();
    EXPECT_THAT(controller.arrangedObjects(), IsEmpty());
    EXPECT_FALSE(setup.contains(setup_key::initializations));

    controller.drop("a", 0, DropOperation::Above);
    controller.drop("b", 1, DropOperation::Above);
    controller.drop("c", 2, DropOperation::Above);
    EXPECT_THAT(view.selected, IsEmpty());
    controller.setSelection({9, 1, 1, 0});
    EXPECT_THAT(controller.selection(), ElementsAre(0, 1));
    controller.drop("x", 1, DropOperation::Above);
    EXPECT_THAT(view.selected, ElementsAre(0, 2));
    controller.drop("y", 0, DropOperation::On);
    EXPECT_EQ(letters(setup.entries(setup_key::initializations)), "yxbc");
    EXPECT_THAT(view.selected, ElementsAre(0, 2));
    controller.move({0, 1}, 4);
    EXPECT_THAT(view.selected, ElementsAre(2, 3));
    controller.removeSelected();
    EXPECT_EQ(letters(controller.arrangedObjects()), "bc");
    EXPECT_THAT(view.selected, IsEmpty());

    controller.addObject(newEntry(PortList::Initializations));
    controller.setValue(2, "value", "7");
    EXPECT_THAT(view.selected, ElementsAre(2));
    EXPECT_TRUE(controller.arrangedObjects().back() == (Entry{{"coordinates", "{ 0, 0 }"}, {"value", "7"}}));
    EXPECT_THROW(controller.setValue(3, "value", "7"), AssertionFailure);
    setup = SetupDictionary();
    controller.rearrangeObjects();
    EXPECT_THAT(controller.arrangedObjects(), IsEmpty());
    EXPECT_THAT(view.selected, IsEmpty());
}

} // namespace
} // namespace orrery
