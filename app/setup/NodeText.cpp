#include "app/setup/NodeText.h"

#include "platform/qt/QtText.h"

#include <QCoreApplication>
#include <string_view>

namespace orrery {

namespace {

constexpr std::size_t longestValue = 200; // a tool tip is not a text view
constexpr std::size_t mostRows = 24;

QString valueForTip(std::string_view value) {
    QString text = qtText(value.substr(0, longestValue));
    if (value.size() > longestValue) text += "…";
    return text.toHtmlEscaped();
}

} // namespace

QString nodeKindWord(const ModelNode& node) {
    const ModelClass* found = findModelClass(node.record.text("class"));
    const char* word = found == nullptr ? "part" : found->word;
    return QCoreApplication::translate("ModelOutline", node.kind == ModelNodeKind::PortGroup ? "group of ports" : word);
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
