// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QString>

#include <cstdio>

/// Tells whoever has started the program by a command what is wrong.
inline void complain(const QString& line) {
    const QString program = QCoreApplication::applicationName().toLower();
    std::fprintf(stderr, "%s: %s\n", program.toUtf8().constData(), line.toUtf8().constData());
}
