// SPDX-License-Identifier: MIT
#pragma once

#include <QFrame>

class ElidedLabel;
class LTHUDProgressIndicator;
class QPushButton;
struct SnippetImportProgress;

/// Tells how far an import is, on a strip inside a window, with a button that stops it. Hidden until there is one.
///
///     ◔  Importing: 120 of 340                        Stop
class ImportBar : public QFrame {
    Q_OBJECT

public:
    explicit ImportBar(QWidget* parent = nullptr);

    void showProgress(const SnippetImportProgress& progress);
    /// Hides the bar, until the next import.
    void end();

    [[nodiscard]] QString text() const;
    [[nodiscard]] LTHUDProgressIndicator& indicator() const { return *m_indicator; }

Q_SIGNALS:
    void asksToStop();

private:
    LTHUDProgressIndicator* m_indicator;
    ElidedLabel* m_text;
    QPushButton* m_stop;
};
