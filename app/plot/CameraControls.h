#pragma once

#include "app/widgets/InterfaceDescriptions.h"
#include "document/MyDocument.h"
#include "platform/qt/QtControls.h"

#include <QObject>
#include <vector>

class QDoubleSpinBox;

namespace orrery {

/// Eye, look-at point, light, rotation, animation and reset: they set the document's properties, and follow them
/// whatever has changed them.
class CameraControls : public QObject {
    Q_OBJECT

public:
    CameraControls(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu);

    [[nodiscard]] Slider& rotationSlider() { return m_rotationSlider; }
    void setLightBounds(); // the document has set them
    void follow();
    [[nodiscard]] QWidget* controlOf(const PlotChange& change) const;

private:
    /// A coordinate of the camera and its control.
    struct Coordinate {
        QDoubleSpinBox* control;
        float (MyDocument::*value)() const;
        void (MyDocument::*setValue)(float);
    };

    void connectCoordinates();
    void setCoordinate(std::size_t number, double value);
    void setLight(float height);
    void rotate(float sliderValue);
    void toggleAnimation();

    MyDocument& m_document;
    Ui::MyDocument& m_ui;
    Ui::MainMenu& m_menu;
    std::vector<Coordinate> m_coordinates;
    QtSlider m_rotationSlider;
};

} // namespace orrery
