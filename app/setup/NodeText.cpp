#include "app/setup/NodeText.h"

#include "platform/qt/QtText.h"

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <string_view>

namespace orrery {

namespace {

struct ClassWord {
    std::string_view className;
    const char* word;
};

constexpr std::array classWords = {
    ClassWord{"KSLEVEL", QT_TRANSLATE_NOOP("ModelOutline", "level")},
    ClassWord{"KSINPUT", QT_TRANSLATE_NOOP("ModelOutline", "input port")},
    ClassWord{"KSOUTPUT", QT_TRANSLATE_NOOP("ModelOutline", "output port")},
    ClassWord{"KSEXPRESSION", QT_TRANSLATE_NOOP("ModelOutline", "expression")},
    ClassWord{"KSTVDD", QT_TRANSLATE_NOOP("ModelOutline", "time-varying distributed delay")},
    ClassWord{"KS2DTVDD", QT_TRANSLATE_NOOP("ModelOutline", "two-dimensional distributed delay")},
    ClassWord{"KSHTL", QT_TRANSLATE_NOOP("ModelOutline", "HTL part")},
    ClassWord{"KSLOOKUP", QT_TRANSLATE_NOOP("ModelOutline", "lookup table")},
    ClassWord{"KSFILE", QT_TRANSLATE_NOOP("ModelOutline", "file")},
    ClassWord{"KSINPUTSPLITTER", QT_TRANSLATE_NOOP("ModelOutline", "input splitter")},
    ClassWord{"KSWEATHER", QT_TRANSLATE_NOOP("ModelOutline", "weather")},
    ClassWord{"KSRANDOM", QT_TRANSLATE_NOOP("ModelOutline", "random numbers")},
};

constexpr std::size_t longestValue = 200; // a tool tip is not a text view
constexpr std::size_t mostRows = 24;

QString valueForTip(std::string_view value) {
    QString text = qtText(value.substr(0, longestValue));
    if (value.size() > longestValue) text += "…";
    return text.toHtmlEscaped();
}

} // namespace

QString nodeKindWord(const ModelNode& node) {
    if (node.kind == ModelNodeKind::PortGroup) return QCoreApplication::translate("ModelOutline", "group of ports");
    const auto* found = std::ranges::find(classWords, node.record.text("class"), &ClassWord::className);
    return found == classWords.end() ? QCoreApplication::translate("ModelOutline", "part")
                                     : QCoreApplication::translate("ModelOutline", found->word);
}

QString nodeToolTip(const ModelNode& node) {
    QString tip = "<p style='white-space:pre'><b>" + valueForTip(node.name()) + "</b>, " + nodeKindWord(node) + "</p>";
    QString rows;
    std::size_t count = 0;
    for (const auto& [name, value] : node.record) {
        if (name == "name") continue;
        if (++count > mostRows) break;
        rows += QString("<tr><td>%1&nbsp;&nbsp;</td><td>%2</td></tr>").arg(valueForTip(name), valueForTip(value));
    }
    return rows.isEmpty() ? tip : tip + "<table>" + rows + "</table>";
}

} // namespace orrery
