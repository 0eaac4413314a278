// SPDX-License-Identifier: MIT
// The choice of the place of a database on a real X server, made with a keyboard. The test is the application that asks
// for its database; what it does not do itself is done from outside.
#include "../ExitInTheMiddle.h"
#include "../FileDialog.h"
#include "../ServerFocus.h"
#include "../database/TestRecords.h"
#include "Desktop.h"

#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/KeyModifiers.h>
#include <VXKit/platform/appkit/NSOpenPanel.h>
#include <VXKit/platform/appkit/NSSavePanel.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QTemporaryDir>

#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

namespace {

/// A key that is held down while this lives.
class HeldKey {
public:
    explicit HeldKey(const char* key) : m_key(QString::fromLatin1(key)) { xdotool({QStringLiteral("keydown"), m_key}); }
    ~HeldKey() { release(); }
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

    void release() {
        if (!m_key.isEmpty()) {
            xdotool({QStringLiteral("keyup"), std::exchange(m_key, QString())});
        }
    }

private:
    QString m_key;
};

class DatabaseOnDesktop : public testing::Test {
protected:
    DatabaseOnDesktop() { NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled"); }

    // With it goes the shared store, so that the next test begins without one.
    ~DatabaseOnDesktop() override { application.terminate(nullptr); }

    /// Does `act` as soon as `window` answers one that has the keyboard.
    void whenThere(const std::function<QWidget*()>& window, const std::function<void(QWidget&)>& act) {
        steps.add(
            [window] {
                const QWidget* found = window();
                return found && found->isVisible() && found->isActiveWindow() && hasServerFocus(*found);
            },
            [window, act] { act(*window()); });
    }

    void whenAlertIsThere(const std::function<void(QWidget&)>& act) {
        whenThere([this] { return dynamic_cast<LTHUDWindow*>(application.modalWindow()); }, act);
    }

    void whenFileDialogIsThere(const std::function<void(QWidget&)>& act) {
        whenThere([] { return dynamic_cast<QFileDialog*>(QApplication::activeModalWidget()); }, act);
    }

    static void enter(const QString& text) {
        xdotool({QStringLiteral("key"), QStringLiteral("ctrl+a")});
        xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), text});
        QTest::qWait(300); // what the dialog suggests comes when it has looked into the folder
        if (QApplication::activePopupWidget()) {
            pressKey("Escape");
            EXPECT_TRUE(waitFor([] { return !QApplication::activePopupWidget(); }));
        }
        pressKey("Return");
    }

    [[nodiscard]] static QString path(const LTDatabase& store) {
        return static_cast<const NotesDatabase&>(store)._path;
    }

    TestApplication application;
    QTemporaryDir folder;
    Steps steps;
};

} // namespace

TEST_F(DatabaseOnDesktop, AsksTheServerForTheKeysThatAreHeld) {
    EXPECT_EQ(GetCurrentKeyModifiers(), 0U) << "and no window has been there to get an event";
    const std::vector<std::pair<const char*, std::uint32_t>> keys = {{"Alt_L", optionKey},
                                                                     {"Alt_R", optionKey},
                                                                     {"Control_L", cmdKey},
                                                                     {"Shift_L", shiftKey},
                                                                     {"Super_L", controlKey}};
    for (const auto& [key, bit] : keys) {
        HeldKey held(key);
        EXPECT_EQ(GetCurrentKeyModifiers(), bit) << key;
        held.release();
        EXPECT_EQ(GetCurrentKeyModifiers(), 0U) << key;
    }
    pressKey("Caps_Lock");
    EXPECT_EQ(GetCurrentKeyModifiers(), alphaLock);
    pressKey("Caps_Lock");
    EXPECT_EQ(GetCurrentKeyModifiers(), 0U);
}

TEST_F(DatabaseOnDesktop, IsChosenByTheKeyboardAlone) {
    const QString own = folder.filePath(QStringLiteral("own.plist"));
    const NSDictionary file{{"DBVersion", "0.1"}, {"contents", NSArray{NSDictionary{{"name", "kept"}}}}};
    ASSERT_TRUE(file.writeToFile(own, true));
    HeldKey option("alt");
    whenAlertIsThere([&](QWidget&) {
        keepPicture("database-alert");
        option.release();
        pressKey("Return");
    });
    whenFileDialogIsThere([&](QWidget&) {
        EXPECT_TRUE(dynamic_cast<NSOpenPanel*>(application.modalWindow()));
        keepPicture("database-open");
        enter(own);
    });
    const auto store = LTDatabase::sharedDB<NotesDatabase>();
    EXPECT_EQ(path(*store), own);
    ASSERT_EQ(store->snippets().count(), 1U);
    EXPECT_EQ(store->snippets()[0]->title(), QStringLiteral("kept"));
}

TEST_F(DatabaseOnDesktop, IsCreatedByTheKeyboardAlone) {
    HeldKey option("alt");
    whenAlertIsThere([&](QWidget& alert) {
        option.release();
        const auto hasFocus = [&alert](const QString& title) {
            const auto* button = qobject_cast<QAbstractButton*>(alert.focusWidget());
            return button && button->text().remove(u'&') == title;
        };
        for (int tab = 0; tab < 5 && !hasFocus(QStringLiteral("Create Database...")); ++tab) {
            QWidget* const before = alert.focusWidget();
            pressKey("Tab");
            EXPECT_TRUE(waitFor([&] { return alert.focusWidget() != before; }));
        }
        pressKey("space");
    });
    whenFileDialogIsThere([&](QWidget&) {
        keepPicture("database-save");
        enter(folder.filePath(QStringLiteral("created")));
    });
    const auto store = LTDatabase::sharedDB<NotesDatabase>();
    EXPECT_EQ(path(*store), folder.filePath(QStringLiteral("created.plist")));
}

TEST_F(DatabaseOnDesktop, QuitsByTheKeyboard) {
    expectExitInTheMiddle();
    EXPECT_EXIT(
        {
            // The process that ends here leaves nothing behind.
            folder.remove();
            std::atexit([] { QDir(QDir::homePath()).removeRecursively(); });
            HeldKey option("alt");
            whenAlertIsThere([&](QWidget&) {
                option.release();
                pressKey("Escape");
            });
            LTDatabase::sharedDB<NotesDatabase>();
            std::_Exit(1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(DatabaseOnDesktop, AskingStandsAboveAWindowThatPassesTheManagerByAndGivesTheKeyboardBack) {
    class Host : public NSWindow {
    public:
        using NSWindow::NSWindow;
        bool canBecomeKeyWindow() const override { return true; }
    };
    Host host(NSMakeRect(100, 100, 1000, 600), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    host.setBackgroundColor(NSColor::colorWithCalibratedRed(0.9, 0.1, 0.1, 1));
    host.setManagement(NSWindowManagement::Bypassing);
    host.setLevel(CGWindowLevelForKey(kCGModalPanelWindowLevelKey));
    host.makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(waitFor([&] { return host.isKeyWindow(); }));
    whenFileDialogIsThere([](QWidget& dialog) {
        EXPECT_TRUE(waitFor([&] {
            const QColor seen(pictureOfScreen().pixel(dialog.mapToGlobal(QPoint(5, dialog.height() - 5))));
            return seen.green() > 100;
        })) << "it is covered";
        keepPicture("panel-above");
        pressKey("Escape");
    });
    NSSavePanel panel;
    EXPECT_EQ(panel.runModal(), NSFileHandlingPanelCancelButton);
    EXPECT_TRUE(waitFor([&] { return host.isKeyWindow() && hasServerFocus(host); }));
}
