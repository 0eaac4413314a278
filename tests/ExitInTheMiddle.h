// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <gtest/gtest.h>

/// To be called before an EXPECT_EXIT whose process ends in the middle of dialogs and event loops: it starts as a new
/// one, since a copy would share this one's connections, and nobody asks it what it did not free.
inline void expectExitInTheMiddle() {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    qputenv("ASAN_OPTIONS", qgetenv("ASAN_OPTIONS") + ":detect_leaks=0");
}
