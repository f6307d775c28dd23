#pragma once

#include <QtGlobal>

/// The controls of the interface descriptions, for headers that name them only.
QT_BEGIN_NAMESPACE
namespace Ui {
class MainMenu;
class MyDocument;
} // namespace Ui
QT_END_NAMESPACE
