// SPDX-License-Identifier: MIT
// The main function of every test executable: an empty home folder that goes away with the process, so that no test
// sees or changes the settings and files of the person who runs it.
#include <QTemporaryDir>
#include <QtGlobal>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QTemporaryDir home;
    if (!home.isValid()) {
        qFatal("No temporary home folder: %s", qPrintable(home.errorString()));
    }
    qputenv("HOME", home.path().toUtf8());
    for (const char* folder : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_DIRS"}) {
        qputenv(folder, (home.path() + QLatin1Char('/') + QString::fromLatin1(folder)).toUtf8());
    }
    return RUN_ALL_TESTS();
}
