// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QString>

/// The application object of a host: it tracks its own activation, can give the focus back to the application that had
/// it before, and is where the kit asks the host for its policies and companions (LTApplicationProtocol).
///
/// A host derives its own from it, makes one in main before anything else of the kit, and calls run. Main thread only.
class VXKIT_EXPORT LTApplication : public NSApplication, public LTApplicationProtocol {
public:
    /// `argc` and `argv` must live as long as the application, as for any QApplication.
    LTApplication(int& argc, char** argv);
    ~LTApplication() override;

    /// Called by run. Does what the application object does when its nib has been loaded: from here on it clears its
    /// activity flag when it will resign active. AppKit: `-awakeFromNib`.
    void awakeFromNib() override;

    /// Marks the application active, notes which other application is frontmost, and activates.
    /// AppKit: `-activateIgnoringOtherApps:`.
    void activateIgnoringOtherApps(bool flag) override;

    /// The kit's own activity flag: true from the start of every activateIgnoringOtherApps until the application will
    /// resign active, whatever the window server thinks. AppKit: `-isActive`.
    [[nodiscard]] bool isActive() const override { return _isActive; }

    /// Gives the focus back to the application that was frontmost when this one last activated itself: brings every
    /// running process of it to the front or launches it (shouldSwitchBackGracefully). Does nothing where the host does
    /// not support it; finds nothing where none was noted. The kit itself never calls it.
    void switchBackToApp();

    /// Shows the page at helpURL in the help window; does nothing where there is none. `sender` is not looked at.
    void showHelp(QObject* sender);

protected:
    /// Clears the activity flag; called when the application will resign active.
    void _unsetActive(const NSNotification& notification);

    QString _theOtherApp;   ///< path of the application that was frontmost at the last activation; null until noted
    bool _isActive = false; ///< the activity flag

private:
    void mouseWasPressedElsewhere();

    NSNotificationObservation m_willResignActive;
    NSNotificationObservation m_didBecomeActive;
    NSNotificationObservation m_didResignActive;
};
