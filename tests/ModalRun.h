// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSApplication.h>

#include <QTimer>

#include <functional>

/// Calls `inside` as soon as the modal run has begun that is to begin next; before it does, what leads up to it may let
/// timers run.
inline void whenNextModalRunHasBegun(NSApplication& application, const std::function<void()>& inside) {
    auto* const timer = new QTimer(&application);
    QObject::connect(timer, &QTimer::timeout, &application,
                     [&application, timer, inside, before = application.modalWindow()] {
                         if (application.modalWindow() != before) {
                             timer->stop();
                             timer->deleteLater();
                             inside();
                         }
                     });
    timer->start(1);
}
