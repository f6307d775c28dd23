#include "document/setup/SetupReader.h"

#include "platform/OrreryError.h"

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

TEST(Setting, IsReadFromItsElements) {
    using namespace setup_key;
    struct Case {
        const char* name;
        const char* xml;
        std::string_view key;
        const char* text; // nullptr: absent
    };
    const Case cases[] = {
        {"first of several", "<ModelPath>b</ModelPath>", modelPath, "m.xml"},
        {"nested, untrimmed", "<GCD> 1<b>2</b><![CDATA[<3]]>\n</GCD>", gcd, " 12<3\n"},
        {"GCD absent", "", gcd, "0"},
        {"GCD twice", "<GCD>1</GCD><GCD>2</GCD>", gcd, "0"},
        {"GCD empty", "<GCD/>", gcd, ""},
        {"GCD deeper", "<x><GCD>5</GCD></x>", gcd, "0"},
        {"steps given", "<StepsPerDay>7</StepsPerDay><Dt>0.1</Dt>", stepsPerDay, "7"},
        {"steps twice", "<StepsPerDay>7</StepsPerDay><StepsPerDay>8</StepsPerDay>", stepsPerDay, nullptr},
        {"steps twice and Dt", "<StepsPerDay>7</StepsPerDay><StepsPerDay/><Dt>0.5</Dt>", stepsPerDay, "2.000000"},
        {"a tenth", "<Dt>0.1</Dt>", stepsPerDay, "10.000000"},
        {"single, not double", "<Dt>0.0003</Dt>", stepsPerDay, "3333.333252"},
        {"unit", "<Dt> .25 days</Dt>", stepsPerDay, "4.000000"},
        {"zero", "<Dt>0</Dt>", stepsPerDay, "inf"},
        {"minus zero", "<Dt>-0</Dt>", stepsPerDay, "-inf"},
        {"no number", "<Dt>daily</Dt>", stepsPerDay, "inf"},
        {"negative", "<Dt>-3</Dt>", stepsPerDay, "-0.333333"},
        {"Dt twice", "<Dt>1</Dt><Dt>1</Dt>", stepsPerDay, nullptr},
    };
    for (const Case& row : cases) {
        const SetupDictionary setup = readSetup(setupWith(row.xml), "a.setup").dictionary;
        EXPECT_EQ(setup.contains(row.key), row.text != nullptr) << row.name;
        EXPECT_EQ(setup.textOrEmpty(row.key), row.text == nullptr ? "" : row.text) << row.name;
    }
}

TEST(StartDay, IsTheReferenceDateOnlyWithoutASingleElement) {
    const auto startDay = [](const char* xml) { return readSetup(setupWith(xml), "a.setup").dictionary.startDay(); };
    EXPECT_EQ(startDay(""), Date());
    EXPECT_EQ(startDay("<StartDay>x</StartDay><StartDay>2002-01-01 00:00:00 +0000</StartDay>"), Date());
    EXPECT_EQ(startDay("<StartDay>2001-01-02 01:00:00 +0100</StartDay>"), Date{86400});
    EXPECT_EQ(startDay("<StartDay></StartDay>"), std::nullopt);
}

TEST(EntryElement, GivesTheLastOfEachField) {
    const auto read = [](std::string_view list, const char* xml) {
        return readSetup(setupWith(xml), "a.setup").dictionary.entries(list);
    };
    EXPECT_EQ(read(setup_key::outputs, "<Output><PortPath>/a/b</PortPath><OutputPathName>1</OutputPathName>"
                                       "<OutputPathName>2</OutputPathName><PortPath>/c/d</PortPath></Output>"),
              EntryList({{{"portPath", "/c/d"}, {"outputPath", "2"}}}));
    EXPECT_EQ(read(setup_key::outputs,
                   "<Output><PartName>Leaf</PartName><PortPath>/x</PortPath><PortName>Area</PortName></Output>"),
              EntryList({{{"portPath", "Leaf/Area"}}}));
    EXPECT_EQ(read(setup_key::initializations, "<Initialization><PartName>Leaf</PartName><Value/></Initialization>"),
              EntryList({{{"portPath", "Leaf/"}, {"value", ""}}}));
    EXPECT_EQ(read(setup_key::outputs, "<Output><PortName>Area</PortName></Output>"), EntryList(1));
    EXPECT_EQ(read(setup_key::initializations, "<Initialization><Coordinates>{ 2, 3 }</Coordinates></Initialization>"),
              EntryList({{{"coordinates", "{ 2, 3 }"}}}));
    EXPECT_EQ(read(setup_key::steppers,
                   "<Steppers><PartName>A</PartName><PortName>b</PortName><Step>1</Step><Coordinates/></Steppers>"),
              EntryList({{{"step", "1"}}}))
        << "no part form";
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
    EXPECT_EQ(gcdOf("", accented), accented);
    EXPECT_EQ(gcdOf("", "\x8E"), accented);
    EXPECT_EQ(gcdOf("<?xml version='1.0' encoding='macintosh'?>", accented), "\xE2\x88\x9A\xC2\xA9"); // as it says
    EXPECT_EQ(gcdOf("<?xml version='1.0' encoding='UTF-8'?>", "\x8E"), "not read");
}

} // namespace
} // namespace orrery
