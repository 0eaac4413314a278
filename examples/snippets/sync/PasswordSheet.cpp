// SPDX-License-Identifier: MIT
#include "SyncPanel.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <QHostAddress>
#include <QPointer>

#include <memory>
#include <vector>

namespace {

// Points.
constexpr double windowWidth = 442;
constexpr double margin = 24;
constexpr double labelWidth = 72;
constexpr double fieldX = margin + labelWidth + 10;
constexpr double fieldWidth = windowWidth - fieldX - margin;
constexpr double fieldHeight = 22;
constexpr double rowDistance = 32;
constexpr double labelHeight = 15;
constexpr double headlineHeight = 20;
constexpr double headlineY = 40;    // of its lower edge, below the top
constexpr double explanationY = 74; // the same
constexpr double explanationHeight = 28;
constexpr double firstRowY = 110; // the same
constexpr double checkBoxHeight = 18;
constexpr double noteHeight = 28;
constexpr double noteGap = 10;
constexpr double laneHeight = 36;
constexpr double buttonY = 2;
constexpr double buttonWidth = 96;
constexpr double buttonHeight = 28;
constexpr double rightEdge = windowWidth - 15;

constexpr double headlineFontSize = 16;
constexpr double textFontSize = 11;

bool isOnThisComputer(const QUrl& address) {
    return address.host() == QLatin1String("localhost") || QHostAddress(address.host()).isLoopback();
}

/// The sheet: a headline, an explanation, rows of fields with a label before each, a note, and two buttons.
class SyncPanel {
public:
    SyncPanel(const QString& headline, const QString& explanation, int rowCount, bool hasCheckBox)
        : m_height(firstRowY + (rowCount - 1) * rowDistance + (hasCheckBox ? rowDistance : 0) + noteGap + noteHeight +
                   laneHeight),
          m_window(NSMakeRect(0, 0, windowWidth, m_height), NSBorderlessWindowMask, NSBackingStoreBuffered, true) {
        m_window.setHasShadow(true);
        m_window.setWindowTitle(headline);
        m_window.setAccessibleDescription(explanation);
        addText(NSMakeRect(margin, m_height - headlineY, windowWidth - 2 * margin, headlineHeight),
                NSFont::boldSystemFontOfSize(headlineFontSize), headline);
        addText(NSMakeRect(margin, m_height - explanationY, windowWidth - 2 * margin, explanationHeight),
                NSFont::systemFontOfSize(textFontSize), explanation);
        m_note = addText(NSMakeRect(fieldX, laneHeight + noteGap / 2, fieldWidth, noteHeight),
                         NSFont::systemFontOfSize(textFontSize), {});
        m_ok = addButton(QStringLiteral("OK"), 0);
        m_cancel = addButton(QStringLiteral("Cancel"), 1);
        m_window.setDefaultButtonCell(&m_ok->cell());
        m_cancel->cell().setKeyEquivalent(QStringLiteral("\u001b"));
    }

    template <class Field>
    Field& addField(const QString& label, const QString& value) {
        const double y = m_height - firstRowY - m_rowCount++ * rowDistance;
        addText(NSMakeRect(margin, y + (fieldHeight - labelHeight) / 2, labelWidth, labelHeight),
                NSFont::systemFontOfSize(textFontSize), label);
        auto field = std::make_unique<Field>(NSMakeRect(fieldX, y, fieldWidth, fieldHeight));
        field->setAccessibleName(label);
        field->setText(value);
        field->setTarget(m_ok);
        if (m_lastField) {
            m_lastField->setNextKeyView(field.get());
        } else {
            m_firstField = field.get();
        }
        field->setNextKeyView(m_ok);
        m_lastField = field.get();
        return add(std::move(field));
    }

    LTHUDCheckBox& addCheckBox(const QString& title, bool isOn) {
        const double y = m_height - firstRowY - m_rowCount++ * rowDistance + (fieldHeight - checkBoxHeight) / 2;
        auto box = std::make_unique<LTHUDCheckBox>(NSMakeRect(fieldX, y, fieldWidth, checkBoxHeight));
        box->setTitle(title);
        box->setState(isOn ? NSOnState : NSOffState);
        m_lastField->setNextKeyView(box.get());
        return add(std::move(box));
    }

    void setNote(const QString& note) { m_note->setStringValue(note); }

    /// Runs the sheet; true when OK was pressed and `accepts` did not refuse.
    template <class Accepts>
    [[nodiscard]] bool run(NSWindow& parent, Accepts accepts) {
        bool isAccepted = false;
        QObject::connect(m_ok, &QAbstractButton::clicked, &m_window, [&] {
            if (accepts()) {
                isAccepted = true;
                NSApplication::sharedApplication()->stopModal();
            } else {
                NSBeep();
            }
        });
        QObject::connect(m_cancel, &QAbstractButton::clicked, &m_window,
                         [] { NSApplication::sharedApplication()->stopModal(); });
        m_window.makeFirstResponder(m_firstField);
        m_firstField->selectAll();
        m_window.runHUDSheetForWindow(parent);
        return isAccepted;
    }

private:
    template <class View>
    View& add(std::unique_ptr<View> view) {
        View& added = *view;
        ViewCore::of(m_window.contentView())->addSubview(view.get());
        m_views.push_back(std::move(view));
        return added;
    }

    NSTextField* addText(const NSRect& frame, const NSFont& font, const QString& text) {
        auto field = std::make_unique<NSTextField>(frame);
        field->setFont(font);
        field->setTextColor(NSColor::whiteColor());
        field->setStringValue(text);
        return &add(std::move(field));
    }

    LTHUDButton* addButton(const QString& title, int placesFromRight) {
        auto button = std::make_unique<LTHUDButton>(
            NSMakeRect(rightEdge - (placesFromRight + 1) * buttonWidth, buttonY, buttonWidth, buttonHeight));
        button->setTitle(title);
        return &add(std::move(button));
    }

    double m_height;
    LTHUDWindow m_window;
    std::vector<std::unique_ptr<QWidget>> m_views; // go before their window
    NSTextField* m_note = nullptr;
    LTHUDButton* m_ok = nullptr;
    LTHUDButton* m_cancel = nullptr;
    LTHUDLineEdit* m_firstField = nullptr;
    LTHUDLineEdit* m_lastField = nullptr;
    int m_rowCount = 0;
};

} // namespace

std::optional<SyncAnswer> askForSyncSettings(const SyncSettings& settings, NSWindow& window) {
    SyncPanel panel(QStringLiteral("Sync"),
                    QStringLiteral("Snippets can be the same on all your computers, by way of a folder on a WebDAV "
                                   "server that they share."),
                    3, true);
    auto& address = panel.addField<LTHUDTextField>(QStringLiteral("Address:"), settings.address.toString());
    address.setPlaceholderString(QStringLiteral("https://host/folder"));
    auto& name = panel.addField<LTHUDTextField>(QStringLiteral("Name:"), settings.name);
    auto& password = panel.addField<LTHUDSecureTextField>(QStringLiteral("Password:"), {});
    if (!settings.name.isEmpty()) {
        password.setPlaceholderString(QStringLiteral("Unchanged"));
    }
    const LTHUDCheckBox& isOn = panel.addCheckBox(QStringLiteral("Keep the snippets in sync"), settings.isOn);
    const auto adviseOnAddress = [&] {
        const QUrl typed = SyncSettings::addressFrom(address.text());
        const bool isOpen = typed.scheme() == QLatin1String("http") && !isOnThisComputer(typed);
        panel.setNote(isOpen ? QStringLiteral("Without https, others on the way can read all that is sent.")
                             : QString());
    };
    QObject::connect(&address, &QLineEdit::textChanged, &address, adviseOnAddress);
    adviseOnAddress();

    SyncAnswer answer;
    const bool isAccepted = panel.run(window, [&] {
        answer.settings = {.address = SyncSettings::addressFrom(address.text()),
                           .name = name.text().trimmed(),
                           .isOn = isOn.state() == NSOnState};
        answer.password = password.text();
        // What is switched off may be left unfinished.
        const QString problem = answer.settings.isOn ? SyncSettings::problemWith(answer.settings.address) : QString();
        panel.setNote(problem);
        return problem.isEmpty();
    });
    return isAccepted ? std::optional(answer) : std::nullopt;
}

std::optional<QString> askForSyncPassword(const SyncSettings& settings, const QString& reason, NSWindow& window) {
    SyncPanel panel(QStringLiteral("Password for %1").arg(settings.address.host()), reason, 1, false);
    const auto& password = panel.addField<LTHUDSecureTextField>(QStringLiteral("Password:"), {});
    return panel.run(window, [&] { return !password.text().isEmpty(); }) ? std::optional(password.text())
                                                                         : std::nullopt;
}
