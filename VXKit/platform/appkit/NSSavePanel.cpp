// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSSavePanel.h>

#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/desktop/WindowEffects.h>

#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPointer>
#include <QWindow>

#include <utility>

namespace {

constexpr NSRect nowhere{{0, 0}, {1, 1}};

/// Gives the keyboard to `window`, where that is still there to take it.
void giveKeyboardBack(QWidget* window) {
    if (!window || !window->isVisible()) {
        return;
    }
    if (auto* ours = qobject_cast<NSWindow*>(window)) {
        ours->makeKeyWindow();
    } else {
        window->activateWindow();
    }
}

} // namespace

/// The dialog of one run: one that closes only with an answer that the panel takes.
class NSSavePanel::Dialog : public QFileDialog {
public:
    explicit Dialog(const NSSavePanel& panel) : m_panel(panel) {
        setAttribute(Qt::WA_QuitOnClose, false);
        setWindowModality(Qt::ApplicationModal);
        // As AppKit's, at the level of the modal panel: the kit's alerts are there too, and may have led to this.
        setWindowFlag(Qt::WindowStaysOnTopHint);
    }

    /// Whether the platform shows a dialog of its own in the place of this one.
    [[nodiscard]] bool isThePlatforms() const { return testAttribute(Qt::WA_DontShowOnScreen); }

    [[nodiscard]] QString chosenPath() const { return selectedFiles().value(0); }

    void accept() override {
        const QString chosen = chosenPath();
        // The platform's has closed by now, and a folder is entered.
        if (!isThePlatforms() && !chosen.isEmpty() && !QFileInfo(chosen).isDir()) {
            const QString taken = m_panel.pathForChosen(chosen);
            if (taken.isEmpty()) {
                NSBeep();
                return;
            }
            if (taken != chosen) {
                // So that Qt asks about the file that it is going to be.
                putName(taken);
            }
        }
        QFileDialog::accept();
    }

    void showInFront() {
        show();
        if (isThePlatforms()) {
            return;
        }
        windowHandle()->installEventFilter(this);
        raise();
        WindowEffects::sharedEffects().takeKeyboard(*this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == windowHandle() && event->type() == QEvent::Expose && windowHandle()->isExposed() &&
            !std::exchange(m_isInFront, true)) {
            putBypassingWindowsBelow();
        }
        return QFileDialog::eventFilter(watched, event);
    }

private:
    /// Qt leaves the name alone while it is being typed.
    void putName(const QString& path) {
        const QPointer<QWidget> typedIn(focusWidget());
        if (typedIn) {
            typedIn->clearFocus();
        }
        selectFile(path);
        if (typedIn) {
            typedIn->setFocus();
        }
    }

    /// A window manager leaves the windows that pass it by above all of its own.
    void putBypassingWindowsBelow() {
        for (NSWindow* window : NSWindow::windows()) {
            if (window->management() == NSWindowManagement::Bypassing && window->isVisible() &&
                window->level() <= NSModalPanelWindowLevel) {
                WindowEffects::sharedEffects().order(*window, WindowEffects::Place::Below, this);
            }
        }
    }

    const NSSavePanel& m_panel;
    bool m_isInFront = false;
};

NSSavePanel::NSSavePanel() : NSWindow(nowhere, NSTitledWindowMask, NSBackingStoreBuffered, true) {
    setLevel(NSModalPanelWindowLevel);
    setWindowModality(Qt::ApplicationModal);
}

NSSavePanel::~NSSavePanel() = default;

std::unique_ptr<NSSavePanel> NSSavePanel::savePanel() {
    return std::make_unique<NSSavePanel>();
}

void NSSavePanel::setRequiredFileType(const QString& type) {
    m_requiredFileType = withoutLeadingDot(type);
}

QString NSSavePanel::withoutLeadingDot(const QString& type) {
    return type.startsWith(u'.') ? type.mid(1) : type;
}

bool NSSavePanel::hasFileType(const QString& path, const QString& type) {
    return path.endsWith(u'.' + type, Qt::CaseInsensitive);
}

void NSSavePanel::prepareDialog(QFileDialog& dialog) const {
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    if (!m_requiredFileType.isEmpty()) {
        dialog.setDefaultSuffix(m_requiredFileType);
        dialog.setNameFilter(QStringLiteral("*.") + m_requiredFileType);
    }
}

QString NSSavePanel::pathForChosen(const QString& path) const {
    const bool isComplete = m_requiredFileType.isEmpty() || hasFileType(path, m_requiredFileType);
    return isComplete ? path : path + u'.' + m_requiredFileType;
}

int NSSavePanel::runModalForDirectory(const QString& path, const QString& file) {
    m_filename.clear();
    if (m_dialog) {
        // Asked for by what happens while it asks.
        return NSFileHandlingPanelCancelButton;
    }
    const QPointer<NSSavePanel> self(this);
    m_dialog = std::make_unique<Dialog>(*this);
    prepareDialog(*m_dialog);
    if (!windowTitle().isEmpty()) {
        m_dialog->setWindowTitle(windowTitle());
    }
    m_dialog->setDirectory(path.isEmpty() ? QDir::homePath() : path);
    if (!file.isEmpty()) {
        m_dialog->selectFile(file);
    }
    const QPointer<QWidget> keyBefore(QApplication::activeWindow());
    int answer = runOnce();
    while (self && answer == NSFileHandlingPanelOKButton) {
        const QString chosen = m_dialog->chosenPath();
        m_filename = pathForChosen(chosen);
        if (!m_filename.isEmpty() && (m_filename == chosen || !QFileInfo::exists(m_filename))) {
            break;
        }
        // The platform's dialog let pass what ours would not: a file of another type, or a name that with its extension
        // is that of a file nobody agreed to replace.
        NSBeep();
        if (!m_filename.isEmpty()) {
            m_dialog->selectFile(m_filename);
            m_filename.clear();
        }
        answer = runOnce();
    }
    if (!self) {
        return NSFileHandlingPanelCancelButton;
    }
    m_dialog.reset();
    if (QGuiApplication::applicationState() == Qt::ApplicationActive) {
        giveKeyboardBack(keyBefore);
    }
    return answer;
}

/// Shows the dialog until the person has answered it, with whatever.
int NSSavePanel::runOnce() {
    NSApplication* const application = NSApplication::sharedApplication();
    if (!application) {
        return m_dialog->exec() == QDialog::Accepted ? NSFileHandlingPanelOKButton : NSFileHandlingPanelCancelButton;
    }
    const QPointer<NSSavePanel> self(this);
    int answer = NSFileHandlingPanelCancelButton;
    const auto finished = connect(m_dialog.get(), &QDialog::finished, this, [this, application, &answer](int result) {
        answer = result == QDialog::Accepted ? NSFileHandlingPanelOKButton : NSFileHandlingPanelCancelButton;
        application->abortModalForWindow(*this);
    });
    application->runModalForWindow(*this);
    if (self) {
        disconnect(finished);
        // Where the run was ended from outside, it is still there.
        m_dialog->hide();
    }
    return answer;
}

void NSSavePanel::orderWindow(NSWindowOrderingMode place, int /*otherWindowNumber*/) {
    if (!m_dialog) {
        return;
    }
    if (place == NSWindowOut) {
        m_dialog->reject();
    } else {
        m_dialog->showInFront();
    }
}
