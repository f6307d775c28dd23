#include "app/plot/PlotTab.h"

#include "app/plot/FollowedView.h"
#include "app/plot/PictureCommands.h"
#include "app/plot/PlotMouse.h"
#include "app/plot/PlotMoveEnds.h"
#include "app/plot/PlotTabOrder.h"
#include "app/plot/RunStateWords.h"
#include "app/widgets/BringToView.h"
#include "app/widgets/GuardedPlot.h"
#include "platform/qt/QtGlSurface.h"
#include "platform/qt/QtText.h"
#include "plot/OpenGLPlotView.h"
#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

#include <QEvent>
#include <QScrollBar>
#include <algorithm>

namespace orrery {

namespace {

constexpr auto setupIdentifier = "1"; // of the tab views, in their order
constexpr auto plotIdentifier = "2";
constexpr int columnWidth = 320; // of the controls at first

} // namespace

PlotTab::PlotTab(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu, TextRasterizer& rasterizer)
    : m_document(document), m_ui(ui), m_menu(menu), m_sweepSettings(document, *ui.independentVariableSettings),
      m_responseSettings(document, ui), m_camera(document, ui, menu) {
    ui.plotSplitter->setStretchFactor(0, 1);
    ui.plotSplitter->setSizes({columnWidth * 2, columnWidth});
    makeSurface(rasterizer);
    connectTabs();
    ui.plotControlsContents->installEventFilter(this);
    new PlotMoveEnds(document, this);
    connect(ui.plotNewResults, &QPushButton::clicked, this,
            [this] { guardedPlot(m_document, [this] { m_document.setupPlotView(); }); });
    connect(ui.plotOtherGrid, &QPushButton::clicked, this, [this] { m_document.readByOtherGrid(); });
}

PlotTab::~PlotTab() {
    m_surface->setClient(nullptr); // it calls back here
    m_surface->setUnavailableHandler([](const std::string&) {});
}

void PlotTab::makeSurface(TextRasterizer& rasterizer) {
    m_surface = new QtGlSurface(m_ui.glContainer);
    m_surface->setObjectName("glView");
    m_surface->setAccessibleName(tr("Plot"));
    m_surface->setToolTip(tr("Drag to turn, scroll to move closer, double-click to reset"));
    m_surface->setFocusPolicy(Qt::StrongFocus);
    m_surface->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_surface->installEventFilter(this);
    m_ui.glLayout->addWidget(m_surface);
    new PlotMouse(m_document, *m_surface, this);
    new PictureCommands(m_document, *m_surface, this);
    m_surface->addAction(m_menu.actionResetCamera);
    auto view = std::make_unique<FollowedView<OpenGLPlotView>>([this] { follow(); }, *m_surface, rasterizer);
    m_showsSomething = [drawn = view.get()] { return !drawn->ranges().empty(); };
    view->setFailureHandler( // which a frame calls; the window changes behind it
        [this] { QMetaObject::invokeMethod(this, &PlotTab::showNotice, Qt::QueuedConnection); });
    m_view = view.get();
    m_surface->setClient(std::move(view));
    m_surface->setUnavailableHandler([this](const std::string& reason) { // while it is being painted
        QMetaObject::invokeMethod(
            this, [this, reason] { showReason(reason); }, Qt::QueuedConnection);
    });
}

/// Instead of the surface. Its view keeps what it is given, as before a first frame.
void PlotTab::showReason(const std::string& reason) {
    m_surface->hide();
    auto* label = new QLabel(
        qtText(reason) + '\n' +
            tr("Install a graphics driver with OpenGL 2.1, or start Orrery on another display. Everything else works."),
        m_ui.glContainer);
    label->setObjectName("noOpenGL");
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    m_ui.glLayout->addWidget(label);
}

void PlotTab::connectTabs() {
    connect(m_ui.tabView, &QTabWidget::currentChanged, this, [this] {
        const bool plot = m_ui.tabView->currentWidget() == m_ui.plotTab;
        m_document.tabViewDidSelectTabViewItem(plot ? plotIdentifier : setupIdentifier);
        if (!plot) return;
        m_document.lookForLastRun();
        showNotice();
    });
    connect(m_menu.actionShowSetup, &QAction::triggered, this,
            [this] { m_ui.tabView->setCurrentWidget(m_ui.setupTab); });
    connect(m_menu.actionShowPlot, &QAction::triggered, this, [this] { m_ui.tabView->setCurrentWidget(m_ui.plotTab); });
}

void PlotTab::addOutlets(DocumentOutlets& outlets) {
    outlets.glView = m_view;
    outlets.independentVariableSettings = &m_sweepSettings;
    outlets.dependentVariableSettings = &m_responseSettings;
    outlets.yRotationSlider = &m_camera.rotationSlider();
}

void PlotTab::refresh() {
    m_sweepSettings.reloadData();
    m_responseSettings.reloadData();
    orderPlotTab(m_ui);
    follow();
}

/// The column scrolls up and down alone: it is never narrower than what is in it.
void PlotTab::fitColumn() {
    m_ui.plotControls->setMinimumWidth(m_ui.plotControlsContents->minimumSizeHint().width() +
                                       m_ui.plotControls->verticalScrollBar()->sizeHint().width());
}

/// Who works in the plot, or at the control's neighbours, sees the change there and keeps the keyboard.
void PlotTab::showChange(const PlotChange& change) {
    QWidget* control = controlOf(change);
    if (control == nullptr) control = m_surface->isHidden() ? m_ui.resetCamera : static_cast<QWidget*>(m_surface);
    const bool wasInFront = m_ui.tabView->currentWidget() == m_ui.plotTab;
    m_ui.tabView->setCurrentWidget(m_ui.plotTab);
    QWidget* focus = m_ui.centralWidget->window()->focusWidget();
    const bool isNear = focus != nullptr && (focus == m_surface || control->parentWidget()->isAncestorOf(focus));
    bringToView(*control, !wasInFront || !isNear);
}

QWidget* PlotTab::controlOf(const PlotChange& change) {
    if (!change.variables.empty()) return m_sweepSettings.controlOf(change.variables.front());
    if (!change.responses.empty()) return m_responseSettings.controlOf(change.responses.front());
    return m_camera.controlOf(change);
}

void PlotTab::setCameraBounds() {
    m_camera.setLightBounds();
}

bool PlotTab::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_ui.plotControlsContents) {
        if (event->type() == QEvent::LayoutRequest) fitColumn();
    } else if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
        // The frame around the view shows that the keys go there.
        m_ui.glContainer->setAutoFillBackground(true);
        m_ui.glContainer->setBackgroundRole(event->type() == QEvent::FocusIn ? QPalette::Highlight : QPalette::Window);
    }
    return QObject::eventFilter(watched, event);
}

/// With everything that asks for a redraw.
void PlotTab::follow() {
    m_camera.follow();
    showNotice();
}

void PlotTab::showNotice() {
    const QString text = (resultsNotice() + ' ' + notice()).trimmed();
    m_ui.plotNotice->setText(text);
    m_ui.plotNoticeRow->setVisible(!text.isEmpty());
    m_ui.plotNewResults->setVisible(newResultsWait());
    m_ui.plotLastRun->setVisible(offersLastRun());
    const GridChoice& grid = m_document.reading().gridChoice();
    m_ui.plotOtherGrid->setVisible(!grid.difference.empty() &&
                                   m_document.runControl().state() == RunControl::State::Idle);
    m_ui.plotOtherGrid->setText(grid.ofStarted ? tr("Read by the &Document's Grid") : tr("Read by the &Grid That Ran"));
}

/// What is wrong with the results of the last run: they are not whole, not its own, or read by another grid.
QString PlotTab::resultsNotice() const {
    const RunControl& run = m_document.runControl();
    if (run.state() != RunControl::State::Idle) return {};
    const RunOutcome::Kind kind = run.outcome().kind;
    const bool isOdd =
        kind == RunOutcome::Kind::Failed || (kind == RunOutcome::Kind::Results && !run.outcome().isWhole());
    QString text = isOdd ? runStateText(run) + ". " : QString();
    if (kind == RunOutcome::Kind::Failed && m_showsSomething()) text += tr("The plot shows an earlier run. ");
    return text + qtText(m_document.reading().gridChoice().text());
}

/// Whether there are results that the choice would draw and the plot does not show yet.
bool PlotTab::newResultsWait() const {
    if (!m_document.plot().isOutdated() || m_document.results().grid.variables.empty()) return false;
    return m_showsSomething() ||
           PlotChoices{m_document.results().grid.variables, m_document.results().responses.variables}.chosen();
}

/// Whether there is nothing to see but what was kept.
bool PlotTab::offersLastRun() const {
    return m_document.keeping().lastRun() && m_document.results().grid.variables.empty() &&
           m_document.runControl().state() == RunControl::State::Idle;
}

QString PlotTab::notice() const {
    if (!m_view->failure().empty()) return qtText(m_view->failure());
    if (offersLastRun())
        return tr("The last run of this setup, of %1, was kept.").arg(qtText(m_document.keeping().lastRun()->started));
    if (m_document.results().grid.variables.empty()) return noResultsText(m_document);
    if (newResultsWait()) {
        return m_showsSomething() ? tr("The plot shows an earlier run.") : tr("The new results are not plotted yet.");
    }
    return m_showsSomething() ? QString() : tr("Choose an axis and a response to see a plot.");
}

} // namespace orrery
