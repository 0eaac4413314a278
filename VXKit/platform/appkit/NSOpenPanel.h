// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSSavePanel.h>

#include <QString>
#include <QStringList>

#include <memory>

/// Asks the person for a file that exists. See NSSavePanel for how it is shown and run; a required file type counts as
/// the one type that may be chosen. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSOpenPanel : public NSSavePanel {
    Q_OBJECT

public:
    NSOpenPanel();
    ~NSOpenPanel() override;

    /// AppKit: `+openPanel`.
    [[nodiscard]] static std::unique_ptr<NSOpenPanel> openPanel();

    /// Shows the panel in the home folder. Only files whose name ends in one of `fileTypes` (extensions, with a dot
    /// before them or without, in upper or lower case) are offered, and only those are taken, typed or not; any file
    /// where the list is empty. Answers NSOKButton or NSCancelButton. AppKit: `-runModalForTypes:`.
    int runModalForTypes(const QStringList& fileTypes);

    /// The same in the folder `path` with `file` selected. AppKit: `-runModalForDirectory:file:types:`.
    int runModalForDirectory(const QString& path, const QString& file, const QStringList& fileTypes);
    using NSSavePanel::runModalForDirectory;

protected:
    /// One file that exists, of the types that were asked for.
    void prepareDialog(QFileDialog& dialog) const override;
    /// `path` itself where it is of one of these types; else null.
    [[nodiscard]] QString pathForChosen(const QString& path) const override;

private:
    [[nodiscard]] QStringList allowedTypes() const;

    QStringList m_fileTypes;
};
