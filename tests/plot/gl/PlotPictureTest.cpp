// Text and picture files, with the system's fonts.
#include "plot/picture/PlotPicture.h"

#include "platform/Files.h"
#include "platform/qt/QtTextRasterizer.h"
#include "platform/values/OrreryError.h"
#include "plot/Gl.h"
#include "plot/gl/GlFixture.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <QImage>
#include <utility>

namespace orrery::test {
namespace {

const TextAttributes attributes{"Lucida Grande", 13.0, {0, 255, 0}};

struct TextCase {
    const char* name;
    std::string text;
    int maxWidth;
    int leastWidth;
    int mostWidth;
};

TEST_F(GlTest, ALabelsTextIsOneLineOfGreenOnOpaqueBlack) {
    const OffscreenGui gui;
    for (const TextCase& row :
         {TextCase{"empty", "", 4096, 0, 0}, TextCase{"day", "day", 4096, 15, 40},
          TextCase{"path", "/Farm/Management/irrigation", 4096, 120, 260},
          TextCase{"right to left", "/حقل/محصول", 4096, 30, 200},
          TextCase{"combined", "e\u0301\u0327/n\u0303", 4096, 10, 60}, TextCase{"emoji", "/🌾/🌽", 4096, 10, 120},
          TextCase{"two lines become one", "one\ntwo", 4096, 30, 90},
          TextCase{"too wide", std::string(3000, 'w'), 2048, 1900, 2048},
          TextCase{"far too long", std::string(3'000'000, 'i'), 16384, 10000, 16384},
          TextCase{"not UTF-8", "\xff\xfe/x", 4096, 5, 80}}) {
        SCOPED_TRACE(row.name);
        const Pixels image = QtTextRasterizer().rasterize(row.text, attributes, row.maxWidth);
        EXPECT_GE(image.width, row.leastWidth);
        EXPECT_LE(image.width, row.mostWidth);
        EXPECT_LE(image.height, 40);
        ASSERT_EQ(image.rgba.size(), std::size_t{4} * static_cast<std::size_t>(image.width * image.height));
        int green = 0;
        for (std::size_t i = 0; i < image.rgba.size(); i += 4) {
            ASSERT_EQ(image.rgba[i + 3], 255);
            green = std::max<int>(green, image.rgba[i + 1]);
        }
        EXPECT_EQ(green > 150, row.leastWidth > 0);
    }
}

TEST_F(GlTest, ALabelWiderThanATextureIsShortenedAndDrawn) {
    const OffscreenGui gui;
    QtTextRasterizer rasterizer;
    EglSurface surface(60, 40);
    ASSERT_TRUE(surface.makeCurrent());
    GLint limit = 0;
    glGetIntegerv(GL_MAX_RECTANGLE_TEXTURE_SIZE_ARB, &limit);
    const TextureString label(rasterizer, std::string(static_cast<std::size_t>(limit), 'w'), attributes);
    EXPECT_NE(label.texName(), 0U);
    EXPECT_LE(label.texSize().width, limit);
    label.drawAtX(0, 0, 0);
    const TextureString none(rasterizer, "", attributes);
    EXPECT_EQ(none.texName(), 0U);
    none.drawAtX(0, 0, 0);
}

TEST_F(GlTest, APictureFileHoldsWhatWasDrawnAndReplacesTheOldOne) {
    const TemporaryFolder folder;
    const std::string path = folder.path() + "plot.png";
    const PlotPictureRequest request{.width = 320, .height = 200, .yRotation = 30, .lightHeight = 3.0F};
    const PlotBuilder build = [](PlotView& view) { plate().show(view); };
    const OffscreenGui gui;
    QtTextRasterizer rasterizer;
    const Pixels wanted = renderPlot(request, rasterizer, build);
    for (int i = 0; i < 2; ++i) {
        renderPlotPng(path, request, build);
        const QImage image = QImage(QString::fromStdString(path)).convertToFormat(QImage::Format_RGBA8888);
        ASSERT_EQ(image.size(), QSize(320, 200));
        EXPECT_TRUE(std::equal(wanted.rgba.begin(), wanted.rgba.end(), image.constBits()));
    }
}

struct RefusedCase {
    int width;
    int height;
    const char* message;
    bool glError = false; // while the plot is drawn
};

TEST_F(GlTest, ARefusedPictureSaysWhyAndLeavesNoFile) {
    const TemporaryFolder folder;
    const std::string path = folder.path() + "plot.png";
    for (const RefusedCase& row :
         {RefusedCase{0, 100, "no area"}, RefusedCase{100, 0, "no area"}, RefusedCase{-5, 100, "no area"},
          RefusedCase{30000, 30000, "larger than"}, RefusedCase{2147483647, 2147483647, "larger than"},
          RefusedCase{90, 70, "invalid enumerant", true}}) {
        SCOPED_TRACE(row.width);
        try {
            renderPlotPng(path, {.width = row.width, .height = row.height}, [&row](PlotView& view) {
                plate().show(view);
                if (row.glError) glEnable(0xffff);
            });
            ADD_FAILURE() << "drawn";
        } catch (const OrreryError& error) {
            EXPECT_THAT(error.what(), ::testing::HasSubstr(row.message));
            EXPECT_FALSE(error.remedy().empty());
        }
        EXPECT_FALSE(fileExists(path));
        EXPECT_EQ(std::exchange(m_log, {}).size(), row.glError ? 1U : 0U);
    }
}

} // namespace
} // namespace orrery::test
