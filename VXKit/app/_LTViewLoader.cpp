// SPDX-License-Identifier: MIT
#include <VXKit/app/_LTViewLoader.h>

#include <VXKit/app/VXNibClasses.h>

_LTViewLoader::_LTViewLoader() = default;

_LTViewLoader::~_LTViewLoader() = default;

void _LTViewLoader::initWithNibName(const QString& name, NSBundle* bundle) {
    VXRegisterNibClasses();
    nib = std::make_unique<NSNib>(name, bundle);
    nib->instantiateNibWithOwner(*this);
}

QWidget* _LTViewLoader::view() const {
    return _view;
}

NSWindow* _LTViewLoader::window() const {
    return _view ? qobject_cast<NSWindow*>(_view->window()) : nullptr;
}

void _LTViewLoader::connectNib(NSNibConnections& connections) {
    connections.outlet(QStringLiteral("_view"), _view);
}
