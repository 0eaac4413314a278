// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QPointer>
#include <QString>

#include <optional>

class NSWindow;
class QLabel;
class QLineEdit;
class QObject;
class QPlainTextEdit;
class QPushButton;
class VXCrashRecord;

/// The window that tells the user of an exception which the application did not expect, shows what a report of it
/// would hold, and sends one if the user wants that.
///
/// The host calls reportException where it catches what it did not expect; VXReportUncaughtExceptions does that for
/// whatever leaves the handling of an event. Reports go to the host set with setReportingHost. Process-wide; its window
/// is made when the reporter is first asked for. Main thread only.
class VXKIT_EXPORT VXExceptionReporter : public NSNibOwner {
public:
    /// Shortens the time that a silent server is waited for, as long as it lives.
    class VXKIT_EXPORT TimeoutForTesting {
    public:
        /// A server that says nothing for so many seconds has not answered.
        [[nodiscard]] explicit TimeoutForTesting(double seconds);
        TimeoutForTesting(const TimeoutForTesting&) = delete;
        TimeoutForTesting& operator=(const TimeoutForTesting&) = delete;
        ~TimeoutForTesting();

    private:
        double m_before;
    };

    ~VXExceptionReporter() override;

    /// The reporter of the process, made on the first call. Needs an NSApplication.
    [[nodiscard]] static VXExceptionReporter& reporter();

    /// Where reports go: a host's name or address, with a colon and a port where that is not 80; they are posted to
    /// "/_report.php" there, over plain HTTP. Null, as at first, where the application has none: its window then offers
    /// to copy a report and not to send it. Of the process; there is no host of ours.
    [[nodiscard]] static QString reportingHost();
    /// For the reports that are sent from now on.
    static void setReportingHost(const QString& host);

    /// Shows the window for `exception`, with the stack of the caller, and returns when the user has decided.
    ///
    /// Returns at once for expected failures: exceptions named "RSSDownloadFailed", "RSSParseFailed" or
    /// "NSAccessibilityException". One that comes while the window is shown is logged and not shown, so that a problem
    /// which comes again and again does not bury the user.
    void reportException(const NSException& exception);

    /// The same for a crash of an earlier run, with the stack that was recorded then; a frame without a symbol tells
    /// its address.
    void reportCrash(const VXCrashRecord& record);

    /// What the buttons do; `sender` is not looked at. Closes the window without sending.
    void ignore(QObject* sender);
    /// Sends the report and closes the window. Blocks until the server has answered with more than nothing: where it
    /// does not, the report is sent again, without end. Beeps and stays where there is no host for reports.
    void report(QObject* sender);
    /// Ends the application.
    void quit(QObject* sender);
    /// Puts the report onto the clipboard, in the form in which it is shown.
    void copyReport(QObject* sender);

    /// The window, be it shown or not.
    [[nodiscard]] NSWindow* window() const { return reporterWindow; }
    /// Of the exception reported last: a line for each frame, innermost first, each after a newline. Null before.
    [[nodiscard]] const QString& stackTrace() const { return _stackTrace; }
    /// The exception reported last; none before.
    [[nodiscard]] const std::optional<NSException>& exception() const { return _exception; }

    /// Declares the window, the fields and what the buttons do.
    void connectNib(NSNibConnections& nib) override;

private:
    VXExceptionReporter();

    struct Texts {
        QString message;
        QString information;
    };

    void show(const Texts& texts, const NSException& exception, const QString& stackTrace);
    [[nodiscard]] QString exceptionText() const;
    [[nodiscard]] QByteArray body() const;
    void setSending(bool isSending);

    QPointer<NSWindow> reporterWindow;
    QPointer<QPlainTextEdit> detailsView;
    QPointer<QLineEdit> emailField;
    QString _stackTrace;
    std::optional<NSException> _exception;
    QPointer<QLabel> messageField;
    QPointer<QLabel> informationField;

    QPointer<QPlainTextEdit> m_reportView;
    QPointer<QLabel> m_statusField;
    QPointer<QPushButton> m_reportButton;
    Texts m_texts; // of the nib
    bool m_isShown = false;
    NSNotificationObservation m_closing;
};

/// Has the reporter show every exception that leaves the handling of an event, in place of the end of the process; what
/// the code that threw an NSException was doing is told with it. Such an exception counts as handled: whatever threw it
/// has not done its work. Calls NSSetUncaughtExceptionHandler.
VXKIT_EXPORT void VXReportUncaughtExceptions();

/// Has crashes of this process recorded in `folder` (VXRecordCrashes), and the reporter show the newest that an earlier
/// run has left there, as soon as the application handles events; all of them are gone when the user has decided. Null:
/// the folder "Crashes" where the application keeps its data. Needs an NSApplication; to be called once, early.
VXKIT_EXPORT void VXReportCrashes(const QString& folder = {});
