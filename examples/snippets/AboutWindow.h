// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/app/LTWindow.h>

class QKeyEvent;

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
class AboutWindow : public LTWindow {
    Q_OBJECT

public:
    /// Of the same size as the window that it is the back of.
    explicit AboutWindow(const NSSize& size);

Q_SIGNALS:
    /// The user has seen enough.
    void done();

protected:
    void keyPressEvent(QKeyEvent* event) override;
};
