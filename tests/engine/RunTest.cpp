#include "engine/EngineFixture.h"
#include "run/table/ResultTable.h"

#include <gmock/gmock.h>

namespace orrery::engine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using SetupRun = EngineFixture;

/// An output that tells the values of its two inputs and the day apart.
ModelText sumModel() {
    return ModelText().part("KSEXPRESSION", "Sum", {{"a", {{"default", "0"}}, {}}, {"b", {{"default", "0"}}, {}}},
                            {{"the days", {{"rate", "1"}}, {}},
                             {"sum", {{"varid", "2"}, {"expression", "1000 * a + 10 * b + the_days"}}, {}}});
}

TEST_F(SetupRun, PutsStepperValuesIntoTheRightRows) {
    const TableText table =
        run(sumModel(), setupText("<ReportStep>2</ReportStep>",
                                  stepper("/Root/Sum/a", "1", "1", "3") + stepper("Sum/b", "0.5", "0.25", "1")));
    EXPECT_THAT(table.labels, ElementsAre("row", "a", "b", "day", "the days", "sum"));
    ASSERT_EQ(table.rows.size(), 3U * 3 * 5);
    for (std::size_t row = 0; row < table.rows.size(); ++row) {
        const std::size_t aIndex = row / 15;
        const double a = 1 + static_cast<double>(aIndex);
        const double b = 0.5 + 0.25 * static_cast<double>(row / 5 % 3);
        const double days = 2 * static_cast<double>(row % 5);
        EXPECT_EQ(table.number(row, "row"), static_cast<double>(row));
        EXPECT_EQ(table.number(row, "a"), a);
        EXPECT_EQ(table.number(row, "b"), b);
        EXPECT_EQ(table.number(row, "day"), 1 + days);
        EXPECT_EQ(table.number(row, "sum"), 1000 * a + 10 * b + days) << row;
    }
}

TEST_F(SetupRun, ReportsAtTheNearestTimeStep) {
    const TableText table = run(sumModel(), setupText("<ReportStep>2.5</ReportStep>"));
    ASSERT_EQ(table.rows.size(), 4U);
    EXPECT_EQ(table.number(1, "the days"), 3);
    EXPECT_EQ(table.number(2, "the days"), 5);
    EXPECT_EQ(table.number(3, "the days"), 8);
}

TEST_F(SetupRun, StepperHasTheLastWordOverAnInitialization) {
    const TableText table =
        run(sumModel(), setupText({}, initialization("/Root/Sum/b", "{7}") + initialization("/Root/Sum/a", "9") +
                                          stepper("/Root/Sum/a", "1", "1", "2")));
    EXPECT_EQ(table.number(0, "sum"), 1070);
    EXPECT_EQ(table.number(10, "sum"), 2070);
}

TEST_F(SetupRun, InitializesTheCellThatTheCoordinatesName) {
    const std::string setup =
        setupText("<Dimensions>{ 3, 2 }</Dimensions>",
                  output("/Root/Sum/sum", "cells.txt") + initialization("/Root/Sum/b", "5") +
                      initialization("/Root/Sum/b", "7", "{ 2, 2 }") + stepper("/Root/Sum/a", "0", "1", "1"));
    const TableText table = run(sumModel(), setup);
    EXPECT_EQ(table.cells(0), "{50 50 50 50 70 50}");
    EXPECT_EQ(table.cells(13), "{1053 1053 1053 1053 1073 1053}");
    EXPECT_THAT(read("cells.txt"), HasSubstr("\n13\t1\t4\t1053 1053 1053 1053 1073 1053\n"));
    EXPECT_THAT(files(), ElementsAre("Zephyr.txt", "cells.txt", "model.xml", "setup.orrery"));

    const ResultTable read = readResultTable(path("Zephyr.txt"), {20, 3, 2});
    EXPECT_EQ(read.rowsFound, 20U);
    EXPECT_EQ(read.cells[1], 320.0F);
}

TEST_F(SetupRun, CutsAConnectionOnlyInTheCellThatIsInitialized) {
    ModelText model = sumModel();
    model.part("KSEXPRESSION", "Double", {{"x", {}, "Sum/sum"}}, {{"twice", {{"expression", "2 * x"}}, {}}});
    const TableText table =
        run(model, setupText("<Dimensions>{2,1}</Dimensions>",
                             initialization("/Root/Sum/b", "3") + initialization("/Root/Double/x", "-1", "{1,1}")));
    EXPECT_EQ(table.cells(0), "{-2 60}");
    EXPECT_EQ(table.cells(4), "{-2 68}");
}

TEST_F(SetupRun, WritesOnlyAHeaderForAGridWithoutRows) {
    const TableText table = run(sumModel(), setupText("<ReportStep>100</ReportStep>"));
    EXPECT_EQ(table.labels.size(), 4U);
    EXPECT_TRUE(table.rows.empty());
    EXPECT_THAT(m_lines, HasSubstr("Note: "));
}

TEST_F(SetupRun, LeavesTheOldTableWhenItIsStopped) {
    static_cast<void>(run(sumModel(), setupText({})));
    const std::string before = read("Zephyr.txt");
    m_stop = true;
    write("setup.orrery", setupText("<RunLength>5</RunLength>"));
    EXPECT_THROW(runFiles(), Interrupted);
    EXPECT_EQ(read("Zephyr.txt"), before);
    EXPECT_THAT(files(), ElementsAre("Zephyr.txt", "model.xml", "setup.orrery"));
}

/// A setup or model with one fault, and what its message must hold.
struct FaultCase {
    const char* name;
    std::string expression; // of the output /Root/Part/y, whose part has the input x
    std::string settings;
    std::string entries;
    std::vector<std::string> message;
};

class Fault : public EngineFixture, public testing::WithParamInterface<FaultCase> {};

TEST_P(Fault, NamesFilePortAndRemedy) {
    const FaultCase& fault = GetParam();
    const ModelText model = ModelText()
                                .part("KSEXPRESSION", "Part", {{"x", {}, "Back/z"}, {"free", {}, {}}},
                                      {{"y", {{"expression", fault.expression}}, {}}})
                                .part("KSEXPRESSION", "Back", {{"y", {}, "Part/y"}}, {{"z", {{"rate", "y"}}, {}}});
    try {
        static_cast<void>(run(model, setupText(fault.settings, fault.entries)));
        ADD_FAILURE() << "no error";
    } catch (const OrreryError& error) {
        for (const std::string& part : fault.message) {
            EXPECT_THAT(error.what(), HasSubstr(part));
        }
        EXPECT_FALSE(error.remedy().empty());
    }
    EXPECT_THAT(files(), ElementsAre("model.xml", "setup.orrery"));
}

INSTANTIATE_TEST_SUITE_P(
    Setups, Fault,
    testing::Values(FaultCase{"unknownPort",
                              "x",
                              {},
                              initialization("/Root/Part/fre", "1"),
                              {"setup.orrery", "“/Root/Part/fre”", "Did you mean “/Root/Part/free”?"}},
                    FaultCase{"outputPortStepped", "x", {}, stepper("/Root/Part/y", "0", "1", "2"), {"no input port"}},
                    FaultCase{"unknownOutput", "x", {}, output("/Root/Part/yy", "f"), {"Did you mean “/Root/Part/y”?"}},
                    FaultCase{"missingModel", "x", "<ModelPath>gone.xml</ModelPath>", {}, {"gone.xml"}},
                    FaultCase{"noModel", "x", "<ModelPath/>", {}, {"No model is chosen."}},
                    FaultCase{"noPort", "x", {}, initialization("", "1"), {"initialization 1 has no port"}},
                    FaultCase{
                        "noValue", "x", {}, initialization("/Root/Part/free", ""), {"initialization 1", "no number"}},
                    FaultCase{"cellOutside",
                              "x",
                              "<Dimensions>{2,2}</Dimensions>",
                              initialization("/Root/Part/free", "1", "{3,1}"),
                              {"not those of a cell of the 2 x 2 grid"}},
                    FaultCase{"dimensions", "x", "<Dimensions>{2.5,1}</Dimensions>", {}, {"dimensions", "{2.5,1}"}},
                    FaultCase{"outputWithoutPath",
                              "x",
                              "<Dimensions>{2,1}</Dimensions>",
                              output("/Root/Part/y", ""),
                              {"output 1", "no output path"}},
                    FaultCase{"outputPathTwice",
                              "x",
                              "<Dimensions>{2,1}</Dimensions>",
                              output("/Root/Part/y", "f") + output("/Root/Back/z", "f"),
                              {"output 2", "another's"}},
                    FaultCase{"outputDirectory",
                              "x",
                              "<Dimensions>{2,1}</Dimensions>",
                              output("/Root/Part/y", "gone/f"),
                              {"gone/f", "No file was made"}},
                    FaultCase{"stepsPerDay", "x", "<StepsPerDay>-1</StepsPerDay>", {}, {"steps per day"}}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Models, Fault,
    testing::Values(FaultCase{"badExpression", "x +* 2", {}, {}, {"model.xml:", "/Root/Part/y", "\"*\"", "may use"}},
                    FaultCase{"unknownName", "x + foo", {}, {}, {"model.xml:", "/Root/Part/y", "\"foo\""}},
                    FaultCase{"assignment", "x = 2", {}, {}, {"/Root/Part/y", "“==”"}},
                    FaultCase{"decimalComma", "x + 1,5", {}, {}, {"/Root/Part/y", "point"}},
                    FaultCase{"algebraicCycle", "x + y", {}, {}, {"model.xml:", "cycle", "/Root/Part/y"}},
                    FaultCase{"notFinite", "1 / (time - 3)", {}, {}, {"/Root/Part/y", "row 3", "day 4"}}),
    [](const auto& row) { return row.param.name; });

TEST_F(SetupRun, NamesThePortsOfAnAlgebraicCycle) {
    const ModelText model = ModelText()
                                .part("KSEXPRESSION", "A", {{"x", {}, "B/y"}}, {{"y", {{"expression", "x + 1"}}, {}}})
                                .part("KSEXPRESSION", "B", {{"x", {}, "A/y"}}, {{"y", {{"expression", "2 * x"}}, {}}});
    try {
        static_cast<void>(run(model, setupText({})));
        ADD_FAILURE() << "no error";
    } catch (const OrreryError& error) {
        EXPECT_THAT(error.what(), HasSubstr("/Root/B/y -> /Root/A/y -> /Root/B/y"));
    }
}

} // namespace
} // namespace orrery::engine
