// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSWindow.h>

#include <QString>

#include <memory>

class QFileDialog;

/// Answer of a panel that asks for a file: the person has chosen one.
inline constexpr int NSOKButton = 1;
/// Answer of a panel that asks for a file: the person has chosen none.
inline constexpr int NSCancelButton = 0;
/// The same as NSOKButton, by the name that AppKit's file panels have for it.
inline constexpr int NSFileHandlingPanelOKButton = NSOKButton;
/// The same as NSCancelButton, by the name that AppKit's file panels have for it.
inline constexpr int NSFileHandlingPanelCancelButton = NSCancelButton;

/// Asks the person where to save a file.
///
/// What is seen is the platform's own file dialog where there is one, and Qt's otherwise; the window itself is never
/// shown, but stands for the dialog in the modal runs (NSApplication::modalWindow). A panel is set up, run, and asked
/// for its answer; it can be run again. It comes to the front with the keyboard, above the kit's panels and alerts, and
/// gives the keyboard back to the window that had it. It needs no running event loop. Whoever makes a panel owns it;
/// when it is destroyed while it runs, the run ends as a cancelled one. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSSavePanel : public NSWindow {
    Q_OBJECT

public:
    /// A panel for any kind of file.
    NSSavePanel();
    ~NSSavePanel() override;

    /// AppKit: `+savePanel`.
    [[nodiscard]] static std::unique_ptr<NSSavePanel> savePanel();

    /// The extension that every file name gets that has another or none: the name "a" becomes "a.plist", and so does
    /// "a.txt" become "a.txt.plist". With a dot before it or without; empty, as in the beginning: names stay as they
    /// are typed. AppKit: `-setRequiredFileType:`.
    void setRequiredFileType(const QString& type);
    /// As it was set, without the dot. AppKit: `-requiredFileType`.
    [[nodiscard]] QString requiredFileType() const { return m_requiredFileType; }

    /// Shows the panel in the folder `path` (the home folder where that is empty) with `file` as the proposed name, and
    /// returns when it is answered: NSFileHandlingPanelOKButton, or NSFileHandlingPanelCancelButton where the person
    /// cancels or closes it, or the run is ended from outside. A file that exists has then been confirmed.
    /// AppKit: `-runModalForDirectory:file:`.
    int runModalForDirectory(const QString& path, const QString& file);
    /// The same in the home folder without a name. AppKit: `-runModal`.
    int runModal() { return runModalForDirectory({}, {}); }

    /// The full path that the latest run ended with; empty where it was cancelled. AppKit: `-filename`.
    [[nodiscard]] QString filename() const { return m_filename; }

    /// Shows the dialog of a run, or cancels it. The window itself is never ordered in.
    void orderWindow(NSWindowOrderingMode place, int otherWindowNumber) override;

protected:
    /// Sets up `dialog` for a run; a subclass adds what it asks for.
    virtual void prepareDialog(QFileDialog& dialog) const;
    /// The path that is answered for the one that the person chose; null where that may not be chosen.
    [[nodiscard]] virtual QString pathForChosen(const QString& path) const;

    /// Whether the extension of `path` is `type`, which has no dot before it; compared without regard to case.
    [[nodiscard]] static bool hasFileType(const QString& path, const QString& type);
    /// `type` without the dot that it may begin with.
    [[nodiscard]] static QString withoutLeadingDot(const QString& type);

private:
    class Dialog;

    int runOnce();

    QString m_requiredFileType;
    QString m_filename;
    std::unique_ptr<Dialog> m_dialog; ///< there during a run alone
};
