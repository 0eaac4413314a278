// SPDX-License-Identifier: MIT
#include "AlertsPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/hud/LTHUDAlert.h>

namespace {

QString nameOfResult(int result) {
    switch (result) {
    case NSAlertDefaultReturn:
        return QStringLiteral("default");
    case NSAlertAlternateReturn:
        return QStringLiteral("alternate");
    default:
        return QStringLiteral("other");
    }
}

} // namespace

AlertsPage::AlertsPage()
    : GalleryPage(QStringLiteral("alerts"), QStringLiteral("Alerts"),
                  QStringLiteral("A question with up to three buttons, a check box or a line of text, in the middle of "
                                 "the screen or over its window."),
                  {QStringLiteral("LTHUDAlert")}) {}

AlertsPage::~AlertsPage() = default;

std::shared_ptr<LTHUDAlert> AlertsPage::makeAlert() const {
    if (m_isInput) {
        return LTHUDAlert::inputAlertWithMessageText(m_message, QStringLiteral("Letter"));
    }
    const QString other = m_asksToBeSpared ? QStringLiteral("Do not ask again") : QStringLiteral("&Archive");
    auto alert = LTHUDAlert::alertWithMessageText(m_message, QStringLiteral("&Remove"),
                                                  m_buttons > 1 ? QStringLiteral("Cancel") : QString(),
                                                  m_buttons > 2 || m_asksToBeSpared ? other : QString(), m_information);
    alert->setOtherButtonIsDontShowAgain(m_asksToBeSpared);
    return alert;
}

void AlertsPage::build(Stage& stage, SettingsPane& settings) {
    auto& told = stage.putText(NSMakeRect(0, 0, 420, 34), QStringLiteral("Nothing was asked yet."), 13);
    const auto tell = [this, &told](const LTHUDAlert& alert, int result) {
        QString text = QStringLiteral("The answer: %1.").arg(nameOfResult(result));
        if (m_asksToBeSpared && !m_isInput) {
            text += alert.dontShowAgainIsChecked() ? QStringLiteral(" Do not ask again.")
                                                   : QStringLiteral(" Ask again next time.");
        }
        told.setStringValue(text);
    };
    settings.addText(QStringLiteral("Message"), m_message, [this](const QString& text) { m_message = text; });
    settings.addText(QStringLiteral("Information"), m_information,
                     [this](const QString& text) { m_information = text; });
    settings.addChoice(QStringLiteral("Buttons"),
                       {QStringLiteral("One"), QStringLiteral("Two"), QStringLiteral("Three")}, m_buttons - 1,
                       [this](int index) { m_buttons = index + 1; });
    settings.addCheckBox(QStringLiteral("“Do not ask again”"), m_asksToBeSpared,
                         [this](bool isOn) { m_asksToBeSpared = isOn; });
    settings.addCheckBox(QStringLiteral("Asks for a text"), m_isInput, [this](bool isOn) { m_isInput = isOn; });
    settings.addButton(QStringLiteral("&Ask"), [this, tell] {
        const auto alert = makeAlert();
        const int result = alert->runModal();
        tell(*alert, result);
    });
    settings.addButton(QStringLiteral("Ask as a &Sheet"), [this, tell, &stage, &told] {
        const auto alert = makeAlert();
        NSWindow& window = *stage.window();
        if (!m_isInput) {
            tell(*alert, alert->runSheetModalForWindow(window));
            return;
        }
        const std::optional<QString> text = alert->runInputSheetModalForWindow(window);
        told.setStringValue(text ? QStringLiteral("The text: %1").arg(*text) : QStringLiteral("No text."));
    });
}

void AlertsPage::takePictures(PictureBook& book) {
    const auto take = [this, &book](const QString& name, const QString& caption) {
        const auto alert = makeAlert();
        whileModal([&](NSWindow& window) {
            book.addWindow(QStringLiteral("alert-") + name, caption, window, 24);
            alert->buttonAction(alert->defaultButtonControl());
        });
        return alert->runModal();
    };
    constexpr const char* numbers[] = {"one", "two", "three"};
    for (m_buttons = 1; m_buttons <= 3; ++m_buttons) {
        const QString number = QString::fromLatin1(numbers[m_buttons - 1]);
        take(number, QStringLiteral("Alert, buttons: ") + number);
    }
    m_buttons = 2;
    m_asksToBeSpared = true;
    take(QStringLiteral("check-box"), QStringLiteral("Alert with a check box"));
    m_asksToBeSpared = false;
    m_isInput = true;
    take(QStringLiteral("input"), QStringLiteral("Alert that asks for a text"));
    m_isInput = false;
}
