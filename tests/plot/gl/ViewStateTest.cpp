// What drawing leaves behind: state, objects, contexts.
#include "platform/values/OrreryError.h"
#include "plot/Gl.h"
#include "plot/gl/GlFixture.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <new>
#include <utility>

namespace {

// Of this thread, so that the driver's own threads do not count.
thread_local std::size_t allocations = 0;
thread_local std::size_t largestAllowed = SIZE_MAX; // bytes at a time

} // namespace

void* operator new(std::size_t size) {
    ++allocations;
    void* const block = size <= largestAllowed ? std::malloc(size == 0 ? 1 : size) : nullptr;
    if (block != nullptr) return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace orrery::test {
namespace {

/// Names of that kind in the current context.
template <typename IsName>
int countNames(IsName isName) {
    int count = 0;
    for (GLuint name = 1; name < 5000; ++name) {
        count += isName(name) == GL_TRUE ? 1 : 0;
    }
    return count;
}

GLint stateOf(GLenum name) {
    std::array<GLint, 16> values{};
    glGetIntegerv(name, values.data());
    return values[0];
}

TEST_F(GlTest, FramesDependOnThePlotAloneNotOnWhatWasDrawnBefore) {
    const Pixels surface = TestView().frameOf(plate());
    const Pixels lines = TestView().frameOf(curves());
    TestView test;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(test.frameOf(curves()).rgba, lines.rgba);
        EXPECT_EQ(test.frameOf(plate()).rgba, surface.rgba);
        EXPECT_EQ(test.frame().rgba, surface.rgba);
    }
}

TEST_F(GlTest, AFrameLeavesNothingBoundOrPushed) {
    const std::pair<GLenum, GLint> states[] = {{GL_ARRAY_BUFFER_BINDING, 0},
                                               {GL_TEXTURE_BINDING_RECTANGLE_ARB, 0},
                                               {GL_ATTRIB_STACK_DEPTH, 0},
                                               {GL_MODELVIEW_STACK_DEPTH, 1},
                                               {GL_PROJECTION_STACK_DEPTH, 1},
                                               {GL_UNPACK_ROW_LENGTH, 0},
                                               {GL_UNPACK_ALIGNMENT, 4},
                                               {GL_VERTEX_ARRAY, 0},
                                               {GL_NORMAL_ARRAY, 0},
                                               {GL_TEXTURE_RECTANGLE_ARB, 0},
                                               {GL_BLEND, 1}};
    TestView test;
    for (const Scene& scene : {plate(), curves()}) {
        static_cast<void>(test.frameOf(scene));
        for (const auto& [name, value] : states)
            EXPECT_EQ(stateOf(name), value) << name;
    }
}

TEST_F(GlTest, ALabelPutsBackMatricesModeAndState) {
    TestView test;
    static_cast<void>(test.frameOf(plate()));
    glMatrixMode(GL_TEXTURE);
    glEnable(GL_DEPTH_TEST);
    glColor3f(1, 0, 0);
    std::array<double, 16> before{};
    std::array<double, 16> after{};
    std::array<float, 4> color{};
    glGetDoublev(GL_PROJECTION_MATRIX, before.data());
    test.view.labels().front().drawAtX(0, 0, 0);
    glGetDoublev(GL_PROJECTION_MATRIX, after.data());
    glGetFloatv(GL_CURRENT_COLOR, color.data());
    EXPECT_EQ(before, after);
    EXPECT_EQ(stateOf(GL_MATRIX_MODE), GL_TEXTURE);
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST) && glIsEnabled(GL_BLEND));
    EXPECT_EQ(color, (std::array<float, 4>{1, 0, 0, 1}));
}

TEST_F(GlTest, AThousandRebuildsKeepOneBufferAndTheLabelsTextures) {
    TestView test;
    const Scene surface = axesOnly();
    const Scene lines = curves();
    for (int i = 0; i < 500; ++i) {
        lines.show(test.view);
        surface.show(test.view);
    }
    EXPECT_EQ(countNames(glIsBuffer), 1);
    EXPECT_EQ(countNames(glIsTexture), 2);
    test.view.setSurfaces({}, 0, {});
    test.view.setLabels({});
    EXPECT_EQ(countNames(glIsBuffer) + countNames(glIsTexture), 0);
    EXPECT_EQ(test.view.ident(), 0U);
}

TEST_F(GlTest, LentMemoryIsTheBuffersAndShowsNothingUntilItIsGivenBack) {
    TestView test;
    const Pixels none = test.frame();
    const Pixels wanted = test.frameOf(plate());
    const unsigned buffer = test.view.ident();
    const std::size_t floats = std::size_t{test.view.ranges().front().count} * 6;
    EXPECT_TRUE(test.view.lendVertices(floats).kept) << "the plot before was written into it, too";
    EXPECT_EQ(test.frame().rgba, none.rgba);
    EXPECT_FALSE(test.view.lendVertices(floats).kept) << "nobody knows what was written into what did not come back";
    EXPECT_EQ(test.view.ident(), buffer);
    EXPECT_FALSE(test.view.lendVertices(100 * floats).kept);
    EXPECT_EQ(test.frameOf(plate()).rgba, wanted.rgba);
    EXPECT_NE(test.view.ident(), buffer) << "nor is a large buffer held for a small plot";
    test.view.releaseContext();
    test.surface.loseContext();
    EXPECT_EQ(test.view.lendVertices(36).pieces.at(0).floats.size(), 36U);
}

TEST_F(GlTest, SeveralBuffersShowTheSamePicture) {
    for (const std::size_t bytes : {500U, 1999U, 7000U}) {
        for (const Scene& scene : {plate(), curves()}) { // 14,400 and 1,800 bytes
            TestView test(300, 240, 1, bytes);
            const Pixels wanted = TestView().frameOf(scene);
            EXPECT_EQ(test.frameOf(scene).rgba, wanted.rgba) << bytes;
            EXPECT_EQ(countNames(glIsBuffer) > 1, bytes < 1800 || scene.axes.size() == 2) << bytes;
            scene.show(test.view);
            EXPECT_TRUE(test.view.lendVertices(scene.axes.size() == 2 ? 3600 : 450).kept);
            scene.show(test.view);
            test.view.releaseContext();
            test.surface.loseContext();
            test.surface.recreateContext();
            test.view.prepareOpenGL();
            EXPECT_EQ(test.frame().rgba, wanted.rgba) << bytes;
        }
    }
}

TEST_F(GlTest, MemoryThatOpenGlDoesNotGiveIsRefusedWithBothFigures) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer ends a program whose memory is limited";
#endif
    TestView test;
    const Pixels wanted = test.frameOf(plate());
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit small = {pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (3U << 29U), limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &small), 0);
    std::string refused;
    try {
        static_cast<void>(test.view.lendVertices(std::size_t{36} * 18'000'000)); // 2.5 GB in 3 buffers
    } catch (const OrreryError& error) {
        refused = error.problem();
    }
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    EXPECT_EQ(refused, "The plot needs 2.5 GB of graphics memory, but OpenGL gives only 1 GB.");
    EXPECT_THAT(std::exchange(m_log, {}), ::testing::ElementsAre("Error: out of memory."));
    EXPECT_EQ(test.view.heldFloats(), 0U);
    EXPECT_EQ(test.frameOf(plate()).rgba, wanted.rgba);
    EXPECT_EQ(test.view.failure(), "");
}

TEST_F(GlTest, AnErrorInAFrameIsToldOnceUntilTheNextPlot) {
    TestView test;
    int told = 0;
    test.view.setFailureHandler([&told] { ++told; });
    for (int plots = 1; plots <= 2; ++plots) {
        static_cast<void>(test.frameOf(plate()));
        EXPECT_EQ(test.view.failure(), "");
        for (int frames = 0; frames < 2; ++frames) {
            glEnable(0xffff);
            test.view.drawRect();
        }
        EXPECT_EQ(test.view.failure(), "OpenGL could not draw the plot: invalid enumerant.");
        EXPECT_EQ(told, plots);
    }
    glEnable(0xffff); // read while the labels are made
    static_cast<void>(test.frameOf(plate()));
    EXPECT_EQ(told, 3);
    EXPECT_THAT(std::exchange(m_log, {}), ::testing::Each("Error: invalid enumerant."));
}

TEST_F(GlTest, ADestroyedViewDeletesItsObjectsInItsOwnContext) {
    TestView other;
    static_cast<void>(other.frameOf(plate()));
    BlockRasterizer rasterizer;
    EglSurface surface(50, 50);
    auto view = std::make_unique<OpenGLPlotView>(surface, rasterizer);
    view->prepareOpenGL();
    plate().show(*view);
    ASSERT_TRUE(other.surface.makeCurrent());
    view.reset();
    ASSERT_TRUE(surface.makeCurrent());
    EXPECT_EQ(countNames(glIsBuffer) + countNames(glIsTexture), 0);
    ASSERT_TRUE(other.surface.makeCurrent());
    EXPECT_EQ(countNames(glIsBuffer) + countNames(glIsTexture), 3);
}

TEST_F(GlTest, TwoViewsSideBySideShowEachItsOwn) {
    const Pixels aloneSurface = TestView().frameOf(plate());
    const Pixels aloneLines = TestView(200, 100).frameOf(curves());
    TestView first;
    TestView second(200, 100);
    for (int i = 0; i < 3; ++i) {
        plate().show(first.view); // given and drawn in turns, so that each call finds the other's context current
        curves().show(second.view);
        first.view.drawRect();
        second.view.drawRect();
        first.view.updateProjection();
        EXPECT_EQ(second.surface.readPixels().rgba, aloneLines.rgba);
        EXPECT_EQ(first.surface.readPixels().rgba, aloneSurface.rgba);
    }
}

TEST_F(GlTest, AContextMadeAgainBringsThePictureBack) {
    for (const bool givenBefore : {false, true}) { // while there is no context
        for (const Scene& scene : {plate(), curves()}) {
            SCOPED_TRACE(scene.axes.size() * 10 + (givenBefore ? 1 : 0));
            const Pixels wanted = TestView().frameOf(scene);
            TestView test;
            EXPECT_TRUE(givenBefore || test.frameOf(scene).rgba == wanted.rgba);
            for (int i = 0; i < 3; ++i) {
                test.view.releaseContext();
                test.surface.loseContext();
                test.view.updateProjection();
                test.view.drawRect(); // nothing, without a context
                if (givenBefore) scene.show(test.view);
                test.surface.recreateContext();
                test.view.prepareOpenGL();
                EXPECT_EQ(test.frame().rgba, wanted.rgba);
            }
            test.view.releaseContext();
            test.surface.loseContext(); // the view goes after its context
        }
    }
}

TEST_F(GlTest, WithoutMemoryToKeepItThePlotGoesWithTheContextAndComesBackWithTheNextBuild) {
    TestView test;
    const Pixels none = test.frame();
    const Scene hill{.axes = {"x", "z"}, .xCount = 20, .zCount = 20, .responses = {[](auto x, auto) {
                                                                         return static_cast<float>(x);
                                                                     }}};
    const Pixels wanted = test.frameOf(hill);
    largestAllowed = 4096;
    EXPECT_NO_THROW(test.view.releaseContext());
    largestAllowed = SIZE_MAX;
    EXPECT_EQ(test.view.ident(), 0U) << "a name of the lost context";
    EXPECT_EQ(m_log.size(), 1U);
    m_log.clear();
    test.surface.loseContext();
    test.surface.recreateContext();
    test.view.prepareOpenGL();
    EXPECT_EQ(test.frame().rgba, none.rgba);
    EXPECT_EQ(test.frameOf(hill).rgba, wanted.rgba);
}

TEST_F(GlTest, AContextLostWithoutWarningLeavesNoErrors) {
    TestView test;
    static_cast<void>(test.frameOf(plate()));
    test.surface.loseContext();
    plate().show(test.view);
    test.view.drawRect();
}

TEST_F(GlTest, AnUnchangedPlotAllocatesNothingInAFrame) {
    TestView test;
    for (const Scene& scene : {plate(), curves()}) {
        for (int i = 0; i < 3; ++i) {
            static_cast<void>(test.frameOf(scene));
        }
        const std::size_t before = allocations;
        test.view.setYRotation(test.view.yRotation() + 0.5F);
        test.view.drawRect();
        EXPECT_EQ(allocations - before, 0U);
    }
}

TEST_F(GlTest, AResizedSurfaceGetsItsViewportAndProjection) {
    TestView test(300, 240);
    static_cast<void>(test.frameOf(plate()));
    test.surface.resize(200, 100);
    EXPECT_EQ(test.frame().rgba, TestView(200, 100).frameOf(plate()).rgba);
    EXPECT_EQ(test.view.camera().viewWidth, 200);
    EXPECT_EQ(test.view.camera().viewHeight, 100);
}

TEST_F(GlTest, ASizeNotYetKnownLeavesTheProjectionAlone) {
    TestView test;
    std::array<double, 16> matrix{};
    test.view.updateProjection();
    glGetDoublev(GL_PROJECTION_MATRIX, matrix.data());
    EXPECT_EQ(matrix[0], 1.0);
    EXPECT_EQ(matrix[14], 0.0);
}

TEST_F(GlTest, RangesOutsideTheDataDrawNothing) {
    TestView test;
    const Pixels none = test.frameOf(axesOnly());
    const std::vector<float> triangle(18, 0.5F);
    for (const VertexRange range : {VertexRange{0, 4}, {3, 1}, {0, 0}, {0xffffffffU, 0xffffffffU}, {1U << 31U, 3}}) {
        test.view.setSurfaces(triangle, 18, {range});
        EXPECT_EQ(test.frame().rgba, none.rgba) << range.first;
    }
    test.view.setSurfaces(std::span(triangle).first(9), 18, {{0, 3}});
    EXPECT_EQ(test.frame().rgba, none.rgba) << "the size says more than there is";
    test.view.setSurfaces(triangle, 18, {{0, 3}, {0, 3}}); // one colour for two ranges
    static_cast<void>(test.frame());
}

TEST_F(GlTest, LabelsAndLinesKeepTheirSizeOnADenseScreen) {
    TestView test;
    curves().show(test.view);
    EXPECT_EQ(test.rasterizer.letters, 13);
    test.surface.density = 2; // the window moves there
    test.view.drawRect();
    EXPECT_EQ(test.rasterizer.letters, 26);
    GLfloat width = 0;
    glGetFloatv(GL_LINE_WIDTH, &width);
    EXPECT_EQ(width, 6);
}

} // namespace
} // namespace orrery::test
