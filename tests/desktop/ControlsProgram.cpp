// SPDX-License-Identifier: MIT
// A program with a HUD panel that holds one of each control, for the test of accessibility. It tells on standard output
// what is done with them, a line for each press; the button "Ask" runs an alert and tells its answer,
// "Report" shows the exception reporter.
#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDFlatButton.h>
#include <VXKit/controls/LTHUDRadioButton.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/hud/LTHUDAlert.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/support/VXExceptionReporter.h>

#include <QCoreApplication>
#include <QString>

#include <cstdio>
#include <memory>
#include <utility>

namespace {

constexpr NSRect panelFrame{{300, 250}, {420, 300}};
constexpr double rowHeight = 34;
constexpr double columnWidth = 190;
constexpr double margin = 15;

void tell(const QString& line) {
    std::puts(qUtf8Printable(line));
    std::fflush(stdout);
}

/// The panel, with its controls in rows from the top and columns from the left.
class Panel {
public:
    Panel() : m_window(panelFrame, NSBorderlessWindowMask, NSBackingStoreBuffered, false) {
        m_window.setWindowTitle(QStringLiteral("Controls"));
        addButtons();
        addFields();
        m_window.makeKeyAndOrderFront(nullptr);
    }

private:
    [[nodiscard]] static NSRect place(int row, int column) {
        return NSMakeRect(margin + column * (columnWidth + margin), panelFrame.size.height - (row + 2) * rowHeight,
                          columnWidth, rowHeight - 6);
    }

    template <class Control>
    Control& add(int row, int column) {
        auto control = std::make_unique<Control>(place(row, column));
        ViewCore::of(m_window.contentView())->addSubview(control.get());
        return *control.release();
    }

    template <class Button>
    Button& addButton(const QString& title, int row, int column) {
        auto& button = add<Button>(row, column);
        button.setTitle(title);
        QObject::connect(&button, &QAbstractButton::clicked, &m_window,
                         [&button] { tell(QStringLiteral("pressed ") + button.displayTitle()); });
        // What a screen reader does to a button that can be checked is no click, in Qt.
        QObject::connect(&button, &QAbstractButton::toggled, &m_window, [&button](bool isOn) {
            tell(QStringLiteral("turned %1 %2").arg(button.displayTitle(), isOn ? u"on" : u"off"));
        });
        return button;
    }

    void addButtons() {
        addButton<LTHUDButton>(QStringLiteral("&Push"), 0, 0);
        addButton<LTHUDButton>(QStringLiteral("Unavailable"), 0, 1).setEnabled(false);
        addButton<LTHUDFlatButton>(QStringLiteral("Flat"), 1, 0);
        auto& ask = addButton<LTHUDButton>(QStringLiteral("Ask"), 1, 1);
        QObject::connect(&ask, &QAbstractButton::clicked, &m_window, [] { runAlert(); });
        addButton<LTHUDCheckBox>(QStringLiteral("Check"), 2, 0);
        auto& report = addButton<LTHUDButton>(QStringLiteral("Report"), 2, 1);
        QObject::connect(&report, &QAbstractButton::clicked, &m_window, [] {
            VXExceptionReporter::reporter().reportException(
                NSException("TestException", QStringLiteral("There is no such snippet")));
            tell(QStringLiteral("reported"));
        });
        addButton<LTHUDRadioButton>(QStringLiteral("Daily"), 3, 0).setState(NSOnState);
        addButton<LTHUDRadioButton>(QStringLiteral("Weekly"), 3, 1);
    }

    void addFields() {
        auto& field = add<LTHUDTextField>(4, 0);
        field.setAccessibleName(QStringLiteral("Name of the snippet"));
        field.setPlaceholderString(QStringLiteral("What it will be called"));
        QObject::connect(&field, &QLineEdit::textChanged, &m_window,
                         [](const QString& text) { tell(QStringLiteral("text ") + text); });
        auto& password = add<LTHUDSecureTextField>(4, 1);
        password.setAccessibleName(QStringLiteral("Password"));
        password.setStringValue(QStringLiteral("sesame"));
        auto& label = add<NSTextField>(5, 0);
        label.setTextColor(NSColor::whiteColor());
        label.setStringValue(QStringLiteral("A text that can be selected"));
        label.setSelectable(true);
    }

    static void runAlert() {
        const auto alert = LTHUDAlert::alertWithMessageText(
            QStringLiteral("Remove “Address”?"), QStringLiteral("&Remove"), QStringLiteral("Cancel"),
            QStringLiteral("Do not ask again"), QStringLiteral("It cannot be brought back."));
        alert->setOtherButtonIsDontShowAgain(true);
        const int answer = alert->runModal();
        tell(QStringLiteral("answer %1, not again %2")
                 .arg(answer)
                 .arg(static_cast<int>(alert->dontShowAgainIsChecked())));
    }

    LTHUDWindow m_window;
};

} // namespace

int main(int argc, char** argv) {
    NSApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("controls-program"));
    const Panel panel;
    return application.run();
}
