// SPDX-License-Identifier: MIT
#include "ProgressPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDProgressIndicator.h>

namespace {

constexpr double firstValue = 40; // of 100
constexpr double largeWheel = 32; // points
constexpr double smallWheel = 16;
constexpr double barHeight = 16;

NSProgressIndicator* makeIndicator(NSProgressIndicator* indicator, NSProgressIndicatorStyle style, bool isKnown) {
    indicator->setIndicatorStyle(style);
    indicator->setIndeterminate(!isKnown);
    indicator->setDoubleValue(firstValue);
    return indicator;
}

} // namespace

ProgressPage::ProgressPage()
    : GalleryPage(QStringLiteral("progress"), QStringLiteral("Progress"),
                  QStringLiteral("How far something is, or that something goes on. The one of dark panels stands on a "
                                 "faint disc."),
                  {QStringLiteral("LTHUDProgressIndicator"), QStringLiteral("NSProgressIndicator")}) {}

void ProgressPage::build(Stage& stage, SettingsPane& settings) {
    stage.putText(NSMakeRect(0, 10, 120, 16), QStringLiteral("On a disc"));
    auto& wheel = stage.put<LTHUDProgressIndicator>(NSMakeRect(130, 0, largeWheel, largeWheel));
    auto& small = stage.put<LTHUDProgressIndicator>(NSMakeRect(180, 8, smallWheel, smallWheel));
    small.setControlSize(NSSmallControlSize);
    stage.putText(NSMakeRect(0, 64, 120, 16), QStringLiteral("Plain wheel"));
    auto& plain = stage.put<NSProgressIndicator>(NSMakeRect(130, 54, largeWheel, largeWheel));
    stage.putText(NSMakeRect(0, 112, 120, 16), QStringLiteral("Bar"));
    auto& bar = stage.put<NSProgressIndicator>(NSMakeRect(130, 112, 240, barHeight));
    const std::vector<NSProgressIndicator*> all{&wheel, &small, &plain, &bar};
    for (NSProgressIndicator* indicator : all) {
        indicator->setIndicatorStyle(indicator == &bar ? NSProgressIndicatorBarStyle
                                                       : NSProgressIndicatorSpinningStyle);
        indicator->setDoubleValue(firstValue);
        indicator->startAnimation(nullptr);
    }
    bar.setIndeterminate(false);

    const auto forAll = [all](const std::function<void(NSProgressIndicator&)>& change) {
        for (NSProgressIndicator* indicator : all) {
            change(*indicator);
        }
    };
    settings.addCheckBox(QStringLiteral("Moving"), true, [forAll](bool isOn) {
        forAll([isOn](auto& each) { isOn ? each.startAnimation(nullptr) : each.stopAnimation(nullptr); });
    });
    settings.addCheckBox(QStringLiteral("Shown while it stands"), true,
                         [forAll](bool isOn) { forAll([isOn](auto& each) { each.setDisplayedWhenStopped(isOn); }); });
    settings.addCheckBox(QStringLiteral("Wheels know how far"), false, [&wheel, &small, &plain](bool isOn) {
        for (NSProgressIndicator* each :
             {static_cast<NSProgressIndicator*>(&wheel), static_cast<NSProgressIndicator*>(&small), &plain}) {
            each->setIndeterminate(!isOn);
        }
    });
    settings.addCheckBox(QStringLiteral("Bar knows how far"), true, [&bar](bool isOn) { bar.setIndeterminate(!isOn); });
    settings.addCheckBox(QStringLiteral("Enabled"), true,
                         [forAll](bool isOn) { forAll([isOn](auto& each) { each.setEnabled(isOn); }); });
    settings.addSlider(QStringLiteral("Value"), 0, 100, firstValue,
                       [forAll](double value) { forAll([value](auto& each) { each.setDoubleValue(value); }); });
    settings.addSlider(QStringLiteral("Width of the bar"), 20, 290, bar.frame().size.width,
                       [&bar](double width) { bar.setFrame(NSMakeRect(130, 112, width, barHeight)); });
}

void ProgressPage::takePictures(PictureBook& book) {
    const std::vector<ControlState> states{ControlState::Normal, ControlState::Disabled};
    for (const bool isKnown : {false, true}) {
        const QString kind = isKnown ? QStringLiteral("determinate") : QStringLiteral("indeterminate");
        book.addStates(
            QStringLiteral("progress-disc-") + kind, QStringLiteral("Disc, ") + kind,
            [isKnown] {
                return makeIndicator(new LTHUDProgressIndicator(NSMakeRect(0, 0, largeWheel, largeWheel)),
                                     NSProgressIndicatorSpinningStyle, isKnown);
            },
            states);
        book.addStates(
            QStringLiteral("progress-bar-") + kind, QStringLiteral("Bar, ") + kind,
            [isKnown] {
                return makeIndicator(new NSProgressIndicator(NSMakeRect(0, 0, 140, barHeight)),
                                     NSProgressIndicatorBarStyle, isKnown);
            },
            states);
    }
}
