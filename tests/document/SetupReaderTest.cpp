#include "document/setup/SetupReader.h"

#include "platform/values/OrreryError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orrery {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

std::string setupWith(const std::string& further) {
    return "<Simulation><ModelPath>m.xml</ModelPath><Dimensions>{ 1, 1 }</Dimensions><RunLength>9</RunLength>"
           "<ReportStep>2</ReportStep>" +
           further + "</Simulation>";
}

// What the files of the comparison with the reference implementation do not hold.

TEST(StepsPerDay, AreTheReciprocalOfTheStepWhereThereIsNotOneElementOfTheirOwn) {
    const std::pair<const char*, const char*> cases[] = {
        {"<StepsPerDay>7</StepsPerDay><Dt>0.1</Dt>", "7"},
        {"<StepsPerDay>7</StepsPerDay><StepsPerDay/><Dt>0.5</Dt>", "2.000000"},
        {"<Dt>0.0003</Dt>", "3333.333252"}, // single, not double
        {"<Dt> .25 days</Dt>", "4.000000"},
        {"<Dt>-3</Dt>", "-0.333333"},
    };
    for (const auto& [xml, text] : cases) {
        EXPECT_EQ(readSetup(setupWith(xml), "a.setup").dictionary.textOrEmpty(setup_key::stepsPerDay), text) << xml;
    }
}

TEST(EntryElement, NamesAPortByItsPartWithOrWithoutTheRest) {
    const LoadedSetup loaded = readSetup(setupWith("<Output><PortName>Area</PortName></Output>"
                                                   "<Output><PartName>Leaf</PartName><OutputPathName/></Output>"),
                                         "a.setup");
    EXPECT_EQ(loaded.dictionary.entries(setup_key::outputs),
              EntryList({{}, {{"portPath", "Leaf/"}, {"outputPath", ""}}}));
}

TEST(SetupReader, NamesTheFileAndAllThatIsMissing) {
    try {
        (void)readSetup("<Simulation><RunLength>1</RunLength></Simulation>", "a.setup");
        FAIL() << "a setup without its settings was read";
    } catch (const OrreryError& error) {
        EXPECT_EQ(error.place().file, "a.setup");
        EXPECT_THAT(error.what(), AllOf(HasSubstr("ModelPath"), HasSubstr("Dimensions"), HasSubstr("ReportStep")));
        EXPECT_THAT(error.what(), Not(HasSubstr("RunLength")));
    }
}

TEST(SetupReader, TakesEveryCutFileAsTheEmptyDocument) {
    const std::string whole = setupWith("<Output><PortPath>/a</PortPath></Output>");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const LoadedSetup loaded = readSetup(std::string_view(whole).substr(0, length), "a.setup");
        EXPECT_FALSE(loaded.parsed);
        EXPECT_THAT(loaded.fault, HasSubstr("a.setup"));
        EXPECT_FALSE(loaded.dictionary.contains(setup_key::modelPath));
        EXPECT_EQ(loaded.dictionary.textOrEmpty(setup_key::gcd), "0");
        EXPECT_EQ(loaded.dictionary.startDay(), Date());
        ASSERT_NE(loaded.dictionary.list(setup_key::steppers), nullptr);
    }
}

TEST(SetupReader, DecodesAsDeclaredElseAsUtf8ElseAsMacRoman) {
    const auto gcdOf = [](const std::string& declaration, const std::string& text) {
        const LoadedSetup loaded = readSetup(declaration + setupWith("<GCD>" + text + "</GCD>"), "a.setup");
        return loaded.parsed ? std::string(loaded.dictionary.textOrEmpty(setup_key::gcd)) : "not read";
    };
    const std::string accented = "\xC3\xA9"; // U+00E9
    EXPECT_EQ(gcdOf("", "\x8E"), accented);
    EXPECT_EQ(gcdOf("<?xml version='1.0' encoding='macintosh'?>", accented), "\xE2\x88\x9A\xC2\xA9"); // as it says
    EXPECT_EQ(gcdOf("<?xml version='1.0' encoding='UTF-8'?>", "\x8E"), "not read");
}

} // namespace
} // namespace orrery
