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

struct SettingCase {
    const char* name;
    const char* xml;
    std::string_view key;
    const char* text; // nullptr: absent
};
class Setting : public testing::TestWithParam<SettingCase> {};

TEST_P(Setting, IsReadFromItsElements) {
    const LoadedSetup loaded = readSetup(setupWith(GetParam().xml), "a.setup");
    ASSERT_EQ(loaded.dictionary.contains(GetParam().key), GetParam().text != nullptr);
    EXPECT_EQ(loaded.dictionary.textOrEmpty(GetParam().key), GetParam().text == nullptr ? "" : GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Elements, Setting,
    testing::Values(SettingCase{"firstOfSeveral", "<ModelPath>b</ModelPath>", setup_key::modelPath, "m.xml"},
                    SettingCase{"nestedTextUntrimmed", "<GCD> 1<b>2</b><![CDATA[<3]]>\n</GCD>", setup_key::gcd,
                                " 12<3\n"},
                    SettingCase{"gcdAbsent", "", setup_key::gcd, "0"},
                    SettingCase{"gcdTwice", "<GCD>1</GCD><GCD>2</GCD>", setup_key::gcd, "0"},
                    SettingCase{"gcdEmpty", "<GCD/>", setup_key::gcd, ""},
                    SettingCase{"gcdDeeper", "<x><GCD>5</GCD></x>", setup_key::gcd, "0"},
                    SettingCase{"stepsGiven", "<StepsPerDay>7</StepsPerDay><Dt>0.1</Dt>", setup_key::stepsPerDay, "7"},
                    SettingCase{"stepsTwiceNoDt", "<StepsPerDay>7</StepsPerDay><StepsPerDay>8</StepsPerDay>",
                                setup_key::stepsPerDay, nullptr},
                    SettingCase{"stepsTwiceAndDt", "<StepsPerDay>7</StepsPerDay><StepsPerDay/><Dt>0.5</Dt>",
                                setup_key::stepsPerDay, "2.000000"},
                    SettingCase{"dtTenth", "<Dt>0.1</Dt>", setup_key::stepsPerDay, "10.000000"},
                    SettingCase{"dtSingleNotDouble", "<Dt>0.0003</Dt>", setup_key::stepsPerDay, "3333.333252"},
                    SettingCase{"dtWithUnit", "<Dt> .25 days</Dt>", setup_key::stepsPerDay, "4.000000"},
                    SettingCase{"dtZero", "<Dt>0</Dt>", setup_key::stepsPerDay, "inf"},
                    SettingCase{"dtMinusZero", "<Dt>-0</Dt>", setup_key::stepsPerDay, "-inf"},
                    SettingCase{"dtNoNumber", "<Dt>daily</Dt>", setup_key::stepsPerDay, "inf"},
                    SettingCase{"dtNegative", "<Dt>-3</Dt>", setup_key::stepsPerDay, "-0.333333"},
                    SettingCase{"dtTwice", "<Dt>1</Dt><Dt>1</Dt>", setup_key::stepsPerDay, nullptr}),
    [](const auto& row) { return row.param.name; });

TEST(StartDay, IsTheReferenceDateOnlyWithoutASingleElement) {
    const auto startDay = [](const char* xml) { return readSetup(setupWith(xml), "a.setup").dictionary.startDay(); };
    EXPECT_EQ(startDay(""), Date());
    EXPECT_EQ(startDay("<StartDay>x</StartDay><StartDay>2002-01-01 00:00:00 +0000</StartDay>"), Date());
    EXPECT_EQ(startDay("<StartDay>2001-01-02 01:00:00 +0100</StartDay>"), Date{86400});
    EXPECT_EQ(startDay("<StartDay></StartDay>"), std::nullopt);
}

struct EntryCase {
    const char* name;
    const char* xml;
    std::string_view list;
    Entry entry;
};
class EntryElement : public testing::TestWithParam<EntryCase> {};

TEST_P(EntryElement, GivesTheLastOfEachField) {
    const LoadedSetup loaded = readSetup(setupWith(GetParam().xml), "a.setup");
    ASSERT_EQ(loaded.dictionary.entries(GetParam().list).size(), 1U);
    EXPECT_TRUE(loaded.dictionary.entries(GetParam().list).front() == GetParam().entry);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, EntryElement,
    testing::Values(
        EntryCase{"lastWins",
                  "<Output><PortPath>/a/b</PortPath><OutputPathName>1</OutputPathName>"
                  "<OutputPathName>2</OutputPathName><PortPath>/c/d</PortPath></Output>",
                  setup_key::outputs, Entry{{"portPath", "/c/d"}, {"outputPath", "2"}}},
        EntryCase{"partAndPortBeforePath",
                  "<Output><PartName>Leaf</PartName><PortPath>/x</PortPath><PortName>Area</PortName></Output>",
                  setup_key::outputs, Entry{{"portPath", "Leaf/Area"}}},
        EntryCase{"partWithoutPort", "<Initialization><PartName>Leaf</PartName><Value/></Initialization>",
                  setup_key::initializations, Entry{{"portPath", "Leaf/"}, {"value", ""}}},
        EntryCase{"portWithoutPart", "<Output><PortName>Area</PortName></Output>", setup_key::outputs, Entry{}},
        EntryCase{"coordinates", "<Initialization><Coordinates>{ 2, 3 }</Coordinates></Initialization>",
                  setup_key::initializations, Entry{{"coordinates", "{ 2, 3 }"}}},
        EntryCase{"stepperHasNoPartForm",
                  "<Steppers><PartName>A</PartName><PortName>b</PortName><Step>1</Step><Coordinates/></Steppers>",
                  setup_key::steppers, Entry{{"step", "1"}}}),
    [](const auto& row) { return row.param.name; });

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
    const auto gcdOf = [](const std::string& declaration, const std::string& gcd) {
        return std::string(readSetup(declaration + setupWith("<GCD>" + gcd + "</GCD>"), "a.setup")
                               .dictionary.textOrEmpty(setup_key::gcd));
    };
    const std::string accented = "\xC3\xA9"; // U+00E9
    EXPECT_EQ(gcdOf("", accented), accented);
    EXPECT_EQ(gcdOf("\xEF\xBB\xBF", accented), accented);
    EXPECT_EQ(gcdOf("", "\x8E"), accented);
    EXPECT_EQ(gcdOf("<?xml version='1.0'?>", "\x8E"), accented);
    EXPECT_EQ(gcdOf("<?xml version='1.0' encoding='macintosh'?>", "\x8E"), accented);
    EXPECT_EQ(gcdOf("<?xml version='1.0' encoding='ISO-8859-1'?>", "\xE9"), accented);
    EXPECT_EQ(gcdOf("<?xml version='1.0' encoding='macintosh'?>", accented), "\xE2\x88\x9A\xC2\xA9"); // as it says
    EXPECT_FALSE(readSetup("<?xml version='1.0' encoding='UTF-8'?>" + setupWith("<GCD>\x8E</GCD>"), "a").parsed);
}

} // namespace
} // namespace orrery
