// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSOpenPanel.h>

#include <QFileDialog>

#include <algorithm>

NSOpenPanel::NSOpenPanel() = default;

NSOpenPanel::~NSOpenPanel() = default;

std::unique_ptr<NSOpenPanel> NSOpenPanel::openPanel() {
    return std::make_unique<NSOpenPanel>();
}

int NSOpenPanel::runModalForTypes(const QStringList& fileTypes) {
    return runModalForDirectory({}, {}, fileTypes);
}

int NSOpenPanel::runModalForDirectory(const QString& path, const QString& file, const QStringList& fileTypes) {
    m_fileTypes = fileTypes;
    return runModalForDirectory(path, file);
}

QStringList NSOpenPanel::allowedTypes() const {
    QStringList types = m_fileTypes.isEmpty() ? QStringList(requiredFileType()) : m_fileTypes;
    for (QString& type : types) {
        type = withoutLeadingDot(type);
    }
    types.removeAll(QString());
    return types;
}

void NSOpenPanel::prepareDialog(QFileDialog& dialog) const {
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    const QStringList types = allowedTypes();
    if (!types.isEmpty()) {
        dialog.setNameFilter(QStringLiteral("*.") + types.join(QStringLiteral(" *.")));
    }
}

QString NSOpenPanel::pathForChosen(const QString& path) const {
    const QStringList types = allowedTypes();
    const bool isAllowed = types.isEmpty() || std::any_of(types.begin(), types.end(), [&path](const QString& type) {
                               return hasFileType(path, type);
                           });
    return isAllowed ? path : QString();
}
