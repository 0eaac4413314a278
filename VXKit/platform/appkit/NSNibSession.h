// SPDX-License-Identifier: MIT
// What makes one instance of a nib out of the objects that NSNib::Loader has made. For NSNib alone.
#pragma once

#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/NSNibDocument.h>

#include <QByteArray>
#include <QMetaMethod>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <vector>

/// A nib that is being instantiated. Borrows the path and the document.
class NSNibConnections::Session {
public:
    Session(const QString& path, const NibDocument& document) : m_path(path), m_document(document) {}

    [[nodiscard]] const NibDocument& document() const { return m_document; }
    [[nodiscard]] bool isWithoutFault() const { return m_isWithoutFault; }

    void log(const QString& fault);

    /// Does all to the objects below `root` that the loader has left to do, but for what their owner has a part in.
    void finish(QWidget& root);
    /// Has the controls call `actions` for as long as the owner lives.
    void connectActions(const std::weak_ptr<const bool>& ownersLife);
    void awake() const;

    [[nodiscard]] QObject* objectNamed(const QString& name) const;
    /// The class of an object as the file has it.
    [[nodiscard]] QString classNameOf(const QObject& object) const;

    std::map<QString, std::function<void(QObject*)>> actions; ///< of the owner, by their selectors

private:
    void collectObjects();
    [[nodiscard]] bool isOfNib(const QWidget& widget) const;
    void applyEnumerations();
    void applyEnumeration(QWidget& object, const NibDocument::Enumeration& enumeration);
    /// The keys of an enumeration without its name, which newer Designers write more of than Qt reads.
    [[nodiscard]] static QByteArray unscoped(const QString& keys);
    void logEnumeration(const NibDocument::Enumeration& enumeration);
    static void placeWindow(NSWindow& window);
    void applyProperties();
    /// Gives the views below `widget` their frames, from the top down, so that each superview has its size before.
    void layOut(QWidget& widget);
    /// Makes the place that Designer gave a view its frame, with the springs that the file asks for.
    void adopt(QWidget& superview, QWidget& view, bool superviewHasSize);
    void setTabOrder();
    void connectSignals();
    [[nodiscard]] static QMetaMethod methodOf(const QObject& object, const QString& signature);
    void connectAction(QObject& control, const std::weak_ptr<const bool>& ownersLife);

    const QString& m_path;
    const NibDocument& m_document;
    QPointer<QWidget> m_root;
    std::vector<QPointer<QWidget>> m_objects; ///< by their numbers
    bool m_isWithoutFault = true;
};
