// SPDX-License-Identifier: MIT
#pragma once

#include "../ModalRun.h"
#include "SnippetsHost.h"

#include <MessageBar.h>
#include <SnippetTextEdit.h>
#include <SnippetsFooter.h>
#include <SnippetsListModel.h>
#include <SnippetsListView.h>
#include <SnippetsWindow.h>

#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/NSPasteboard+VXKitAdditions.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

/// The example host's window with three snippets, shown and with the keyboard, and a person at it.
class SnippetsWindowHost : public SnippetsHost {
protected:
    void SetUp() override {
        setAsks(false);
        add(1.0, "Oldest", "oldest text");
        add(2.0, "Middle", "middle text");
        add(3.0, "Newest", "newest text");
        window = std::make_unique<SnippetsWindow>(database);
        show();
    }

    static void setAsks(bool asks) {
        NSUserDefaults::standardUserDefaults().setBool(!asks, "SnippetsRemoveWithoutAsking");
    }

    void show() {
        window->makeKeyAndOrderFront(nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }

    /// Through the window, as the user's keys come, to whatever has the focus.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }
    void type(const char* text) {
        for (; *text; ++text) {
            QTest::keyClick(window->windowHandle(), *text);
        }
    }

    void pressInSheet(Qt::Key key) {
        NSWindow* const sheet = application.modalWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(sheet));
        QTest::keyClick(sheet->windowHandle(), key);
    }
    /// Answers the next question with a key.
    void whenAsked(Qt::Key answer) {
        whenNextModalRunHasBegun(application, [this, answer] {
            ++questions;
            pressInSheet(answer);
        });
    }

    static void setClipboard(const char* text) {
        NSPasteboard::generalPasteboard().clearContents();
        NSPasteboard::generalPasteboard().setString(QString::fromUtf8(text), QString::fromLatin1(NSStringPboardType));
    }
    static QString clipboard() { return stringValue(NSPasteboard::generalPasteboard()); }

    std::string selectedTitle() const {
        const std::shared_ptr<Snippet> selected = window->selectedSnippet();
        return selected ? selected->title().toStdString() : "nothing";
    }

    QLineEdit* search() const { return window->findChild<QLineEdit*>(); }
    SnippetsListView* list() const { return dynamic_cast<SnippetsListView*>(window->findChild<QTableView*>()); }
    MessageBar* undoBar() const { return window->findChild<MessageBar*>(QStringLiteral("undoBar")); }
    /// The pop-up is the one window that takes no mouse.
    static bool isCopyPopUpShown() {
        const std::vector<NSWindow*> windows = NSWindow::windows();
        return std::any_of(windows.begin(), windows.end(),
                           [](const NSWindow* each) { return each->ignoresMouseEvents() && each->isVisible(); });
    }
    template <class View>
    View* view() const {
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            if (auto* const found = dynamic_cast<View*>(widget)) {
                return found;
            }
        }
        return nullptr;
    }
    /// Drags from the middle of a view with the left button, in steps, as a hand does.
    void drag(QWidget& from, QPoint way) {
        const QPoint start = from.mapTo(window.get(), from.rect().center());
        QWindow* const handle = window->windowHandle();
        // The window moves under the pointer, which is where it is on the screen.
        const QPoint begin = handle->mapToGlobal(start);
        const auto at = [&](QPoint global) { return handle->mapFromGlobal(global); };
        QTest::mousePress(handle, Qt::LeftButton, {}, at(begin));
        constexpr int steps = 4;
        for (int step = 1; step <= steps; ++step) {
            QTest::mouseMove(handle, at(begin + way * step / steps));
        }
        QTest::mouseRelease(handle, Qt::LeftButton, {}, at(begin + way));
    }
    QPushButton* button(const char* title) const {
        for (QPushButton* candidate : window->findChildren<QPushButton*>()) {
            if (candidate->text() == QString::fromUtf8(title)) {
                return candidate;
            }
        }
        return nullptr;
    }
    QString previewedText() const {
        return window->findChild<QPlainTextEdit*>(QStringLiteral("preview"))->toPlainText();
    }
    int totalCount() const { return window->model().totalCount(); }

    std::unique_ptr<SnippetsWindow> window;
    int questions = 0;
};
