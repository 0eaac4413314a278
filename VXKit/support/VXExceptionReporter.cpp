// SPDX-License-Identifier: MIT
#include <VXKit/support/VXExceptionReporter.h>

#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/desktop/NSURLConnection.h>
#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/platform/foundation/NSFormat.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSPercentEscapes.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>
#include <VXKit/platform/foundation/NSThread.h>
#include <VXKit/platform/graphics/QtColor.h>
#include <VXKit/support/VMUSymbolicator.h>
#include <VXKit/support/VXCrashRecord.h>
#include <VXKit/support/VXCrashRecording.h>
#include <VXKit/support/VXKitResources.h>

#include <QCoreApplication>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>
#include <sys/utsname.h>
#include <utility>
#include <vector>

namespace {

// Failures that are expected, and of the platform's accessibility.
constexpr std::array<std::string_view, 3> ignoredNames{"RSSDownloadFailed", "RSSParseFailed",
                                                       "NSAccessibilityException"};

constexpr double standardTimeout = 120; // seconds

double& timeout() {
    static double seconds = standardTimeout;
    return seconds;
}

QString& hostOfProcess() {
    static QString name;
    return name;
}

std::unique_ptr<VXExceptionReporter>& shared() {
    static std::unique_ptr<VXExceptionReporter> reporter;
    return reporter;
}

/// Where reports are posted to; not valid where there is no host, or none that could be one.
QUrl endpoint() {
    const QUrl url(QStringLiteral("http://%1/_report.php").arg(hostOfProcess()), QUrl::StrictMode);
    return url.authority().compare(hostOfProcess(), Qt::CaseInsensitive) == 0 && !url.host().isEmpty() ? url : QUrl();
}

QString versionOfSystem() {
    utsname system{};
    return ::uname(&system) == 0 ? QString::fromUtf8(static_cast<const char*>(system.version))
                                 : QStringLiteral("unknown");
}

/// What a text field holds is never nil.
QString textOf(const QString& text) {
    return text.isNull() ? QStringLiteral("") : text;
}

/// A line for each frame, each after a newline.
QString symbolicated(const std::vector<std::uintptr_t>& addresses) {
    VMUSymbolicator symbolicator =
        VMUSymbolicator::symbolicatorForPid(NSProcessInfo::processInfo().processIdentifier());
    QString trace;
    for (const std::uintptr_t address : addresses) {
        const std::optional<VMUSymbol> symbol = symbolicator.symbolForAddress(address);
        trace += QLatin1Char('\n') +
                 NSStringWithFormat("%@", symbol ? std::optional<QString>(symbol->name()) : std::nullopt);
    }
    return trace;
}

QString informationFor(const char* key) {
    return NSStringWithFormat("%@", NSBundle::mainBundle().objectForInfoDictionaryKey(QString::fromLatin1(key)));
}

/// `exception` with the lines of the stack that threw it, which the stack of whoever reports it does not show.
NSException withStackOf(const NSException& exception) {
    if (exception.callStackReturnAddresses().empty()) {
        return exception;
    }
    NSArray lines;
    for (const QString& line :
         symbolicated(exception.callStackReturnAddresses()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        lines.push_back(line.toStdString());
    }
    NSDictionary userInfo = exception.userInfo().value_or(NSDictionary());
    userInfo.setObject(std::move(lines), NSStackTraceKey);
    return {exception.name().toUtf8().constData(), exception.reason(), std::move(userInfo)};
}

/// A crash in the terms of an exception: the one that nobody caught, else the signal.
NSException exceptionOf(const VXCrashRecord& record) {
    NSDictionary userInfo;
    userInfo.setObject(record.signalName(), "Signal");
    userInfo.setObject(record.signalCode(), "Code");
    userInfo.setObject(record.date(), "Date");
    userInfo.setObject(record.hostVersion(), "Version");
    userInfo.setObject(record.isMainThread(), "MainThread");
    if (!record.exceptionType().isEmpty()) {
        return {record.exceptionType().toUtf8().constData(), record.exceptionReason(), std::move(userInfo)};
    }
    const QString meaning = QString::fromLatin1(::sigdescr_np(record.signalNumber()));
    const QString reason =
        record.faultAddress() == 0 ? meaning : NSStringWithFormat("%@ at 0x%llx", meaning, record.faultAddress());
    return {record.signalName().toUtf8().constData(), reason, std::move(userInfo)};
}

} // namespace

VXExceptionReporter::TimeoutForTesting::TimeoutForTesting(double seconds)
    : m_before(std::exchange(timeout(), seconds)) {}

VXExceptionReporter::TimeoutForTesting::~TimeoutForTesting() {
    timeout() = m_before;
}

VXExceptionReporter::VXExceptionReporter() {
    NSNib(QStringLiteral("ExceptionReporter"), VXKitBundle()).instantiateNibWithOwner(*this);
    const QString process = NSProcessInfo::processInfo().processName();
    for (QLabel* field : {messageField.data(), informationField.data()}) {
        field->setText(field->text().replace(QStringLiteral("%@"), process));
    }
    m_texts = {messageField->text(), informationField->text()};
    m_reportView->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    // The window's own ways to close are the user's "no" as well.
    m_closing = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowWillCloseNotification, reporterWindow.data(), [this](const NSNotification&) {
            if (m_isShown) {
                ignore(nullptr);
            }
        });
}

VXExceptionReporter::~VXExceptionReporter() = default;

VXExceptionReporter& VXExceptionReporter::reporter() {
    if (!shared()) {
        shared().reset(new VXExceptionReporter);
        // Its window cannot outlive the application object.
        qAddPostRoutine([] { shared().reset(); });
    }
    return *shared();
}

QString VXExceptionReporter::reportingHost() {
    return hostOfProcess();
}

void VXExceptionReporter::setReportingHost(const QString& host) {
    hostOfProcess() = host;
    if (!host.isEmpty() && !endpoint().isValid()) {
        NSLog("Problems cannot be reported to %@, which is no host.", host);
        hostOfProcess() = QString();
    }
}

void VXExceptionReporter::connectNib(NSNibConnections& nib) {
    nib.outlet(QStringLiteral("reporterWindow"), reporterWindow);
    nib.outlet(QStringLiteral("detailsView"), detailsView);
    nib.outlet(QStringLiteral("emailField"), emailField);
    nib.outlet(QStringLiteral("messageField"), messageField);
    nib.outlet(QStringLiteral("informationField"), informationField);
    nib.outlet(QStringLiteral("reportView"), m_reportView);
    nib.outlet(QStringLiteral("statusField"), m_statusField);
    nib.outlet(QStringLiteral("reportButton"), m_reportButton);
    nib.action(QStringLiteral("ignore:"), [this](QObject* sender) { ignore(sender); });
    nib.action(QStringLiteral("report:"), [this](QObject* sender) { report(sender); });
    nib.action(QStringLiteral("quit:"), [this](QObject* sender) { quit(sender); });
    nib.action(QStringLiteral("copyReport:"), [this](QObject* sender) { copyReport(sender); });
}

void VXExceptionReporter::reportException(const NSException& exception) {
    if (std::find(ignoredNames.begin(), ignoredNames.end(), exception.name().toStdString()) != ignoredNames.end()) {
        return;
    }
    if (m_isShown) {
        NSLog("Another problem while one is being reported: %s", exception.what());
        return;
    }
    _stackTrace = QString();
    show(m_texts, exception, symbolicated(NSThread::callStackReturnAddresses()));
}

void VXExceptionReporter::reportCrash(const VXCrashRecord& record) {
    if (m_isShown) {
        return;
    }
    const QString process = NSProcessInfo::processInfo().processName();
    const Texts texts{
        QStringLiteral("%1 ended unexpectedly").arg(process),
        QStringLiteral("A report helps the developers of %1 to mend what ended it the last time. It holds "
                       "what is shown below, your words and your address, and nothing else.")
            .arg(process)};
    QString trace;
    for (const VXCrashFrame& frame : record.frames()) {
        trace +=
            QLatin1Char('\n') + (frame.symbol ? frame.symbol->name() : NSStringWithFormat("0x%llx", frame.address));
    }
    show(texts, exceptionOf(record), trace);
}

void VXExceptionReporter::show(const Texts& texts, const NSException& exception, const QString& stackTrace) {
    _stackTrace = stackTrace;
    _exception = exception;
    messageField->setText(texts.message);
    informationField->setText(texts.information);
    detailsView->clear();
    m_reportView->setPlainText(QStringLiteral("%1\n\nStack:%2\n\n%3 %4\n%5")
                                   .arg(exceptionText(), _stackTrace, informationFor("CFBundleName"),
                                        informationFor("CFBundleVersion"), versionOfSystem()));
    setSending(false);
    m_isShown = true;
    const auto end = qScopeGuard([this] { m_isShown = false; });
    // The ground that the application's colours of text are for.
    reporterWindow->setBackgroundColor(NSColorFromQColor(reporterWindow->palette().color(QPalette::Window)));
    reporterWindow->center();
    reporterWindow->makeFirstResponder(detailsView);
    NSApplication::sharedApplication()->runModalForWindow(*reporterWindow);
}

void VXExceptionReporter::ignore(QObject* /*sender*/) {
    reporterWindow->orderOut(nullptr);
    NSApplication::sharedApplication()->stopModal();
}

void VXExceptionReporter::quit(QObject* /*sender*/) {
    NSApplication::sharedApplication()->stopModal();
    NSApplication::sharedApplication()->terminate(nullptr);
}

void VXExceptionReporter::copyReport(QObject* /*sender*/) {
    NSPasteboard& pasteboard = NSPasteboard::generalPasteboard();
    pasteboard.clearContents();
    pasteboard.setString(m_reportView->toPlainText(), QString::fromLatin1(NSStringPboardType));
}

void VXExceptionReporter::report(QObject* sender) {
    const QUrl url = endpoint();
    if (!url.isValid()) {
        NSBeep();
        return;
    }
    setSending(true);
    const QByteArray form = body();
    // A report is not lost because a server is: whoever waits for this one knows that it is being sent.
    while (
        NSURLConnection::sendSynchronousRequest({.url = url,
                                                 .cachePolicy = NSURLRequestCachePolicy::ReloadIgnoringLocalCacheData,
                                                 .timeoutInterval = timeout(),
                                                 .httpMethod = QByteArrayLiteral("POST"),
                                                 .httpBody = form})
            .value_or(QByteArray())
            .isEmpty()) {
    }
    setSending(false);
    ignore(sender);
}

QString VXExceptionReporter::exceptionText() const {
    return NSStringWithFormat("Name: %@\nReason: %@\nFurther info: %@", _exception->name(), _exception->reason(),
                              _exception->userInfo());
}

/// The server expects exactly this: two values escaped, five as they are.
QByteArray VXExceptionReporter::body() const {
    return NSStringWithFormat("%@=%@&%@=%@&%@=%@&%@=%@&%@=%@&%@=%@&%@=%@", "description",
                              NSStringByAddingPercentEscapes(detailsView->toPlainText()), "exception",
                              NSStringByAddingPercentEscapes(exceptionText()), "version",
                              informationFor("CFBundleVersion"), "stack", _stackTrace, "email",
                              textOf(emailField->text()), "AppName", informationFor("CFBundleName"), "OSVersion",
                              versionOfSystem())
        .toUtf8();
}

void VXExceptionReporter::setSending(bool isSending) {
    const bool canSend = endpoint().isValid();
    m_statusField->setText(
        isSending ? QStringLiteral("The report is being sent. This window closes when it has arrived.")
        : canSend ? QString()
                  : QStringLiteral("There is no address that reports are sent to; you can copy it."));
    for (QPushButton* button : reporterWindow->findChildren<QPushButton*>()) {
        button->setEnabled(!isSending);
    }
    m_reportButton->setEnabled(canSend && !isSending);
    if (isSending) {
        // Nothing is drawn while the report is under way.
        reporterWindow->display();
    }
}

void VXReportUncaughtExceptions() {
    NSSetUncaughtExceptionHandler(
        [](const NSException& exception) { VXExceptionReporter::reporter().reportException(withStackOf(exception)); });
}

void VXReportCrashes(const QString& folder) {
    const QString place =
        folder.isNull() ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/Crashes")
                        : folder;
    const auto records = std::make_shared<std::vector<VXCrashRecord>>(VXTakeCrashRecords(place));
    if (NSError error; !VXRecordCrashes(place, {}, &error)) {
        NSLog("Crashes are not recorded: %@", error.localizedDescription);
    }
    if (records->empty()) {
        return;
    }
    QTimer::singleShot(0, NSApplication::sharedApplication(), [records] {
        VXExceptionReporter::reporter().reportCrash(records->front());
        for (VXCrashRecord& record : *records) {
            record.discard();
        }
    });
}
