#include "app/LogFont.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QWidget>
#include <algorithm>
#include <charconv>
#include <string>

namespace orrery {

namespace {

constexpr const char* key = "logFontSize";
constexpr int smallest = 6;
constexpr int largest = 36;

} // namespace

int logFontSize(const UserDefaults& defaults) {
    int points = QFontInfo(QFontDatabase::systemFont(QFontDatabase::FixedFont)).pointSize();
    const std::string text = defaults.stringForKey(key).value_or("");
    std::from_chars(text.data(), text.data() + text.size(), points); // leaves the size where the text is not a number
    return std::clamp(points, smallest, largest);
}

void setLogFontSize(UserDefaults& defaults, int points) {
    defaults.setObject(std::to_string(points), key);
}

void applyLogFontSize(QWidget& view, const UserDefaults& defaults) {
    QFont font = view.font();
    font.setPointSize(logFontSize(defaults));
    view.setFont(font);
}

} // namespace orrery
