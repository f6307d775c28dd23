#pragma once

namespace orrery {

/// The size of a surface in device pixels.
struct SurfaceBounds {
    double width = 0;
    double height = 0;
};

/// What a drawing surface is asked for: OpenGL 2.1 with the fixed functions (a compatibility context) and this.
struct GlPixelFormat {
    bool window = true; // on screen
    bool doubleBuffer = true;
    int depthSize = 16; // bits, at least
};

/// Where a view draws: one OpenGL context and its target. The target's alpha is 1 after a view has cleared it.
/// Main thread. Outlives the view that draws on it.
class GlSurface {
public:
    virtual ~GlSurface() = default;
    /// Makes this surface's context the current one and its target the one drawn to. False while there is no context
    /// (not shown yet, or lost): then no GL call may follow.
    [[nodiscard]] virtual bool makeCurrent() = 0;
    [[nodiscard]] virtual SurfaceBounds bounds() const = 0;
    /// Device pixels to a pixel of the desktop's, above 1 on dense screens; changes when a window moves between
    /// screens.
    [[nodiscard]] virtual double scale() const { return 1; }
    /// Asks for a frame, drawn later from the main loop; any number of requests give one frame.
    virtual void markForDisplay() = 0;
    virtual void setSwapInterval(int refreshes) = 0; // a hint; ignored where nothing is shown
    virtual void flushBuffer() = 0;                  // shows what was drawn
};

/// What a surface calls back, with its context current.
class GlSurfaceClient {
public:
    virtual ~GlSurfaceClient() = default;
    virtual void prepareOpenGL() = 0;  // once for every new context, before the first frame
    virtual void drawRect() = 0;       // one frame
    virtual void releaseContext() = 0; // the context is about to go; a new one may come
};

} // namespace orrery
