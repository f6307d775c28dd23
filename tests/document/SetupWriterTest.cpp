#include "document/setup/SetupWriter.h"

#include "document/setup/SetupForm.h"
#include "document/setup/SetupReader.h"
#include "platform/MacRoman.h"
#include "platform/OrreryError.h"
#include "platform/Utf8.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace orrery {
namespace {

using testing::HasSubstr;

TEST(SetupWriter, WritesEveryElementOfANewSetup) {
    EXPECT_EQ(setupFileBytes(defaultSetup(), "a.setup"),
              "<Simulation><ModelPath></ModelPath><StepsPerDay>10</StepsPerDay>"
              "<StartDay>2001-01-01 00:00:00 +0000</StartDay><RunLength>100</RunLength><ReportStep>10</ReportStep>"
              "<Dimensions>{ 1, 1 }</Dimensions><GCD></GCD></Simulation>");
}

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

struct UnwritableCase {
    const char* name;
    std::string text;
    const char* message;
};
class UnwritableText : public testing::TestWithParam<UnwritableCase> {};

TEST_P(UnwritableText, FailsTheSaveAndIsNamedWithItsField) {
    SetupDictionary setup = defaultSetup();
    setup.setList(setup_key::initializations, {{}, {{"portPath", "/Field/Crop/x"}, {"value", GetParam().text}}});
    try {
        (void)setupFileBytes(setup, "a.setup");
        FAIL() << "it was written";
    } catch (const OrreryError& error) {
        EXPECT_EQ(error.place().file, "a.setup");
        EXPECT_THAT(error.problem(), HasSubstr("value of initialization 2 (\"/Field/Crop/x\")"));
        EXPECT_THAT(error.problem(), HasSubstr(GetParam().message));
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, UnwritableText,
                         testing::Values(UnwritableCase{"latinExtended", "0\xC4\x85", "U+0105"},
                                         UnwritableCase{"chinese", "\xE4\xB8\xAD", "U+4E2D"},
                                         UnwritableCase{"beyondTheBasicPlane", "\xF0\x9F\x8C\xBE", "U+1F33E"},
                                         UnwritableCase{"nul", std::string("1\0", 2), "U+0000"},
                                         UnwritableCase{"escape", "\x1B[1m", "U+001B"},
                                         UnwritableCase{"noCharacter", "\xEF\xBF\xBE", "U+FFFE"},
                                         UnwritableCase{"notUtf8", "a\xFF", "FF"},
                                         UnwritableCase{"surrogate", "\xED\xA0\x80", "ED"}),
                         [](const auto& row) { return row.param.name; });

class RandomSetup {
public:
    explicit RandomSetup(unsigned seed) : m_random(seed) {}

    SetupDictionary make() {
        SetupDictionary setup;
        for (const setup_form::Field& field : setup_form::settings) {
            if (below(8) != 0) setup.setText(field.key, text());
        }
        setup.setStartDay(std::nullopt);
        if (below(4) != 0) setup.setStartDay(Date{static_cast<std::int64_t>(below(1U << 31U)) - (1 << 30), 500});
        for (const setup_form::List& each : setup_form::lists) {
            if (below(4) != 0) setup.setList(each.key, list());
        }
        return setup;
    }

private:
    std::size_t below(std::size_t bound) { return m_random() % bound; }

    EntryList list() {
        EntryList entries(below(4));
        for (Entry& entry : entries) {
            for (const char* key : {"portPath", "outputPath", "coordinates", "value", "start", "step", "stop"}) {
                if (below(4) != 0) entry.set(key, text());
            }
        }
        return entries;
    }

    std::string text() {
        static const std::vector<std::string> pieces = {
            "\r\n",  "\r",    " ",
            "\n\t ", "]]>",   "&amp;",
            "<a/>",  "&#13;", "\xE2\x88\x9A\xC2\xA9"}; // in Mac OS Roman a UTF-8 sequence
        std::string made;
        for (std::size_t left = below(6); left > 0; --left) {
            if (below(2) == 0) {
                made += pieces[below(pieces.size())];
            } else {
                const std::size_t byte = 0x20 + below(0xE0);
                appendUtf8(made, macRomanCodePoint(static_cast<unsigned char>(byte)));
            }
        }
        return made;
    }

    std::mt19937 m_random;
};

/// Equal but for what a file does not tell apart: absent and empty, and parts of a second.
void expectReadBack(const SetupDictionary& read, const SetupDictionary& written) {
    for (const setup_form::Field& field : setup_form::settings) {
        EXPECT_EQ(read.textOrEmpty(field.key), written.textOrEmpty(field.key));
    }
    ASSERT_EQ(read.startDay().has_value(), written.startDay().has_value());
    EXPECT_EQ(read.startDay().value_or(Date()).seconds, written.startDay().value_or(Date()).seconds);
    for (const setup_form::List& list : setup_form::lists) {
        const EntryList& entries = read.entries(list.key);
        ASSERT_EQ(entries.size(), written.entries(list.key).size());
        for (std::size_t index = 0; index < entries.size(); ++index) {
            EXPECT_EQ(entries[index].size(), list.fields.size());
            for (const setup_form::Field& field : list.fields) {
                EXPECT_EQ(entries[index].text(field.key), written.entries(list.key)[index].text(field.key));
            }
        }
    }
}

TEST(SetupFile, ReadsBackAsItWas) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        const SetupDictionary setup = RandomSetup(seed).make();
        const std::string bytes = setupFileBytes(setup, "a.setup");
        const LoadedSetup loaded = readSetup(bytes, "a.setup");
        ASSERT_TRUE(loaded.parsed) << loaded.fault;
        expectReadBack(loaded.dictionary, setup);
        ASSERT_FALSE(HasFailure()) << "seed " << seed;
        ASSERT_EQ(setupFileBytes(loaded.dictionary, "a.setup"), bytes);
    }
}

} // namespace
} // namespace orrery
