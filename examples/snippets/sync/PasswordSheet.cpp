// SPDX-License-Identifier: MIT
#include "PasswordSheet.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <memory>
#include <vector>

namespace {

constexpr double headlineFontSize = 16; // points

/// The sheet while it asks.
class PasswordSheet : public NSNibOwner {
public:
    PasswordSheet(const QString& headline, const QString& reason) {
        std::vector<std::unique_ptr<QWidget>> windows;
        NSNib(QStringLiteral("PasswordSheet")).instantiateNibWithOwner(*this, &windows);
        m_owned = std::move(windows.front());
        m_sheet->setHasShadow(true);
        m_sheet->setWindowTitle(headline);
        m_sheet->setAccessibleDescription(reason);
        m_headline->setFont(NSFont::boldSystemFontOfSize(headlineFontSize));
        m_headline->setTextColor(NSColor::whiteColor());
        m_headline->setStringValue(headline);
        m_reason->setStringValue(reason);
        m_sheet->setDefaultButtonCell(&m_ok->cell());
        m_cancel->cell().setKeyEquivalent(QStringLiteral("\u001b"));
        m_sheet->makeFirstResponder(m_password);
    }

    std::optional<QString> runForWindow(NSWindow& window) {
        m_sheet->runHUDSheetForWindow(window);
        return m_answer;
    }

private:
    void connectNib(NSNibConnections& nib) override {
        nib.outlet(QStringLiteral("sheet"), m_sheet);
        nib.outlet(QStringLiteral("headline"), m_headline);
        nib.outlet(QStringLiteral("reasonField"), m_reason);
        nib.outlet(QStringLiteral("passwordField"), m_password);
        nib.outlet(QStringLiteral("okButton"), m_ok);
        nib.outlet(QStringLiteral("cancelButton"), m_cancel);
        nib.action(QStringLiteral("ok:"), [this](QObject* /*sender*/) { accept(); });
        nib.action(QStringLiteral("cancel:"),
                   [](QObject* /*sender*/) { NSApplication::sharedApplication()->stopModal(); });
    }

    void accept() {
        if (m_password->text().isEmpty()) {
            NSBeep();
            return;
        }
        m_answer = m_password->text();
        NSApplication::sharedApplication()->stopModal();
    }

    std::unique_ptr<QWidget> m_owned;
    LTHUDWindow* m_sheet = nullptr;
    NSTextField* m_headline = nullptr;
    NSTextField* m_reason = nullptr;
    LTHUDSecureTextField* m_password = nullptr;
    LTHUDButton* m_ok = nullptr;
    LTHUDButton* m_cancel = nullptr;
    std::optional<QString> m_answer;
};

} // namespace

std::optional<QString> askForPassword(const QString& host, const QString& reason, NSWindow& window) {
    return PasswordSheet(QStringLiteral("Password for %1").arg(host), reason).runForWindow(window);
}
