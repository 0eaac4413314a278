// SPDX-License-Identifier: MIT
// The smallest application on the kit: a symbol in the status bar, and a window that hangs under it.
#include <VXKit/VXKit.h>

#include <QShortcut>

class Hello : public LTApplication, public LTApplicationController {
public:
    Hello(int& argc, char** argv) : LTApplication(argc, argv) {
        m_item->setView(std::unique_ptr<NSView>(m_symbol));
        m_window.setWindowTitle(QStringLiteral("Greeting"));
        m_window.awakeFromNib();
        auto* const greeting = new NSTextField(NSMakeRect(30, 70, 240, 34), m_window.contentView());
        greeting->setStringValue(QStringLiteral("Hello, you there."));
        greeting->setFont(NSFont::boldSystemFontOfSize(24));
        greeting->setTextColor(NSColor::whiteColor());
        addButton(NSMakeRect(158, 10, 120, 28), QStringLiteral("&Ask Me"), [] { ask(); });
        addButton(NSMakeRect(22, 10, 120, 28), QStringLiteral("&Quit"), [this] { terminate(nullptr); });
        connect(new QShortcut(Qt::Key_Escape, &m_window), &QShortcut::activated, this, [this] {
            closeMainWindow();
            switchBackToApp();
        });
        activateIgnoringOtherApps(true);
        toggleMainWindow();
    }

    LTApplicationController* applicationController() const override { return const_cast<Hello*>(this); }
    NSStatusItem* statusItem() const override { return m_item.get(); }
    void toggleMainWindow() override {
        m_symbol->setHighlighted(!m_window.isVisible());
        m_window.isVisible() ? m_window.orderOut(nullptr) : m_window.makeKeyAndOrderFront(nullptr);
    }
    void closeMainWindow() override {
        if (m_window.isVisible() && !modalWindow()) {
            toggleMainWindow();
        }
    }

private:
    void addButton(const NSRect& frame, const QString& title, const std::function<void()>& action) {
        auto* const button = new LTHUDButton(frame, m_window.contentView());
        button->setTitle(title);
        connect(button, &NSButton::clicked, this, action);
    }
    static void ask() {
        LTHUDAlert::alertWithMessageText(QStringLiteral("How do you do?"), QStringLiteral("&Well"),
                                         QStringLiteral("So So"), {}, QStringLiteral("Nobody is told."))
            ->runModal();
    }

    std::shared_ptr<NSStatusItem> m_item = NSStatusBar::systemStatusBar().statusItemWithLength(30);
    LTStatusItemView* m_symbol = new LTStatusItemView(NSMakeRect(0, 0, 30, 22)); // the item's
    LTWindow m_window{NSMakeRect(0, 0, 300, 180), NSBorderlessWindowMask, NSBackingStoreBuffered, false};
};

int main(int argc, char** argv) {
    return Hello(argc, argv).run();
}
