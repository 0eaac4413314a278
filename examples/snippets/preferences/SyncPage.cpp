// SPDX-License-Identifier: MIT
#include "SyncPage.h"

#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSTextField.h>

#include <QHostAddress>

#include <utility>

namespace {

bool isOnThisComputer(const QUrl& address) {
    return address.host() == QLatin1String("localhost") || QHostAddress(address.host()).isLoopback();
}

} // namespace

SyncPage::SyncPage(Apply apply) : m_apply(std::move(apply)) {
    load(QStringLiteral("SyncPage"));
    connect(m_address, &QLineEdit::textChanged, this, [this] { advise(); });
    reload();
}

void SyncPage::connectNib(NSNibConnections& nib) {
    nib.outlet(QStringLiteral("addressField"), m_address);
    nib.outlet(QStringLiteral("nameField"), m_name);
    nib.outlet(QStringLiteral("passwordField"), m_password);
    nib.outlet(QStringLiteral("isOnBox"), m_isOn);
    nib.outlet(QStringLiteral("noteField"), m_note);
    nib.action(QStringLiteral("syncNow:"), [this](QObject* /*sender*/) { syncNow(); });
}

void SyncPage::syncNow() {
    m_isOn->setState(NSOnState);
    if (!apply()) {
        NSBeep();
    }
}

LTHUDLineEdit& SyncPage::firstField() const {
    return *m_address;
}

void SyncPage::reload() {
    const SyncSettings kept = SyncSettings::load();
    m_address->setText(kept.address.toString());
    m_name->setText(kept.name);
    m_password->clear();
    m_password->setPlaceholderString(kept.name.isEmpty() ? QString() : QStringLiteral("Unchanged"));
    m_isOn->setState(kept.isOn ? NSOnState : NSOffState);
    advise();
}

SyncSettings SyncPage::typed() const {
    return {.address = SyncSettings::addressFrom(m_address->text()),
            .name = m_name->text().trimmed(),
            .isOn = m_isOn->state() == NSOnState};
}

bool SyncPage::applyChanges() {
    return (typed() == SyncSettings::load() && m_password->text().isEmpty()) || apply();
}

bool SyncPage::apply() {
    const SyncSettings settings = typed();
    // What is switched off may be left unfinished.
    const QString problem = settings.isOn ? SyncSettings::problemWith(settings.address) : QString();
    m_note->setStringValue(problem);
    if (!problem.isEmpty()) {
        return false;
    }
    const QString password = m_password->text();
    m_password->clear();
    m_apply(settings, password);
    return true;
}

void SyncPage::advise() {
    const QUrl address = SyncSettings::addressFrom(m_address->text());
    const bool isOpen = address.scheme() == QLatin1String("http") && !isOnThisComputer(address);
    m_note->setStringValue(isOpen ? QStringLiteral("Without https, others on the way can read all that is sent.")
                                  : QString());
}
