#include "batch/JsonWriter.h"

#include "batch/Output.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <limits>
#include <string>

namespace orrery {
namespace {

std::string written(const std::function<void(JsonWriter&)>& write) {
    const test::TemporaryFolder folder;
    Output output(folder.path() + "out.json");
    JsonWriter json(output);
    write(json);
    output.finish();
    return readWholeFile(folder.path() + "out.json");
}

TEST(JsonWriter, WritesTheShortestNumberThatReadsBackAsTheSameSingle) {
    using Limits = std::numeric_limits<float>;
    EXPECT_EQ(written([](JsonWriter& json) {
                  json.values(std::array{0.1F, -0.0F, 16777216.0F, 1e-45F, Limits::max(), Limits::infinity(),
                                         -Limits::infinity(), Limits::quiet_NaN()});
              }),
              "[0.1,-0.0,16777216,1e-45,3.4028235e+38,null,null,null]");
}

TEST(JsonWriter, EscapesTextAndReplacesWhatIsNotUtf8) {
    EXPECT_EQ(written([](JsonWriter& json) { json.value("q\"\\\n\x01 \xC3\xA9 \xFF\xC3."); }),
              "\"q\\\"\\\\\\n\\u0001 \xC3\xA9 \xEF\xBF\xBD\xEF\xBF\xBD.\"");
}

TEST(Output, LeavesTheOldFileUntilItIsFinished) {
    const test::TemporaryFolder folder;
    const std::string path = folder.write("out.json", "old");
    {
        Output output(path);
        output.write(std::string(1U << 20U, 'x'));
    }
    EXPECT_EQ(readWholeFile(path), "old");
    EXPECT_THROW(Output("/dev/full"), OrreryError);
}

} // namespace
} // namespace orrery
