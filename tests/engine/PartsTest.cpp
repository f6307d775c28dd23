#include "engine/EngineFixture.h"
#include "engine/LookupTable.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace orrery::engine {
namespace {

using Parts = EngineFixture;

TEST_F(Parts, GrowExponentiallyByEulerSteps) {
    const ModelText model = ModelText().part("KSEXPRESSION", "Growth", {{"rate", {{"default", "0.2"}}, {}}},
                                             {{"size", {{"rate", "rate * size"}, {"initial", "3"}}, {}}});
    const TableText table = run(model, setupText("<StepsPerDay>100</StepsPerDay><ReportStep>100</ReportStep>"));
    ASSERT_EQ(table.rows.size(), 10U);
    for (std::size_t day = 0; day < 10; ++day) {
        const double time = static_cast<double>(day);
        EXPECT_NEAR(table.number(day, "size") / (3 * std::pow(1 + 0.2 / 100, 100 * time)), 1, 1e-6);
        // An Euler step of length h is off by about r² h t / 2.
        EXPECT_NEAR(table.number(day, "size") / (3 * std::exp(0.2 * time)), 1, 0.2 * 0.2 * 0.01 * time / 2 + 1e-6);
    }
}

/// A pulse of 7 on the first of the delay's days, and what has come in and gone out so far.
ModelText delayedPulse(const std::string& stages, const std::string& delay, const std::string& attrition) {
    return ModelText()
        .part("KSEXPRESSION", "Pulse", {}, {{"pulse", {{"expression", "time < 1 - dt / 2 ? 7 : 0"}}, {}}})
        .part("KSTVDD", "Delay",
              {{"inflow", {}, "Pulse/pulse"},
               {"delay", {{"default", delay}}, {}},
               {"attrition", {{"default", attrition}}, {}}},
              {{"outflow", {}, {}}, {"storage", {{"quantity", "storage"}}, {}}}, {{"stages", stages}})
        .part("KSEXPRESSION", "Sum", {{"in", {}, "Pulse/pulse"}, {"out", {}, "Delay/outflow"}},
              {{"came", {{"rate", "in"}}, {}},
               {"went", {{"rate", "out"}}, {}},
               {"moment", {{"rate", "out * (time + dt)"}}, {}}});
}

TEST_F(Parts, DelayConservesMassAndHoldsItsMeanTime) {
    const TableText table =
        run(delayedPulse("5", "12", "0"),
            setupText("<StepsPerDay>20</StepsPerDay><ReportStep>20</ReportStep><RunLength>100</RunLength>"));
    for (std::size_t row = 0; row < table.rows.size(); ++row) {
        EXPECT_NEAR(table.number(row, "came"), table.number(row, "went") + table.number(row, "storage"), 1e-5);
    }
    const std::size_t last = table.rows.size() - 1;
    EXPECT_NEAR(table.number(last, "went"), 7, 1e-3);
    // The pulse comes in around half a day; the tail still inside at the end keeps the mean a little low.
    EXPECT_NEAR(table.number(last, "moment") / table.number(last, "went"), 12.5, 0.1);
}

TEST_F(Parts, DelayLosesWhatItsAttritionTakes) {
    const TableText table =
        run(delayedPulse("1", "10", "0.1"),
            setupText("<StepsPerDay>20</StepsPerDay><ReportStep>20</ReportStep><RunLength>200</RunLength>"));
    EXPECT_NEAR(table.number(199, "went"), 3.5, 1e-3); // leaves and is lost at the same rate
}

TEST_F(Parts, DelayShorterThanItsStagesStaysStable) {
    const TableText table = run(delayedPulse("4", "0.001", "0"), setupText({}));
    EXPECT_DOUBLE_EQ(table.number(9, "went"), 7);
    EXPECT_DOUBLE_EQ(table.number(4, "went"), 0); // four stages of one step each, and the step of the pulse
}

TEST_F(Parts, RandomNumbersAreReproducibleAndDifferBetweenGridPoints) {
    const ModelText model = ModelText()
                                .part("KSRANDOM", "Dice", {{"unused", {{"default", "0"}}, {}}},
                                      {{"uniform", {{"minimum", "2"}, {"maximum", "4"}}, {}}})
                                .part("KSRANDOM", "Bell", {}, {{"normal", {{"mean", "10"}, {"deviation", "2"}}, {}}},
                                      {{"distribution", "normal"}, {"interval", "0.5"}});
    const std::string setup = setupText("<StepsPerDay>4</StepsPerDay><RunLength>1000</RunLength>",
                                        stepper("/Root/Dice/unused", "0", "1", "1"));
    const TableText table = run(model, setup);
    const std::string first = read("Zephyr.txt");
    static_cast<void>(run(model, setup));
    EXPECT_EQ(read("Zephyr.txt"), first);

    ASSERT_EQ(table.rows.size(), 8000U);
    double sum = 0;
    double squares = 0;
    std::size_t equalInBothPoints = 0;
    for (std::size_t row = 0; row < 4000; ++row) {
        const double uniform = table.number(row, "uniform");
        EXPECT_TRUE(uniform > 2 && uniform < 4);
        equalInBothPoints += uniform == table.number(row + 4000, "uniform") ? 1U : 0U;
        EXPECT_EQ(uniform, table.number(row - row % 4, "uniform")); // one number a day
        const double normal = table.number(row, "normal");
        EXPECT_EQ(normal, table.number(row - row % 2, "normal")); // two numbers a day
        sum += normal;
        squares += normal * normal;
    }
    EXPECT_EQ(equalInBothPoints, 0U);
    EXPECT_NEAR(sum / 4000, 10, 0.2); // four standard errors of 2,000 numbers
    EXPECT_NEAR(std::sqrt(squares / 4000 - sum * sum / 4000 / 4000), 2, 0.15);
}

TEST_F(Parts, WeatherPeaksOnItsDayAndStaysAboveItsMinimum) {
    const ModelText model = ModelText().part(
        "KSWEATHER", "Weather", {{"shift", {{"default", "1"}}, {}}},
        {{"temperature", {{"mean", "10 + shift"}, {"amplitude", "9"}, {"peakDay", "200"}, {"minimum", "4"}}, {}}});
    const TableText table = run(model, setupText("<RunLength>565</RunLength>"));
    EXPECT_DOUBLE_EQ(table.number(199, "temperature"), 20);
    EXPECT_DOUBLE_EQ(table.number(199 + 365, "temperature"), 20); // the year starts again
    EXPECT_DOUBLE_EQ(table.number(199 - 182, "temperature"), 4);
}

TEST_F(Parts, TakeFileColumnsAndPassInputsThrough) {
    write("trap.dat", "# two columns\nday  catch\n\n3\t30\n5\t10\n");
    const ModelText model =
        ModelText()
            .part("KSFILE", "Trap", {}, {{"catch", {}, {}}}, {{"file", "trap.dat"}})
            .part("KSINPUTSPLITTER", "Split", {{"a", {}, "Trap/catch"}, {"b", {{"default", "7"}}, {}}},
                  {{"o1", {{"varid", "1"}}, {}}, {"o2", {{"varid", "2"}}, {}}, {"o3", {{"varid", "3"}}, {}}});
    const TableText table = run(model, setupText({}));
    const std::vector<double> expected = {30, 30, 30, 20, 10, 10};
    for (std::size_t row = 0; row < expected.size(); ++row) {
        EXPECT_DOUBLE_EQ(table.number(row, "catch"), expected[row]);
        EXPECT_DOUBLE_EQ(table.number(row, "o1"), expected[row]);
        EXPECT_DOUBLE_EQ(table.number(row, "o2"), 7);
        EXPECT_DOUBLE_EQ(table.number(row, "o3"), 7);
    }
}

TEST_F(Parts, NameTheFaultsOfAFile) {
    const ModelText model = ModelText().part("KSFILE", "Trap", {}, {{"catch", {}, {}}}, {{"file", "trap.dat"}});
    const std::vector<std::pair<const char*, const char*>> faults{
        {"day caught\n1 2\n", "trap.dat:1: port “/Root/Trap/catch”"},
        {"day catch\n1 x\n", "trap.dat:2: port"},
        {"day catch\n1\n", "trap.dat:2: port"},
        {"day catch\n2 1\n1 1\n", "ascending"},
        {"", "ascending"}};
    for (const auto& [text, message] : faults) {
        write("trap.dat", text);
        try {
            static_cast<void>(run(model, setupText({})));
            ADD_FAILURE() << "no error for " << text;
        } catch (const OrreryError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(message));
        }
    }
    std::filesystem::remove(path("trap.dat"));
    EXPECT_THROW(runFiles(), OrreryError);
}

TEST(LookupTableValues, AreLinearBetweenPointsAndConstantOutside) {
    const LookupTable table = LookupTable::fromText(" 1 10;2 20 ; 4 0;", {}, "table");
    for (const auto& [x, y] :
         std::vector<std::pair<double, double>>{{-5, 10}, {1, 10}, {1.5, 15}, {2, 20}, {3, 10}, {4, 0}, {9, 0}}) {
        EXPECT_DOUBLE_EQ(table.valueAt(x), y) << x;
    }
    for (const char* text : {"", "1", "1 2; 1 3", "2 1; 1 1", "1,5 2", "a b", "1 2 3", "1 inf"}) {
        EXPECT_THROW(static_cast<void>(LookupTable::fromText(text, {}, "table")), OrreryError) << text;
    }
}

} // namespace
} // namespace orrery::engine
