// SPDX-License-Identifier: MIT
#include "PictureBook.h"

#include "Appearance.h"
#include "ContactSheet.h"
#include "DemoPanel.h"
#include "GalleryApplication.h"

#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>

#include <QAbstractButton>
#include <QDeadlineTimer>
#include <QDir>
#include <QTimer>

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>
#include <utility>

namespace {

// Points.
constexpr double panelMargin = 14; // around a control
constexpr double pageMargin = 40;

constexpr std::size_t fewStates = 2; // that need no row of their own
constexpr int modalInterval = 20;    // milliseconds
constexpr int longestWait = 2000;

struct NamedState {
    ControlState state;
    const char* name;
};

constexpr NamedState namedStates[] = {{ControlState::Normal, "normal"},
                                      {ControlState::Focused, "focused"},
                                      {ControlState::Pressed, "pressed"},
                                      {ControlState::Disabled, "disabled"},
                                      {ControlState::Inactive, "inactive"}};

QString nameOf(ControlState state) {
    for (const NamedState& each : namedStates) {
        if (each.state == state) {
            return QString::fromLatin1(each.name);
        }
    }
    return {};
}

QString classNameOf(const QWidget& widget) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(typeid(widget).name(), nullptr, nullptr, &status), std::free);
    return name ? QString::fromLatin1(name.get()) : QString();
}

void applyState(ControlState state, QWidget& control, NSWindow& panel) {
    auto* const button = dynamic_cast<QAbstractButton*>(&control);
    GalleryApplication::shared().setShownActive(state != ControlState::Inactive);
    if (state == ControlState::Focused) {
        control.setFocus(Qt::TabFocusReason);
    } else {
        panel.makeFirstResponder(nullptr);
    }
    control.setEnabled(state != ControlState::Disabled);
    if (button) {
        button->setDown(state == ControlState::Pressed);
    }
    panel.display();
}

} // namespace

PictureBook::PictureBook(QString folder) : m_folder(std::move(folder)) {}

bool PictureBook::open() {
    if (!QDir().mkpath(m_folder)) {
        m_problem = m_folder + QStringLiteral(": cannot create the folder of the pictures");
    }
    return m_problem.isNull();
}

void PictureBook::save(const QString& name, const QImage& picture) {
    if (!m_problem.isNull()) {
        return;
    }
    const QString path = QDir(m_folder).filePath(name + QStringLiteral(".png"));
    if (!picture.save(path)) {
        m_problem = path + QStringLiteral(": cannot be written");
    }
}

void PictureBook::add(const QString& name, const QString& caption, const QImage& picture) {
    noteClasses();
    save(name, picture);
    if (m_sections.empty()) {
        beginSection({});
    }
    m_sections.back().rows.back().push_back({caption, picture});
}

void PictureBook::noteClasses() {
    for (const NSWindow* const window : NSWindow::windows()) {
        if (!window->isVisible()) {
            continue;
        }
        m_shownClasses.insert(classNameOf(*window));
        for (const auto* const widget : window->findChildren<QWidget*>()) {
            if (widget->isVisibleTo(window)) {
                m_shownClasses.insert(classNameOf(*widget));
            }
        }
    }
}

void PictureBook::beginSection(const QString& title) {
    m_sections.push_back({title, {{}}});
}

void PictureBook::beginRow() {
    if (m_sections.empty()) {
        beginSection({});
    }
    m_sections.back().rows.emplace_back();
}

void PictureBook::addPage(const QString& name, NSWindow& window) {
    const QImage picture = m_desk.settledPicture(NSInsetRect(window.frame(), -pageMargin, -pageMargin));
    noteClasses();
    save(QStringLiteral("page-") + name, picture);
}

void PictureBook::addWindow(const QString& name, const QString& caption, NSWindow& window, double around) {
    // The window manager tells of its frame around a window when it likes.
    waitUntilShown(window);
    NSRect frame = NSZeroRect;
    QImage picture;
    while (frame != window.frame()) {
        frame = window.frame();
        picture = m_desk.settledPicture(NSInsetRect(frame, -around, -around));
    }
    add(name, caption, picture);
}

void PictureBook::addArea(const QString& name, const QString& caption, const NSRect& area) {
    add(name, caption, m_desk.settledPicture(area));
}

void PictureBook::addFrozenArea(const QString& name, const QString& caption, const NSRect& area) {
    add(name, caption, m_desk.frozenPicture(area));
}

void PictureBook::addStates(const QString& name, const QString& caption, const std::function<QWidget*()>& make,
                            const std::vector<ControlState>& states) {
    std::unique_ptr<QWidget> control(make());
    const NSSize size = ViewCore::of(control.get())->frame().size;
    LTHUDWindow panel(NSMakeRect(0, 0, size.width + 2 * panelMargin, size.height + 2 * panelMargin + hudTitleBarHeight),
                      NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    useDarkColors(panel);
    panel.setHasButtonLane(false);
    panel.center();
    const bool hasRow = states.size() > fewStates;
    if (hasRow) {
        beginRow();
    }
    for (const ControlState state : states) {
        if (!control) {
            control.reset(make());
        }
        ViewCore::of(control.get())->setFrame({{panelMargin, panelMargin}, size});
        ViewCore::of(panel.contentView())->addSubview(control.get());
        panel.makeKeyAndOrderFront(nullptr);
        waitUntilShown(panel);
        applyState(state, *control, panel);
        add(QStringLiteral("state-%1-%2").arg(name, nameOf(state)),
            states.size() == 1 ? caption : QStringLiteral("%1, %2").arg(caption, nameOf(state)),
            m_desk.settledPicture(panel.frame()));
        control.reset();
    }
    GalleryApplication::shared().setShownActive(true);
    panel.orderOut(nullptr);
    if (hasRow) {
        beginRow();
    }
}

void PictureBook::writeContactSheet() {
    ContactSheet sheet;
    for (const Section& section : m_sections) {
        sheet.beginSection(section.title);
        for (const std::vector<Entry>& row : section.rows) {
            sheet.beginRow();
            for (const Entry& entry : row) {
                sheet.add(entry.caption, entry.picture);
            }
        }
    }
    save(QStringLiteral("contact-sheet"), sheet.picture());
}

void showWithKeyboard(NSWindow& window) {
    window.makeKeyAndOrderFront(nullptr);
    waitUntilShown(window);
    const QDeadlineTimer deadline(longestWait);
    while (!window.isKeyWindow() && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, modalInterval);
    }
}

void whileModal(const std::function<void(NSWindow& window)>& action) {
    QTimer::singleShot(modalInterval, qApp, [action] {
        NSWindow* const window = GalleryApplication::shared().modalWindow();
        if (window && window->isVisible()) {
            action(*window);
        } else {
            whileModal(action);
        }
    });
}
