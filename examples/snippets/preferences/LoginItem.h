// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// Whether the desktop starts the program at the beginning of a session: a desktop entry in the user's folder
/// `autostart`, which other programs (session settings, tweak tools) and the user may change or take away as well. So
/// it is read each time it is asked for.
class LoginItem {
public:
    /// Of the program that the desktop knows as `desktopName` (`org.vxkit.Snippets`); `name` is what users read, and
    /// `command` the path of the program, then its arguments.
    LoginItem(QString desktopName, QString name, QStringList command);

    /// The one of the running program, which starts with its window closed.
    [[nodiscard]] static LoginItem ofThisProgram();

    /// The user's own file, whether it is there or not.
    [[nodiscard]] QString path() const;

    /// Whether the next session starts the program: the user's file says so or, where there is none, the system's.
    [[nodiscard]] bool isOn() const;

    /// Has the next session start the program, or not. False, with the reason in the log, where that cannot be written.
    [[nodiscard]] bool setOn(bool isOn) const;

    /// `arguments` as the value of the key Exec.
    [[nodiscard]] static QString execValue(const QStringList& arguments);

private:
    [[nodiscard]] QString systemFile() const;

    QString m_desktopName;
    QString m_name;
    QStringList m_command;
};
