// SPDX-License-Identifier: MIT
// Qt's own file dialog, which stands for the platform's where there is none, used by its window's keys.
#pragma once

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <deque>
#include <functional>
#include <utility>

#include <gtest/gtest.h>

/// The dialog of this class that is open with nothing in front of it, or null.
template <class Dialog>
Dialog* openDialog() {
    auto* const dialog = dynamic_cast<Dialog*>(QApplication::activeModalWidget());
    return dialog && dialog->isVisible() && dialog->windowHandle()->isExposed() ? dialog : nullptr;
}

/// Puts `text` in the place of what stands in the dialog's name field.
inline void typeName(QFileDialog& dialog, const QString& text) {
    // What the field suggests would take the Return, and may come at any time after the last letter.
    for (QLineEdit* field : dialog.findChildren<QLineEdit*>()) {
        field->setCompleter(nullptr);
    }
    QTest::keyClick(dialog.windowHandle(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Delete);
    for (const QChar character : text) {
        QTest::keyClick(dialog.windowHandle(), character.toLatin1());
    }
}

/// The name and Return.
inline void enterName(QFileDialog& dialog, const QString& text) {
    typeName(dialog, text);
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
}

/// What a person does while somebody waits for an answer: one step after another, each as soon as what it needs is
/// there. A step may open a dialog that the next one answers.
class Steps : public QObject {
public:
    ~Steps() override { EXPECT_TRUE(m_steps.empty()) << m_steps.size() << " steps were never come to"; }

    /// Does `act` when `isReady`.
    void add(std::function<bool()> isReady, std::function<void()> act) {
        m_steps.push_back({std::move(isReady), std::move(act)});
        if (m_steps.size() == 1) {
            lookLater();
        }
    }

    /// Does `act` with the file dialog, when it is open.
    void addForFileDialog(const std::function<void(QFileDialog&)>& act) {
        add([] { return openDialog<QFileDialog>() != nullptr; }, [act] { act(*openDialog<QFileDialog>()); });
    }

    /// The same with a question that it asks.
    void addForQuestion(const std::function<void(QMessageBox&)>& act) {
        add([] { return openDialog<QMessageBox>() != nullptr; }, [act] { act(*openDialog<QMessageBox>()); });
    }

private:
    struct Step {
        std::function<bool()> isReady;
        std::function<void()> act;
    };

    /// Whether the latest step is done, or has opened what the next one is for.
    [[nodiscard]] bool hasMovedOn() const { return !m_isActing || QApplication::activeModalWidget() != m_actedOn; }

    // Each time with a timer of its own: one does not fire while what it called still runs an event loop.
    void lookLater() {
        QTimer::singleShot(1, this, [this] {
            if (!hasMovedOn() || !m_steps.front().isReady()) {
                lookLater();
                return;
            }
            const Step step = std::move(m_steps.front());
            m_steps.pop_front();
            if (!m_steps.empty()) {
                lookLater();
            }
            m_isActing = true;
            m_actedOn = QApplication::activeModalWidget();
            step.act();
            m_isActing = false;
        });
    }

    std::deque<Step> m_steps;
    bool m_isActing = false;
    QPointer<QWidget> m_actedOn;
};
