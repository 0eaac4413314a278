// SPDX-License-Identifier: MIT
#include <VXKit/support/VXKitResources.h>

#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QtGlobal>

#include <unordered_map>

// The linker drops the resources of a static library that nothing refers to. The macro wants a function outside of any
// namespace; calling it more than once does no harm.
static void keepCompiledInResources() {
    Q_INIT_RESOURCE(VXKit);
}

namespace {

// The images by the paths of their files; made on first use and never destroyed, because windows that outlive main()
// still draw with them.
std::unordered_map<QString, std::shared_ptr<NSImage>>* _imCache = nullptr;

} // namespace

NSBundle* VXKitBundle() {
    keepCompiledInResources();
    return NSBundle::bundleWithIdentifier(QStringLiteral("org.vxkit.VXKit"));
}

std::shared_ptr<NSImage> VXKitImage(const QString& name) {
    if (!_imCache) {
        _imCache = new std::unordered_map<QString, std::shared_ptr<NSImage>>;
    }
    const NSBundle* bundle = VXKitBundle();
    const QString path = bundle ? bundle->pathForImageResource(name) : QString();
    if (path.isNull()) {
        throw NSException(NSInvalidArgumentException, QStringLiteral("The kit holds no image named \"%1\"").arg(name));
    }
    if (const auto cached = _imCache->find(path); cached != _imCache->end()) {
        return cached->second;
    }
    std::shared_ptr<NSImage> image = NSImage::initByReferencingFile(path);
    _imCache->emplace(path, image);
    return image;
}
