// The setup tab by keyboard, and what it shows.
#include "app/SetupWindow.h"
#include "app/setup/ProblemsView.h"
#include "app/widgets/PendingEdit.h"
#include "platform/Files.h"
#include "platform/qt/OptionalDateEdit.h"

#include <gmock/gmock.h>

#include <QDateTimeEdit>
#include <QLabel>
#include <QSet>
#include <QTextCursor>
#include <QToolTip>
#include <array>
#include <random>
#include <span>

namespace orrery::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class SetupTabTest : public SetupWindowTest {
protected:
    /// Opens the cell's editor with the text selected, as Return does.
    void typeInto(PortTableView& view, int row, int column, const QStringList& keys) {
        view.setFocus();
        view.setCurrentIndex(view.model()->index(row, column));
        xdotool(QStringList{"key", "Return"} + keys);
    }
    [[nodiscard]] std::string setting(std::string_view key) {
        return std::string(window->document().theDictionary().textOrEmpty(key));
    }
    void type(const QString& text, const QString& lastKey = "Return") {
        xdotool({"type", text});
        press(lastKey);
    }
    void press(const QString& key) { xdotool({"key", key}); }
};

TEST_F(SetupTabTest, NumbersAreCheckedInTheirCellsAndKeptAsNumbers) {
    openSample("insect-two-steppers.orrery");
    PortTableView& steppers = table("stepperTable");
    typeInto(steppers, 0, 1, {"type", " 1.50"});
    press("Tab"); // goes on to the step
    ASSERT_TRUE(waitFor([&] { return steppers.currentIndex().column() == 2; }));
    EXPECT_THAT(fieldsOf(PortList::Steppers, "start"), ElementsAre("1.5", "0.1"));
    type("12abc");
    ASSERT_TRUE(waitFor([] { return QToolTip::isVisible(); }));
    EXPECT_EQ(QToolTip::text(), "Couldn't convert  to float");
    EXPECT_THAT(fieldsOf(PortList::Steppers, "step"), ElementsAre("40", "0.05"));

    PortTableView& inputs = table("inputTable");
    typeInto(inputs, 0, 1, {"type", "{2, 3}"}); // a pair is no number, and needs to be none
    press("Return");
    ASSERT_TRUE(waitFor([&] { return fieldsOf(PortList::Initializations, "coordinates").front() == "{2, 3}"; }));

    window->document().setup().editEntry(PortList::Initializations, 0, "value", "{ 3 }");
    typeInto(inputs, 0, 2, {});
    press("Return"); // left as it was
    press("F2");
    ASSERT_TRUE(waitFor([&] { return inputs.findChild<QLineEdit*>("cellEditor") != nullptr; }));
    EXPECT_EQ(find<QLineEdit>(inputs, "cellEditor").text(), " 3 ");
    EXPECT_THAT(fieldsOf(PortList::Initializations, "value"), ElementsAre("{ 3 }"));
    delete window; // takes its open editor along
}

TEST_F(SetupTabTest, EveryCellCanBeEmptiedAndIsThenWithoutItsKeyUntilThatIsUndone) {
    openSample("insect-two-steppers.orrery");
    window->document().setup().addPort(PortList::Outputs, "/Orchard/Moth/Eggs/count");
    window->document().setup().editEntry(PortList::Outputs, 0, "outputPath", "a.txt");
    for (const char* name : {"outputTable", "inputTable", "stepperTable"}) {
        PortTableView& view = table(name);
        ListController& list = window->document().controller(view.portList());
        for (int column = 0; column < view.model()->columnCount(); ++column) {
            const Entry before = list.arrangedObjects().front();
            typeInto(view, 0, column, {"BackSpace", "Return"});
            const bool emptied = waitFor([&] { return list.arrangedObjects().front().size() == before.size() - 1; });
            ASSERT_TRUE(emptied) << name << ' ' << column;
            window->document().setup().undo();
            EXPECT_EQ(list.arrangedObjects().front(), before);
        }
    }
}

TEST_F(SetupTabTest, AFieldIsCommittedByReturnAndByLeavingAndHasUndoOfItsOwnWhileItIsTypedInto) {
    openSample("insect-two-steppers.orrery");
    QLineEdit& runLength = field("runLength");
    runLength.setFocus();
    runLength.selectAll();
    type("50");
    ASSERT_TRUE(waitFor([&] { return setting("runLength") == "50"; }));
    EXPECT_THAT(find<QLabel>(*window, "sweepSize").text().toStdString(), HasSubstr("21 × 9 × 25 = 4,725 rows"));

    xdotool({"type", "7"});
    press("ctrl+z"); // of the typing
    ASSERT_TRUE(waitFor([&] { return runLength.text() == "50"; }));
    EXPECT_EQ(setting("runLength"), "50");
    press("ctrl+z"); // of the document
    ASSERT_TRUE(waitFor([&] { return setting("runLength") == "210"; }));
    EXPECT_EQ(runLength.text(), "210");
    press("ctrl+shift+z");
    ASSERT_TRUE(waitFor([&] { return runLength.text() == "50"; }));

    xdotool({"type", "9"});
    ASSERT_TRUE(waitFor([&] { return runLength.text() == "509"; }));
    window->document().setup().editText("GCD", "4"); // another change does not disturb the typing
    EXPECT_EQ(runLength.text(), "509");
    commitPendingEdit(*window);
    EXPECT_EQ(setting("runLength"), "509");
    EXPECT_TRUE(runLength.hasFocus());
    press("3");
    press("Escape");
    ASSERT_TRUE(waitFor([&] { return runLength.text() == "509"; }));
}

TEST_F(SetupTabTest, PortsAreAddedMovedAndRemovedByKeys) {
    openSample("insect-two-steppers.orrery");
    outline().setFocus();
    outline().setCurrentIndex(showNode("Moth/Eggs/inputs/delay"));
    EXPECT_FALSE(action(*window, "actionAddToOutputs").isEnabled());
    EXPECT_TRUE(action(*window, "actionAddToInitializations").isEnabled());
    EXPECT_FALSE(action(*window, "actionMoveUp").isEnabled());
    press("ctrl+shift+t");
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Steppers).size() == 3; }));
    PortTableView& steppers = table("stepperTable");
    steppers.setFocus();
    EXPECT_FALSE(action(*window, "actionMoveDown").isEnabled());
    press("alt+Up");
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Steppers)[1] == "/Orchard/Moth/Eggs/delay"; }));
    EXPECT_THAT(window->document().controller(PortList::Steppers).selection(), ElementsAre(1U));
    steppers.setCurrentIndex(steppers.model()->index(2, 3));
    press("Tab"); // from the last cell: no table keeps the keyboard
    ASSERT_TRUE(waitFor([&] { return !steppers.hasFocus(); }));
    press("shift+Tab");
    ASSERT_TRUE(waitFor([&] { return steppers.hasFocus(); }));
    steppers.selectRow(1);
    press("Delete");
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Steppers).size() == 2; }));
    EXPECT_THAT(fieldsOf(PortList::Steppers, "start"), ElementsAre("0", "0.1"));
    outline().setCurrentIndex(showNode("Moth/Eggs/inputs"));
    EXPECT_FALSE(action(*window, "actionAddToSteppers").isEnabled());
}

TEST_F(SetupTabTest, TheFilterShowsMatchesWithTheirAncestorsAndEscapeShowsAllAgain) {
    openSample("insect-two-steppers.orrery");
    outline().collapseAll();
    outline().expand(showNode("Weather"));
    outline().collapse(showNode("Moth"));
    press("ctrl+l");
    xdotool({"type", "DELAY"});
    auto& model = static_cast<ModelOutlineModel&>(*outline().model());
    ASSERT_TRUE(waitFor([&] { return model.filter() == "DELAY"; }));
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.shownCount(), 1U + 4 * 3); // Moth, four stages with their group and port
    EXPECT_TRUE(outline().isExpanded(model.indexForPath("Moth/Eggs/inputs")));
    press("Escape");
    ASSERT_TRUE(waitFor([&] { return model.filter().isEmpty(); }));
    EXPECT_TRUE(outline().isExpanded(model.indexForPath("Weather")));
    EXPECT_FALSE(outline().isExpanded(model.indexForPath("Moth")));
    outline().setFilter("eggs/DEL"); // as port paths have it
    EXPECT_EQ(model.shownCount(), 4U);
    outline().setFilter("pupae");
    EXPECT_TRUE(model.indexForPath("Moth/Pupae/inputs/initial").isValid()) << "what is inside a match is shown too";
}

TEST_F(SetupTabTest, APortThatTheModelHasNotIsMarkedUntilTheModelHasIt) {
    openSample("insect-two-steppers.orrery");
    const QModelIndex cell = table("stepperTable").model()->index(0, 0);
    window->document().setup().editEntry(PortList::Steppers, 0, "portPath", "/Orchard/Weather/heigth");
    const std::string fault = cell.data(Qt::AccessibleDescriptionRole).toString().toStdString();
    EXPECT_THAT(fault, HasSubstr("Did you mean “/Orchard/Weather/height”?"));
    EXPECT_THAT(cell.data(Qt::ToolTipRole).toString().toStdString(), HasSubstr(fault));
    EXPECT_TRUE(cell.data(Qt::FontRole).value<QFont>().italic());

    outline().expand(showNode("Moth/Eggs"));
    std::string model = readWholeFile(files.path() + "insect.xml");
    const std::string name = ">height<";
    model.replace(model.find(name), name.size(), ">heigth<");
    files.write("insect.xml", model);
    window->document().setModelModification(std::nullopt);
    window->document().refreshModel();
    EXPECT_EQ(cell.data(Qt::AccessibleDescriptionRole).toString(), "");
    EXPECT_TRUE(outline().isExpanded(showNode("Moth/Eggs"))) << "what was open stays open";
}

TEST_F(SetupTabTest, AStartDayIsShownAsItIsStored) {
    struct Case {
        const char* zone;
        const char* stored;
        const char* shown;
        const char* meaning;
    };
    const Case cases[] = {
        {"EET-2", "2026-09-15 09:30:15 +0500", "2026-09-15 06:30:15", "day 258, UTC+2"},
        {"EET-2", "2026-09-15 23:59:59 +0500", "2026-09-15 20:59:59", "day 258, UTC+2"},
        {"EET-2", "1600-02-29 23:00:00 +0000", "1600-03-01 01:00:00", "day 61, UTC+2"},
        {"EET-2", "0001-01-01 00:00:00 +0000", "0001-01-01 02:00:00", "day 1, UTC+2"},
        {"NST3:30", "9999-12-31 23:59:59 +0000", "9999-12-31 20:29:59", "day 365, UTC-3:30"},
        {"NST3:30", "0001-01-01 00:00:00 +0000", " ", "day 366, UTC-3:30 (0001-01-01 00:00:00 +0000)"},
        {"EET-2", "9999-12-31 23:59:59 +0000", " ", "day 1, UTC+2 (9999-12-31 23:59:59 +0000)"},
    };
    const QByteArray zone = qgetenv("TZ");
    for (const Case& row : cases) {
        qputenv("TZ", row.zone);
        OptionalDateEdit edit;
        auto& field = find<QDateTimeEdit>(edit, "startDayField");
        Date stored = dateWithString(row.stored).value();
        stored.nanoseconds = 7;
        edit.setDate(stored);
        EXPECT_EQ(field.text().toStdString(), row.shown) << row.stored;
        EXPECT_EQ(find<QLabel>(edit, "startDayMeaning").text().toStdString(), row.meaning) << row.stored;
        EXPECT_EQ(edit.date(), stored) << row.stored;
        if (row.shown[0] == ' ') continue;
        field.setSelectedSection(QDateTimeEdit::MonthSection);
        QTest::keyClick(&field, row.stored[0] == '9' ? Qt::Key_Down : Qt::Key_Up);
        const Date moved = edit.date().value();
        EXPECT_NE(moved.seconds, stored.seconds) << row.stored;
        EXPECT_EQ((moved.seconds - stored.seconds) % 86400, 0) << "the time of day stays, to the second";
        EXPECT_TRUE(dateWithString(dateDescription(moved))) << "a file can hold it";
    }
    zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
}

TEST_F(SetupTabTest, ProblemsLeadToTheirPlaceAndAreMendedThere) {
    openSample("insect-two-steppers.orrery");
    auto& problems = find<ProblemsView>(*window, "sweepProblems");
    EXPECT_FALSE(problems.isVisible());
    window->document().setup().editEntry(PortList::Steppers, 1, "stop", "0.97");
    window->document().setup().editText("stepsPerDay", "0");
    ASSERT_TRUE(waitFor([&] { // both lines
        return problems.visibleRegion().boundingRect().height() >= 2 * problems.fontMetrics().lineSpacing();
    }));
    ASSERT_EQ(problems.problems().shown.size(), 2U);

    find<QWidget>(*window, "addStepper").setFocus();
    press("Tab"); // to the remove button
    press("Tab"); // to the table
    table("stepperTable").setCurrentIndex(table("stepperTable").model()->index(1, 3));
    press("Tab"); // behind its last cell
    ASSERT_TRUE(waitFor([&] { return problems.hasFocus(); }));
    press("Tab");
    press("Return");
    ASSERT_TRUE(waitFor([&] { return field("stepsPerDay").hasFocus(); }));
    EXPECT_EQ(field("stepsPerDay").selectedText(), "0");

    const auto click = [&](const char* words) {
        const QTextCursor link = problems.document()->find(words);
        ASSERT_FALSE(link.isNull()) << words;
        clickAt(problems.viewport()->mapToGlobal(problems.cursorRect(link).center() - QPoint(4, 0)));
    };
    click("do not end");
    ASSERT_TRUE(waitFor([&] { return table("stepperTable").hasFocus(); }));
    EXPECT_EQ(table("stepperTable").currentIndex(), table("stepperTable").model()->index(1, 3));
    field("stepsPerDay").setFocus();
    field("stepsPerDay").selectAll();
    xdotool({"type", "10"}); // and what is typed is taken over before
    click("Stop at 1");
    ASSERT_TRUE(waitFor([&] { return fieldsOf(PortList::Steppers, "stop").back() == "1"; }));
    EXPECT_EQ(setting("stepsPerDay"), "10");
    EXPECT_TRUE(waitFor([&] { return !problems.isVisible(); }));
}

struct LargeModelKind {
    std::string type;
    std::string name;
    int count; // below each of the kind before
    std::string relation;
};

std::string relationship(const std::string& name, const std::string& ids) {
    return "<relationship name='" + name + "' idrefs='" + ids + "'/>";
}

/// Adds the objects of these kinds below the parent, and returns the parent's relationship to them.
std::string addObjects(std::string& all, std::span<const LargeModelKind> kinds, const std::string& parent) {
    if (kinds.empty()) return "";
    const LargeModelKind& kind = kinds.front();
    std::string ids;
    for (int n = 0; n < kind.count; ++n) {
        const std::string id = parent + kind.name.at(0) + std::to_string(n);
        const std::string below = addObjects(all, kinds.subspan(1), id);
        all.append("<object type='").append(kind.type).append("' id='").append(id);
        all.append("'><attribute name='name'>").append(kind.name).append(" ").append(id).append("</attribute>");
        all.append(relationship("parent", parent)).append(below).append("</object>\n");
        ids += (n > 0 ? " " : "") + id;
    }
    return relationship(kind.relation, ids);
}

/// Levels of ten parts with nine ports each.
std::string largeModel(int levels) {
    const LargeModelKind kinds[] = {{"KSLEVEL", "level", levels, "children"},
                                    {"KSEXPRESSION", "part", 10, "children"},
                                    {"KSOUTPUT", "port", 9, "outputs"}};
    std::string objects;
    const std::string children = addObjects(objects, kinds, "r");
    return "<database>" + objects + "<object type='KSLEVEL' id='r'><attribute name='name'>Large</attribute>" +
           children + "</object></database>";
}

TEST_F(SetupTabTest, AHundredThousandNodesAreShownFilteredSelectedInTheOrderOfTheTreeAndAddedInOneStep) {
    window = &openNew();
    window->document().setup().chooseModel(files.write("large.xml", largeModel(830)));
    auto& model = static_cast<ModelOutlineModel&>(*outline().model());
    EXPECT_GT(model.shownCount(), 100'000U);
    for (const char* text : {"p", "po", "port rl829p9p8", "l829p9/port"}) {
        field("modelFilter").setText(text);
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(model.shownCount(), 3U + 9); // level, part, group, ports
    field("modelFilter").clear();

    outline().expandAll();
    outline().setFocus();
    press("ctrl+a");
    ASSERT_TRUE(waitFor([&] { return outline().selectedNodes().size() == model.shownCount(); }));
    EXPECT_FALSE(action(*window, "actionAddToOutputs").isEnabled());
    press("End");
    ASSERT_TRUE(waitFor([&] { return outline().selectedNodes().size() == 1; }));
    press("Home");
    press("shift+End");
    ASSERT_TRUE(waitFor([&] { return outline().selectedNodes().size() == model.shownCount(); }));
    EXPECT_EQ(outline().selectedNodes()[5]->name(), "port rl0p0p1"); // behind level, part, two groups and its brother
    outline().clearSelection();
    std::vector<bool> outputs(model.shownCount());
    for (std::size_t position = 0; position < outputs.size(); ++position) {
        outputs[position] = model.nodeAt(position).kind == ModelNodeKind::Port;
    }
    outline().selectionModel()->select(model.selectionOf(outputs), QItemSelectionModel::Select);
    press("ctrl+shift+o");
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Outputs).size() == std::size_t{830} * 90; }));
    EXPECT_EQ(ports(PortList::Outputs)[9], "/Large/level rl0/part rl0p1/port rl0p1p0");
    EXPECT_EQ(action(*window, "actionUndo").text(), "&Undo Add Outputs");
    press("ctrl+z");
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Outputs).empty(); }));
}

TEST_F(SetupTabTest, TheOutlineSelectsAsAnyTreeDoes) {
    openSample("insect-two-steppers.orrery");
    outline().expandAll();
    QItemSelectionModel plain(outline().model());
    std::mt19937 random(7);
    const auto some = [&random](int count) { return std::uniform_int_distribution(0, count - 1)(random); };
    for (int step = 0; step < 2000; ++step) {
        QModelIndex parent;
        for (int depth = some(4); depth > 0 && outline().model()->rowCount(parent) > 0; --depth) {
            parent = outline().model()->index(some(outline().model()->rowCount(parent)), 0, parent);
        }
        if (outline().model()->rowCount(parent) == 0) parent = parent.parent();
        const int first = some(outline().model()->rowCount(parent));
        const int last = first + some(outline().model()->rowCount(parent) - first);
        const QItemSelection range(outline().model()->index(first, 0, parent),
                                   outline().model()->index(last, 0, parent));
        constexpr std::array commands = {QItemSelectionModel::ClearAndSelect, QItemSelectionModel::Select,
                                         QItemSelectionModel::Deselect,       QItemSelectionModel::Toggle,
                                         QItemSelectionModel::NoUpdate,       QItemSelectionModel::SelectCurrent,
                                         QItemSelectionModel::ToggleCurrent,  QItemSelectionModel::Clear};
        const auto command = commands[std::size_t(some(commands.size()))];
        plain.select(range, command);
        outline().selectionModel()->select(range, command);
        const auto all = [](QModelIndexList list) { return QSet<QModelIndex>(list.begin(), list.end()); };
        ASSERT_EQ(all(outline().selectionModel()->selectedIndexes()), all(plain.selectedIndexes())) << step;
    }
}

} // namespace
} // namespace orrery::test
