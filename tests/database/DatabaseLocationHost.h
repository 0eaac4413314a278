// SPDX-License-Identifier: MIT
// What the tests of the store's place share.
#pragma once

#include "../FileDialog.h"
#include "TestRecords.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QTemporaryDir>

#include <set>
#include <stdexcept>

#include <gtest/gtest.h>

/// What happened, in order.
inline std::vector<std::string>& log() {
    static std::vector<std::string> lines;
    return lines;
}

inline std::string nameOf(const QString& path) {
    return QFileInfo(path).fileName().toStdString();
}

/// What the user-defaults file holds on the disk at this moment.
inline std::string choiceOnDisk() {
    const NSDictionary file = NSDictionary::dictionaryWithContentsOfFile(NSUserDefaults::standardUserDefaults().path())
                                  .value_or(NSDictionary());
    const bool* usesCustom = file.objectOfType<bool>("UsesCustomDB");
    const auto* path = file.objectOfType<std::string>("CustomDBFilePath");
    return std::string(!usesCustom   ? "nothing"
                       : *usesCustom ? "custom"
                                     : "default") +
           ", " + (path ? nameOf(QString::fromStdString(*path)) : "no path");
}

/// A sync manager that writes down what it is told, and what it finds then.
class RecordingSyncManager : public SwitchedSyncManager {
public:
    void enableSyncing() override { log().emplace_back("enable syncing: " + choiceOnDisk()); }
    void disableSyncing() override {
        log().emplace_back("disable syncing" + std::string(LTDatabase::isLoading() ? " while loading" : ""));
        if (asksForTheStore) {
            found = LTDatabase::sharedDB();
        }
    }

    bool asksForTheStore = false;
    std::shared_ptr<LTDatabase> found;
};

class RecordingApplication : public LTApplication {
public:
    RecordingApplication() : LTApplication(s_argc, s_argv) {}
    LTSyncManagerClass* syncManagerClass() const override { return const_cast<RecordingSyncManager*>(&syncManager); }

    RecordingSyncManager syncManager;

private:
    static inline char s_name[] = "vxkit-test";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;
};

/// A store that writes down when it is loaded and what the user defaults hold on the disk then, and that cannot be
/// made on files whose names are in `broken`.
class Diary : public NotesDatabase {
public:
    using NotesDatabase::databaseFileName;

    void saveDB() override {
        log().emplace_back("save " + nameOf(_path));
        NotesDatabase::saveDB();
    }

    static inline std::set<std::string> broken;
    static inline bool throwsAnything = false;
    static inline std::function<void()> whenLoading;

protected:
    QString databaseName() const override { return QStringLiteral("My %@ Diary"); }
    _LTSnippetClass snippetClass() const override { return _LTSnippetClass::of<Note>(); }
    QString databaseVersion() const override {
        if (_loads) {
            _loads = false;
            log().emplace_back("load " + nameOf(_path) + " (" + choiceOnDisk() + ")");
            if (whenLoading) {
                whenLoading();
            }
            if (broken.count(nameOf(_path)) > 0) {
                if (throwsAnything) {
                    throw 42;
                }
                throw std::runtime_error("a torn page");
            }
        }
        return NotesDatabase::databaseVersion();
    }

private:
    mutable bool _loads = true; // asked for the first time
};

/// The texts and the titles of the alert's visible views, from the top and from the right.
inline std::string textOfAlert(const LTHUDWindow& window) {
    std::string text;
    for (QWidget* view : ViewCore::of(window.contentView())->subviews()) {
        if (view->isHidden()) {
            continue;
        }
        if (const auto* field = dynamic_cast<const NSTextField*>(view)) {
            text += field->stringValue().toStdString() + "\n";
        } else if (const auto* button = dynamic_cast<const LTHUDButton*>(view)) {
            text += "[" + button->title().toStdString() + "]";
        }
    }
    return text;
}

inline constexpr const char* chooseAlert =
    "Choose My %@ Diary database.\n"
    "My %@ Diary needs to store its information somewhere. Choosing a different database will turn off MobileMe "
    "syncing.\n"
    "[Choose Database...][Quit][Create Database...]";
inline constexpr const char* missingAlert = "Custom database wasn't found or is corrupted!\n"
                                            "My %@ Diary will use the default DB instead.\n"
                                            "[OK]";
inline constexpr const char* unusableAlert = "Could not open database!\n"
                                             "My %@ Diary will use the default DB instead.\n"
                                             "[OK]";

class DatabaseLocation : public testing::Test {
protected:
    DatabaseLocation() {
        defaults.setBool(true, "VXDBAutomaticSavingDisabled");
        // Keys that are held are known from events here, and those go to a window.
        keyboard.setGeometry(0, 0, 50, 50);
    }

    ~DatabaseLocation() override {
        log().clear();
        Diary::broken.clear();
        Diary::throwsAnything = false;
        Diary::whenLoading = nullptr;
    }

    void hold(Qt::KeyboardModifiers modifiers) {
        keyboard.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&keyboard));
        QTest::keyPress(keyboard.windowHandle(), Qt::Key_F5, modifiers);
        keyboard.hide();
    }

    void holdOption() { hold(Qt::AltModifier); }

    /// Does `act` with the next alert, when it can be answered, after writing its text down.
    void whenAlertAsks(const std::function<void(LTHUDWindow&)>& act) {
        steps.add(
            [this] {
                auto* const window = dynamic_cast<LTHUDWindow*>(application.modalWindow());
                return window && window != answered && window->isVisible() && window->isKeyWindow();
            },
            [this, act] {
                auto& window = dynamic_cast<LTHUDWindow&>(*application.modalWindow());
                answered = &window;
                log().push_back(textOfAlert(window));
                act(window);
            });
    }

    void answerAlert(Qt::Key key) {
        whenAlertAsks([key](LTHUDWindow& window) { QTest::keyClick(window.windowHandle(), key); });
    }

    /// Clicks the button with this title.
    void answerAlert(const QString& title) {
        whenAlertAsks([title](LTHUDWindow& window) {
            for (QWidget* view : ViewCore::of(window.contentView())->subviews()) {
                if (const auto* button = dynamic_cast<LTHUDButton*>(view); button && button->title() == title) {
                    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {},
                                      view->mapTo(&window, view->rect().center()));
                    return;
                }
            }
            ADD_FAILURE() << "no button " << title.toStdString();
        });
    }

    /// Types `name` into the open or save panel.
    void answerPanel(const QString& name) {
        steps.addForFileDialog([name](QFileDialog& dialog) { enterName(dialog, name); });
    }

    void cancelPanel() {
        steps.addForFileDialog([](QFileDialog& dialog) { QTest::keyClick(dialog.windowHandle(), Qt::Key_Escape); });
    }

    /// Writes a database with one record, and answers its path.
    [[nodiscard]] QString makeFile(const QString& name) const {
        const QString path = folder.filePath(name);
        const NSDictionary file{{"DBVersion", "0.1"}, {"contents", NSArray{NSDictionary{{"name", name}}}}};
        EXPECT_TRUE(file.writeToFile(path, true));
        return path;
    }

    void chooseBefore(const QString& path) {
        defaults.setBool(true, "UsesCustomDB");
        defaults.setObject(path, "CustomDBFilePath");
        EXPECT_TRUE(defaults.synchronize());
    }

    [[nodiscard]] static QString defaultPath() {
        return QDir::homePath() + QStringLiteral("/Library/Preferences/DB.plist");
    }

    /// The file of the shared store.
    [[nodiscard]] static QString path() { return std::static_pointer_cast<Diary>(LTDatabase::sharedDB())->_path; }

    [[nodiscard]] std::string choice() const {
        const std::optional<NSPropertyList> usesCustom = defaults.objectForKey("UsesCustomDB");
        const std::string kind = !usesCustom ? "nothing" : usesCustom->boolValue() ? "custom" : "default";
        return kind + ", " + defaults.stringForKey("CustomDBFilePath").toStdString();
    }

    RecordingApplication application;
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    const AnimationDurationsForTesting none{0};
    QTemporaryDir folder;
    QWidget keyboard;
    QPointer<LTHUDWindow> answered;
    Steps steps;
};
