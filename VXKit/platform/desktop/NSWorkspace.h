// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QString>
#include <QUrl>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// Key of the dictionary that describes an application: the name that it goes by, a string.
inline constexpr const char* NSApplicationNameKey = "NSApplicationName";
/// Key of the dictionary that describes an application: the path of its program, a string.
inline constexpr const char* NSApplicationPathKey = "NSApplicationPath";
/// Key of the dictionary that describes an application: ProcessSerialNumber::highLongOfPSN.
inline constexpr const char* NSApplicationProcessSerialNumberHighKey = "NSApplicationProcessSerialNumberHigh";
/// Key of the dictionary that describes an application: ProcessSerialNumber::lowLongOfPSN.
inline constexpr const char* NSApplicationProcessSerialNumberLowKey = "NSApplicationProcessSerialNumberLow";

/// What names a running process to the window server.
struct ProcessSerialNumber {
    std::uint32_t highLongOfPSN = 0; ///< the upper word: 0 for every process here
    std::uint32_t lowLongOfPSN = 0;  ///< the lower word: the process identifier

    /// Whether both name the same process.
    friend bool operator==(ProcessSerialNumber, ProcessSerialNumber) = default;
};

/// The applications of the desktop: which is frontmost, which run, and how to bring one forward.
///
/// An abstract interface with a backend for each kind of desktop; this base class is also the backend for a desktop
/// that tells nothing. It can start programs and open addresses, since that needs no window server, and knows of no
/// applications. Main thread only. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSWorkspace {
public:
    NSWorkspace();
    NSWorkspace(const NSWorkspace&) = delete;
    NSWorkspace& operator=(const NSWorkspace&) = delete;
    virtual ~NSWorkspace();

    /// The workspace of the process. AppKit: `+sharedWorkspace`.
    [[nodiscard]] static NSWorkspace& sharedWorkspace();

    /// Puts `workspace` in the place of the shared one, which is destroyed; null goes back to the platform's own.
    static void setSharedWorkspace(std::unique_ptr<NSWorkspace> workspace);

    /// Whether this desktop tells which applications run; where it does not, the next two answer nothing.
    [[nodiscard]] virtual bool knowsApplications() const;

    /// The frontmost application under the keys above, or nothing. AppKit: `-activeApplication`.
    [[nodiscard]] virtual std::optional<NSDictionary> activeApplication() const;

    /// One dictionary for each running application. AppKit: `-launchedApplications`.
    [[nodiscard]] virtual std::vector<NSDictionary> launchedApplications() const;

    /// Activates the application at `path`, starting it if needed. False where it could not be started, as for a null
    /// path. AppKit: `-launchApplication:`.
    virtual bool launchApplication(const QString& path);

    /// Opens `url` with the application that the desktop has for it. AppKit: `-openURL:`.
    virtual bool openURL(const QUrl& url);

    /// Brings a running process to the front; does nothing for one that is not there.
    virtual void setFrontProcess(ProcessSerialNumber process);
};

/// Brings `process` to the front, through the shared workspace. Stands for the Process Manager's call.
VXKIT_EXPORT void SetFrontProcess(ProcessSerialNumber process);
