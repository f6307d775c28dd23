#pragma once

#include "app/plot/CameraControls.h"
#include "app/plot/ResponseSettings.h"
#include "app/plot/SweepSettings.h"
#include "app/widgets/InterfaceDescriptions.h"
#include "document/MyDocument.h"
#include "platform/TextRasterizer.h"

#include <QObject>
#include <functional>
#include <string>

namespace orrery {

class QtGlSurface;

/// The plot tab: the GL view, the rows of sweep and response variables, camera, light and rotation, and a word about
/// what the plot shows. Where the display has no OpenGL, all of it works but the picture.
class PlotTab : public QObject {
    Q_OBJECT

public:
    PlotTab(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu, TextRasterizer& rasterizer);
    ~PlotTab() override;
    void addOutlets(DocumentOutlets& outlets);
    void refresh();
    void setCameraBounds();                    // the document has set them
    void showChange(const PlotChange& change); // brings its control to view

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeSurface(TextRasterizer& rasterizer);
    void showReason(const std::string& reason);
    void connectTabs();
    [[nodiscard]] QWidget* controlOf(const PlotChange& change);
    void follow();
    void fitColumn();
    void showNotice();
    [[nodiscard]] bool newResultsWait() const;
    [[nodiscard]] bool offersLastRun() const;
    [[nodiscard]] QString resultsNotice() const;
    [[nodiscard]] QString notice() const;

    MyDocument& m_document;
    Ui::MyDocument& m_ui;
    Ui::MainMenu& m_menu;
    SweepSettings m_sweepSettings;
    ResponseSettings m_responseSettings;
    CameraControls m_camera;
    QtGlSurface* m_surface = nullptr;       // the window's; hidden where there is no OpenGL
    PlotView* m_view = nullptr;             // the surface's
    std::function<bool()> m_showsSomething; // whether the view has anything to draw
};

} // namespace orrery
