// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QUrl>

class NSStatusItem;

/// Posted by the host's sync manager when a sync begins; on the main thread.
inline constexpr const char* LTSyncManagerHasBegunSyncing = "LTSyncManagerHasBegunSyncing";
/// Posted by the host's sync manager when a sync has ended, however it went; on the main thread.
inline constexpr const char* LTSyncManagerHasEndedSyncing = "LTSyncManagerHasEndedSyncing";

/// What the kit asks of the host's controller object.
class VXKIT_EXPORT LTApplicationController {
public:
    virtual ~LTApplicationController();

    /// The host's status item, borrowed; its view is an LTStatusItemView. Null while the host has none.
    [[nodiscard]] virtual NSStatusItem* statusItem() const = 0;
    /// Shows the main window where it is hidden, and hides it where it is shown.
    virtual void toggleMainWindow() = 0;
    /// Hides the main window; does nothing where it is hidden.
    virtual void closeMainWindow() = 0;
};

/// What the kit asks of the host's sync manager, a class rather than an object: one for the process.
class VXKIT_EXPORT LTSyncManagerClass {
public:
    virtual ~LTSyncManagerClass();

    /// Whether a sync is running at this moment. While it is, the database holds changes back.
    [[nodiscard]] virtual bool isSyncInProgress() const = 0;
    /// Syncing may be used (again).
    virtual void enableSyncing() = 0;
    /// Syncing must stay off.
    virtual void disableSyncing() = 0;
};

/// The host's hooks: its policies and companions, as the kit asks for them. LTApplication adopts them and the host's
/// subclass overrides what it needs; each has the default that stands here.
class VXKIT_EXPORT LTApplicationProtocol {
public:
    LTApplicationProtocol();
    LTApplicationProtocol(const LTApplicationProtocol&) = delete;
    LTApplicationProtocol& operator=(const LTApplicationProtocol&) = delete;
    virtual ~LTApplicationProtocol();

    /// Address of the page that the help window shows. Empty, the default: the application has no help.
    [[nodiscard]] virtual QUrl helpURL() const;
    /// Whether activation notes which application was frontmost, and switchBackToApp gives it the focus back. Yes.
    [[nodiscard]] virtual bool supportsSwitchingBackToPreviousApplication() const;
    /// Whether switchBackToApp brings the other application's running processes forward (yes, the default) or launches
    /// it, which also starts one that has quit.
    [[nodiscard]] virtual bool shouldSwitchBackGracefully() const;
    /// The host's controller, borrowed. Null.
    [[nodiscard]] virtual LTApplicationController* applicationController() const;
    /// The host's sync manager, borrowed. Null: nothing is ever synced.
    [[nodiscard]] virtual LTSyncManagerClass* syncManagerClass() const;
    /// Whether the main window closes when the application resigns active: the boolean value of the user-defaults key
    /// `VXCloseMainWindowOnDeactivate`, yes where there is none.
    [[nodiscard]] virtual bool shouldCloseMainWindowOnDeactivate() const;
    /// Factor from 0 to 1 on the opacity of the main window's background and shadow. 1.
    [[nodiscard]] virtual float mainWindowOpacity() const;
};

/// The hooks of the running application, or the defaults where it is no LTApplication or there is none at all (a plain
/// Qt program that uses a control of the kit).
[[nodiscard]] VXKIT_EXPORT LTApplicationProtocol& VXApplicationHooks();

/// Whether kit drawing shows the application as active: the application object's own answer, or Qt's where it is no
/// NSApplication.
[[nodiscard]] VXKIT_EXPORT bool VXApplicationIsActive();
