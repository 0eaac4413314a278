// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/app/LTApplication.h>
#include <VXKit/app/LTWindow.h>

#include <memory>
#include <optional>

class LTStatusItemView;

/// The gallery's application object: owns the status item and the main window that one of the pages shows, and answers
/// the hooks as the pages set them.
class GalleryApplication : public LTApplication, public LTApplicationController {
public:
    GalleryApplication(int& argc, char** argv);
    ~GalleryApplication() override;

    /// The application object of the process, which is one of these.
    [[nodiscard]] static GalleryApplication& shared();

    [[nodiscard]] QUrl helpURL() const override;
    [[nodiscard]] LTApplicationController* applicationController() const override;
    [[nodiscard]] float mainWindowOpacity() const override { return m_mainWindowOpacity; }
    void setMainWindowOpacity(float opacity) { m_mainWindowOpacity = opacity; }
    [[nodiscard]] bool shouldCloseMainWindowOnDeactivate() const override { return m_closesMainWindow; }
    void setClosesMainWindow(bool flag) { m_closesMainWindow = flag; }

    [[nodiscard]] NSStatusItem* statusItem() const override { return m_statusItem.get(); }
    void toggleMainWindow() override;
    void closeMainWindow() override;

    [[nodiscard]] LTStatusItemView& statusItemView() const { return *m_statusItemView; }
    [[nodiscard]] LTWindow& mainWindow() const { return *m_mainWindow; }

    /// Whether drawing shows the application as active: as it is, unless pictures say otherwise (setShownActive).
    [[nodiscard]] bool isActive() const override { return m_shownActive.value_or(LTApplication::isActive()); }
    /// Pretends that the application is active or not, for pictures of what that looks like; nothing ends the pretence.
    void setShownActive(std::optional<bool> isActive) { m_shownActive = isActive; }

    /// Whether effects show their end at once in this process, whatever the desktop wishes.
    static void setReducesMotion(bool flag);

private:
    void makeStatusItem();
    void makeMainWindow();

    std::shared_ptr<NSStatusItem> m_statusItem;
    LTStatusItemView* m_statusItemView = nullptr; // owned by the item
    std::unique_ptr<LTWindow> m_mainWindow;
    float m_mainWindowOpacity = 1;
    bool m_closesMainWindow = true;
    std::optional<bool> m_shownActive;
};
