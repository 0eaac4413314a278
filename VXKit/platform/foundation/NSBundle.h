// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QString>

#include <map>
#include <memory>

/// A folder of resources that belong together: the kit's own, or the host application's.
///
/// The platform has no application bundles, so a bundle is a folder of Qt's resource system: `:/bundles/<identifier>`
/// for a library's, the root `:/` for the host's. Images lie at its root or in `images`, nibs at its root or in `nibs`.
/// Not for files that the user may move or edit.
///
/// Bundles are made when first asked for and live as long as the process; nobody but this class owns one. Stands for
/// AppKit's class of the same name.
class VXKIT_EXPORT NSBundle {
public:
    ~NSBundle();
    NSBundle(const NSBundle&) = delete;
    NSBundle& operator=(const NSBundle&) = delete;

    /// The host application's own resources. AppKit: `+mainBundle`.
    [[nodiscard]] static NSBundle& mainBundle();

    /// The bundle whose resources were compiled in under `identifier`, a reverse-domain name; the same identifier gives
    /// the same object. Null when there is none, and for a name that could lead elsewhere in the resources (empty, with
    /// a slash, with `..` or with a dot in front). AppKit: `+bundleWithIdentifier:`.
    [[nodiscard]] static NSBundle* bundleWithIdentifier(const QString& identifier);

    /// The reverse-domain name of the bundle. The main bundle's is the application's organization domain, reversed,
    /// before its name; null while the application has no name. AppKit: `-bundleIdentifier`.
    [[nodiscard]] QString bundleIdentifier() const;

    /// The folder of the resources, a path of the resource system. AppKit: `-resourcePath`.
    [[nodiscard]] QString resourcePath() const;

    /// The path of the file `name` with the extension `type` (with or without its dot; may be empty when `name` is the
    /// whole name). `name` may lead through folders of the bundle, never out of it. Null when there is no such file.
    /// AppKit: `-pathForResource:ofType:`.
    [[nodiscard]] QString pathForResource(const QString& name, const QString& type) const;

    /// The path of the image `name`: of the file of that very name, else of the one that `.svg`, else of the one that
    /// `.png` makes of it. All names of one file give the same path. Null when there is no such file.
    /// AppKit: `-pathForImageResource:`.
    [[nodiscard]] QString pathForImageResource(const QString& name) const;

    /// What the bundle tells about itself: "CFBundleIdentifier"; for the main bundle also "CFBundleName", the name the
    /// application goes by, and "CFBundleVersion", its version. Null for any other key.
    /// AppKit: `-objectForInfoDictionaryKey:`.
    [[nodiscard]] QString objectForInfoDictionaryKey(const QString& key) const;

private:
    NSBundle(QString identifier, QString resourcePath);

    [[nodiscard]] static std::map<QString, std::unique_ptr<NSBundle>>& bundlesByIdentifier();

    [[nodiscard]] bool isMainBundle() const;

    QString m_identifier;
    QString m_resourcePath;
};
