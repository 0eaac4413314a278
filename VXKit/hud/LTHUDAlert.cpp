// SPDX-License-Identifier: MIT
#include <VXKit/hud/LTHUDAlert.h>

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>
#include <VXKit/transitions/NSWindow+NoodleEffects.h>

#include <QPointer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// Points.
constexpr double windowWidth = 422;
constexpr double leastHeight = 148;
constexpr double heightWithoutTexts = 68;
constexpr double sheetSaving = 20; // the height that a sheet has less, above its texts
constexpr double textX = 32;
constexpr double textWidth = 358;
constexpr double topMargin = 30;
constexpr double textGap = 7;
constexpr double leastButtonWidth = 96;
constexpr double titleMargins = 30; // both together
constexpr double rightEdge = 407;   // of the default button
constexpr double leftEdge = 15;     // of the other button
constexpr double buttonY = 2;
constexpr double buttonHeight = 28;
constexpr double checkBoxY = 9;
constexpr double inputGap = 10;     // between the text and the field after it
constexpr double inputMargins = 30; // the gap and the margin at the window's right
constexpr double inputDrop = 3;
constexpr double inputHeight = 22;

constexpr double messageFontSize = 16;
constexpr double informativeFontSize = 11;
constexpr double measuredFontSize = 13; // of titles; they are drawn in a smaller one

constexpr int dontShowAgainTag = 0;

constexpr NSRect placeholderFrame{{0, 0}, {100, 18}};

/// The height of a text that is broken into lines of the alert's width: whole lines, of which there are as many as its
/// length in one line asks for.
float heightOfLines(const NSSize& oneLine) {
    const int lines = static_cast<int>(std::ceil(oneLine.width / textWidth));
    return static_cast<float>(lines * oneLine.height);
}

double widthOfButton(const NSButton& button) {
    const NSTextAttributes attributes{.font = NSFont::systemFontOfSize(measuredFontSize)};
    return std::max(sizeWithAttributes(button.displayTitle(), attributes).width + titleMargins, leastButtonWidth);
}

std::unique_ptr<NSTextField> makeText(const NSRect& frame, const NSFont& font, ViewCore& superview) {
    auto field = std::make_unique<NSTextField>(frame);
    field->setFont(font);
    field->setTextColor(NSColor::whiteColor());
    superview.addSubview(field.get());
    return field;
}

} // namespace

LTHUDAlert::LTHUDAlert()
    : _alertWindow(std::make_unique<LTHUDWindow>(NSMakeRect(0, 0, windowWidth, 155), NSBorderlessWindowMask,
                                                 NSBackingStoreBuffered, true)) {
    _alertWindow->setHasShadow(true);
    _alertWindow->setLevel(CGWindowLevelForKey(kCGModalPanelWindowLevelKey));
    // It is shown before its run begins, and nothing else may take input from then on.
    _alertWindow->setWindowModality(Qt::ApplicationModal);
    ViewCore& content = *ViewCore::of(_alertWindow->contentView());
    _messageField = makeText(NSMakeRect(84, 0, 318, 20), NSFont::boldSystemFontOfSize(messageFontSize), content);
    _informativeText = makeText(NSMakeRect(148, 0, 318, 20), NSFont::systemFontOfSize(informativeFontSize), content);
    _informativeText->setSelectable(true);
    defaultButton = makeButton(NSAlertDefaultReturn);
    alternateButton = makeButton(NSAlertAlternateReturn);
    otherButton = makeButton(NSAlertOtherReturn);
}

LTHUDAlert::~LTHUDAlert() {
    _messageField.reset();
    _informativeText.reset();
    defaultButton.reset();
    otherButton.reset();
    alternateButton.reset();
    _inputField.reset();
    _alertWindow.reset();
}

std::shared_ptr<LTHUDAlert> LTHUDAlert::alertWithMessageText(const QString& message, const QString& defaultButton,
                                                             const QString& alternateButton, const QString& otherButton,
                                                             const QString& informativeText) {
    auto alert = std::make_shared<LTHUDAlert>();
    alert->setMessage(message);
    alert->setInformativeText(informativeText);
    alert->setDefaultButtonTitle(defaultButton);
    alert->setAlternateButtonTitle(alternateButton);
    alert->setOtherButtonTitle(otherButton);
    return alert;
}

std::shared_ptr<LTHUDAlert> LTHUDAlert::inputAlertWithMessageText(const QString& message, const QString& initialValue) {
    auto alert = std::make_shared<LTHUDAlert>();
    alert->setIsInput(true);
    alert->setMessage(QStringLiteral("%1 needs your input.").arg(NSProcessInfo::processInfo().processName()));
    alert->setInformativeText(message);
    alert->setDefaultButtonTitle(QStringLiteral("OK"));
    alert->setAlternateButtonTitle(QStringLiteral("Cancel"));
    alert->setOtherButtonTitle(QString());
    alert->_initialText = initialValue;
    return alert;
}

std::unique_ptr<LTHUDButton> LTHUDAlert::makeButton(int tag) {
    auto button = std::make_unique<LTHUDButton>(placeholderFrame);
    button->setTag(tag);
    connect(button.get(), &QAbstractButton::clicked, this, [this, sender = button.get()] { buttonAction(*sender); });
    ViewCore::of(_alertWindow->contentView())->addSubview(button.get());
    return button;
}

void LTHUDAlert::setMessage(const QString& message) {
    _messageField->setStringValue(message);
    // What a screen reader and a list of windows call it.
    _alertWindow->setWindowTitle(message);
}

void LTHUDAlert::setInformativeText(const QString& text) {
    _informativeText->setStringValue(text);
    _alertWindow->setAccessibleDescription(text);
}

void LTHUDAlert::setDefaultButtonTitle(const QString& title) {
    defaultButton->setTitle(title);
}

void LTHUDAlert::setAlternateButtonTitle(const QString& title) {
    alternateButton->setTitle(title);
}

void LTHUDAlert::setOtherButtonTitle(const QString& title) {
    otherButton->setTitle(title);
}

void LTHUDAlert::setOtherButtonIsDontShowAgain(bool flag) {
    const QString title = otherButton->title();
    otherButton->removeFromSuperview();
    otherButton.reset();
    if (flag) {
        otherButton = std::make_unique<LTHUDCheckBox>(placeholderFrame);
        otherButton->setTag(dontShowAgainTag);
        otherButton->setTitle(title);
        ViewCore::of(_alertWindow->contentView())->addSubview(otherButton.get());
    } else {
        otherButton = makeButton(NSAlertOtherReturn);
        otherButton->setTitle(title);
    }
}

bool LTHUDAlert::dontShowAgainIsChecked() const {
    return otherButton->state() == NSOnState;
}

void LTHUDAlert::size(int sheet) {
    const NSSize message = _messageField->attributedStringValue().size();
    const NSSize informative = _informativeText->attributedStringValue().size();
    const auto messageHeight = static_cast<double>(heightOfLines(message));
    const auto informativeHeight = static_cast<double>(heightOfLines(informative));
    const double height =
        std::max(messageHeight + heightWithoutTexts + informativeHeight - sheetSaving * sheet, leastHeight);
    _alertWindow->setFrame(NSMakeRect(0, 0, windowWidth, height), true);
    _alertWindow->center();

    const double messageY = height - messageHeight - topMargin + sheetSaving * sheet;
    _messageField->setFrame(NSMakeRect(textX, messageY, textWidth, messageHeight));
    const double informativeY = messageY - informativeHeight - textGap;
    _informativeText->setFrame(NSMakeRect(textX, informativeY, textWidth, informativeHeight));
    placeButtons();

    _alertWindow->setDefaultButtonCell(&defaultButton->cell());
    alternateButton->cell().setKeyEquivalent(QStringLiteral("\u001b"));
    if (_isInput && !_inputField) {
        makeInputField(informative.width);
    }
}

void LTHUDAlert::placeButtons() {
    const double defaultWidth = widthOfButton(*defaultButton);
    defaultButton->setFrame(NSMakeRect(rightEdge - defaultWidth, buttonY, defaultWidth, buttonHeight));
    const double alternateWidth = widthOfButton(*alternateButton);
    alternateButton->setFrame(
        NSMakeRect(rightEdge - defaultWidth - alternateWidth, buttonY, alternateWidth, buttonHeight));
    const bool isCheckBox = otherButton->tag() == dontShowAgainTag;
    otherButton->setFrame(
        NSMakeRect(leftEdge, isCheckBox ? checkBoxY : buttonY, widthOfButton(*otherButton), buttonHeight));
    alternateButton->setHidden(alternateButton->title().isEmpty());
    otherButton->setHidden(otherButton->title().isEmpty());
}

/// After the informative text, as if that were all in one line.
void LTHUDAlert::makeInputField(double wholeTextWidth) {
    const NSPoint text = _informativeText->frame().origin;
    const double textEnd = text.x + wholeTextWidth;
    _inputField = std::make_unique<LTHUDTextField>(
        NSMakeRect(textEnd + inputGap, text.y - inputDrop, windowWidth - (textEnd + inputMargins), inputHeight));
    _inputField->setTarget(defaultButton.get());
    _inputField->setFont(NSFont::boldSystemFontOfSize(informativeFontSize));
    _inputField->setStringValue(_initialText);
    _inputField->setNextKeyView(defaultButton.get());
    _inputField->setAccessibleName(_informativeText->stringValue());
    _inputField->selectAll();
    ViewCore::of(_alertWindow->contentView())->addSubview(_inputField.get());
}

void LTHUDAlert::takeKeys() {
    _alertWindow->makeFirstResponder(_inputField.get());
}

void LTHUDAlert::buttonAction(const NSButton& sender) {
    if (_isInput && &sender == defaultButton.get() && _inputField && _inputField->stringValue().isEmpty()) {
        NSBeep();
        return;
    }
    result = sender.tag();
    if (NSApplication* application = NSApplication::sharedApplication()) {
        application->stopModal();
    }
}

int LTHUDAlert::runModal() {
    NSApplication* const application = NSApplication::sharedApplication();
    if (!application) {
        return result;
    }
    const QPointer<LTHUDAlert> self(this);
    size();
    _alertWindow->center();
    takeKeys();
    application->activateIgnoringOtherApps(true);
    pop(*_alertWindow);
    if (!self) {
        return NSAlertAlternateReturn;
    }
    application->runModalForWindow(*_alertWindow);
    if (!self) {
        return NSAlertAlternateReturn;
    }
    popAway(*_alertWindow);
    return self ? result : NSAlertAlternateReturn;
}

int LTHUDAlert::runSheetModalForWindow(NSWindow& parent) {
    const QPointer<LTHUDAlert> self(this);
    size(1);
    takeKeys();
    _alertWindow->setHasShadow(true);
    _alertWindow->runHUDSheetForWindow(parent);
    return self ? result : NSAlertAlternateReturn;
}

std::optional<QString> LTHUDAlert::runInputSheetModalForWindow(NSWindow& parent) {
    const QPointer<LTHUDAlert> self(this);
    const int answer = runSheetModalForWindow(parent);
    if (!self || answer != NSAlertDefaultReturn || !_inputField) {
        return std::nullopt;
    }
    return _inputField->stringValue();
}
