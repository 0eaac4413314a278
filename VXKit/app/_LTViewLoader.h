// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSNib.h>

#include <QPointer>
#include <QString>
#include <QWidget>

#include <concepts>
#include <memory>

class NSBundle;
class NSWindow;

/// An object that owns one nib: loads it with itself as the owner, so that the nib's outlets land in its fields, and
/// hands out the view.
///
/// A subclass declares further outlets and actions in connectNib. The view is not the loader's: it stays when the
/// loader goes, until the application object ends (NSNib::instantiateNibWithOwner).
class VXKIT_EXPORT _LTViewLoader : public NSNibOwner {
public:
    /// An empty loader to call initWithNibName on. AppKit: `+alloc`.
    _LTViewLoader();
    ~_LTViewLoader() override;

    /// A new loader of the class `Loader` with the nib called `name` in `bundle`; null: the main bundle.
    /// AppKit: `+loaderWithNib:`, `+loaderWithNib:bundle:`.
    template <std::derived_from<_LTViewLoader> Loader = _LTViewLoader>
    [[nodiscard]] static std::shared_ptr<Loader> loaderWithNib(const QString& name, NSBundle* bundle = nullptr) {
        auto loader = std::make_shared<Loader>();
        loader->initWithNibName(name, bundle);
        return loader;
    }

    /// Loads the nib. Where there is none the outlets are null, which nobody is told but the log.
    /// AppKit: `-initWithNibName:`, `-initWithNibName:bundle:`.
    void initWithNibName(const QString& name) { initWithNibName(name, nullptr); }
    /// The same with the nib of `bundle`; null: the main bundle. To be called once.
    virtual void initWithNibName(const QString& name, NSBundle* bundle);

    /// The view that is called "_view" in the nib; null where it has none, and after it was deleted. AppKit: `-view`.
    [[nodiscard]] QWidget* view() const;
    /// The window that the view is in; null where it is in none of the kit's. AppKit: `-window`.
    [[nodiscard]] NSWindow* window() const;

    /// Declares the outlet "_view". Not to be called for a nib without a view of that name.
    void connectNib(NSNibConnections& connections) override;

protected:
    QPointer<QWidget> _view;    ///< an outlet
    std::unique_ptr<NSNib> nib; ///< as it was loaded
};
