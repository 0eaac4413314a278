// SPDX-License-Identifier: MIT
#include "SettingsPane.h"

#include "Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDRadioButton.h>
#include <VXKit/controls/LTHUDTextField.h>

#include <QComboBox>
#include <QSlider>
#include <QVBoxLayout>

#include <cmath>

namespace {

// Points.
constexpr int noteHeight = 15;
constexpr int fieldHeight = 22;
constexpr int buttonHeight = 28;
constexpr int spacing = 5;
constexpr int spaceAboveCaption = 4;
constexpr double captionSize = 11;

constexpr int mostRadioButtons = 4;
constexpr int sliderSteps = 200;
constexpr double rangeInHundredths = 3;

QString numberText(const QString& title, double value, bool isFine) {
    return QStringLiteral("%1: %2").arg(title,
                                        isFine ? QString::number(value, 'f', 2) : QString::number(std::lround(value)));
}

} // namespace

SettingsPane::SettingsPane(const NSRect& frame) : m_rows(new QVBoxLayout(this)) {
    setFrame(frame);
    m_rows->setContentsMargins(0, 0, 0, 0);
    m_rows->setSpacing(spacing);
    m_rows->setAlignment(Qt::AlignTop);
}

NSTextField& SettingsPane::addLine(const QString& text, int height) {
    if (m_rows->count() > 0) {
        m_rows->addSpacing(spaceAboveCaption);
    }
    auto* const field = new NSTextField(this);
    makeExplaining(*field, text, NSFont::systemFontOfSize(captionSize));
    field->setFixedHeight(height);
    m_rows->addWidget(field);
    return *field;
}

NSTextField& SettingsPane::addNote(const QString& text, int lines) {
    return addLine(text, noteHeight * lines);
}

LTHUDCheckBox& SettingsPane::addCheckBox(const QString& title, bool value, const std::function<void(bool)>& change) {
    auto* const box = new LTHUDCheckBox(this);
    box->setTitle(title);
    box->setChecked(value);
    connect(box, &QAbstractButton::toggled, this, change);
    m_rows->addWidget(box, 0, Qt::AlignLeft);
    return *box;
}

void SettingsPane::addChoice(const QString& title, const QStringList& choices, int value,
                             const std::function<void(int)>& change) {
    addLine(title, noteHeight);
    if (choices.size() > mostRadioButtons) {
        auto* const menu = new QComboBox(this);
        menu->addItems(choices);
        menu->setCurrentIndex(value);
        menu->setAccessibleName(title);
        connect(menu, &QComboBox::currentIndexChanged, this, change);
        m_rows->addWidget(menu);
        return;
    }
    // Of its own superview, within which one radio button at most is on.
    auto* const group = new NSView(this);
    group->setAccessibleName(title);
    auto* const rows = new QVBoxLayout(group);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(spacing);
    for (int index = 0; index < choices.size(); ++index) {
        auto* const button = new LTHUDRadioButton(group);
        button->setTitle(choices[index]);
        button->setChecked(index == value);
        connect(button, &QAbstractButton::toggled, this, [change, index](bool isOn) {
            if (isOn) {
                change(index);
            }
        });
        rows->addWidget(button, 0, Qt::AlignLeft);
    }
    m_rows->addWidget(group);
}

void SettingsPane::addSlider(const QString& title, double least, double most, double value,
                             const std::function<void(double)>& change) {
    const bool isFine = most - least <= rangeInHundredths;
    NSTextField& caption = addLine(numberText(title, value, isFine), noteHeight);
    auto* const slider = new QSlider(Qt::Horizontal, this);
    slider->setRange(0, sliderSteps);
    slider->setPageStep(sliderSteps / 10);
    slider->setValue(static_cast<int>(std::lround((value - least) / (most - least) * sliderSteps)));
    slider->setAccessibleName(title);
    connect(slider, &QSlider::valueChanged, this, [=, &caption](int step) {
        const double now = least + (most - least) * step / sliderSteps;
        caption.setStringValue(numberText(title, now, isFine));
        change(now);
    });
    m_rows->addWidget(slider);
}

LTHUDTextField& SettingsPane::addText(const QString& title, const QString& value,
                                      const std::function<void(const QString&)>& change) {
    addLine(title, noteHeight);
    auto* const field = new LTHUDTextField(this);
    field->setText(value);
    field->setAccessibleName(title);
    field->setFixedHeight(fieldHeight);
    connect(field, &QLineEdit::textChanged, this, change);
    m_rows->addWidget(field);
    return *field;
}

void SettingsPane::addStates(const std::vector<NSButton*>& buttons) {
    addCheckBox(QStringLiteral("Enabled"), true, [buttons](bool isOn) {
        for (NSButton* button : buttons) {
            button->setEnabled(isOn);
        }
    });
    addCheckBox(QStringLiteral("Shown pressed"), false, [buttons](bool isOn) {
        for (NSButton* button : buttons) {
            button->setDown(isOn);
        }
    });
}

LTHUDButton& SettingsPane::addButton(const QString& title, const std::function<void()>& action) {
    auto* const button = new LTHUDButton(this);
    button->setTitle(title);
    button->setFixedHeight(buttonHeight);
    connect(button, &QAbstractButton::clicked, this, action);
    m_rows->addWidget(button);
    return *button;
}
