// What the pictures show, compared by region and with tolerance: drivers differ in single pixels.
#include "plot/gl/GlFixture.h"

#include <gmock/gmock.h>

#include <cmath>

namespace orrery::test {
namespace {

int brightness(const Rgb& color) {
    return color[0] + color[1] + color[2];
}

TEST_F(GlTest, ACurveIsWhereTheSquareOfThePlotPutsIt) {
    for (const auto& [width, height, samples] :
         {std::array{300, 240, 1}, {500, 100, 1}, {120, 400, 1}, {300, 240, 4}}) {
        SCOPED_TRACE(width * samples);
        TestView test(width, height, samples);
        const Pixels picture = test.frameOf(
            {.axes = {"day"},
             .xCount = 5,
             .responses = {[](auto x, auto) { return static_cast<float>(x) + 1; }, [](auto, auto) { return 0.5F; }},
             .colors = {{1, 0, 0, 1}, {1, 1, 0, 1}}});
        const auto at = [&, w = width, h = height](double x, double y) {
            return pixel(picture, (0.8 * (x + 0.1) + 1) / 2 * w, (0.8 * (y + 0.1) + 1) / 2 * h);
        };
        for (int i = 0; i < 4; ++i) { // in the middle between two points, where the line has its full colour
            const double x = (i + 0.5) * 0.4 - 1;
            const double y = 2 * (i + 1.5) / 5 - 1;
            EXPECT_GT(at(x, y)[0], 150) << i;
            EXPECT_LT(at(x, y)[2], 60) << i;
            EXPECT_GT(at(x, -0.8)[1], 150) << "the lower curve " << i;
            EXPECT_LT(brightness(at(x, y + 0.15)), 30) << "above " << i;
        }
        EXPECT_LT(brightness(at(0.8, 0.3)), 30) << "the last point lies two steps short of the end";
        EXPECT_GT(at(-1, 0.5)[2], 150) << "upright axis";
        EXPECT_GT(at(0.9, -1)[2], 150) << "level axis";
    }
}

TEST_F(GlTest, CurvesAreOpaqueAndIgnoreCameraAndRotation) {
    TestView test;
    const Pixels before = test.frameOf(curves());
    test.view.setYRotation(50);
    test.view.camera().viewPos = {3, 3, 3};
    test.view.updateProjection();
    EXPECT_EQ(test.frame().rgba, before.rgba);
}

TEST_F(GlTest, TheLabelOfCurvesStandsBelowTheMiddleOfTheAxis) {
    TestView test;
    const Pixels picture = test.frameOf({.axes = {"day"}, .xCount = 2, .responses = {[](auto, auto) { return 1.0F; }}});
    const auto box = regionWhere(picture, [&](int x, int y) { return pixel(picture, x, y) == Rgb{0, 255, 0}; });
    ASSERT_TRUE(box);
    EXPECT_NEAR(box->left, (0.8 * 0.1 + 1) / 2 * 300, 1);
    EXPECT_NEAR(box->bottom, (0.8 * (-1.1 + 0.1) + 1) / 2 * 240, 1);
    EXPECT_EQ(box->right - box->left + 1, BlockRasterizer::width);
    EXPECT_EQ(box->top - box->bottom + 1, BlockRasterizer::height);
}

TEST_F(GlTest, ALabelIsMadeForTheRoomThatItsViewHas) {
    for (const int width : {300, 1200}) {
        TestView test(width, 240);
        test.rasterizer.wanted = 500;
        Scene{.axes = {"day"}, .xCount = 2, .responses = {[](auto, auto) { return 1.0F; }}}.show(test.view);
        test.view.drawRect();
        const int room = static_cast<int>(width - (0.8 * 0.1 + 1) / 2 * width);
        EXPECT_NEAR(test.view.labels().front().texSize().width, std::min(room, 500), 1) << width; // by a projection
    }
}

TEST_F(GlTest, ALabelIsAtTheProjectedEndOfItsAxisAtEveryRotation) {
    for (const int degrees : {-30, 0, 20, 60, 90, 180, 250, 270, 765}) { // where neither label covers the other
        TestView test(400, 300);
        test.view.setYRotation(static_cast<float>(degrees));
        const Pixels picture = test.frameOf(axesOnly());
        for (const Vector3 end : {Vector3{1, 0, -1}, Vector3{-1, 0, 1}}) {
            const WindowPoint corner = projected(end, degrees, 400, 300);
            const auto inside = [&](double x, double y) { return pixel(picture, corner.x + x, corner.y + y); };
            constexpr double right = BlockRasterizer::width;
            constexpr double top = BlockRasterizer::height;
            for (const auto& [x, y] : {std::pair{2.0, 2.0}, {right - 2, 2.0}, {2.0, top - 2}, {right - 2, top - 2}})
                EXPECT_EQ(inside(x, y), (Rgb{0, 255, 0})) << degrees << ": " << x << ' ' << y;
            EXPECT_EQ(inside(5, top + 2)[1], 0) << degrees;
            EXPECT_EQ(inside(-2, top - 2)[1], 0) << degrees;
            EXPECT_EQ(inside(right + 2, 5)[1], 0) << degrees;
        }
    }
}

TEST_F(GlTest, AxesRunFromTheCornerToTheirEnds) {
    TestView test(400, 300);
    test.view.setYRotation(30);
    const Pixels picture = test.frameOf(axesOnly());
    for (const Vector3 middle : {Vector3{-1, 0.5, -1}, Vector3{-1, 0, 0}, Vector3{0, 0, -1}}) {
        const WindowPoint at = projected(middle, 30, 400, 300);
        EXPECT_GT(pixel(picture, at.x, at.y)[2], 150);
    }
}

TEST_F(GlTest, ARaisedPointShowsThereAndNowhereElse) {
    TestView test;
    test.view.setYRotation(20);
    Scene scene = plate();
    const Pixels level = test.frameOf(scene);
    scene.responses = {[](auto x, auto z) { return x == 7 && z == 3 ? 0.8F : 1.0F; }};
    const Pixels dented = test.frameOf(scene);
    const auto changed = regionWhere(level, [&](int x, int y) { return pixel(level, x, y) != pixel(dented, x, y); });
    ASSERT_TRUE(changed);
    Region allowed{300, 240, 0, 0}; // the four cells about the point, at both heights
    for (const double x : {6, 8}) {
        for (const double z : {2, 4}) {
            for (const double y : {0.8, 1.0}) {
                const WindowPoint at = projected({x / 5 - 1, y, z / 5 - 1}, 20, 300, 240);
                allowed.include(static_cast<int>(at.x) - 2, static_cast<int>(at.y) - 2);
                allowed.include(static_cast<int>(at.x) + 2, static_cast<int>(at.y) + 2);
            }
        }
    }
    EXPECT_GE(changed->left, allowed.left);
    EXPECT_LE(changed->right, allowed.right);
    EXPECT_GE(changed->bottom, allowed.bottom);
    EXPECT_LE(changed->top, allowed.top);
    EXPECT_GT(changed->right - changed->left, 10);
}

TEST_F(GlTest, AHigherLightBrightensWhatFacesUp) {
    TestView test;
    Scene low = plate();
    low.responses = {[](auto, auto) { return 0.0F; }}; // seen from above
    low.show(test.view);
    const WindowPoint middle = projected({0, 0, 0}, 0, 300, 240);
    int before = -1;
    for (const float height : {-5.0F, 0.2F, 0.5F, 1.0F, 2.0F, 4.0F}) {
        test.view.setLightHeight(height);
        const int now = brightness(pixel(test.frame(), middle.x, middle.y));
        EXPECT_GT(now, before) << height;
        before = now;
    }
}

TEST_F(GlTest, TheLightTurnsWithTheScene) {
    TestView test;
    Scene slope = plate(); // falls toward +x, so that it faces the light
    slope.responses = {[](auto x, auto) { return 0.3F - 0.03F * static_cast<float>(x); }};
    slope.show(test.view);
    const WindowPoint middle = projected({0, 0.5, 0}, 0, 300, 240);
    const auto shown = [&] { return brightness(pixel(test.frame(), middle.x, middle.y)); };
    const int facing = shown();
    test.view.setYRotation(-90); // the light seen from the side, the slope toward the eye
    EXPECT_NEAR(shown(), facing, 150) << "only the gloss moves";
    test.view.setYRotation(0);
    slope.responses = {[](auto x, auto) { return 0.03F * static_cast<float>(x); }};
    slope.show(test.view);
    EXPECT_LT(shown(), facing / 2) << "turned away from the light";
}

TEST_F(GlTest, SurfacesLetATenthThrough) {
    TestView test;
    Scene two = plate();
    two.responses = {[](auto, auto) { return 0.0F; }, [](auto, auto) { return 1.0F; }};
    two.colors = {{1, 0, 0, 1}, {0, 1, 0, 1}};
    test.view.camera().viewPos = {0, 3, 1}; // through the upper plate onto the lower
    test.view.camera().viewDir = {0, 0, 0};
    const Rgb through = pixel(test.frameOf(two), 150, 120);
    EXPECT_GT(through[1], 100);
    EXPECT_GT(through[0], 5);
    EXPECT_LT(through[0], 40);
}

Scene plateOf(std::function<float(std::uint32_t, std::uint32_t)> height) {
    Scene scene = plate();
    scene.responses = {std::move(height)};
    return scene;
}

TEST_F(GlTest, EveryPlotShowsSomethingAndLeavesTheTargetOpaque) {
    const std::pair<const char*, Scene> cases[] = {
        {"curves", curves()},
        {"surface", plate()},
        {"negative", plateOf([](auto x, auto) { return 3.0F - static_cast<float>(x); })},
        {"all negative", plateOf([](auto x, auto) { return -1.0F - static_cast<float>(x); })},
        {"near zero", plateOf([](auto x, auto) { return static_cast<float>(x) * 1e-30F; })},
        {"all zero", plateOf([](auto, auto) { return 0.0F; })},
        {"one not a number", plateOf([](auto x, auto z) { return x + z == 9 ? NAN : 1.0F; })},
        {"one cell wide", {.axes = {"x", "z"}, .xCount = 2, .zCount = 20, .responses = plate().responses}},
    };
    for (const auto& [name, scene] : cases) {
        TestView test(300, 240, 4);
        test.view.setYRotation(35);
        const Pixels picture = test.frameOf(scene);
        int shown = 0;
        int opaque = 0;
        for (std::size_t i = 0; i < picture.rgba.size(); i += 4) {
            opaque += picture.rgba[i + 3] == 255 ? 1 : 0;
            shown += picture.rgba[i] + picture.rgba[i + 1] > 20 ? 1 : 0; // more than the blue axes
        }
        EXPECT_EQ(opaque, 300 * 240) << name;
        EXPECT_GT(shown, 100) << name;
    }
}

TEST_F(GlTest, WithoutAPlotThereIsTheBackgroundAlone) {
    TestView test;
    const auto empty = [](const Pixels& picture) {
        return !regionWhere(picture, [&](int x, int y) { return pixel(picture, x, y) != Rgb{0, 0, 0}; });
    };
    EXPECT_TRUE(empty(test.frame())) << "before the first";
    for (const Scene& scene : {plate(), curves()}) {
        EXPECT_FALSE(empty(test.frameOf(scene)));
        test.view.setSurfaces({}, 0, {});
        EXPECT_TRUE(empty(test.frame())) << "cleared";
    }
    curves().show(test.view);
    test.view.setDimensions(4);
    EXPECT_TRUE(empty(test.frame())) << "no such dimension";
}

} // namespace
} // namespace orrery::test
