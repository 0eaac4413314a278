// SPDX-License-Identifier: MIT
#include <VXKit/transitions/LTPreferenceTabs.h>

#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/transitions/_LTPrefTab.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QEvent>
#include <QKeyEvent>
#include <QLatin1String>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

constexpr double spacing = 5; // points, before each tab

constexpr int fromTheRight = 0; // directions of LTSwitchableView
constexpr int fromTheLeft = 1;

void checkIndex(int index, std::size_t count) {
    if (index < 0 || static_cast<std::size_t>(index) >= count) {
        throw NSException(NSRangeException,
                          QStringLiteral("index %1 beyond bounds for %2 objects").arg(index).arg(count));
    }
}

QAccessibleInterface* describeTabs(const QString& className, QObject* object) {
    if (className != QLatin1String(LTPreferenceTabs::staticMetaObject.className())) {
        return nullptr;
    }
    auto* const tabs = qobject_cast<LTPreferenceTabs*>(object);
    return tabs ? new QAccessibleWidget(tabs, QAccessible::PageTabList) : nullptr;
}

} // namespace

LTPreferenceTabs::LTPreferenceTabs(QWidget* parent) : NSView(parent) {
    QAccessible::installFactory(describeTabs); // which Qt does once
}

LTPreferenceTabs::LTPreferenceTabs(const NSRect& frame, QWidget* parent) : LTPreferenceTabs(parent) {
    NSView::setFrame(frame);
}

LTPreferenceTabs::~LTPreferenceTabs() {
    releaseViews({});
}

void LTPreferenceTabs::setTabNames(const QStringList& names) {
    double x = 0;
    for (const QString& name : names) {
        std::unique_ptr<_LTPrefTab> tab = _LTPrefTab::tabWithName(name);
        x += spacing;
        tab->setFrameOrigin({x, tab->frame().origin.y});
        connect(tab.get(), &QAbstractButton::clicked, this, [this, tab = tab.get()] { switchViews(tab); });
        tab->installEventFilter(this);
        addSubview(tab.get());
        x += tab.release()->frame().size.width;
    }
    const std::vector<QWidget*> tabs = subviews();
    checkIndex(0, tabs.size());
    if (auto* first = qobject_cast<_LTPrefTab*>(tabs.front())) {
        first->setSelected(true);
    }
}

QStringList LTPreferenceTabs::tabTitles() const {
    QStringList titles;
    for (QWidget* view : subviews()) {
        if (const auto* tab = qobject_cast<_LTPrefTab*>(view)) {
            titles.append(tab->title());
        }
    }
    return titles;
}

void LTPreferenceTabs::setTabTitles(const QStringList& titles) {
    for (QWidget* view : subviews()) {
        if (qobject_cast<_LTPrefTab*>(view)) {
            delete view;
        }
    }
    if (!titles.isEmpty()) {
        setTabNames(titles);
    }
}

void LTPreferenceTabs::setTabViews(std::vector<QWidget*> views) {
    releaseViews(views);
    _views.emplace(views.begin(), views.end());
    setSelectionIndex(indexOfSelectedTab());
}

/// Of those that a superview has, that is the owner.
void LTPreferenceTabs::releaseViews(const std::vector<QWidget*>& kept) {
    for (const QPointer<QWidget>& view :
         std::exchange(_views, std::nullopt).value_or(std::vector<QPointer<QWidget>>())) {
        if (view && !view->parentWidget() && std::find(kept.begin(), kept.end(), view.data()) == kept.end()) {
            delete view.data();
        }
    }
}

int LTPreferenceTabs::indexOfSelectedTab() const {
    const std::vector<QWidget*> tabs = subviews();
    const auto selected = std::find_if(tabs.begin(), tabs.end(), [](QWidget* view) {
        const auto* tab = qobject_cast<_LTPrefTab*>(view);
        return tab && tab->isSelected();
    });
    return selected == tabs.end() ? 0 : static_cast<int>(selected - tabs.begin());
}

void LTPreferenceTabs::setSelectionIndex(int index) {
    const int previous = indexOfSelectedTab();
    int each = 0;
    for (QWidget* view : subviews()) {
        if (auto* tab = qobject_cast<_LTPrefTab*>(view)) {
            tab->setSelected(each == index);
        }
        ++each;
    }
    QWidget* view = nullptr;
    if (_views) {
        checkIndex(index, _views->size());
        view = (*_views)[static_cast<std::size_t>(index)];
    }
    if (_switchView) {
        _switchView->setANewView(view, previous > index ? fromTheLeft : fromTheRight);
    }
}

void LTPreferenceTabs::switchViews(QWidget* sender) {
    const std::vector<QWidget*> tabs = subviews();
    const auto found = std::find(tabs.begin(), tabs.end(), sender);
    if (found != tabs.end()) {
        setSelectionIndex(static_cast<int>(found - tabs.begin()));
    }
}

bool LTPreferenceTabs::eventFilter(QObject* watched, QEvent* event) {
    auto* const tab = qobject_cast<_LTPrefTab*>(watched);
    if (!tab || event->type() != QEvent::KeyPress) {
        return NSView::eventFilter(watched, event);
    }
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const bool isPlain = (key.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    return isPlain && takeKey(tab, key);
}

/// Whether the key is one of those by which a row of tabs is used; then does what it is for.
bool LTPreferenceTabs::takeKey(_LTPrefTab* tab, const QKeyEvent& event) {
    const std::vector<QWidget*> tabs = subviews();
    const auto at = std::find(tabs.begin(), tabs.end(), tab);
    if (at == tabs.end()) {
        return false;
    }
    auto next = at;
    switch (event.key()) {
    case Qt::Key_Left:
        next = at == tabs.begin() ? at : std::prev(at);
        break;
    case Qt::Key_Right:
        next = std::next(at) == tabs.end() ? at : std::next(at);
        break;
    case Qt::Key_Home:
        next = tabs.begin();
        break;
    case Qt::Key_End:
        next = std::prev(tabs.end());
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!event.isAutoRepeat()) {
            tab->performClick(this);
        }
        return true;
    default:
        return false;
    }
    if (next != at) {
        (*next)->setFocus(Qt::TabFocusReason);
        switchViews(*next);
    }
    return true;
}

void LTPreferenceTabs::drawRect(const NSRect& /*dirtyRect*/) {}
