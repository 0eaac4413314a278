// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/app/LTWindow.h>
#include <VXKit/platform/appkit/NSNib.h>

class QKeyEvent;
class QLabel;
class QPushButton;

/// The back of the main window: what the program is.
///
///                            ▲
///     ╭──────────────────────┘└──────╮
///     │             (symbol)         │
///     │             Snippets         │
///     │            Version 0.1       │
///     │   Keeps pieces of text …     │
///     │                      [Back]  │
///     ╰──────────────────────────────╯
class AboutWindow : public LTWindow, private NSNibOwner {
    Q_OBJECT

public:
    /// Of the same size as the window that it is the back of.
    explicit AboutWindow(const NSSize& size);

    using LTWindow::awakeFromNib; // the window's, of the two

Q_SIGNALS:
    /// The user has seen enough.
    void done();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void connectNib(NSNibConnections& nib) override;

    QLabel* m_symbol = nullptr;
    QLabel* m_nameField = nullptr;
    QLabel* m_versionField = nullptr;
    QPushButton* m_backButton = nullptr;
};
