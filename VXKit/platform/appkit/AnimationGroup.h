// SPDX-License-Identifier: MIT
// Tells when what was set in motion together has come to its end; for NSAnimationContext and FrameAnimations alone.
#pragma once

#include <QCoreApplication>
#include <QMetaObject>

#include <functional>
#include <utility>

/// Counts who still holds it, and when nobody does has the event loop call `whenEnded`, once. It begins held by whoever
/// makes it.
///
/// Not at once, because an animation also ends in the middle of a frame being set, or of a view being destroyed.
class AnimationGroup {
public:
    explicit AnimationGroup(std::function<void()> whenEnded) : m_whenEnded(std::move(whenEnded)) {}

    void hold() { ++m_holders; }
    void release() {
        if (--m_holders == 0 && m_whenEnded && QCoreApplication::instance()) {
            QMetaObject::invokeMethod(QCoreApplication::instance(), std::exchange(m_whenEnded, nullptr),
                                      Qt::QueuedConnection);
        }
    }

private:
    std::function<void()> m_whenEnded;
    int m_holders = 1;
};
