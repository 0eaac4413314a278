// SPDX-License-Identifier: MIT
// What a person does at a desktop and sees of it, for tests in a session with an X server.
#pragma once

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QString>
#include <QStringList>
#include <QTest>

#include <functional>

#include <gtest/gtest.h>

inline constexpr int waitingTime = 15000; // milliseconds

inline bool waitFor(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, waitingTime);
}

/// Presses and releases as a device would: what window gets it is the server's business.
inline void xdotool(const QStringList& arguments) {
    ASSERT_EQ(QProcess::execute(QStringLiteral("xdotool"), arguments), 0);
}

inline void click(const QPoint& place) {
    xdotool({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y()),
             QStringLiteral("click"), QStringLiteral("1")});
}

inline void pressKey(const char* key) {
    xdotool({QStringLiteral("key"), QString::fromLatin1(key)});
}

inline QImage pictureOfScreen() {
    return QGuiApplication::primaryScreen()->grabWindow(0).toImage().convertToFormat(QImage::Format_RGB32);
}

/// Keeps a picture of the screen in the folder that VXKIT_PICTURES names, if it names one.
inline void keepPicture(const char* title) {
    const QString folder = qEnvironmentVariable("VXKIT_PICTURES");
    if (!folder.isEmpty()) {
        QDir().mkpath(folder);
        QTest::qWait(300); // for the compositing manager
        pictureOfScreen().save(QDir(folder).filePath(QString::fromLatin1(title) + QStringLiteral(".png")));
    }
}
