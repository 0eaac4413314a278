// SPDX-License-Identifier: MIT
#include <VXKit/transitions/_LTPrefTab.h>

#include <VXKit/controls/HUDFocusRing.h>
#include <VXKit/platform/appkit/TitleMnemonic.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSShadow.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QAccessibleWidget>
#include <QLatin1String>
#include <QStringList>

#include <utility>

namespace {

// Lengths in points.
constexpr double titleSize = 12;
constexpr double titleMargins = 10; // both sides together
constexpr double tabHeight = 26;
constexpr double plateInset = 1.5; // above and below
constexpr double plateRadius = 3;
constexpr double plateWhite = 0.17;
constexpr double pressedBlurRadius = 1;

/// A tab that is one of several, of which one is selected; pressing it selects it.
class TabAccessible : public QAccessibleWidget {
public:
    explicit TabAccessible(_LTPrefTab& tab) : QAccessibleWidget(&tab, QAccessible::PageTab) {}

    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? tab().displayTitle() : QAccessibleWidget::text(kind);
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.selectable = true;
        state.selected = tab().isSelected();
        state.pressed = tab().isDown();
        return state;
    }
    [[nodiscard]] QStringList actionNames() const override {
        return tab().isEnabled() ? QStringList{pressAction(), setFocusAction()} : QStringList();
    }
    void doAction(const QString& name) override {
        if (name == pressAction() && tab().isEnabled()) {
            tab().performClick(widget());
        } else {
            QAccessibleWidget::doAction(name);
        }
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString& name) const override {
        const QString keys = tab().shortcut().toString();
        return name == pressAction() && !keys.isEmpty() ? QStringList{keys} : QStringList();
    }

private:
    [[nodiscard]] _LTPrefTab& tab() const { return *static_cast<_LTPrefTab*>(widget()); }
};

QAccessibleInterface* describeTab(const QString& className, QObject* object) {
    if (className != QLatin1String(_LTPrefTab::staticMetaObject.className())) {
        return nullptr;
    }
    auto* const tab = qobject_cast<_LTPrefTab*>(object);
    return tab ? new TabAccessible(*tab) : nullptr;
}

} // namespace

_LTPrefTab::_LTPrefTab(QWidget* parent) : NSButton(parent) {
    QAccessible::installFactory(describeTab); // which Qt does once
}

_LTPrefTab::~_LTPrefTab() = default;

std::unique_ptr<_LTPrefTab> _LTPrefTab::tabWithName(const QString& name) {
    // Measured in bold though drawn in regular, for the slack that this leaves on each side.
    const NSSize size = sizeWithAttributes(
        titleWithMnemonicUnderlined(name).string(),
        {.font = NSFont::boldSystemFontOfSize(titleSize), .foregroundColor = NSColor::colorWithCalibratedWhite(1, 1)});
    auto tab = std::make_unique<_LTPrefTab>();
    tab->setFrame(NSMakeRect(0, 0, size.width + titleMargins, tabHeight));
    tab->setTitle(name);
    return tab;
}

void _LTPrefTab::setSelected(bool flag) {
    const bool changes = std::exchange(_selected, flag) != flag;
    display();
    if (changes) {
        QAccessible::State changed;
        changed.selected = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    }
}

void _LTPrefTab::drawRect(const NSRect& /*dirtyRect*/) {
    const NSRect box = bounds();
    const NSRect plate = NSInsetRect(box, 0, plateInset);
    if (_selected) {
        NSColor::colorWithCalibratedWhite(plateWhite, 1).setFill();
        NSBezierPath::bezierPathWithRoundedRect(plate, plateRadius, plateRadius).fill();
    }
    NSTextAttributes attributes{.font = NSFont::systemFontOfSize(titleSize),
                                .foregroundColor = NSColor::colorWithCalibratedWhite(1, 1)};
    if (cell().isHighlighted()) {
        NSShadow shadow;
        shadow.setShadowBlurRadius(pressedBlurRadius);
        shadow.setShadowColor(NSColor::whiteColor());
        attributes.shadow = shadow;
    }
    const NSAttributedString title = cell().attributedDisplayTitle(attributes);
    const NSSize size = title.size();
    title.drawInRect(
        NSMakeRect(NSWidth(box) / 2 - size.width / 2, NSHeight(box) / 2 - size.height / 2, size.width, size.height));
    drawHUDFocusRing(*this, plate, plateRadius);
}
