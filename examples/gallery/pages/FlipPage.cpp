// SPDX-License-Identifier: MIT
#include "FlipPage.h"

#include "../DemoPanel.h"
#include "../GalleryApplication.h"
#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/transitions/FliprAnimation.h>
#include <VXKit/transitions/FliprPanel.h>
#include <VXKit/transitions/FliprView.h>
#include <VXKit/transitions/NSWindow+Flipr.h>

#include <QTimer>

namespace {

// Points.
constexpr NSSize frontSize{340, 220};
constexpr NSSize backSize{400, 260};
constexpr double pictureMargin = 56;

struct Moment {
    float progress;
    const char* name;
};

constexpr Moment moments[] = {{0.3F, "first-half"}, {0.7F, "second-half"}};
constexpr int frameTime = 1; // milliseconds

/// Calls `action` in the first moments of the flip that is about to begin, with the view in which the window turns.
void whileTurning(const std::function<void(FliprView& card)>& action) {
    QTimer::singleShot(frameTime, qApp, [action] {
        auto* const panel = FliprView::isInAnimation() ? dynamic_cast<FliprPanel*>(flippingWindow()) : nullptr;
        if (panel && panel->card().animation() && panel->card().animation()->isAnimating()) {
            action(panel->card());
        } else {
            whileTurning(action);
        }
    });
}

} // namespace

FlipPage::FlipPage()
    : GalleryPage(QStringLiteral("flip"), QStringLiteral("Flip"),
                  QStringLiteral("A window turns over, like a card, and shows another one on its back."),
                  {QStringLiteral("NSWindow+Flipr"), QStringLiteral("FliprPanel"), QStringLiteral("FliprView"),
                   QStringLiteral("FliprAnimation")}) {}

FlipPage::~FlipPage() = default;

void FlipPage::makeWindows() {
    m_front = makeDemoPanel(frontSize, QStringLiteral("Front"), QStringLiteral("The front.\nIts back is larger."));
    m_back = makeDemoPanel(backSize, QStringLiteral("Back"), QStringLiteral("The back.\nIts front is smaller."));
}

void FlipPage::build(Stage& stage, SettingsPane& settings) {
    makeWindows();
    stage.putText(NSMakeRect(0, 0, 420, 32),
                  QStringLiteral("“Flip” shows the front where neither side is there, and turns it over otherwise."));
    settings.addButton(QStringLiteral("&Flip"), [this] {
        if (m_front->isVisible()) {
            flipToShowWindow(*m_front, *m_back, m_goesForward);
        } else if (m_back->isVisible()) {
            flipToShowWindow(*m_back, *m_front, m_goesForward);
        } else {
            m_front->makeKeyAndOrderFront(nullptr);
        }
    });
    settings.addChoice(QStringLiteral("Direction"), {QStringLiteral("Forward"), QStringLiteral("Backward")},
                       m_goesForward ? 0 : 1, [this](int index) { m_goesForward = index == 0; });
    settings.addButton(QStringLiteral("&Close Both"), [this] {
        m_front->orderOut(nullptr);
        m_back->orderOut(nullptr);
    });
}

void FlipPage::leave() {
    m_front.reset();
    m_back.reset();
}

void FlipPage::takePictures(PictureBook& book) {
    GalleryApplication::setReducesMotion(false);
    const NSRect area = NSInsetRect(NSUnionRect(m_front->frame(), m_back->frame()), -pictureMargin, -pictureMargin);
    for (const bool goesForward : {true, false}) {
        const QString direction = goesForward ? QStringLiteral("forward") : QStringLiteral("backward");
        showWithKeyboard(*m_front);
        whileTurning([&](FliprView& card) {
            for (const Moment& moment : moments) {
                card.animation()->setCurrentProgress(moment.progress);
                book.addFrozenArea(
                    QStringLiteral("flip-%1-%2").arg(direction, QString::fromLatin1(moment.name)),
                    QStringLiteral("Flip %1, %2").arg(direction, QString::number(static_cast<double>(moment.progress))),
                    area);
            }
            card.animation()->stopAnimation();
        });
        flipToShowWindow(*m_front, *m_back, goesForward);
        m_back->orderOut(nullptr);
    }
    GalleryApplication::setReducesMotion(true);
}
