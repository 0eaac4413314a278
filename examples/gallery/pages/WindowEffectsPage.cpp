// SPDX-License-Identifier: MIT
#include "WindowEffectsPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/hud/NSWindow+NSWindowAdditions.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSImage.h>

namespace {

constexpr NSSize shownWindowSize{300, 180}; // points
constexpr double cornerRadius = 12;
constexpr double faded = 0.5;
constexpr double blurRadius = 3;

/// A rounded body in two colours, a little of which lets through what is behind.
NSColor bodyColor() {
    constexpr double alpha = 0.85;
    const std::shared_ptr<NSImage> image = NSImage::initWithSize(shownWindowSize);
    image->lockFocus();
    NSBezierPath::bezierPathWithRoundedRect({NSZeroPoint, shownWindowSize}, cornerRadius, cornerRadius).addClip();
    NSColor::colorWithCalibratedRed(0.16, 0.28, 0.42, alpha).setFill();
    NSBezierPath::fillRect({NSZeroPoint, shownWindowSize});
    NSColor::colorWithCalibratedRed(0.93, 0.69, 0.24, alpha).setFill();
    NSBezierPath::fillRect(NSMakeRect(0, 0, shownWindowSize.width, shownWindowSize.height / 3));
    image->unlockFocus();
    return NSColor::colorWithPatternImage(image);
}

QString availability(const char* what, WindowEffects::Effect effect) {
    return QStringLiteral("%1: %2").arg(QString::fromLatin1(what), WindowEffects::sharedEffects().isAvailable(effect)
                                                                       ? QStringLiteral("offered here")
                                                                       : QStringLiteral("not offered here"));
}

} // namespace

WindowEffectsPage::WindowEffectsPage()
    : GalleryPage(
          QStringLiteral("window-effects"), QStringLiteral("Window effects"),
          QStringLiteral("Shadow, blur of what shines through, inverted colours and opacity, for any window, as "
                         "far as the desktop offers them."),
          {QStringLiteral("NSWindow+NSWindowAdditions"), QStringLiteral("WindowEffects"),
           QStringLiteral("WindowShadow")}) {}

WindowEffectsPage::~WindowEffectsPage() = default;

void WindowEffectsPage::makeWindow() {
    m_window = std::make_unique<NSWindow>(NSRect{NSZeroPoint, shownWindowSize}, NSBorderlessWindowMask,
                                          NSBackingStoreBuffered, false);
    m_window->setWindowTitle(QStringLiteral("Window with effects"));
    m_window->setOpaque(false);
    m_window->setHasShadow(false);
    m_window->setManagement(NSWindowManagement::Bypassing);
    m_window->setBackgroundColor(bodyColor());
    auto* const text = new NSTextField(NSMakeRect(20, 80, 260, 60));
    makeWhite(*text, QStringLiteral("What the effects are shown with."), NSFont::boldSystemFontOfSize(15));
    ViewCore::of(m_window->contentView())->addSubview(text);
    m_window->center();
}

void WindowEffectsPage::build(Stage& stage, SettingsPane& settings) {
    makeWindow();
    stage.putText(NSMakeRect(0, 0, 420, 64),
                  QStringList{availability("Shadow", WindowEffects::Effect::Shadow),
                              availability("Blur", WindowEffects::Effect::Blur),
                              availability("Colour inversion", WindowEffects::Effect::ColorInversion),
                              availability("Translucency", WindowEffects::Effect::Translucency)}
                      .join(QLatin1Char('\n')));
    auto& show = settings.addButton(QStringLiteral("&Show Window"), [this] { m_window->orderFront(nullptr); });
    settings.addButton(QStringLiteral("&Hide Window"), [this] { m_window->orderOut(nullptr); });
    settings.addCheckBox(QStringLiteral("Shadow"), false, [this, &show](bool isOn) {
        if (!m_window->isVisible()) {
            show.click(); // the window server must know a window that is to have one
        }
        if (isOn) {
            setUpWindowShadow(*m_window);
        } else {
            WindowEffects::sharedEffects().setShadow(*m_window, std::nullopt);
        }
    });
    settings.addCheckBox(QStringLiteral("Blur of what is behind"), false,
                         [this](bool isOn) { m_window->setBackgroundBlurRadius(isOn ? blurRadius : 0); });
    settings.addCheckBox(QStringLiteral("Inverted colours"), false,
                         [this](bool isOn) { WindowEffects::sharedEffects().setColorInversion(*m_window, isOn); });
    settings.addSlider(QStringLiteral("Opacity"), 0.1, 1, 1, [this](double alpha) { m_window->setAlphaValue(alpha); });
}

void WindowEffectsPage::leave() {
    m_window.reset();
}

void WindowEffectsPage::takePictures(PictureBook& book) {
    const auto take = [&](const char* name, const char* caption) {
        book.addWindow(QStringLiteral("effect-") + QString::fromLatin1(name), QString::fromLatin1(caption), *m_window,
                       72);
    };
    m_window->orderFront(nullptr);
    take("none", "Window without effects");
    setUpWindowShadow(*m_window);
    take("shadow", "Shadow");
    WindowEffects::sharedEffects().setShadow(*m_window, std::nullopt);
    m_window->setBackgroundBlurRadius(blurRadius);
    take("blur", "Blur, where it is offered");
    m_window->setBackgroundBlurRadius(0);
    enableColorInversionForWindow(*m_window);
    take("inversion", "Inverted colours");
    WindowEffects::sharedEffects().setColorInversion(*m_window, false);
    m_window->setAlphaValue(faded);
    take("opacity", "Opacity 0.5");
    m_window->setAlphaValue(1);
    m_window->orderOut(nullptr);
}
