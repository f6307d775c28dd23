#include "document/setup/SetupWriter.h"

#include "document/setup/SetupForm.h"
#include "document/setup/SetupReader.h"
#include "platform/values/MacRoman.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Utf8.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace orrery {
namespace {

using testing::HasSubstr;

TEST(SetupWriter, WritesTheListsInTheFilesOrder) {
    SetupDictionary setup;
    setup.setList(setup_key::steppers, {{{"stop", "3"}, {"portPath", "/a"}, {"coordinates", "{ 0, 0 }"}}});
    setup.setList(setup_key::initializations, {{{"value", "<&]]>"}}});
    setup.setList(setup_key::outputs, {{{"portPath", "/b"}, {"note", "not saved"}}, {{"outputPath", "f\xC3\xA9"}}});
    EXPECT_EQ(setupFileBytes(setup, "a.setup"),
              "<Simulation><ModelPath></ModelPath><StepsPerDay></StepsPerDay><StartDay></StartDay>"
              "<RunLength></RunLength><ReportStep></ReportStep><Dimensions></Dimensions><GCD></GCD>"
              "<Output><PortPath>/b</PortPath><OutputPathName></OutputPathName></Output>"
              "<Output><PortPath></PortPath><OutputPathName>f\x8E</OutputPathName></Output>"
              "<Initialization><PortPath></PortPath><Coordinates></Coordinates>"
              "<Value>&lt;&amp;]]&gt;</Value></Initialization>"
              "<Steppers><PortPath>/a</PortPath><Start></Start><Step></Step><Stop>3</Stop></Steppers></Simulation>");
}

TEST(SetupWriter, RefusesWhatAFileCannotHoldAndNamesItsField) {
    const std::pair<std::string, const char*> cases[] = {
        {"0\xC4\x85", "U+0105"},
        {"\xE4\xB8\xAD", "U+4E2D"},
        {"\xF0\x9F\x8C\xBE", "U+1F33E"},
        {std::string("1\0", 2), "U+0000"},
        {"\x1B[1m", "U+001B"},
        {"\xEF\xBF\xBE", "U+FFFE"},
        {"a\xFF", "FF"},
        {"\xED\xA0\x80", "ED"},
    };
    for (const auto& [text, message] : cases) {
        SetupDictionary setup = defaultSetup();
        setup.setList(setup_key::initializations, {{}, {{"portPath", "/Field/Crop/x"}, {"value", text}}});
        try {
            (void)setupFileBytes(setup, "a.setup");
            ADD_FAILURE() << message << " was written";
        } catch (const OrreryError& error) {
            EXPECT_EQ(error.place().file, "a.setup");
            EXPECT_THAT(error.problem(), HasSubstr("value of initialization 2 (“/Field/Crop/x”)"));
            EXPECT_THAT(error.problem(), HasSubstr(message));
        }
    }
}

/// A setup with the text wherever one fits.
SetupDictionary setupFullOf(const std::string& text) {
    SetupDictionary setup;
    for (const auto& field : setup_form::settings) {
        if (field.key != setup_key::startDay) setup.setText(field.key, text);
    }
    setup.setStartDay(Date{-86399});
    for (const setup_form::List& list : setup_form::lists) {
        Entry entry;
        for (const setup_form::Field& field : list.fields) {
            entry.set(field.key, text);
        }
        setup.setList(list.key, {entry, entry});
    }
    return setup;
}

TEST(SetupFile, ReadsBackAsItWas) {
    const std::string utf8InMacRoman = "\xE2\x88\x9A\xC2\xA9"; // whose bytes there are a letter's in UTF-8
    std::string all = utf8InMacRoman + " \t\r\n\r]]>&amp;<a/>&#13;\n";
    for (int byte = 0x20; byte < 0x100; ++byte) {
        appendUtf8(all, macRomanCodePoint(static_cast<unsigned char>(byte)));
    }
    for (const std::string& text : {std::string(), std::string("\r"), utf8InMacRoman, all}) {
        const SetupDictionary setup = setupFullOf(text);
        const LoadedSetup loaded = readSetup(setupFileBytes(setup, "a.setup"), "a.setup");
        EXPECT_TRUE(loaded.parsed) << loaded.fault;
        EXPECT_EQ(loaded.dictionary.values(), setup.values()) << text;
    }
}

} // namespace
} // namespace orrery
