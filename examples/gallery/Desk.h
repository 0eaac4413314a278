// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSGeometry.h>

#include <QImage>

#include <memory>

class QWidget;

/// What pictures are taken of: the screen with an even ground behind all windows, or, on a platform without a screen,
/// what such a screen would show, composed of the windows and their shadows.
class Desk {
public:
    Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;
    ~Desk();

    /// What `area` of the screen shows, once nothing changes there any more; the event loop runs meanwhile.
    [[nodiscard]] QImage settledPicture(const NSRect& area) const;
    /// The same at once, without the event loop: for the middle of an animation.
    [[nodiscard]] QImage frozenPicture(const NSRect& area) const;

    /// Draws the ground over all of `image`.
    static void paintGround(QImage& image);

private:
    [[nodiscard]] QImage picture(const NSRect& area) const;
    [[nodiscard]] QImage settled(const NSRect& area, void (*pause)()) const;

    bool m_isScreen;                   // that can be seen
    std::unique_ptr<QWidget> m_ground; // of a screen
};
