// SPDX-License-Identifier: MIT
#include "GeneralPage.h"

#include "SnippetQuestions.h"
#include "WindowOpacity.h"

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXLog.h>

#include <QPalette>
#include <QSignalBlocker>
#include <QSlider>

#include <cmath>
#include <utility>

namespace {

// The kit's.
constexpr const char* logKey = "VXLoggingEnabled";
constexpr const char* closeKey = "VXCloseMainWindowOnDeactivate";

constexpr double percent = 0.01;
constexpr int smallStep = 5; // percent, of the arrow keys
constexpr int largeStep = 10;

constexpr double fadedWhite = 0.45; // of a text beside a control that is disabled

// Of the slider's filled part: dark panels have no colour of the desktop's.
constexpr QRgb fillColor = 0xffb4b4b4;
constexpr QRgb fadedFillColor = 0xff505050;

void keep(const char* key, bool value) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    defaults.setBool(value, key);
    if (!defaults.synchronize()) {
        VXLog("%s could not be kept", key);
    }
}

int inPercent(double opacity) {
    return static_cast<int>(std::lround(opacity / percent));
}

} // namespace

GeneralPage::GeneralPage(Actions actions) : m_actions(std::move(actions)) {
    load(QStringLiteral("GeneralPage"));
    m_closes->setState(VXApplicationHooks().shouldCloseMainWindowOnDeactivate() ? NSOnState : NSOffState);
    connect(m_closes, &QAbstractButton::toggled, this, [this](bool closes) {
        keep(closeKey, closes);
        followClosing(closes);
        m_actions.applyClosing();
    });
    tie(*m_asks, removeWithoutAskingKey, false);
    tie(*m_reducesMotion, VXReduceMotion, true);
    tie(*m_logs, logKey, true);
    connect(m_startsAtLogin, &QAbstractButton::toggled, this, &GeneralPage::startAtLogin);

    QPalette palette = m_opacity->palette();
    palette.setColor(QPalette::Highlight, QColor::fromRgb(fillColor));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor::fromRgb(fadedFillColor));
    m_opacity->setPalette(palette);
    m_opacity->setRange(inPercent(leastWindowOpacity), inPercent(fullWindowOpacity));
    m_opacity->setSingleStep(smallStep);
    m_opacity->setPageStep(largeStep);
    m_opacity->setValue(inPercent(keptWindowOpacity()));
    m_opacityValue->setStringValue(QStringLiteral("%1 %").arg(m_opacity->value()));
    connect(m_opacity, &QSlider::valueChanged, this, &GeneralPage::opacityHasChanged);
    // Not at every step of a drag: each is a file.
    connect(m_opacity, &QSlider::sliderReleased, this, [this] { keepWindowOpacity(m_opacity->value() * percent); });
    followClosing(m_closes->isChecked());
    reload();
}

void GeneralPage::connectNib(NSNibConnections& nib) {
    nib.outlet(QStringLiteral("closesBox"), m_closes);
    nib.outlet(QStringLiteral("opacityLabel"), m_opacityLabel);
    nib.outlet(QStringLiteral("opacitySlider"), m_opacity);
    nib.outlet(QStringLiteral("opacityField"), m_opacityValue);
    nib.outlet(QStringLiteral("asksBox"), m_asks);
    nib.outlet(QStringLiteral("motionBox"), m_reducesMotion);
    nib.outlet(QStringLiteral("loginBox"), m_startsAtLogin);
    nib.outlet(QStringLiteral("logBox"), m_logs);
}

/// `box` is on where the user default `key` has the value `isOnWhere`, and sets it so.
void GeneralPage::tie(LTHUDCheckBox& box, const char* key, bool isOnWhere) {
    const bool value = NSUserDefaults::standardUserDefaults().boolForKey(key);
    box.setState(value == isOnWhere ? NSOnState : NSOffState);
    connect(&box, &QAbstractButton::toggled, this, [key, isOnWhere](bool isOn) { keep(key, isOn == isOnWhere); });
}

/// A window that closes when it is left is never seen through, so there is nothing to choose.
void GeneralPage::followClosing(bool closes) {
    m_opacity->setEnabled(!closes);
    const NSColor color = closes ? NSColor::colorWithCalibratedWhite(fadedWhite, 1) : NSColor::whiteColor();
    m_opacityLabel->setTextColor(color);
    m_opacityValue->setTextColor(color);
}

void GeneralPage::opacityHasChanged() {
    m_opacityValue->setStringValue(QStringLiteral("%1 %").arg(m_opacity->value()));
    const double opacity = m_opacity->value() * percent;
    m_actions.setWindowOpacity(opacity);
    if (!m_opacity->isSliderDown()) {
        keepWindowOpacity(opacity);
    }
}

void GeneralPage::reload() {
    const QSignalBlocker blocker(m_startsAtLogin);
    m_startsAtLogin->setState(m_loginItem.isOn() ? NSOnState : NSOffState);
    // Changed by the question before a removal as well.
    const QSignalBlocker asksBlocker(m_asks);
    m_asks->setState(asksBeforeRemoving() ? NSOnState : NSOffState);
}

void GeneralPage::startAtLogin(bool starts) {
    if (!m_loginItem.setOn(starts)) {
        NSBeep();
    }
    reload();
}
