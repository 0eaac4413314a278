// SPDX-License-Identifier: MIT
#include "DatabasePage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/platform/appkit/NSTextField.h>

#include <QDir>

#include <utility>

DatabasePage::DatabasePage(std::function<void()> useStandard) : m_useStandard(std::move(useStandard)) {
    load(QStringLiteral("DatabasePage"));
    m_path->setSelectable(true);
}

void DatabasePage::connectNib(NSNibConnections& nib) {
    nib.outlet(QStringLiteral("pathField"), m_path);
    nib.outlet(QStringLiteral("standardButton"), m_standardButton);
    nib.action(QStringLiteral("useStandard:"), [this](QObject* /*sender*/) { m_useStandard(); });
}

void DatabasePage::show(const QString& path, bool isStandard) {
    m_path->setStringValue(QDir::toNativeSeparators(path));
    m_standardButton->setEnabled(!isStandard);
}
