// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSBundle.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QVariant>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace {

constexpr QLatin1String mainResourcePath(":/");
constexpr QLatin1String bundlesPath(":/bundles/");
constexpr QLatin1String parentFolder("..");

// The path of the first file called `fileName` in `folders` of the bundle at `root`, cleaned, so that one file has one
// path whatever it was called by.
QString pathOfFile(const QString& root, std::initializer_list<QLatin1String> folders, const QString& fileName) {
    if (fileName.split(QLatin1Char('/')).contains(parentFolder)) {
        return {};
    }
    for (const QLatin1String folder : folders) {
        QString path = QDir::cleanPath(root + QLatin1Char('/') + folder + QLatin1Char('/') + fileName);
        if (QFileInfo(path).isFile()) {
            return path;
        }
    }
    return {};
}

// The application's display name is a property of the windowed application class, which this layer does not know.
QString applicationDisplayName() {
    const QCoreApplication* application = QCoreApplication::instance();
    const QString displayName = application ? application->property("applicationDisplayName").toString() : QString();
    return displayName.isEmpty() ? QCoreApplication::applicationName() : displayName;
}

QString applicationIdentifier() {
    QString name = QCoreApplication::applicationName();
    QStringList parts = QCoreApplication::organizationDomain().split(QLatin1Char('.'), Qt::SkipEmptyParts);
    if (name.isEmpty() || parts.isEmpty()) {
        return name;
    }
    std::reverse(parts.begin(), parts.end());
    parts.append(name);
    return parts.join(QLatin1Char('.'));
}

} // namespace

NSBundle::NSBundle(QString identifier, QString resourcePath)
    : m_identifier(std::move(identifier)), m_resourcePath(std::move(resourcePath)) {}

NSBundle::~NSBundle() = default;

NSBundle& NSBundle::mainBundle() {
    // Never destroyed: objects that outlive main() may still ask for resources.
    static NSBundle* const bundle = new NSBundle(QString(), mainResourcePath);
    return *bundle;
}

NSBundle* NSBundle::bundleWithIdentifier(const QString& identifier) {
    const bool isPath = identifier.startsWith(QLatin1Char('.')) || identifier.contains(QLatin1Char('/'));
    if (identifier.isEmpty() || isPath || identifier.contains(parentFolder)) {
        return nullptr;
    }
    auto& bundles = bundlesByIdentifier();
    if (const auto found = bundles.find(identifier); found != bundles.end()) {
        return found->second.get();
    }
    const QString path = bundlesPath + identifier;
    if (!QFileInfo(path).isDir()) {
        return nullptr;
    }
    std::unique_ptr<NSBundle> bundle(new NSBundle(identifier, path));
    return bundles.emplace(identifier, std::move(bundle)).first->second.get();
}

QString NSBundle::bundleIdentifier() const {
    return isMainBundle() ? applicationIdentifier() : m_identifier;
}

QString NSBundle::resourcePath() const {
    return m_resourcePath;
}

QString NSBundle::pathForResource(const QString& name, const QString& type) const {
    if (name.isEmpty()) {
        return {};
    }
    const QLatin1Char dot('.');
    const QString extension = type.isEmpty() || type.startsWith(dot) ? type : dot + type;
    return pathOfFile(m_resourcePath, {QLatin1String(), QLatin1String("images"), QLatin1String("nibs")},
                      name + extension);
}

QString NSBundle::pathForImageResource(const QString& name) const {
    if (name.isEmpty()) {
        return {};
    }
    for (const QLatin1String extension : {QLatin1String(), QLatin1String(".svg"), QLatin1String(".png")}) {
        QString path = pathOfFile(m_resourcePath, {QLatin1String(), QLatin1String("images")}, name + extension);
        if (!path.isNull()) {
            return path;
        }
    }
    return {};
}

QString NSBundle::objectForInfoDictionaryKey(const QString& key) const {
    if (key == QLatin1String("CFBundleIdentifier")) {
        return bundleIdentifier();
    }
    if (!isMainBundle()) {
        return {};
    }
    if (key == QLatin1String("CFBundleName")) {
        return applicationDisplayName();
    }
    if (key == QLatin1String("CFBundleVersion")) {
        return QCoreApplication::applicationVersion();
    }
    return {};
}

std::map<QString, std::unique_ptr<NSBundle>>& NSBundle::bundlesByIdentifier() {
    // Never destroyed, as the bundles in it.
    static auto* const bundles = new std::map<QString, std::unique_ptr<NSBundle>>;
    return *bundles;
}

bool NSBundle::isMainBundle() const {
    return this == &mainBundle();
}
