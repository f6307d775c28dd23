#pragma once

#include "platform/GlSurface.h"
#include "platform/values/Pixels.h"

#include <memory>

namespace orrery {

/// A surface without a window or a display server: a context of its own and an off-screen target with colour and depth.
/// Every surface has its own context; several may live side by side on the main thread. While a window's context is
/// current there, none of these can be made current (it is to be released first), and the other way round.
class EglSurface : public GlSurface {
public:
    /// `samples` per pixel above 1 smooth edges; more than the driver has become what it has, and the log says so.
    /// @throws OrreryError when there is no OpenGL, or the size is nothing or more than the driver or the memory holds
    EglSurface(int width, int height, int samples = 1);
    EglSurface(const EglSurface&) = delete;
    EglSurface& operator=(const EglSurface&) = delete;
    ~EglSurface() override;

    [[nodiscard]] bool makeCurrent() override;
    [[nodiscard]] SurfaceBounds bounds() const override;
    void markForDisplay() override {}
    void setSwapInterval(int) override {} // nothing is shown
    void flushBuffer() override;          // resolves the samples

    /// Another size from the next frame on. @throws OrreryError as the constructor
    void resize(int width, int height);
    /// What the last frame left.
    [[nodiscard]] Pixels readPixels();
    /// Ends the context, with everything in it; makeCurrent() fails until recreateContext().
    void loseContext();
    void recreateContext();

private:
    struct Context;
    struct Target;
    void makeTarget();

    int m_width = 0;
    int m_height = 0;
    int m_samples = 1;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<Target> m_target; // in the context, so it goes first
};

} // namespace orrery
