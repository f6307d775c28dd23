#include "model/ModelRecord.h"

#include "platform/Log.h"
#include "platform/values/OrreryError.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orrery {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pointee;

std::vector<ModelRecord> recordsOf(const std::string& text) {
    const test::TemporaryFolder folder;
    return readModelFile(folder.write("model.xml", text));
}

TEST(ModelFile, GivesTheObjectsDirectlyUnderDatabase) {
    const auto records = recordsOf("<!DOCTYPE database SYSTEM 'file:///nowhere/model.dtd'>\n"
                                   "<database><info><object id='no'/></info>\n"
                                   "<object type='KSLEVEL' id='z1'><object id='no'/></object>\n"
                                   "<object><x><attribute name='deep'>1</attribute></x></object></database>");
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].className, "KSLEVEL");
    EXPECT_EQ(records[0].identifier, "z1");
    EXPECT_EQ(records[0].line, 3U);
    EXPECT_EQ(records[1].className, std::nullopt);
    EXPECT_EQ(records[1].identifier, std::nullopt);
    EXPECT_THAT(records[1].attributes, IsEmpty());
    EXPECT_THAT(recordsOf("<model><database><object id='a'/></database></model>"), IsEmpty());
}

TEST(ModelFile, GivesAttributesWithAllTheirText) {
    const auto records = recordsOf("<database><object><attribute name='varid' type='int32'>7</attribute>"
                                   "<attribute name='e' value='old'> a<b>b<![CDATA[<c]]></b>&amp;\n</attribute>"
                                   "<attribute/></object></database>");
    ASSERT_EQ(records.size(), 1U);
    EXPECT_THAT(records[0].attributes,
                ElementsAre(StringMap{{"name", "varid"}, {"type", "int32"}, {"value", "7"}},
                            StringMap{{"name", "e"}, {"value", " ab<c&\n"}}, StringMap{{"value", ""}}));
}

TEST(ModelFile, GivesRelationshipsSplitAtEveryBlank) {
    const auto records = recordsOf("<database><object><relationship name='a' type='0/0' idrefs='x'/>"
                                   "<relationship name='three' idrefs='z1 z2 z3'/><relationship name='none'/>"
                                   "<relationship name='empty' idrefs=''/><relationship name='gap' idrefs=' p  q'/>"
                                   "<relationship name='a' type='1/1' idrefs='y'/></object></database>");
    ASSERT_EQ(records.size(), 1U);
    const ModelRecord& record = records.front();
    EXPECT_THAT(record.targets("three"), Pointee(ElementsAre("z1", "z2", "z3")));
    EXPECT_THAT(record.targets("empty"), Pointee(ElementsAre("")));
    EXPECT_THAT(record.targets("gap"), Pointee(ElementsAre("", "p", "", "q")));
    EXPECT_EQ(record.targets("none"), nullptr);
    EXPECT_EQ(record.targets("other"), nullptr);
    EXPECT_THAT(record.targets("a"), Pointee(ElementsAre("y")));
    EXPECT_EQ(record.relationships.find("a")->second.type, "1/1");
}

TEST(ModelFile, ThatCannotBeReadIsLoggedWithItsReason) {
    std::vector<std::string> log;
    setLogSink([&log](std::string_view line) { log.emplace_back(line); });
    EXPECT_EQ(dictionariesFromModelFile(""), std::nullopt);
    EXPECT_THAT(log, IsEmpty());
    EXPECT_EQ(dictionariesFromModelFile("/nowhere/m.xml"), std::nullopt);
    const test::TemporaryFolder folder;
    const std::string cut = folder.write("cut.xml", "<database>\n<object id='a'/>\n<object");
    EXPECT_EQ(dictionariesFromModelFile(cut), std::nullopt);
    setLogSink({});
    EXPECT_THAT(log, ElementsAre("Error opening XML document /nowhere/m.xml", HasSubstr("/nowhere/m.xml"),
                                 "Error opening XML document " + cut, HasSubstr(cut + ":3")));
    EXPECT_THROW((void)readModelFile(""), OrreryError);
}

} // namespace
} // namespace orrery
