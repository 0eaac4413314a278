// SPDX-License-Identifier: MIT
#include "SyncPage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSTextField.h>

#include <QHostAddress>

#include <utility>

namespace {

// Points.
constexpr NSSize pageSize{460, 330};
constexpr double fieldHeight = 22;
constexpr double labelWidth = 76;
constexpr double labelDrop = 4; // of a label's text, to stand on the line of the field's
constexpr double explanationHeight = 28;
constexpr double boxHeight = 18;
constexpr double noteHeight = 28;
constexpr double buttonWidth = 110;
constexpr double buttonHeight = 28;

bool isOnThisComputer(const QUrl& address) {
    return address.host() == QLatin1String("localhost") || QHostAddress(address.host()).isLoopback();
}

NSRect afterLabel(const NSRect& row) {
    return NSMakeRect(NSMinX(row) + labelWidth, NSMinY(row), row.size.width - labelWidth, row.size.height);
}

} // namespace

SyncPage::SyncPage(Apply apply)
    : PreferencesPage(pageSize), m_apply(std::move(apply)),
      m_address((addText(nextRow(explanationHeight),
                         QStringLiteral("Snippets can be the same on all your computers, by way of a folder on a "
                                        "WebDAV server that they share.")),
                 addField<LTHUDTextField>(QStringLiteral("Address:")))),
      m_name(addField<LTHUDTextField>(QStringLiteral("Name:"))),
      m_password(addField<LTHUDSecureTextField>(QStringLiteral("Password:"))),
      m_isOn(addCheckBox(afterLabel(nextRow(boxHeight)), QStringLiteral("Keep the snippets in sync"), false)),
      m_note(addText(afterLabel(nextRow(noteHeight)), {})) {
    LTHUDButton& button = addButton(
        NSMakeRect(pageSize.width - margin - buttonWidth, NSMinY(nextRow(buttonHeight)), buttonWidth, buttonHeight),
        QStringLiteral("Sync Now"));
    m_address.setPlaceholderString(QStringLiteral("https://host/folder"));
    m_address.setNextKeyView(&m_name);
    m_name.setNextKeyView(&m_password);
    m_password.setNextKeyView(&m_isOn);
    for (LTHUDLineEdit* field : {static_cast<LTHUDLineEdit*>(&m_address), static_cast<LTHUDLineEdit*>(&m_name),
                                 static_cast<LTHUDLineEdit*>(&m_password)}) {
        field->setTarget(&button);
    }
    connect(&m_address, &QLineEdit::textChanged, this, [this] { advise(); });
    connect(&button, &QAbstractButton::clicked, this, [this] {
        m_isOn.setState(NSOnState);
        if (!this->apply()) {
            NSBeep();
        }
    });
    reload();
}

template <class Field>
Field& SyncPage::addField(const QString& label) {
    const NSRect row = nextRow(fieldHeight);
    addText(NSMakeRect(NSMinX(row), NSMinY(row), labelWidth, row.size.height - labelDrop), label);
    auto* field = new Field(afterLabel(row), this);
    field->setAccessibleName(label.chopped(1));
    add(*field);
    return *field;
}

LTHUDLineEdit& SyncPage::firstField() const {
    return m_address;
}

void SyncPage::reload() {
    const SyncSettings kept = SyncSettings::load();
    m_address.setText(kept.address.toString());
    m_name.setText(kept.name);
    m_password.clear();
    m_password.setPlaceholderString(kept.name.isEmpty() ? QString() : QStringLiteral("Unchanged"));
    m_isOn.setState(kept.isOn ? NSOnState : NSOffState);
    advise();
}

SyncSettings SyncPage::typed() const {
    return {.address = SyncSettings::addressFrom(m_address.text()),
            .name = m_name.text().trimmed(),
            .isOn = m_isOn.state() == NSOnState};
}

bool SyncPage::applyChanges() {
    return (typed() == SyncSettings::load() && m_password.text().isEmpty()) || apply();
}

bool SyncPage::apply() {
    const SyncSettings settings = typed();
    // What is switched off may be left unfinished.
    const QString problem = settings.isOn ? SyncSettings::problemWith(settings.address) : QString();
    m_note.setStringValue(problem);
    if (!problem.isEmpty()) {
        return false;
    }
    const QString password = m_password.text();
    m_password.clear();
    m_apply(settings, password);
    return true;
}

void SyncPage::advise() {
    const QUrl address = SyncSettings::addressFrom(m_address.text());
    const bool isOpen = address.scheme() == QLatin1String("http") && !isOnThisComputer(address);
    m_note.setStringValue(isOpen ? QStringLiteral("Without https, others on the way can read all that is sent.")
                                 : QString());
}
