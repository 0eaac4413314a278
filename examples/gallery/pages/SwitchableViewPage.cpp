// SPDX-License-Identifier: MIT
#include "SwitchableViewPage.h"

#include "../DemoPanel.h"
#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDButton.h>

#include <QShortcut>

#include <algorithm>
#include <vector>

namespace {

// Points.
constexpr NSSize viewSizes[] = {{320, 180}, {420, 240}};
constexpr double textMargin = 24;

NSView* makeView(int number) {
    auto* const view = new NSView;
    const NSSize size = viewSizes[number % 2];
    view->setFrame({NSZeroPoint, size});
    auto* const text = new NSTextField(NSMakeRect(textMargin, size.height - 90, size.width - 2 * textMargin, 60));
    makeWhite(*text, QStringLiteral("View %1").arg(number + 1), NSFont::boldSystemFontOfSize(24));
    text->setAutoresizingMask(NSViewWidthSizable | NSViewMinYMargin);
    view->addSubview(text);
    return view;
}

} // namespace

SwitchableViewPage::SwitchableViewPage()
    : GalleryPage(
          QStringLiteral("switchable-view"), QStringLiteral("Switchable view"),
          QStringLiteral("A container that slides the next view in as the one before slides out. The window may "
                         "take its size meanwhile."),
          {QStringLiteral("LTSwitchableView")}) {}

SwitchableViewPage::~SwitchableViewPage() = default;

void SwitchableViewPage::makeWindow() {
    m_shown = -1;
    m_window = std::make_unique<LTHUDWindow>(NSRect{NSZeroPoint, viewSizes[0]}, NSBorderlessWindowMask,
                                             NSBackingStoreBuffered, false);
    m_window->setWindowTitle(QStringLiteral("Switchable view"));
    m_window->setHasButtonLane(false);
    m_window->center();
    m_container = new LTSwitchableView({NSZeroPoint, viewSizes[0]});
    m_container->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
    ViewCore::of(m_window->contentView())->addSubview(m_container);
    connect(new QShortcut(Qt::Key_Escape, m_window.get()), &QShortcut::activated, m_window.get(),
            [this] { m_window->orderOut(nullptr); });
    switchView();
}

void SwitchableViewPage::switchView() {
    // The one before the last is the page's again, which makes a new one each time.
    const std::vector<QWidget*> before = m_container->subviews();
    ++m_shown;
    m_container->setANewView(makeView(m_shown), m_direction, m_adjustsWindow && m_shown > 0);
    const std::vector<QWidget*> now = m_container->subviews();
    for (QWidget* view : before) {
        if (std::find(now.begin(), now.end(), view) == now.end()) {
            view->deleteLater();
        }
    }
}

void SwitchableViewPage::build(Stage& stage, SettingsPane& settings) {
    makeWindow();
    stage.putText(NSMakeRect(0, 0, 420, 32), QStringLiteral("“Switch” shows the window and slides the next view in."));
    settings.addButton(QStringLiteral("&Switch"), [this] {
        m_window->orderFront(nullptr);
        switchView();
    });
    settings.addChoice(QStringLiteral("The new view comes from"),
                       {QStringLiteral("The right"), QStringLiteral("The left"), QStringLiteral("The top"),
                        QStringLiteral("The bottom")},
                       m_direction, [this](int direction) { m_direction = direction; });
    settings.addCheckBox(QStringLiteral("The window adjusts"), m_adjustsWindow,
                         [this](bool isOn) { m_adjustsWindow = isOn; });
}

void SwitchableViewPage::leave() {
    m_window.reset();
}

void SwitchableViewPage::takePictures(PictureBook& book) {
    m_window->makeKeyAndOrderFront(nullptr);
    book.addWindow(QStringLiteral("switchable-view-first"), QStringLiteral("Switchable view, first"), *m_window, 8);
    switchView();
    book.addWindow(QStringLiteral("switchable-view-second"), QStringLiteral("Switchable view, second"), *m_window, 8);
    m_window->orderOut(nullptr);
}
