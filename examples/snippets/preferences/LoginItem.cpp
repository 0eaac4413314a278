// SPDX-License-Identifier: MIT
#include "LoginItem.h"

#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSError.h>
#include <VXKit/support/VXLog.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>

#include <optional>
#include <utility>

namespace {

QString configurationFolder() {
    const QString folder = qEnvironmentVariable("XDG_CONFIG_HOME");
    // A relative path there is to be passed over.
    return QDir::isAbsolutePath(folder) ? folder : QDir::homePath() + QStringLiteral("/.config");
}

QStringList systemFolders() {
    const QString folders = qEnvironmentVariable("XDG_CONFIG_DIRS");
    return (folders.isEmpty() ? QStringLiteral("/etc/xdg") : folders).split(QLatin1Char(':'), Qt::SkipEmptyParts);
}

/// Whether the desktop entry at `path` starts its program; nothing where there is no such file.
std::optional<bool> startsItsProgram(const QString& path) {
    if (!QFileInfo::exists(path)) {
        return std::nullopt;
    }
    const std::optional<std::string> content = VXReadFile(path, nullptr);
    if (!content) {
        return false;
    }
    bool isInEntry = false;
    bool hasCommand = false;
    const QStringList lines = QString::fromStdString(*content).split(QLatin1Char('\n'));
    for (const QString& whole : lines) {
        const QString line = whole.trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            isInEntry = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const qsizetype sign = line.indexOf(QLatin1Char('='));
        if (!isInEntry || sign < 0) {
            continue;
        }
        const QString key = line.left(sign).trimmed();
        const QString value = line.mid(sign + 1).trimmed();
        if ((key == QLatin1String("Hidden") && value == QLatin1String("true")) ||
            (key == QLatin1String("X-GNOME-Autostart-enabled") && value == QLatin1String("false"))) {
            return false;
        }
        hasCommand = hasCommand || (key == QLatin1String("Exec") && !value.isEmpty());
    }
    return hasCommand;
}

/// As a value of type string.
QString escaped(QString text) {
    return text.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
        .replace(QLatin1Char('\n'), QStringLiteral("\\n"))
        .replace(QLatin1Char('\t'), QStringLiteral("\\t"))
        .replace(QLatin1Char('\r'), QStringLiteral("\\r"));
}

} // namespace

LoginItem::LoginItem(QString desktopName, QString name, QStringList command)
    : m_desktopName(std::move(desktopName)), m_name(std::move(name)), m_command(std::move(command)) {}

LoginItem LoginItem::ofThisProgram() {
    return {QGuiApplication::desktopFileName(),
            QGuiApplication::applicationDisplayName(),
            {QCoreApplication::applicationFilePath(), QStringLiteral("--background")}};
}

QString LoginItem::path() const {
    return configurationFolder() + QStringLiteral("/autostart/") + m_desktopName + QStringLiteral(".desktop");
}

QString LoginItem::systemFile() const {
    for (const QString& folder : systemFolders()) {
        QString file = folder + QStringLiteral("/autostart/") + m_desktopName + QStringLiteral(".desktop");
        if (QFileInfo::exists(file)) {
            return file;
        }
    }
    return {};
}

bool LoginItem::isOn() const {
    return startsItsProgram(path()).value_or(startsItsProgram(systemFile()).value_or(false));
}

bool LoginItem::setOn(bool isOn) const {
    const QString file = path();
    if (!isOn && systemFile().isEmpty()) {
        // A link that leads nowhere is no file to Qt, and goes as well.
        if (QFile::remove(file) || !(QFileInfo::exists(file) || QFileInfo(file).isSymLink())) {
            return true;
        }
        VXLog("%@ cannot be removed", file);
        return false;
    }
    QString entry = QStringLiteral("[Desktop Entry]\nType=Application\nVersion=1.0\nName=%1\nIcon=%2\nExec=%3\n")
                        .arg(escaped(m_name), escaped(m_desktopName), escaped(execValue(m_command)));
    entry += isOn ? QStringLiteral("X-GNOME-Autostart-enabled=true\n") : QStringLiteral("Hidden=true\n");
    if (!QDir().mkpath(QFileInfo(file).path())) {
        VXLog("%@ cannot be made", QFileInfo(file).path());
        return false;
    }
    NSError error;
    if (!VXWriteFileAtomically(file, entry.toStdString(), &error)) {
        VXLog("%@ cannot be written: %@", file, error.localizedDescription);
        return false;
    }
    return true;
}

QString LoginItem::execValue(const QStringList& arguments) {
    // Those that a shell, or whoever reads a desktop entry, takes for something else.
    const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    QStringList words;
    for (QString argument : arguments) {
        argument.replace(QLatin1Char('%'), QStringLiteral("%%"));
        bool isToBeQuoted = argument.isEmpty();
        QString quoted;
        for (const QChar character : std::as_const(argument)) {
            isToBeQuoted = isToBeQuoted || reserved.contains(character);
            if (QStringLiteral("\"`$\\").contains(character)) {
                quoted += QLatin1Char('\\');
            }
            quoted += character;
        }
        words.push_back(isToBeQuoted ? QLatin1Char('"') + quoted + QLatin1Char('"') : argument);
    }
    return words.join(QLatin1Char(' '));
}
