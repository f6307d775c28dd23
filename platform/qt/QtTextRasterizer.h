#pragma once

#include "platform/TextRasterizer.h"

#include <memory>

class QGuiApplication;

namespace orrery {

/// Qt's fonts without a window: makes the application object on the platform "offscreen" when there is none yet.
/// A program that has a plain QCoreApplication cannot draw text.
class OffscreenGui {
public:
    /// @throws AssertionFailure when the application object is one without fonts
    OffscreenGui();
    OffscreenGui(const OffscreenGui&) = delete;
    OffscreenGui& operator=(const OffscreenGui&) = delete;
    ~OffscreenGui();

private:
    std::unique_ptr<QGuiApplication> m_application;
};

/// Text through Qt's fonts; needs a QGuiApplication.
class QtTextRasterizer : public TextRasterizer {
public:
    [[nodiscard]] Pixels rasterize(std::string_view text, const TextAttributes& attributes, int maxWidth) override;
};

} // namespace orrery
