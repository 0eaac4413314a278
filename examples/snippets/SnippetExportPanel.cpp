// SPDX-License-Identifier: MIT
#include "SnippetExportPanel.h"

#include "NumberText.h"

#include <VXKit/hud/LTHUDAlert.h>
#include <VXKit/platform/appkit/NSSavePanel.h>

#include <QStandardPaths>

namespace {

const QString& listFileType() {
    static const QString type = QStringLiteral("plist");
    return type;
}

} // namespace

std::optional<SnippetExportResult> exportWithPanels(const std::vector<std::shared_ptr<Snippet>>& snippets,
                                                    bool areFound, const QString& databasePath, NSWindow& window) {
    const QString count = numbered(static_cast<qint64>(snippets.size()), "snippet", "snippets");
    const auto alert = LTHUDAlert::alertWithMessageText(
        (areFound ? QStringLiteral("Export the %1 found?") : QStringLiteral("Export %1?")).arg(count),
        QStringLiteral("&Property List"), QStringLiteral("Cancel"), QStringLiteral("&Text Files"),
        QStringLiteral(
            "A property list keeps titles, dates and uses, and can be imported again. Text files can be read "
            "by anything, and go into a folder of their own."));
    const int form = alert->runSheetModalForWindow(window);
    if (form == NSAlertAlternateReturn) {
        return std::nullopt;
    }
    const bool isList = form == NSAlertDefaultReturn;
    NSSavePanel panel;
    panel.setRequiredFileType(isList ? listFileType() : QString());
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString name = isList ? QStringLiteral("Snippets.plist") : QStringLiteral("Snippets");
    if (panel.runModalForDirectory(documents, name) != NSFileHandlingPanelOKButton) {
        return std::nullopt;
    }
    const QString path = panel.filename();
    if (leadToOneFile(path, databasePath)) {
        return SnippetExportResult{.count = 0, .problem = path + QStringLiteral(": is the database itself")};
    }
    return isList ? exportToPropertyList(snippets, path) : exportToFolder(snippets, path);
}
