// SPDX-License-Identifier: MIT
// The program and its sync, with a server that wants a password.
#include "../ModalRun.h"
#include "../SessionBus.h"
#include "SnippetsSyncTestSupport.h"

#include <VXKit/platform/appkit/NSApplication.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QWindow>

namespace {

const QString userName = QStringLiteral("ada");
const QString password = QStringLiteral("se-cret&Pass");

/// A program with its log on, which it looks for once, with the first line that may go there.
struct Logging {
    Logging() {
        QCoreApplication::setApplicationName(QStringLiteral("snippets"));
        NSUserDefaults::standardUserDefaults().setBool(true, "VXLoggingEnabled");
    }
};

/// With a server that wants a password.
class SyncingWithPassword : Logging, public SyncingProgram {
protected:
    void SetUp() override {
        ASSERT_TRUE(guarded.start());
        SyncingProgram::SetUp();
        switchOn(guarded.address(), userName);
        QObject::connect(&manager(), &SnippetsSyncManager::needsPassword, [this] { ++questions; });
    }

    /// Types the password when it is asked for, or cancels where it is empty.
    void whenAskedForPassword(const QString& typed) {
        whenNextModalRunHasBegun(application, [this, typed] {
            auto* const field = application.modalWindow()->findChild<QLineEdit*>();
            ASSERT_TRUE(field);
            EXPECT_EQ(field->echoMode(), QLineEdit::Password);
            field->setText(typed);
            QTest::keyClick(application.modalWindow()->windowHandle(),
                            typed.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
        });
    }

    DavServer guarded{userName, password};
    int questions = 0;
};

/// Every byte in the files below `folder`.
QByteArray everythingIn(const QString& folder) {
    QByteArray result;
    for (const QFileInfo& info :
         QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks)) {
        QFile file(info.filePath());
        if (info.isDir()) {
            result += everythingIn(info.filePath());
        } else if (info.isFile() && file.open(QIODevice::ReadOnly)) {
            result += file.readAll();
        }
    }
    return result;
}

} // namespace

TEST_F(SyncingWithPassword, AsksForItEachTimeWhereThereIsNoSecretServiceAndKeepsItNowhere) {
    add(7.0, "Mine", "mine");
    testing::internal::CaptureStderr();
    for (std::size_t count = 1; count <= 2; ++count) {
        whenAskedForPassword(password);
        manager().sync(SnippetsSyncManager::Cause::User);
        ASSERT_TRUE(waitForReport(count));
        EXPECT_EQ(reports.back().problem, QString());
        EXPECT_EQ(static_cast<std::size_t>(questions), count);
    }
    ASSERT_TRUE(NSUserDefaults::standardUserDefaults().synchronize());
    const QByteArray written =
        everythingIn(QDir::homePath()) + QByteArray::fromStdString(testing::internal::GetCapturedStderr());
    EXPECT_TRUE(written.contains(userName.toUtf8())) << "the search would find it";
    EXPECT_TRUE(written.contains("No password from the secret service")) << "the log is on";
    for (const QByteArray& form :
         {password.toUtf8(), password.toUtf8().toBase64(), password.toUtf8().toPercentEncoding(),
          (userName + QLatin1Char(':') + password).toUtf8().toBase64(), QByteArray("se-cret&amp;Pass")}) {
        EXPECT_FALSE(written.contains(form)) << form.constData();
    }
}

TEST_F(SyncingWithPassword, DoesNotAskByItself) {
    manager().sync(SnippetsSyncManager::Cause::Timer);
    QTest::qWait(200);
    EXPECT_EQ(questions, 0);
    EXPECT_FALSE(manager().isSyncInProgress());
}

TEST_F(SyncingWithPassword, LeavesItWhereTheQuestionIsCancelled) {
    whenAskedForPassword({});
    manager().sync(SnippetsSyncManager::Cause::User);
    ASSERT_TRUE(QTest::qWaitFor([&] { return questions == 1; }));
    EXPECT_FALSE(manager().isSyncInProgress());
}

TEST_F(SyncingWithPassword, SaysThatAPasswordIsWrong) {
    whenAskedForPassword(QStringLiteral("wrong"));
    application.showMainWindow();
    manager().sync(SnippetsSyncManager::Cause::User);
    ASSERT_TRUE(waitForReport(1));
    EXPECT_EQ(syncBar().text(), QStringLiteral("Not synced: The server does not accept the name and password"));
}

TEST_F(SyncingWithPassword, AsksForItNoMoreWhereASecretServiceKeepsIt) {
    if (!SessionBus::canBeHad() || QStandardPaths::findExecutable(QStringLiteral("gnome-keyring-daemon")).isEmpty()) {
        GTEST_SKIP() << "no session bus or no secret service";
    }
    const SessionBus bus;
    QProcess keyring;
    QTemporaryDir runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
    keyring.setStandardOutputFile(QProcess::nullDevice());
    keyring.setStandardErrorFile(QProcess::nullDevice());
    keyring.start(QStringLiteral("gnome-keyring-daemon"),
                  {QStringLiteral("--foreground"), QStringLiteral("--unlock"), QStringLiteral("--components=secrets")});
    keyring.write("keyring");
    keyring.closeWriteChannel();
    ASSERT_TRUE(QTest::qWaitFor(
        [] {
            return QProcess::execute(QStringLiteral("dbus-send"),
                                     {QStringLiteral("--session"), QStringLiteral("--print-reply=literal"),
                                      QStringLiteral("--dest=org.freedesktop.secrets"),
                                      QStringLiteral("/org/freedesktop/secrets/aliases/default"),
                                      QStringLiteral("org.freedesktop.DBus.Peer.Ping")}) == 0;
        },
        DavServer::longestSync));

    manager().configure(SyncSettings::load(), password);
    ASSERT_TRUE(waitForReport(1));
    EXPECT_EQ(reports.back().problem, QString());
    manager().sync(SnippetsSyncManager::Cause::Timer);
    ASSERT_TRUE(waitForReport(2));
    EXPECT_EQ(reports.back().problem, QString());
    EXPECT_EQ(questions, 0);
    keyring.kill();
    keyring.waitForFinished();
    EXPECT_FALSE(everythingIn(QDir::homePath()).contains(password.toUtf8())) << "not even in the keyring's own file";
}
