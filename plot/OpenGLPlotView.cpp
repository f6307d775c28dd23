#include "plot/OpenGLPlotView.h"

#include "platform/Log.h"
#include "platform/values/OrreryError.h"
#include "plot/Gl.h"
#include "plot/GlCheck.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace orrery {

namespace {

TextAttributes labelAttributes(double scale) {
    return {"Lucida Grande", 13.0 * scale, {0, 255, 0}};
}

void setAxisColor() {
    glColor3f(0.0F, 0.0F, 1.0F);
}

/// Rotates by an angle in degrees and an axis.
void rotate(const std::array<float, 4>& rotation) {
    glRotatef(rotation[0], rotation[1], rotation[2], rotation[3]);
}

void setLines() {
    glEnable(GL_LINE_SMOOTH);
    glHint(GL_LINE_SMOOTH_HINT, GL_NICEST);
    glEnable(GL_BLEND);
}

void setMaterialAndLight() {
    constexpr std::array<float, 4> specular{0.4F, 0.4F, 0.4F, 1.0F};
    constexpr std::array<float, 4> position{1.0F, 2.0F, 1.0F, 0.0F}; // directional
    constexpr std::array<float, 4> diffuse{1.0F, 1.0F, 1.0F, 0.0F};
    constexpr std::array<float, 4> ambient{0.1F, 0.1F, 0.1F, 0.5F};
    glMaterialfv(GL_FRONT, GL_SPECULAR, specular.data());
    glMaterialf(GL_FRONT, GL_SHININESS, 10.0F);
    glLightfv(GL_LIGHT0, GL_POSITION, position.data());
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse.data());
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient.data()); // a level of the model: a single light takes none
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_DEPTH_TEST);
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
    glLightModeli(GL_LIGHT_MODEL_LOCAL_VIEWER, 1);
}

} // namespace

OpenGLPlotView::OpenGLPlotView(GlSurface& surface, TextRasterizer& rasterizer, std::size_t largestBytes)
    : BasicOpenGLView(surface), m_rasterizer(rasterizer), m_buffers(largestBytes) {}

OpenGLPlotView::~OpenGLPlotView() {
    if (surface().makeCurrent()) {
        return;
    } // the members delete their objects
    m_buffers.forget();
    std::ranges::for_each(m_textures, &TextureString::forgetTexture);
}

void OpenGLPlotView::setLabels(const std::vector<std::string>& labels) {
    m_labelError.clear(); // a plot's labels come before its vertices
    const GlErrorWatch watch(m_labelError);
    m_strings = labels;
    if (surface().makeCurrent()) {
        makeTextures();
    }
}

VertexMemory OpenGLPlotView::lendVertices(std::size_t size) {
    const GlErrorWatch watch(startPlot());
    return m_buffers.lend(size, m_dimensions, surface().makeCurrent());
}

void OpenGLPlotView::setLentSurfaces(std::uint32_t, std::vector<VertexRange> ranges) {
    const GlErrorWatch watch(m_glError);
    if (m_buffers.accept(surface().makeCurrent())) {
        m_ranges = std::move(ranges);
    } else {
        fail("OpenGL has lost the plot's vertices. Change a setting to draw it again.");
    }
}

void OpenGLPlotView::setSurfaces(std::span<const float> data, std::uint32_t size, std::vector<VertexRange> ranges) {
    const GlErrorWatch watch(startPlot());
    const bool current = surface().makeCurrent();
    if (ranges.empty()) {
        m_buffers.clear(current);
    } else {
        m_buffers.copy(data.first(std::min<std::size_t>(size, data.size())), m_dimensions, current);
    }
    m_ranges = std::move(ranges);
}

/// Nothing of the plot before is shown or reported any more. Where the first error of OpenGL is to be kept.
std::string& OpenGLPlotView::startPlot() {
    m_ranges.clear();
    m_glError.clear();
    setFailure({});
    return m_glError;
}

void OpenGLPlotView::fail(const std::string& reason) {
    logLine(reason);
    m_ranges.clear();
    setFailure(reason);
    m_failed();
}

void OpenGLPlotView::drawRect() {
    {
        const GlErrorWatch watch(m_glError);
        BasicOpenGLView::drawRect();
    }
    const std::string& error = m_glError.empty() ? m_labelError : m_glError;
    if (!error.empty() && failure().empty()) { // errors never stop a frame, but what it shows may be wrong
        setFailure("OpenGL could not draw the plot: " + error + ".");
        m_failed();
    }
}

void OpenGLPlotView::updateModelView() {
    if (!surface().makeCurrent()) {
        return;
    }
    const CameraRecord& view = camera();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    gluLookAt(view.viewPos.x, view.viewPos.y, view.viewPos.z, view.viewDir.x, view.viewDir.y, view.viewDir.z,
              view.viewUp.x, view.viewUp.y, view.viewUp.z);
    rotate(worldRotation());
    rotate(objectRotation());
}

void OpenGLPlotView::prepareOpenGL() {
    const GlErrorWatch watch(m_glError);
    BasicOpenGLView::prepareOpenGL();
    setLines();
    setMaterialAndLight();
    glCheckError();
    makeTextures();
    try {
        m_buffers.prepare();
    } catch (const OrreryError& error) {
        fail(error.problem());
    }
}

void OpenGLPlotView::releaseContext() {
    if (!surface().makeCurrent()) {
        return;
    }
    try {
        m_buffers.release();
    } catch (const std::bad_alloc&) { // the plot is lost, but never the rest
        fail("There is not enough memory to keep the plot. Change a setting to draw it again.");
    }
    m_textures.clear();
}

void OpenGLPlotView::reshape() {
    const SurfaceBounds bounds = surface().bounds();
    glViewport(0, 0, static_cast<GLsizei>(bounds.width), static_cast<GLsizei>(bounds.height));
}

void OpenGLPlotView::drawObjects() {
    if (surface().scale() != m_scale) makeTextures();
    glLineWidth(static_cast<float>(3.0 * m_scale));
    if (m_dimensions == 3) {
        drawObjects3();
    } else if (m_dimensions == 2) {
        drawObjects2();
    }
}

void OpenGLPlotView::drawObjects3() {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    if (m_ranges.empty()) {
        return;
    }
    updateProjection();      // a 2-D frame leaves its own
    glEnable(GL_DEPTH_TEST); // it leaves that off, too; the axes are to hide and be hidden in the first frame
    glMatrixMode(GL_MODELVIEW);
    glDisable(GL_LIGHTING);
    glDisable(GL_MULTISAMPLE); // smooth lines are smoothed only without it
    drawAxes3();
    drawLabels3();
    glEnable(GL_MULTISAMPLE);
    glEnable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);
    // Given after the model-view transform, so the light is fixed to the scene and turns with it.
    const std::array<float, 4> position{1.0F, m_lightHeight, 1.0F, 0.0F};
    glLightfv(GL_LIGHT0, GL_POSITION, position.data());
    drawSurfaces3();
}

void OpenGLPlotView::drawAxes3() const {
    setAxisColor();
    glBegin(GL_LINES);
    glVertex3f(-1, 0, -1);
    glVertex3f(-1, 1, -1);
    glVertex3f(-1, 0, -1);
    glVertex3f(-1, 0, 1);
    glVertex3f(-1, 0, -1);
    glVertex3f(1, 0, -1);
    glEnd();
}

void OpenGLPlotView::drawLabels3() {
    drawLabel(0, 1, 0, -1);
    drawLabel(1, -1, 0, 1);
}

void OpenGLPlotView::drawSurfaces3() const {
    for (std::size_t s = 0; s < m_ranges.size(); ++s) {
        if (!drawable(s)) {
            continue;
        }
        const std::array<float, 4> color{m_colors[s].red, m_colors[s].green, m_colors[s].blue, m_colors[s].alpha};
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        glEnable(GL_POLYGON_OFFSET_FILL);
        glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, color.data());
        glFrontFace(GL_CCW);
        m_buffers.draw(m_ranges[s], [](int first, int count) {
            glCheckError();
            glInterleavedArrays(GL_N3F_V3F, 0, nullptr);
            glCheckError();
            glDrawArrays(GL_TRIANGLES, first, count);
            glCheckError();
        });
    }
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
}

void OpenGLPlotView::drawObjects2() {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    if (m_ranges.empty()) {
        return;
    }
    glDisable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-1, 1, -1, 1, -1, 100);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glScalef(0.8F, 0.8F, 1.0F);
    glTranslatef(0.1F, 0.1F, 0.0F);
    glDisable(GL_LIGHTING);
    glDisable(GL_MULTISAMPLE);
    drawAxes2();
    drawCurves2();
    drawLabel2();
}

void OpenGLPlotView::drawAxes2() const {
    setAxisColor();
    glBegin(GL_LINES);
    glVertex3f(-1, -1, 0);
    glVertex3f(-1, 1, 0);
    glVertex3f(-1, -1, 0);
    glVertex3f(1, -1, 0);
    glEnd();
    glCheckError();
}

void OpenGLPlotView::drawCurves2() const {
    glEnableClientState(GL_VERTEX_ARRAY);
    for (std::size_t s = 0; s < m_ranges.size(); ++s) {
        if (!drawable(s)) {
            continue;
        }
        glColor3f(m_colors[s].red, m_colors[s].green, m_colors[s].blue);
        m_buffers.draw(m_ranges[s], [](int first, int count) {
            glVertexPointer(3, GL_FLOAT, 0, nullptr);
            glCheckError();
            glDrawArrays(GL_LINE_STRIP, first, count);
            glCheckError();
        });
    }
    glDisableClientState(GL_VERTEX_ARRAY);
}

void OpenGLPlotView::drawLabel2() {
    drawLabel(0, 0, -1.1F, -1);
}

void OpenGLPlotView::drawLabel(std::size_t index, float x, float y, float z) {
    if (index < m_textures.size()) {
        m_textures[index].fitInto(TextureString::roomAt(x, y, z), m_rasterizer, labelAttributes(m_scale));
        m_textures[index].drawAtX(x, y, z);
    }
}

/// Whether the range has a colour and lies within the plot, so that GL never reads past its end.
bool OpenGLPlotView::drawable(std::size_t index) const {
    const VertexRange& range = m_ranges[index];
    const std::uint64_t end = std::uint64_t{range.first} + range.count;
    return index < m_colors.size() && range.count > 0 && end <= m_buffers.vertices();
}

void OpenGLPlotView::makeTextures() {
    m_textures.clear(); // the old textures go before the new ones come
    m_textures.reserve(m_strings.size());
    m_scale = surface().scale();
    for (const std::string& string : m_strings) {
        m_textures.emplace_back(m_rasterizer, string, labelAttributes(m_scale));
    }
    glCheckError();
}

} // namespace orrery
