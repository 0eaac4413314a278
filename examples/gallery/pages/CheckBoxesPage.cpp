// SPDX-License-Identifier: MIT
#include "CheckBoxesPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDCheckBoxCell.h>
#include <VXKit/controls/LTHUDRadioButton.h>

namespace {

constexpr NSSize boxSize{140, 22};   // points
constexpr NSSize radioSize{140, 20}; // points

/// A button whose cell is that of a column of check boxes, which is seen outside of a table this way.
class BareBox : public NSButton {
public:
    explicit BareBox(const NSRect& frame) : NSButton(frame) {
        setCheckable(true);
        setAccessibleName(QStringLiteral("Box of a column"));
    }

    [[nodiscard]] NSCellClass cellClass() const override { return NSCellClassOf<LTHUDCheckBoxCell>(); }
};

constexpr const char* boxValues[] = {"off", "on", "installed"};

int numberOfValue(int index) {
    return index == 2 ? NSMixedState : index;
}

} // namespace

CheckBoxesPage::CheckBoxesPage()
    : GalleryPage(QStringLiteral("check-boxes"), QStringLiteral("Check boxes and radios"),
                  QStringLiteral("Off and on, and in the column of a table a third state: installed already."),
                  {QStringLiteral("LTHUDCheckBox"), QStringLiteral("LTHUDCheckBoxCell"),
                   QStringLiteral("LTHUDRadioButton"), QStringLiteral("LTHUDRadioButtonCell")}) {}

void CheckBoxesPage::build(Stage& stage, SettingsPane& settings) {
    stage.putText(NSMakeRect(0, 3, 120, 16), QStringLiteral("Check boxes"));
    auto& box = stage.put<LTHUDCheckBox>(NSMakeRect(130, 0, 250, boxSize.height));
    box.setTitle(QStringLiteral("Keep a copy"));
    auto& other = stage.put<LTHUDCheckBox>(NSMakeRect(130, 28, 250, boxSize.height));
    other.setTitle(QStringLiteral("Ask first"));
    other.setChecked(true);
    stage.putText(NSMakeRect(0, 77, 120, 16), QStringLiteral("Radio buttons"));
    std::vector<NSButton*> buttons{&box, &other};
    double y = 75;
    for (const char* title : {"Every day", "Every week", "Never"}) {
        auto& radio = stage.put<LTHUDRadioButton>(NSMakeRect(130, y, 200, radioSize.height));
        radio.setTitle(QString::fromLatin1(title));
        radio.setChecked(buttons.size() == 2);
        buttons.push_back(&radio);
        y += 26;
    }
    stage.putText(NSMakeRect(0, 177, 120, 16), QStringLiteral("Box of a column"));
    auto& bare = stage.put<BareBox>(NSMakeRect(130, 175, 24, 20));
    stage.putText(NSMakeRect(0, 220, 420, 32),
                  QStringLiteral("Space toggles the one with the keyboard; the arrow keys go from one radio button to "
                                 "the next."));

    settings.addText(QStringLiteral("Title of the first check box"), box.title(),
                     [&box](const QString& title) { box.setTitle(title); });
    settings.addStates(buttons);
    settings.addChoice(QStringLiteral("Box of the column"),
                       {QStringLiteral("Off"), QStringLiteral("On"), QStringLiteral("Installed")}, 0,
                       [&bare](int index) {
                           bare.cell().setIntValue(numberOfValue(index));
                           bare.setNeedsDisplay(true);
                       });
    settings.addChoice(QStringLiteral("Size of the first title"),
                       {QStringLiteral("Regular"), QStringLiteral("Small"), QStringLiteral("Mini")}, 0,
                       [&box](int index) {
                           box.cell().setControlSize(static_cast<NSControlSize>(index));
                           box.setTitle(box.title());
                       });
}

void CheckBoxesPage::takePictures(PictureBook& book) {
    for (const bool isOn : {false, true}) {
        const QString value = isOn ? QStringLiteral("on") : QStringLiteral("off");
        book.addStates(QStringLiteral("check-box-") + value, QStringLiteral("Check box ") + value, [isOn] {
            auto* const box = new LTHUDCheckBox({NSZeroPoint, boxSize});
            box->setTitle(QStringLiteral("Keep a copy"));
            box->setChecked(isOn);
            return box;
        });
        book.addStates(QStringLiteral("radio-button-") + value, QStringLiteral("Radio button ") + value, [isOn] {
            auto* const radio = new LTHUDRadioButton({NSZeroPoint, radioSize});
            radio->setTitle(QStringLiteral("Every day"));
            radio->setChecked(isOn);
            return radio;
        });
    }
    for (int index = 0; index < 3; ++index) {
        const QString value = QString::fromLatin1(boxValues[index]);
        book.addStates(QStringLiteral("box-of-column-") + value, QStringLiteral("Box of a column, ") + value,
                       [index] {
                           auto* const box = new BareBox(NSMakeRect(0, 0, 90, 20));
                           box->cell().setIntValue(numberOfValue(index));
                           return box;
                       },
                       {ControlState::Normal, ControlState::Pressed});
    }
}
