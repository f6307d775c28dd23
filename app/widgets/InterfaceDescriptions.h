#pragma once

#include <QtGlobal>

/// The controls of the interface descriptions, for headers that name them only.
QT_BEGIN_NAMESPACE
namespace Ui {
class MainMenu;
class MyDocument; // NOLINT(bugprone-forward-declaration-namespace): named after the document's class
} // namespace Ui
QT_END_NAMESPACE
