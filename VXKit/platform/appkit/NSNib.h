// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <vector>

class NSBundle;
class NSNibOwner;
struct NibDocument;

/// What a nib asks its owner for: where the nib's objects go, and what its controls do.
///
/// There for as long as NSNibOwner::connectNib runs.
class VXKIT_EXPORT NSNibConnections {
public:
    NSNibConnections(const NSNibConnections&) = delete;
    NSNibConnections& operator=(const NSNibConnections&) = delete;
    ~NSNibConnections();

    /// Puts the object called `name` in the file into `field`; null where there is none, or one of another class, both
    /// of which are logged. A field that may outlive the object is a QPointer.
    template <class T>
    void outlet(const QString& name, T*& field) {
        field = objectOfClass<T>(name);
    }
    /// The same for a field that is null again once the object is gone.
    template <class T>
    void outlet(const QString& name, QPointer<T>& field) {
        field = objectOfClass<T>(name);
    }

    /// What the controls do whose property `action` is `name`; they are the sender. Names are selectors, with their
    /// colon: "openInBrowser:". The owner may have actions that no control names. An action never reaches an owner that
    /// is gone.
    void action(const QString& name, std::function<void(QObject* sender)> method);

private:
    friend class NSNib;

    class Session;
    explicit NSNibConnections(Session& session);

    template <class T>
    [[nodiscard]] T* objectOfClass(const QString& name) {
        QObject* object = objectNamed(name);
        T* typed = dynamic_cast<T*>(object);
        if (object && !typed) {
            logOtherClass(name, typeid(T));
        }
        return typed;
    }
    [[nodiscard]] QObject* objectNamed(const QString& name);
    void logOtherClass(const QString& name, const std::type_info& wanted);

    Session& m_session;
};

/// The object that a nib is loaded for ("File's Owner").
class VXKIT_EXPORT NSNibOwner {
public:
    NSNibOwner();
    NSNibOwner(const NSNibOwner&) = delete;
    NSNibOwner& operator=(const NSNibOwner&) = delete;
    virtual ~NSNibOwner();

    /// Names the outlets and actions of the owner; called once for each nib that is instantiated with it. Here: none. A
    /// subclass calls its base's as well where the nib has what that declares.
    virtual void connectNib(NSNibConnections& connections);

    /// Called when all of the nib is there and connected, after its objects were called. Here: nothing.
    /// AppKit: `-awakeFromNib`.
    virtual void awakeFromNib();

private:
    friend class NSNib;
    friend class NSNibConnections;

    std::shared_ptr<const bool> m_life; // watched by what may outlive the owner
};

/// A file of Qt Designer's (`Name.ui`) in a bundle, from which a window or a view is made with all that is in it, as
/// often as wanted.
///
/// Designer knows the kit's classes as promoted widgets, by their names. Besides what Designer has, a widget in the
/// file may have these properties (dynamic ones, of type string unless it says otherwise here):
///
/// - `action`: the selector of an action of the owner, with its colon. Buttons send it when they are clicked, line
///   edits on Return, combo boxes when an entry is chosen, menu entries when they are triggered;
/// - `autoresizingMask`: the springs of the widget, "NSViewWidthSizable|NSViewMinYMargin" or a number. Without it a
///   widget keeps its size and its distance from the left and the bottom edge. Not for what a layout of Qt's places;
/// - `styleMask`: of an NSWindow or NSPanel, "NSTitledWindowMask|NSClosableWindowMask" or a number. Without it: titled,
///   and it can be closed, miniaturized and resized;
/// - `title` of a button, `image` (the name of one in the main bundle) of an image view, `tag` (a number) of a button.
///
/// Geometry is Designer's, from the top left. When a nib has been loaded, the frame of every view is its equal from the
/// bottom left. What is put into a window is in its content view. The file's own connections between signals and slots,
/// its tab order and its buddies work.
///
/// What is wrong with a file is logged, a line for each fault, with the path of the file; the rest of it is loaded.
/// Main thread only. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSNib {
public:
    /// The nib called `nibName` (without ".ui") in `bundle`; null: the main bundle. Logs where there is none, or where
    /// the file is not a form. AppKit: `-initWithNibNamed:bundle:`.
    explicit NSNib(const QString& nibName, NSBundle* bundle = nullptr);
    NSNib(const NSNib&) = delete;
    NSNib& operator=(const NSNib&) = delete;
    ~NSNib();

    /// Whether there is a file that can be loaded.
    [[nodiscard]] bool isValid() const;

    /// Makes the objects of the nib, connects them to `owner`, and awakes them (awakeFromNib), each once, `owner` last.
    /// Answers whether all of it went well; where not, that has been logged. Needs the application object.
    ///
    /// The window or view at the top goes to `topLevelObjects`, which owns it then. Without that it lives until the
    /// application object ends, which deletes it unless it has a parent then; who wants it gone earlier deletes it.
    /// AppKit: `-instantiateNibWithOwner:topLevelObjects:`.
    bool instantiateNibWithOwner(NSNibOwner& owner, std::vector<std::unique_ptr<QWidget>>* topLevelObjects = nullptr);

    /// Lets nibs have objects of the class `T`, a view or a window, under `className`. Registering a name again puts
    /// the new class in place of the one before. `T` is made with a parent widget, with a frame, or with neither; a
    /// window as an NSWindow is. AppKit needs none.
    template <class T>
    static void registerClass(const QString& className) {
        registerFactory(className, factoryOf<T>());
    }

    /// The names of the classes of views, not of windows, that nibs can have objects of.
    [[nodiscard]] static QStringList viewClasses();
    /// Makes a view of one of these classes, as a nib has it before its properties are set and without a name. It
    /// belongs to `parent`, without one to the caller. Null for a class that is not one of these.
    [[nodiscard]] static QWidget* makeView(const QString& className, QWidget* parent);

private:
    friend class NSNibConnections;

    struct Factory {
        bool makesWindow;
        std::function<QWidget*(QWidget* parent, unsigned styleMask)> make;
    };
    class Loader;

    template <class T>
    [[nodiscard]] static Factory factoryOf() {
        return {std::is_base_of_v<NSWindow, T>, make<T>};
    }
    template <class T>
    static QWidget* make(QWidget* parent, [[maybe_unused]] unsigned styleMask) {
        static_assert(std::is_base_of_v<QWidget, T>);
        if constexpr (std::is_base_of_v<NSWindow, T>) {
            if constexpr (std::is_constructible_v<T, const NSRect&, unsigned, NSBackingStoreType, bool>) {
                return new T(NSZeroRect, styleMask, NSBackingStoreBuffered, true);
            } else {
                return new T;
            }
        } else if constexpr (std::is_constructible_v<T, QWidget*>) {
            return new T(parent);
        } else if constexpr (std::is_constructible_v<T, const NSRect&, QWidget*>) {
            return new T(NSZeroRect, parent);
        } else {
            auto view = [] {
                if constexpr (std::is_constructible_v<T, const NSRect&>) {
                    return std::make_unique<T>(NSZeroRect);
                } else {
                    return std::make_unique<T>();
                }
            }();
            view->setParent(parent);
            return view.release();
        }
    }

    static void registerFactory(const QString& className, Factory factory);
    [[nodiscard]] static std::map<QString, Factory>& factories();

    QString m_path;
    std::unique_ptr<const NibDocument> m_document; // null where there is no file that can be loaded
};
