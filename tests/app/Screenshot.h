#pragma once

#include "app/WindowFixture.h"
#include "platform/qt/QtText.h"

#include <QPixmap>
#include <QScreen>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace orrery::test {

inline std::string screenshotFolder() {
    const char* wanted = std::getenv("ORRERY_SCREENSHOTS");
    std::string folder = wanted != nullptr ? wanted : ORRERY_BIN "/../screenshots";
    std::filesystem::create_directories(folder);
    return folder;
}

/// Saves the whole screen under the name in the folder for pictures.
inline void saveScreenshot(const std::string& name) {
    QTest::qWait(250); // styles fade focus rings and hovers in
    const QString path = qtPath(screenshotFolder() + "/" + name + ".png");
    ASSERT_TRUE(QGuiApplication::primaryScreen()->grabWindow(0).save(path));
}

} // namespace orrery::test
