// SPDX-License-Identifier: MIT
#include "../ExitInTheMiddle.h"
#include "../FileDialog.h"
#include "TestRecords.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSOpenPanel.h>
#include <VXKit/platform/appkit/NSSavePanel.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <stdexcept>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

/// What happened, in order.
std::vector<std::string>& log() {
    static std::vector<std::string> lines;
    return lines;
}

std::string nameOf(const QString& path) {
    return QFileInfo(path).fileName().toStdString();
}

/// What the user-defaults file holds on the disk at this moment.
std::string choiceOnDisk() {
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
std::string textOfAlert(const LTHUDWindow& window) {
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

constexpr const char* chooseAlert =
    "Choose My %@ Diary database.\n"
    "My %@ Diary needs to store its information somewhere. Choosing a different database will turn off MobileMe "
    "syncing.\n"
    "[Choose Database...][Quit][Create Database...]";
constexpr const char* missingAlert = "Custom database wasn't found or is corrupted!\n"
                                     "My %@ Diary will use the default DB instead.\n"
                                     "[OK]";
constexpr const char* unusableAlert = "Could not open database!\n"
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

/// The process ends by these: each test starts the test program again.
class DatabaseLocationExit : public DatabaseLocation {
protected:
    DatabaseLocationExit() { expectExitInTheMiddle(); }

    /// Asks for the shared store as a host does, and tells on the way out what was chosen.
    void startHost() {
        // The process that ends here leaves nothing behind.
        folder.remove();
        log(); // is there before what reads it at the end
        std::atexit([] {
            for (const std::string& line : log()) {
                std::fprintf(stderr, "log: %s\n", line.c_str());
            }
            std::fprintf(stderr, "chosen: %s; loading: %d\n", choiceOnDisk().c_str(), LTDatabase::isLoading() ? 1 : 0);
            QDir(QDir::homePath()).removeRecursively();
        });
        LTDatabase::sharedDB<Diary>();
        std::fprintf(stderr, "the host goes on\n");
        std::_Exit(1);
    }
};

} // namespace

TEST_F(DatabaseLocation, IsTheDefaultFileAndLeavesSyncingAloneWhereNothingWasChosen) {
    EXPECT_FALSE(LTDatabase::isLoading());
    const auto store = LTDatabase::sharedDB<Diary>();
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "nothing, ");
    EXPECT_THAT(log(), ElementsAre("load DB.plist (nothing, no path)"));
    EXPECT_TRUE(QFileInfo(QFileInfo(defaultPath()).path()).isDir());
}

TEST_F(DatabaseLocation, IsTheDefaultFileWhereAChoiceWasTakenBack) {
    defaults.setBool(false, "UsesCustomDB");
    defaults.setObject(makeFile(QStringLiteral("own.plist")), "CustomDBFilePath");
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
}

TEST_F(DatabaseLocation, IsTheFileChosenBeforeWithSyncingTurnedOffOnce) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    chooseBefore(own);
    application.syncManager.asksForTheStore = true;
    const auto store = LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), own);
    EXPECT_EQ(store->snippets()[0]->title(), QStringLiteral("own.plist"));
    EXPECT_THAT(log(), ElementsAre("load own.plist (custom, own.plist)", "disable syncing while loading"));
    EXPECT_EQ(application.syncManager.found, store) << "the sync manager may ask for it";
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_FALSE(QFileInfo::exists(defaultPath()));
}

TEST_F(DatabaseLocation, TakesAChosenFileThatCannotBeReadForAnEmptyDatabase) {
    const QString own = folder.filePath(QStringLiteral("own.plist"));
    QFile file(own);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no property list");
    file.close();
    chooseBefore(own);
    const auto store = LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), own);
    EXPECT_TRUE(store->snippets().isEmpty());
    EXPECT_THAT(log(), ElementsAre("disable syncing while loading"));
}

TEST_F(DatabaseLocation, TellsOfAChosenFileThatIsGoneAndTakesTheDefaultThisTime) {
    const QString gone = folder.filePath(QStringLiteral("gone.plist"));
    chooseBefore(gone);
    whenAlertAsks([](LTHUDWindow& window) {
        EXPECT_TRUE(LTDatabase::isLoading());
        QTest::keyClick(window.windowHandle(), Qt::Key_Return);
    });
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "custom, " + gone.toStdString());
    EXPECT_THAT(log(), ElementsAre(missingAlert, "load DB.plist (custom, gone.plist)"));
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_FALSE(QFileInfo::exists(gone));
}

TEST_F(DatabaseLocation, TellsOfAChoiceWithoutAPath) {
    defaults.setBool(true, "UsesCustomDB");
    answerAlert(QStringLiteral("OK"));
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "custom, ");
    EXPECT_EQ(log().front(), missingAlert);
    EXPECT_THAT(log(), Not(testing::Contains(HasSubstr("syncing while"))));
}

TEST_F(DatabaseLocation, TellsOfAChosenFileThatGivesNoDatabaseAndLeavesItAsItIs) {
    for (const bool anything : {false, true}) {
        const QString own = makeFile(QStringLiteral("own.plist"));
        QFile file(own);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray before = file.readAll();
        file.close();
        chooseBefore(own);
        Diary::broken = {"own.plist"};
        Diary::throwsAnything = anything;
        answerAlert(Qt::Key_Return);
        testing::internal::CaptureStderr();
        LTDatabase::sharedDB<Diary>();
        const std::string written = testing::internal::GetCapturedStderr();
        EXPECT_THAT(written, HasSubstr(own.toStdString()));
        EXPECT_EQ(written.find("a torn page") == std::string::npos, anything);
        EXPECT_EQ(path(), defaultPath());
        EXPECT_EQ(choice(), "custom, " + own.toStdString());
        EXPECT_THAT(
            log(), ElementsAre("load own.plist (custom, own.plist)", missingAlert, "load DB.plist (custom, own.plist)"))
            << "and nothing saves the half of it";
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), before);
        file.close();
        // It is another launch, as far as this goes.
        NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification, nullptr);
        log().clear();
    }
}

TEST_F(DatabaseLocation, ADiscardedStoreHearsNoMoreOfTheApplication) {
    chooseBefore(makeFile(QStringLiteral("own.plist")));
    Diary::broken = {"own.plist"};
    answerAlert(Qt::Key_Return);
    const auto store = LTDatabase::sharedDB<Diary>();
    log().clear();
    NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification, nullptr);
    EXPECT_THAT(log(), ElementsAre("save DB.plist"));
}

TEST_F(DatabaseLocation, IsChosenWithTheOptionKey) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    holdOption();
    whenAlertAsks([](LTHUDWindow& window) {
        EXPECT_TRUE(LTDatabase::isLoading());
        QTest::keyClick(window.windowHandle(), Qt::Key_Return);
    });
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_TRUE(LTDatabase::isLoading());
        EXPECT_TRUE(dynamic_cast<NSOpenPanel*>(application.modalWindow()));
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptOpen);
        EXPECT_THAT(dialog.nameFilters(), ElementsAre(QStringLiteral("*.plist")));
        enterName(dialog, own);
    });
    const auto store = LTDatabase::sharedDB<Diary>();
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_EQ(path(), own);
    EXPECT_EQ(store->snippets().count(), 1U);
    EXPECT_EQ(choice(), "custom, " + own.toStdString());
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load own.plist (custom, own.plist)", "disable syncing while loading"))
        << "the choice is on the disk before the store is made";
}

TEST_F(DatabaseLocation, IsAskedForWithTheOptionKeyAlsoWhereItWasChosenBefore) {
    const QString other = makeFile(QStringLiteral("other.plist"));
    chooseBefore(makeFile(QStringLiteral("own.plist")));
    hold(Qt::AltModifier | Qt::ShiftModifier);
    answerAlert(QStringLiteral("Choose Database..."));
    answerPanel(other);
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), other);
    EXPECT_THAT(log(),
                ElementsAre(chooseAlert, "load other.plist (custom, other.plist)", "disable syncing while loading"));
}

TEST_F(DatabaseLocation, IsNotAskedForWithOtherModifierKeys) {
    hold(Qt::ControlModifier | Qt::ShiftModifier | Qt::MetaModifier);
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
    EXPECT_THAT(log(), ElementsAre("load DB.plist (nothing, no path)"));
}

TEST_F(DatabaseLocation, TellsOfAFileThatGivesNoDatabaseAndKeepsItAsTheChoice) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    Diary::broken = {"own.plist"};
    holdOption();
    answerAlert(Qt::Key_Return);
    answerPanel(own);
    answerAlert(QStringLiteral("OK"));
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "custom, " + own.toStdString());
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load own.plist (custom, own.plist)", unusableAlert,
                                   "load DB.plist (custom, own.plist)"));
    EXPECT_FALSE(LTDatabase::isLoading());
}

TEST_F(DatabaseLocation, IsCreatedWithTheOptionKey) {
    holdOption();
    answerAlert(QStringLiteral("Create Database..."));
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_TRUE(LTDatabase::isLoading());
        auto* const panel = dynamic_cast<NSSavePanel*>(application.modalWindow());
        ASSERT_TRUE(panel);
        EXPECT_EQ(panel->requiredFileType(), QStringLiteral("plist"));
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(dialog.directory(), QDir::home());
        EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(), QStringLiteral("DB.plist"));
        enterName(dialog, folder.filePath(QStringLiteral("new")));
    });
    const auto store = LTDatabase::sharedDB<Diary>();
    const QString created = folder.filePath(QStringLiteral("new.plist"));
    EXPECT_EQ(path(), created);
    EXPECT_EQ(choice(), "custom, " + created.toStdString());
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load new.plist (custom, new.plist)", "disable syncing while loading"));
    EXPECT_FALSE(QFileInfo::exists(created)) << "made by the first save";
    store->saveDB();
    EXPECT_TRUE(QFileInfo::exists(created));
    EXPECT_FALSE(LTDatabase::isLoading());
}

TEST_F(DatabaseLocation, ProposesTheFileNameOfItsClass) {
    class Named : public Diary {
        QString databaseFileName() const override { return QStringLiteral("Named.plist"); }
    };
    holdOption();
    answerAlert(QStringLiteral("Create Database..."));
    steps.addForFileDialog([](QFileDialog& dialog) { QTest::keyClick(dialog.windowHandle(), Qt::Key_Return); });
    LTDatabase::sharedDB<Named>();
    EXPECT_EQ(path(), QDir::home().filePath(QStringLiteral("Named.plist")));
}

TEST_F(DatabaseLocation, TurnsSyncingOffAlsoWhereTheCreatedDatabaseCannotBeMade) {
    Diary::broken = {"new.plist"};
    holdOption();
    answerAlert(QStringLiteral("Create Database..."));
    answerPanel(folder.filePath(QStringLiteral("new.plist")));
    EXPECT_THROW(LTDatabase::sharedDB<Diary>(), std::runtime_error);
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load new.plist (custom, new.plist)", "disable syncing while loading"));
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("new.plist"))));
}

TEST_F(DatabaseLocation, BeginsAnewAfterTheDefaultDatabaseCouldNotBeMade) {
    Diary::broken = {"DB.plist"};
    EXPECT_THROW(LTDatabase::sharedDB<Diary>(), std::runtime_error);
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_THROW(static_cast<void>(LTDatabase::isDirty()), NSException);
    EXPECT_FALSE(QFileInfo::exists(defaultPath()));
    Diary::broken.clear();
    EXPECT_TRUE(LTDatabase::sharedDB<Diary>());
    EXPECT_EQ(path(), defaultPath());
}

TEST_F(DatabaseLocation, IsSettledOnceWhateverKeysAreHeldLater) {
    const auto store = LTDatabase::sharedDB<Diary>();
    defaults.setBool(true, "UsesCustomDB");
    holdOption();
    log().clear();
    EXPECT_EQ(LTDatabase::sharedDB<Diary>(), store);
    EXPECT_EQ(LTDatabase::sharedDB(), store);
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(DatabaseLocation, IsLoadingWhileTheStoreIsLoadedAndNotAfter) {
    bool wasLoading = false;
    Diary::whenLoading = [&] { wasLoading = LTDatabase::isLoading(); };
    LTDatabase::sharedDB<Diary>();
    EXPECT_TRUE(wasLoading);
    EXPECT_FALSE(LTDatabase::isLoading());
}

TEST_F(DatabaseLocation, RefusesToBeAskedForByWhatRunsWhileADialogIsOpen) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    holdOption();
    int refused = 0;
    const auto ask = [&refused] {
        const std::vector<std::function<void()>> calls = {[] { LTDatabase::sharedDB<Diary>(); },
                                                          [] { LTDatabase::reloadFromDefaultDB<Diary>(); }};
        for (const auto& call : calls) {
            try {
                call();
            } catch (const NSException& exception) {
                EXPECT_EQ(exception.name(), QString::fromUtf8(NSInternalInconsistencyException));
                ++refused;
            }
        }
    };
    whenAlertAsks([&](LTHUDWindow& window) {
        ask();
        EXPECT_TRUE(LTDatabase::isLoading());
        EXPECT_EQ(application.modalWindow(), &window) << "there is no second one";
        QTest::keyClick(window.windowHandle(), Qt::Key_Return);
    });
    steps.addForFileDialog([&](QFileDialog& dialog) {
        ask();
        EXPECT_TRUE(LTDatabase::isLoading());
        enterName(dialog, own);
    });
    Diary::whenLoading = ask;
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(refused, 6);
    EXPECT_EQ(path(), own);
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load own.plist (custom, own.plist)", "disable syncing while loading"));
}

TEST_F(DatabaseLocation, SurvivesATimerThatAsksForItWhileADialogIsOpen) {
    chooseBefore(folder.filePath(QStringLiteral("gone.plist")));
    int asked = 0;
    const auto timer = NSTimer::scheduledTimerWithTimeInterval(0.001, NSTimerRepeats::Yes, [&](NSTimer&) {
        ++asked;
        LTDatabase::sharedDB<Diary>();
    });
    whenAlertAsks([&](LTHUDWindow& window) {
        const int before = asked;
        EXPECT_TRUE(QTest::qWaitFor([&] { return asked > before + 2; }));
        QTest::keyClick(window.windowHandle(), Qt::Key_Return);
    });
    testing::internal::CaptureStderr();
    LTDatabase::sharedDB<Diary>();
    timer->invalidate();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(NSInternalInconsistencyException));
    EXPECT_EQ(path(), defaultPath());
    EXPECT_THAT(log(), ElementsAre(missingAlert, "load DB.plist (custom, gone.plist)"));
}

TEST_F(DatabaseLocation, ReturnsToTheDefaultFileAndTurnsSyncingOn) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    chooseBefore(own);
    std::weak_ptr<LTDatabase> before = LTDatabase::sharedDB<Diary>();
    before.lock()->addSnippet(std::make_shared<Note>(1.0, QStringLiteral("added")));
    log().clear();
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_THAT(log(), ElementsAre("save own.plist", "save own.plist", "enable syncing: default, own.plist",
                                   "load DB.plist (default, own.plist)"))
        << "the second save is that of its destruction, which finds nothing to write";
    EXPECT_TRUE(before.expired());
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "default, " + own.toStdString());
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_EQ(NSDictionary::dictionaryWithContentsOfFile(own)->objectOfType<NSArray>("contents")->size(), 2U);
}

TEST_F(DatabaseLocation, ReturnsWithAStoreOfTheClassThatWasNamed) {
    LTDatabase::sharedDB<NotesDatabase>();
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_TRUE(std::dynamic_pointer_cast<Diary>(LTDatabase::sharedDB()));
}

TEST_F(DatabaseLocation, ReturnsWithoutAStoreBefore) {
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_THAT(log(), ElementsAre("enable syncing: default, no path", "load DB.plist (default, no path)"));
}

TEST_F(DatabaseLocation, AsksOnTheWayBackWhereTheOptionKeyHappensToBeHeld) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    LTDatabase::sharedDB<Diary>();
    holdOption();
    answerAlert(Qt::Key_Return);
    answerPanel(own);
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_EQ(path(), own);
    EXPECT_EQ(choice(), "custom, " + own.toStdString());
}

TEST_F(DatabaseLocation, StaysWhereItIsWhenTheStoreCannotBeSavedBeforeTheReturn) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    chooseBefore(own);
    const auto store = LTDatabase::sharedDB<Diary>();
    const auto unfit = std::make_shared<_LTSnippet>();
    store->addSnippet(unfit);
    EXPECT_THROW(LTDatabase::reloadFromDefaultDB<Diary>(), NSException);
    EXPECT_EQ(LTDatabase::sharedDB(), store);
    EXPECT_EQ(choice(), "custom, " + own.toStdString());
    store->removeSnippet(unfit);
}

TEST_F(DatabaseLocation, TheStoreBeforeLivesOnByItsTimerAndKeepsItsFileAndSubscriptions) {
    defaults.setBool(false, "VXDBAutomaticSavingDisabled");
    const NSTimer::IntervalsForTesting shorten([](double seconds) { return seconds == 300.0 ? 0.001 : seconds; });
    const QString own = makeFile(QStringLiteral("own.plist"));
    chooseBefore(own);
    std::weak_ptr<LTDatabase> before = LTDatabase::sharedDB<Diary>();
    LTDatabase::reloadFromDefaultDB<Diary>();
    ASSERT_FALSE(before.expired());
    EXPECT_NE(LTDatabase::sharedDB(), before.lock());
    EXPECT_EQ(path(), defaultPath());

    const auto recordsIn = [](const QString& file) -> std::size_t {
        const auto dictionary = NSDictionary::dictionaryWithContentsOfFile(file);
        return dictionary ? dictionary->objectOfType<NSArray>("contents")->size() : 0;
    };
    before.lock()->addSnippet(std::make_shared<Note>(1.0, QStringLiteral("late")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return recordsIn(own) == 2; })) << "it is saved by its timer";
    EXPECT_EQ(recordsIn(defaultPath()), 0U);

    application.syncManager.syncing = true;
    before.lock()->addSnippet(std::make_shared<Note>(2.0, QStringLiteral("held back")));
    application.syncManager.syncing = false;
    EXPECT_EQ(before.lock()->snippets().count(), 2U);
    NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, nullptr);
    EXPECT_EQ(before.lock()->snippets().count(), 3U) << "it hears of the end of a sync";

    application.terminate(nullptr);
    EXPECT_EQ(recordsIn(own), 3U) << "and of that of the application";
    EXPECT_FALSE(before.expired());
}

TEST_F(DatabaseLocation, IsDirtyAsTheSharedStoreIs) {
    chooseBefore(makeFile(QStringLiteral("own.plist")));
    const auto before = LTDatabase::sharedDB<Diary>();
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_TRUE(LTDatabase::isDirty());
    LTDatabase::sharedDB()->saveDB();
    EXPECT_FALSE(LTDatabase::isDirty());
    before->addSnippet(std::make_shared<Note>(1.0));
    EXPECT_FALSE(LTDatabase::isDirty()) << "it is not the shared one";
}

TEST_F(DatabaseLocationExit, QuitEndsTheProcess) {
    EXPECT_EXIT(
        {
            holdOption();
            answerAlert(QStringLiteral("Quit"));
            startHost();
        },
        testing::ExitedWithCode(0),
        testing::AllOf(HasSubstr("log: Choose My %@ Diary database."),
                       HasSubstr("chosen: nothing, no path; loading: 1"), Not(HasSubstr("log: load"))));
}

TEST_F(DatabaseLocationExit, EscapeQuits) {
    EXPECT_EXIT(
        {
            holdOption();
            answerAlert(Qt::Key_Escape);
            startHost();
        },
        testing::ExitedWithCode(0), HasSubstr("chosen: nothing, no path"));
}

TEST_F(DatabaseLocationExit, ACancelledOpenPanelEndsTheProcess) {
    EXPECT_EXIT(
        {
            holdOption();
            answerAlert(Qt::Key_Return);
            steps.addForFileDialog([](QFileDialog& dialog) {
                log().emplace_back(dialog.acceptMode() == QFileDialog::AcceptOpen ? "open panel" : "save panel");
                QTest::keyClick(dialog.windowHandle(), Qt::Key_Escape);
            });
            startHost();
        },
        testing::ExitedWithCode(0),
        testing::AllOf(HasSubstr("log: open panel\n"), HasSubstr("chosen: nothing, no path"),
                       Not(HasSubstr("log: load")), Not(HasSubstr("log: disable"))));
}

TEST_F(DatabaseLocationExit, ACancelledSavePanelEndsTheProcess) {
    EXPECT_EXIT(
        {
            holdOption();
            answerAlert(QStringLiteral("Create Database..."));
            steps.addForFileDialog([](QFileDialog& dialog) {
                log().emplace_back(dialog.acceptMode() == QFileDialog::AcceptOpen ? "open panel" : "save panel");
                dialog.close();
            });
            startHost();
        },
        testing::ExitedWithCode(0),
        testing::AllOf(HasSubstr("log: save panel\n"), HasSubstr("chosen: nothing, no path"),
                       Not(HasSubstr("log: load")), Not(HasSubstr("log: disable"))));
}

TEST_F(DatabaseLocationExit, TheEndOfTheApplicationAnswersTheQuestion) {
    EXPECT_EXIT(
        {
            holdOption();
            whenAlertAsks([this](LTHUDWindow&) { application.terminate(nullptr); });
            startHost();
        },
        testing::ExitedWithCode(0), HasSubstr("chosen: nothing, no path"));
}
