// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/app/LTApplication.h>
#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/platform/appkit/NSStatusBar.h>
#include <VXKit/platform/appkit/NSStatusItem.h>
#include <VXKit/platform/desktop/WindowEffects.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A host whose hooks answer what the test says and whose controller writes down what it is told.
class ShellApplication : public LTApplication, public LTApplicationController {
public:
    ShellApplication() : LTApplication(s_argc, s_argv) {}

    LTApplicationController* applicationController() const override {
        return hasController ? const_cast<ShellApplication*>(this) : nullptr;
    }
    bool shouldCloseMainWindowOnDeactivate() const override { return closesOnDeactivate; }
    float mainWindowOpacity() const override { return opacity; }
    void activateIgnoringOtherApps(bool flag) override {
        told.emplace_back("activate");
        LTApplication::activateIgnoringOtherApps(flag);
    }

    NSStatusItem* statusItem() const override { return item.get(); }
    void toggleMainWindow() override { told.emplace_back(isActive() ? "toggle while active" : "toggle"); }
    void closeMainWindow() override { told.emplace_back("close"); }

    void setActive(bool isActive) { _isActive = isActive; }

    bool hasController = true;
    bool closesOnDeactivate = true;
    float opacity = 1.0F;
    std::shared_ptr<NSStatusItem> item;
    std::vector<std::string> told;

private:
    static inline char s_name[] = "host";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;
};

/// A status item view that is wherever the test says.
class PlacedItemView : public LTStatusItemView {
public:
    explicit PlacedItemView(const NSRect& place)
        : LTStatusItemView(NSMakeRect(0, 0, place.size.width, place.size.height)), itemFrame(place) {}

    NSRect frameOfStatusItem() const override { return itemFrame; }

    NSRect itemFrame;
};

/// Writes down which shadows and blurs were asked for.
class RecordedEffects : public WindowEffects {
public:
    explicit RecordedEffects(std::vector<std::pair<QWidget*, WindowShadow>>& shadows) : m_shadows(shadows) {}

    void setShadow(QWidget& window, const std::optional<WindowShadow>& shadow) override {
        m_shadows.emplace_back(&window, shadow.value_or(WindowShadow()));
    }
    void setBlur(QWidget& /*window*/, double radius, const QRegion& /*region*/) override { blurRadius = radius; }

    double blurRadius = 0;

private:
    std::vector<std::pair<QWidget*, WindowShadow>>& m_shadows;
};

class ShellHost : public testing::Test {
protected:
    ~ShellHost() override { application.item.reset(); }

    /// Puts a status item at `place`, in screen coordinates.
    PlacedItemView& placeItem(const NSRect& place) {
        auto view = std::make_unique<PlacedItemView>(place);
        PlacedItemView& placed = *view;
        application.item = NSStatusBar::systemStatusBar().statusItemWithLength(place.size.width);
        application.item->setView(std::move(view));
        return placed;
    }

    ShellApplication application;
    // Owned by the process's effects; filled by them.
    std::vector<std::pair<QWidget*, WindowShadow>> shadows;
};
